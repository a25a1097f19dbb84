#include <vesk/quantizer/KMeansMotionVec.h>

#include <support/QuantizerReference.h>
#include <support/Random.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Test;
using Vesk::ML::KMeansMotionVec;
using Rows = std::vector<std::vector<double>>;

constexpr double infinity = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();

std::vector<int> nearest(const std::vector<double>& centres, const std::vector<double>& angles) {
    Rows data = {angles};
    KMeansMotionVec clusterer(centres, data);
    const std::vector<std::vector<int>> result = clusterer.classify();
    EXPECT_EQ(result.size(), 1u);
    return result.at(0);
}

TEST(NearestCentreTest, EveryAngleGetsTheNearestCentre) {
    EXPECT_EQ(nearest({0, 90, 180, 270}, {1, 44, 46, 91, 134, 136, 224, 226, 270, 314}),
              (std::vector<int>{0, 0, 1, 1, 1, 2, 2, 3, 3, 3}));
}

TEST(NearestCentreTest, DistanceWrapsAroundTheCircle) {
    // 316 is 44 from 360 and 46 from 270.
    EXPECT_EQ(nearest({0, 90, 180, 270}, {316, 359.5, 360}), (std::vector<int>{0, 0, 0}));
    // 5 is 10 from 355 and 15 from 20.
    EXPECT_EQ(nearest({20, 355}, {5, 15}), (std::vector<int>{1, 0}));
}

TEST(NearestCentreTest, TiesGoToTheLowestIndex) {
    EXPECT_EQ(nearest({0, 90, 180, 270}, {45, 135, 225, 315}), (std::vector<int>{0, 1, 2, 0}));
    EXPECT_EQ(nearest({270, 180, 90, 0}, {45, 135, 225, 315}), (std::vector<int>{2, 1, 0, 0}));
    // Opposite: 180 either way round.
    EXPECT_EQ(nearest({10, 10}, {190}), std::vector<int>{0});
    EXPECT_EQ(nearest({100, 0}, {230, 50}), (std::vector<int>{0, 0}));
}

TEST(NearestCentreTest, EqualCentresGiveTheFirstOfThem) {
    EXPECT_EQ(nearest({90, 0, 90, 0, 360, 450}, {0, 90, 80, 359}), (std::vector<int>{1, 0, 0, 1}));
}

TEST(NearestCentreTest, RowsKeepTheirOrderAndLength) {
    Rows data = {{10, 100}, {}, {200}, {}, {300, 20, 110}};
    KMeansMotionVec clusterer({0, 90, 180, 270}, data);
    EXPECT_EQ(clusterer.classify(),
              (std::vector<std::vector<int>>{{0, 1}, {}, {2}, {}, {3, 0, 1}}));
}

TEST(NearestCentreTest, NoRowsGiveNoRows) {
    Rows data;
    KMeansMotionVec clusterer({0, 90}, data);
    EXPECT_TRUE(clusterer.classify().empty());
}

TEST(NearestCentreTest, ClassifyingTwiceGivesTheSame) {
    Rows data = {{10, 100, 350}};
    KMeansMotionVec clusterer({0, 90}, data);
    const auto first = clusterer.classify();
    EXPECT_EQ(clusterer.classify(), first);
    EXPECT_EQ(clusterer.centres, (std::vector<double>{0, 90}));
}

TEST(NearestCentreTest, WithoutCentresThereIsNoIndexToGive) {
    Rows data = {{1.0}};
    KMeansMotionVec clusterer({}, data);
    EXPECT_THROW(clusterer.classify(), std::invalid_argument);
}

TEST(NearestCentreTest, AnglesAndCentresMayBeTurnsOff) {
    EXPECT_EQ(nearest({0, 90, 180, 270}, {720, 450, -90, -180, -359, 3600090}),
              (std::vector<int>{0, 1, 3, 2, 0, 1}));
    EXPECT_EQ(nearest({-270, 720 + 180}, {90, 180, 100, 170}), (std::vector<int>{0, 1, 0, 1}));
}

