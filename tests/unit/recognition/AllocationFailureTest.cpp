// Every operation of the recognition model with its first, second, ... allocation failing.

#include <support/FailingAllocator.h>
#include <support/Files.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

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

/// Operations on a copy, which goes with all that it held.
template <typename Operation>
long failOn(const RecognitionModelHMM& model, Operation operation) {
    return failEachAllocation([&] {
        RecognitionModelHMM copy = model;
        operation(copy);
    });
}

TEST_F(RecognitionAllocationFailure, CompositionHoldsNothing) {
    // The copy itself allocates a few times.
    const long copies = failOn(model, [](RecognitionModelHMM&) {});
    EXPECT_GE(copies, 3);
    EXPECT_GE(failOn(model, [](auto& m) { m.initialize(); }), copies + 8);
    const RecognitionModelHMM whole = built();
    EXPECT_GE(failOn(whole, [](auto& m) { m.setParameters(); }), copies + 5);
    EXPECT_GE(failOn(whole, [](auto& m) { m.createRecognitionHMMfromParameters(); }), copies + 5);
    EXPECT_GE(failOn(whole, [](auto& m) { m.setName(longName + "r"); }), copies + 2);
    EXPECT_GE(failEachAllocation([&] { RecognitionModelHMM(gestures.pointers(), 0.5); }), 1);
}

TEST_F(RecognitionAllocationFailure, CompositionKeepsTheEarlierCombinedModel) {
    RecognitionModelHMM whole = built();
    const auto combined = recogniserOf(whole).combined;
    const HMM* const pointer = whole.recognitionHMM;
    EXPECT_GE(failEachAllocation([&] { whole.setParameters(); },
                                 [&] {
                                     ASSERT_EQ(whole.recognitionHMM, pointer);
                                     expectSameModel(*combined, modelOf(*pointer));
                                 }),
              5);
    EXPECT_NE(whole.recognitionHMM, pointer);
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
    const auto isWholeOrOld = [&](const std::string& expected, auto save) {
        writeFile(path, "old");
        // What fails once the file is open cannot be told from a full disk.
        bool saved = false;
        const long failures = failEachAllocation([&] { saved = save(); },
                                                 [&] {
                                                     const std::string found = readFile(path);
                                                     EXPECT_TRUE(found == "old" || found.empty());
                                                 });
        EXPECT_TRUE(saved);
        EXPECT_EQ(readFile(path), expected);
        return failures;
    };
    EXPECT_GE(isWholeOrOld(text, [&] { return whole.save(path); }), 3);
    EXPECT_GE(isWholeOrOld(node, [&] { return whole.saveNode(path); }), 3);
    EXPECT_GE(failEachAllocation([&] { whole.write(path.c_str()); }), 3);
    EXPECT_EQ(readFile(path), text);
    EXPECT_GE(failEachAllocation([&] { whole.exportNode(path.c_str()); }), 3);
    EXPECT_EQ(readFile(path), node);
    EXPECT_GE(failEachAllocation([&] {
                  std::stringstream out;
                  out.exceptions(std::ios::badbit);
                  whole.writeToStream(out, nullptr);
                  whole.writeToStream(out, whole.gestures[0]);
              }),
              2);
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
    ASSERT_TRUE(built().save(path));
    for (const bool announced : {false, true}) {
        int withGestures = 0;
        for (long allowed = 0;; ++allowed) {
            ASSERT_LT(allowed, 1000);
            const long before = blocksHeld();
            bool failed = false;
            // The list of what is kept for ever has an entry for each object.
            long entries = 0;
            {
                RecognitionModelHMM loaded;
                failAllocationsAfter(allowed);
                try {
                    EXPECT_TRUE(announced ? loaded.load(path.c_str()) : loaded.read(path));
                } catch (const std::bad_alloc&) {
                    failed = true;
                }
                failAllocationsAfter(-1);
                if (failed && !loaded.gestures.empty()) ++withGestures;
                entries = deleteLoaded(loaded);
            }
            ASSERT_EQ(blocksHeld(), before + entries) << "after " << allowed << " allocations";
            if (!failed) break;
        }
        EXPECT_GE(withGestures, 5);
    }
}

}  // namespace
}  // namespace Vesk::Test
