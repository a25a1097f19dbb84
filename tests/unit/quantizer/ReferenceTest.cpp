// The oracle itself, against values worked out by hand.

#include <support/BitEqual.h>
#include <support/QuantizerReference.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <list>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Test;
namespace Ref = Vesk::Test::Reference;

constexpr double infinity = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();

TEST(QuantizerReferenceTest, DirectionsOfAStarAreTheEightCompassPoints) {
    // atan(1) = 45, atan(-1) = -45: 45, then 45 + 180 to the left, -45 + 360 to the right.
    EXPECT_EQ(Ref::convertSequence({{0, 0}, {1, 1}}), std::vector<double>{45.0});
    EXPECT_EQ(Ref::convertSequence({{0, 0}, {-1, 1}}), std::vector<double>{135.0});
    EXPECT_EQ(Ref::convertSequence({{0, 0}, {-1, -1}}), std::vector<double>{225.0});
    EXPECT_EQ(Ref::convertSequence({{0, 0}, {1, -1}}), std::vector<double>{315.0});
    EXPECT_EQ(Ref::convertSequence({{0, 0}, {0, 5}, {0, 5}, {3, 5}, {-1, 5}}),
              (std::vector<double>{90.0, 270.0, 0.0, 180.0}));
    EXPECT_EQ(Ref::convertSequence({}), std::vector<double>{0.0});
}

TEST(QuantizerReferenceTest, FiltersKeepWhatTheArithmeticSays) {
    Ref::Trace eq;
    Ref::eqFilter({{1, 2}, {1, 2}, {3, 4}, {3, 4}, {1, 2}, {1, 2, 0}}, eq);
    EXPECT_EQ(eq, (Ref::Trace{{1, 2}, {3, 4}, {1, 2}, {1, 2, 0}}));

    // Distances from (0,0): 0.5 dropped, 1.0 kept; from (1,0): 0.5 dropped.
    Ref::Trace near;
    Ref::proximityFilter({{0, 0}, {0.5, 0}, {1, 0}, {1.5, 0}}, near, 1.0);
    EXPECT_EQ(near, (Ref::Trace{{0, 0}, {1, 0}}));

    Ref::Trace single;
    Ref::eqFilter({{1, 2}}, single);
    Ref::proximityFilter({{1, 2}}, single, 0.0);
    EXPECT_TRUE(single.empty());
    EXPECT_THROW(Ref::proximityFilter({{1, 2}, {1, 2, 3}}, single, 0.0), std::out_of_range);
}

TEST(QuantizerReferenceTest, NearestCentreWrapsAroundTheCircle) {
    const std::vector<double> centres = {0.0, 90.0, 180.0, 270.0};
    EXPECT_EQ(Ref::nearestCentre(316.0, centres), 0);  // 360 - 316 = 44 against 46
    EXPECT_EQ(Ref::nearestCentre(314.0, centres), 3);
    EXPECT_EQ(Ref::nearestCentre(45.0, centres), 0);   // a tie of 0 and 1
    EXPECT_EQ(Ref::nearestCentre(315.0, centres), 0);  // a tie of 3 and 0
    EXPECT_EQ(Ref::nearestCentre(-90.0, centres), 3);
    EXPECT_EQ(Ref::nearestCentre(-1e-20, centres), 0);  // -1e-20 + 360 = 360 becomes 0
    EXPECT_EQ(Ref::nearestCentre(nan, centres), 0);
    EXPECT_EQ(Ref::nearestCentre(10.0, {nan, infinity, 200.0}), 2);
    EXPECT_EQ(Ref::nearestCentre(10.0, {nan, infinity}), 0);
}

TEST(QuantizerReferenceTest, LearningFindsTheMeansOfTwoGroups) {
    // 350 and 10 average to 0 across the seam, 170 and 200 to 185.
    int iterations = 0;
    const std::vector<double> centres =
        Ref::learn({20.0, 160.0}, {{350.0, 10.0}, {170.0, 200.0, nan}}, -1, 1.0, &iterations);
    EXPECT_LE(Ref::circularDistance(centres[0], 0.0), 1e-9);
    EXPECT_NEAR(centres[1], 185.0, 1e-9);
    EXPECT_EQ(iterations, 1);  // the second assignment is the first again
    // 0 and 180 cancel out.
    EXPECT_EQ(Ref::learn({77.0}, {{0.0, 180.0}}, -1, 1.0), std::vector<double>{77.0});
}

TEST(QuantizerReferenceTest, GeneratedCodebookCarriesTheSinglePrecisionStep) {
    Ref::Quantizer quantizer;
    Ref::initializeCodebook(quantizer, 7);
    ASSERT_EQ(quantizer.codebook.size(), 7u);
    EXPECT_EQ(quantizer.codebook[1], 51.428569793701171875);
    EXPECT_NE(quantizer.codebook[1], 360.0 / 7);
}

TEST(QuantizerReferenceTest, ClassificationOfASquareIsTheFourSides) {
    Ref::Quantizer quantizer;
    Ref::setCodebook(quantizer, {0.0, 90.0, 180.0, 270.0});
    const Ref::Trace square = {{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}};
    EXPECT_EQ(Ref::classify(quantizer, square, 0.5f, false), (std::vector<int>{1, 0, 3, 2}));
    // Minus 1: 0, -1 + 4, 2, 1.
    EXPECT_EQ(Ref::classify(quantizer, square, 0.5f, true), (std::vector<int>{0, 3, 2, 1}));
}

TEST(QuantizerReferenceTest, TrainingWritesItsCounts) {
    Ref::Quantizer quantizer;
    Ref::setCodebook(quantizer, {10.0});
    std::ostringstream out;
    Ref::trainCodebook(quantizer, {{{0, 0}, {1, 0}, {1, 0}, {2, 0}}}, 0.5f, out);
    EXPECT_EQ(out.str(), "3 positions after eq filter\n3 positions after prox filter\n\n");
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0}, quantizer.codebook));
}

TEST(QuantizerReferenceTest, CodebookTextHasNoLineEndAfterTheLastEntry) {
    EXPECT_EQ(Ref::codebookText({0.0, 51.428569793701171875, 1e-7}), "0\n51.4286\n1e-07");
    EXPECT_EQ(Ref::codebookText({}), "");
}

}  // namespace
