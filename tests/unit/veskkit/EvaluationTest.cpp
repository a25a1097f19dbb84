#include "Gestures.h"

#include <veskkit/Error.h>
#include <veskkit/evaluation/Evaluation.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::drawnTraces;
using Vesk::Test::textOf;

/// Models small enough to be trained many times.
EvaluationOptions quickly() {
    EvaluationOptions options;
    options.training.preparation.points = 17;
    options.training.symbols = 16;
    options.training.states = 12;
    options.training.thresholdStates = 5;
    options.training.subModels = 1;
    options.training.iterations = 1;
    return options;
}

void expectSame(const std::vector<Outcome>& x, const std::vector<Outcome>& y) {
    ASSERT_EQ(x.size(), y.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        SCOPED_TRACE("outcome " + std::to_string(i));
        EXPECT_EQ(x[i].trace, y[i].trace);
        EXPECT_EQ(x[i].expected, y[i].expected);
        EXPECT_EQ(x[i].margin, y[i].margin);
        EXPECT_EQ(x[i].answers.size(), y[i].answers.size());
        for (const auto method : {&Outcome::models, &Outcome::templates}) {
            EXPECT_EQ((x[i].*method).gesture, (y[i].*method).gesture);
            EXPECT_EQ((x[i].*method).likeliest, (y[i].*method).likeliest);
            EXPECT_EQ((x[i].*method).asUnknown, (y[i].*method).asUnknown);
        }
    }
}

TEST(EvaluationTest, TheLeadOverTheRivalTellsWhatIsLikeliest) {
    const std::vector<Trace> traces = drawnTraces(11, 3, 3, 0.7);
    std::size_t mistaken = 0;
    for (const Outcome& outcome : evaluate(traces, leaveOneUserOut(traces), quickly())) {
        const bool right = outcome.models.likeliest == outcome.expected;
        EXPECT_NE(outcome.rival, outcome.expected);
        EXPECT_NE(outcome.rival, "");
        if (right) {
            EXPECT_GE(outcome.lead, 0.0);
        } else {
            ++mistaken;
            EXPECT_LE(outcome.lead, 0.0);
            EXPECT_EQ(outcome.rival, outcome.models.likeliest);
        }
    }
    EXPECT_GT(mistaken, 0U);
    EXPECT_LT(mistaken, traces.size() / 2);
    const std::vector<Trace> alone(traces.begin(), traces.begin() + 3);
    const std::vector<Fold> folds{{"one", {0, 1}, {2}}};
    EXPECT_EQ(evaluate(alone, folds, quickly())[0].rival, "");
}

TEST(EvaluationTest, EveryTestTraceHasOneOutcomeInTheOrderOfTheFolds) {
    const std::vector<Trace> traces = drawnTraces(1, 3, 2);
    const std::vector<Fold> folds = leaveOneUserOut(traces);
    const std::vector<Outcome> outcomes = evaluate(traces, folds, quickly());
    std::size_t next = 0;
    for (std::size_t f = 0; f < folds.size(); ++f) {
        for (const std::size_t i : folds[f].test) {
            ASSERT_LT(next, outcomes.size());
            EXPECT_EQ(outcomes[next].fold, f);
            EXPECT_EQ(outcomes[next].trace, i);
            EXPECT_EQ(outcomes[next].expected, traces[i].gesture);
            ++next;
        }
    }
    EXPECT_EQ(next, outcomes.size());
}

TEST(EvaluationTest, NeatDrawingsAreRecognisedAndUnknownOnesMostlyNot) {
    const std::vector<Trace> traces = drawnTraces(2, 4, 4);
    const std::vector<Outcome> outcomes = evaluate(traces, leaveOneUserOut(traces), quickly());
    for (const auto method : {&Outcome::models, &Outcome::templates}) {
        const Rates rates = ratesOf(outcomes, method);
        EXPECT_EQ(rates.argMax.value(), 1.0);
        EXPECT_EQ(rates.wrong.count, 0U);
        EXPECT_GT(rates.correct.value(), 0.9);
        EXPECT_EQ(rates.unknownAccepted.total, traces.size());
    }
    EXPECT_LT(ratesOf(outcomes, &Outcome::models).unknownAccepted.value(), 0.2);
}

// Who is left out draws every gesture as the others draw the next one: right answers could only
// come from that person's own traces.
TEST(EvaluationTest, NothingOfATestTraceIsTrainedOn) {
    std::vector<Trace> traces = drawnTraces(3, 4, 4);
    const std::map<std::string, std::string> swapped{{"caret", "check"},
                                                     {"check", "corner"},
                                                     {"corner", "square"},
                                                     {"square", "zigzag"},
                                                     {"zigzag", "caret"}};
    for (Trace& trace : traces) {
        if (trace.user == "u3") trace.gesture = swapped.at(trace.gesture);
    }
    std::vector<Fold> folds;
    for (Fold& fold : leaveOneUserOut(traces)) {
        if (fold.name == "without u3") folds.push_back(fold);
    }
    ASSERT_EQ(folds.size(), 1U);
    const std::vector<Outcome> outcomes = evaluate(traces, folds, quickly());
    EXPECT_EQ(outcomes.size(), 20U);
    for (const auto method : {&Outcome::models, &Outcome::templates}) {
        EXPECT_EQ(ratesOf(outcomes, method).argMax.count, 0U);
        EXPECT_EQ(ratesOf(outcomes, method).correct.count, 0U);
    }
}

