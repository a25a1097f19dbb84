#include <vesk/quantizer/ProximityFilter.h>

#include <support/BitEqual.h>
#include <support/QuantizerReference.h>
#include <support/Random.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Test;
using Reference::Trace;
using Vesk::ML::ProximityFilter;

constexpr double infinity = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();

Trace filtered(Trace in, double threshold) {
    Trace out;
    ProximityFilter<double>::run(in, out, threshold);
    return out;
}

TEST(ProximityFilterTest, AppendsNothingOfFewerThanTwoPositions) {
    EXPECT_TRUE(filtered({}, 0.0).empty());
    EXPECT_TRUE(filtered({{1, 2}}, 0.0).empty());
    EXPECT_TRUE(filtered({{1, 2}}, -1.0).empty());
}

TEST(ProximityFilterTest, KeepsAPositionOnceTheMovementAddsUpToTheThreshold) {
    // From (0,0): 0.5 is dropped, 1.0 >= 1.0 is kept; from (1,0): 0.5 is dropped.
    EXPECT_EQ(filtered({{0, 0}, {0.5, 0}, {1, 0}, {1.5, 0}}, 1.0), (Trace{{0, 0}, {1, 0}}));
}

TEST(ProximityFilterTest, MeasuresFromTheLastKeptPositionNotFromThePrecedingOne) {
    // Steps of 0.4 each: kept are 0, 1.2 and 2.4. Between neighbours no step would ever do.
    Trace in;
    for (int i = 0; i <= 6; ++i) in.push_back({0.4 * i, 0.0});
    EXPECT_EQ(filtered(in, 1.0), (Trace{in[0], in[3], in[6]}));
}

TEST(ProximityFilterTest, DistanceEqualToTheThresholdIsKept) {
    // 3, 4, 5.
    EXPECT_EQ(filtered({{0, 0}, {3, 4}}, 5.0), (Trace{{0, 0}, {3, 4}}));
    EXPECT_EQ(filtered({{0, 0}, {3, 4}}, std::nextafter(5.0, 6.0)), (Trace{{0, 0}}));
}

TEST(ProximityFilterTest, FirstPositionIsAlwaysKept) {
    EXPECT_EQ(filtered({{0, 0}, {1, 0}, {2, 0}}, 1000.0), (Trace{{0, 0}}));
    EXPECT_EQ(filtered({{0, 0}, {1, 0}, {2, 0}}, infinity), (Trace{{0, 0}}));
}

TEST(ProximityFilterTest, ThresholdZeroKeepsEveryPosition) {
    const Trace in = {{0, 0}, {0, 0}, {0, 0}, {1, 0}, {1, 0}};
    EXPECT_EQ(filtered(in, 0.0), in);
    EXPECT_EQ(filtered(in, -0.0), in);
}

TEST(ProximityFilterTest, NegativeThresholdKeepsEveryPosition) {
    const Trace in = {{0, 0}, {0, 0}, {5, 5}, {5, 5}};
    EXPECT_EQ(filtered(in, -1.0), in);
    EXPECT_EQ(filtered(in, -infinity), in);
}

TEST(ProximityFilterTest, UndefinedDistanceDropsThePositionAtAnyThreshold) {
    for (const double threshold : {-infinity, -1.0, 0.0, 1.0}) {
        SCOPED_TRACE(threshold);
        EXPECT_EQ(filtered({{0, 0}, {nan, 1}, {9, 9}}, threshold), (Trace{{0, 0}, {9, 9}}));
        // An infinite position is infinitely far; from there inf - inf is undefined.
        EXPECT_EQ(filtered({{0, 0}, {infinity, 0}, {infinity, 1}, {0, 0}}, threshold),
                  (Trace{{0, 0}, {infinity, 0}, {0, 0}}));
    }
}

TEST(ProximityFilterTest, UndefinedFirstPositionDropsAllOthers) {
    const Trace out = filtered({{nan, 0}, {1, 0}, {2, 0}}, 0.0);
    ASSERT_EQ(out.size(), 1u);
    EXPECT_TRUE(std::isnan(out[0][0]));
}

