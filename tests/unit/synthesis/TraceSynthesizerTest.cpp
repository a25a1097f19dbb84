#include <veskkit/synthesis/TraceSynthesizer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Vesk::Kit::Trace;
using Vesk::Kit::TraceSynthesizer;

constexpr std::uint64_t seed = 20;

double extent(const Trace& trace, std::size_t axis) {
    const auto [low, high] =
        std::minmax_element(trace.points.begin(), trace.points.end(),
                            [&](const auto& p, const auto& q) { return p[axis] < q[axis]; });
    return (*high)[axis] - (*low)[axis];
}

double step(const Trace& trace, std::size_t i) {
    return std::hypot(trace.points[i][0] - trace.points[i - 1][0],
                      trace.points[i][1] - trace.points[i - 1][1]);
}

/// Mean step over a part of the trace, given as shares of its points.
double meanStep(const Trace& trace, double from, double to) {
    const auto count = static_cast<double>(trace.points.size());
    const auto first = static_cast<std::size_t>(from * count) + 1;
    const auto end = static_cast<std::size_t>(to * count);
    double sum = 0.0;
    for (std::size_t i = first; i < end; ++i) sum += step(trace, i);
    return sum / static_cast<double>(end - first);
}

/// Twice the area inside, positive where the pen goes clockwise as seen with y downwards.
double turning(const Trace& trace) {
    double sum = 0.0;
    for (std::size_t i = 0; i < trace.points.size(); ++i) {
        const auto& p = trace.points[i];
        const auto& q = trace.points[(i + 1) % trace.points.size()];
        sum += p[0] * q[1] - q[0] * p[1];
    }
    return sum;
}

TEST(TraceSynthesizer, KnowsADozenGesturesInAlphabeticalOrder) {
    const std::vector<std::string>& names = TraceSynthesizer::gestures();

    EXPECT_EQ(names.size(), 12U);
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
    EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), names.size());
}

TEST(TraceSynthesizer, UserNamesHaveTwoDigitsAtLeast) {
    EXPECT_EQ(TraceSynthesizer::userName(1), "u01");
    EXPECT_EQ(TraceSynthesizer::userName(42), "u42");
    EXPECT_EQ(TraceSynthesizer::userName(123), "u123");
}

TEST(TraceSynthesizer, EveryTraceIsLabelledAndMadeOfTenthsOfPixels) {
    const TraceSynthesizer synthesizer(seed);
    for (const std::string& gesture : TraceSynthesizer::gestures()) {
        for (int user = 1; user <= 20; ++user) {
            SCOPED_TRACE(gesture + ", user " + std::to_string(user));
            const Trace trace = synthesizer.draw(gesture, user, 1);
            EXPECT_EQ(trace.gesture, gesture);
            EXPECT_EQ(trace.user, TraceSynthesizer::userName(user));
            ASSERT_GE(trace.points.size(), 8U);
            for (const auto& point : trace.points) {
                ASSERT_EQ(point.size(), 2U);
                for (const double value : point) {
                    ASSERT_TRUE(std::isfinite(value));
                    ASSERT_EQ(value, std::round(value * 10.0) / 10.0);
                }
            }
            EXPECT_GT(extent(trace, 0) + extent(trace, 1), 30.0);
        }
    }
}

TEST(TraceSynthesizer, TheSameKeysGiveTheSameTraceInAnyOrder) {
    const TraceSynthesizer one(seed);
    const TraceSynthesizer other(seed);
    const Trace first = one.draw("star", 3, 2);
    other.draw("caret", 1, 1);
    other.draw("star", 3, 1);

    EXPECT_EQ(other.draw("star", 3, 2).points, first.points);
}

TEST(TraceSynthesizer, EverySeedUserAndRepetitionGivesAnotherTrace) {
    const TraceSynthesizer synthesizer(seed);
    const auto points = synthesizer.draw("star", 3, 2).points;

    EXPECT_NE(TraceSynthesizer(seed + 1).draw("star", 3, 2).points, points);
    EXPECT_NE(synthesizer.draw("star", 2, 2).points, points);
    EXPECT_NE(synthesizer.draw("star", 3, 3).points, points);
}

// The traces of a seed are the same on every machine and in every version: demonstrations and
// tests elsewhere rest on them.
TEST(TraceSynthesizer, SeedOneKeepsItsTraces) {
    const TraceSynthesizer synthesizer(1);
    std::uint64_t checksum = 0xcbf29ce484222325U;
    for (const std::string& gesture : TraceSynthesizer::gestures()) {
        for (int user = 1; user <= 6; ++user) {
            for (const auto& point : synthesizer.draw(gesture, user, 1).points) {
                for (const double value : point) {
                    // FNV-1a over tenths of pixels.
                    checksum ^= static_cast<std::uint64_t>(std::llround(value * 10.0));
                    checksum *= 0x100000001b3U;
                }
            }
        }
    }

    EXPECT_EQ(checksum, 13325077843839954591U);
}

