#include <support/Capture.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

std::string check(RecognitionModelHMM& model, const std::vector<int>& sequence) {
    const Capture silence;
    return model.check(sequence);
}

/// One state that emits symbol 0 with probability p; for two symbols P = p * p, gamma = 1.
void oneState(GestureSet& set, const std::string& name, double p) {
    fill(set.add(name, 1, 2), {1}, {1}, {p, 1 - p});
}

TEST(ForwardProb, IsZeroWithoutACombinedModel) {
    GestureSet set;
    oneState(set, "g", 0.5);
    RecognitionModelHMM model(set.pointers(), 0.5);
    EXPECT_TRUE(bitEqual(0.0, model.forwardProb({0, 0})));
    RecognitionModelHMM fresh;
    EXPECT_TRUE(bitEqual(0.0, fresh.forwardProb({0, 1})));
}

TEST(ForwardProb, IsTheCombinedModelsForwardProbability) {
    GestureSet set;
    fill(set.add("g", 2, 2), {1, 0}, {0.5, 0.5, 0, 0.75}, {0.5, 0.5, 0.25, 0.75});
    RecognitionModelHMM model(set.pointers(), 0.125);
    ASSERT_TRUE(model.initialize());
    // pi = 1/2 each; a = 0.5 0.5 / 0.25 0.75. Symbols 0, 1:
    // alpha0 = 0.25, 0.125; alpha1 = (0.125 + 0.03125) 0.5, (0.125 + 0.09375) 0.75.
    EXPECT_EQ(model.forwardProb({0, 1}), 0.078125 + 0.1640625);
    EXPECT_EQ(model.forwardProb({0, 1}), model.recognitionHMM->forwardProbability({0, 1}, 2));
}

TEST(ForwardProb, UsesTheWholeSequence) {
    GestureSet set;
    oneState(set, "g", 0.5);
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_EQ(model.forwardProb({}), 0.0);
    EXPECT_EQ(model.forwardProb({0}), 0.5);
    EXPECT_EQ(model.forwardProb({0, 1, 0}), 0.125);
}

TEST(ForwardProb, IsNotWeighted) {
    GestureSet set;
    oneState(set, "g", 0.5);
    RecognitionModelHMM model(set.pointers(), 0.001);
    ASSERT_TRUE(model.initialize());
    EXPECT_EQ(model.forwardProb({0}), 0.5);
}

TEST(Check, FewerThanTwoSymbolsGiveNoGestureAndPrintNothing) {
    GestureSet set;
    oneState(set, "g", 1.0);
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    Capture capture;
    EXPECT_EQ(model.check({}), "");
    EXPECT_EQ(model.check({0}), "");
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(capture.flushes(), 0);
}

TEST(Check, TwoSymbolsAreEnough) {
    GestureSet set;
    oneState(set, "g", 1.0);
    RecognitionModelHMM model(set.pointers(), 0.5);  // no combined model: threshold 0
    EXPECT_EQ(check(model, {0, 0}), "g");
}

TEST(Check, WithoutGesturesPrintsOnlyTheThresholdAndGivesNone) {
    RecognitionModelHMM model;
    Capture capture;
    EXPECT_EQ(model.check({0, 1}), "");
    EXPECT_EQ(capture.text(), "threshold = 0\n");
}

TEST(Check, WithoutGesturesStillComputesTheThreshold) {
    RecognitionModelHMM model;
    HMM combined(1, 1);
    fill(combined, {1}, {0.5}, {0.5});
    model.recognitionHMM = &combined;
    model.modelTransitionProb = 0.5;
    Capture capture;
    EXPECT_EQ(model.check({0, 0}), "");
    EXPECT_EQ(capture.text(), "threshold = 0.0625\n");  // 0.5 * 0.5 * 0.5 * 0.5
}

TEST(Check, WithoutACombinedModelAnyPositiveGesturePasses) {
    GestureSet set;
    oneState(set, "faint", 1e-100);
    RecognitionModelHMM model(set.pointers(), 0.5);
    EXPECT_EQ(check(model, {0, 0}), "faint");
}

