// learnCodebook: trainCodebook without a word.

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/QuantizerReference.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <list>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Vesk::Test;
using Reference::Trace;
using Vesk::ML::CodebookTrainingEvent;
using Vesk::ML::VectorQuantizer2D;

/// What the observer was told, in order: E, P and | for the events.
struct Log {
    std::string text;
    Vesk::ML::CodebookTrainingObserver observer() {
        return [this](CodebookTrainingEvent event, std::size_t count) {
            switch (event) {
                case CodebookTrainingEvent::AfterEqFilter:
                    text += "E" + std::to_string(count);
                    break;
                case CodebookTrainingEvent::AfterProxFilter:
                    text += "P" + std::to_string(count);
                    break;
                case CodebookTrainingEvent::EndOfTrace: text += "|"; break;
            }
        };
    }
};

TEST(CodebookLearningTest, WritesNothing) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    Capture capture;
    quantizer.learnCodebook({{{0, 0}, {1, 0}}}, 0.0f);
    EXPECT_THROW(quantizer.learnCodebook({{{0, 0}}}, 0.0f), std::bad_alloc);
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(capture.flushes(), 0);
}

TEST(CodebookLearningTest, ObserverIsToldBothCountsAndTheEndOfEachTrace) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    Log log;
    quantizer.learnCodebook({{{0, 0}, {1, 0}, {1, 0}, {2, 0}}, {{0, 0}, {0.25, 0}, {0.5, 0}}}, 0.5f,
                            log.observer());
    EXPECT_EQ(log.text, "E3P3|E3P2|");
}

TEST(CodebookLearningTest, ObserverIsToldNothingWithoutTraces) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(3);
    Log log;
    EXPECT_EQ(quantizer.learnCodebook({}, 0.5f, log.observer()),
              (std::vector<double>{0.0, 120.0, 240.0}));
    EXPECT_EQ(log.text, "");
}

TEST(CodebookLearningTest, ObserverIsToldTheCountsThatComeBeforeAFailure) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({10.0});
    Log single;
    EXPECT_THROW(quantizer.learnCodebook({{{0, 0}, {1, 0}}, {{3, 4}}}, 0.0f, single.observer()),
                 std::bad_alloc);
    EXPECT_EQ(single.text, "E2P2|E0P0");
    Log ragged;
    EXPECT_THROW(quantizer.learnCodebook({{{0, 0}, {1, 0, 0}}}, 0.0f, ragged.observer()),
                 std::out_of_range);
    EXPECT_EQ(ragged.text, "E2");
    EXPECT_EQ(quantizer.codebook, std::vector<double>{10.0});
}

TEST(CodebookLearningTest, FailureTextIsTheRangeCheck) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({10.0});
    try {
        quantizer.learnCodebook({{{0, 0}, {1, 0, 0}}}, 0.0f);
        FAIL() << "no exception";
    } catch (const std::out_of_range& failure) {
        EXPECT_STREQ(failure.what(), "vector::_M_range_check");
    }
}

TEST(CodebookLearningTest, ExceptionOfTheObserverPassesAndKeepsTheCodebook) {
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({10.0});
    struct Stop {};
    EXPECT_THROW(quantizer.learnCodebook({{{0, 0}, {0, 1}}}, 0.0f,
                                         [](CodebookTrainingEvent, std::size_t) { throw Stop(); }),
                 Stop);
    EXPECT_EQ(quantizer.codebook, std::vector<double>{10.0});
}

TEST(CodebookLearningTest, LearnsWhatTrainingLearns) {
    std::list<Trace> traces = {{{0, 0}, {1, 0}, {2, 1}, {2, 3}, {1, 3.5}},
                               {{0, 0}, {-1, -2}, {-1.1, -2}, {4, -3}}};
    for (const int n : {1, 2, 3, 8, 16}) {
        SCOPED_TRACE(n);
        VectorQuantizer2D trained;
        trained.initializeCodebook(n);
        VectorQuantizer2D learnt = trained;
        Capture capture;
        const std::vector<double> expected = trained.trainCodebook(traces, 0.5f);
        EXPECT_TRUE(bitEqual(expected, learnt.learnCodebook(traces, 0.5f)));
        EXPECT_TRUE(bitEqual(expected, learnt.codebook));
        EXPECT_EQ(learnt.codebookSize, n);
    }
}

TEST(CodebookLearningTest, UnreadyQuantizerGeneratesItsStatedSizeFirst) {
    VectorQuantizer2D quantizer;
    quantizer.codebook = {7.0};
    quantizer.codebookSize = 2;
    EXPECT_EQ(quantizer.learnCodebook({}, 0.0f), (std::vector<double>{7.0, 0.0, 180.0}));
    EXPECT_TRUE(quantizer.codebookReady);
    EXPECT_EQ(quantizer.codebookSize, 2);
}

}  // namespace
