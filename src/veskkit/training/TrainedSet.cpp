#include <veskkit/training/internal/TrainedSet.h>

#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/training/internal/Discrimination.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <algorithm>
#include <functional>
#include <map>
#include <utility>

namespace Vesk::Kit::internal {

using Vesk::ML::VectorQuantizer2D;

namespace {

constexpr std::size_t worthAWarning = 3;

/// The directions as a model file holds them.
std::vector<double> storedCodebook(const TrainingOptions& options) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(options.symbols);
    std::vector<double> codebook = options.codebook.empty() ? quantizer.codebook : options.codebook;
    for (double& angle : codebook) angle = storedValue(angle);
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
            gesture.drawn = gesture.samples.size();
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

RecognitionModel TrainedSet::compose(const std::function<void()>& step) const {
    return composeWithout({}, step);
}

RecognitionModel TrainedSet::composeWithout(const std::string& gesture,
                                            const std::function<void()>& step) const {
    std::vector<GestureModels> parts;
    std::vector<const GestureSamples*> theirs;
    for (std::size_t g = 0; g < gestures.size(); ++g) {
        if (samples[g].gesture == gesture) continue;
        parts.push_back(gestures[g]);
        theirs.push_back(&samples[g]);
    }
    discriminate(parts, theirs, codebook, options, step);
    return composeRecognitionModel(parts, codebook, acceptance, report.turns, options.name);
}

PreparedSet prepareSet(const std::vector<const Trace*>& traces, const TrainingOptions& options) {
    if (traces.empty()) throw InputError("found no traces, expected at least 1");
    PreparedSet set{storedCodebook(options), {}, {}, false, {}, {}};
    Preparer preparer(options, set.codebook, set.report);
    for (const Trace* trace : traces) preparer.take(*trace);
    set.samples = preparer.gestures();
    warnOfFewTraces(set.samples, set.report);
    warnOfShortSequences(set.samples, options, set.report);

    const bool isOpen = !options.acceptanceRatio || anyMayHaveItsOwnRatio(set.samples) ||
                        (!options.turns && anyMayBeTurned(set.samples));
    if (options.calibrate && isOpen) {
        set.runs = runsByUser(set.samples);
        set.runsAreUsers = !set.runs.empty();
        // Without users nothing but R itself is calibrated.
        if (!set.runsAreUsers && !options.acceptanceRatio) set.runs = runsBySample(set.samples);
    }
    set.turns = turnsToTry(set.samples, options, set.runsAreUsers);
    set.report.calibrationRuns = set.runs.size();
    return set;
}

TrainedSet trainSet(const std::vector<const Trace*>& traces, const TrainingOptions& options,
                    TrainingSteps& steps) {
    PreparedSet prepared = prepareSet(traces, options);
    const auto expect = [&](std::size_t gestures) {
        steps.expect(gestures + discriminationRounds(gestures, options));
    };
    expect(prepared.samples.size());
    for (const CalibrationRun& run : prepared.runs) expect(run.training.size());

    const CalibratedRatios found =
        calibrateRatios(prepared.runs, prepared.codebook, prepared.turns, options, std::ref(steps));
    TrainedSet set{options, std::move(prepared.samples), {}, std::move(prepared.codebook),
                   {},      std::move(prepared.report)};
    set.gestures = trainGestures(set.samples, set.codebook, options, std::ref(steps));
    for (const GestureModels& gesture : set.gestures) {
        set.report.gestures.push_back(gesture.report);
    }
    set.acceptance = acceptanceFor(set.gestures, options, found, prepared.runsAreUsers);
    set.report.turns = found.turns;
    return set;
}

}  // namespace Vesk::Kit::internal
