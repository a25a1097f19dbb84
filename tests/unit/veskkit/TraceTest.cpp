#include "Gestures.h"

#include <veskkit/Error.h>
#include <veskkit/traces/Trace.h>

#include <gtest/gtest.h>

#include <limits>

namespace Vesk::Kit {
namespace {

using Vesk::Test::textOf;

Trace traceAt(const std::string& source, std::size_t line, Points points = {}) {
    Trace trace;
    trace.source = source;
    trace.line = line;
    trace.points = std::move(points);
    return trace;
}

TEST(TraceTest, PlaceNamesWhatIsKnown) {
    EXPECT_EQ(placeOf(traceAt("a.jsonl", 12)), "a.jsonl:12");
    EXPECT_EQ(placeOf(traceAt("a.jsonl", 0)), "a.jsonl");
    EXPECT_EQ(placeOf(traceAt("", 7)), "line 7");
    EXPECT_EQ(placeOf(traceAt("", 0)), "trace");
}

TEST(TraceTest, PlaceIsOneLineWhateverTheFileIsCalled) {
    EXPECT_EQ(placeOf(traceAt("a\nb", 1)), "a?b:1");
}

TEST(TraceTest, UsablePointsMayHaveMoreThanTwoNumbers) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_NO_THROW(requireUsablePoints(traceAt("a", 1, {{0, 1}, {2, 3, nan}})));
    EXPECT_NO_THROW(requireUsablePoints(traceAt("a", 1)));
}

TEST(TraceTest, RefusesPositionsOfFewerThanTwoNumbers) {
    EXPECT_EQ(textOf<InputError>([] {
                  requireUsablePoints(traceAt("a", 3, {{0, 1}, {2}}));
              }),
              "a:3: found 1 number in points[1], expected at least 2");
    EXPECT_EQ(textOf<InputError>([] { requireUsablePoints(traceAt("a", 3, {{}})); }),
              "a:3: found 0 numbers in points[0], expected at least 2");
}

TEST(TraceTest, RefusesNonFiniteNumbers) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(textOf<InputError>([] {
                  requireUsablePoints(traceAt("", 0, {{0, 1}, {2, -infinity}}));
              }),
              "trace: found -inf as points[1][1], expected a finite number");
    EXPECT_EQ(textOf<InputError>([] {
                  requireUsablePoints(traceAt("", 0, {{nan, 1}}));
              }),
              "trace: found nan as points[0][0], expected a finite number");
}

}  // namespace
}  // namespace Vesk::Kit
