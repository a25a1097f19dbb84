#include "Readers.h"

#include <support/Files.h>
#include <veskkit/Error.h>
#include <veskkit/io/JsonLinesReader.h>
#include <veskkit/io/TraceFiles.h>
#include <veskkit/io/internal/LineReader.h>

#include <gtest/gtest.h>

#include <sstream>

namespace Vesk::Kit {
namespace {

using Vesk::Test::textOf;

std::vector<Trace> read(const std::string& text) {
    return Vesk::Test::tracesOf<JsonLinesReader>(text);
}

std::string errorOf(const std::string& text) {
    return Vesk::Test::refusalOf<JsonLinesReader>(text);
}

TEST(JsonLinesReaderTest, ReadsLabelUserPointsAndPlace) {
    const std::vector<Trace> traces = read(
        "{\"gesture\":\"a b\",\"user\":\"s1\",\"points\":[[1,2],[-3.5,4e2,9]]}\n"
        "{\"points\":[]}\n");
    ASSERT_EQ(traces.size(), 2u);
    EXPECT_EQ(traces[0].gesture, "a b");
    EXPECT_EQ(traces[0].user, "s1");
    EXPECT_EQ(traces[0].points, (Points{{1, 2}, {-3.5, 400, 9}}));
    EXPECT_EQ(traces[0].source, "t");
    EXPECT_EQ(traces[0].line, 1u);
    EXPECT_EQ(traces[1].gesture, "");
    EXPECT_EQ(traces[1].user, "");
    EXPECT_TRUE(traces[1].points.empty());
    EXPECT_EQ(traces[1].line, 2u);
}

TEST(JsonLinesReaderTest, TakesLabelsAsUtf8) {
    const std::vector<Trace> traces = read("{\"gesture\":\"\\u00e9t\xC3\xA9\",\"points\":[[1,2]]}");
    ASSERT_EQ(traces.size(), 1u);
    EXPECT_EQ(traces[0].gesture, "\xC3\xA9t\xC3\xA9");
}

TEST(JsonLinesReaderTest, IgnoresOtherKeysAndWhatIsInThem) {
    const std::vector<Trace> traces = read(
        "{\"t\":[0,[1,{\"points\":3,\"gesture\":[]}]],\"x\":{\"user\":{\"points\":[[]]}},"
        "\"y\":null,\"points\":[[1,2]],\"z\":true,\"gesture\":\"g\",\"w\":[[\"points\"]]}");
    ASSERT_EQ(traces.size(), 1u);
    EXPECT_EQ(traces[0].points, (Points{{1, 2}}));
    EXPECT_EQ(traces[0].gesture, "g");
    EXPECT_EQ(traces[0].user, "");
}

TEST(JsonLinesReaderTest, TheLastOfRepeatedKeysCounts) {
    const std::vector<Trace> traces = read("{\"points\":[[1,2]],\"points\":[[3,4],[5,6]]}");
    ASSERT_EQ(traces.size(), 1u);
    EXPECT_EQ(traces[0].points, (Points{{3, 4}, {5, 6}}));
}

TEST(JsonLinesReaderTest, SkipsMarkBlankLinesAndCarriageReturns) {
    const std::vector<Trace> traces =
        read("\xEF\xBB\xBF\r\n  \t\r\n{\"points\":[[1,2]]}\r\n\n{\"points\":[[3,4]]}");
    ASSERT_EQ(traces.size(), 2u);
    EXPECT_EQ(traces[0].line, 3u);
    EXPECT_EQ(traces[1].line, 5u);
    EXPECT_EQ(traces[1].points, (Points{{3, 4}}));
    const std::vector<Trace> marked = read("\xEF\xBB\xBF{\"points\":[[1,2]]}");
    ASSERT_EQ(marked.size(), 1u);
    EXPECT_EQ(marked[0].line, 1u);
}

TEST(JsonLinesReaderTest, AnEmptyFileHasNoTraces) {
    EXPECT_TRUE(read("").empty());
    EXPECT_TRUE(read("\n\n").empty());
    EXPECT_TRUE(read("\xEF\xBB\xBF").empty());
}

TEST(JsonLinesReaderTest, RefusesWhatIsNotJson) {
    EXPECT_EQ(errorOf("hello"),
              "t:1: found text that is not JSON at byte 1 of the line, expected an object");
    EXPECT_EQ(errorOf("{\"points\":[[1,2]]}\n{\"points\":[[1,2]"),
              "t:2: found the end of the line, expected the rest of the object");
    EXPECT_EQ(errorOf("{\"points\":[[1,2]]} {}"),
              "t:1: found text that is not JSON at byte 20 of the line, expected an object");
    EXPECT_EQ(errorOf("{\"points\":[[NaN,2]]}"),
              "t:1: found text that is not JSON at byte 13 of the line, expected an object");
    EXPECT_EQ(errorOf(std::string("{\"points\":[[1,2]]}\0", 19)),
              "t:1: found text that is not JSON at byte 19 of the line, expected an object");
    EXPECT_EQ(errorOf("{\"gesture\":\"\xFF\",\"points\":[]}"),
              "t:1: found text that is not JSON at byte 13 of the line, expected an object");
}

TEST(JsonLinesReaderTest, RefusesWhatIsNotAnObject) {
    EXPECT_EQ(errorOf("[[1,2]]"),
              "t:1: found a list, expected JSON Lines: an object a line, no list of them");
    EXPECT_EQ(errorOf("3"), "t:1: found a number, expected an object");
    EXPECT_EQ(errorOf("\"x\""), "t:1: found a string, expected an object");
    EXPECT_EQ(errorOf("null"), "t:1: found null, expected an object");
    EXPECT_EQ(errorOf("true"), "t:1: found true, expected an object");
}

TEST(JsonLinesReaderTest, RefusesMissingPoints) {
    EXPECT_EQ(errorOf("\n{\"gesture\":\"g\"}"),
              "t:2: found no key \"points\", expected a list of positions");
    EXPECT_EQ(errorOf("{}"), "t:1: found no key \"points\", expected a list of positions");
}

TEST(JsonLinesReaderTest, RefusesValuesOfTheWrongType) {
    EXPECT_EQ(errorOf("{\"gesture\":3}"), "t:1: found a number as \"gesture\", expected a string");
    EXPECT_EQ(errorOf("{\"gesture\":[]}"), "t:1: found a list as \"gesture\", expected a string");
    EXPECT_EQ(errorOf("{\"user\":null}"), "t:1: found null as \"user\", expected a string");
    EXPECT_EQ(errorOf("{\"user\":{}}"), "t:1: found an object as \"user\", expected a string");
    EXPECT_EQ(errorOf("{\"points\":\"x\"}"),
              "t:1: found a string as \"points\", expected a list of positions");
    EXPECT_EQ(errorOf("{\"points\":{}}"),
              "t:1: found an object as \"points\", expected a list of positions");
    EXPECT_EQ(errorOf("{\"points\":[[1,2],3]}"),
              "t:1: found a number as points[1], expected a list of at least 2 numbers");
    EXPECT_EQ(errorOf("{\"points\":[{\"x\":1,\"y\":2}]}"),
              "t:1: found an object as points[0], expected a list of at least 2 numbers");
    EXPECT_EQ(errorOf("{\"points\":[[1,2],[3,\"4\"]]}"),
              "t:1: found a string as points[1][1], expected a finite number");
    EXPECT_EQ(errorOf("{\"points\":[[1,null]]}"),
              "t:1: found null as points[0][1], expected a finite number");
    EXPECT_EQ(errorOf("{\"points\":[[1,2,[3]]]}"),
              "t:1: found a list as points[0][2], expected a finite number");
}

TEST(JsonLinesReaderTest, RefusesPositionsOfFewerThanTwoNumbers) {
    EXPECT_EQ(errorOf("{\"points\":[[1,2],[3]]}"),
              "t:1: found 1 number in points[1], expected at least 2");
    EXPECT_EQ(errorOf("{\"points\":[[]]}"),
              "t:1: found 0 numbers in points[0], expected at least 2");
}

TEST(JsonLinesReaderTest, RefusesNumbersBeyondTheRange) {
    EXPECT_EQ(errorOf("{\"points\":[[1,1e999]]}"),
              "t:1: found the number 1e999, expected a finite number");
}

TEST(JsonLinesReaderTest, GoesOnAfterABadLine) {
    std::istringstream in("{\"points\":[[1]]}\noops\n{\"points\":[[1,2]]}\n");
    JsonLinesReader reader(in, "t");
    Trace trace;
    EXPECT_THROW(reader.next(trace), InputError);
    EXPECT_THROW(reader.next(trace), InputError);
    ASSERT_TRUE(reader.next(trace));
    EXPECT_EQ(trace.line, 3u);
    EXPECT_FALSE(reader.next(trace));
}

TEST(JsonLinesReaderTest, ABadLineLeavesTheTraceAsItWas) {
    std::istringstream in("{\"gesture\":\"g\",\"points\":[[1,2],[3]]}\n");
    JsonLinesReader reader(in, "t");
    Trace trace;
    trace.gesture = "before";
    EXPECT_THROW(reader.next(trace), InputError);
    EXPECT_EQ(trace.gesture, "before");
    EXPECT_TRUE(trace.points.empty());
}

TEST(JsonLinesReaderTest, TakesTheLongestLineAndRefusesALongerOne) {
    const std::string start = "{\"points\":[[1,2]],\"x\":\"";
    const std::string end = "\"}";
    const std::size_t fill = internal::longestLine - start.size() - end.size();
    EXPECT_EQ(read(start + std::string(fill, 'x') + end + "\n").size(), 1u);

    std::istringstream in(start + std::string(fill + 1, 'x') + end + "\n{\"points\":[[1,2]]}\n");
    JsonLinesReader reader(in, "t");
    Trace trace;
    EXPECT_EQ(textOf<InputError>([&] { reader.next(trace); }),
              "t:1: found a line of more than 16777216 bytes, expected a shorter one");
    ASSERT_TRUE(reader.next(trace));
    EXPECT_EQ(trace.line, 2u);
}

TEST(JsonLinesReaderTest, DeepNestingInOtherKeysIsHarmless) {
    const std::string deep(100000, '[');
    const std::string back(100000, ']');
    EXPECT_EQ(read("{\"x\":" + deep + back + ",\"points\":[[1,2]]}").size(), 1u);
}

TEST(JsonLinesReaderTest, ReadsFilesByName) {
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("t.jsonl");
    Vesk::Test::writeFile(path, "{\"gesture\":\"g\",\"points\":[[1,2]]}\n{\"points\":[[1,2]]}\n");
    const std::vector<Trace> traces = readTraces(path);
    ASSERT_EQ(traces.size(), 2u);
    EXPECT_EQ(placeOf(traces[1]), path + ":2");
}

TEST(JsonLinesReaderTest, RefusesMissingFilesAndFolders) {
    const Vesk::Test::TemporaryFolder folder;
    const std::string missing = folder.path("missing");
    EXPECT_EQ(textOf<InputError>([&] { JsonLinesReader{missing}; }),
              missing + ": found no such file, expected a file that can be read");
    EXPECT_EQ(textOf<InputError>([&] { JsonLinesReader{folder.path("")}; }),
              folder.path("") + ": found a directory, expected a file");
}

}  // namespace
}  // namespace Vesk::Kit
