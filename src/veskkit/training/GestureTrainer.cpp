#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/training/GestureTrainer.h>
#include <veskkit/training/internal/Calibration.h>
#include <veskkit/training/internal/ModelTraining.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace Vesk::Kit {

using internal::CalibrationRun;
using internal::GestureSamples;
using internal::joined;
using internal::quoted;
using internal::Sample;
using Vesk::ML::VectorQuantizer2D;

namespace {

constexpr double leastRatio = 1e-6;
constexpr double largestRatio = 1e5;
constexpr std::size_t worthAWarning = 3;

template <typename T>
void requireRange(const char* option, T value, T least, T most) {
    if (value >= least && value <= most) return;
    throw InputError(joined("found ", value, " for ", option, ", expected ", least, " to ", most));
}

void requireOptions(const TrainingOptions& options) {
    if (!isStorableName(options.name)) {
        throw InputError(joined("found the model name ", quoted(options.name),
                                ", expected one word without blanks"));
    }
    requireRange("symbols", options.symbols, 2, 360);
    requireRange("states", options.states, 2, 200);
    requireRange("delta", options.delta, 1, options.states - 1);
    if (options.subModels) requireRange("sub-models", *options.subModels, 1, 16);
    requireRange("smallest sub-model", options.smallestSubModel, 1, 1000000);
    requireRange("iterations", options.iterations, 0, 1000);
    requireRange("emission floor", options.emissionFloor, 1e-12, 0.1);
    if (options.smoothing) requireRange("smoothing", *options.smoothing, 0.0, 180.0);
    requireRange("threshold states", options.thresholdStates, 2, 200);
    requireRange("threshold smoothing", options.thresholdSmoothing, 0.0, 180.0);
    if (options.acceptanceRatio) {
        requireRange("acceptance ratio", *options.acceptanceRatio, leastRatio, largestRatio);
    }
    requireRange("false rejection", options.falseRejection, 0.0, 0.5);
    const Resampler valid(options.preparation);
}

/// The evenly spaced directions as a model file holds them.
std::vector<double> storedCodebook(int symbols) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(symbols);
    std::vector<double> codebook;
    for (const double angle : quantizer.codebook) codebook.push_back(internal::storedValue(angle));
    return codebook;
}

/// Sorts traces by gesture and takes their symbols.
class Preparer {
public:
    Preparer(const TrainingOptions& options, const std::vector<double>& codebook,
             TrainingReport& out)
        : settings(options), resampler(options.preparation), report(out) {
        quantizer.setCodebook(codebook);
    }

    void take(const Trace& trace) {
        if (trace.gesture.empty()) {
            throw InputError(placeOf(trace) + ": found no label, expected the gesture's name");
        }
        GestureSamples& gesture = gestureOf(trace);
        std::vector<int> symbols = quantizer.quantize(resampler.resample(trace), 0.0f, false);
        if (symbols.size() >= 2) {
            gesture.samples.push_back({&trace, std::move(symbols)});
            ++report.traces;
            return;
        }
        const std::string problem =
            joined(placeOf(trace), ": found a trace of gesture ", quoted(trace.gesture), " with ",
                   symbols.size(), " directions, expected at least 2");
        if (!settings.skipBad) throw InputError(problem);
        report.skipped.push_back(problem);
    }

    /// The gestures in the order of their names.
    std::vector<GestureSamples> gestures() {
        std::vector<GestureSamples> result;
        for (auto& [name, gesture] : byName) {
            if (gesture.samples.empty()) {
                throw InputError(joined("found no usable trace of gesture ", quoted(gesture.label),
                                        ", expected at least 1"));
            }
            result.push_back(std::move(gesture));
        }
        return result;
    }

private:
    GestureSamples& gestureOf(const Trace& trace) {
        const std::string name = storedName(trace.gesture);
        if (!isStorableName(name)) {
            throw InputError(joined(placeOf(trace), ": found the label ", quoted(trace.gesture),
                                    ", expected one without control characters"));
        }
        const auto [place, isNew] =
            byName.try_emplace(name, GestureSamples{name, trace.gesture, {}});
        if (place->second.label != trace.gesture) {
            throw InputError(joined(placeOf(trace), ": found the label ", quoted(trace.gesture),
                                    " beside ", quoted(place->second.label),
                                    ", expected labels that differ in more than blanks (both are "
                                    "stored as ",
                                    quoted(name), ')'));
        }
        if (isNew && name != trace.gesture) {
            report.warnings.push_back(joined("gesture ", quoted(trace.gesture), " is stored as ",
                                             quoted(name), ": names in a model have no blanks"));
        }
        return place->second;
    }

