// What a host calls, with its first, second, ... allocation failing: std::bad_alloc comes out and
// nothing stays allocated.

#include "Gestures.h"

#include <support/FailingAllocator.h>
#include <support/Files.h>
#include <veskkit/Error.h>
#include <veskkit/io/AtomicFile.h>
#include <veskkit/io/CsvReader.h>
#include <veskkit/io/JsonLinesReader.h>
#include <veskkit/io/ModelFile.h>
#include <veskkit/io/TraceText.h>
#include <veskkit/io/XmlReader.h>
#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/recognition/ModelText.h>
#include <veskkit/traces/Resampler.h>

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace Vesk::Kit {
namespace {

using Vesk::Test::failEachAllocation;
using Vesk::Test::smallModel;

/// Composition enters what it makes into the list of what is kept for ever; the entry stays, the
/// kit frees the object.
template <typename Work>
long failEachButForAnEntry(Work work) {
    long before = Vesk::Test::blocksHeld();
    return failEachAllocation(work, [&] {
        EXPECT_LE(Vesk::Test::blocksHeld(), before + 1);
        before = Vesk::Test::blocksHeld();
    });
}

const Points zigzag{{0, 0}, {1, 1}, {2, 0}, {3, 1}, {3, -4}};

TEST(KitAllocationFailure, RecognitionHoldsNothing) {
    const RecognitionModel model = smallModel();
    EXPECT_GE(failEachButForAnEntry([&] { const GestureRecognizer made(model.clone()); }), 10);
    const GestureRecognizer recognizer(smallModel());
    EXPECT_GE(failEachAllocation([&] { recognizer.recognize(zigzag); }), 10);
    EXPECT_GE(failEachAllocation([&] { recognizer.answers(Trace{zigzag, {}, {}, {}, 0}); }), 10);
    EXPECT_GE(failEachAllocation([] { Resampler().resample(zigzag); }), 3);
}

TEST(KitAllocationFailure, ModelsAreReadAndWrittenOrNot) {
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("model");
    const RecognitionModel model = smallModel();
    saveModel(model, path);
    const std::string text = Vesk::Test::readFile(path);
    EXPECT_GE(failEachButForAnEntry([&] { loadModel(path); }), 50);
    EXPECT_GE(failEachButForAnEntry([&] { model.clone(); }), 10);
    EXPECT_GE(failEachAllocation([&] { modelText(model.get()); }), 3);

    Vesk::Test::writeFile(path, "old");
    EXPECT_GE(failEachAllocation([&] { saveModel(model, path); }), 10);
    EXPECT_EQ(Vesk::Test::readFile(path), text);
    Vesk::Test::writeFile(path, "old");
    const long before = Vesk::Test::blocksHeld();
    EXPECT_GE(failEachAllocation([&] { writeWhole(path, "new"); },
                                 [&] {
                                     EXPECT_EQ(Vesk::Test::blocksHeld(), before);
                                     EXPECT_EQ(Vesk::Test::readFile(path), "old");
                                 }),
              3);
    EXPECT_EQ(Vesk::Test::readFile(path), "new");
}

TEST(KitAllocationFailure, ASingleFailureIsNoBadFile) {
    const Vesk::Test::TemporaryFolder folder;
    saveModel(smallModel(), folder.path("model"));
    int failures = 0;
    for (long allowed = 0; allowed < 500; ++allowed) {
        Vesk::Test::failAllocationOnceAfter(allowed);
        try {
            loadModel(folder.path("model"));
        } catch (const std::bad_alloc&) {
            ++failures;
        } catch (const InputError& error) {
            ADD_FAILURE() << "after " << allowed << " allocations: " << error.what();
        }
        Vesk::Test::failAllocationsAfter(-1);
    }
    EXPECT_GE(failures, 50);
}

/// All traces of the text, however many.
template <typename Reader>
void readAll(const std::string& text) {
    std::istringstream in(text);
    Reader reader(in, "t");
    Trace trace;
    while (reader.next(trace)) {
    }
}

TEST(KitAllocationFailure, TracesAreReadAndWrittenOrNot) {
    Trace trace{zigzag, "a label of more than a few letters", "a user of more than a few", "", 0};
    const std::string line = jsonLine(trace);
    EXPECT_GE(failEachAllocation([&] { jsonLine(trace); }), 5);
    EXPECT_GE(failEachAllocation([&] { readAll<JsonLinesReader>(line); }), 5);
    const std::string table = tableHeader() + tableRows(trace, 1);
    EXPECT_GE(failEachAllocation([&] { tableRows(trace, 1); }), 3);
    EXPECT_GE(failEachAllocation([&] { readAll<CsvReader>(table); }), 5);
    EXPECT_GE(failEachAllocation([&] {
                  readAll<XmlReader>(
                      "<Gesture Name='a name of more than a few letters 1'>"
                      "<Point X='1' Y='2'/></Gesture>");
              }),
              5);
}

}  // namespace
}  // namespace Vesk::Kit
