#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/QuantizerReference.h>
#include <support/QuantizerTraces.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <iomanip>
#include <iostream>
#include <limits>
#include <list>
#include <new>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Test;
using Reference::Trace;
using Vesk::ML::VectorQuantizer2D;

constexpr double infinity = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();

TEST(CodebookTrainingTest, NoTracesWriteNothingAndKeepTheCentres) {
    VectorQuantizer2D quantizer;
    const std::vector<double> centres = {10.0, 370.0, -5.0, 90.0};
    quantizer.setCodebook(centres);
    std::list<Trace> none;
    Capture capture;
    EXPECT_TRUE(bitEqual(centres, quantizer.trainCodebook(none, 1.0f)));
    EXPECT_TRUE(bitEqual(centres, quantizer.codebook));
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(capture.flushes(), 0);
}

TEST(CodebookTrainingTest, RepeatedPositionIsCountedOutAndTheStepsAreLevel) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({20.0});
    std::list<Trace> traces = {{{0, 0}, {1, 0}, {1, 0}, {2, 0}}};
    Capture capture;
    const std::vector<double> learnt = quantizer.trainCodebook(traces, 0.5f);
    EXPECT_EQ(capture.text(), "3 positions after eq filter\n3 positions after prox filter\n\n");
    // The row [0, 0] has the mean 0.
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0}, learnt));
}

TEST(CodebookTrainingTest, CountsAreWrittenPerTraceInListOrder) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({0.0});
    std::list<Trace> traces = {
        {{0, 0}, {1, 0}, {2, 0}},
        {{0, 0}, {0, 0}, {0.5, 0}, {1, 0}, {1.5, 0}},
        {{5, 5}, {5, 5.25}},
    };
    Capture capture;
    quantizer.trainCodebook(traces, 1.0f);
    EXPECT_EQ(capture.text(),
              "3 positions after eq filter\n3 positions after prox filter\n\n"
              "4 positions after eq filter\n2 positions after prox filter\n\n"
              "2 positions after eq filter\n1 positions after prox filter\n\n");
}

TEST(CodebookTrainingTest, LongCountsAreWrittenPlainly) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({0.0});
    Trace line;
    for (int i = 0; i < 12345; ++i) line.push_back({static_cast<double>(i), 0.0});
    std::list<Trace> traces = {line};
    Capture capture;
    quantizer.trainCodebook(traces, 10.0f);
    // Every tenth of 0 .. 12344: 1235.
    EXPECT_EQ(capture.text(),
              "12345 positions after eq filter\n1235 positions after prox filter\n\n");
}

TEST(CodebookTrainingTest, EveryLineIsFlushed) {
    /// Marks each flush with a bar.
    class Marking : public std::streambuf {
    public:
        std::string text;

    protected:
        int_type overflow(int_type c) override {
            text += traits_type::to_char_type(c);
            return c;
        }
        std::streamsize xsputn(const char* s, std::streamsize n) override {
            text.append(s, static_cast<std::size_t>(n));
            return n;
        }
        int sync() override {
            text += '|';
            return 0;
        }
    };

    VectorQuantizer2D quantizer;
    quantizer.setCodebook({0.0});
    std::list<Trace> traces = {{{0, 0}, {1, 0}}, {{0, 0}, {0, 1}, {0, 2}}};
    Marking marking;
    std::streambuf* const previous = std::cout.rdbuf(&marking);
    quantizer.trainCodebook(traces, 0.0f);
    std::cout.rdbuf(previous);
    EXPECT_EQ(marking.text,
              "2 positions after eq filter\n|2 positions after prox filter\n|\n|"
              "3 positions after eq filter\n|3 positions after prox filter\n|\n|");
}

TEST(CodebookTrainingTest, StreamFormattingIsLeftAsItWas) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({0.0});
    std::list<Trace> traces = {{{0, 0}, {1, 0}}};
    Capture capture;
    std::cout << std::setprecision(11) << std::scientific << std::setfill('*');
    const std::ios::fmtflags flags = std::cout.flags();
    quantizer.trainCodebook(traces, 0.0f);
    EXPECT_EQ(std::cout.precision(), 11);
    EXPECT_EQ(std::cout.flags(), flags);
    EXPECT_EQ(std::cout.fill(), '*');
}

