// Evaluation, tuning and diagnosis, with each allocation failing.

#include "QuickTraining.h"

#include <support/FailingAllocator.h>
#include <veskkit/diagnosis/Doctor.h>
#include <veskkit/evaluation/Evaluation.h>
#include <veskkit/evaluation/Folds.h>
#include <veskkit/evaluation/TemplateMatcher.h>
#include <veskkit/evaluation/TradeOff.h>
#include <veskkit/evaluation/Tuning.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::failEachAllocation;
using Vesk::Test::failEachAllocationOf;

/// An entry in the list of what is kept for ever for each model that was composed.
constexpr long entries = 20;

std::vector<std::string> answersOf(const std::vector<Outcome>& outcomes) {
    std::vector<std::string> answers;
    for (const Outcome& outcome : outcomes) {
        answers.push_back(outcome.models.likeliest + outcome.templates.likeliest);
    }
    return answers;
}

std::vector<std::string> textsOf(const std::vector<Finding>& findings) {
    std::vector<std::string> texts;
    for (const Finding& finding : findings) texts.push_back(finding.text);
    return texts;
}

class EvaluationAllocationFailure : public testing::Test {
protected:
    EvaluationAllocationFailure() {
        training.discrimination = 0;
        training.calibrate = false;
    }

    const std::vector<Trace> traces = Vesk::Test::fewTraces();
    TrainingOptions training = Vesk::Test::smallest();
    const std::vector<Fold> folds = leaveOneUserOut(traces);
};

TEST_F(EvaluationAllocationFailure, FoldsReleaseWhatTheyHold) {
    EXPECT_GE(failEachAllocation([&] { leaveOneUserOut(traces); }), 10);
    EXPECT_GE(failEachAllocation([&] { leaveUsersOut(traces, 2); }), 10);
    EXPECT_GE(failEachAllocation([&] { stratifiedFolds(traces, 2, 1); }), 10);
    const std::vector<Trace> more = Vesk::Test::drawnTraces(5, 2, 2);
    EXPECT_GE(failEachAllocation([&] { ownExamples(more, 1, 1); }), 10);
    EXPECT_GE(failEachAllocation([&] { withFewExamples(folds, traces, 1, 1); }), 10);
}

TEST_F(EvaluationAllocationFailure, TemplatesReleaseWhatTheyHold) {
    std::vector<const Trace*> pointers;
    for (const Trace& trace : traces) pointers.push_back(&trace);
    EXPECT_GE(failEachAllocation([&] { const TemplateMatcher made(pointers); }), 20);
    const TemplateMatcher matcher(pointers);
    EXPECT_GE(failEachAllocation([&] { matcher.nearest(traces[0]); }), 4);
}

TEST_F(EvaluationAllocationFailure, EvaluationReleasesWhatItHolds) {
    EvaluationOptions options;
    options.training = training;
    EXPECT_GE(
        failEachAllocationOf([&] { return answersOf(evaluate(traces, folds, options)); }, entries),
        500);
    const std::vector<Outcome> outcomes = evaluate(traces, folds, options);
    ASSERT_EQ(outcomes.size(), 4U);
    failEachAllocation([&] { ratesOf(outcomes, &Outcome::models); });
    EXPECT_GE(failEachAllocation([&] { confusionOf(outcomes, &Outcome::models); }), 4);
    EXPECT_GE(failEachAllocation([&] { tradeOffOf(outcomes); }), 2);
    failEachAllocation([&] { tradeOffAt(outcomes, 10.0); });
    failEachAllocation([&] { ratioFor(outcomes, 0.1); });
}

TEST_F(EvaluationAllocationFailure, TuningReleasesWhatItHolds) {
    TuningOptions options;
    options.training = training;
    options.options = {{"states", {2, 3}, [](TrainingOptions& it, double value) {
                            it.states = static_cast<int>(value);
                        }}};
    options.rounds = 1;
    // What the evaluations do with little memory is shown above.
    const std::vector<Outcome> outcomes = evaluate(traces, folds, {training, true, false});
    options.evaluation = [&](const EvaluationOptions&) { return outcomes; };
    EXPECT_GE(failEachAllocationOf([&] { return tune(traces, folds, options).best; }), 20);
    EXPECT_GE(failEachAllocation([] { usualTunedOptions(); }), 4);
}

TEST_F(EvaluationAllocationFailure, DiagnosisReleasesWhatItHolds) {
    DoctorOptions options;
    options.training = training;
    options.crossValidation = false;
    EXPECT_GE(failEachAllocationOf([&] { return textsOf(diagnose(traces, options)); }), 100);
    const std::vector<Finding> findings = diagnose(traces, options);
    EXPECT_GE(failEachAllocationOf([&] {
                  std::vector<Finding> sorted = findings;
                  sortFindings(sorted);
                  return textsOf(sorted);
              }),
              4);
}

TEST_F(EvaluationAllocationFailure, CrossValidatedDiagnosisReleasesWhatItHolds) {
    std::vector<Trace> many;
    for (int i = 0; i < 5; ++i) many.insert(many.end(), traces.begin(), traces.end());
    for (std::size_t i = 0; i < many.size(); ++i) many[i].points[0][0] += static_cast<double>(i);
    DoctorOptions options;
    options.training = training;
    EXPECT_GE(failEachAllocationOf([&] { return textsOf(diagnose(many, options)); }, entries), 500);
}

}  // namespace
}  // namespace Vesk::Kit
