#include "Gestures.h"
#include "TurnableModels.h"

#include <veskkit/Error.h>
#include <veskkit/recognition/StatePath.h>
#include <veskkit/training/GestureTrainer.h>
#include <veskkit/training/internal/ModelTraining.h>

#include <gmock/gmock.h>

#include <cmath>
#include <stdexcept>

namespace Vesk::Kit {
namespace {

using testing::ElementsAre;
using Vesk::Test::smallGestures;
using Vesk::Test::smallModel;
using Vesk::Test::smallSettings;

GestureRecognizer asDrawn() {
    return GestureRecognizer(smallModel(), {Preparation::asDrawn, false});
}

/// Right, right, then up: symbols 0 0 1.
Trace rightThenUp() {
    Trace trace;
    trace.gesture = "right";
    trace.points = {{0, 0}, {1, 0}, {2, 0}, {2, 1}};
    return trace;
}

TEST(StatePathTest, IsTheLikeliestPathBetweenThePositions) {
    const auto path = statePathOf(asDrawn(), 0, rightThenUp());
    ASSERT_TRUE(path);
    EXPECT_EQ(path->points, rightThenUp().points);
    EXPECT_THAT(path->states, ElementsAre(0, 0, 1));
    // pi = (1, 0), staying and going on 1/2; the first state emits 0 with 0.7, the second 1 with
    // 0.7, all else 0.1. Paths: 000, 001, 011.
    const double p = 0.7 * (0.5 * 0.7) * (0.5 * 0.1) + 0.7 * (0.5 * 0.7) * (0.5 * 0.7) +
                     0.7 * (0.5 * 0.1) * (1.0 * 0.7);
    EXPECT_NEAR(path->meanLogLikelihood, std::log(p) / 3, 1e-12);
}

TEST(StatePathTest, PositionsAreThoseThatTheQuantiserKeeps) {
    Vesk::ML::RecognitionModelHMM settings = smallSettings(0.5, smallGestures());
    settings.proxFilterThreshold = 0.75F;
    RecognitionModel model;
    for (Vesk::ML::LeftRightHMM& gesture : smallGestures()) model.add(gesture);
    model.build(settings);
    const GestureRecognizer recognizer(std::move(model), {Preparation::asDrawn, false});
    Trace trace;
    trace.points = {{0, 0}, {0, 0}, {0.5, 0}, {1, 0}, {1, 0}, {2, 0}, {2, 1}};
    const auto path = statePathOf(recognizer, 0, trace);
    ASSERT_TRUE(path);
    EXPECT_EQ(path->points, (Points{{0, 0}, {1, 0}, {2, 0}, {2, 1}}));
    EXPECT_EQ(path->states.size() + 1, path->points.size());
}

TEST(StatePathTest, NothingForTracesThatAreTooShortAndAnErrorForUnusableOnes) {
    Trace trace = rightThenUp();
    trace.points.resize(2);
    EXPECT_FALSE(statePathOf(asDrawn(), 0, trace));
    trace.points = {{1, 1}, {1, 1}, {1, 1}};
    EXPECT_FALSE(statePathOf(asDrawn(), 0, trace));
    trace.points = {{1}, {2, 2}};
    EXPECT_THROW(statePathOf(asDrawn(), 0, trace), InputError);
    EXPECT_THROW(statePathOf(asDrawn(), 3, rightThenUp()), std::out_of_range);
}

TEST(BestExamplesTest, EachSubModelHasTheTraceThatItExplainsBest) {
    Trace down = rightThenUp();
    down.points = {{0, 0}, {1, 0}, {1, -1}, {1, -2}};  // 0 3 3: of the second sub-model of "right"
    Trace ragged = rightThenUp();
    ragged.points = {{0, 0}, {0, 1}, {1, 1}, {1, 2}};  // 1 0 1
    Trace other = rightThenUp();
    other.gesture = "left";
    const std::vector<Trace> traces{ragged, rightThenUp(), rightThenUp(), down, other};
    const auto examples = bestExamples(asDrawn(), traces);
    ASSERT_EQ(examples.size(), 3U);
    ASSERT_TRUE(examples[0]);
    EXPECT_EQ(examples[0]->trace, 1U) << "the first of two";
    EXPECT_THAT(examples[0]->path.states, ElementsAre(0, 0, 1));
    EXPECT_FALSE(examples[1]) << "no trace of \"up\"";
    ASSERT_TRUE(examples[2]);
    EXPECT_EQ(examples[2]->trace, 3U);
}

TEST(BestExamplesTest, TracesOfATurnedCopyAreThoseOfItsOriginal) {
    const GestureRecognizer recognizer(
        internal::composeRecognitionModel(Vesk::Test::turnableModels(),
                                          Vesk::Test::evenDirections(16), {1e3}, 2, "all"),
        {Preparation::asDrawn, false});
    Trace line;  // in direction 1, where g0 goes in direction 3
    line.gesture = "g0";
    for (int n = 0; n < 12; ++n) line.points.push_back({n * 0.924, n * 0.383});
    const auto examples = bestExamples(recognizer, {line});
    ASSERT_EQ(examples.size(), 6u);
    for (std::size_t m = 0; m < examples.size(); ++m) EXPECT_EQ(examples[m].has_value(), m == 0);
}

TEST(BestExamplesTest, TrainedModelsHaveTracesOfTheirOwn) {
    const std::vector<Trace> traces = Vesk::Test::drawnTraces(3, 2, 3);
    TrainingOptions options;
    options.calibrate = false;
    const GestureRecognizer recognizer(GestureTrainer(options).train(traces).model);
    const auto examples = bestExamples(recognizer, traces);
    ASSERT_EQ(examples.size(), recognizer.model().gestures().size());
    for (std::size_t m = 0; m < examples.size(); ++m) {
        ASSERT_TRUE(examples[m]);
        EXPECT_EQ(traces[examples[m]->trace].gesture, recognizer.model().gestures()[m]->name);
        const std::vector<int>& states = examples[m]->path.states;
        EXPECT_EQ(states.size(), 40U);
        EXPECT_EQ(states.front(), 0);
        for (std::size_t t = 1; t < states.size(); ++t) {
            EXPECT_GE(states[t], states[t - 1]);
            EXPECT_LE(states[t], states[t - 1] + options.delta);
        }
    }
}

}  // namespace
}  // namespace Vesk::Kit