TEST(CodebookTrainingTest, TraceOfOnePositionIsBadAllocAfterItsCounts) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({10.0, 20.0});
    std::list<Trace> traces = {{{3, 4}}};
    Capture capture;
    EXPECT_THROW(quantizer.trainCodebook(traces, 0.0f), std::bad_alloc);
    EXPECT_EQ(capture.text(), "0 positions after eq filter\n0 positions after prox filter\n");
    EXPECT_EQ(capture.flushes(), 2);
    EXPECT_EQ(quantizer.codebook, (std::vector<double>{10.0, 20.0}));
}

TEST(CodebookTrainingTest, EmptyTraceIsBadAlloc) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({10.0});
    std::list<Trace> traces = {{}};
    Capture capture;
    EXPECT_THROW(quantizer.trainCodebook(traces, 0.0f), std::bad_alloc);
    EXPECT_EQ(capture.text(), "0 positions after eq filter\n0 positions after prox filter\n");
}

TEST(CodebookTrainingTest, IdenticalPositionsAreBadAllocEvenBehindGoodTraces) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({10.0});
    std::list<Trace> traces = {{{0, 0}, {1, 1}}, {{2, 2}, {2, 2}, {2, 2}}, {{0, 0}, {1, 0}}};
    Capture capture;
    EXPECT_THROW(quantizer.trainCodebook(traces, 0.0f), std::bad_alloc);
    EXPECT_EQ(capture.text(),
              "2 positions after eq filter\n2 positions after prox filter\n\n"
              "1 positions after eq filter\n0 positions after prox filter\n");
    EXPECT_EQ(quantizer.codebook, std::vector<double>{10.0});
    EXPECT_EQ(quantizer.codebookSize, 1);
}

TEST(CodebookTrainingTest, RaggedTraceIsOutOfRangeAfterItsFirstCount) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({10.0});
    std::list<Trace> traces = {{{0, 0}, {1, 0, 0}, {2, 0}}};
    Capture capture;
    try {
        quantizer.trainCodebook(traces, 0.0f);
        ADD_FAILURE() << "no exception";
    } catch (const std::out_of_range& failure) {
        EXPECT_STREQ(failure.what(), "vector::_M_range_check");
    }
    EXPECT_EQ(capture.text(), "3 positions after eq filter\n");
    EXPECT_EQ(capture.flushes(), 1);
    EXPECT_EQ(quantizer.codebook, std::vector<double>{10.0});
}

TEST(CodebookTrainingTest, TraceWithOnePositionLeftContributesAnEmptyRow) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({33.0});
    // Two distinct positions, of which the proximity filter keeps the first.
    std::list<Trace> traces = {{{0, 0}, {0.5, 0}}};
    Capture capture;
    EXPECT_TRUE(bitEqual(std::vector<double>{33.0}, quantizer.trainCodebook(traces, 1.0f)));
    EXPECT_EQ(capture.text(), "2 positions after eq filter\n1 positions after prox filter\n\n");
}

TEST(CodebookTrainingTest, CentresMoveToTheMeansOfTheirDirections) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({10.0, 100.0, 250.0});
    // Level, 45 and vertical steps: 0 and 45 are nearest to 10, mean 22.5; 90 to 100; none to 250.
    std::list<Trace> traces = {{{0, 0}, {1, 0}, {2, 1}}, {{0, 0}, {0, 1}}};
    Capture capture;
    const std::vector<double> learnt = quantizer.trainCodebook(traces, 0.0f);
    ASSERT_EQ(learnt.size(), 3u);
    EXPECT_NEAR(learnt[0], 22.5, 1e-9);
    EXPECT_NEAR(learnt[1], 90.0, 1e-9);
    EXPECT_EQ(learnt[2], 250.0);
    EXPECT_TRUE(bitEqual(learnt, quantizer.codebook));
}

