#include "Gestures.h"

#include <support/Random.h>
#include <veskkit/Error.h>
#include <veskkit/traces/Resampler.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Vesk::Kit {
namespace {

using Vesk::Test::Random;
using Vesk::Test::textOf;

double distance(const std::vector<double>& x, const std::vector<double>& y) {
    return std::hypot(x[0] - y[0], x[1] - y[1]);
}

TEST(ResamplerTest, MakesFortyOnePositionsAndEightBearingsUnlessToldOtherwise) {
    EXPECT_EQ(Resampler().resample(Points{{0, 0}, {1, 0}}).size(), 49u);
    EXPECT_EQ(Preparation().symbols(), 48u);
    EXPECT_EQ(Resampler().path(Points{{0, 0}, {1, 0}}).size(), 41u);
    EXPECT_EQ(Resampler({7, false, 0}).resample(Points{{0, 0}, {1, 0}}).size(), 7u);
}

// Length 4, five positions: a step of 1, around the corner at (2, 0).
TEST(ResamplerTest, DividesThePathIntoEqualSteps) {
    const Points expected{{0, 0}, {1, 0}, {2, 0}, {2, 1}, {2, 2}};
    EXPECT_EQ(Resampler({5, false, 0}).resample(Points{{0, 0}, {2, 0}, {2, 2}}), expected);
}

// Length 3, three positions: a step of 1.5, the middle one half way up.
TEST(ResamplerTest, CutsCorners) {
    const Points expected{{0, 0}, {1, 0.5}, {1, 2}};
    EXPECT_EQ(Resampler({3, false, 0}).resample(Points{{0, 0}, {1, 0}, {1, 2}}), expected);
}

TEST(ResamplerTest, KeepsBothEnds) {
    for (std::uint64_t seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const Points trace = Vesk::Test::drawn(Vesk::Test::corners().at("zigzag"), random, 0.2);
        const Points points = Resampler().path(trace);
        ASSERT_EQ(points.size(), 41u);
        EXPECT_EQ(points.front(), trace.front());
        EXPECT_NEAR(distance(points.back(), trace.back()), 0.0, 1e-9);
    }
}

TEST(ResamplerTest, IgnoresHowFastTheTraceWasDrawn) {
    const Points even{{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}};
    const Points uneven{{0, 0}, {0, 0}, {0.5, 0}, {0.5, 0}, {3.5, 0}, {4, 0}, {4, 0}};
    EXPECT_EQ(Resampler({9, false, 0}).resample(even), Resampler({9, false, 0}).resample(uneven));
}

TEST(ResamplerTest, FlipsYBeforeAnythingElse) {
    const Points expected{{0, -0.0}, {0, -1}, {0, -2}};
    EXPECT_EQ(Resampler({3, true, 0}).resample(Points{{0, 0}, {0, 2}}), expected);
    EXPECT_EQ(Resampler({Preparation::asDrawn, true, 0}).resample(Points{{1, 2}, {3, -4}}),
              (Points{{1, -2}, {3, 4}}));
}

TEST(ResamplerTest, AsDrawnDropsFurtherCoordinatesOnly) {
    EXPECT_EQ(Resampler({Preparation::asDrawn, false, 0}).resample(Points{{1, 2, 9}, {1, 2, 8}}),
              (Points{{1, 2}, {1, 2}}));
}

TEST(ResamplerTest, ATraceWithoutLengthHasNoPositions) {
    EXPECT_TRUE(Resampler().resample(Points{}).empty());
    EXPECT_TRUE(Resampler().resample(Points{{1, 1}}).empty());
    EXPECT_TRUE(Resampler().resample(Points{{1, 1}, {1, 1}, {1, 1}}).empty());
}

TEST(ResamplerTest, ATraceBeyondTheNumbersRangeHasNoPositions) {
    EXPECT_TRUE(Resampler().resample(Points{{-1e308, 0}, {1e308, 0}}).empty());
    constexpr double tiny = std::numeric_limits<double>::denorm_min();
    EXPECT_TRUE(Resampler().resample(Points{{0, 0}, {tiny, tiny}}).empty());
}

TEST(ResamplerTest, SizeDoesNotMatter) {
    for (const double size : {1e-100, 1e-3, 1.0, 1e6, 1e100}) {
        SCOPED_TRACE(size);
        const Points points =
            Resampler({5, false, 0}).resample(Points{{0, 0}, {size, 0}, {size, size}});
        ASSERT_EQ(points.size(), 5u);
        EXPECT_NEAR(points[1][0] / size, 0.5, 1e-12);
        EXPECT_NEAR(points[3][1] / size, 0.5, 1e-12);
    }
}

TEST(ResamplerTest, FarFromTheOriginTheCountStays) {
    EXPECT_EQ(Resampler().resample(Points{{1e17, 0}, {1e17 + 64, 0}}).size(), 49u);
}

// Two legs of 4, steps of 2: the mean of (0, 0), (2, 0), (4, 0), (4, 2), (4, 4) is (2.8, 1.2).
TEST(ResamplerTest, BearingsTellWherePositionsLieSeenFromTheirMean) {
    const Points corner{{0, 0}, {4, 0}, {4, 4}};
    const Points path{{0, 0}, {2, 0}, {4, 0}, {4, 2}, {4, 4}};
    EXPECT_EQ(Resampler({5, false, 3}).path(corner), path);
    const Points points = Resampler({5, false, 3}).resample(corner);
    ASSERT_EQ(points.size(), 8u);
    EXPECT_EQ(Points(points.begin(), points.begin() + 5), path);
    const Points seen{{-2.8, -1.2}, {1.2, -1.2}, {1.2, 2.8}};
    for (std::size_t k = 0; k < 3; ++k) {
        SCOPED_TRACE(k);
        const double away = std::hypot(seen[k][0], seen[k][1]);
        EXPECT_NEAR(points[k + 5][0] - points[k + 4][0], 2.0 * seen[k][0] / away, 1e-12);
        EXPECT_NEAR(points[k + 5][1] - points[k + 4][1], 2.0 * seen[k][1] / away, 1e-12);
    }
    // Positions 0, 1, 2 and 4: 4 k / 3, rounded down.
    const Points four = Resampler({5, false, 4}).resample(corner);
    EXPECT_NEAR(four[6][0] - four[5][0], 2.0 * -0.8 / std::hypot(0.8, 1.2), 1e-12);
    EXPECT_NEAR(four[8][1] - four[7][1], 2.0 * 2.8 / std::hypot(1.2, 2.8), 1e-12);
    // One: of the last position.
    const Points one = Resampler({5, false, 1}).resample(corner);
    ASSERT_EQ(one.size(), 6u);
    EXPECT_NEAR(one[5][1] - one[4][1], 2.0 * 2.8 / std::hypot(1.2, 2.8), 1e-12);
}

TEST(ResamplerTest, APositionInTheMeanRepeatsTheBearingBefore) {
    // The middle of a straight line is its mean.
    const Points line{{0, 0}, {0, 4}};
    EXPECT_EQ(Resampler({3, false, 3}).resample(line),
              (Points{{0, 0}, {0, 2}, {0, 4}, {0, 2}, {0, 0}, {0, 2}}));
    // The first position of this one, its mean, has none before it: along x.
    const Points around{{0, 0}, {0, 1}, {0, -1}, {0, 0}};
    EXPECT_EQ(Resampler({5, false, 2}).resample(around),
              (Points{{0, 0}, {0, 1}, {0, 0}, {0, -1}, {0, 0}, {1, 0}, {2, 0}}));
}

TEST(ResamplerTest, BearingsAreNumbersWhereTheMeanIsNone) {
    const Points far{{1e308, 0}, {1e308, 8}};
    EXPECT_EQ(Resampler({5, false, 1}).resample(far),
              (Points{{1e308, 0}, {1e308, 2}, {1e308, 4}, {1e308, 6}, {1e308, 8}, {1e308, 8}}));
}

TEST(ResamplerTest, TracesAsDrawnHaveNoBearings) {
    EXPECT_EQ(Resampler({Preparation::asDrawn, false, 8}).resample(Points{{1, 2}, {3, 4}}),
              (Points{{1, 2}, {3, 4}}));
    EXPECT_EQ((Preparation{Preparation::asDrawn, false, 8}.symbols()), 0u);
}

TEST(ResamplerTest, RefusesCountsOutOfRange) {
    EXPECT_EQ(textOf<InputError>([] {
                  Resampler({1, false, 0});
              }),
              "found 1 points to resample to, expected 2 to 100000");
    EXPECT_EQ(textOf<InputError>([] {
                  Resampler({-5, false, 0});
              }),
              "found -5 points to resample to, expected 2 to 100000");
    EXPECT_EQ(textOf<InputError>([] {
                  Resampler({100001, false, 0});
              }),
              "found 100001 points to resample to, expected 2 to 100000");
    for (const int bearings : {-1, 1001}) {
        EXPECT_EQ(textOf<InputError>([&] {
                      Resampler({41, false, bearings});
                  }),
                  "found " + std::to_string(bearings) + " bearings, expected 0 to 1000");
    }
}

TEST(ResamplerTest, RefusesUnusableTracesByName) {
    Trace trace;
    trace.source = "a.jsonl";
    trace.line = 4;
    trace.points = {{0, 0}, {1}};
    EXPECT_EQ(textOf<InputError>([&] { Resampler().resample(trace); }),
              "a.jsonl:4: found 1 number in points[1], expected at least 2");
}

}  // namespace
}  // namespace Vesk::Kit
