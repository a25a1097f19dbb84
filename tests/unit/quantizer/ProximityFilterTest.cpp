#include <vesk/quantizer/ProximityFilter.h>

#include <support/BitEqual.h>
#include <support/QuantizerReference.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
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

}  // namespace
