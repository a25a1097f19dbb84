#include <support/BitEqual.h>
#include <veskkit/training/internal/Emissions.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Vesk::Kit::internal {
namespace {

using Vesk::Math::MatrixT;
using Vesk::Test::bitEqual;

MatrixT<double> matrix(int rows, int cols, std::vector<double> values) {
    MatrixT<double> result(rows, cols);
    result.data = std::move(values);
    return result;
}

// T = 3 over two states: floor(0 * 2 / 3), floor(1 * 2 / 3), floor(2 * 2 / 3) = 0, 0, 1;
// T = 2: 0, 1. State 0 sees 1, 1, 0, state 1 sees 2, 2.
TEST(EmissionsTest, EvenCutCountsSymbolsWhereTheyFall) {
    EXPECT_TRUE(bitEqual(matrix(2, 3, {1.0 / 3, 2.0 / 3, 0, 0, 0, 1}),
                         evenCutEmissions({{1, 1, 2}, {0, 2}}, 2, 3)));
}

// T = 2 over three states: floor(0 * 3 / 2), floor(1 * 3 / 2) = 0, 1.
TEST(EmissionsTest, EvenCutLeavesAStateThatSawNothingAtZero) {
    EXPECT_TRUE(bitEqual(matrix(3, 2, {1, 0, 0, 1, 0, 0}), evenCutEmissions({{0, 1}}, 3, 2)));
}

TEST(EmissionsTest, FloorKeepsRowsProper) {
    MatrixT<double> b = matrix(2, 2, {1, 0, 0, 0});
    floorEmissions(b, 0.25);
    EXPECT_TRUE(bitEqual(matrix(2, 2, {0.8, 0.2, 0.5, 0.5}), b));
}

TEST(EmissionsTest, OddsBecomeProbabilities) {
    MatrixT<double> b = matrix(1, 4, {0, 1, 3, std::numeric_limits<double>::infinity()});
    oddsToProbabilities(b);
    EXPECT_TRUE(bitEqual(matrix(1, 4, {0, 0.5, 0.75, 1}), b));
}

TEST(EmissionsTest, SmoothingSpreadsOverTheCircle) {
    MatrixT<double> b = matrix(1, 4, {1, 0, 0, 0});
    smoothEmissions(b, {0, 90, 180, 270}, 45);
    const double side = std::exp(-2.0);
    const double back = std::exp(-8.0);
    const double sum = 1 + 2 * side + back;
    EXPECT_NEAR(b(0, 0), 1 / sum, 1e-15);
    EXPECT_NEAR(b(0, 1), side / sum, 1e-15);
    EXPECT_NEAR(b(0, 2), back / sum, 1e-15);
    EXPECT_EQ(b(0, 1), b(0, 3));
}

TEST(EmissionsTest, SmoothingKeepsSums) {
    MatrixT<double> b = matrix(2, 3, {0.2, 0.5, 0.3, 0, 0, 1});
    smoothEmissions(b, {0, 10, 200}, 22);
    EXPECT_NEAR(b(0, 0) + b(0, 1) + b(0, 2), 1.0, 1e-15);
    EXPECT_NEAR(b(1, 0) + b(1, 1) + b(1, 2), 1.0, 1e-15);
}

TEST(EmissionsTest, NoWidthNoSmoothing) {
    MatrixT<double> b = matrix(1, 2, {0.3, 0.7});
    smoothEmissions(b, {0, 180}, 0);
    EXPECT_TRUE(bitEqual(matrix(1, 2, {0.3, 0.7}), b));
}

}  // namespace
}  // namespace Vesk::Kit::internal
