// The filter of repeated positions is internal: its counts show in the training, what it keeps in
// the symbols.

#include <support/QuantizerReference.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Vesk::ML::CodebookTrainingEvent;
using Vesk::ML::VectorQuantizer2D;
using Vesk::Test::Reference::Trace;

const double nan = std::numeric_limits<double>::quiet_NaN();

/// How many positions of the trace are left once repeats are dropped.
std::size_t keptPositions(const Trace& trace) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({0.0});
    std::size_t kept = 999999;
    try {
        quantizer.learnCodebook({trace}, 0.0f, [&kept](CodebookTrainingEvent event, std::size_t n) {
            if (event == CodebookTrainingEvent::AfterEqFilter) kept = n;
        });
    } catch (const std::bad_alloc&) {
        // Nothing is left to learn from: the count was told before.
    } catch (const std::out_of_range&) {
        // The proximity filter met a position with more coordinates.
    }
    return kept;
}

TEST(RepeatedPositionFilterTest, KeepsNothingOfFewerThanTwoPositions) {
    EXPECT_EQ(keptPositions({}), 0u);
    EXPECT_EQ(keptPositions({{1, 2}}), 0u);
}

TEST(RepeatedPositionFilterTest, KeepsTheFirstOfIdenticalPositions) {
    EXPECT_EQ(keptPositions({{1, 2}, {1, 2}}), 1u);
    EXPECT_EQ(keptPositions({{1, 2}, {1, 2}, {1, 2}, {1, 2}, {1, 2}}), 1u);
}

TEST(RepeatedPositionFilterTest, KeepsPositionsThatComeBackLater) {
    EXPECT_EQ(keptPositions({{0, 0}, {1, 0}, {0, 0}, {1, 0}}), 4u);
    EXPECT_EQ(keptPositions({{0, 0}, {1, 0}, {1, 0}, {0, 0}, {0, 0}}), 3u);
}

TEST(RepeatedPositionFilterTest, ComparesEveryCoordinate) {
    EXPECT_EQ(keptPositions({{0, 0, 1}, {0, 0, 2}, {0, 0, 2}}), 2u);
    EXPECT_EQ(keptPositions({{0, 1}, {0, 2}, {1, 2}}), 3u);
}

TEST(RepeatedPositionFilterTest, ZerosOfBothSignsAreEqual) {
    EXPECT_EQ(keptPositions({{0.0, 1.0}, {-0.0, 1.0}, {0.0, 1.0}}), 1u);
}

TEST(RepeatedPositionFilterTest, NearlyEqualIsNotEqual) {
    EXPECT_EQ(keptPositions({{1.0, 0.0}, {1.0000000000000002, 0.0}}), 2u);
}

TEST(RepeatedPositionFilterTest, UndefinedCoordinatesAreNeverEqual) {
    EXPECT_EQ(keptPositions({{0, nan}, {0, nan}, {0, nan}}), 3u);
    EXPECT_EQ(keptPositions({{0, 0, nan}, {0, 0, nan}}), 2u);
}

TEST(RepeatedPositionFilterTest, InfiniteCoordinatesAreEqual) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(keptPositions({{infinity, 0}, {infinity, 0}, {-infinity, 0}}), 2u);
}

TEST(RepeatedPositionFilterTest, PositionsOfDifferentLengthAreNotEqual) {
    EXPECT_EQ(keptPositions({{0, 0, 5}, {0, 0}, {0, 0}}), 2u);
    EXPECT_EQ(keptPositions({{0, 0}, {0, 0, 0}}), 2u);
}

TEST(RepeatedPositionFilterTest, RepeatsLeaveNoSymbolBehind) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    // With the repeats in place their steps would be 270 degrees, symbol 3.
    Trace trace = {{0, 0}, {0, 0}, {1, 0}, {1, 0}, {1, 0}, {1, 1}, {1, 1}};
    EXPECT_EQ(quantizer.classify(trace, 0.0f, false), (std::vector<int>{0, 1}));
}

}  // namespace
