#include <vesk/quantizer/KMeansMotionVec.h>

#include <support/BitEqual.h>
#include <support/QuantizerReference.h>
#include <support/QuantizerTraces.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Test;
using Vesk::ML::KMeansMotionVec;
using Rows = std::vector<std::vector<double>>;

constexpr double infinity = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();

std::vector<double> learnt(const std::vector<double>& centres, Rows data, int maxIterations = -1,
                           double threshold = 1.0) {
    KMeansMotionVec clusterer(centres, data);
    clusterer.learn(maxIterations, threshold);
    return clusterer.centres;
}

TEST(LearningTest, CentreMovesToTheMeanOfItsAngles) {
    EXPECT_TRUE(sameDirections({20.0}, learnt({100.0}, {{10.0, 20.0, 30.0}})));
    EXPECT_TRUE(
        sameDirections({20.0, 215.0}, learnt({50.0, 190.0}, {{10.0, 30.0}, {200.0, 230.0}})));
}

TEST(LearningTest, MeanIsTakenAroundTheCircle) {
    EXPECT_TRUE(sameDirections({0.0}, learnt({90.0}, {{350.0, 10.0}})));
    EXPECT_TRUE(sameDirections({355.0}, learnt({20.0}, {{340.0, 10.0}})));
}

TEST(LearningTest, MeanOfUnevenAnglesIsThatOfTheirVectors) {
    // (1, 0) + (1, 0) + (0, 1): atan(1 / 2), not the mean 30 of the numbers.
    EXPECT_TRUE(sameDirections({std::atan(0.5) * 180.0 / 3.141592653589793},
                               learnt({40.0}, {{0.0, 0.0, 90.0}})));
}

TEST(LearningTest, LearntCentresLieOnTheCircle) {
    for (const Rows& data : {Rows{{350.0, 10.0}}, Rows{{-1e-20}}, Rows{{359.9999999999999}},
                             Rows{{-1.0, -2.0}}, Rows{{725.0}}, Rows{{-1e-13, 1e-14}}}) {
        const std::vector<double> centres = learnt({500.0}, data);
        ASSERT_EQ(centres.size(), 1u);
        EXPECT_GE(centres[0], 0.0);
        EXPECT_LT(centres[0], 360.0);
    }
}

TEST(LearningTest, EmptyClusterKeepsItsCentre) {
    EXPECT_TRUE(sameDirections({2.0, 200.0}, learnt({10.0, 200.0}, {{1.0, 3.0}})));
    EXPECT_TRUE(bitEqual(200.0, learnt({10.0, 200.0}, {{1.0, 3.0}})[1]));
    // Even where it lies outside the circle, or nowhere.
    const std::vector<double> centres = learnt({10.0, 560.0, -160.0, nan, infinity}, {{1.0, 3.0}});
    ASSERT_EQ(centres.size(), 5u);
    EXPECT_TRUE(bitEqual(560.0, centres[1]));
    EXPECT_TRUE(bitEqual(-160.0, centres[2]));
    EXPECT_TRUE(std::isnan(centres[3]));
    EXPECT_TRUE(bitEqual(infinity, centres[4]));
}

