#include <support/Capture.h>
#include <support/QuantizerReference.h>
#include <support/QuantizerTraces.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Vesk::Test;
using Reference::Trace;
using Vesk::ML::VectorQuantizer2D;

constexpr double infinity = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();

VectorQuantizer2D evenQuantizer(int n) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(n);
    return quantizer;
}

/// A trace of unit steps in the directions of an even codebook of n entries.
Trace traceOf(const std::vector<int>& symbols, int n) {
    Trace trace = {{0.0, 0.0}};
    for (const int symbol : symbols) {
        const double angle = symbol * 2.0 * 3.141592653589793 / n;
        trace.push_back({trace.back()[0] + std::cos(angle), trace.back()[1] + std::sin(angle)});
    }
    return trace;
}

TEST(ClassificationTest, SidesOfASquareAreTheFourSymbols) {
    VectorQuantizer2D quantizer = evenQuantizer(4);
    Trace square = {{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}};
    EXPECT_EQ(quantizer.classify(square, 0.0f, false), (std::vector<int>{1, 0, 3, 2}));
}

TEST(ClassificationTest, EveryEntryOfAnEvenCodebookIsFoundAgain) {
    for (const int n : {1, 2, 3, 5, 8, 16, 32, 64}) {
        SCOPED_TRACE(n);
        VectorQuantizer2D quantizer = evenQuantizer(n);
        std::vector<int> symbols;
        for (int i = 0; i < 2 * n; ++i) symbols.push_back((i * 7) % n);
        Trace trace = traceOf(symbols, n);
        EXPECT_EQ(quantizer.classify(trace, 0.0f, false), symbols);
    }
}

TEST(ClassificationTest, DirectionsWrapAroundTheCircle) {
    VectorQuantizer2D quantizer = evenQuantizer(4);
    // atan(-0.1) is about -5.7 degrees: 354.3, nearer to 0 than to 270.
    Trace trace = {{0, 0}, {10, -1}};
    EXPECT_EQ(quantizer.classify(trace, 0.0f, false), std::vector<int>{0});
}

TEST(ClassificationTest, TiesGoToTheLowestIndex) {
    VectorQuantizer2D quantizer = evenQuantizer(4);
    // 45, 135, 225 and 315 degrees lie half way.
    Trace star = {{0, 0}, {1, 1}, {0, 2}, {-1, 1}, {0, 0}};
    EXPECT_EQ(quantizer.classify(star, 0.0f, false), (std::vector<int>{0, 1, 2, 0}));
    quantizer.setCodebook({90.0, 0.0, 270.0, 180.0});
    EXPECT_EQ(quantizer.classify(star, 0.0f, false), (std::vector<int>{0, 0, 2, 1}));
}

TEST(ClassificationTest, FullCircleCountsAsZero) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({359.0, 1.0, 0.0});
    Trace trace = {{0, 0}, {1, -1e-20}};  // converts to 360.0
    EXPECT_EQ(quantizer.classify(trace, 0.0f, false), std::vector<int>{2});
}

TEST(ClassificationTest, CodebookOfSizeZeroGivesNothingAndRunsNoFilter) {
    VectorQuantizer2D quantizer;
    Trace ragged = {{0, 0}, {1, 0, 0}};
    Trace ordinary = {{0, 0}, {1, 0}};
    for (const int size : {0, -1, -2147483647 - 1}) {
        SCOPED_TRACE(size);
        quantizer.codebook = {0.0, 90.0};
        quantizer.codebookSize = size;
        EXPECT_TRUE(quantizer.classify(ordinary, 0.0f, false).empty());
        EXPECT_TRUE(quantizer.classify(ragged, 0.0f, true).empty());
        EXPECT_TRUE(quantizer.quantize(ragged, 0.0f, true).empty());
        EXPECT_TRUE(quantizer.classifyAndFilter(ordinary, 0.0f).empty());
        EXPECT_TRUE(quantizer.classifyAndFilter(ragged, 0.0f).empty());
    }
}

