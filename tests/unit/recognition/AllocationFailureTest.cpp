// Every operation of the recognition model that allocates, with each of its allocations failing.

#include <support/FailingAllocator.h>
#include <support/Files.h>
#include <support/RecognitionModels.h>
#include <support/Silence.h>

#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::RecognitionModelHMM;

const std::string longName = "a-name-that-is-too-long-to-be-held-inside-of-the-string-itself";

/// Two gestures over three symbols, and a recognition model that borrows them.
class RecognitionAllocationFailure : public testing::Test {
protected:
    RecognitionAllocationFailure() {
        Random random(5);
        for (int N : {2, 3}) {
            fillRandom(gestures.add(longName + std::to_string(N), N, 3), random,
                       Parameters::Stochastic);
        }
        model = RecognitionModelHMM(gestures.pointers(), 0.5);
        model.codebook = {0, 120, 240};
        model.setName(longName);
    }

    RecognitionModelHMM built() const {
        RecognitionModelHMM result = model;
        EXPECT_TRUE(result.initialize());
        return result;
    }

    GestureSet gestures;
    RecognitionModelHMM model;
    const std::vector<int> symbols{0, 1, 2, 1, 0};
    const TemporaryFolder folder;
    const Silence silence;
};

/// Of an operation that leaves the model, its combined one included, as it was where it fails.
template <typename Operation>
long failOn(const RecognitionModelHMM& model, Operation operation) {
    const auto before = recogniserOf(model);
    return failEachAllocationOn(model, operation, [&](const RecognitionModelHMM& left) {
        EXPECT_EQ(left.recognitionHMM, model.recognitionHMM);
        expectSameRecogniser(before, recogniserOf(left));
    });
}

TEST_F(RecognitionAllocationFailure, CopiesReleaseWhatTheyHold) {
    const RecognitionModelHMM whole = built();
    EXPECT_GE(failEachAllocation([&] { const RecognitionModelHMM copy(whole); }), 14);
    EXPECT_GE(failEachAllocation([&] {
                  RecognitionModelHMM copy;
                  copy = whole;
              }),
              14);
    EXPECT_GE(failEachAllocation([&] { RecognitionModelHMM(gestures.pointers(), 0.5); }), 4);
}

TEST_F(RecognitionAllocationFailure, CompositionKeepsTheEarlierModel) {
    EXPECT_GE(failOn(model, [](auto& m) { m.initialize(); }), 16);
    const RecognitionModelHMM whole = built();
    EXPECT_GE(failOn(whole, [](auto& m) { m.setParameters(); }), 10);
    EXPECT_GE(failOn(whole, [](auto& m) { m.createRecognitionHMMfromParameters(); }), 10);
}

TEST_F(RecognitionAllocationFailure, RenamingKeepsBothNames) {
    RecognitionModelHMM whole = built();
    const std::string longer = longName + "-and-longer";
    EXPECT_EQ(failEachAllocation(
                  [&] {
                      std::string("old").swap(whole.name);
                      std::string("old").swap(whole.recognitionHMM->name);
                      whole.setName(longer);
                  },
                  {.badAlloc =
                       [&] {
                           EXPECT_EQ(whole.name, "old");
                           EXPECT_EQ(whole.recognitionHMM->name, "old");
                       }}),
              4);
    EXPECT_EQ(whole.name, longer);
    EXPECT_EQ(whole.recognitionHMM->name, longer);
}

TEST_F(RecognitionAllocationFailure, RecognitionHoldsNothingAndChangesNothing) {
    RecognitionModelHMM whole = built();
    const auto before = recogniserOf(whole);
    EXPECT_GE(failEachAllocation([&] { whole.evaluate(symbols); }), 1);
    EXPECT_GE(failEachAllocation([&] { whole.check(symbols); }), 1);
    EXPECT_GE(failEachAllocation([&] { whole.forwardProb(symbols); }), 1);
    failEachAllocation([&] { whole.print(); });
    expectSameRecogniser(before, recogniserOf(whole));
}

TEST_F(RecognitionAllocationFailure, WritersLeaveTheFileOrWriteItWhole) {
    RecognitionModelHMM whole = built();
    const std::string path = folder.path("model");
    ASSERT_TRUE(whole.save(path));
    const std::string text = readFile(path);
    ASSERT_TRUE(whole.saveNode(path));
    const std::string node = readFile(path);
    const auto failingSaves = [&](const std::string& expected, const auto& save) {
        writeFile(path, "old");
        // What fails once the file is open cannot be told from a full disk.
        bool saved = false;
        const long failures = failEachAllocation(
            [&] { saved = save(); },
            {.badAlloc =
                 [&] {
                     const std::string found = readFile(path);
                     EXPECT_TRUE(found == "old" || found.empty() || found == expected);
                 },
             .survived = [&] { EXPECT_TRUE(!saved || readFile(path) == expected); }});
        EXPECT_TRUE(saved);
        EXPECT_EQ(readFile(path), expected);
        return failures;
    };
    EXPECT_GE(failingSaves(text, [&] { return whole.save(path); }), 6);
    EXPECT_GE(failingSaves(node, [&] { return whole.saveNode(path); }), 6);
    EXPECT_GE(failEachAllocation([&] { whole.write(path.c_str()); }), 6);
    EXPECT_EQ(readFile(path), text);
    EXPECT_GE(failEachAllocation([&] { whole.exportNode(path.c_str()); }), 6);
    EXPECT_EQ(readFile(path), node);
    EXPECT_GE(failEachAllocation([&] {
                  std::stringstream out;
                  out.exceptions(std::ios::badbit);
                  whole.writeToStream(out, nullptr);
                  whole.writeToStream(out, whole.gestures[0]);
              }),
              4);
}

/// What a host deletes of a model that a file has made, and how many objects that were.
long deleteLoaded(RecognitionModelHMM& model) {
    long count = 0;
    for (const HMM* gesture : model.gestures) {
        delete gesture;
        ++count;
    }
    model.gestures.clear();
    if (model.recognitionHMM != nullptr) ++count;
    delete model.recognitionHMM;
    model.recognitionHMM = nullptr;
    return count;
}

TEST_F(RecognitionAllocationFailure, ReadersLoseNothingOfWhatTheyHaveMade) {
    const std::string path = folder.path("model");
    const RecognitionModelHMM whole = built();
    ASSERT_TRUE(whole.save(path));
    for (const bool announced : {false, true}) {
        int withGestures = 0;
        forEachShortage([&](Shortage shortage) {
            const long before = blocksHeld();
            std::optional<RecognitionModelHMM> loaded(std::in_place);
            bool done = false;
            const Outcome outcome = runShort(shortage, [&] {
                done = announced ? loaded->load(path.c_str()) : loaded->read(path);
            });
            EXPECT_EQ(done, outcome == Outcome::Untouched);
            EXPECT_TRUE(!done || loaded->gestures.size() == 2);
            if (!done && !loaded->gestures.empty()) ++withGestures;
            // The list of what is kept for ever has an entry for each object.
            const long entries = deleteLoaded(*loaded);
            loaded.reset();
            EXPECT_EQ(blocksHeld(), before + entries);
            return outcome;
        });
        EXPECT_GE(withGestures, 10);
    }
}

}  // namespace
}  // namespace Vesk::Test