TEST(TraceSynthesizer, PenIsSlowerAtBothEndsThanBetween) {
    const TraceSynthesizer synthesizer(seed, 0.0);
    for (const std::string& gesture : TraceSynthesizer::gestures()) {
        for (int user = 1; user <= 6; ++user) {
            SCOPED_TRACE(gesture + ", user " + std::to_string(user));
            const Trace trace = synthesizer.draw(gesture, user, 1);
            const double between = meanStep(trace, 0.1, 0.9);
            EXPECT_LT(meanStep(trace, 0.0, 0.1), between);
            EXPECT_LT(meanStep(trace, 0.9, 1.0), between);
        }
    }
}

TEST(TraceSynthesizer, ClosedGesturesAreDrawnCounterClockwise) {
    const TraceSynthesizer synthesizer(seed);
    for (const std::string gesture : {"circle", "rectangle", "triangle"}) {
        for (int user = 1; user <= 12; ++user) {
            SCOPED_TRACE(gesture + ", user " + std::to_string(user));
            EXPECT_LT(turning(synthesizer.draw(gesture, user, 1)), 0.0);
        }
    }
}

TEST(TraceSynthesizer, CaretPointsUpWithYDownwards) {
    const TraceSynthesizer synthesizer(seed);
    for (int user = 1; user <= 12; ++user) {
        SCOPED_TRACE(user);
        const Trace trace = synthesizer.draw("caret", user, 1);
        const auto top = std::min_element(trace.points.begin(), trace.points.end(),
                                          [](const auto& p, const auto& q) { return p[1] < q[1]; });
        EXPECT_LT((*top)[1] + 20.0, trace.points.front()[1]);
        EXPECT_LT((*top)[1] + 20.0, trace.points.back()[1]);
    }
}

TEST(TraceSynthesizer, UsersDifferInSizeAndPace) {
    const TraceSynthesizer synthesizer(seed, 0.0);
    std::vector<double> heights;
    std::vector<std::size_t> lengths;
    for (int user = 1; user <= 8; ++user) {
        const Trace trace = synthesizer.draw("circle", user, 1);
        heights.push_back(extent(trace, 1));
        lengths.push_back(trace.points.size());
    }

    const auto [small, large] = std::minmax_element(heights.begin(), heights.end());
    EXPECT_GT(*large, 1.5 * *small);
    const auto [quick, slow] = std::minmax_element(lengths.begin(), lengths.end());
    EXPECT_GT(static_cast<double>(*slow), 1.5 * static_cast<double>(*quick));
}

TEST(TraceSynthesizer, SteadyHandRepeatsItsShapeElsewhere) {
    const TraceSynthesizer synthesizer(seed, 0.0);
    const Trace first = synthesizer.draw("rectangle", 4, 1);
    const Trace second = synthesizer.draw("rectangle", 4, 2);

    // Only the moments of sampling differ: a corner may be missed by one short step.
    EXPECT_NEAR(extent(first, 0), extent(second, 0), 3.0);
    EXPECT_NEAR(extent(first, 1), extent(second, 1), 3.0);
    EXPECT_NE(first.points.front(), second.points.front());
}

TEST(TraceSynthesizer, UnsteadinessSpreadsSizes) {
    const auto spread = [](double unsteadiness) {
        const TraceSynthesizer synthesizer(seed, unsteadiness);
        double low = std::numeric_limits<double>::infinity();
        double high = 0.0;
        for (int repetition = 1; repetition <= 10; ++repetition) {
            const double height = extent(synthesizer.draw("rectangle", 4, repetition), 1);
            low = std::min(low, height);
            high = std::max(high, height);
        }
        return high / low;
    };

    EXPECT_LT(spread(0.0), 1.05);
    EXPECT_GT(spread(1.0), 1.15);
    EXPECT_GT(spread(2.0), spread(1.0));
}

TEST(TraceSynthesizer, GreatestUnsteadinessStaysFinite) {
    const TraceSynthesizer synthesizer(seed, TraceSynthesizer::mostUnsteadiness);
    for (int repetition = 1; repetition <= 50; ++repetition) {
        SCOPED_TRACE(repetition);
        const Trace trace = synthesizer.draw("spiral", 1, repetition);
        EXPECT_LT(trace.points.size(), 10000U);
        for (const auto& point : trace.points) {
            ASSERT_TRUE(std::isfinite(point[0]) && std::isfinite(point[1]));
        }
    }
}

TEST(TraceSynthesizer, RefusesWhatItCannotDraw) {
    const TraceSynthesizer synthesizer(seed);

    EXPECT_THROW(synthesizer.draw("Circle", 1, 1), std::invalid_argument);
    EXPECT_THROW(synthesizer.draw("", 1, 1), std::invalid_argument);
    EXPECT_THROW(synthesizer.draw("circle", 0, 1), std::invalid_argument);
    EXPECT_THROW(synthesizer.draw("circle", 1, 0), std::invalid_argument);
    EXPECT_THROW(TraceSynthesizer(1, -0.1), std::invalid_argument);
    EXPECT_THROW(TraceSynthesizer(1, 10.1), std::invalid_argument);
    EXPECT_THROW(TraceSynthesizer(1, std::nan("")), std::invalid_argument);
}

}  // namespace
