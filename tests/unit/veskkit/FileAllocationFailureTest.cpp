// Files of models and traces, with each allocation failing.

#include "Gestures.h"

#include <support/FailingAllocator.h>
#include <support/Files.h>
#include <veskkit/io/AtomicFile.h>
#include <veskkit/io/CodebookFile.h>
#include <veskkit/io/CsvReader.h>
#include <veskkit/io/InputFile.h>
#include <veskkit/io/JsonLinesReader.h>
#include <veskkit/io/ModelFile.h>
#include <veskkit/io/SceneFile.h>
#include <veskkit/io/TraceFiles.h>
#include <veskkit/io/TraceText.h>
#include <veskkit/io/XmlReader.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::failEachAllocation;
using Vesk::Test::failEachAllocationOf;
using Vesk::Test::readFile;
using Vesk::Test::smallModel;
using Vesk::Test::writeFile;

/// What composition leaves of a model: an entry in the list of what is kept for ever.
constexpr long entry = 1;

class FileAllocationFailure : public testing::Test {
protected:
    /// Of work that writes a file whole or leaves the one that is there.
    long failWriting(const std::string& expected, const std::function<void()>& write) {
        writeFile(path, "old");
        const auto check = [&] {
            const std::string found = readFile(path);
            EXPECT_TRUE(found == "old" || found == expected) << found;
            // Nothing temporary stays beside it.
            EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path(".")), {}), 1);
        };
        const long failures = failEachAllocation(write, {.badAlloc = check});
        check();
        EXPECT_EQ(readFile(path), expected);
        return failures;
    }

    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("a-file-whose-path-is-not-held-inside-the-string");
    const Trace trace{{{0, 0}, {1, 1}, {2, 0}, {3, 1}, {3, -4}},
                      "a label of more than a few letters",
                      "a user of more than a few letters",
                      {},
                      0};
};

TEST_F(FileAllocationFailure, WritersLeaveTheOldFile) {
    const RecognitionModel model = smallModel();
    saveModel(model, path);
    const std::string text = readFile(path);
    EXPECT_GE(failWriting(text, [&] { saveModel(model, path); }), 20);
    EXPECT_GE(failWriting(text, [&] { saveModel(model.get(), path); }), 20);
    EXPECT_GE(failWriting("new", [&] { writeWhole(path, "new"); }), 6);
    EXPECT_GE(failWriting(text,
                          [&] {
                              AtomicFile file(path);
                              file.stream() << text;
                              file.commit();
                          }),
              6);
}

TEST_F(FileAllocationFailure, ModelsAreReadOrNot) {
    const RecognitionModel model = smallModel();
    saveModel(model, path);
    EXPECT_GE(failEachAllocation([&] { loadModel(path); }, {.mayKeep = entry}), 100);
    EXPECT_GE(failEachAllocationOf([&] { return sceneText(model.get()); }), 10);
    EXPECT_GE(failEachAllocationOf([&] { return sceneTextWithPrototypes(model.get()); }), 10);
}

TEST_F(FileAllocationFailure, CodebooksAreReadAndWrittenOrNot) {
    const std::vector<double> directions = {0.0, 90.5, 180.25, 270.125, 300.0};
    const std::string text = codebookText(directions);
    EXPECT_GE(failEachAllocationOf([&] { return codebookText(directions); }), 2);
    writeFile(path, text);
    EXPECT_GE(failEachAllocationOf([&] { return loadCodebook(path); }), 6);
}

/// How many traces the reader gives.
int count(TraceReader& reader) {
    Trace trace;
    int traces = 0;
    while (reader.next(trace)) ++traces;
    return traces;
}

template <typename Reader>
long failReading(const std::string& text) {
    return failEachAllocationOf([&] {
        std::istringstream in(text);
        Reader reader(in, "a source of more than a few letters");
        return count(reader);
    });
}

TEST_F(FileAllocationFailure, TracesAreReadOrNot) {
    const std::string line = jsonLine(trace);
    EXPECT_GE(failReading<JsonLinesReader>(line + line), 20);
    EXPECT_GE(failReading<CsvReader>(tableHeader() + tableRows(trace, 1) + tableRows(trace, 2)),
              20);
    EXPECT_GE(failReading<XmlReader>("<Log><Gesture Name='a name of more than a few letters 1'>"
                                     "<Point X='1' Y='2'/></Gesture><Gesture Name='b'/></Log>"),
              10);
    writeFile(path, line + line);
    EXPECT_GE(failEachAllocation([&] { openInput(path); }), 2);
    EXPECT_GE(failEachAllocation([&] { readTraces(path); }), 20);
    EXPECT_GE(failEachAllocation([&] { readTraces(std::vector<std::string>{path, path}); }), 40);
    const TraceFilesOptions asJson{TraceFormat::JsonLines, LabelSource::Folder};
    EXPECT_GE(failEachAllocation([&] { readTraces(path, asJson); }), 20);
    EXPECT_GE(failEachAllocation([&] {
                  std::istringstream in(line);
                  ASSERT_EQ(count(*readerOf(in, "s")), 1);
              }),
              20);
}

std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

TEST_F(FileAllocationFailure, FoldersAreReadOrNot) {
    const std::string line = jsonLine(trace);
    const std::string inside = folder.path("a-folder-whose-path-is-not-held-inside-the-string");
    std::filesystem::create_directories(inside + "/and-one-in-it");
    writeFile(inside + "/one.jsonl", line);
    writeFile(inside + "/and-one-in-it/another.jsonl", line);
    writeFile(inside + "/and-one-in-it/table.csv", tableHeader() + tableRows(trace, 1));
    writeFile(inside + "/notes.txt", line);
    std::filesystem::create_symlink("one.jsonl", inside + "/link.jsonl");
    const std::ptrdiff_t before = openDescriptors();
    const auto allClosed = [&] { EXPECT_EQ(openDescriptors(), before); };
    EXPECT_GE(failEachAllocation([&] { ASSERT_EQ(TraceFiles({inside}).files().size(), 4U); },
                                 {.badAlloc = allClosed}),
              20);
    EXPECT_GE(failEachAllocation([&] { ASSERT_EQ(readTraces(inside).size(), 4U); },
                                 {.badAlloc = allClosed}),
              80);
    allClosed();
}

TEST_F(FileAllocationFailure, TracesAreWrittenOrNot) {
    EXPECT_GE(failEachAllocationOf([&] { return jsonLine(trace); }), 10);
    EXPECT_GE(failEachAllocationOf([&] { return tableRows(trace, 1); }), 6);
    EXPECT_EQ(failEachAllocation([] { tableHeader(); }), 2);
}

}  // namespace
}  // namespace Vesk::Kit