TEST(EvaluationTest, AnUnknownGestureIsNeverAnsweredByItsOwnName) {
    const std::vector<Trace> traces = drawnTraces(4, 3, 3);
    const std::vector<Outcome> outcomes = evaluate(traces, leaveOneUserOut(traces), quickly());
    for (const Outcome& outcome : outcomes) {
        for (const auto method : {&Outcome::models, &Outcome::templates}) {
            ASSERT_TRUE((outcome.*method).asUnknown.has_value());
            EXPECT_NE((outcome.*method).asUnknown, outcome.expected);
        }
    }
}

TEST(EvaluationTest, AnswersAtTheModelsOwnRatioAreItsVerdicts) {
    EvaluationOptions options = quickly();
    options.training.acceptanceRatio = 3.0;
    const std::vector<Trace> traces = drawnTraces(8, 3, 3, 0.4);
    std::size_t accepted = 0;
    for (const Outcome& outcome : evaluate(traces, leaveOneUserOut(traces), options)) {
        // Models of five gestures, and of the four others: p has six digits.
        EXPECT_EQ(answerAt(outcome.answers, std::log(3.0)), outcome.models.gesture);
        EXPECT_EQ(answerAt(outcome.answersAsUnknown, std::log(3.0)), outcome.models.asUnknown);
        accepted += outcome.models.asUnknown->empty() ? 0 : 1;
    }
    EXPECT_GT(accepted, 0U);
}

TEST(EvaluationTest, AnswersAreByAllOfARatioThatNoTransitionProbabilityHolds) {
    EvaluationOptions options;
    options.training.iterations = 1;
    options.training.acceptanceRatio = 1e7;
    const std::vector<Trace> traces = drawnTraces(8, 3, 3, 0.25);
    std::size_t accepted = 0;
    std::size_t acceptedByLaxer = 0;
    for (const Outcome& outcome : evaluate(traces, leaveOneUserOut(traces), options)) {
        EXPECT_EQ(answerAt(outcome.answers, std::log(1e7)), outcome.models.gesture);
        EXPECT_EQ(answerAt(outcome.answersAsUnknown, std::log(1e7)), outcome.models.asUnknown);
        accepted += outcome.models.gesture.empty() ? 0 : 1;
        acceptedByLaxer += answerAt(outcome.answers, std::log(1e5)).empty() ? 0 : 1;
    }
    EXPECT_GT(accepted, 0U);
    EXPECT_GT(acceptedByLaxer, accepted);
}

TEST(EvaluationTest, WithoutTheTemplateMatcherTheRestIsTheSame) {
    const std::vector<Trace> traces = drawnTraces(9, 2, 2);
    EvaluationOptions options = quickly();
    const std::vector<Outcome> with = evaluate(traces, leaveOneUserOut(traces), options);
    options.templates = false;
    const std::vector<Outcome> without = evaluate(traces, leaveOneUserOut(traces), options);
    ASSERT_EQ(with.size(), without.size());
    for (std::size_t i = 0; i < with.size(); ++i) {
        EXPECT_EQ(with[i].models.gesture, without[i].models.gesture);
        EXPECT_EQ(with[i].models.asUnknown, without[i].models.asUnknown);
        EXPECT_NE(with[i].templates.likeliest, "");
        EXPECT_EQ(without[i].templates.likeliest, "");
        EXPECT_FALSE(without[i].templates.asUnknown.has_value());
    }
}

TEST(EvaluationTest, NothingIsTakenForUnknownWhereThatIsNotAskedOrNothingWouldBeLeft) {
    EvaluationOptions options = quickly();
    std::vector<Trace> traces = drawnTraces(5, 3, 2);
    options.unknownGestures = false;
    for (const Outcome& outcome : evaluate(traces, leaveOneUserOut(traces), options)) {
        EXPECT_FALSE(outcome.models.asUnknown.has_value());
        EXPECT_FALSE(outcome.templates.asUnknown.has_value());
    }
    options.unknownGestures = true;
    for (Trace& trace : traces) trace.gesture = "all";
    const std::vector<Outcome> outcomes = evaluate(traces, leaveOneUserOut(traces), options);
    EXPECT_EQ(ratesOf(outcomes, &Outcome::models).unknownAccepted.total, 0U);
}

TEST(EvaluationTest, TheNumberOfThreadsChangesNothing) {
    const std::vector<Trace> traces = drawnTraces(6, 3, 3, 0.4);
    EvaluationOptions options = quickly();
    options.training.threads = 1;
    const std::vector<Outcome> one = evaluate(traces, leaveOneUserOut(traces), options);
    options.training.threads = 5;
    expectSame(one, evaluate(traces, leaveOneUserOut(traces), options));
}

