#include "QuickTraining.h"

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <veskkit/recognition/ModelText.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::correctOf;
using Vesk::Test::drawnTraces;
using Vesk::Test::quick;
using Vesk::Test::textOf;
using Vesk::Test::trainQuick;

TEST(GestureTrainerTest, TheDefaultsRecogniseDrawingsOfOthers) {
    const std::vector<Trace> test = drawnTraces(2, 2, 10);
    for (const int repetitions : {3, 8}) {
        SCOPED_TRACE(repetitions);
        TrainingResult result = GestureTrainer().train(drawnTraces(1, 3, repetitions));
        const GestureRecognizer recognizer(std::move(result.model));
        EXPECT_GE(correctOf(recognizer, test), test.size() * 95 / 100);
    }
}

TEST(GestureTrainerTest, ThreeToFiveTracesAGestureTellThemApart) {
    const std::vector<Trace> test = drawnTraces(2, 2, 10);
    for (const int repetitions : {3, 4, 5}) {
        SCOPED_TRACE(repetitions);
        TrainingResult result = GestureTrainer().train(drawnTraces(1, 1, repetitions));
        const GestureRecognizer recognizer(std::move(result.model));
        for (const Trace& trace : test) {
            const Result recognized = recognizer.recognize(trace);
            EXPECT_EQ(recognized.scores.front().gesture, trace.gesture);
        }
        EXPECT_GE(correctOf(recognizer, test), test.size() * 90 / 100);
    }
}

TEST(GestureTrainerTest, ModelIsWhatItsFileHolds) {
    const TrainingResult result = trainQuick(drawnTraces(1, 2, 3));
    EXPECT_EQ(modelText(asStored(result.model).get()), modelText(result.model.get()));
    const auto stored = asStored(result.model);
    EXPECT_TRUE(Vesk::Test::bitEqual(stored.get().a, result.model.get().a));
    EXPECT_TRUE(
        Vesk::Test::bitEqual(stored.get().gestures[0]->b, result.model.get().gestures[0]->b));
    EXPECT_TRUE(result.model.get().fromParameters);
}

TEST(GestureTrainerTest, ModelHasTheSettingsAsked) {
    TrainingOptions options = quick();
    options.name = "mine";
    options.delta = 2;
    const TrainingResult result = GestureTrainer(options).train(drawnTraces(1, 1, 3));
    const auto& model = result.model.get();
    EXPECT_EQ(model.name, "mine");
    EXPECT_EQ(model.codebook.size(), 16u);
    EXPECT_EQ(model.codebook[1], 22.5);
    EXPECT_EQ(model.proxFilterThreshold, 0.0f);
    EXPECT_FALSE(model.rotationAllowed);
    EXPECT_EQ(model.vocabSize, 16u);
    EXPECT_EQ(model.numStates, 5u * 4u);
    ASSERT_EQ(result.model.gestures().size(), 5u);
    EXPECT_EQ(result.model.gestures()[0]->numStates, 10u);
    EXPECT_EQ(result.model.gestures()[0]->delta, 2);
    EXPECT_EQ(result.model.gestureNames(),
              (std::vector<std::string>{"caret", "check", "corner", "square", "zigzag"}));
}

TEST(GestureTrainerTest, EmissionsAreProperAndNowhereZero) {
    const TrainingResult result = trainQuick(drawnTraces(1, 1, 3));
    for (const auto& gesture : result.model.gestures()) {
        for (int i = 0; i < gesture->b.rows; ++i) {
            double sum = 0.0;
            for (int k = 0; k < gesture->b.cols; ++k) {
                EXPECT_GT(gesture->b(i, k), 1e-5);
                sum += gesture->b(i, k);
            }
            EXPECT_NEAR(sum, 1.0, 1e-5);
        }
    }
}

// Trained self-transitions can end one rounding error above 1.
TEST(GestureTrainerTest, TransitionsAreProbabilities) {
    TrainingOptions options = quick();
    options.acceptanceRatio = 1.0;
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        const TrainingResult result = GestureTrainer(options).train(drawnTraces(seed, 1, 5));
        for (const double value : result.model.get().a.data) {
            ASSERT_GE(value, 0.0);
            ASSERT_LE(value, 1.0);
        }
    }
}