TEST(Check, ReturnsTheAcceptedGestureWithTheHighestProbability) {
    GestureSet set;
    oneState(set, "low", 0.5);
    oneState(set, "high", 0.75);
    oneState(set, "middle", 0.625);
    RecognitionModelHMM model(set.pointers(), 0.5);
    EXPECT_EQ(check(model, {0, 0}), "high");
    EXPECT_EQ(check(model, {1, 1}), "low");
}

TEST(Check, OfTwoIdenticalModelsTheFirstIsReturned) {
    GestureSet set;
    oneState(set, "first", 0.75);
    oneState(set, "second", 0.75);
    RecognitionModelHMM model(set.pointers(), 0.25);
    EXPECT_EQ(check(model, {0, 0}), "first");
    ASSERT_TRUE(model.initialize());
    // Threshold 0.25 * 0.5625, weighted probability 0.375 * 0.5625.
    EXPECT_EQ(check(model, {0, 0}), "first");
}

TEST(Check, AGestureOfProbabilityZeroIsNeverReturned) {
    GestureSet set;
    oneState(set, "impossible", 0.0);
    RecognitionModelHMM model(set.pointers(), 0.5);
    EXPECT_EQ(check(model, {0, 0}), "");
    // Even below a negative threshold, which every gesture passes.
    model.gestureTransitionProb = 1.0;
    HMM combined(1, 2);
    fill(combined, {1}, {1}, {1, 1});
    model.recognitionHMM = &combined;
    model.modelTransitionProb = -1.0;
    EXPECT_EQ(check(model, {0, 0}), "");
}

TEST(Check, AZeroProbabilityGestureIsNotReturnedWhereAllOthersAreRejected) {
    GestureSet set;
    oneState(set, "impossible", 0.0);
    oneState(set, "weak", 0.25);
    RecognitionModelHMM model(set.pointers(), 0.9);
    ASSERT_TRUE(model.initialize());
    EXPECT_EQ(check(model, {0, 0}), "");
}

TEST(Check, ProbabilityEqualToTheThresholdIsRejected) {
    GestureSet set;
    oneState(set, "g", 0.5);
    RecognitionModelHMM model(set.pointers(), 1.0);
    HMM combined(1, 2);
    fill(combined, {1}, {1}, {0.5, 0.5});
    model.recognitionHMM = &combined;
    EXPECT_EQ(check(model, {0, 0}), "");  // 0.25 > 0.25 fails
    model.modelTransitionProb = 0.99;
    EXPECT_EQ(check(model, {0, 0}), "g");
}

TEST(Check, GammaEqualToTheThresholdIsRejected) {
    // P = 4, gamma of a one-state model = 1, threshold 1.
    GestureSet set;
    fill(set.add("g", 1, 2), {1}, {1}, {2, 0});
    RecognitionModelHMM model(set.pointers(), 1.0);
    HMM combined(1, 2);
    fill(combined, {1}, {1}, {1, 0});
    model.recognitionHMM = &combined;
    EXPECT_EQ(check(model, {0, 0}), "");
    model.modelTransitionProb = 0.99;
    EXPECT_EQ(check(model, {0, 0}), "g");
}

TEST(Check, WithDefaultWeightsProbabilityAndGammaMustBothExceedTheCombinedModels) {
    // Ends in state 0 only: P = 1 for the symbols 0 0, but gamma of the last state is 0.
    GestureSet set;
    fill(set.add("stays", 2, 2), {1, 0}, {1, 0, 0, 1}, {1, 0, 1, 0});
    RecognitionModelHMM model;
    model.gestures = set.pointers();
    HMM combined(1, 2);
    fill(combined, {1}, {1}, {0.5, 0.5});
    model.recognitionHMM = &combined;
    EXPECT_EQ(model.modelTransitionProb, 1.0);
    EXPECT_EQ(model.gestureTransitionProb, 1.0);
    EXPECT_EQ(check(model, {0, 0}), "");

    // Half of the mass in the last state: gamma 0.5 > 0.25, P = 1 > 0.25.
    fill(*model.gestures[0], {1, 0}, {0.5, 0.5, 0, 1}, {1, 0, 1, 0});
    EXPECT_EQ(check(model, {0, 0}), "stays");

    // P = 0.25 fails although gamma stays 0.5.
    fill(*model.gestures[0], {1, 0}, {0.5, 0.5, 0, 1}, {0.5, 0, 0.5, 0});
    EXPECT_EQ(check(model, {0, 0}), "");
}

