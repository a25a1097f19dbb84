#include <support/QuantizerReference.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

using Vesk::ML::VectorQuantizer2D;
using Vesk::Test::Reference::Trace;

/// classifyAndFilter of unit steps along the axes: 0 right, 1 up, 2 left, 3 down.
std::vector<int> collapsed(const std::vector<int>& symbols) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    const double dx[] = {1, 0, -1, 0};
    const double dy[] = {0, 1, 0, -1};
    Trace trace = {{0, 0}};
    for (const int symbol : symbols) {
        trace.push_back({trace.back()[0] + dx[symbol], trace.back()[1] + dy[symbol]});
    }
    EXPECT_EQ(quantizer.classify(trace, 0.0f, false), symbols);
    return quantizer.classifyAndFilter(trace, 0.0f);
}

TEST(RunCollapsingTest, RunsOfEqualSymbolsBecomeOne) {
    EXPECT_EQ(collapsed({2, 2, 3, 3, 3, 2}), (std::vector<int>{2, 3, 2}));
}

TEST(RunCollapsingTest, SingleSymbolIsNotReturned) {
    EXPECT_EQ(collapsed({2}), std::vector<int>{});
}

TEST(RunCollapsingTest, TwoEqualSymbolsAreReturnedAsOne) {
    EXPECT_EQ(collapsed({3, 3}), std::vector<int>{3});
}

TEST(RunCollapsingTest, ChangesAtBothEndsAreKept) {
    EXPECT_EQ(collapsed({0, 1, 1, 0}), (std::vector<int>{0, 1, 0}));
    EXPECT_EQ(collapsed({0, 1, 2, 3}), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(collapsed({1, 1, 1, 1, 1, 0}), (std::vector<int>{1, 0}));
}

TEST(RunCollapsingTest, SymbolsAreNotMadeRelativeToTheFirst) {
    EXPECT_EQ(collapsed({3, 3, 1}), (std::vector<int>{3, 1}));
}

TEST(RunCollapsingTest, FiltersRunFirst) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    // Repeats and the short step upwards go; right, right, up are left.
    Trace trace = {{0, 0}, {0, 0}, {1, 0}, {1, 0.25}, {2, 0}, {2, 0}, {2, 1}};
    EXPECT_EQ(quantizer.classifyAndFilter(trace, 1.0f), (std::vector<int>{0, 1}));
}

TEST(RunCollapsingTest, NothingLeftOfATraceIsNothing) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    Trace empty;
    Trace still = {{1, 1}, {1, 1}};
    EXPECT_TRUE(quantizer.classifyAndFilter(empty, 0.0f).empty());
    EXPECT_TRUE(quantizer.classifyAndFilter(still, 0.0f).empty());
}

}  // namespace