TEST(CodebookTrainingTest, MeansAreTakenAroundTheCircle) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({60.0});
    // 45 and 315 degrees average to 0, not to 180.
    std::list<Trace> traces = {{{0, 0}, {1, 1}, {2, 0}}};
    Capture capture;
    const std::vector<double> learnt = quantizer.trainCodebook(traces, 0.0f);
    ASSERT_EQ(learnt.size(), 1u);
    EXPECT_LE(Reference::circularDistance(learnt[0], 0.0), 1e-9);
}

TEST(CodebookTrainingTest, UnreadyQuantizerGeneratesItsStatedSizeFirst) {
    VectorQuantizer2D quantizer;
    quantizer.codebookSize = 4;
    std::list<Trace> none;
    Capture capture;
    EXPECT_EQ(quantizer.trainCodebook(none, 0.0f), (std::vector<double>{0.0, 90.0, 180.0, 270.0}));
    EXPECT_TRUE(quantizer.codebookReady);
    EXPECT_EQ(quantizer.codebookSize, 4);
}

TEST(CodebookTrainingTest, UnreadyQuantizerKeepsTheEntriesThatItHas) {
    VectorQuantizer2D quantizer;
    quantizer.codebook = {7.0};
    quantizer.codebookSize = 2;
    std::list<Trace> none;
    Capture capture;
    EXPECT_EQ(quantizer.trainCodebook(none, 0.0f), (std::vector<double>{7.0, 0.0, 180.0}));
    EXPECT_EQ(quantizer.codebookSize, 2);
}

TEST(CodebookTrainingTest, FreshQuantizerLearnsAnEmptyCodebook) {
    VectorQuantizer2D quantizer;
    std::list<Trace> traces = {{{0, 0}, {1, 0}, {1, 1}}};
    Capture capture;
    EXPECT_TRUE(quantizer.trainCodebook(traces, 0.0f).empty());
    EXPECT_EQ(capture.text(), "3 positions after eq filter\n3 positions after prox filter\n\n");
    EXPECT_TRUE(quantizer.codebook.empty());
    EXPECT_TRUE(quantizer.codebookReady);
    EXPECT_EQ(quantizer.codebookSize, 0);
}

TEST(CodebookTrainingTest, FailedTrainingOfAnUnreadyQuantizerLeavesTheGeneratedCodebook) {
    VectorQuantizer2D quantizer;
    quantizer.codebookSize = 2;
    std::list<Trace> traces = {{{0, 0}}};
    Capture capture;
    EXPECT_THROW(quantizer.trainCodebook(traces, 0.0f), std::bad_alloc);
    EXPECT_TRUE(quantizer.codebookReady);
    EXPECT_EQ(quantizer.codebook, (std::vector<double>{0.0, 180.0}));
}

TEST(CodebookTrainingTest, SizeIsNotAdjustedToTheCodebook) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    quantizer.initializeCodebook(4);
    std::list<Trace> traces = {{{0, 0}, {1, 0}}};
    Capture capture;
    EXPECT_EQ(quantizer.trainCodebook(traces, 0.0f).size(), 8u);
    EXPECT_EQ(quantizer.codebook.size(), 8u);
    EXPECT_EQ(quantizer.codebookSize, 4);
}

TEST(CodebookTrainingTest, ReturnedCodebookIsACopy) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(2);
    std::list<Trace> none;
    Capture capture;
    std::vector<double> learnt = quantizer.trainCodebook(none, 0.0f);
    learnt[0] = 99.0;
    EXPECT_EQ(quantizer.codebook[0], 0.0);
}

TEST(CodebookTrainingTest, UndefinedDirectionsTeachNothing) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({10.0, 100.0});
    std::list<Trace> traces = {{{0, 0}, {infinity, infinity}}, {{0, 0}, {0, 5}}};
    Capture capture;
    const std::vector<double> learnt = quantizer.trainCodebook(traces, 1.0f);
    ASSERT_EQ(learnt.size(), 2u);
    EXPECT_EQ(learnt[0], 10.0);
    EXPECT_NEAR(learnt[1], 90.0, 1e-9);
    EXPECT_EQ(capture.text(),
              "2 positions after eq filter\n2 positions after prox filter\n\n"
              "2 positions after eq filter\n2 positions after prox filter\n\n");
}