TEST(NearestCentreTest, JustBelowZeroIsZero) {
    // -1e-20 + 360 rounds to 360, which is 0: as near to the centre 0 as can be.
    EXPECT_EQ(nearest({359, 1e-3, 0}, {-1e-20}), std::vector<int>{2});
    EXPECT_EQ(nearest({359, 1e-3, -1e-20}, {0}), std::vector<int>{2});
    EXPECT_EQ(nearest({1, -0.0, 0.0}, {0.0, -0.0}), (std::vector<int>{1, 1}));
}

TEST(NearestCentreTest, HugeAnglesAreReducedExactly) {
    // 2^60 = 1152921504606846976 = 360 * 3202559735019019 + 136.
    EXPECT_EQ(nearest({0, 136, 200}, {0x1p60}), std::vector<int>{1});
    // 2^61: 272.
    EXPECT_EQ(nearest({0, 0x1p61, 200}, {272, -80}), (std::vector<int>{1, 1}));
    EXPECT_EQ(nearest({std::fmod(1e300, 360.0), std::fmod(1e300, 360.0) + 1}, {1e300}),
              std::vector<int>{0});
}

TEST(NearestCentreTest, NonFiniteAnglesGetIndexZero) {
    EXPECT_EQ(nearest({100, 0}, {nan, infinity, -infinity, 1}), (std::vector<int>{0, 0, 0, 1}));
    EXPECT_EQ(nearest({nan, 0}, {nan, infinity, -infinity, 1}), (std::vector<int>{0, 0, 0, 1}));
}

TEST(NearestCentreTest, NonFiniteCentresAreNearestToNothing) {
    EXPECT_EQ(nearest({nan, infinity, 200, -infinity}, {0, 20, 200, 300}),
              (std::vector<int>{2, 2, 2, 2}));
    EXPECT_EQ(nearest({infinity, 90, nan, 0}, {10, 80, 45}), (std::vector<int>{3, 1, 1}));
}

