#include "TurnableModels.h"

#include <veskkit/training/internal/ModelTraining.h>
#include <veskkit/training/internal/Turns.h>

#include <gmock/gmock.h>

#include <cstddef>

namespace Vesk::Kit::internal {
namespace {

using testing::ElementsAre;
using Vesk::Test::evenDirections;

TEST(TurnsTest, NextAndLastDirectionOfAnEvenCodebook) {
    const std::vector<double> codebook = evenDirections(32);
    const std::vector<int> forwards = turnedSymbols(codebook, Turn::Forwards);
    const std::vector<int> backwards = turnedSymbols(codebook, Turn::Backwards);
    for (int k = 0; k < 32; ++k) {
        EXPECT_EQ(forwards[static_cast<std::size_t>(k)], (k + 1) % 32);
        EXPECT_EQ(backwards[static_cast<std::size_t>(k)], (k + 31) % 32);
    }
}

TEST(TurnsTest, DirectionsInAnyOrderAndAcrossZero) {
    const std::vector<double> codebook{10, 355, 20};
    EXPECT_THAT(turnedSymbols(codebook, Turn::Forwards), ElementsAre(2, 0, 2)) << "20 to 355: far";
    EXPECT_THAT(turnedSymbols(codebook, Turn::Backwards), ElementsAre(1, 1, 0));
}

TEST(TurnsTest, FarDirectionsStay) {
    EXPECT_THAT(turnedSymbols(evenDirections(16), Turn::Forwards)[3], 3);
    EXPECT_THAT(turnedSymbols(evenDirections(17), Turn::Forwards)[3], 4);
    EXPECT_THAT(turnedSymbols({0}, Turn::Backwards), ElementsAre(0));
}

TEST(TurnsTest, ReplacesEverySymbol) {
    EXPECT_THAT(replaced({0, 2, 2, 1}, {5, 6, 7}), ElementsAre(5, 7, 7, 6));
}

/// A gesture whose traces all go in direction 8, unsmoothed.
Vesk::Math::MatrixT<double> emissionsOf(std::size_t traces) {
    const std::vector<Trace> drawn(traces);
    GestureSamples gesture{"line", "line", {}};
    for (const Trace& trace : drawn) gesture.samples.push_back({&trace, std::vector<int>(12, 8)});
    TrainingOptions options;
    options.states = 4;
    options.smoothing = 0.0;
    options.subModels = 1;
    return trainGesture(gesture, evenDirections(32), options).fine[0].b;
}

TEST(TurnsTest, FewTracesAreTrainedWithTheirTurns) {
    const Vesk::Math::MatrixT<double> few = emissionsOf(19);
    const Vesk::Math::MatrixT<double> enough = emissionsOf(20);
    for (int i = 0; i < few.rows; ++i) {
        EXPECT_GT(few(i, 7), 0.2);
        EXPECT_GT(few(i, 9), 0.2);
        EXPECT_LT(few(i, 10), 0.01);
        EXPECT_LT(enough(i, 7), 0.01);
        EXPECT_GT(enough(i, 8), 0.9);
    }
}

}  // namespace
}  // namespace Vesk::Kit::internal