    const TrainingOptions& settings;
    Resampler resampler;
    VectorQuantizer2D quantizer;
    TrainingReport& report;
    std::map<std::string, GestureSamples> byName;
};

void warnOfFewTraces(const std::vector<GestureSamples>& gestures, TrainingReport& report) {
    for (const GestureSamples& gesture : gestures) {
        const std::size_t count = gesture.samples.size();
        if (count >= worthAWarning) continue;
        report.warnings.push_back(joined("gesture ", quoted(gesture.label), " has ", count,
                                         count == 1 ? " trace" : " traces",
                                         ": 3 or more make a model that recognises others"));
    }
    if (gestures.size() == 1) {
        report.warnings.emplace_back(
            "one gesture only: it is told from other movements by its threshold alone");
    }
}

/// A model is only recognised in its last state: sequences too short to get there never are.
void warnOfShortSequences(const std::vector<GestureSamples>& gestures,
                          const TrainingOptions& options, TrainingReport& report) {
    const int jumps = (options.states - 1 + options.delta - 1) / options.delta;
    const auto needed = static_cast<std::size_t>(jumps) + 1;
    for (const GestureSamples& gesture : gestures) {
        const auto count =
            std::count_if(gesture.samples.begin(), gesture.samples.end(),
                          [&](const Sample& sample) { return sample.symbols.size() < needed; });
        if (count == 0) continue;
        report.warnings.push_back(joined("gesture ", quoted(gesture.label), " has ", count,
                                         count == 1 ? " trace" : " traces", " with fewer than ",
                                         needed, " directions: too short to reach the last of ",
                                         options.states, " states"));
    }
}

}  // namespace

GestureTrainer::GestureTrainer(TrainingOptions options) : settings(std::move(options)) {
    requireOptions(settings);
}

TrainingResult GestureTrainer::train(const std::vector<Trace>& traces,
                                     const TrainingObserver& observer) const {
    if (traces.empty()) throw InputError("found no traces, expected at least 1");
    TrainingResult result;
    TrainingReport& report = result.report;
    const std::vector<double> codebook = storedCodebook(settings.symbols);
    Preparer preparer(settings, codebook, report);
    for (const Trace& trace : traces) preparer.take(trace);
    const std::vector<GestureSamples> gestures = preparer.gestures();
    warnOfFewTraces(gestures, report);
    warnOfShortSequences(gestures, settings, report);

    TrainingOptions final = settings;
    const bool calibrated = !settings.acceptanceRatio && settings.calibrate;
    std::vector<CalibrationRun> runs;
    if (calibrated) runs = internal::runsByUser(gestures);
    const bool byUser = !runs.empty();
    if (calibrated && !byUser) runs = internal::runsBySample(gestures);
    report.calibrationRuns = runs.size();
    TrainingProgress progress{0, gestures.size()};
    for (const CalibrationRun& run : runs) progress.total += run.training.size();
    const auto trained = [&] {
        ++progress.done;
        if (observer) observer(progress);
    };

    double mostOfAll = largestRatio;
    const double found = internal::calibrateRatio(runs, codebook, settings, trained);
    if (found > 0.0) {
        const double ratio = std::clamp(found, leastRatio, largestRatio);
        // Of other people's traces nothing is known without users: what is customary stays.
        if (byUser) final.acceptanceRatio = ratio;
        mostOfAll = ratio;
    }
    result.model = internal::trainRecognitionModel(gestures, codebook, mostOfAll, final,
                                                   report.gestures, trained);
    report.acceptanceRatio = internal::acceptanceRatio(result.model.get().modelTransitionProb,
                                                       result.model.gestures().size());
    return result;
}

}  // namespace Vesk::Kit
