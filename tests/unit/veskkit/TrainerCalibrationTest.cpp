#include "QuickTraining.h"

#include <veskkit/training/internal/TrainedSet.h>

#include <gtest/gtest.h>

#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::drawnTraces;
using Vesk::Test::quick;
using Vesk::Test::trainQuick;

TEST(TrainerCalibrationTest, CalibratesByUserFromThreeUsersOn) {
    const TrainingReport three = trainQuick(drawnTraces(1, 3, 3, 0.2)).report;
    EXPECT_EQ(three.calibrationRuns, 3u);
    const TrainingReport eight = trainQuick(drawnTraces(1, 8, 1, 0.2)).report;
    EXPECT_EQ(eight.calibrationRuns, 6u);
    TrainingOptions options = quick();
    options.calibrate = false;
    EXPECT_EQ(GestureTrainer(options).train(drawnTraces(1, 3, 3)).report.calibrationRuns, 0u);
}

// Neat drawings are far likelier than the threshold model asks for without calibration, 1e3.
TEST(TrainerCalibrationTest, CalibrationByUserCanRaiseTheRatio) {
    EXPECT_GT(trainQuick(drawnTraces(1, 3, 3)).report.acceptanceRatio, 1.1e3);
    EXPECT_NEAR(trainQuick(drawnTraces(1, 2, 4)).report.acceptanceRatio, 1e3, 1.0);
}

TEST(TrainerCalibrationTest, CalibratesByTraceWithFewerOrUnknownUsers) {
    const TrainingReport two = trainQuick(drawnTraces(1, 2, 3, 0.2)).report;
    EXPECT_EQ(two.calibrationRuns, 4u);
    EXPECT_LE(two.acceptanceRatio, 1e3 + 1.0);
    std::vector<Trace> traces = drawnTraces(1, 5, 2);
    EXPECT_EQ(trainQuick(traces).report.calibrationRuns, 5u);
    traces.front().user.clear();
    EXPECT_EQ(trainQuick(traces).report.calibrationRuns, 4u);
}

// Only what single gestures are asked for is found then, which takes 50 traces and users, and
// whether turned copies do harm, which takes 20.
TEST(TrainerCalibrationTest, AGivenRatioIsCalibratedForGesturesOfManyTraces) {
    TrainingOptions options = quick();
    options.acceptanceRatio = 50.0;
    const auto reportOf = [&](const std::vector<Trace>& traces) {
        return GestureTrainer(options).train(traces).report;
    };
    std::vector<Trace> traces = drawnTraces(1, 5, 10, 0.2);
    const TrainingReport many = reportOf(traces);
    EXPECT_EQ(many.calibrationRuns, 5u);
    EXPECT_EQ(many.acceptanceRatio, 50.0);
    EXPECT_EQ(reportOf(drawnTraces(1, 3, 7, 0.2)).calibrationRuns, 3u);
    EXPECT_EQ(reportOf(drawnTraces(1, 3, 6, 0.2)).calibrationRuns, 0u);
    options.turns = 1;
    EXPECT_EQ(reportOf(drawnTraces(1, 7, 7, 0.2)).calibrationRuns, 0u) << "49 of each gesture";
    options.turns.reset();
    for (Trace& trace : traces) trace.user.clear();
    EXPECT_EQ(reportOf(traces).calibrationRuns, 0u);
}

TEST(TrainerCalibrationTest, OnlyGesturesOfManyTracesAreTurned) {
    TrainingOptions options = quick();
    options.turns = 1;
    const TrainingResult few = GestureTrainer(options).train(drawnTraces(1, 3, 6, 0.2));
    EXPECT_EQ(few.report.turns, 0);
    EXPECT_EQ(few.model.gestures().size(), few.model.gestureNames().size());
    const TrainingResult many = GestureTrainer(options).train(drawnTraces(1, 4, 5, 0.2));
    EXPECT_EQ(many.report.turns, 1);
    EXPECT_EQ(many.model.gestures().size(), 3 * many.model.gestureNames().size());
}

// Evaluation puts models together so, to see what they make of a gesture that they do not know.
TEST(TrainerCalibrationTest, ModelsWithoutAGestureHaveTurnedCopiesToo) {
    TrainingOptions options = quick();
    options.turns = 2;
    options.calibrate = false;
    const std::vector<Trace> traces = drawnTraces(1, 4, 5, 0.2);
    std::vector<const Trace*> borrowed;
    for (const Trace& trace : traces) borrowed.push_back(&trace);
    internal::TrainingSteps steps(nullptr);
    const internal::TrainedSet set = internal::trainSet(borrowed, options, steps);
    const RecognitionModel model = set.composeWithout(traces.front().gesture);
    EXPECT_EQ(model.gestures().size(), 5 * (set.gestures.size() - 1));
}

TEST(TrainerCalibrationTest, CalibrationGivesUpTheShareAskedFor) {
    const std::vector<Trace> traces = drawnTraces(1, 6, 6, 0.4);
    const auto ratioAt = [&](double falseRejection) {
        TrainingOptions options = quick();
        options.falseRejection = falseRejection;
        return GestureTrainer(options).train(traces).report.acceptanceRatio;
    };
    EXPECT_LT(ratioAt(0.0), ratioAt(0.05));
}

}  // namespace
}  // namespace Vesk::Kit