TEST(GestureTrainerTest, TheSameTracesGiveTheSameBytes) {
    TrainingOptions options = quick();
    options.subModels = 3;
    const auto train = [&] {
        return modelText(GestureTrainer(options).train(drawnTraces(4, 3, 6)).model.get());
    };
    EXPECT_EQ(train(), train());
}

TEST(GestureTrainerTest, AnyNumberOfThreadsGivesTheSameBytes) {
    const std::vector<Trace> traces = drawnTraces(1, 3, 4);
    TrainingOptions options = quick();
    options.subModels = 2;
    options.smallestSubModel = 2;
    options.threads = 1;
    const TrainingResult alone = GestureTrainer(options).train(traces);
    for (const unsigned threads : {2U, 5U, 0U}) {
        options.threads = threads;
        const TrainingResult together = GestureTrainer(options).train(traces);
        EXPECT_EQ(modelText(together.model.get()), modelText(alone.model.get()));
        ASSERT_EQ(together.report.gestures.size(), alone.report.gestures.size());
        for (std::size_t g = 0; g < alone.report.gestures.size(); ++g) {
            EXPECT_EQ(together.report.gestures[g].gesture, alone.report.gestures[g].gesture);
        }
    }
}

TEST(GestureTrainerTest, GesturesAreInTheOrderOfTheirNames) {
    std::vector<Trace> traces = drawnTraces(1, 1, 2);
    std::reverse(traces.begin(), traces.end());
    EXPECT_EQ(trainQuick(traces).model.gestureNames(),
              (std::vector<std::string>{"caret", "check", "corner", "square", "zigzag"}));
}

TEST(GestureTrainerTest, WritesNothing) {
    const std::vector<Trace> traces = drawnTraces(1, 3, 2);
    const Vesk::Test::Capture capture;
    trainQuick(traces);
    EXPECT_EQ(capture.text(), "");
}

TEST(GestureTrainerTest, ReportsWhatItDid) {
    TrainingOptions options = quick();
    options.subModels = 2;
    options.smallestSubModel = 3;
    options.acceptanceRatio = 500.0;
    options.iterations = 1;
    const TrainingReport report = GestureTrainer(options).train(drawnTraces(1, 2, 4)).report;
    EXPECT_EQ(report.traces, 40u);
    ASSERT_EQ(report.gestures.size(), 5u);
    for (const GestureReport& gesture : report.gestures) {
        EXPECT_EQ(gesture.traces, 8u);
        EXPECT_EQ(gesture.users, 2u);
        EXPECT_EQ(gesture.gesture, gesture.label);
        std::size_t traces = 0;
        for (const SubModelReport& model : gesture.subModels) {
            EXPECT_GE(model.traces, 3u);
            EXPECT_EQ(model.iterations, 1);
            EXPECT_LT(model.logLikelihood, 0.0);
            EXPECT_GT(model.logLikelihood, -3.0);
            traces += model.traces;
        }
        EXPECT_EQ(traces, 8u);
    }
    EXPECT_EQ(report.calibrationRuns, 0u);
    EXPECT_NEAR(report.acceptanceRatio, 500.0, 1.0);
    EXPECT_TRUE(report.warnings.empty());
    EXPECT_TRUE(report.skipped.empty());
}

TEST(GestureTrainerTest, SubModelsFollowTheNumberOfTracesAndHowTheyDiffer) {
    TrainingOptions options = quick();
    options.subModels.reset();
    options.calibrate = false;
    TrainingResult few = GestureTrainer(options).train(drawnTraces(1, 1, 19));
    EXPECT_EQ(few.report.gestures[0].subModels.size(), 1u);
    EXPECT_NEAR(few.report.acceptanceRatio, 1e3, 1.0);
    std::vector<Trace> traces = drawnTraces(1, 1, 60);
    EXPECT_EQ(GestureTrainer(options).train(traces).report.gestures[0].subModels.size(), 1u);
    for (std::size_t i = 0; i < traces.size(); i += 2) {
        std::reverse(traces[i].points.begin(), traces[i].points.end());
    }
    TrainingResult more = GestureTrainer(options).train(traces);
    EXPECT_GT(more.report.gestures[0].subModels.size(), 1u);
    EXPECT_LE(more.report.gestures[0].subModels.size(), 6u);
    EXPECT_NEAR(more.report.acceptanceRatio, 1e4, 30.0);
    EXPECT_EQ(more.model.gestureNames().size(), 5u);
    EXPECT_EQ(more.model.gestures()[0]->name, more.model.gestures()[1]->name);
}

