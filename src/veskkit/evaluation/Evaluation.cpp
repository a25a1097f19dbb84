#include <veskkit/evaluation/Evaluation.h>

#include <veskkit/Error.h>
#include <veskkit/evaluation/TemplateMatcher.h>
#include <veskkit/internal/Parallel.h>
#include <veskkit/internal/Text.h>
#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/training/GestureTrainer.h>
#include <veskkit/training/internal/Discrimination.h>
#include <veskkit/training/internal/TrainedSet.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace Vesk::Kit {

using internal::joined;
using internal::TrainedSet;

namespace {

/// The training's part in the time of a fold, roughly.
constexpr double shareOfTraining = 0.8;

std::vector<const Trace*> picked(const std::vector<Trace>& traces,
                                 const std::vector<std::size_t>& places) {
    std::vector<const Trace*> result;
    result.reserve(places.size());
    for (const std::size_t i : places) result.push_back(&traces[i]);
    return result;
}

std::string likeliestOf(const Result& result) {
    if (result.scores.empty()) return {};
    const Score& best = result.scores.front();
    return best.logProbability > -std::numeric_limits<double>::infinity() ? best.gesture : "";
}

/// Fills in the rival of a trace's own gesture.
void compare(const Result& result, Outcome& outcome) {
    const auto bestWhere = [&](bool own) {
        return std::find_if(result.scores.begin(), result.scores.end(), [&](const Score& score) {
            return (score.gesture == outcome.expected) == own;
        });
    };
    const auto own = bestWhere(true);
    const auto rival = bestWhere(false);
    if (own == result.scores.end() || rival == result.scores.end()) return;
    outcome.rival = rival->gesture;
    // Neither can explain it: the difference of two infinities is none.
    if (own->logProbability != rival->logProbability)
        outcome.lead = own->logProbability - rival->logProbability;
}

/// What recognises the test traces of one fold.
class Recognizers {
public:
    Recognizers(const TrainedSet& set, const std::vector<const Trace*>& training,
                const std::set<std::string>& unknown, const EvaluationOptions& options,
                internal::TrainingSteps& steps)
        : all(set.compose(std::ref(steps)), options.training.preparation),
          restOfRatio(
              std::log(set.acceptance.ratio / internal::storedRatio(set.acceptance.ratio))) {
        if (options.templates) templates.emplace(training, options.training.falseRejection);
        for (const std::string& gesture : unknown) {
            const bool trained =
                std::any_of(set.gestures.begin(), set.gestures.end(),
                            [&](const GestureModels& it) { return it.report.gesture == gesture; });
            // Without its only gesture there is nothing left to recognise with.
            if (!trained || set.gestures.size() < 2) continue;
            without.try_emplace(gesture, set.composeWithout(gesture, std::ref(steps)),
                                options.training.preparation);
        }
    }

    void recognize(const Trace& trace, Outcome& outcome) const {
        const Result result = all.recognize(trace);
        outcome.models = {result.gesture, likeliestOf(result), {}};
        outcome.rejection = result.rejection;
        outcome.margin = result.margin;
        outcome.answers = answersOf(all, trace);
        compare(result, outcome);
        const auto other = without.find(outcome.expected);
        if (other != without.end()) {
            outcome.models.asUnknown = other->second.recognize(trace).gesture;
            outcome.answersAsUnknown = answersOf(other->second, trace);
        }
        if (!templates) return;
        const TemplateMatcher::Match match = templates->nearest(trace);
        outcome.templates = {accepted(match), match.gesture, {}};
        if (other == without.end()) return;
        outcome.templates.asUnknown = accepted(templates->nearest(trace, outcome.expected));
    }

private:
    /// By the whole of the ratios: the models' own are without what of theirs is not stored.
    std::vector<Answer> answersOf(const GestureRecognizer& recognizer, const Trace& trace) const {
        std::vector<Answer> answers = recognizer.answers(trace);
        for (Answer& answer : answers) answer.logRatio += restOfRatio;
        return answers;
    }

