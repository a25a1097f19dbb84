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

TEST(ResamplerTest, MakesFortyOnePositionsUnlessToldOtherwise) {
    EXPECT_EQ(Resampler().resample(Points{{0, 0}, {1, 0}}).size(), 41u);
    EXPECT_EQ(Resampler({7, false}).resample(Points{{0, 0}, {1, 0}}).size(), 7u);
}

// Length 4, five positions: a step of 1, around the corner at (2, 0).
TEST(ResamplerTest, DividesThePathIntoEqualSteps) {
    const Points expected{{0, 0}, {1, 0}, {2, 0}, {2, 1}, {2, 2}};
    EXPECT_EQ(Resampler({5, false}).resample(Points{{0, 0}, {2, 0}, {2, 2}}), expected);
}

// Length 3, three positions: a step of 1.5, the middle one half way up.
TEST(ResamplerTest, CutsCorners) {
    const Points expected{{0, 0}, {1, 0.5}, {1, 2}};
    EXPECT_EQ(Resampler({3, false}).resample(Points{{0, 0}, {1, 0}, {1, 2}}), expected);
}

TEST(ResamplerTest, KeepsBothEnds) {
    for (std::uint64_t seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const Points trace = Vesk::Test::drawn(Vesk::Test::corners().at("zigzag"), random, 0.2);
        const Points points = Resampler().resample(trace);
        ASSERT_EQ(points.size(), 41u);
        EXPECT_EQ(points.front(), trace.front());
        EXPECT_NEAR(distance(points.back(), trace.back()), 0.0, 1e-9);
    }
}

TEST(ResamplerTest, IgnoresHowFastTheTraceWasDrawn) {
    const Points even{{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}};
    const Points uneven{{0, 0}, {0, 0}, {0.5, 0}, {0.5, 0}, {3.5, 0}, {4, 0}, {4, 0}};
    EXPECT_EQ(Resampler({9, false}).resample(even), Resampler({9, false}).resample(uneven));
}

TEST(ResamplerTest, FlipsYBeforeAnythingElse) {
    const Points expected{{0, -0.0}, {0, -1}, {0, -2}};
    EXPECT_EQ(Resampler({3, true}).resample(Points{{0, 0}, {0, 2}}), expected);
    EXPECT_EQ(Resampler({Preparation::asDrawn, true}).resample(Points{{1, 2}, {3, -4}}),
              (Points{{1, -2}, {3, 4}}));
}

TEST(ResamplerTest, AsDrawnDropsFurtherCoordinatesOnly) {
    EXPECT_EQ(Resampler({Preparation::asDrawn, false}).resample(Points{{1, 2, 9}, {1, 2, 8}}),
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
            Resampler({5, false}).resample(Points{{0, 0}, {size, 0}, {size, size}});
        ASSERT_EQ(points.size(), 5u);
        EXPECT_NEAR(points[1][0] / size, 0.5, 1e-12);
        EXPECT_NEAR(points[3][1] / size, 0.5, 1e-12);
    }
}

TEST(ResamplerTest, FarFromTheOriginTheCountStays) {
    EXPECT_EQ(Resampler().resample(Points{{1e17, 0}, {1e17 + 64, 0}}).size(), 41u);
}

TEST(ResamplerTest, RefusesCountsOutOfRange) {
    EXPECT_EQ(textOf<InputError>([] {
                  Resampler({1, false});
              }),
              "found 1 points to resample to, expected 2 to 100000");
    EXPECT_EQ(textOf<InputError>([] {
                  Resampler({-5, false});
              }),
              "found -5 points to resample to, expected 2 to 100000");
    EXPECT_EQ(textOf<InputError>([] {
                  Resampler({100001, false});
              }),
              "found 100001 points to resample to, expected 2 to 100000");
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
