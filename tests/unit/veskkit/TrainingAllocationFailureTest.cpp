// Training, with each allocation failing.

#include "QuickTraining.h"

#include <support/FailingAllocator.h>
#include <veskkit/internal/Parallel.h>
#include <veskkit/recognition/ModelText.h>
#include <veskkit/synthesis/TraceSynthesizer.h>
#include <veskkit/training/Codebook.h>
#include <veskkit/training/KMedoids.h>
#include <veskkit/training/TrainingPlan.h>

#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::failEachAllocation;
using Vesk::Test::failEachAllocationOf;
using Vesk::Test::fewTraces;
using Vesk::Test::smallest;

/// An entry in the list of what is kept for ever for each model that was composed.
constexpr long entries = 10;

TEST(TrainingAllocationFailure, TrainerReleasesWhatItHolds) {
    const std::vector<Trace> traces = fewTraces();
    const GestureTrainer trainer(smallest());
    TrainingOptions named = smallest();
    named.name = "a-name-of-more-than-a-few-letters";
    EXPECT_GE(failEachAllocation([&] { const GestureTrainer made(named); }), 2);
    EXPECT_GE(
        failEachAllocationOf([&] { return modelText(trainer.train(traces).model.get()); }, entries),
        500);
}

TEST(TrainingAllocationFailure, TasksReleaseWhatTheyHold) {
    const std::vector<Trace> traces = fewTraces();
    EXPECT_GE(failEachAllocation([&] { const TrainingPlan made(traces, smallest()); }), 100);
    const TrainingPlan plan(traces, smallest());
    const GestureTask task = plan.gestureTask(0);
    EXPECT_GE(failEachAllocation([&] { plan.gestureTask(0); }), 20);
    EXPECT_GE(failEachAllocationOf([&] { return task.run().size(); }), 100);

    const std::vector<std::vector<std::optional<GestureModels>>> trained = {
        task.run(), plan.gestureTask(1).run()};
    const std::size_t last = plan.trainings() - 1;
    EXPECT_GE(failEachAllocation([&] { plan.tellApartTask(last, trained); }), 20);
    std::vector<ToldApart> parts;
    for (std::size_t t = 0; t <= last; ++t) parts.push_back(plan.tellApartTask(t, trained).run());
    for (std::size_t t = 0; t <= last; ++t) {
        const TellApartTask apart = plan.tellApartTask(t, trained);
        EXPECT_GE(failEachAllocationOf([&] { return apart.run().answers.ratios; }, entries), 20);
    }
    EXPECT_GE(
        failEachAllocationOf([&] { return modelText(plan.result(parts).model.get()); }, entries),
        20);
}

TEST(TrainingAllocationFailure, ClustersReleaseWhatTheyHold) {
    const std::vector<Trace> traces = fewTraces();
    std::vector<const Points*> points;
    for (const Trace& trace : traces) points.push_back(&trace.points);
    const std::vector<double> distances = {0, 1, 9, 9, 1, 0, 9, 9, 9, 9, 0, 1, 9, 9, 1, 0};
    const Clustering clustering = clusterAroundMedoids(distances, 4, 2, 1);
    EXPECT_GE(failEachAllocation([&] { clusterAroundMedoids(distances, 4, 2, 1); }), 6);
    EXPECT_GE(failEachAllocation([&] { clusterByShape(points, 2, 1); }), 10);
    EXPECT_GE(failEachAllocation([&] { clustering.members(); }), 4);
}

TEST(TrainingAllocationFailure, CodebooksReleaseWhatTheyHold) {
    const std::vector<Trace> traces = fewTraces();
    EXPECT_GE(
        failEachAllocationOf([&] { return evenCodebook(traces, 4, smallest().preparation).steps; }),
        20);
    EXPECT_GE(failEachAllocationOf(
                  [&] { return learntCodebook(traces, 4, smallest().preparation).directions; }),
              40);
}

TEST(TrainingAllocationFailure, SynthesisReleasesWhatItHolds) {
    const TraceSynthesizer synthesizer(1);
    const std::string gesture = TraceSynthesizer::gestures().front();
    EXPECT_GE(failEachAllocationOf([&] { return synthesizer.draw(gesture, 1, 1).points; }), 20);
    failEachAllocationOf([] { return TraceSynthesizer::userName(1); });
}

TEST(TrainingAllocationFailure, FewerThreadsDoAllTheWork) {
    std::atomic<int> done = 0;
    const auto work = [&] {
        done = 0;
        internal::parallelFor(20, 4, [&](std::size_t) { ++done; });
    };
    failEachAllocation(work, {.survived = [&] { EXPECT_EQ(done, 20); }});
    EXPECT_EQ(done, 20);
}

TEST(TrainingAllocationFailure, ThreadsThatFailEndTheWork) {
    const auto work = [] {
        internal::parallelFor(20, 4, [](std::size_t) { const std::vector<int> made(100); });
    };
    // A failure in the making of a thread is survived, one in a task is not.
    EXPECT_GE(failEachAllocation(work, {.survived = [] {}}), 10);
}

}  // namespace
}  // namespace Vesk::Kit
