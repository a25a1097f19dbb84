#include "Gestures.h"

#include <support/Files.h>
#include <veskkit/Error.h>
#include <veskkit/io/TraceFiles.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::TemporaryFolder;
using Vesk::Test::textOf;
using Vesk::Test::writeFile;

constexpr const char* jsonLine = "{\"gesture\":\"j\",\"points\":[[1,2]]}\n";
constexpr const char* unlabelledLine = "{\"points\":[[1,2]]}\n";
constexpr const char* table = "x,y\n1,2\n";
constexpr const char* log = "<Gesture Name=\"x1\"><Point X=\"1\" Y=\"2\"/></Gesture>";

/// circle/a_1.csv, circle/b.xml, c.jsonl, .hidden/d.csv, circle/.e.csv and notes.txt.
class Folder {
public:
    Folder() {
        std::filesystem::create_directories(temporary.path("set/circle"));
        std::filesystem::create_directories(temporary.path("set/.hidden"));
        writeFile(path("circle/a_1.csv"), table);
        writeFile(path("circle/b.xml"), log);
        writeFile(path("circle/.e.csv"), table);
        writeFile(path("c.jsonl"), jsonLine);
        writeFile(path(".hidden/d.csv"), table);
        writeFile(path("notes.txt"), "nothing");
    }
    std::string path(const std::string& name) const { return temporary.path("set/" + name); }
    std::string path() const { return temporary.path("set"); }

private:
    TemporaryFolder temporary;
};

std::vector<std::string> labels(const std::vector<Trace>& traces) {
    std::vector<std::string> result;
    for (const Trace& trace : traces) result.push_back(trace.gesture);
    return result;
}

TEST(TraceFilesTest, ReadsAFolderInTheOrderOfPaths) {
    const Folder folder;
    const TraceFiles files({folder.path()});
    EXPECT_EQ(files.files(),
              (std::vector<std::string>{folder.path("c.jsonl"), folder.path("circle/a_1.csv"),
                                        folder.path("circle/b.xml")}));
    const std::vector<Trace> traces = readTraces(folder.path());
    EXPECT_EQ(labels(traces), (std::vector<std::string>{"j", "a", "x"}));
    for (const Trace& trace : traces) EXPECT_EQ(trace.points, (Points{{1, 2}}));
    EXPECT_EQ(traces[1].source, folder.path("circle/a_1.csv"));
}

TEST(TraceFilesTest, LabelsComeFromWhereTheyAreAskedFrom) {
    const Folder folder;
    EXPECT_EQ(labels(readTraces(folder.path(), {TraceFormat::Guess, LabelSource::FileName})),
              (std::vector<std::string>{"c", "a", "b"}));
    EXPECT_EQ(labels(readTraces(folder.path(), {TraceFormat::Guess, LabelSource::Folder})),
              (std::vector<std::string>{"set", "circle", "circle"}));
}

TEST(TraceFilesTest, OnlyATableOfOneTraceIsNamedByItsFile) {
    const TemporaryFolder folder;
    writeFile(folder.path("v-12.csv"), table);
    writeFile(folder.path("many.csv"), "trace,x,y\n1,1,2\n2,1,2\n");
    writeFile(folder.path("own.csv"), "x,y,gesture\n1,2,w\n");
    writeFile(folder.path("lines.jsonl"), unlabelledLine);
    writeFile(folder.path("007.csv"), table);
    EXPECT_EQ(
        labels(readTraces({folder.path("v-12.csv"), folder.path("many.csv"), folder.path("own.csv"),
                           folder.path("lines.jsonl"), folder.path("007.csv")})),
        (std::vector<std::string>{"v", "", "", "w", "", "007"}));
}

