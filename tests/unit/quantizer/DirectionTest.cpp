#include <support/BitEqual.h>
#include <support/QuantizerReference.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Test;
using Reference::Trace;
using Vesk::ML::VectorQuantizer2D;

constexpr double infinity = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();

std::vector<double> directions(Trace trace) { return VectorQuantizer2D().convertSequence(trace); }

TEST(QuantizerDirectionTest, FewerThanTwoPositionsGiveOneZero) {
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0}, directions({})));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0}, directions({{3.0, 4.0}})));
}

TEST(QuantizerDirectionTest, DiagonalsLieInTheirQuadrants) {
    EXPECT_TRUE(bitEqual(std::vector<double>{45.0}, directions({{0, 0}, {1, 1}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{135.0}, directions({{0, 0}, {-1, 1}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{225.0}, directions({{0, 0}, {-1, -1}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{315.0}, directions({{0, 0}, {1, -1}})));
}

TEST(QuantizerDirectionTest, LevelStepsAreZeroAndOneHundredAndEighty) {
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0}, directions({{0, 0}, {1, 0}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{180.0}, directions({{0, 0}, {-1, 0}})));
}

TEST(QuantizerDirectionTest, VerticalStepsAreNinetyAndTwoHundredAndSeventy) {
    EXPECT_TRUE(bitEqual(std::vector<double>{90.0}, directions({{0, 0}, {0, 1}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{270.0}, directions({{0, 0}, {0, -1}})));
}

TEST(QuantizerDirectionTest, RepeatedPositionCountsAsDownwards) {
    EXPECT_TRUE(bitEqual(std::vector<double>{270.0}, directions({{2, 3}, {2, 3}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{270.0}, directions({{0.0, 0.0}, {-0.0, -0.0}})));
}

TEST(QuantizerDirectionTest, EveryStepIsMeasuredFromItsPredecessor) {
    // Right, up, left, down around a square.
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0, 90.0, 180.0, 270.0},
                         directions({{5, 5}, {6, 5}, {6, 6}, {5, 6}, {5, 5}})));
}

TEST(QuantizerDirectionTest, SlopeGoesThroughTheArctangentAndTheConstant) {
    // atan(1/2) = 0.4636476090008061 rad, times 57.29577951308232.
    EXPECT_TRUE(bitEqual(std::vector<double>{std::atan(0.5) * 57.29577951308232},
                         directions({{0, 0}, {2, 1}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{std::atan(0.5) * 57.29577951308232 + 180.0},
                         directions({{0, 0}, {-2, -1}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{std::atan(-0.5) * 57.29577951308232 + 180.0},
                         directions({{0, 0}, {-2, 1}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{std::atan(-0.5) * 57.29577951308232 + 360.0},
                         directions({{0, 0}, {2, -1}})));
}

TEST(QuantizerDirectionTest, FurtherCoordinatesAreIgnored) {
    EXPECT_TRUE(
        bitEqual(std::vector<double>{45.0, 90.0}, directions({{0, 0, nan}, {1, 1, 7, 8}, {1, 2}})));
}

TEST(QuantizerDirectionTest, AlmostLevelStepDownwardsRoundsUpToFullCircle) {
    // -1e-20 rad is below zero, and 360 - 5.7e-19 rounds to 360.
    EXPECT_TRUE(bitEqual(std::vector<double>{360.0}, directions({{0, 0}, {1, -1e-20}})));
}

TEST(QuantizerDirectionTest, NegativeZeroIsNotBelowZero) {
    // (-0.0 - 0.0) / 1 = -0.0, whose arctangent is -0.0: nothing is added.
    EXPECT_TRUE(bitEqual(std::vector<double>{-0.0}, directions({{0, 0.0}, {1, -0.0}})));
    // (0.0 - -0.0) / 1 = 0.0.
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0}, directions({{0, -0.0}, {1, 0.0}})));
}

TEST(QuantizerDirectionTest, InfiniteCoordinatesFollowTheArithmetic) {
    // A level step to infinity: slope y / inf = 0.
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0}, directions({{0, 0}, {infinity, 5}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{180.0}, directions({{0, 0}, {-infinity, -5}})));
    // Equal infinities are a vertical step, upwards or not.
    EXPECT_TRUE(bitEqual(std::vector<double>{90.0}, directions({{infinity, 0}, {infinity, 1}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{270.0}, directions({{-infinity, 0}, {-infinity, 0}})));
    // An infinite slope: atan(inf) = 90, atan(-inf) = -90.
    EXPECT_TRUE(bitEqual(std::vector<double>{90.0}, directions({{0, 0}, {1, infinity}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{270.0}, directions({{0, 0}, {1, -infinity}})));
    // inf / inf is NaN.
    EXPECT_TRUE(bitEqual(std::vector<double>{nan}, directions({{0, 0}, {infinity, infinity}})));
}

TEST(QuantizerDirectionTest, UndefinedXGivesUndefinedDirections) {
    EXPECT_TRUE(bitEqual(std::vector<double>{nan, nan, 0.0},
                         directions({{0, 0}, {nan, 1}, {1, 0}, {2, 0}})));
    // NaN is not equal to itself either.
    EXPECT_TRUE(bitEqual(std::vector<double>{nan}, directions({{nan, 0}, {nan, 1}})));
}

TEST(QuantizerDirectionTest, UndefinedYOnAVerticalStepCountsAsDownwards) {
    EXPECT_TRUE(
        bitEqual(std::vector<double>{270.0, 270.0}, directions({{1, 0}, {1, nan}, {1, 5}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{nan}, directions({{0, 0}, {1, nan}})));
}

TEST(QuantizerDirectionTest, TraceIsNotModified) {
    VectorQuantizer2D quantizer;
    Trace trace = {{1, 2}, {3, 4, 5}, {6, 7}};
    const Trace before = trace;
    quantizer.convertSequence(trace);
    EXPECT_EQ(trace, before);
}

TEST(QuantizerDirectionTest, RadiansAreMultipliedByTheConstant) {
    VectorQuantizer2D quantizer;
    const double constant = 57.29577951308232;
    EXPECT_TRUE(bitEqual(constant, quantizer.radToDeg(1.0)));
    for (const double rad : {0.0, -0.0, 0.1, 1e-300, 3.141592653589793, -2.5, 1e300, 5e-324,
                             infinity, -infinity, nan}) {
        EXPECT_TRUE(bitEqual(rad * constant, quantizer.radToDeg(rad))) << rad;
    }
    // Not a multiplication by 180 followed by a division: those differ in the last bit for some.
    for (int i = 1; i <= 1000; ++i) {
        const double rad = i * 0.00157;
        ASSERT_TRUE(bitEqual(rad * constant, quantizer.radToDeg(rad))) << rad;
    }
}

}  // namespace
