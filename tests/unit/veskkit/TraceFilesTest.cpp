#include "Gestures.h"

#include <support/Files.h>
#include <veskkit/Error.h>
#include <veskkit/io/TraceFiles.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

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

TEST(TraceFilesTest, FollowsLinksToFilesButNotToFoldersInAFolder) {
    const Folder folder;
    namespace fs = std::filesystem;
    fs::create_symlink("c.jsonl", folder.path("file.jsonl"));
    fs::create_directory_symlink("circle", folder.path("link"));
    fs::create_directory_symlink(".", folder.path("circle/loop"));
    fs::create_symlink("nothing", folder.path("broken.jsonl"));
    fs::create_symlink("endless.jsonl", folder.path("endless.jsonl"));
    ASSERT_EQ(::mkfifo(folder.path("pipe.jsonl").c_str(), 0600), 0);
    fs::create_directory(folder.path("folder.jsonl"));
    EXPECT_EQ(TraceFiles({folder.path()}).files(),
              (std::vector<std::string>{folder.path("c.jsonl"), folder.path("circle/a_1.csv"),
                                        folder.path("circle/b.xml"), folder.path("file.jsonl")}));
    // One that is asked for by name is a folder like any other.
    EXPECT_EQ(TraceFiles({folder.path("link/")}).files(),
              (std::vector<std::string>{folder.path("link/a_1.csv"), folder.path("link/b.xml")}));
    EXPECT_EQ(TraceFiles({folder.path(".hidden")}).files().size(), 1u);
}

TEST(TraceFilesTest, ReadsFoldersInFolders) {
    const TemporaryFolder folder;
    std::string path = folder.path("");
    std::vector<std::string> expected;
    for (int level = 0; level < 300; ++level) {
        path += "f/";
        std::filesystem::create_directory(path);
        expected.push_back(path + "z.csv");
        writeFile(expected.back(), table);
    }
    const std::vector<std::string> sorted(expected.rbegin(), expected.rend());
    EXPECT_EQ(TraceFiles({folder.path("")}).files(), sorted);
}

TEST(TraceFilesTest, SaysWhyAFolderCannotBeRead) {
    const Folder folder;
    const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_GE(next, 0);
    ASSERT_EQ(::close(next), 0);
    struct rlimit limit = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    struct rlimit small = limit;
    small.rlim_cur = static_cast<rlim_t>(next);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &small), 0);
    const std::string text = textOf<InputError>([&] { TraceFiles({folder.path()}); });
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_EQ(text, folder.path() + ": cannot be read: Too many open files");
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