TEST(NearestCentreTest, NonFiniteCentresAloneGiveIndexZero) {
    EXPECT_EQ(nearest({nan, infinity}, {0, 20, nan}), (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(nearest({infinity}, {123}), std::vector<int>{0});
}

TEST(NearestCentreTest, SubnormalDifferencesCountAsRounded) {
    // 90 - 1e-17 rounds to 90: both centres are 90 away, and the first wins.
    EXPECT_EQ(nearest({0, 1e-17}, {90}), std::vector<int>{0});
    EXPECT_EQ(nearest({1e-17, 0}, {90}), std::vector<int>{0});
    EXPECT_EQ(nearest({1e-17, 0}, {270}), std::vector<int>{0});
    // Near zero they differ.
    EXPECT_EQ(nearest({0, 1e-17}, {2e-17}), std::vector<int>{1});
    EXPECT_EQ(nearest({5e-324, 0}, {0, 5e-324, 1}), (std::vector<int>{1, 0, 0}));
}

TEST(NearestCentreTest, RoundedTiesReachPastTheNeighbours) {
    // Seen from 180, the four are all 180 - 0 as rounded, or wrap to it: the lowest index wins,
    // however many lie between.
    EXPECT_EQ(nearest({0, 1e-16, 1e-17, 1e-18}, {180}), std::vector<int>{0});
    EXPECT_EQ(nearest({1e-18, 1e-17, 1e-16, 0}, {180}), std::vector<int>{0});
    EXPECT_EQ(nearest({300, 0, 1e-18, 1e-17, 1e-16}, {100}), std::vector<int>{1});
}

TEST(NearestCentreTest, LargeCodebookIsSearchedExactly) {
    constexpr int count = 100000;
    std::vector<double> centres;
    std::vector<double> angles;
    std::vector<int> expected;
    for (int i = 0; i < count; ++i) {
        // A permutation of the even spacing: 7919 has no factor in common with the count.
        const int position = static_cast<int>((i * 7919LL) % count);
        centres.push_back(position * (360.0 / count));
        angles.push_back(position * (360.0 / count) + 0.001);
        expected.push_back(i);
    }
    EXPECT_EQ(nearest(centres, angles), expected);
}

TEST(NearestCentreTest, ManyEqualCentresAreOne) {
    std::vector<double> centres(100000, 200.0);
    centres.push_back(20.0);
    const std::vector<double> angles(20000, 210.0);
    EXPECT_EQ(nearest(centres, angles), std::vector<int>(20000, 0));
    EXPECT_EQ(nearest(centres, {20.0}), std::vector<int>{100000});
}

// Where the answer changes: half way between two centres, where rounding has the last word.

const double lastBelow360 = std::nextafter(360.0, 0.0);

/// An angle and its nearest neighbours on either side.
void addAround(double angle, std::vector<double>& angles) {
    angles.push_back(angle);
    double below = angle;
    double above = angle;
    for (int n = 0; n < 4; ++n) {
        angles.push_back(below = std::nextafter(below, -infinity));
        angles.push_back(above = std::nextafter(above, infinity));
    }
}

/// Around the middle between each centre and the next one on the circle, in several roundings, and
/// a little way off; on the centres; at the seam; anywhere.
std::vector<double> hardAngles(Random& random, const std::vector<double>& centres) {
    std::vector<double> sorted;
    for (const double centre : centres) sorted.push_back(Reference::reduce(centre));
    std::sort(sorted.begin(), sorted.end());
    std::vector<double> angles = {0.0, -0.0, lastBelow360, 5e-324};
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        const double next = i + 1 < sorted.size() ? sorted[i + 1] : sorted[0] + 360.0;
        const double middle = (sorted[i] + next) / 2;
        addAround(Reference::reduce(middle), angles);
        addAround(sorted[i] + (next - sorted[i]) / 2, angles);
        addAround(Reference::reduce(middle + 180.0), angles);
        for (const double off : {1e-13, 1e-12, 1e-10, 1.25e-10, 1e-9, 1e-3}) {
            angles.push_back(Reference::reduce(middle - off));
            angles.push_back(Reference::reduce(middle + off));
        }
        addAround(sorted[i], angles);
        addAround(Reference::reduce(sorted[i] + 180.0), angles);
    }
    for (int n = 0; n < 200; ++n) {
        angles.push_back(random.unit() * 360.0);
        // Whole fractions of the circle, as an even division of it would have them.
        const int parts = 64 * static_cast<int>(centres.size());
        addAround(360.0 / parts * random.integer(0, parts), angles);
    }
    return angles;
}

enum class Codebook { Even, Scattered, Clustered, Crowded, AtTheSeam };

std::vector<double> hardCentres(Random& random, Codebook kind, int count) {
    std::vector<double> centres;
    const double turn = random.chance(0.5) ? 0.0 : random.unit();
    const double cluster = random.chance(0.3) ? 360.0 : random.unit() * 360.0;
    for (int i = 0; i < count; ++i) {
        switch (kind) {
            case Codebook::Even: centres.push_back(turn + i * (360.0 / count)); break;
            case Codebook::Scattered: centres.push_back(random.unit() * 360.0); break;
            case Codebook::Clustered:
                centres.push_back(cluster + (random.unit() - 0.5) * 2e-6);
                break;
            case Codebook::Crowded:
                // Gaps on both sides of those that rounding can close.
                centres.push_back(random.integer(0, 3) * 90.0 + random.integer(-4, 4) * 4e-10);
                break;
            case Codebook::AtTheSeam:
                centres.push_back(random.integer(0, 10) * 36.0 + random.integer(-1, 1) * 1e-13);
                break;
        }
    }
    if (random.chance(0.3)) centres[0] = 0.0;
    if (random.chance(0.3)) centres.back() = 360.0 - 1e-13;
    if (random.chance(0.3)) centres.back() = lastBelow360;
    for (double& centre : centres) {
        if (random.chance(0.05)) {
            centre = centres[static_cast<std::size_t>(random.integer(0, count - 1))];
        }
    }
    // In no order.
    for (std::size_t i = centres.size(); i > 1; --i) {
        std::swap(centres[i - 1],
                  centres[static_cast<std::size_t>(random.integer(0, static_cast<int>(i) - 1))]);
    }
    return centres;
}

/// Whether all angles get the index that comparing all distances gives.
testing::AssertionResult areNearest(const std::vector<double>& centres,
                                    const std::vector<double>& angles) {
    const std::vector<int> found = nearest(centres, angles);
    for (std::size_t i = 0; i < angles.size(); ++i) {
        const int expected = Reference::nearestCentre(angles[i], centres);
        if (found[i] == expected) continue;
        return testing::AssertionFailure()
               << std::hexfloat << "angle " << angles[i] << ": expected " << expected << ", got "
               << found[i] << " of centres " << testing::PrintToString(centres);
    }
    return testing::AssertionSuccess();
}

TEST(NearestCentreTest, MiddlesBetweenCentresAreThoseOfTheDirectLoop) {
    for (const Codebook kind : {Codebook::Even, Codebook::Scattered, Codebook::Clustered,
                                Codebook::Crowded, Codebook::AtTheSeam}) {
        for (std::uint64_t seed = 1; seed <= 250; ++seed) {
            SCOPED_TRACE("kind " + std::to_string(static_cast<int>(kind)) + ", seed " +
                         std::to_string(seed));
            Random random(seed);
            const int count = random.integer(1, random.chance(0.2) ? 200 : 20);
            const std::vector<double> centres = hardCentres(random, kind, count);
            const std::vector<double> angles = hardAngles(random, centres);
            ASSERT_TRUE(areNearest(centres, angles));
            // Few are looked for in another way than many.
            std::vector<double> few;
            for (int n = random.integer(1, 3 * count); n > 0; --n) {
                few.push_back(angles[static_cast<std::size_t>(
                    random.integer(0, static_cast<int>(angles.size()) - 1))]);
            }
            ASSERT_TRUE(areNearest(centres, few));
        }
    }
}

TEST(NearestCentreTest, MiddlesAtFractionsOfTheCircleAreThoseOfTheDirectLoop) {
    // Distances across 0 are coarser than small angles: several of these are equally far from both
    // centres, on either side of the fraction.
    for (std::uint64_t seed = 1; seed <= 2000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const double fraction = 360.0 / 128 * random.integer(1, 20);
        const double below = 360.0 - random.unit() * (180.0 - fraction);
        double above = fraction + (fraction + (360.0 - below));
        for (int n = random.integer(0, 3); n > 0; --n) above = std::nextafter(above, infinity);
        std::vector<double> angles = {fraction};
        double lower = fraction;
        double upper = fraction;
        for (int n = 0; n < 150; ++n) {
            angles.push_back(lower = std::nextafter(lower, 0.0));
            angles.push_back(upper = std::nextafter(upper, 360.0));
        }
        ASSERT_TRUE(areNearest({below, above}, angles));
        ASSERT_TRUE(areNearest({above, below}, angles));
    }
}

TEST(NearestCentreTest, RoundingDecidesBelow360WhereTheMiddleRoundsTo0) {
    // The middles are less than half an ulp of 360 below it. As computed, the last number below 360
    // is equally far from both centres, the ones before are nearer to the centre below 360.
    const double centres[][2] = {{48.000000000000654, 311.99999999999926},
                                 {42.000000000000540, 317.99999999999937},
                                 {77.000000000000881, 282.99999999999903}};
    const double before = std::nextafter(lastBelow360, 0.0);
    for (const auto& [above, below] : centres) {
        SCOPED_TRACE(above);
        ASSERT_EQ(Reference::circularDistance(lastBelow360, above),
                  Reference::circularDistance(lastBelow360, below));
        EXPECT_EQ(nearest({above, below}, {lastBelow360, before, 0.0}),
                  (std::vector<int>{0, 1, 0}));
        EXPECT_EQ(nearest({below, above}, {lastBelow360, before, 0.0}),
                  (std::vector<int>{0, 0, 1}));
    }
}

TEST(NearestCentreTest, MiddlesOfLargeCodebooksAreThoseOfTheDirectLoop) {
    for (const int count : {1000, 1023, 1024, 1025, 1500}) {
        SCOPED_TRACE(count);
        Random random(static_cast<std::uint64_t>(count));
        const Codebook kind = random.chance(0.5) ? Codebook::Even : Codebook::Scattered;
        const std::vector<double> centres = hardCentres(random, kind, count);
        std::vector<double> angles;
        for (const double angle : hardAngles(random, centres)) {
            if (random.chance(0.1)) angles.push_back(angle);
        }
        ASSERT_TRUE(areNearest(centres, angles));
    }
}

}  // namespace
