// What the quantiser leaves allocated.

#include <support/FailingAllocator.h>
#include <support/Silence.h>

#include <vesk/quantizer/KMeansMotionVec.h>
#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <list>
#include <new>
#include <stdexcept>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::VectorQuantizer2D;
using Trace = std::vector<std::vector<double>>;

template <typename Call>
long blocksLeftBy(const Call& call) {
    const long before = blocksHeld();
    call();
    return blocksHeld() - before;
}

Trace zigzag() {
    Trace trace;
    for (int i = 0; i < 40; ++i) trace.push_back({i * 1.0, (i % 3) * 1.5});
    return trace;
}

TEST(QuantizerMemory, ClassificationKeepsItsClustererAllocated) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    Trace trace = zigzag();
    quantizer.classify(trace, 0.5f, true);
    for (int i = 0; i < 3; ++i) {
        EXPECT_GE(blocksLeftBy([&] { quantizer.classify(trace, 0.5f, true); }), 1);
        EXPECT_GE(blocksLeftBy([&] { quantizer.classifyAndFilter(trace, 0.5f); }), 1);
    }
}

TEST(QuantizerMemory, TrainingKeepsItsClustererAllocated) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    std::list<Trace> traces = {zigzag(), zigzag()};
    const Silence silence;
    quantizer.trainCodebook(traces, 0.5f);
    EXPECT_GE(blocksLeftBy([&] { quantizer.trainCodebook(traces, 0.5f); }), 1);
}

TEST(QuantizerMemory, QuantizingLeavesNothingAllocated) {
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

TEST(QuantizerMemory, LearningLeavesNothingAllocated) {
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

TEST(QuantizerMemory, FailureBeforeTheClustererReleasesEverything) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    Trace ragged = {{0, 0}, {1, 1}, {2, 2, 2}};
    std::list<Trace> traces = {zigzag(), ragged};
    std::list<Trace> still = {zigzag(), {{1, 1}, {1, 1}}};
    const Silence silence;
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

TEST(QuantizerMemory, QuantizerReleasesItsCodebook) {
    EXPECT_EQ(blocksLeftBy([] {
                  VectorQuantizer2D* const quantizer = new VectorQuantizer2D;
                  quantizer->initializeCodebook(100);
                  delete quantizer;
              }),
              0);
}

TEST(QuantizerMemory, ClustererLeavesNothingAllocated) {
    std::vector<std::vector<double>> data = {{1.0, 50.0, 300.0}, {}, {200.0}};
    EXPECT_EQ(blocksLeftBy([&data] {
                  Vesk::ML::KMeansMotionVec clusterer({0.0, 90.0, 180.0}, data);
                  clusterer.classify();
                  clusterer.learn(-1, 0.0);
              }),
              0);
}

}  // namespace
}  // namespace Vesk::Test
