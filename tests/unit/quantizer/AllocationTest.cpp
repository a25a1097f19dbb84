// What the quantiser leaves allocated, and what it does when the memory is gone. operator new is
// replaced for the whole program.

#include <vesk/quantizer/KMeansMotionVec.h>
#include <vesk/quantizer/ProximityFilter.h>
#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <list>
#include <new>
#include <stdexcept>
#include <vector>

namespace {

long liveBlocks = 0;
long allocationsUntilFailure = -1;  // negative: none fails

void* allocate(std::size_t size) {
    if (allocationsUntilFailure == 0) throw std::bad_alloc();
    if (allocationsUntilFailure > 0) --allocationsUntilFailure;
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) throw std::bad_alloc();
    ++liveBlocks;
    return block;
}

void release(void* block) {
    if (block == nullptr) return;
    --liveBlocks;
    std::free(block);
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* block) noexcept { release(block); }
void operator delete[](void* block) noexcept { release(block); }
void operator delete(void* block, std::size_t) noexcept { release(block); }
void operator delete[](void* block, std::size_t) noexcept { release(block); }

namespace {

using Vesk::ML::VectorQuantizer2D;
using Trace = std::vector<std::vector<double>>;

/// Standard output without a buffer: writing allocates nothing.
class Mute {
public:
    Mute() : previous(std::cout.rdbuf(nullptr)) {}
    ~Mute() { std::cout.rdbuf(previous); }
    Mute(const Mute&) = delete;
    Mute& operator=(const Mute&) = delete;

private:
    std::streambuf* previous;
};

template <typename Call>
long blocksLeftBy(const Call& call) {
    const long before = liveBlocks;
    call();
    return liveBlocks - before;
}

/// Lets the first, second, ... allocation of the call fail until it succeeds: how many failed.
template <typename Call, typename Check>
int failEveryAllocation(const Call& call, const Check& check) {
    for (int n = 0; n < 10000; ++n) {
        bool failed = false;
        allocationsUntilFailure = n;
        try {
            call();
        } catch (const std::bad_alloc&) {
            failed = true;
        }
        allocationsUntilFailure = -1;
        check();
        if (!failed) return n;
    }
    return -1;
}

Trace zigzag() {
    Trace trace;
    for (int i = 0; i < 40; ++i) trace.push_back({i * 1.0, (i % 3) * 1.5});
    return trace;
}

TEST(QuantizerAllocationTest, ClassificationKeepsItsClustererAllocated) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    Trace trace = zigzag();
    quantizer.classify(trace, 0.5f, true);
    for (int i = 0; i < 3; ++i) {
        EXPECT_GE(blocksLeftBy([&] { quantizer.classify(trace, 0.5f, true); }), 1);
        EXPECT_GE(blocksLeftBy([&] { quantizer.classifyAndFilter(trace, 0.5f); }), 1);
    }
}

TEST(QuantizerAllocationTest, TrainingKeepsItsClustererAllocated) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    std::list<Trace> traces = {zigzag(), zigzag()};
    const Mute mute;
    quantizer.trainCodebook(traces, 0.5f);
    EXPECT_GE(blocksLeftBy([&] { quantizer.trainCodebook(traces, 0.5f); }), 1);
}

TEST(QuantizerAllocationTest, QuantizingLeavesNothingAllocated) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    const Trace trace = zigzag();
    const Trace ragged = {{0, 0}, {1, 1}, {2, 2, 2}};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(blocksLeftBy([&] { quantizer.quantize(trace, 0.5f, true); }), 0);
        EXPECT_EQ(blocksLeftBy([&] {
                      EXPECT_THROW(quantizer.quantize(ragged, 0.5f, true), std::out_of_range);
                  }),
                  0);
    }
}

TEST(QuantizerAllocationTest, LearningLeavesNothingAllocated) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    const std::list<Trace> traces = {zigzag(), zigzag()};
    const std::list<Trace> still = {zigzag(), {{1, 1}, {1, 1}}};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(blocksLeftBy([&] { quantizer.learnCodebook(traces, 0.5f); }), 0);
        EXPECT_EQ(blocksLeftBy(
                      [&] { EXPECT_THROW(quantizer.learnCodebook(still, 0.5f), std::bad_alloc); }),
                  0);
    }
}