TEST(ClassificationTest, ReadinessIsNotAsked) {
    VectorQuantizer2D quantizer;
    quantizer.codebook = {0.0, 90.0};
    quantizer.codebookSize = 2;
    Trace trace = {{0, 0}, {0, 1}};
    EXPECT_EQ(quantizer.classify(trace, 0.0f, false), std::vector<int>{1});
    EXPECT_FALSE(quantizer.codebookReady);
}

TEST(ClassificationTest, EmptyOrSinglePositionGivesNothing) {
    VectorQuantizer2D quantizer = evenQuantizer(4);
    Trace empty;
    Trace single = {{1, 2}};
    for (const bool rotation : {false, true}) {
        EXPECT_TRUE(quantizer.classify(empty, 0.0f, rotation).empty());
        EXPECT_TRUE(quantizer.classify(single, 0.0f, rotation).empty());
    }
}

TEST(ClassificationTest, IdenticalPositionsGiveNothing) {
    VectorQuantizer2D quantizer = evenQuantizer(4);
    Trace still(20, {3.0, 4.0});
    EXPECT_TRUE(quantizer.classify(still, 0.0f, false).empty());
    EXPECT_TRUE(quantizer.classify(still, -1.0f, true).empty());
}

TEST(ClassificationTest, MovementBelowTheThresholdGivesNothing) {
    VectorQuantizer2D quantizer = evenQuantizer(4);
    Trace shiver = {{0, 0}, {0.1, 0}, {0, 0.1}, {-0.1, 0}};
    EXPECT_TRUE(quantizer.classify(shiver, 1.0f, false).empty());
    EXPECT_TRUE(quantizer.classify(shiver, 1.0f, true).empty());
}

TEST(ClassificationTest, PositionsCloserThanTheThresholdLeaveNoSymbol) {
    VectorQuantizer2D quantizer = evenQuantizer(4);
    // Kept: (0,0), (1,0), (1,1). Without the filter: 0, 0, 1, 0, ...
    Trace trace = {{0, 0}, {0.5, 0}, {1, 0}, {1, 0.5}, {1.2, 0.5}, {1, 1}};
    EXPECT_EQ(quantizer.classify(trace, 1.0f, false), (std::vector<int>{0, 1}));
}

TEST(ClassificationTest, ThresholdIsWidenedFromSinglePrecision) {
    VectorQuantizer2D quantizer = evenQuantizer(4);
    // 0.1f is 0.100000001490116...: more than the distance 0.1.
    Trace near = {{0, 0}, {0.1, 0}};
    EXPECT_TRUE(quantizer.classify(near, 0.1f, false).empty());
    Trace far = {{0, 0}, {static_cast<double>(0.1f), 0}};
    EXPECT_EQ(quantizer.classify(far, 0.1f, false), std::vector<int>{0});
    // 0.7f is 0.699999988079071...: less than 0.7.
    Trace further = {{0, 0}, {0.69999999, 0}};
    EXPECT_EQ(quantizer.classify(further, 0.7f, false), std::vector<int>{0});
}

TEST(ClassificationTest, RotationMakesSymbolsRelativeToTheFirst) {
    VectorQuantizer2D quantizer = evenQuantizer(8);
    Trace trace = traceOf({3, 5, 1}, 8);
    EXPECT_EQ(quantizer.classify(trace, 0.0f, false), (std::vector<int>{3, 5, 1}));
    // 3 - 3, 5 - 3, 1 - 3 + 8.
    EXPECT_EQ(quantizer.classify(trace, 0.0f, true), (std::vector<int>{0, 2, 6}));
}

TEST(ClassificationTest, RotatedGesturesGiveTheSameRelativeSymbols) {
    VectorQuantizer2D quantizer = evenQuantizer(8);
    for (int turn = 0; turn < 8; ++turn) {
        SCOPED_TRACE(turn);
        std::vector<int> symbols;
        for (const int symbol : {0, 2, 7, 7, 4}) symbols.push_back((symbol + turn) % 8);
        Trace trace = traceOf(symbols, 8);
        EXPECT_EQ(quantizer.classify(trace, 0.0f, true), (std::vector<int>{0, 2, 7, 7, 4}));
    }
}