TEST(CodebookTrainingTest, UndefinedPositionsAreCountedByTheFirstFilterOnly) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({80.0});
    std::list<Trace> traces = {{{0, 0}, {nan, 0}, {nan, 0}, {0, 5}}};
    Capture capture;
    quantizer.trainCodebook(traces, 0.0f);
    EXPECT_EQ(capture.text(), "4 positions after eq filter\n2 positions after prox filter\n\n");
}

TEST(CodebookTrainingTest, ThresholdIsWidenedFromSinglePrecision) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({0.0});
    std::list<Trace> traces = {{{0, 0}, {0.1, 0}}};
    Capture capture;
    quantizer.trainCodebook(traces, 0.1f);  // 0.1f is more than 0.1
    EXPECT_EQ(capture.text(), "2 positions after eq filter\n1 positions after prox filter\n\n");
}

double slope(double degrees) { return std::tan(degrees * 3.141592653589793 / 180.0); }

TEST(CodebookTrainingTest, TrainingStopsOnceNoCentreMovesByADegree) {
    // Directions 0, 45.4, 46 and 90, centres 23.2 and 68.6, half way 45.9: {0, 45.4}, {46, 90}.
    // The means 22.7 and 68 are 0.5 and 0.6 away: that is the end, though half way is 45.35 now
    // and 45.4 would change sides.
    std::list<Trace> traces = {
        {{0, 0}, {1, 0}, {2, slope(45.4)}, {3, slope(45.4) + slope(46)}, {3, 9}}};
    Capture capture;
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({23.2, 68.6});
    const std::vector<double> learnt = quantizer.trainCodebook(traces, 0.0f);
    ASSERT_EQ(learnt.size(), 2u);
    EXPECT_NEAR(learnt[0], 22.7, 1e-9);
    EXPECT_NEAR(learnt[1], 68.0, 1e-9);
}

TEST(CodebookTrainingTest, TrainingGoesOnWhileACentreMovesByMore) {
    // Directions 0, 20, 40 and 90. Centres 0 and 35: {0} (0 against 35), {20, 40, 90} (20: 20
    // against 15). Their means: 0 and about 49.3. Then 20 belongs to the first: 10, and 65 for
    // {40, 90}. Then 40 is 30 from 10 and 25 from 65: nothing changes.
    std::list<Trace> traces = {{{0, 0}, {1, 0}, {2, slope(20)}}, {{0, 0}, {1, slope(40)}, {1, 5}}};
    Capture capture;
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({0.0, 35.0});
    const std::vector<double> learnt = quantizer.trainCodebook(traces, 0.0f);
    ASSERT_EQ(learnt.size(), 2u);
    EXPECT_NEAR(learnt[0], 10.0, 1e-9);
    EXPECT_NEAR(learnt[1], 65.0, 1e-9);
}

TEST(CodebookTrainingTest, TracesAreNotModified) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    std::list<Trace> traces = {{{0, 0}, {0, 0}, {1, 0}}, {{0, 0, 1}, {0, 5}}};
    const std::list<Trace> before = traces;
    Capture capture;
    quantizer.trainCodebook(traces, 0.5f);
    EXPECT_EQ(traces, before);
}

TEST(CodebookTrainingTest, TrainedCodebookClassifiesTheNextTrace) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({10.0, 80.0});
    std::list<Trace> traces = {{{0, 0}, {1, 0}, {1, 1}, {2, 1}}};
    Capture capture;
    quantizer.trainCodebook(traces, 0.0f);
    // The centres are 0 and 90 now: 40 degrees belongs to the first, 50 to the second.
    Trace next = {{0, 0}, {0.766044443118978, 0.6427876096865393}, {1.4088, 1.4088321}};
    EXPECT_EQ(quantizer.classify(next, 0.0f, false), (std::vector<int>{0, 1}));
}

}  // namespace
