#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/training/internal/Calibration.h>
#include <veskkit/training/internal/Discrimination.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <map>
#include <string>
#include <utility>

namespace Vesk::Kit::internal {

namespace {

constexpr std::size_t fewestUsers = 3;
constexpr std::size_t mostUserRuns = 6;
constexpr std::size_t mostSampleRuns = 4;
constexpr std::size_t enoughTraces = 4000;  // for a quantile near 2 % of each gesture
constexpr int enoughIterations = 2;         // the ratio hardly moves from there on
constexpr double sacrificeOfOneGesture = 0.5;
constexpr double slackOfOneGesture = 2.0;  // equal traces must not stand right on the ratio
constexpr std::size_t fewestOwnTraces = 50;
constexpr double falseRejectionOfOwn = 0.02;
constexpr double slackOfOwn = 7.4;

/// Per user, in the order of their names, the run that leaves them out.
std::map<std::string, std::size_t> runOfUsers(const std::vector<GestureSamples>& gestures) {
    std::map<std::string, std::size_t> runs;
    for (const GestureSamples& gesture : gestures) {
        for (const Sample& sample : gesture.samples) runs[sample.trace->user] = 0;
    }
    std::size_t next = 0;
    for (auto& [user, run] : runs) run = next++ % mostUserRuns;
    return runs;
}

/// `count` runs; `runOf` tells which one leaves the i-th sample of a gesture out.
template <typename RunOf>
std::vector<CalibrationRun> split(const std::vector<GestureSamples>& gestures, std::size_t count,
                                  const RunOf& runOf) {
    std::vector<CalibrationRun> runs;
    for (std::size_t r = 0; r < count; ++r) {
        CalibrationRun run;
        for (const GestureSamples& gesture : gestures) {
            GestureSamples kept{gesture.gesture, gesture.label, {}};
            GestureSamples left = kept;
            for (std::size_t i = 0; i < gesture.samples.size(); ++i) {
                const Sample& sample = gesture.samples[i];
                (runOf(sample, i) == r ? left : kept).samples.push_back(sample);
            }
            if (!kept.samples.empty()) run.training.push_back(std::move(kept));
            if (!left.samples.empty()) run.test.push_back(std::move(left));
        }
        if (!run.training.empty()) runs.push_back(std::move(run));
    }
    return runs;
}

std::size_t testTraces(const std::vector<CalibrationRun>& runs) {
    std::size_t count = 0;
    for (const CalibrationRun& run : runs) {
        for (const GestureSamples& gesture : run.test) count += gesture.samples.size();
    }
    return count;
}

/// The value that all but `share` of the values reach.
double quantile(std::vector<double> values, double share) {
    std::sort(values.begin(), values.end());
    const auto index = static_cast<std::size_t>(share * static_cast<double>(values.size()));
    return values[std::min(index, values.size() - 1)];
}

}  // namespace

std::vector<CalibrationRun> runsByUser(const std::vector<GestureSamples>& gestures) {
    const std::map<std::string, std::size_t> runOf = runOfUsers(gestures);
    if (runOf.size() < fewestUsers || runOf.count("") > 0) return {};
    return split(gestures, std::min(runOf.size(), mostUserRuns),
                 [&](const Sample& sample, std::size_t) { return runOf.at(sample.trace->user); });
}

std::vector<CalibrationRun> runsBySample(const std::vector<GestureSamples>& gestures) {
    std::size_t most = 0;
    for (const GestureSamples& gesture : gestures) most = std::max(most, gesture.samples.size());
    if (most < 2) return {};
    const std::size_t count = std::min(most, mostSampleRuns);
    return split(gestures, count, [count](const Sample&, std::size_t i) { return i % count; });
}

TrainingOptions calibrationOptions(const TrainingOptions& options) {
    TrainingOptions quick = options;
    quick.iterations = std::min(options.iterations, enoughIterations);
    return quick;
}

std::size_t testStride(const std::vector<CalibrationRun>& runs) {
    return testTraces(runs) / enoughTraces + 1;
}

bool anyMayHaveItsOwnRatio(const std::vector<GestureSamples>& gestures) {
    return std::any_of(gestures.begin(), gestures.end(), [](const GestureSamples& it) {
        return it.samples.size() >= fewestOwnTraces;
    });
}

LogRatios logRatiosOf(const std::vector<GestureModels>& gestures,
                      const std::vector<GestureSamples>& test, const std::vector<double>& codebook,
                      std::size_t stride) {
    RecognitionModel model =
        composeRecognitionModel(gestures, codebook, {}, TrainingOptions().name);
    const double required =
        std::log(acceptanceRatio(model.get().modelTransitionProb, model.gestures().size()));
    const GestureRecognizer recognizer(std::move(model));
    LogRatios ratios;
    std::size_t count = 0;
    for (const GestureSamples& gesture : test) {
        for (const Sample& sample : gesture.samples) {
            if (count++ % stride != 0) continue;
            const Result result = recognizer.recognizeSymbols(sample.symbols);
            if (result.scores.empty() || result.scores.front().gesture != gesture.gesture) continue;
            // A probability of zero is no matter of the ratio.
            if (result.margin == -std::numeric_limits<double>::infinity()) continue;
            ratios[gesture.gesture].push_back(result.margin + required);
        }
    }
    return ratios;
}

CalibratedRatios ratiosOf(const std::vector<LogRatios>& runs, double falseRejection) {
    LogRatios ratios;
    std::vector<double> all;
    for (const LogRatios& run : runs) {
        for (const auto& [gesture, own] : run) {
            ratios[gesture].insert(ratios[gesture].end(), own.begin(), own.end());
            all.insert(all.end(), own.begin(), own.end());
        }
    }
    if (all.empty()) return {};
    CalibratedRatios result;
    double least = std::numeric_limits<double>::infinity();
    for (const auto& [gesture, own] : ratios) {
        least = std::min(least, quantile(own, sacrificeOfOneGesture));
        if (own.size() < fewestOwnTraces) continue;
        result.own[gesture] = std::exp(quantile(own, falseRejectionOfOwn)) / slackOfOwn;
    }
    least -= std::log(slackOfOneGesture);
    result.all = std::exp(std::min(least, quantile(all, falseRejection)));
    return result;
}

CalibratedRatios calibrateRatios(const std::vector<CalibrationRun>& runs,
                                 const std::vector<double>& codebook,
                                 const TrainingOptions& options,
                                 const std::function<void()>& step) {
    const TrainingOptions quick = calibrationOptions(options);
    const std::size_t stride = testStride(runs);
    std::vector<LogRatios> ratios;
    for (const CalibrationRun& run : runs) {
        std::vector<GestureModels> gestures = trainGestures(run.training, codebook, quick, step);
        std::vector<const GestureSamples*> samples;
        for (const GestureSamples& gesture : run.training) samples.push_back(&gesture);
        discriminate(gestures, samples, codebook, quick, step);
        ratios.push_back(logRatiosOf(gestures, run.test, codebook, stride));
    }
    return ratiosOf(ratios, options.falseRejection);
}

}  // namespace Vesk::Kit::internal
