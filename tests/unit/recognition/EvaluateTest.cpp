#include <support/Capture.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::Recognition;
using Vesk::ML::RecognitionModelHMM;

TEST(Evaluate, FreshRecognitionHasNoWinner) {
    const Recognition recognition;
    EXPECT_FALSE(recognition.longEnough);
    EXPECT_EQ(recognition.threshold, 0.0);
    EXPECT_TRUE(recognition.gestures.empty());
    EXPECT_EQ(recognition.winner, -1);
}

TEST(Evaluate, TooShortASequenceIsNotLookedAt) {
    GestureSet set;
    fill(set.add("g", 1, 1), {1}, {1}, {1});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    for (const std::vector<int>& sequence : {std::vector<int>{}, std::vector<int>{0}}) {
        const Recognition recognition = model.evaluate(sequence);
        EXPECT_FALSE(recognition.longEnough);
        EXPECT_EQ(recognition.threshold, 0.0);
        EXPECT_TRUE(recognition.gestures.empty());
        EXPECT_EQ(recognition.winner, -1);
    }
}

TEST(Evaluate, ReportsEveryScore) {
    GestureSet set;
    fill(set.add("one", 1, 2), {1}, {1}, {0.5, 0.5});
    fill(set.add("two", 2, 2), {1, 0}, {0.5, 0.5, 0, 1}, {1, 0, 1, 0});
    fill(set.add("three", 1, 2), {1}, {1}, {0.75, 0.25});
    fill(set.add("four", 1, 2), {1}, {1}, {0, 1});
    RecognitionModelHMM model(set.pointers(), 0.5);  // share 0.5 / 4 = 0.125
    HMM combined(1, 2);
    fill(combined, {1}, {1}, {0.25, 0.75});
    model.recognitionHMM = &combined;
    const Recognition recognition = model.evaluate({0, 0});
    EXPECT_TRUE(recognition.longEnough);
    EXPECT_EQ(recognition.threshold, 0.03125);  // 0.25^2 * 0.5
    ASSERT_EQ(recognition.gestures.size(), 4U);
    // 0.25 * 0.125 = 0.03125 does not exceed the threshold.
    EXPECT_EQ(recognition.gestures[0].probability, 0.25);
    EXPECT_EQ(recognition.gestures[0].weightedProbability, 0.03125);
    EXPECT_EQ(recognition.gestures[0].weightedGamma, 0.125);
    EXPECT_FALSE(recognition.gestures[0].accepted);
    EXPECT_EQ(recognition.gestures[1].probability, 1.0);
    EXPECT_EQ(recognition.gestures[1].weightedProbability, 0.125);
    EXPECT_EQ(recognition.gestures[1].weightedGamma, 0.0625);
    EXPECT_TRUE(recognition.gestures[1].accepted);
    // Above the threshold, but below the best so far.
    EXPECT_EQ(recognition.gestures[2].probability, 0.5625);
    EXPECT_FALSE(recognition.gestures[2].accepted);
    EXPECT_EQ(recognition.gestures[3].probability, 0.0);
    EXPECT_EQ(recognition.gestures[3].weightedGamma, 0.0);
    EXPECT_FALSE(recognition.gestures[3].accepted);
    EXPECT_EQ(recognition.winner, 1);
}

TEST(Evaluate, EveryGestureAcceptedOnTheWayIsMarkedAndTheLastOneWins) {
    GestureSet set;
    for (const double p : {0.25, 0.5, 0.375, 0.75}) {
        fill(set.add("g", 1, 2), {1}, {1}, {p, 1 - p});
    }
    const RecognitionModelHMM model(set.pointers(), 0.5);
    const Recognition recognition = model.evaluate({0, 0});
    ASSERT_EQ(recognition.gestures.size(), 4U);
    EXPECT_TRUE(recognition.gestures[0].accepted);
    EXPECT_TRUE(recognition.gestures[1].accepted);
    EXPECT_FALSE(recognition.gestures[2].accepted);
    EXPECT_TRUE(recognition.gestures[3].accepted);
    EXPECT_EQ(recognition.winner, 3);
}

TEST(Evaluate, WithoutGesturesGivesTheThresholdAlone) {
    RecognitionModelHMM model;
    HMM combined(1, 2);
    fill(combined, {1}, {1}, {0.25, 0.75});
    model.recognitionHMM = &combined;
    const Recognition recognition = model.evaluate({0, 1});
    EXPECT_TRUE(recognition.longEnough);
    EXPECT_EQ(recognition.threshold, 0.1875);
    EXPECT_TRUE(recognition.gestures.empty());
    EXPECT_EQ(recognition.winner, -1);
}

TEST(Evaluate, SaysNothing) {
    GestureSet set;
    fill(set.add("g", 1, 2), {1}, {1}, {0.75, 0.25});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    Capture capture;
    EXPECT_EQ(model.evaluate({0, 0}).winner, -1);  // 0.28125 > 0.28125 fails
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(capture.flushes(), 0);
    EXPECT_EQ(std::cout.precision(), 6);
}

TEST(Evaluate, ManyThreadsOnOneModelFindTheSame) {
    Random random(77);
    const GestureSet set = randomGestures(random, 4, 5, 6, Parameters::Stochastic);
    RecognitionModelHMM built(set.pointers(), 0.001);
    ASSERT_TRUE(built.initialize());
    const RecognitionModelHMM& model = built;
    std::vector<Vesk::Math::VectorT<int>> sequences;
    std::vector<Recognition> expected;
    for (int s = 0; s < 50; ++s) {
        sequences.emplace_back(random.symbols(random.integer(2, 20), 6));
        expected.push_back(model.evaluate(sequences.back()));
    }
    std::vector<std::vector<Recognition>> found(4);
    std::vector<std::thread> threads;
    for (auto& results : found) {
        threads.emplace_back([&results, &sequences, &model] {
            for (const auto& sequence : sequences) results.push_back(model.evaluate(sequence));
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const auto& results : found) {
        for (std::size_t s = 0; s < sequences.size(); ++s) {
            EXPECT_TRUE(bitEqual(expected[s].threshold, results[s].threshold));
            EXPECT_EQ(expected[s].winner, results[s].winner);
            for (std::size_t g = 0; g < 4; ++g) {
                EXPECT_TRUE(bitEqual(expected[s].gestures[g].weightedGamma,
                                     results[s].gestures[g].weightedGamma));
            }
        }
    }
}

}  // namespace
}  // namespace Vesk::Test
