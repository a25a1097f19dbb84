#include "Gestures.h"

#include <veskkit/Error.h>
#include <veskkit/io/CodebookFile.h>
#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/training/Codebook.h>
#include <veskkit/training/GestureTrainer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::drawnTraces;
using Vesk::Test::textOf;

constexpr Preparation asDrawn{Preparation::asDrawn, false};

/// A trace with one step in each of some directions, in degrees.
Trace stepping(const std::vector<double>& directions) {
    Trace trace;
    trace.points = {{0.0, 0.0}};
    for (const double direction : directions) {
        const double angle = direction * std::acos(-1.0) / 180.0;
        trace.points.push_back(
            {trace.points.back()[0] + std::cos(angle), trace.points.back()[1] + std::sin(angle)});
    }
    return trace;
}

TEST(CodebookTest, EvenDirectionsCountTheStepsNearestToEach) {
    const CodebookUse use = evenCodebook({stepping({0, 80, 100, 90}), stepping({181})}, 4, asDrawn);
    EXPECT_EQ(use.directions, (std::vector<double>{0, 90, 180, 270}));
    EXPECT_EQ(use.steps, (std::vector<std::size_t>{1, 3, 1, 0}));
    EXPECT_NEAR(use.meanDistance, (0 + 10 + 10 + 0 + 1) / 5.0, 1e-9);
}

TEST(CodebookTest, LearntDirectionsAreWhereTheStepsAre) {
    std::vector<double> steps;
    for (int n = 0; n < 50; ++n) {
        for (const double centre : {20.0, 110.0, 200.0, 290.0}) {
            steps.push_back(centre + n % 5 - 2);
        }
    }
    const CodebookUse use = learntCodebook({stepping(steps)}, 4, asDrawn);
    ASSERT_EQ(use.directions.size(), 4U);
    for (std::size_t k = 0; k < 4; ++k) {
        EXPECT_NEAR(use.directions[k], 20.0 + 90.0 * static_cast<double>(k), 0.01);
        EXPECT_EQ(use.steps[k], 50U);
    }
    EXPECT_NEAR(use.meanDistance, 1.2, 0.01);
    EXPECT_NEAR(evenCodebook({stepping(steps)}, 4, asDrawn).meanDistance, 20.0, 0.01);
}

TEST(CodebookTest, LearntDirectionsAreSortedDifferentAndAsAFileHoldsThem) {
    for (const int symbols : {2, 7, 32, 360}) {
        const CodebookUse use = learntCodebook(drawnTraces(1, 2, 2), symbols);
        ASSERT_FALSE(use.directions.empty());
        EXPECT_LE(use.directions.size(), static_cast<std::size_t>(symbols));
        EXPECT_EQ(use.steps.size(), use.directions.size());
        EXPECT_EQ(std::accumulate(use.steps.begin(), use.steps.end(), std::size_t{0}), 20U * 48U);
        for (std::size_t k = 0; k < use.directions.size(); ++k) {
            EXPECT_GE(use.directions[k], 0.0);
            EXPECT_LT(use.directions[k], 360.0);
            EXPECT_EQ(std::stod(codebookText({use.directions[k]})), use.directions[k]);
        }
        EXPECT_TRUE(
            std::is_sorted(use.directions.begin(), use.directions.end(), std::less_equal<>()))
            << "strictly";
        EXPECT_LE(use.meanDistance, evenCodebook(drawnTraces(1, 2, 2), symbols).meanDistance);
    }
}

TEST(CodebookTest, TracesWithoutADirectionHaveNoSteps) {
    Trace still;
    still.points = {{1, 1}, {1, 1}};
    const CodebookUse use = learntCodebook({still, Trace{}}, 4);
    EXPECT_EQ(use.steps, (std::vector<std::size_t>{0, 0, 0, 0}));
    EXPECT_EQ(use.meanDistance, 0.0);
    EXPECT_EQ(use.directions, (std::vector<double>{0, 90, 180, 270}));
}

TEST(CodebookTest, RefusesNumbersOfSymbolsOutOfRange) {
    for (const int symbols : {-1, 0, 361}) {
        EXPECT_NE(textOf<InputError>([&] {
                      evenCodebook({}, symbols);
                  }).find("for symbols, expected 1 to 360"),
                  std::string::npos);
        EXPECT_NE(textOf<InputError>([&] {
                      learntCodebook({}, symbols);
                  }).find("for symbols, expected 1 to 360"),
                  std::string::npos);
    }
}

TEST(CodebookTest, ModelsAreTrainedWithTheDirectionsGiven) {
    TrainingOptions options;
    options.states = 24;
    options.codebook = learntCodebook(drawnTraces(1, 2, 4), 20).directions;
    const TrainingResult result = GestureTrainer(options).train(drawnTraces(1, 2, 4));
    EXPECT_EQ(result.model.get().codebook, options.codebook);
    EXPECT_EQ(result.model.gestures().front()->vocabSize, options.codebook.size());
    const GestureRecognizer recognizer(result.model.clone());
    std::size_t right = 0;
    const std::vector<Trace> tests = drawnTraces(2, 2, 4);
    for (const Trace& trace : tests) {
        right += recognizer.recognize(trace).gesture == trace.gesture ? 1 : 0;
    }
    EXPECT_GE(right, tests.size() * 9 / 10);
}

TEST(CodebookTest, TheTrainerRefusesDirectionsThatCannotBeUsed) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const std::vector<double>& codebook :
         {std::vector<double>{1.0}, {0.0, 360.0}, {0.0, -1.0}, {0.0, nan}}) {
        TrainingOptions options;
        options.codebook = codebook;
        EXPECT_THROW(GestureTrainer{options}, InputError);
    }
}

}  // namespace
}  // namespace Vesk::Kit
