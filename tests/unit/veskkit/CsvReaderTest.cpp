#include "Readers.h"

#include <support/Files.h>
#include <veskkit/Error.h>
#include <veskkit/io/CsvReader.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::textOf;

std::vector<Trace> read(const std::string& text) { return Vesk::Test::tracesOf<CsvReader>(text); }

std::string errorOf(const std::string& text) { return Vesk::Test::refusalOf<CsvReader>(text); }

TEST(CsvReaderTest, ReadsSeveralTracesOfOneFile) {
    const std::vector<Trace> traces = read(
        "gesture,user,trace,x,y\n"
        "circle,s1,1,0,0.5\n"
        "circle,s1,1,-1e2,+2\n"
        "star,s1,2,3,4\n");
    ASSERT_EQ(traces.size(), 2u);
    EXPECT_EQ(traces[0].gesture, "circle");
    EXPECT_EQ(traces[0].user, "s1");
    EXPECT_EQ(traces[0].points, (Points{{0, 0.5}, {-100, 2}}));
    EXPECT_EQ(traces[0].source, "t");
    EXPECT_EQ(traces[0].line, 2u);
    EXPECT_EQ(traces[1].gesture, "star");
    EXPECT_EQ(traces[1].points, (Points{{3, 4}}));
    EXPECT_EQ(traces[1].line, 4u);
}

TEST(CsvReaderTest, ColumnsComeInAnyOrderAndCaseAmongOthers) {
    const std::vector<Trace> traces = read("T,Y,Trace,pressure, X \n0,2,a,0.5,1\n9,4,a,,3\n");
    ASSERT_EQ(traces.size(), 1u);
    EXPECT_EQ(traces[0].points, (Points{{1, 2}, {3, 4}}));
    EXPECT_EQ(traces[0].gesture, "");
    EXPECT_EQ(traces[0].user, "");
}

TEST(CsvReaderTest, LabelsMayStandUnderLabelOrClass) {
    EXPECT_EQ(read("Label,x,y\nv,1,2\n")[0].gesture, "v");
    EXPECT_EQ(read("x,y,CLASS\n1,2,v\n")[0].gesture, "v");
    EXPECT_EQ(read("class,label,gesture,x,y\na,b,v,1,2\n")[0].gesture, "v");
    EXPECT_EQ(errorOf("class,label,x,y\na,b,1,2\n"),
              "t:1: found columns \"label\" and \"class\", expected one of them or \"gesture\"");
    EXPECT_EQ(errorOf("class,x,y,Class\n"), "t:1: found two columns \"class\", expected one");
}

TEST(CsvReaderTest, TheSameNumberByAnotherUserOrOfAnotherGestureIsAnotherTrace) {
    EXPECT_EQ(read("gesture,user,trace,x,y\na,u,1,0,0\na,v,1,0,0\nb,v,1,0,0\n").size(), 3u);
}

TEST(CsvReaderTest, WithoutAColumnTraceTheFileIsOneTrace) {
    const std::vector<Trace> traces = read("x,y,gesture\n1,2,v\n3,4,v\n");
    ASSERT_EQ(traces.size(), 1u);
    EXPECT_EQ(traces[0].gesture, "v");
    EXPECT_EQ(traces[0].points, (Points{{1, 2}, {3, 4}}));
    EXPECT_EQ(
        errorOf("x,y,gesture\n1,2,v\n3,4,w\n"),
        "t:3: found a row of gesture \"w\" and user \"\" in the file of one trace, expected a "
        "column \"trace\"");
}

TEST(CsvReaderTest, NumbersInTheFirstLineAreTheFirstPosition) {
    const std::vector<Trace> traces = read("1,2\n3,4,99\n");
    ASSERT_EQ(traces.size(), 1u);
    EXPECT_EQ(traces[0].points, (Points{{1, 2}, {3, 4}}));
    EXPECT_EQ(traces[0].line, 1u);
}

TEST(CsvReaderTest, TakesSemicolonsAndTabs) {
    EXPECT_EQ(read("x;y\n1;2\n")[0].points, (Points{{1, 2}}));
    EXPECT_EQ(read("x\ty\n1\t2\n")[0].points, (Points{{1, 2}}));
    EXPECT_EQ(read("gesture;trace;x;y\n\"a,b,c,d,e\";1;1;2\n")[0].gesture, "a,b,c,d,e");
}

TEST(CsvReaderTest, TakesFieldsInQuotationMarks) {
    const std::vector<Trace> traces =
        read("\"gesture\",\"trace\",x,y\n\"a \"\"b\"\", c\",1,\"1\",\" 2\"\n");
    ASSERT_EQ(traces.size(), 1u);
    EXPECT_EQ(traces[0].gesture, "a \"b\", c");
    EXPECT_EQ(traces[0].points, (Points{{1, 2}}));
}

TEST(CsvReaderTest, SkipsBlankLinesMarksAndCarriageReturns) {
    EXPECT_EQ(read("\xEF\xBB\xBFx,y\r\n\r\n1,2\r\n  \n3,4")[0].points, (Points{{1, 2}, {3, 4}}));
}

