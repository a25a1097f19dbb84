#include <veskkit/training/TrainingPlan.h>

#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/recognition/TurnedCopies.h>
#include <veskkit/training/internal/Discrimination.h>
#include <veskkit/training/internal/TrainedSet.h>

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <utility>

namespace Vesk::Kit {

using internal::GestureSamples;
using internal::joined;
using internal::PreparedSet;
using internal::Sample;

struct TrainingPlan::Parts {
    std::vector<Trace> traces;
    TrainingOptions options;
    PreparedSet set;
};

namespace {

std::vector<const Trace*> borrowed(const std::vector<Trace>& traces) {
    std::vector<const Trace*> result;
    result.reserve(traces.size());
    for (const Trace& trace : traces) result.push_back(&trace);
    return result;
}

/// The gesture of that name; null where there is none.
const GestureSamples* find(const std::vector<GestureSamples>& gestures, const std::string& name) {
    for (const GestureSamples& gesture : gestures) {
        if (gesture.gesture == name) return &gesture;
    }
    return nullptr;
}

/// Where the samples of a run stand among all samples of the gesture, which come in the same order.
std::vector<std::size_t> placesOf(const GestureSamples* some, const GestureSamples& all) {
    std::vector<std::size_t> places;
    if (some == nullptr) return places;
    std::size_t place = 0;
    for (const Sample& sample : some->samples) {
        while (all.samples[place].trace != sample.trace) ++place;
        places.push_back(place);
    }
    return places;
}

GestureSequences sequencesOf(const GestureSamples& gesture) {
    GestureSequences result{gesture.gesture, {}};
    for (const Sample& sample : gesture.samples) result.sequences.push_back(sample.symbols);
    return result;
}

std::vector<GestureSequences> sequencesOf(const std::vector<GestureSamples>& gestures) {
    std::vector<GestureSequences> result;
    for (const GestureSamples& gesture : gestures) result.push_back(sequencesOf(gesture));
    return result;
}

std::vector<GestureSamples> samplesOf(const std::vector<GestureSequences>& gestures) {
    std::vector<GestureSamples> result;
    for (const GestureSequences& gesture : gestures) {
        GestureSamples samples{gesture.gesture, gesture.gesture, {}};
        for (const std::vector<int>& symbols : gesture.sequences) {
            samples.samples.push_back({nullptr, symbols});
        }
        result.push_back(std::move(samples));
    }
    return result;
}

/// For so many numbers of turned copies, and ratios and leads of the same traces.
void requireAnswers(const CalibrationAnswers& answers, std::size_t numbers) {
    const auto fit = [](const LogRatios& ratios, const LogRatios& leads) {
        return std::equal(ratios.begin(), ratios.end(), leads.begin(), leads.end(),
                          [](const auto& x, const auto& y) {
                              return x.first == y.first && !x.second.empty() &&
                                     x.second.size() == y.second.size();
                          });
    };
    if (answers.ratios.size() != numbers || answers.leads.size() != numbers) {
        throw InputError(joined("found answers to ", answers.ratios.size(), " and ",
                                answers.leads.size(), " numbers of turned copies, expected ",
                                numbers, " of both"));
    }
    if (!std::equal(answers.ratios.begin(), answers.ratios.end(), answers.leads.begin(), fit))
        throw InputError("found ratios of other traces than leads, or of none, expected as many");
}

}  // namespace

std::vector<std::optional<GestureModels>> GestureTask::run() const {
    if (traces.empty() || traces.size() != sequences.size()) {
        throw InputError(joined("found ", traces.size(), " traces and ", sequences.size(),
                                " sequences, expected as many of both, at least 1"));
    }
    std::vector<std::optional<GestureModels>> models;
    for (std::size_t t = 0; t < trainings.size(); ++t) {
        GestureSamples samples{gesture, traces.front().gesture, {}, traces.size()};
        for (const std::size_t i : trainings[t]) {
            samples.samples.push_back({&traces.at(i), sequences[i]});
        }
        const bool own = t + 1 == trainings.size();
        if (samples.samples.empty()) {
            models.emplace_back();
        } else {
            models.emplace_back(internal::trainGesture(
                samples, codebook, own ? options : internal::calibrationOptions(options)));
        }
    }
    return models;
}

ToldApart TellApartTask::run() const {
    const std::vector<GestureSamples> samples = samplesOf(training);
    std::vector<const GestureSamples*> pointers;
    for (const GestureSamples& gesture : samples) pointers.push_back(&gesture);
    if (gestures.size() != samples.size()) {
        throw InputError(
            joined("found sequences of ", samples.size(), " gestures, expected ", gestures.size()));
    }
    if (turns.empty()) throw InputError("found no numbers of turned copies, expected at least 1");
    for (const int number : turns) {
        if (number >= 0 && number <= mostTurns) continue;
        throw InputError(joined("found ", number, " turned copies, expected 0 to ", mostTurns));
    }
    std::vector<GestureModels> told = gestures;
    if (test.empty()) {
        internal::discriminate(told, pointers, codebook, options);
        return {std::move(told), {}};
    }
    internal::discriminate(told, pointers, codebook, internal::calibrationOptions(options));
    return {{}, internal::answersOf(told, samplesOf(test), codebook, turns, stride)};
}

TrainingPlan::TrainingPlan(std::vector<Trace> traces, TrainingOptions options) {
    const GestureTrainer checked(options);
    auto made = std::make_unique<Parts>(Parts{std::move(traces), std::move(options), {}});
    made->set = internal::prepareSet(borrowed(made->traces), made->options);
    parts = std::move(made);
}

TrainingPlan::TrainingPlan(TrainingPlan&&) noexcept = default;
TrainingPlan& TrainingPlan::operator=(TrainingPlan&&) noexcept = default;
TrainingPlan::~TrainingPlan() = default;

std::size_t TrainingPlan::gestures() const { return parts->set.samples.size(); }

std::size_t TrainingPlan::trainings() const { return parts->set.runs.size() + 1; }

GestureTask TrainingPlan::gestureTask(std::size_t gesture) const {
    const GestureSamples& samples = parts->set.samples.at(gesture);
    GestureTask task{parts->options,
                     parts->set.codebook,
                     samples.gesture,
                     {},
                     sequencesOf(samples).sequences,
                     {}};
    for (const Sample& sample : samples.samples) task.traces.push_back(*sample.trace);
    for (const internal::CalibrationRun& run : parts->set.runs) {
        task.trainings.push_back(placesOf(find(run.training, samples.gesture), samples));
    }
    task.trainings.push_back(placesOf(&samples, samples));
    return task;
}

TellApartTask TrainingPlan::tellApartTask(
    std::size_t training,
    const std::vector<std::vector<std::optional<GestureModels>>>& trained) const {
    const PreparedSet& set = parts->set;
    if (training >= trainings()) throw std::out_of_range("no such training");
    const bool own = training == set.runs.size();
    const std::vector<GestureSamples>& samples = own ? set.samples : set.runs[training].training;
    TellApartTask task{parts->options, set.codebook, {}, sequencesOf(samples), {}};
    if (!own) {
        task.test = sequencesOf(set.runs[training].test);
        task.turns = set.turns;
        task.stride = internal::testStride(set.runs);
    }
    for (std::size_t g = 0; g < set.samples.size(); ++g) {
        const std::string& name = set.samples[g].gesture;
        if (find(samples, name) == nullptr) continue;
        if (g >= trained.size() || training >= trained[g].size() || !trained[g][training]) {
            throw InputError(joined("found no models of gesture ", internal::quoted(name),
                                    ", expected those of every training"));
        }
        task.gestures.push_back(*trained[g][training]);
    }
    return task;
}

TrainingResult TrainingPlan::result(const std::vector<ToldApart>& told) const {
    const PreparedSet& set = parts->set;
    if (told.size() != trainings() || told.back().gestures.size() != set.samples.size()) {
        throw InputError("found parts of another training, expected those of this one");
    }
    const std::vector<GestureModels>& gestures = told.back().gestures;
    std::vector<CalibrationAnswers> answers;
    for (std::size_t r = 0; r < set.runs.size(); ++r) {
        requireAnswers(told[r].answers, set.turns.size());
        answers.push_back(told[r].answers);
    }
    const internal::CalibratedRatios found =
        internal::ratiosOf(answers, set.turns, parts->options.falseRejection);
    const internal::Acceptance acceptance =
        internal::acceptanceFor(gestures, parts->options, found, set.runsAreUsers);
    TrainingResult result{internal::composeRecognitionModel(gestures, set.codebook, acceptance,
                                                            found.turns, parts->options.name),
                          set.report};
    result.report.turns = found.turns;
    for (const GestureModels& gesture : gestures) result.report.gestures.push_back(gesture.report);
    result.report.acceptanceRatio = acceptance.ratio;
    return result;
}

}  // namespace Vesk::Kit