TEST(ProximityFilterTest, UndefinedThresholdDropsAllButTheFirst) {
    EXPECT_EQ(filtered({{0, 0}, {1, 0}, {2, 0}}, nan), (Trace{{0, 0}}));
}

TEST(ProximityFilterTest, InfiniteDistanceReachesAnInfiniteThreshold) {
    EXPECT_EQ(filtered({{0, 0}, {infinity, 0}}, infinity), (Trace{{0, 0}, {infinity, 0}}));
}

TEST(ProximityFilterTest, SquaresOverflowAndUnderflowAsTheyAre) {
    // (1e200)^2 overflows to infinity; (1e-200)^2 underflows to zero.
    EXPECT_EQ(filtered({{0, 0}, {1e200, 0}}, 1e300), (Trace{{0, 0}, {1e200, 0}}));
    EXPECT_EQ(filtered({{0, 0}, {1e-200, 0}}, 1e-300), (Trace{{0, 0}}));
}

TEST(ProximityFilterTest, EveryCoordinateCounts) {
    // sqrt(1 + 4 + 4) = 3; in the plane it would be sqrt(5).
    EXPECT_EQ(filtered({{0, 0, 0}, {1, 2, 2}}, 3.0), (Trace{{0, 0, 0}, {1, 2, 2}}));
    EXPECT_EQ(filtered({{0, 0, 0}, {1, 2, 2}}, 3.1), (Trace{{0, 0, 0}}));
    // Five coordinates of 1: sqrt(5) = 2.236...
    EXPECT_EQ(filtered({{0, 0, 0, 0, 0}, {1, 1, 1, 1, 1}}, 2.2360).size(), 2u);
    EXPECT_EQ(filtered({{0, 0, 0, 0, 0}, {1, 1, 1, 1, 1}}, 2.2361).size(), 1u);
}

TEST(ProximityFilterTest, OneCoordinateIsADistanceOnALine) {
    EXPECT_EQ(filtered({{0}, {0.5}, {-1}}, 1.0), (Trace{{0}, {-1}}));
}

TEST(ProximityFilterTest, PositionWithoutCoordinatesIsAtDistanceZero) {
    EXPECT_EQ(filtered({{0, 0}, {}}, 0.0), (Trace{{0, 0}, {}}));
    EXPECT_EQ(filtered({{0, 0}, {}}, 5e-324), (Trace{{0, 0}}));
    EXPECT_EQ(filtered({{}, {}, {}}, 0.0), (Trace{{}, {}, {}}));
}

TEST(ProximityFilterTest, FurtherCoordinatesOfTheLastKeptAreIgnored) {
    EXPECT_EQ(filtered({{0, 0, 100}, {3, 4}, {3, 4}}, 5.0), (Trace{{0, 0, 100}, {3, 4}}));
}

TEST(ProximityFilterTest, MoreCoordinatesThanTheLastKeptAreOutOfRange) {
    Trace in = {{0, 0}, {1, 0}, {2, 0, 0}, {3, 0}};
    Trace out;
    try {
        ProximityFilter<double>::run(in, out, 0.0);
        FAIL() << "no exception";
    } catch (const std::out_of_range& failure) {
        EXPECT_STREQ(failure.what(), "vector::_M_range_check");
    }
    EXPECT_EQ(in, (Trace{{0, 0}, {1, 0}, {2, 0, 0}, {3, 0}}));
}

TEST(ProximityFilterTest, WhatWasKeptBeforeAMissingCoordinateIsThere) {
    Trace in = {{0, 0}, {0.5, 0}, {5, 5}, {1, 2, 3}, {9, 9}};
    Trace out;
    EXPECT_THROW(ProximityFilter<double>::run(in, out, 1.0), std::out_of_range);
    EXPECT_EQ(out, (Trace{{0, 0}, {5, 5}}));
}

TEST(ProximityFilterTest, ComparesWithTheLastKeptNotWithTheDroppedBetween) {
    // (9,9) is dropped, so the third is measured from the first, which has enough coordinates.
    EXPECT_EQ(filtered({{9, 9, 9}, {9, 9}, {9, 9, 9}}, 1.0), (Trace{{9, 9, 9}}));
    // At threshold 0 (9,9) is kept, and the third has a coordinate more.
    EXPECT_THROW(filtered({{9, 9, 9}, {9, 9}, {9, 9, 9}}, 0.0), std::out_of_range);
}