TEST(CsvReaderTest, NothingHoldsNoTrace) {
    EXPECT_TRUE(read("").empty());
    EXPECT_TRUE(read("\n \n").empty());
    EXPECT_TRUE(read("x,y\n").empty());
}

TEST(CsvReaderTest, SaysWhatIsWrongWhere) {
    const std::pair<const char*, const char*> cases[] = {
        {"a,b\n1,2\n",
         "t:1: found no column \"x\" among 2, expected a first line that names x and y"},
        {"x,z\n1,2\n",
         "t:1: found no column \"y\" among 2, expected a first line that names x and y"},
        {"x,y,X\n", "t:1: found two columns \"x\", expected one"},
        {"7\n", "t:1: found 1 column, expected at least x and y"},
        {"x 7\n", "t:1: found 1 column, expected at least x and y"},
        {"X  Y t\n1 2 3\n",
         "t:1: found columns separated by blanks, expected commas, semicolons or tabs"},
        {"1 2\n3 4\n",
         "t:1: found columns separated by blanks, expected commas, semicolons or tabs"},
        {"0 1 3\n1 2\n",
         "t:1: found columns separated by blanks, expected commas, semicolons or tabs"},
        {"0 2 3\n0 1 3\n",
         "t:1: found columns separated by blanks, expected commas, semicolons or tabs"},
        {"\n0.5 1 4\n0 90 180 270\n\nmodel\n",
         "t:2: found what looks like a model file, expected traces"},
        {"1 0 0\n\n\nmodel\n", "t:1: found what looks like a model file, expected traces"},
        {"0 0 0\n", "t:1: found what looks like a model file, expected traces"},
        {"x,y\n1\n", "t:2: found 1 field, expected 2 as in the first line"},
        {"x,y\n1,2,3\n", "t:2: found 3 fields, expected 2 as in the first line"},
        {"x,y\n1,two\n", "t:2: found \"two\" as y, expected a finite number"},
        {"x,y\n,2\n", "t:2: found \"\" as x, expected a finite number"},
        {"x,y\n1,nan\n", "t:2: found \"nan\" as y, expected a finite number"},
        {"x,y\n1e999,2\n", "t:2: found \"1e999\" as x, expected a finite number"},
        {"x,y\n1,2 3\n", "t:2: found \"2 3\" as y, expected a finite number"},
        {"x,y\n+-1,2\n", "t:2: found \"+-1\" as x, expected a finite number"},
        {"1,2\n3\n", "t:2: found no field as y, expected a finite number"},
        {"x,y\n\"1,2\n",
         "t:2: found a quotation mark that is not closed, expected a row of the table"},
        {"x,\"y\n",
         "t:1: found a quotation mark that is not closed, expected the names of columns"},
        {"trace,x,y\n1,0,0\n2,0,0\n1,5,5\n",
         "t:4: found a row of trace \"1\" after rows of others, expected the rows of a trace "
         "together"},
    };
    for (const auto& [text, message] : cases) EXPECT_EQ(errorOf(text), message) << text;
}

TEST(CsvReaderTest, ReadsADecimalPointWhateverTheLocaleOfTheProgram) {
    // The reader takes no locale: numbers with commas are none.
    EXPECT_EQ(errorOf("x;y\n1,5;2\n"), "t:2: found \"1,5\" as x, expected a finite number");
}

TEST(CsvReaderTest, RefusesLinesThatAreTooLong) {
    const std::string text = "x,y\n" + std::string((std::size_t{16} << 20) + 1, '1') + "\n";
    EXPECT_EQ(errorOf(text),
              "t:2: found a line of more than 16777216 bytes, expected a shorter one");
}

TEST(CsvReaderTest, HoldsOneTraceAtATime) {
    // A hundred thousand traces, made as they are read.
    class Source : public std::streambuf {
        int row = 0;
        std::string text = "trace,x,y\n";
        int_type underflow() override {
            if (row > 0) text = std::to_string(row) + ",1,2\n";
            if (row > 100000) return traits_type::eof();
            ++row;
            setg(text.data(), text.data(), text.data() + text.size());
            return traits_type::to_int_type(*gptr());
        }
    };
    Source source;
    std::istream in(&source);
    CsvReader reader(in, "t");
    std::size_t count = 0;
    for (Trace trace; reader.next(trace);) ++count;
    EXPECT_EQ(count, 100000u);
}

TEST(CsvReaderTest, ATableEndsWithWhatIsRefused) {
    for (const char* text : {"x,y\n1,one\n2,2\n", "x,y\n1,\"1\n2,2\n", "a,b\n1,1\n",
                             "trace,x,y\n1,1,1\n2,2,2\n1,3,3\n4,4,4\n"}) {
        SCOPED_TRACE(text);
        std::istringstream in(text);
        CsvReader reader(in, "t");
        Trace trace;
        const auto readOn = [&] {
            while (reader.next(trace)) {
            }
        };
        EXPECT_THROW(readOn(), InputError);
        EXPECT_FALSE(reader.next(trace));
    }
}

}  // namespace
}  // namespace Vesk::Kit