TEST(LearningTest, MeanWithoutADirectionKeepsTheCentre) {
    EXPECT_TRUE(bitEqual(std::vector<double>{77.0}, learnt({77.0}, {{0.0, 180.0}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{77.0}, learnt({77.0}, {{0, 90, 180, 270}})));
    EXPECT_TRUE(bitEqual(std::vector<double>{-7.0}, learnt({-7.0}, {{20.0, 140.0, 260.0}})));
    // The other centre moves all the same. 0 and 180 lie half way: they belong to the first.
    const std::vector<double> centres = learnt({90.0, 270.0}, {{0.0, 180.0}, {270.5}});
    EXPECT_TRUE(bitEqual(90.0, centres.at(0)));
    EXPECT_NEAR(centres.at(1), 270.5, 1e-9);
}

TEST(LearningTest, ManyAnglesThatCancelOutKeepTheCentre) {
    // What rounding leaves of their sum grows with their number.
    Rows data;
    for (int n = 0; n < 100000; ++n) data.push_back({20.0, 140.0, 260.0});
    EXPECT_TRUE(bitEqual(std::vector<double>{-7.0}, learnt({-7.0}, data)));
}

TEST(LearningTest, AlmostOppositeAnglesStillHaveADirection) {
    // The mean resultant length is cos(89.999 degrees) = 1.7e-5.
    EXPECT_NEAR(learnt({77.0}, {{0.001, 179.999}}).at(0), 90.0, 1e-6);
}

TEST(LearningTest, NoDataKeepsTheCentres) {
    const std::vector<double> centres = {10.0, 370.0, -5.0};
    EXPECT_TRUE(bitEqual(centres, learnt(centres, {})));
    EXPECT_TRUE(bitEqual(centres, learnt(centres, {{}, {}})));
}

TEST(LearningTest, NonFiniteAnglesAreIgnored) {
    EXPECT_TRUE(bitEqual(std::vector<double>{10.0, 20.0},
                         learnt({10.0, 20.0}, {{nan, infinity}, {-infinity}})));
    EXPECT_TRUE(sameDirections(
        {5.0, 95.0}, learnt({10.0, 90.0}, {{nan, 5.0, infinity}, {95.0, -infinity, nan}})));
}

TEST(LearningTest, WithoutCentresNothingHappens) {
    EXPECT_TRUE(learnt({}, {{1.0, 2.0}}).empty());
    EXPECT_TRUE(learnt({}, {}).empty());
}

TEST(LearningTest, CentresKeepTheirOrder) {
    EXPECT_TRUE(sameDirections({272.0, 3.0, 184.0, 91.0},
                               learnt({280.0, 10.0, 190.0, 100.0}, {{91.0, 3.0, 184.0, 272.0}})));
}

TEST(LearningTest, EqualCentresLeaveAllAnglesToTheFirst) {
    EXPECT_TRUE(sameDirections({15.0, 50.0}, learnt({50.0, 50.0}, {{10.0, 20.0}})));
    EXPECT_TRUE(bitEqual(50.0, learnt({50.0, 50.0}, {{10.0, 20.0}})[1]));
}

TEST(LearningTest, NonFiniteCentresAloneLeaveAllAnglesToTheFirst) {
    const std::vector<double> centres = learnt({nan, infinity}, {{10.0, 20.0}});
    ASSERT_EQ(centres.size(), 2u);
    EXPECT_NEAR(centres[0], 15.0, 1e-9);
    EXPECT_TRUE(bitEqual(infinity, centres[1]));
}

TEST(LearningTest, AnglesMayBeTurnsOff) {
    EXPECT_TRUE(sameDirections({15.0}, learnt({100.0}, {{370.0, -340.0}})));
    // 2^60 is 136 degrees.
    EXPECT_TRUE(sameDirections({138.0}, learnt({100.0}, {{0x1p60, 140.0}})));
}

// Stopping. The example of three rounds: angles 0, 20, 40, 90 from centres 0 and 35.
// Round 1: {0}, {20, 40, 90}: 0 and 49.3. Round 2: {0, 20}, {40, 90}: 10 and 65. Then it stays.

const std::vector<double> threeRoundsCentres = {0.0, 35.0};
const Rows threeRoundsData = {{0.0, 20.0, 40.0, 90.0}};

/// The direction of the sum of the unit vectors at 20, 40 and 90 degrees.
double meanOfThree() {
    const double degree = 3.141592653589793 / 180.0;
    return std::atan2(std::sin(20 * degree) + std::sin(40 * degree) + 1.0,
                      std::cos(20 * degree) + std::cos(40 * degree)) /
           degree;
}

TEST(LearningTest, StopsWhenNoAssignmentChanges) {
    // A threshold of 0 is below no movement.
    for (const double threshold : {1.0, 0.0, -1.0, nan}) {
        SCOPED_TRACE(threshold);
        EXPECT_TRUE(sameDirections({10.0, 65.0},
                                   learnt(threeRoundsCentres, threeRoundsData, -1, threshold)));
    }
}

TEST(LearningTest, StopsAtTheBound) {
    EXPECT_TRUE(bitEqual(threeRoundsCentres, learnt(threeRoundsCentres, threeRoundsData, 0)));
    EXPECT_TRUE(
        sameDirections({0.0, meanOfThree()}, learnt(threeRoundsCentres, threeRoundsData, 1)));
    EXPECT_TRUE(sameDirections({10.0, 65.0}, learnt(threeRoundsCentres, threeRoundsData, 2)));
    EXPECT_TRUE(sameDirections({10.0, 65.0}, learnt(threeRoundsCentres, threeRoundsData, 1000)));
    EXPECT_TRUE(sameDirections({10.0, 65.0}, learnt(threeRoundsCentres, threeRoundsData,
                                                    std::numeric_limits<int>::max())));
}

TEST(LearningTest, StopsWhenTheLargestMovementIsBelowTheThreshold) {
    // The largest movement of round 1 is about 14.3 degrees.
    const double movement = meanOfThree() - 35.0;
    EXPECT_TRUE(sameDirections({0.0, meanOfThree()},
                               learnt(threeRoundsCentres, threeRoundsData, -1, movement + 1e-6)));
    EXPECT_TRUE(sameDirections({10.0, 65.0},
                               learnt(threeRoundsCentres, threeRoundsData, -1, movement - 1e-6)));
    EXPECT_TRUE(sameDirections({0.0, meanOfThree()},
                               learnt(threeRoundsCentres, threeRoundsData, -1, infinity)));
}

TEST(LearningTest, MovementIsMeasuredAroundTheCircle) {
    // Centres 359.7 and 39.8, half way 19.75: {0.3}, {19.9, 60.1}. The means 0.3 and 40 are 0.6
    // and 0.2 away, for the numbers 359.7 and 0.3 lie on both sides of the seam. A second round
    // would give 19.9 to the first (half way is 20.15): 10.1 and 60.1.
    EXPECT_TRUE(sameDirections({0.3, 40.0}, learnt({359.7, 39.8}, {{0.3, 19.9, 60.1}})));
    EXPECT_TRUE(sameDirections({10.1, 60.1}, learnt({359.7, 39.8}, {{0.3, 19.9, 60.1}}, -1, 0.5)));
}

TEST(LearningTest, MovementEqualToTheThresholdGoesOn) {
    // Centres 359 and 41, half way 20: {0}, {20.3, 61.7}. The first moves by exactly 1 to 0, the
    // second stays at 41. Half way is 20.5 then, so a second round gives 20.3 to the first.
    const Rows data = {{0.0, 20.3, 61.7}};
    EXPECT_TRUE(sameDirections({10.15, 61.7}, learnt({359.0, 41.0}, data, -1, 1.0)));
    EXPECT_TRUE(
        sameDirections({0.0, 41.0}, learnt({359.0, 41.0}, data, -1, std::nextafter(1.0, 2.0))));
}

TEST(LearningTest, LearningTwiceGoesOnFromTheCentresReached) {
    Rows data = threeRoundsData;
    KMeansMotionVec clusterer(threeRoundsCentres, data);
    clusterer.learn(1, 0.0);
    EXPECT_TRUE(sameDirections({0.0, meanOfThree()}, clusterer.centres));
    clusterer.learn(1, 0.0);
    EXPECT_TRUE(sameDirections({10.0, 65.0}, clusterer.centres));
}

TEST(LearningTest, ClassificationAfterLearningUsesTheNewCentres) {
    Rows data = threeRoundsData;
    KMeansMotionVec clusterer(threeRoundsCentres, data);
    EXPECT_EQ(clusterer.classify(), (std::vector<std::vector<int>>{{0, 1, 1, 1}}));
    clusterer.learn(-1, 1.0);
    EXPECT_EQ(clusterer.classify(), (std::vector<std::vector<int>>{{0, 0, 1, 1}}));
}

TEST(LearningTest, LearningIsDeterministic) {
    Random random(11);
    Rows data(1);
    for (int i = 0; i < 5000; ++i) data[0].push_back(random.unit() * 360.0);
    const std::vector<double> centres = randomCentres(random, 16, Centres::Scattered);
    EXPECT_TRUE(bitEqual(learnt(centres, data), learnt(centres, data)));
}

TEST(LearningTest, LearningEndsOnSymmetricData) {
    // Ties, opposite angles and equal centres in plenty: with no threshold to help.
    for (int n = 1; n <= 24; ++n) {
        for (int k = 1; k <= 12; ++k) {
            SCOPED_TRACE(std::to_string(n) + " angles, " + std::to_string(k) + " centres");
            Rows data(1);
            for (int i = 0; i < n; ++i) data[0].push_back(i * 360.0 / n);
            std::vector<double> centres;
            for (int c = 0; c < k; ++c) centres.push_back(c * 360.0 / k);
            for (const double threshold : {0.0, -1.0, nan}) {
                ASSERT_EQ(learnt(centres, data, -1, threshold).size(), static_cast<std::size_t>(k));
            }
        }
    }
}

TEST(LearningTest, LearningEndsWhereEqualCentresDifferByRounding) {
    // The first and the last centre both come to 36.1, up to rounding that may let the angles
    // around it change between the two for ever. Seen from 216.1, the other three angles are
    // (1, 0) + 2 (1 / 2, sqrt(3) / 2).
    const Rows data = {{216.1, 276.1, 276.1, 36.1, 336.1, 96.1}};
    const double other = 216.1 + std::atan(std::sqrt(3.0) / 2.0) * 180.0 / 3.141592653589793;
    for (const double threshold : {1.0, 0.0, -1.0, nan}) {
        SCOPED_TRACE(threshold);
        EXPECT_TRUE(
            sameDirections({36.1, other, 36.1}, learnt({36.1, 246.1, 36.1}, data, -1, threshold)));
    }
}

TEST(LearningTest, OfCentresTooCloseToTellApartTheFirstGetsTheAngles) {
    // 90 degrees from 100 to either, as computed.
    const double next = std::nextafter(10.0, 11.0);
    const std::vector<double> centres = learnt({10.0, next, 200.0}, {{100.0}}, 1);
    EXPECT_TRUE(sameDirections({100.0, next, 200.0}, centres));
    EXPECT_TRUE(bitEqual(next, centres[1]));
}

TEST(LearningTest, LearningEndsOnManyAngles) {
    Random random(5);
    Rows data(1);
    for (int i = 0; i < 200000; ++i) data[0].push_back(random.integer(0, 7199) * 0.05);
    const std::vector<double> centres = randomCentres(random, 32, Centres::Scattered);
    EXPECT_EQ(learnt(centres, data).size(), 32u);
}

/// Angles around 0, 90, 180 and 270, in no order. In ascending order the first sizes[0] of them lie
/// just above 0, the next sizes[1] around 90 and so on, and the last sizes[4] just below 360.
Rows clusteredAngles(Random& random, const std::vector<int>& sizes) {
    std::vector<double> angles;
    for (std::size_t c = 0; c < sizes.size(); ++c) {
        const double least = c == 0 ? 0.0 : 90.0 * static_cast<double>(c) - 30.0;
        const double width = c == 0 || c == 4 ? 29.0 : 60.0;
        for (int n = 0; n < sizes[c]; ++n) angles.push_back(least + random.unit() * width);
    }
    for (std::size_t i = angles.size(); i > 1; --i) {
        std::swap(angles[i - 1],
                  angles[static_cast<std::size_t>(random.integer(0, static_cast<int>(i) - 1))]);
    }
    return {angles};
}

/// Sums are made of blocks of this many angles in ascending order.
constexpr int block = 1024;

TEST(LearningTest, ClustersMayEndAnywhereInTheirBlocks) {
    for (std::uint64_t seed = 1; seed <= 150; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        std::vector<int> sizes;
        int end = 0;
        for (int c = 0; c < 5; ++c) {
            const int begin = end;
            // At the end of a block and just beside, or within the same one.
            if (random.chance(0.8)) {
                end = (begin / block + random.integer(0, 3)) * block + random.integer(-2, 2);
            } else {
                end += random.integer(0, 600);
            }
            end = std::max(begin, end);
            sizes.push_back(end - begin);
        }
        SCOPED_TRACE(testing::PrintToString(sizes));
        const Rows data = clusteredAngles(random, sizes);
        std::vector<double> centres;
        for (int c = 0; c < 4; ++c) centres.push_back(c * 90.0 + random.unit() * 4.0 - 2.0);
        for (const int bound : {1, 2, -1}) {
            ASSERT_TRUE(sameDirections(Reference::learn(centres, data, bound, 0.0),
                                       learnt(centres, data, bound, 0.0)));
        }
    }
}

TEST(LearningTest, OneClusterMayHaveAnyNumberOfAngles) {
    for (const int blocks : {1, 2, 5}) {
        for (int more = -3; more <= 3; ++more) {
            const int count = blocks * block + more;
            SCOPED_TRACE(count);
            Random random(static_cast<std::uint64_t>(count));
            Rows data(1);
            for (int n = 0; n < count; ++n) data[0].push_back(random.unit() * 200.0);
            ASSERT_TRUE(sameDirections(Reference::learn({50.0}, data, -1, 0.0),
                                       learnt({50.0}, data, -1, 0.0)));
        }
    }
}

}  // namespace
