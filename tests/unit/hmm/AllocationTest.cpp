#include <support/Files.h>
#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

// This program has an allocator of its own in the place of the standard library's: it fails where
// a test says and counts what is held.

namespace {

bool watching = false;
long held = 0;
long until = -1;    ///< allocations that still succeed; negative: all
bool once = false;  ///< whether those after the first failure succeed again

}  // namespace

void* operator new(std::size_t size) {
    if (watching) {
        if (until == 0) {
            if (once) until = -1;
            throw std::bad_alloc();
        }
        if (until > 0) --until;
        ++held;
    }
    if (void* storage = std::malloc(size > 0 ? size : 1)) return storage;
    throw std::bad_alloc();
}

void operator delete(void* storage) noexcept {
    if (watching && storage != nullptr) --held;
    std::free(storage);
}

void operator delete(void* storage, std::size_t) noexcept { operator delete(storage); }

namespace {

using Vesk::Math::VectorT;
using Vesk::ML::HMM;
using Vesk::Test::matrixOf;
using Vesk::Test::modelsEqual;

/// Runs the operation with the first allocation failing, then the second, and so on until it
/// comes to its end; `check` is called after each failure. Whatever happens, nothing may be left
/// held. Returns how many allocations could fail.
int failEveryAllocation(const std::function<void()>& operation,
                        const std::function<void()>& check) {
    for (int allowed = 0; allowed < 10000; ++allowed) {
        SCOPED_TRACE(allowed);
        bool failed = false;
        bool exhausted = false;
        watching = true;
        held = 0;
        until = allowed;
        try {
            operation();
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        exhausted = until == 0;
        watching = false;
        until = -1;
        EXPECT_EQ(held, 0);
        if (failed) {
            check();
        } else if (!exhausted) {
            return allowed;
        }
        if (testing::Test::HasFailure()) return allowed;
    }
    ADD_FAILURE() << "no end of allocations";
    return 0;
}

/// Runs the operation with one allocation failing, first the first, then the second, and so on
/// until it needs none after that; `check` is called wherever the operation came to its end. The
/// failure is to come out as std::bad_alloc or to change nothing. Returns how many came out.
int failEachAllocationOnce(const std::function<void()>& operation,
                           const std::function<void()>& check) {
    int thrown = 0;
    for (int allowed = 0; allowed < 10000; ++allowed) {
        SCOPED_TRACE(allowed);
        bool whole = true;
        watching = true;
        held = 0;
        until = allowed;
        once = true;
        try {
            operation();
        } catch (const std::bad_alloc&) {
            whole = false;
        }
        watching = false;
        const bool failed = until < 0;
        until = -1;
        once = false;
        EXPECT_EQ(held, 0);
        if (whole) {
            check();
        } else {
            ++thrown;
        }
        if (!failed || testing::Test::HasFailure()) return thrown;
    }
    ADD_FAILURE() << "no end of allocations";
    return 0;
}

HMM weather() {
    HMM model(2, 2);
    model.name = "a name that is too long to be held inside a string";
    model.pi = {0.5, 0.5};
    model.a = matrixOf({{0.5, 0.5}, {0.25, 0.75}});
    model.b = matrixOf({{0.5, 0.5}, {0.25, 0.75}});
    model.needsSeed = false;
    return model;
}

TEST(HmmAllocation, FailedConstructionReleasesWhatItHolds) {
    // pi, a, b and vocab.
    EXPECT_GE(failEveryAllocation([] { const HMM model(5, 6, 2); }, [] {}), 4);
    EXPECT_GE(failEveryAllocation([] { const HMM model(5, 6); }, [] {}), 4);
}

TEST(HmmAllocation, FailedEvaluationIsBadAllocAndLeavesTheModel) {
    HMM model = weather();
    const VectorT<int> o = {0, 1, 1, 0};
    const auto unchanged = [&model] { EXPECT_TRUE(modelsEqual(weather(), model)); };
    EXPECT_GT(failEveryAllocation([&] { model.forwardProc(o, 4); }, unchanged), 1);
    EXPECT_GT(failEveryAllocation([&] { model.backwardProc(o, 4); }, unchanged), 1);
    EXPECT_GT(failEveryAllocation([&] { model.forwardProbability(o, 4); }, unchanged), 0);
    EXPECT_GT(failEveryAllocation([&] { model.backwardProbability(o, 4); }, unchanged), 0);
    EXPECT_GT(failEveryAllocation([&] { model.likelihoods({o, {}, o}); }, unchanged), 1);
    EXPECT_GT(failEveryAllocation([&] { model.viterbi(o, 4); }, unchanged), 1);
    EXPECT_GT(failEveryAllocation([&] { model.genSeq(4); }, unchanged), 0);
}

TEST(HmmAllocation, FailedTrainingKeepsTheLastAdoptedParameters) {
    const VectorT<int> o = {0, 1, 1, 0, 1};
    std::vector<HMM> adopted = {weather()};
    for (int iterations = 1; iterations <= 3; ++iterations) {
        adopted.push_back(adopted.back());
        adopted.back().baumWelch(o, 5, 1);
    }
    ASSERT_FALSE(modelsEqual(adopted[2], adopted[3]));
    HMM model = weather();
    const HMM start = model;
    failEveryAllocation(
        [&] {
            // Assignment between equal shapes allocates nothing.
            model.pi = start.pi;
            model.a = start.a;
            model.b = start.b;
            model.baumWelch(o, 5, 3);
        },
        [&] {
            bool isOne = false;
            for (const HMM& one : adopted) isOne = isOne || modelsEqual(one, model);
            EXPECT_TRUE(isOne);
        });
    EXPECT_TRUE(modelsEqual(adopted[3], model));
}

TEST(HmmAllocation, FailedEstimateIsBadAlloc) {
    HMM model = weather();
    const std::vector<std::vector<int>> sequences = {{0, 1}, {1}};
    EXPECT_GT(failEveryAllocation([&] { model.initialize(sequences, HMM::EqualSegments); }, [] {}),
              0);
}

TEST(HmmAllocation, SaveNeverReportsAnIncompleteFile) {
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    HMM model(20, 20);
    ASSERT_TRUE(model.save(path));
    const std::string whole = Vesk::Test::readFile(path);
    int successes = 0;
    for (int allowed = 0; allowed < 1000 && successes < 3; ++allowed) {
        SCOPED_TRACE(allowed);
        bool saved = false;
        watching = true;
        held = 0;
        until = allowed;
        try {
            saved = model.save(path);
        } catch (const std::bad_alloc&) {
        }
        watching = false;
        until = -1;
        EXPECT_EQ(held, 0);
        if (!saved) continue;
        ++successes;
        EXPECT_TRUE(Vesk::Test::readFile(path) == whole);
    }
    EXPECT_EQ(successes, 3);
}

TEST(HmmAllocation, SaveTellsOfASingleFailure) {
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    HMM model(20, 20);
    ASSERT_TRUE(model.save(path));
    const std::string whole = Vesk::Test::readFile(path);
    bool saved = false;
    EXPECT_GT(
        failEachAllocationOnce([&] { saved = model.save(path); },
                               [&] { EXPECT_TRUE(!saved || Vesk::Test::readFile(path) == whole); }),
        2);
    EXPECT_TRUE(saved);
}

TEST(HmmAllocation, LoadTellsOfASingleFailure) {
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    HMM model = weather();
    model.name = "long-names-are-read-in-pieces-and-held-outside-the-string";
    ASSERT_TRUE(model.save(path));
    bool same = false;
    EXPECT_GT(failEachAllocationOnce(
                  [&] {
                      const std::unique_ptr<HMM> back(Vesk::ML::load(path.c_str()));
                      same = back != nullptr && back->name == model.name && back->pi == model.pi &&
                             back->a.data == model.a.data && back->b.data == model.b.data;
                  },
                  [&] { EXPECT_TRUE(same); }),
              4);
}

TEST(HmmAllocation, FailedLoadHoldsNothing) {
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    HMM model = weather();
    model.name = "long-names-are-read-in-pieces-and-held-outside-the-string";
    ASSERT_TRUE(model.save(path));
    EXPECT_GT(failEveryAllocation(
                  [&] { const std::unique_ptr<HMM> back(Vesk::ML::load(path.c_str())); }, [] {}),
              4);
}

}  // namespace
