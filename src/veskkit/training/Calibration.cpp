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
constexpr int usualTurns = 2;
constexpr double infinity = std::numeric_limits<double>::infinity();

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
            GestureSamples kept{gesture.gesture, gesture.label, {}, gesture.drawn};
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

/// The model of a run that is asked, and the logarithm of the ratio that its margins are above.
struct Asked {
    Asked(const std::vector<GestureModels>& gestures, const std::vector<double>& codebook,
          int turns)
        : recognizer(
              composeRecognitionModel(gestures, codebook, {}, turns, TrainingOptions().name)) {
        const RecognitionModel& model = recognizer.model();
        required =
            std::log(acceptanceRatio(model.get().modelTransitionProb, model.gestures().size()));
    }

    GestureRecognizer recognizer;
    double required;
};

/// How far the likeliest gesture is before the next; without bounds where there is none.
double leadOf(const Result& result) {
    if (result.scores.size() < 2) return infinity;
    return result.scores[0].logProbability - result.scores[1].logProbability;
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

bool anyMayBeTurned(const std::vector<GestureSamples>& gestures) {
    return std::any_of(gestures.begin(), gestures.end(), mayBeTurned);
}

std::vector<int> turnsToTry(const std::vector<GestureSamples>& gestures,
                            const TrainingOptions& options, bool runsAreUsers) {
    if (!anyMayBeTurned(gestures)) return {0};
    if (options.turns) return {*options.turns};
    return runsAreUsers ? std::vector<int>{0, usualTurns} : std::vector<int>{0};
}

CalibrationAnswers answersOf(const std::vector<GestureModels>& gestures,
                             const std::vector<GestureSamples>& test,
                             const std::vector<double>& codebook, const std::vector<int>& turns,
                             std::size_t stride) {
    std::vector<Asked> asked;
    for (const int count : turns) asked.emplace_back(gestures, codebook, count);
    CalibrationAnswers answers;
    answers.ratios.resize(turns.size());
    answers.leads.resize(turns.size());
    std::size_t count = 0;
    for (const GestureSamples& gesture : test) {
        for (const Sample& sample : gesture.samples) {
            if (count++ % stride != 0) continue;
            std::vector<bool> right;
            for (std::size_t n = 0; n < asked.size(); ++n) {
                const Result result = asked[n].recognizer.recognizeSymbols(sample.symbols);
                right.push_back(!result.scores.empty() &&
                                result.scores.front().gesture == gesture.gesture);
                // A probability of zero is no matter of the ratio.
                if (!right.back() || result.margin == -infinity) continue;
                answers.ratios[n][gesture.gesture].push_back(result.margin + asked[n].required);
                answers.leads[n][gesture.gesture].push_back(leadOf(result));
            }
            if (right.back() && !right.front()) ++answers.gained;
            if (right.front() && !right.back()) ++answers.lost;
        }
    }
    return answers;
}

CalibratedRatios calibrateRatios(const std::vector<CalibrationRun>& runs,
                                 const std::vector<double>& codebook, const std::vector<int>& turns,
                                 const TrainingOptions& options,
                                 const std::function<void()>& step) {
    const TrainingOptions quick = calibrationOptions(options);
    const std::size_t stride = testStride(runs);
    std::vector<CalibrationAnswers> answers;
    for (const CalibrationRun& run : runs) {
        std::vector<GestureModels> gestures = trainGestures(run.training, codebook, quick, step);
        std::vector<const GestureSamples*> samples;
        for (const GestureSamples& gesture : run.training) samples.push_back(&gesture);
        discriminate(gestures, samples, codebook, quick, step);
        answers.push_back(answersOf(gestures, run.test, codebook, turns, stride));
    }
    return ratiosOf(answers, turns, options.falseRejection);
}

}  // namespace Vesk::Kit::internal