TEST(GestureTrainerTest, OneGestureIsEnough) {
    std::vector<Trace> traces;
    for (const Trace& trace : drawnTraces(1, 3, 4)) {
        if (trace.gesture == "zigzag") traces.push_back(trace);
    }
    TrainingResult result = GestureTrainer().train(traces);
    ASSERT_EQ(result.report.warnings.size(), 1u);
    EXPECT_EQ(result.report.warnings[0],
              "one gesture only: it is told from other movements by its threshold alone");
    const GestureRecognizer recognizer(std::move(result.model));
    for (const Trace& trace : drawnTraces(2, 1, 5)) {
        EXPECT_EQ(recognizer.recognize(trace).gesture, trace.gesture == "zigzag" ? "zigzag" : "");
    }
}

TEST(GestureTrainerTest, OneTraceIsEnough) {
    std::vector<Trace> traces = drawnTraces(1, 1, 1);
    traces.resize(1);
    TrainingResult result = GestureTrainer().train(traces);
    EXPECT_EQ(result.report.warnings.front(),
              "gesture \"caret\" has 1 trace: 3 or more make a model that recognises others");
    EXPECT_EQ(GestureRecognizer(std::move(result.model)).recognize(traces[0]).gesture, "caret");
}

TEST(GestureTrainerTest, StraightLinesAreGesturesToo) {
    std::vector<Trace> traces;
    for (const std::string name : {"right", "up"}) {
        for (int i = 1; i <= 4; ++i) {
            Trace trace;
            trace.gesture = name;
            const double length = 10.0 * i;
            trace.points = {
                {0, 0},
                name == "up" ? std::vector<double>{0, length} : std::vector<double>{length, 0}};
            traces.push_back(trace);
        }
    }
    const GestureRecognizer recognizer(GestureTrainer().train(traces).model);
    EXPECT_EQ(correctOf(recognizer, traces), traces.size());
}

TEST(GestureTrainerTest, ReportsProgressToTheEnd) {
    std::vector<TrainingProgress> seen;
    GestureTrainer(quick()).train(
        drawnTraces(1, 3, 2), [&](const TrainingProgress& progress) { seen.push_back(progress); });
    // Three users left out, and the model itself: five gestures, and 24 rounds between them.
    ASSERT_EQ(seen.size(), 4u * (5u + 24u));
    for (std::size_t i = 0; i < seen.size(); ++i) {
        EXPECT_EQ(seen[i].done, i + 1);
        EXPECT_EQ(seen[i].total, seen.size());
    }
}

TEST(GestureTrainerTest, AnObserversExceptionEndsTheTraining) {
    int calls = 0;
    const auto stop = [&](const TrainingProgress&) {
        ++calls;
        throw std::logic_error("enough");
    };
    EXPECT_EQ(textOf<std::logic_error>(
                  [&] { GestureTrainer(quick()).train(drawnTraces(1, 3, 2), stop); }),
              "enough");
    EXPECT_EQ(calls, 1);
}

TEST(GestureTrainerTest, EqualSegmentsAreAnotherFirstEstimate) {
    TrainingOptions options = quick();
    options.firstEstimate = FirstEstimate::EqualSegments;
    const TrainingResult other = GestureTrainer(options).train(drawnTraces(1, 1, 4));
    EXPECT_NE(modelText(other.model.get()),
              modelText(trainQuick(drawnTraces(1, 1, 4)).model.get()));
    const GestureRecognizer recognizer(other.model.clone(), options.preparation);
    const std::vector<Trace> test = drawnTraces(2, 1, 4);
    EXPECT_GE(correctOf(recognizer, test), test.size() * 9 / 10);
}

TEST(GestureTrainerTest, IterationsMayBeNone) {
    TrainingOptions options = quick();
    options.iterations = 0;
    const TrainingReport report = GestureTrainer(options).train(drawnTraces(1, 1, 3)).report;
    for (const GestureReport& gesture : report.gestures) {
        EXPECT_EQ(gesture.subModels[0].iterations, 0);
    }
}

}  // namespace
}  // namespace Vesk::Kit
