#include "Gestures.h"
#include "TurnableModels.h"

#include <support/Capture.h>
#include <veskkit/Error.h>
#include <veskkit/recognition/ModelText.h>
#include <veskkit/training/TrainingPlan.h>

#include <gtest/gtest.h>

#include <stdexcept>

namespace Vesk::Kit {
namespace {

using Vesk::Test::drawnTraces;

TrainingOptions quick() {
    TrainingOptions options;
    options.symbols = 16;
    options.states = 10;
    options.thresholdStates = 4;
    options.preparation.points = 17;
    options.discrimination = 3;
    return options;
}

/// All tasks of a plan, the last ones first.
std::vector<ToldApart> carriedOut(const TrainingPlan& plan) {
    std::vector<std::vector<std::optional<GestureModels>>> trained(plan.gestures());
    for (std::size_t g = plan.gestures(); g-- > 0;) trained[g] = plan.gestureTask(g).run();
    std::vector<ToldApart> parts(plan.trainings());
    for (std::size_t t = plan.trainings(); t-- > 0;) {
        parts[t] = plan.tellApartTask(t, trained).run();
    }
    return parts;
}

void expectSameAsTrainer(const std::vector<Trace>& traces, const TrainingOptions& options) {
    const TrainingPlan plan(traces, options);
    const TrainingResult pieces = plan.result(carriedOut(plan));
    const TrainingResult whole = GestureTrainer(options).train(traces);
    EXPECT_EQ(modelText(pieces.model.get()), modelText(whole.model.get()));
    EXPECT_EQ(pieces.report.acceptanceRatio, whole.report.acceptanceRatio);
    EXPECT_EQ(pieces.report.turns, whole.report.turns);
    EXPECT_EQ(pieces.report.calibrationRuns, whole.report.calibrationRuns);
    EXPECT_EQ(pieces.report.gestures.size(), whole.report.gestures.size());
}

std::vector<Trace> byNobody(int repetitions) {
    std::vector<Trace> traces = drawnTraces(5, 1, repetitions);
    for (Trace& trace : traces) trace.user.clear();
    return traces;
}

TEST(TrainingPlanTest, TasksInAnyOrderMakeTheTrainersModel) {
    expectSameAsTrainer(drawnTraces(5, 3, 2), quick());
    expectSameAsTrainer(drawnTraces(6, 8, 1), quick());
}

TEST(TrainingPlanTest, WithoutUsersAndWithoutCalibrationToo) {
    expectSameAsTrainer(byNobody(6), quick());
    TrainingOptions options = quick();
    options.calibrate = false;
    expectSameAsTrainer(byNobody(6), options);
    options.acceptanceRatio = 50.0;
    options.subModels = 2;
    expectSameAsTrainer(byNobody(12), options);
}

TEST(TrainingPlanTest, AGivenRatioIsCalibratedForGesturesOfManyTraces) {
    TrainingOptions options = quick();
    options.acceptanceRatio = 50.0;
    expectSameAsTrainer(drawnTraces(5, 3, 17), options);
}

TEST(TrainingPlanTest, GesturesOfOneUserAreLeftOutOfThatUsersRun) {
    std::vector<Trace> traces = drawnTraces(5, 3, 2);
    const std::string lonely = traces.front().gesture;
    for (Trace& trace : traces) {
        if (trace.gesture == lonely) trace.user = "u1";
    }
    const TrainingPlan plan(traces, quick());
    std::size_t without = 0;
    for (std::size_t g = 0; g < plan.gestures(); ++g) {
        for (const auto& models : plan.gestureTask(g).run()) without += models ? 0 : 1;
    }
    EXPECT_EQ(without, 1U);
    expectSameAsTrainer(traces, quick());
}

TEST(TrainingPlanTest, RefusesPartsOfSomethingElse) {
    const TrainingPlan plan(drawnTraces(5, 3, 2), quick());
    EXPECT_THROW(plan.gestureTask(plan.gestures()), std::out_of_range);
    EXPECT_THROW(plan.tellApartTask(0, {}), InputError);
    EXPECT_THROW(plan.tellApartTask(plan.trainings(), {}), std::out_of_range);
    EXPECT_THROW(plan.result({}), InputError);
    EXPECT_THROW(GestureTask{}.run(), InputError);
    EXPECT_THROW(TrainingPlan({}, quick()), InputError);
}

/// Traces in direction 1, which are those of g1 unless g0 may be turned by 45 degrees.
TellApartTask turnedTask() {
    TellApartTask task;
    task.options = quick();
    task.options.discrimination = 0;
    task.codebook = Vesk::Test::evenDirections(16);
    task.gestures = Vesk::Test::turnableModels();
    const std::vector<int> symbols(12, 1);
    task.training = {{"g0", {symbols}}, {"g1", {symbols}}};
    task.test = {{"g0", {symbols, symbols, symbols}}, {"g1", {symbols, symbols}}};
    task.turns = {0, 2};
    return task;
}

TEST(TrainingPlanTest, TasksCountWhatTurnedCopiesGainAndLose) {
    TellApartTask task = turnedTask();
    const CalibrationAnswers answers = task.run().answers;
    EXPECT_EQ(answers.gained, 3u);
    EXPECT_EQ(answers.lost, 2u);
    ASSERT_EQ(answers.ratios.size(), 2u);
    EXPECT_EQ(answers.leads[1].at("g0").size(), 3u);
    task.turns = {};
    EXPECT_THROW(task.run(), InputError);
    for (const int number : {-1, 5}) {
        task.turns = {0, number};
        EXPECT_THROW(task.run(), InputError) << number;
    }
}

TEST(TrainingPlanTest, RefusesAnswersThatDoNotFit) {
    const TrainingPlan plan(drawnTraces(5, 3, 2), quick());
    const std::vector<ToldApart> parts = carriedOut(plan);
    EXPECT_NO_THROW(plan.result(parts));
    const auto refuses = [&](const auto& change) {
        std::vector<ToldApart> changed = parts;
        change(changed.front().answers);
        EXPECT_THROW(plan.result(changed), InputError);
    };
    refuses([](CalibrationAnswers& it) { it.ratios.clear(); });
    refuses([](CalibrationAnswers& it) { it.leads.emplace_back(); });
    refuses([](CalibrationAnswers& it) { it.leads[0].erase(it.leads[0].begin()); });
    refuses([](CalibrationAnswers& it) { it.leads[0].begin()->second.pop_back(); });
    refuses([](CalibrationAnswers& it) { it.ratios[0]["nobody"] = {}; });
    refuses([](CalibrationAnswers& it) { it.ratios[0]["nobody"] = it.leads[0]["nobody"] = {}; });
}

}  // namespace
}  // namespace Vesk::Kit
