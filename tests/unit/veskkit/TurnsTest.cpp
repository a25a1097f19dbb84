#include <veskkit/training/internal/ModelTraining.h>
#include <veskkit/training/internal/Turns.h>

#include <gmock/gmock.h>

#include <cstddef>

namespace Vesk::Kit::internal {
namespace {

using testing::ElementsAre;

std::vector<double> evenDirections(int count) {
    std::vector<double> codebook;
    for (int k = 0; k < count; ++k) codebook.push_back(360.0 * k / count);
    return codebook;
}

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

/// One state that emits as told.
Vesk::ML::LeftRightHMM emitting(const std::vector<double>& row) {
    Vesk::ML::LeftRightHMM model(1, static_cast<int>(row.size()), 1);
    model.b.data = row;
    return model;
}

TEST(TurnsTest, AModelTurnsWithItsDirections) {
    const std::vector<double> row{0.5, 0.25, 0.125, 0.125};
    const std::vector<double> quarters = evenDirections(4);
    const auto rowOf = [&](double degrees) {
        return turned(emitting(row), quarters, degrees).b.data;
    };
    EXPECT_THAT(rowOf(0), ElementsAre(0.5, 0.25, 0.125, 0.125));
    EXPECT_THAT(rowOf(90), ElementsAre(0.125, 0.5, 0.25, 0.125));
    EXPECT_THAT(rowOf(-90), ElementsAre(0.25, 0.125, 0.125, 0.5));
    EXPECT_THAT(rowOf(360), ElementsAre(0.5, 0.25, 0.125, 0.125));
    EXPECT_THAT(rowOf(44), ElementsAre(0.5, 0.25, 0.125, 0.125)) << "the nearest is its own";
    EXPECT_THAT(rowOf(46), ElementsAre(0.125, 0.5, 0.25, 0.125));
}

// Directions at 0, 10 and 180: turned by 10 the first was nearest to the first itself, and the
// second was the first.
TEST(TurnsTest, RowsOfATurnedModelAreNormalised) {
    const Vesk::ML::LeftRightHMM model = turned(emitting({0.5, 0.25, 0.25}), {0, 10, 180}, 10);
    EXPECT_THAT(model.b.data, ElementsAre(0.4, 0.4, 0.2));
}

}  // namespace
}  // namespace Vesk::Kit::internal
