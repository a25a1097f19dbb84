#include "Readers.h"

#include <support/Files.h>
#include <veskkit/Error.h>
#include <veskkit/io/XmlReader.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <ctime>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::textOf;

std::vector<Trace> read(const std::string& text) { return Vesk::Test::tracesOf<XmlReader>(text); }

std::string errorOf(const std::string& text) { return Vesk::Test::refusalOf<XmlReader>(text); }

TEST(XmlReaderTest, ReadsAGestureLog) {
    const std::vector<Trace> traces = read(
        "<?xml version=\"1.0\" encoding=\"utf-8\" standalone=\"yes\"?>\n"
        "<Gesture Name=\"arrow03\" Subject=\"7\" Speed=\"fast\" Number=\"3\" NumPts=\"2\">\n"
        "  <Point X=\"68\" Y=\"222.5\" T=\"0\" />\n"
        "  <Point X=\"-1e1\" Y=\"2\" T=\"8\" />\n"
        "</Gesture>\n");
    ASSERT_EQ(traces.size(), 1u);
    EXPECT_EQ(traces[0].gesture, "arrow");
    EXPECT_EQ(traces[0].user, "7");
    EXPECT_EQ(traces[0].points, (Points{{68, 222.5}, {-10, 2}}));
    EXPECT_EQ(traces[0].source, "t");
    EXPECT_EQ(traces[0].line, 2u);
}

TEST(XmlReaderTest, ReadsAllGesturesOfADocument) {
    const std::vector<Trace> traces = read(
        "<Log><Session><Gesture Name=\"a1\"><Point X=\"1\" Y=\"2\"/></Gesture></Session>\n"
        "<Note>here</Note>\n<Gesture Name=\"b2\"><Stroke><Point X=\"3\" Y=\"4\"/></Stroke>"
        "</Gesture></Log>");
    ASSERT_EQ(traces.size(), 2u);
    EXPECT_EQ(traces[0].gesture, "a");
    EXPECT_EQ(traces[0].line, 1u);
    EXPECT_EQ(traces[1].gesture, "b");
    EXPECT_EQ(traces[1].points, (Points{{3, 4}}));
    EXPECT_EQ(traces[1].line, 3u);
}

TEST(XmlReaderTest, ANameOfDigitsAloneStays) {
    EXPECT_EQ(read("<Gesture Name=\"8\"/>")[0].gesture, "8");
    EXPECT_EQ(read("<Gesture/>")[0].gesture, "");
}

TEST(XmlReaderTest, SaysWhatIsWrongWhere) {
    const std::pair<const char*, const char*> cases[] = {
        {"<Gesture><Point X=\"1\"/></Gesture>",
         "t:1: found no value as Y, expected a finite number"},
        {"<Gesture>\n<Point X=\"one\" Y=\"2\"/></Gesture>",
         "t:2: found \"one\" as X, expected a finite number"},
        {"<Gesture>\n<Point X=\"1\" Y=\"inf\"/></Gesture>",
         "t:2: found \"inf\" as Y, expected a finite number"},
        {"<Gesture>\n<Stroke/><Stroke/></Gesture>",
         "t:1: found a gesture of several strokes, expected one stroke"},
        {"<Log>\n</Log>", "t: found no element Gesture, expected at least 1"},
    };
    for (const auto& [text, message] : cases) EXPECT_EQ(errorOf(text), message) << text;
    for (const char* text : {"", "gesture", "<Gesture>\n<Point", "<Gesture></Point>"}) {
        const std::string message = errorOf(text);
        EXPECT_EQ(message.compare(0, 2, "t:"), 0) << message;
        EXPECT_NE(message.find("found text that is not XML ("), std::string::npos) << message;
        EXPECT_NE(message.find("), expected a gesture log"), std::string::npos) << message;
    }
}

TEST(XmlReaderTest, GoesOnAfterABadGesture) {
    std::istringstream in(
        "<Log><Gesture><Point X=\"?\" Y=\"0\"/></Gesture><Gesture Name=\"v\"/></Log>");
    XmlReader reader(in, "t");
    Trace trace;
    EXPECT_THROW(reader.next(trace), InputError);
    ASSERT_TRUE(reader.next(trace));
    EXPECT_EQ(trace.gesture, "v");
    EXPECT_FALSE(reader.next(trace));
}

TEST(XmlReaderTest, SaysOnceThatThereIsNoGesture) {
    std::istringstream in("<Log/>");
    XmlReader reader(in, "t");
    Trace trace;
    EXPECT_THROW(reader.next(trace), InputError);
    EXPECT_FALSE(reader.next(trace));
}

TEST(XmlReaderTest, TakesDeepAndEntityLadenDocuments) {
    std::string deep;
    for (int i = 0; i < 20000; ++i) deep += "<a>";
    deep += "<Gesture Name=\"v\"/>";
    for (int i = 0; i < 20000; ++i) deep += "</a>";
    EXPECT_EQ(read(deep).size(), 1u);
    EXPECT_EQ(read("<!DOCTYPE Gesture [<!ENTITY a \"b\">]><Gesture Name=\"&a;\"/>")[0].gesture,
              "&a;");
}

TEST(XmlReaderTest, LinesAreCountedAcrossLongTexts) {
    std::string text = "<Log>";
    std::vector<std::size_t> expected;
    for (std::size_t i = 0; i < 3000; ++i) {
        text.append(i % 7, '\n').append(i % 61, ' ') += "<Gesture/>";
        expected.push_back((expected.empty() ? 1 : expected.back()) + i % 7);
    }
    std::vector<std::size_t> found;
    for (const Trace& trace : read(text + "</Log>")) found.push_back(trace.line);
    EXPECT_EQ(found, expected);
}

TEST(XmlReaderTest, ManyGesturesTakeNoMoreThanTheirShare) {
    std::string text = "<Log>";
    for (int i = 0; i < 400000; ++i) text += "<Gesture>\n<Point/></Gesture>";
    std::istringstream in(text + "</Log>");
    XmlReader reader(in, "t");
    // Counting lines from the start for each of them takes minutes.
    const std::clock_t start = std::clock();
    Trace trace;
    std::size_t refused = 0;
    for (bool more = true; more;) {
        try {
            more = reader.next(trace);
        } catch (const InputError&) {
            ++refused;
        }
        ASSERT_LT(std::clock() - start, 30 * CLOCKS_PER_SEC) << refused;
    }
    EXPECT_EQ(refused, 400000u);
}

TEST(XmlReaderTest, RefusesFilesThatAreTooLarge) {
    std::string text = "<Gesture/>";
    text.resize(XmlReader::longestFile + 1, ' ');
    EXPECT_EQ(errorOf(text), "t: found more than 67108864 bytes of XML, expected fewer");
}

}  // namespace
}  // namespace Vesk::Kit