TEST(QuantizerAllocationTest, FailureBeforeTheClustererReleasesEverything) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    Trace ragged = {{0, 0}, {1, 1}, {2, 2, 2}};
    std::list<Trace> traces = {zigzag(), ragged};
    std::list<Trace> still = {zigzag(), {{1, 1}, {1, 1}}};
    const Mute mute;
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(blocksLeftBy([&] {
                      EXPECT_THROW(quantizer.classify(ragged, 0.5f, true), std::out_of_range);
                  }),
                  0);
        EXPECT_EQ(blocksLeftBy([&] {
                      EXPECT_THROW(quantizer.trainCodebook(traces, 0.5f), std::out_of_range);
                  }),
                  0);
        EXPECT_EQ(blocksLeftBy(
                      [&] { EXPECT_THROW(quantizer.trainCodebook(still, 0.5f), std::bad_alloc); }),
                  0);
    }
}

TEST(QuantizerAllocationTest, QuantizerReleasesItsCodebook) {
    EXPECT_EQ(blocksLeftBy([] {
                  VectorQuantizer2D* const quantizer = new VectorQuantizer2D;
                  quantizer->initializeCodebook(100);
                  delete quantizer;
              }),
              0);
}

TEST(QuantizerAllocationTest, ExhaustedMemoryInClassificationIsBadAllocAndChangesNothing) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    const std::vector<double> codebook = quantizer.codebook;
    Trace trace = zigzag();
    const Trace before = trace;
    const std::vector<int> expected = quantizer.quantize(trace, 0.5f, true);
    std::vector<int> symbols;
    const auto unchanged = [&] {
        EXPECT_EQ(quantizer.codebook, codebook);
        EXPECT_EQ(quantizer.codebookSize, 8);
        EXPECT_EQ(trace, before);
    };
    EXPECT_GE(
        failEveryAllocation([&] { symbols = quantizer.classify(trace, 0.5f, true); }, unchanged),
        2);
    EXPECT_EQ(symbols, expected);
    EXPECT_GE(
        failEveryAllocation([&] { symbols = quantizer.quantize(trace, 0.5f, true); }, unchanged),
        2);
    EXPECT_EQ(symbols, expected);
}

TEST(QuantizerAllocationTest, ExhaustedMemoryWhileQuantizingLeavesNothingAllocated) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    const Trace trace = zigzag();
    const long before = liveBlocks;
    EXPECT_GE(failEveryAllocation([&] { quantizer.quantize(trace, 0.5f, true); },
                                  [&] { EXPECT_EQ(liveBlocks, before); }),
              2);
}

TEST(QuantizerAllocationTest, ExhaustedMemoryWhileLearningLeavesNothingAllocated) {
    const std::list<Trace> traces = {zigzag(), zigzag()};
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    const long before = liveBlocks;
    EXPECT_GE(failEveryAllocation([&] { quantizer.learnCodebook(traces, 0.5f); },
                                  [&] { EXPECT_EQ(liveBlocks, before); }),
              2);
    EXPECT_EQ(quantizer.codebook.size(), 8u);
}

TEST(QuantizerAllocationTest, ExhaustedMemoryInTrainingIsBadAlloc) {
    std::list<Trace> traces = {zigzag(), zigzag()};
    VectorQuantizer2D quantizer;
    const Mute mute;
    int failures = 0;
    failures = failEveryAllocation(
        [&] {
            quantizer.codebookReady = true;
            quantizer.codebook.clear();
            quantizer.trainCodebook(traces, 0.5f);
        },
        [] {});
    EXPECT_GE(failures, 2);
}

TEST(QuantizerAllocationTest, ExhaustedMemoryInTheCodebookIsBadAlloc) {
    Trace trace = zigzag();
    EXPECT_GE(failEveryAllocation(
                  [&] {
                      VectorQuantizer2D quantizer;
                      quantizer.initializeCodebook(100);
                      quantizer.convertSequence(trace);
                  },
                  [] {}),
              2);
}

TEST(QuantizerAllocationTest, ExhaustedMemoryInTheProximityFilterIsBadAlloc) {
    Trace trace = zigzag();
    EXPECT_GE(failEveryAllocation(
                  [&] {
                      Trace out;
                      Vesk::ML::ProximityFilter<double>::run(trace, out, 0.5);
                  },
                  [] {}),
              2);
}

TEST(QuantizerAllocationTest, ClustererLeavesNothingAllocated) {
    std::vector<std::vector<double>> data = {{1.0, 50.0, 300.0}, {}, {200.0}};
    EXPECT_EQ(blocksLeftBy([&data] {
                  Vesk::ML::KMeansMotionVec clusterer({0.0, 90.0, 180.0}, data);
                  clusterer.classify();
                  clusterer.learn(-1, 0.0);
              }),
              0);
}

}  // namespace