TEST(ClassificationTest, RotationAddsTheStatedSizeOnceEvenWhereTheCodebookIsLonger) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({0.0, 45.0, 90.0, 135.0, 180.0, 225.0, 270.0, 315.0});
    quantizer.codebookSize = 4;
    Trace trace = traceOf({7, 7, 0, 4, 3}, 8);
    // 0 - 7 + 4 = -3, 4 - 7 + 4 = 1, 3 - 7 + 4 = 0.
    EXPECT_EQ(quantizer.classify(trace, 0.0f, true), (std::vector<int>{0, 0, -3, 1, 0}));
    EXPECT_EQ(quantizer.classify(trace, 0.0f, false), (std::vector<int>{7, 7, 0, 4, 3}));
}

TEST(ClassificationTest, RotationAddsTheStatedSizeEvenWhereTheCodebookIsShorter) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({0.0, 180.0});
    quantizer.codebookSize = 100;
    Trace trace = {{0, 0}, {-1, 0}, {0, 0}};
    EXPECT_EQ(quantizer.classify(trace, 0.0f, true), (std::vector<int>{0, 99}));
}

TEST(ClassificationTest, CodebookGeneratedTwiceGivesTheLowerIndices) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    quantizer.initializeCodebook(4);
    Trace square = {{0, 0}, {0, 1}, {1, 1}, {1, 0}, {0, 0}};
    EXPECT_EQ(quantizer.classify(square, 0.0f, false), (std::vector<int>{1, 0, 3, 2}));
}

TEST(ClassificationTest, EntriesBehindTheStatedSizeTakePart) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({0.0, 90.0, 180.0});
    quantizer.codebookSize = 1;
    Trace trace = {{0, 0}, {-1, 0}, {-1, 1}};
    EXPECT_EQ(quantizer.classify(trace, 0.0f, false), (std::vector<int>{2, 1}));
}

TEST(ClassificationTest, EmptyCodebookWithASizeIsAnInvalidArgument) {
    VectorQuantizer2D quantizer;
    quantizer.codebookSize = 4;
    Trace trace = {{0, 0}, {1, 0}};
    EXPECT_THROW(quantizer.classify(trace, 0.0f, false), std::invalid_argument);
    EXPECT_THROW(quantizer.quantize(trace, 0.0f, true), std::invalid_argument);
    EXPECT_THROW(quantizer.classifyAndFilter(trace, 0.0f), std::invalid_argument);
    // Nothing to classify is nothing to refuse.
    Trace single = {{0, 0}};
    EXPECT_TRUE(quantizer.classify(single, 0.0f, false).empty());
}

TEST(ClassificationTest, PositionWithMoreCoordinatesThanTheLastKeptIsOutOfRange) {
    VectorQuantizer2D quantizer = evenQuantizer(4);
    Trace ragged = {{0, 0}, {1, 0}, {2, 0, 0}};
    const Trace before = ragged;
    const Outcome expected = {"std::out_of_range vector::_M_range_check", {}};
    EXPECT_EQ(outcomeOf([&] { return quantizer.classify(ragged, 0.0f, false); }), expected);
    EXPECT_EQ(outcomeOf([&] { return quantizer.classify(ragged, 0.0f, true); }), expected);
    EXPECT_EQ(outcomeOf([&] { return quantizer.quantize(ragged, 0.0f, false); }), expected);
    EXPECT_EQ(outcomeOf([&] { return quantizer.classifyAndFilter(ragged, 0.0f); }), expected);
    EXPECT_EQ(ragged, before);
    EXPECT_EQ(quantizer.codebook, (std::vector<double>{0.0, 90.0, 180.0, 270.0}));
    EXPECT_EQ(quantizer.codebookSize, 4);
}

TEST(ClassificationTest, PositionWithFewerCoordinatesThanTheLastKeptIsTaken) {
    VectorQuantizer2D quantizer = evenQuantizer(4);
    Trace ragged = {{0, 0, 9, 9}, {1, 0, 9}, {1, 1}};
    EXPECT_EQ(quantizer.classify(ragged, 0.0f, false), (std::vector<int>{0, 1}));
}