    std::string accepted(const TemplateMatcher::Match& match) const {
        return templates->accepts(match) ? match.gesture : "";
    }

    GestureRecognizer all;
    double restOfRatio;
    std::map<std::string, GestureRecognizer> without;
    std::optional<TemplateMatcher> templates;
};

}  // namespace

std::vector<Outcome> evaluate(const std::vector<Trace>& traces, const std::vector<Fold>& folds,
                              const EvaluationOptions& options,
                              const EvaluationObserver& observer) {
    const GestureTrainer checked(options.training);
    std::vector<Outcome> outcomes;
    for (std::size_t f = 0; f < folds.size(); ++f) {
        std::set<std::string> tested;
        const std::size_t first = outcomes.size();
        for (const std::size_t i : folds[f].test) {
            if (traces[i].gesture.empty()) {
                throw InputError(
                    joined(placeOf(traces[i]), ": found no label, expected the gesture's name"));
            }
            const std::string expected = storedName(traces[i].gesture);
            tested.insert(expected);
            outcomes.push_back({i, f, expected, {}, {}, Rejection::TooShort, 0.0, {}, {}});
        }
        const std::vector<const Trace*> training = picked(traces, folds[f].training);
        if (!options.unknownGestures) tested.clear();
        internal::TrainingSteps steps([&](const TrainingProgress& progress) {
            const double share =
                static_cast<double>(progress.done) / static_cast<double>(progress.total);
            if (observer) observer({f, folds.size(), shareOfTraining * share});
        });
        steps.expect(tested.size() *
                     internal::discriminationRounds(tested.size(), options.training));
        const TrainedSet set = internal::trainSet(training, options.training, steps);
        const Recognizers recognizers(set, training, tested, options, steps);
        internal::parallelFor(outcomes.size() - first, options.training.threads,
                              [&](std::size_t i) {
                                  Outcome& outcome = outcomes[first + i];
                                  recognizers.recognize(traces[outcome.trace], outcome);
                              });
        if (observer) observer({f, folds.size(), 1.0});
    }
    return outcomes;
}

Rates ratesOf(const std::vector<Outcome>& outcomes, Verdict Outcome::*method) {
    Rates rates;
    for (const Outcome& outcome : outcomes) {
        const Verdict& verdict = outcome.*method;
        const bool right = verdict.gesture == outcome.expected;
        rates.argMax.add(verdict.likeliest == outcome.expected);
        rates.correct.add(right);
        rates.wrong.add(!right && !verdict.gesture.empty());
        rates.rejected.add(verdict.gesture.empty());
        if (verdict.asUnknown) rates.unknownAccepted.add(!verdict.asUnknown->empty());
    }
    return rates;
}

Share Confusion::recall(std::size_t gesture) const {
    Share share;
    share.count = counts[gesture][gesture];
    for (const std::size_t count : counts[gesture]) share.total += count;
    return share;
}

Share Confusion::precision(std::size_t gesture) const {
    Share share;
    share.count = counts[gesture][gesture];
    for (const std::vector<std::size_t>& row : counts) share.total += row[gesture];
    return share;
}

Confusion confusionOf(const std::vector<Outcome>& outcomes, Verdict Outcome::*method) {
    std::set<std::string> names;
    for (const Outcome& outcome : outcomes) {
        names.insert(outcome.expected);
        const std::string& answer = (outcome.*method).gesture;
        if (!answer.empty()) names.insert(answer);
    }
    Confusion confusion;
    confusion.gestures.assign(names.begin(), names.end());
    const std::size_t count = names.size();
    confusion.counts.assign(count, std::vector<std::size_t>(count + 1));
    const auto placeOfName = [&](const std::string& name) {
        if (name.empty()) return count;
        const auto place =
            std::lower_bound(confusion.gestures.begin(), confusion.gestures.end(), name);
        return static_cast<std::size_t>(place - confusion.gestures.begin());
    };
    for (const Outcome& outcome : outcomes) {
        ++confusion.counts[placeOfName(outcome.expected)][placeOfName((outcome.*method).gesture)];
    }
    return confusion;
}

}  // namespace Vesk::Kit