TEST(TraceFilesTest, TellsTheFirstFileWhoseNameIsALabelForWantOfAColumn) {
    const TemporaryFolder folder;
    writeFile(folder.path("own.csv"), "x,y,label\n1,2,w\n");
    writeFile(folder.path("empty.csv"), "x,y,label\n1,2,\n");
    writeFile(folder.path("many.csv"), "trace,x,y\n1,1,2\n2,1,2\n");
    writeFile(folder.path("v-1.csv"), table);
    writeFile(folder.path("w-1.csv"), "1,2\n");
    const auto first = [&](const std::vector<std::string>& names, LabelSource label) {
        std::vector<std::string> paths;
        for (const std::string& name : names) paths.push_back(folder.path(name));
        TraceFiles files(paths, {TraceFormat::Guess, label});
        for (Trace trace; files.next(trace);) {
        }
        return files.firstWithoutLabels();
    };
    const auto record = LabelSource::Record;
    EXPECT_EQ(first({"own.csv", "w-1.csv", "v-1.csv"}, record), folder.path("w-1.csv"));
    EXPECT_EQ(first({"own.csv", "empty.csv", "many.csv"}, record), "");
    EXPECT_EQ(first({"v-1.csv"}, LabelSource::FileName), "");
    EXPECT_EQ(first({"v-1.csv"}, LabelSource::Folder), "");
}

TEST(TraceFilesTest, GuessesTheFormatOfOtherFilesByTheirText) {
    const TemporaryFolder folder;
    writeFile(folder.path("one"), std::string("\n ") + jsonLine);
    writeFile(folder.path("two.dat"), log);
    writeFile(folder.path("three.txt"), table);
    EXPECT_EQ(
        labels(readTraces({folder.path("one"), folder.path("two.dat"), folder.path("three.txt")})),
        (std::vector<std::string>{"j", "x", "three"}));
}

TEST(TraceFilesTest, TakesAGivenFormatWhateverTheName) {
    const TemporaryFolder folder;
    writeFile(folder.path("a.csv"), jsonLine);
    EXPECT_EQ(labels(readTraces(folder.path("a.csv"), {TraceFormat::JsonLines, {}})),
              std::vector<std::string>{"j"});
    writeFile(folder.path("b.txt"), jsonLine);
    EXPECT_EQ(TraceFiles({folder.path("")}, {TraceFormat::JsonLines, {}}).files().size(), 2u);
}

TEST(TraceFilesTest, SaysWhatIsMissing) {
    const TemporaryFolder folder;
    EXPECT_EQ(textOf<InputError>([&] { TraceFiles({folder.path("none")}); }),
              folder.path("none") + ": found no such file, expected a file that can be read");
    EXPECT_EQ(textOf<InputError>([&] { TraceFiles({folder.path("")}); }),
              folder.path("") +
                  ": found no file of traces below this folder, expected .jsonl, .csv or .xml");
}

TEST(TraceFilesTest, ReadsStreams) {
    const auto labelOf = [](const std::string& text) {
        std::istringstream in(text);
        const auto reader = readerOf(in, "standard input");
        Trace trace;
        EXPECT_TRUE(reader->next(trace));
        EXPECT_EQ(trace.source, "standard input");
        return trace.gesture;
    };
    EXPECT_EQ(labelOf(jsonLine), "j");
    EXPECT_EQ(labelOf(log), "x");
    EXPECT_EQ(labelOf(std::string("\xEF\xBB\xBF") + jsonLine), "j");
    EXPECT_EQ(labelOf("gesture,x,y\nv,1,2\n"), "v");
    std::istringstream list("[\n" + std::string(jsonLine) + "]\n");
    Trace trace;
    EXPECT_EQ(textOf<InputError>([&] { readerOf(list, "t")->next(trace); }),
              "t:1: found a list, expected JSON Lines: an object a line, no list of them");
}

TEST(TraceFilesTest, AnEmptyFileHoldsNoTraces) {
    const TemporaryFolder folder;
    writeFile(folder.path("a.jsonl"), "");
    writeFile(folder.path("b"), "");
    EXPECT_TRUE(readTraces({folder.path("a.jsonl"), folder.path("b")}).empty());
}

}  // namespace
}  // namespace Vesk::Kit
