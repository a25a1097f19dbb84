#include "Readers.h"

#include <veskkit/Error.h>
#include <veskkit/io/CsvReader.h>
#include <veskkit/io/JsonLinesReader.h>
#include <veskkit/io/TraceText.h>

#include <support/BitEqual.h>
#include <support/Random.h>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::bitEqual;
using Vesk::Test::refusalOf;
using Vesk::Test::textOf;
using Vesk::Test::tracesOf;

Trace traceOf(const std::string& gesture, const std::string& user, Points points) {
    Trace trace;
    trace.gesture = gesture;
    trace.user = user;
    trace.points = std::move(points);
    return trace;
}

/// Traces with numbers of all magnitudes and labels that formats could stumble over.
std::vector<Trace> nastyTraces() {
    Vesk::Test::Random random(1);
    std::vector<Trace> traces;
    for (const char* label : {"a", "b c", "d,e", "f;g", "h\ti", "\"j\"", "k\"l", "'m'", "#n", "\\o",
                              "\xc3\xa4\xe2\x82\xac", " p "}) {
        Points points;
        for (int i = 0; i < 40; ++i) {
            const int power = random.integer(-300, 300);
            points.push_back({(random.unit() - 0.5) * std::pow(10.0, power), random.unit()});
        }
        points.push_back({0.0, -0.0});
        points.push_back({std::numeric_limits<double>::max(), 5e-324});
        traces.push_back(traceOf(label, label, points));
    }
    return traces;
}

void expectSame(const std::vector<Trace>& read, const std::vector<Trace>& written) {
    ASSERT_EQ(read.size(), written.size());
    for (std::size_t t = 0; t < read.size(); ++t) {
        SCOPED_TRACE("label " + written[t].gesture);
        EXPECT_EQ(read[t].gesture, written[t].gesture);
        EXPECT_EQ(read[t].user, written[t].user);
        ASSERT_EQ(read[t].points.size(), written[t].points.size());
        for (std::size_t p = 0; p < read[t].points.size(); ++p) {
            ASSERT_TRUE(bitEqual(read[t].points[p][0], written[t].points[p][0])) << p;
            ASSERT_TRUE(bitEqual(read[t].points[p][1], written[t].points[p][1])) << p;
        }
    }
}

TEST(TraceTextTest, JsonLinesReadBackToTheBit) {
    const std::vector<Trace> traces = nastyTraces();
    std::string text;
    for (const Trace& trace : traces) text += jsonLine(trace);
    expectSame(tracesOf<JsonLinesReader>(text), traces);
}

TEST(TraceTextTest, TablesReadBackToTheBit) {
    const std::vector<Trace> traces = nastyTraces();
    std::string text = tableHeader();
    for (std::size_t t = 0; t < traces.size(); ++t) text += tableRows(traces[t], t + 1);
    expectSame(tracesOf<CsvReader>(text), traces);
}

TEST(TraceTextTest, WhatIsNotKnownIsLeftOut) {
    EXPECT_EQ(jsonLine(traceOf("", "", {{1, 2}})), "{\"points\":[[1.0,2.0]]}\n");
    EXPECT_EQ(jsonLine(traceOf("a", "u", {{1, 2}, {0.1, 3}})),
              "{\"gesture\":\"a\",\"user\":\"u\",\"points\":[[1.0,2.0],[0.1,3.0]]}\n");
    EXPECT_EQ(tableRows(traceOf("", "", {{1, 2}, {3, 4}}), 7), ",,7,1.0,2.0\n,,7,3.0,4.0\n");
}

TEST(TraceTextTest, PositionsThatNobodyCouldReadBackAreRefused) {
    Trace trace = traceOf("a", "u", {{1, 2}, {3, std::numeric_limits<double>::infinity()}});
    trace.source = "t.jsonl";
    trace.line = 3;
    for (const auto& write : {std::function<void()>([&] { jsonLine(trace); }),
                              std::function<void()>([&] { tableRows(trace, 1); })}) {
        EXPECT_EQ(textOf<InputError>(write).rfind("t.jsonl:3: ", 0), 0U);
    }
    trace.points = {{1}};
    EXPECT_NE(textOf<InputError>([&] { jsonLine(trace); }), "");
}

TEST(TraceTextTest, ATableTakesNoLineBreaks) {
    for (const char* label : {"a\nb", "a\rb"}) {
        EXPECT_EQ(textOf<InputError>([&] {
                      tableRows(traceOf(label, "u", {{1, 2}}), 1);
                  }).rfind("trace: found ", 0),
                  0U);
        EXPECT_NE(textOf<InputError>([&] { tableRows(traceOf("a", label, {{1, 2}}), 1); }), "");
    }
}

TEST(TraceTextTest, TextThatIsNotUtf8GetsReplacements) {
    const std::vector<Trace> read =
        tracesOf<JsonLinesReader>(jsonLine(traceOf("a\xff", "u", {{1, 2}})));
    ASSERT_EQ(read.size(), 1U);
    EXPECT_EQ(read[0].gesture, "a\xef\xbf\xbd");
}

}  // namespace
}  // namespace Vesk::Kit