TEST(ProximityFilterTest, UndefinedSumDoesNotHideAMissingCoordinate) {
    EXPECT_THROW(filtered({{nan, 0}, {1, 0, 0}}, 0.0), std::out_of_range);
    EXPECT_THROW(filtered({{}, {1}}, infinity), std::out_of_range);
    EXPECT_THROW(filtered({{0}, {1, 0}}, 0.0), std::out_of_range);
}

TEST(ProximityFilterTest, OutputIsAppendedToAndMeasuredFromItsNewEnd) {
    Trace in = {{0, 0}, {0.5, 0}, {2, 0}};
    Trace out = {{7, 7, 7}, {8}};
    ProximityFilter<double>::run(in, out, 1.0);
    EXPECT_EQ(out, (Trace{{7, 7, 7}, {8}, {0, 0}, {2, 0}}));

    Trace single = {{1, 1}};
    ProximityFilter<double>::run(single, out, 1.0);
    EXPECT_EQ(out.size(), 4u);
}

TEST(ProximityFilterTest, InputIsNotModified) {
    Trace in = {{0, 0, 7}, {0.5, 0}, {2, 0}};
    const Trace before = in;
    Trace out;
    ProximityFilter<double>::run(in, out, 1.0);
    EXPECT_EQ(in, before);
}

// Distances next to the threshold

/// Of any exponent, most often a common one.
double randomMagnitude(Random& random) {
    const int exponent = random.chance(0.5) ? random.integer(-20, 20) : random.integer(-1074, 1023);
    return std::ldexp(1.0 + random.unit(), exponent);
}

/// Among them the roots of what squares can be: from 2^-1074 to just below 2^1024.
const double thresholds[] = {
    0.0,    -0.0,     -1.0,     -5e-324,  -1e300,    5e-324,   1e-310,  1e-200,
    1e-170, 1.5e-162, 0x1p-538, 0x1p-537, 2.3e-162,  3e-162,   4e-162,  1e-161,
    1e-160, 0x1p-511, 0x1p-500, 1e-150,   0.1,       0.5,      1.0,     1.41421356,
    2.0,    3.0,      5.0,      1e10,     1e150,     1.34e154, 0x1p512, 1.35e154,
    1e200,  1e300,    0x1p1023, infinity, -infinity, nan};

/// The same distance along an axis, along both, in three dimensions, rounded as it comes.
std::vector<Reference::Position> positionsAt(Random& random, double distance) {
    const double angle = random.unit() * 6.0;
    const double x = distance * std::cos(angle);
    const double y = distance * std::sin(angle);
    const double third = distance / std::sqrt(3.0);
    return {
        {distance}, {distance, 0.0},       {0.0, -distance},     {distance * 0.6, distance * 0.8},
        {x, y},     {third, third, third}, {0.0, 0.0, distance}, {x, 0.0, y}};
}

testing::AssertionResult keptAsWrittenOut(const Reference::Position& first,
                                          const Reference::Position& second, double threshold) {
    double sum = 0.0;
    for (std::size_t k = 0; k < second.size(); ++k) {
        const double difference = second[k] - first[k];
        sum += difference * difference;
    }
    const bool kept = filtered({first, second}, threshold).size() == 2;
    if (kept == (std::sqrt(sum) >= threshold)) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << std::hexfloat << "threshold " << threshold << ", distance " << std::sqrt(sum)
           << (kept ? " kept" : " dropped") << " at " << testing::PrintToString(second);
}