TEST(Check, GammaIsTakenOfTheLastStateAtTheLastTime) {
    // All mass in the last state at the first time, none at the last.
    GestureSet set;
    fill(set.add("leaves", 2, 1), {0, 1}, {1, 0, 1, 0}, {1, 1});
    fill(set.add("arrives", 2, 1), {1, 0}, {0, 1, 0, 1}, {0.5, 0.5});
    RecognitionModelHMM model(set.pointers(), 0.5);
    EXPECT_EQ(check(model, {0, 0}), "arrives");
}

TEST(Check, TheBestProbabilityCountsUnweightedAndOnlyAcceptedOnesRaiseIt) {
    // The first has the higher probability, but its last state is never reached: not accepted, so
    // the second, less likely one still wins.
    GestureSet set;
    fill(set.add("rejected", 2, 1), {1, 0}, {1, 0, 0, 1}, {1, 1});
    fill(set.add("accepted", 1, 1), {1}, {1}, {0.5});
    RecognitionModelHMM model(set.pointers(), 0.5);
    EXPECT_EQ(check(model, {0, 0}), "accepted");
}

TEST(Check, ALaterLessLikelyGestureDoesNotReplaceAnAcceptedOne) {
    GestureSet set;
    oneState(set, "likely", 0.75);
    oneState(set, "unlikely", 0.5);
    RecognitionModelHMM model(set.pointers(), 0.5);
    EXPECT_EQ(check(model, {0, 0}), "likely");
}

TEST(Check, TheAcceptedGesturesEmptyNameIsReturnedAsItIs) {
    GestureSet set;
    oneState(set, "", 0.75);
    oneState(set, "named", 0.5);
    RecognitionModelHMM model(set.pointers(), 0.5);
    EXPECT_EQ(check(model, {0, 0}), "");
    model.gestures[0]->name = std::string("a\0b", 3);
    EXPECT_EQ(check(model, {0, 0}), std::string("a\0b", 3));
}

TEST(Check, NaNProbabilityRejects) {
    GestureSet set;
    fill(set.add("nan", 1, 2), {nan}, {1}, {1, 1});
    RecognitionModelHMM model(set.pointers(), 0.5);
    EXPECT_EQ(check(model, {0, 0}), "");
}

TEST(Check, NaNThresholdRejectsEveryGesture) {
    GestureSet set;
    oneState(set, "g", 1.0);
    RecognitionModelHMM model(set.pointers(), 0.5);
    model.modelTransitionProb = nan;
    EXPECT_EQ(check(model, {0, 0}), "");
    model.modelTransitionProb = infinity;  // 0.0 * infinity without a combined model
    EXPECT_EQ(check(model, {0, 0}), "");
}

TEST(Check, NaNGammaRejects) {
    // Infinite forward values: infinity / infinity.
    GestureSet set;
    fill(set.add("infinite", 1, 2), {1}, {1}, {infinity, 0});
    RecognitionModelHMM model(set.pointers(), 0.5);
    EXPECT_EQ(check(model, {0, 0}), "");
}

TEST(Check, NaNGestureShareRejects) {
    GestureSet set;
    oneState(set, "g", 1.0);
    RecognitionModelHMM model(set.pointers(), 0.5);
    model.gestureTransitionProb = nan;
    EXPECT_EQ(check(model, {0, 0}), "");
}

TEST(Check, InfiniteGestureShareAcceptsPositiveProbabilities) {
    GestureSet set;
    oneState(set, "g", 0.5);
    RecognitionModelHMM model;
    model.setModelTransitionProb(0.5);  // no gestures yet: share infinite
    model.gestures = set.pointers();
    EXPECT_EQ(check(model, {0, 0}), "g");
}

TEST(Check, UsesTheUnscaledProbabilitiesThatUnderflow) {
    GestureSet set;
    oneState(set, "g", 0.5);
    RecognitionModelHMM model(set.pointers(), 1.0);
    EXPECT_EQ(check(model, std::vector<int>(1074, 0)), "g");  // 2^-1074, the least number
    EXPECT_EQ(check(model, std::vector<int>(1075, 0)), "");   // rounds to 0
}