TEST(ClassificationTest, MovementInTheThirdCoordinateAloneCountsAsDownwards) {
    VectorQuantizer2D quantizer = evenQuantizer(4);
    Trace rising = {{0, 0, 0}, {0, 0, 5}, {1, 0, 5}};
    EXPECT_EQ(quantizer.classify(rising, 1.0f, false), (std::vector<int>{3, 0}));
}

TEST(ClassificationTest, UndefinedPositionsAreDropped) {
    VectorQuantizer2D quantizer = evenQuantizer(4);
    Trace trace = {{0, 0}, {nan, nan}, {nan, 3}, {0, 1}};
    EXPECT_EQ(quantizer.classify(trace, 0.0f, false), std::vector<int>{1});
    Trace lost = {{nan, 0}, {1, 0}, {2, 0}};
    EXPECT_TRUE(quantizer.classify(lost, 0.0f, false).empty());
}

TEST(ClassificationTest, UndefinedDirectionsAreSymbolZero) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({180.0, 0.0});
    // (inf, inf) is infinitely far and kept; the slope inf / inf is undefined.
    Trace trace = {{0, 0}, {infinity, infinity}};
    EXPECT_EQ(quantizer.classify(trace, 1.0f, false), std::vector<int>{0});
}

TEST(ClassificationTest, NonFiniteEntriesAreNearestToNothing) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({nan, infinity, 180.0, -infinity});
    Trace trace = {{0, 0}, {1, 0}, {1, 1}};
    EXPECT_EQ(quantizer.classify(trace, 0.0f, false), (std::vector<int>{2, 2}));
    quantizer.setCodebook({nan, infinity});
    EXPECT_EQ(quantizer.classify(trace, 0.0f, false), (std::vector<int>{0, 0}));
}

TEST(ClassificationTest, TraceAndQuantizerAreNotModified) {
    VectorQuantizer2D quantizer = evenQuantizer(8);
    const std::vector<double> codebook = quantizer.codebook;
    Trace trace = {{0, 0}, {0, 0}, {0.1, 0}, {1, 1}};
    const Trace before = trace;
    quantizer.classify(trace, 0.5f, true);
    quantizer.classifyAndFilter(trace, 0.5f);
    EXPECT_EQ(trace, before);
    EXPECT_EQ(quantizer.codebook, codebook);
    EXPECT_EQ(quantizer.codebookSize, 8);
    EXPECT_TRUE(quantizer.codebookReady);
}

TEST(ClassificationTest, NothingIsWritten) {
    VectorQuantizer2D quantizer = evenQuantizer(8);
    Trace trace = {{0, 0}, {0, 0}, {1, 1}};
    Capture capture;
    quantizer.classify(trace, 0.0f, true);
    quantizer.quantize(trace, 0.0f, true);
    quantizer.classifyAndFilter(trace, 0.0f);
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(capture.flushes(), 0);
}

TEST(ClassificationTest, LongTraceHasOneSymbolAStep) {
    VectorQuantizer2D quantizer = evenQuantizer(64);
    Trace spiral;
    for (int i = 0; i < 100000; ++i) {
        spiral.push_back({i * std::cos(i * 0.01), i * std::sin(i * 0.01)});
    }
    Reference::Quantizer reference;
    Reference::initializeCodebook(reference, 64);
    const std::vector<int> symbols = quantizer.classify(spiral, 0.0f, false);
    EXPECT_EQ(symbols.size(), 99999u);
    EXPECT_EQ(symbols, Reference::classify(reference, spiral, 0.0f, false));
}

TEST(ClassificationTest, OneQuantizerServesSeveralThreads) {
    const VectorQuantizer2D quantizer = evenQuantizer(16);
    Reference::Quantizer reference;
    Reference::initializeCodebook(reference, 16);
    constexpr int threadCount = 4;
    std::vector<int> differences(threadCount, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([&quantizer, &reference, &differences, t] {
            Random random(static_cast<std::uint64_t>(t));
            for (int round = 0; round < 200; ++round) {
                const Trace trace = randomTrace(random, 30, Traces::Smooth);
                if (quantizer.quantize(trace, 0.5f, true) !=
                    Reference::classify(reference, trace, 0.5f, true)) {
                    ++differences[static_cast<std::size_t>(t)];
                }
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(differences, std::vector<int>(threadCount, 0));
}

}  // namespace