TEST(EvaluationTest, LabelsAreComparedAsTheModelHasThem) {
    std::vector<Trace> traces = drawnTraces(7, 3, 3);
    for (Trace& trace : traces) trace.gesture = "a " + trace.gesture;
    const std::vector<Outcome> outcomes = evaluate(traces, leaveOneUserOut(traces), quickly());
    EXPECT_EQ(outcomes[0].expected, "a_" + traces[outcomes[0].trace].gesture.substr(2));
    EXPECT_EQ(ratesOf(outcomes, &Outcome::models).argMax.value(), 1.0);
    EXPECT_EQ(ratesOf(outcomes, &Outcome::templates).argMax.value(), 1.0);
}

TEST(EvaluationTest, ATestTraceOfAnUntrainedGestureCountsAsItComes) {
    const std::vector<Trace> traces = drawnTraces(8, 1, 4);
    Fold fold{"no zigzag", {}, {}};
    for (std::size_t i = 0; i < traces.size(); ++i) {
        (traces[i].gesture == "zigzag" ? fold.test : fold.training).push_back(i);
    }
    for (const Outcome& outcome : evaluate(traces, {fold}, quickly())) {
        EXPECT_NE(outcome.models.gesture, "zigzag");
        EXPECT_NE(outcome.models.likeliest, "zigzag");
        EXPECT_FALSE(outcome.models.asUnknown.has_value());
    }
}

TEST(EvaluationTest, ProgressRunsToTheEndOfEveryFold) {
    const std::vector<Trace> traces = drawnTraces(9, 3, 2);
    std::vector<EvaluationProgress> told;
    evaluate(traces, leaveOneUserOut(traces), quickly(),
             [&](const EvaluationProgress& progress) { told.push_back(progress); });
    ASSERT_FALSE(told.empty());
    double before = 0.0;
    for (const EvaluationProgress& progress : told) {
        EXPECT_EQ(progress.folds, 3U);
        EXPECT_GE(progress.share, 0.0);
        EXPECT_LE(progress.share, 1.0);
        const double now = static_cast<double>(progress.fold) + progress.share;
        EXPECT_GE(now, before);
        before = now;
    }
    EXPECT_EQ(before, 3.0);
}

TEST(EvaluationTest, ATestTraceNeedsALabel) {
    std::vector<Trace> traces = drawnTraces(10, 2, 2);
    traces[0].gesture.clear();
    traces[0].source = "t.jsonl";
    traces[0].line = 7;
    const std::vector<Fold> folds{{"one", {1, 2, 3}, {0}}};
    const std::string text = textOf<InputError>([&] { evaluate(traces, folds, quickly()); });
    EXPECT_EQ(text, "t.jsonl:7: found no label, expected the gesture's name");
}

/// One outcome of hand-picked answers.
Outcome outcomeOf(const std::string& expected, const std::string& gesture,
                  const std::string& likeliest) {
    return {0, 0, expected, {gesture, likeliest, {}}, {}, Rejection::None, 0.0, {}, {}};
}

TEST(EvaluationTest, RatesCountAnswersLikeliestGesturesAndUnknownOnes) {
    std::vector<Outcome> outcomes{outcomeOf("a", "a", "a"), outcomeOf("a", "b", "b"),
                                  outcomeOf("b", "", "b"), outcomeOf("b", "", "")};
    outcomes[0].models.asUnknown = "";
    outcomes[1].models.asUnknown = "b";
    outcomes[2].models.asUnknown = "a";
    const Rates rates = ratesOf(outcomes, &Outcome::models);
    EXPECT_EQ(rates.argMax.count, 2U);
    EXPECT_EQ(rates.correct.count, 1U);
    EXPECT_EQ(rates.wrong.count, 1U);
    EXPECT_EQ(rates.rejected.count, 2U);
    for (const Share& share : {rates.argMax, rates.correct, rates.wrong, rates.rejected}) {
        EXPECT_EQ(share.total, 4U);
    }
    EXPECT_EQ(rates.unknownAccepted.count, 2U);
    EXPECT_EQ(rates.unknownAccepted.total, 3U);
}

TEST(EvaluationTest, ConfusionCountsEveryAnswerOnce) {
    const std::vector<Outcome> outcomes{outcomeOf("b", "b", "b"), outcomeOf("b", "a", "a"),
                                        outcomeOf("b", "", "b"), outcomeOf("c", "b", "b"),
                                        outcomeOf("c", "", "c")};
    const Confusion confusion = confusionOf(outcomes, &Outcome::models);
    // "a" was only ever an answer.
    EXPECT_EQ(confusion.gestures, (std::vector<std::string>{"a", "b", "c"}));
    const std::vector<std::vector<std::size_t>> counts{{0, 0, 0, 0}, {1, 1, 0, 1}, {0, 1, 0, 1}};
    EXPECT_EQ(confusion.counts, counts);
    EXPECT_EQ(confusion.recall(1).count, 1U);
    EXPECT_EQ(confusion.recall(1).total, 3U);
    EXPECT_EQ(confusion.precision(1).count, 1U);
    EXPECT_EQ(confusion.precision(1).total, 2U);
    EXPECT_EQ(confusion.precision(2).total, 0U);
}

}  // namespace
}  // namespace Vesk::Kit