/// Tries distances equal to the threshold and up to four numbers away from it.
testing::AssertionResult keptAroundThreshold(Random& random, double threshold) {
    double distance = threshold;
    for (int n = 0; n < 4; ++n) distance = std::nextafter(distance, -infinity);
    for (int n = -4; n <= 4; ++n, distance = std::nextafter(distance, infinity)) {
        for (const Reference::Position& position : positionsAt(random, distance)) {
            const Reference::Position origin(position.size() + (random.chance(0.5) ? 0 : 1));
            if (const auto as = keptAsWrittenOut(origin, position, threshold); !as) return as;
            Reference::Position last = origin;
            Reference::Position moved = position;
            for (std::size_t k = 0; k < moved.size(); ++k) {
                last[k] = threshold * (random.unit() - 0.5);
                moved[k] = last[k] + position[k];
            }
            if (const auto as = keptAsWrittenOut(last, moved, threshold); !as) return as;
        }
    }
    return testing::AssertionSuccess();
}

TEST(ProximityFilterTest, DistancesNextToTheThresholdAreComparedAsWrittenOut) {
    Random random(1);
    for (const double threshold : thresholds) {
        for (int n = 0; n < 20; ++n) ASSERT_TRUE(keptAroundThreshold(random, threshold));
    }
    for (std::uint64_t seed = 2; seed <= 6000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random own(seed);
        ASSERT_TRUE(keptAroundThreshold(own, randomMagnitude(own)));
    }
}

TEST(ProximityFilterTest, TinyDistancesAreComparedAsTheirSquaresUnderflow) {
    // The least square is 2^-1074, of root 2^-537: what has a lesser square is at distance 0.
    EXPECT_EQ(filtered({{0, 0}, {1e-162, 0}}, 1e-200), (Trace{{0, 0}}));
    EXPECT_EQ(filtered({{0, 0}, {1e-162, 0}}, 0.0).size(), 2u);
    EXPECT_EQ(filtered({{0, 0}, {2e-162, 0}}, 1e-200).size(), 2u);
    EXPECT_EQ(filtered({{0, 0}, {2e-162, 0}}, 0x1p-537).size(), 2u);
    EXPECT_EQ(filtered({{0, 0}, {2e-162, 0}}, std::nextafter(0x1p-537, 1.0)), (Trace{{0, 0}}));
    // (3e-162)^2 is 2 * 2^-1074, rounded: its root is 3.14e-162.
    EXPECT_EQ(filtered({{0, 0}, {3e-162, 0}}, 3.1e-162).size(), 2u);
    EXPECT_EQ(filtered({{0, 0}, {3e-162, 0}}, 3.2e-162), (Trace{{0, 0}}));
}

TEST(ProximityFilterTest, TracesOfMixedPositionsAreFilteredAsWrittenOut) {
    int refused = 0;
    for (std::uint64_t seed = 1; seed <= 6000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const double threshold =
            random.chance(0.5)
                ? randomMagnitude(random)
                : thresholds[random.integer(0, static_cast<int>(std::size(thresholds)) - 1)];
        Trace in;
        std::size_t most = static_cast<std::size_t>(random.integer(0, 3));
        for (int n = random.integer(0, 12); n > 0; --n) {
            // Mostly no more coordinates than the position before has: else it is refused.
            if (random.chance(0.1)) most = static_cast<std::size_t>(random.integer(0, 3));
            Reference::Position position;
            for (std::size_t k = 0; k < most; ++k) {
                const double x = in.empty() || k >= in.back().size() ? 0.0 : in.back()[k];
                const double steps[] = {0.0,
                                        threshold,
                                        -threshold,
                                        threshold * 0.6,
                                        threshold * 0.8,
                                        threshold * random.unit()};
                position.push_back(x + steps[random.integer(0, 5)]);
            }
            in.push_back(position);
        }
        Trace expected = {{1.0}};
        Trace actual = expected;
        bool missing = false;
        try {
            Reference::proximityFilter(in, expected, threshold);
        } catch (const std::out_of_range&) {
            missing = true;
            ++refused;
        }
        if (missing) {
            EXPECT_THROW(ProximityFilter<double>::run(in, actual, threshold), std::out_of_range);
        } else {
            ProximityFilter<double>::run(in, actual, threshold);
        }
        ASSERT_EQ(expected.size(), actual.size()) << "threshold " << threshold;
        for (std::size_t p = 0; p < expected.size(); ++p) {
            ASSERT_TRUE(bitEqual(expected[p], actual[p])) << "position " << p;
        }
    }
    EXPECT_GT(refused, 300);
}

}  // namespace
