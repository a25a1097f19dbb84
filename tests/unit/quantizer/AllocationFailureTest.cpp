// Every operation of the quantiser and the clusterer that allocates, with each of its allocations
// failing.

#include <support/FailingAllocator.h>
#include <support/Files.h>
#include <support/Silence.h>

#include <vesk/quantizer/KMeansMotionVec.h>
#include <vesk/quantizer/ProximityFilter.h>
#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <string>
#include <type_traits>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::KMeansMotionVec;
using Vesk::ML::ProximityFilter;
using Vesk::ML::VectorQuantizer2D;
using Trace = std::vector<std::vector<double>>;

class QuantizerAllocationFailure : public testing::Test {
protected:
    QuantizerAllocationFailure() {
        for (int i = 0; i < 40; ++i) trace.push_back({i * 1.0, (i % 3) * 1.5});
        traces = {trace, trace};
        quantizer.initializeCodebook(8);
    }

    /// Of an operation that leaves the quantiser as it was where it fails, and gives `expected`.
    template <typename Result, typename Operation>
    long failOn(const Result& expected, Operation operation) {
        const Silence silence;
        return failEachAllocationOn(
            quantizer, [&](VectorQuantizer2D& copy) { ASSERT_TRUE(operation(copy) == expected); },
            [&](const VectorQuantizer2D& left) { expectSame(quantizer, left); });
    }

    static void expectSame(const VectorQuantizer2D& expected, const VectorQuantizer2D& found) {
        EXPECT_EQ(expected.codebookReady, found.codebookReady);
        EXPECT_EQ(expected.codebookSize, found.codebookSize);
        EXPECT_EQ(expected.codebook, found.codebook);
    }

    Trace trace;
    std::list<Trace> traces;
    VectorQuantizer2D quantizer;
};

TEST_F(QuantizerAllocationFailure, CopiesReleaseWhatTheyHold) {
    EXPECT_EQ(failEachAllocation([&] { const VectorQuantizer2D copy(quantizer); }), 2);
    EXPECT_EQ(failEachAllocation([&] {
                  VectorQuantizer2D copy;
                  copy = quantizer;
              }),
              2);
    static_assert(std::is_nothrow_move_constructible_v<VectorQuantizer2D>);
}

TEST_F(QuantizerAllocationFailure, SymbolsLeaveTheCodebookAndTheTrace) {
    const Trace before = trace;
    const std::vector<int> symbols = quantizer.quantize(trace, 0.5F, true);
    EXPECT_GE(failOn(symbols, [&](auto& q) { return q.quantize(trace, 0.5F, true); }), 10);
    EXPECT_EQ(trace, before);
}

TEST_F(QuantizerAllocationFailure, DirectionsLeaveTheTrace) {
    const std::vector<double> angles = quantizer.convertSequence(trace);
    EXPECT_GE(failOn(angles, [&](auto& q) { return q.convertSequence(trace); }), 4);
    EXPECT_GE(failEachAllocation([&] {
                  Trace out;
                  ProximityFilter<double>::run(trace, out, 0.5);
              }),
              80);
}

// These two keep a clusterer for ever: where they fail before that, nothing.
TEST_F(QuantizerAllocationFailure, ClassificationKeepsNothingWhereItFails) {
    const std::vector<int> symbols = quantizer.quantize(trace, 0.5F, true);
    std::vector<int> found;
    EXPECT_GE(failEachAllocation([&] { found = quantizer.classify(trace, 0.5F, true); }), 12);
    EXPECT_EQ(found, symbols);

    const std::vector<int> runs = quantizer.classifyAndFilter(trace, 0.5F);
    // The runs are put together once the clusterer is kept: itself, its centres and its entry.
    EXPECT_GE(failEachAllocation([&] { found = quantizer.classifyAndFilter(trace, 0.5F); },
                                 {.mayKeep = 3}),
              14);
    EXPECT_EQ(found, runs);
}