TEST(Check, ChangesNothing) {
    GestureSet set;
    oneState(set, "g", 0.75);
    RecognitionModelHMM model(set.pointers(), 0.25);
    ASSERT_TRUE(model.initialize());
    const auto before = recogniserOf(model);
    const Vesk::Math::VectorT<int> sequence{0, 1, 0};
    {
        const Capture silence;
        model.check(sequence);
        model.forwardProb(sequence);
    }
    expectSameRecogniser(before, recogniserOf(model));
    EXPECT_EQ(sequence, (Vesk::Math::VectorT<int>{0, 1, 0}));
}

TEST(Check, UsesTheCombinedModelAndNotTheStagingFields) {
    GestureSet set;
    oneState(set, "g", 0.5);
    RecognitionModelHMM model(set.pointers(), 0.25);
    ASSERT_TRUE(model.initialize());
    EXPECT_EQ(check(model, {0, 0}), "g");  // 0.75 * 0.25 > 0.25 * 0.25
    model.b.data = {9, 9};
    EXPECT_EQ(check(model, {0, 0}), "g");
    model.recognitionHMM->b.data = {9, 9};
    EXPECT_EQ(check(model, {0, 0}), "");
}

TEST(Check, LooksAtGeneralModelsAsAtLeftRightOnes) {
    GestureSet set;
    fill(set.addGeneral("general", 1, 2), {1}, {1}, {0.75, 0.25});
    RecognitionModelHMM model(set.pointers(), 0.5);
    EXPECT_EQ(check(model, {0, 0}), "general");
}

TEST(Check, AGestureNeedsOnlyTheSymbolsThatOccur) {
    GestureSet set;
    LeftRightHMM& gesture = set.add("g", 1, 2);
    fill(gesture, {1}, {1}, {0.5, 0.25});
    gesture.vocabSize = 5;
    RecognitionModelHMM model(set.pointers(), 0.5);
    EXPECT_EQ(check(model, {0, 1}), "g");
    EXPECT_EQ(model.evaluate({0, 1}).gestures.at(0).probability, 0.125);
    const Capture silence;
    EXPECT_THROW(model.check({0, 2}), std::out_of_range);
    EXPECT_THROW(model.evaluate({0, 2}), std::out_of_range);
}

TEST(Check, TablesSmallerThanTheirCountsAreOutOfRange) {
    const std::vector<int> sequence{0, 0};
    const Capture silence;
    {
        RecognitionModelHMM model;  // a combined model of one state without any values
        ASSERT_TRUE(model.createRecognitionHMMfromParameters());
        EXPECT_THROW(model.forwardProb(sequence), std::out_of_range);
        EXPECT_THROW(model.check(sequence), std::out_of_range);
        EXPECT_THROW(model.evaluate(sequence), std::out_of_range);
        // Too short a sequence is none before anything is looked at.
        EXPECT_EQ(model.check({0}), "");
    }
    {
        GestureSet set;
        oneState(set, "g", 0.5);
        RecognitionModelHMM model(set.pointers(), 0.5);
        model.gestures[0]->pi.clear();
        EXPECT_THROW(model.check(sequence), std::out_of_range);
        EXPECT_THROW(model.evaluate(sequence), std::out_of_range);
    }
    {
        GestureSet set;
        oneState(set, "g", 0.5);
        RecognitionModelHMM model(set.pointers(), 0.5);
        model.gestures[0]->a.resize(0, 0);
        EXPECT_THROW(model.check(sequence), std::out_of_range);
        EXPECT_THROW(model.evaluate(sequence), std::out_of_range);
    }
    {
        GestureSet set;
        oneState(set, "g", 0.5);
        RecognitionModelHMM model(set.pointers(), 0.5);
        model.gestures[0]->b.resize(1, 0);
        EXPECT_THROW(model.check(sequence), std::out_of_range);
        EXPECT_THROW(model.evaluate(sequence), std::out_of_range);
    }
}

}  // namespace
}  // namespace Vesk::Test
