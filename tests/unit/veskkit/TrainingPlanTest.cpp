#include "Gestures.h"

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

}  // namespace
}  // namespace Vesk::Kit