TEST_F(QuantizerAllocationFailure, TrainingLeavesTheCodebookUntilItIsReplaced) {
    const Silence silence;
    VectorQuantizer2D trained = quantizer;
    const std::vector<double> learnt = trained.learnCodebook(traces, 0.5F);
    ASSERT_NE(learnt, quantizer.codebook);
    const auto failOn = [&](const std::function<void()>& train, long kept) {
        int replaced = 0;
        const long failures = failEachAllocation(
            [&] {
                // Of the same length: allocates nothing.
                trained.codebook = quantizer.codebook;
                train();
            },
            {.badAlloc =
                 [&] {
                     EXPECT_TRUE(trained.codebook == quantizer.codebook ||
                                 trained.codebook == learnt);
                     EXPECT_EQ(trained.codebookSize, 8);
                     if (trained.codebook == learnt) ++replaced;
                 },
             .mayKeep = kept});
        // Only what is returned is copied later.
        EXPECT_EQ(replaced, 2);
        EXPECT_EQ(trained.codebook, learnt);
        return failures;
    };
    EXPECT_GE(failOn([&] { trained.learnCodebook(traces, 0.5F); }, 0), 20);
    // The clusterer, its centres and its entry.
    EXPECT_GE(failOn([&] { trained.trainCodebook(traces, 0.5F); }, 3), 20);
}

TEST_F(QuantizerAllocationFailure, CodebookIsMadeOrLeft) {
    EXPECT_EQ(failOn(0, [](auto& q) { return q.initializeCodebook(100), 0; }), 2);
    EXPECT_EQ(failOn(0, [&](auto& q) { return q.setCodebook(quantizer.codebook), 0; }), 2);
}

TEST_F(QuantizerAllocationFailure, FilesAreReadAndWrittenOrNot) {
    const TemporaryFolder folder;
    const std::string path = folder.path("codebook");
    ASSERT_TRUE(quantizer.save(path));
    const std::string whole = readFile(path);
    bool done = false;
    EXPECT_GE(
        failEachAllocation([&] { done = quantizer.save(path); },
                           {.survived = [&] { EXPECT_TRUE(!done || readFile(path) == whole); }}),
        4);
    EXPECT_TRUE(done);
    EXPECT_GE(failEachAllocation([&] { ASSERT_TRUE(quantizer.printCodebook(path.c_str())); }), 4);
    EXPECT_EQ(readFile(path), whole);

    EXPECT_GE(failEachAllocationOn(
                  VectorQuantizer2D(),
                  [&](VectorQuantizer2D& q) {
                      ASSERT_TRUE(q.loadCodebook(path.c_str()));
                      ASSERT_EQ(q.codebook, quantizer.codebook);
                  },
                  [](const VectorQuantizer2D& left) {
                      EXPECT_FALSE(left.codebookReady);
                      EXPECT_EQ(left.codebookSize, 0);
                  }),
              8);
}

TEST_F(QuantizerAllocationFailure, ClustererReleasesItsTables) {
    Trace data = {{1.0, 50.0, 300.0}, {}, {200.0}};
    const std::vector<double> centres = {0.0, 90.0, 180.0};
    EXPECT_EQ(failEachAllocation([&] { const KMeansMotionVec made(centres, data); }), 2);
    const KMeansMotionVec start(centres, data);
    const auto unchanged = [&](const KMeansMotionVec& left) { EXPECT_EQ(left.centres, centres); };
    EXPECT_GE(failEachAllocationOn(
                  start, [](KMeansMotionVec& c) { c.classify(); }, unchanged),
              8);
    const auto asManyCentres = [](const KMeansMotionVec& left) {
        EXPECT_EQ(left.centres.size(), 3U);
    };
    EXPECT_GE(failEachAllocationOn(
                  start, [](KMeansMotionVec& c) { c.learn(-1, 0.0); }, asManyCentres),
              8);
}

}  // namespace
}  // namespace Vesk::Test
