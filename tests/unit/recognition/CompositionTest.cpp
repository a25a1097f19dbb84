#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <new>
#include <string>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;

/// 3 and 2 states over 2 symbols.
GestureSet threeAndTwo() {
    GestureSet set;
    fill(set.add("first", 3, 2), {1, 0, 0}, {0.5, 0.5, 0, 0, 0.75, 0.25, 0, 0, 1},
         {0.9, 0.1, 0.8, 0.2, 0.7, 0.3});
    fill(set.add("second", 2, 2), {1, 0}, {0.25, 0.75, 0, 1}, {0.6, 0.4, 0.5, 0.5});
    return set;
}

TEST(Initialize, WithoutGesturesReturnsFalseAndChangesNothing) {
    RecognitionModelHMM model;
    model.name = "kept";
    model.pi = {0.25};
    model.numStates = 7;
    model.vocabSize = 9;
    const auto before = recogniserOf(model);
    EXPECT_FALSE(model.initialize());
    EXPECT_EQ(model.recognitionHMM, nullptr);
    expectSameRecogniser(before, recogniserOf(model));
}

TEST(Initialize, WhileBuiltFromParametersReturnsFalseAndChangesNothing) {
    const GestureSet set = threeAndTwo();
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    ASSERT_TRUE(model.createRecognitionHMMfromParameters());
    HMM* const combined = model.recognitionHMM;
    model.a(0, 0) = 0.125;
    const auto before = recogniserOf(model);
    EXPECT_FALSE(model.initialize());
    EXPECT_EQ(model.recognitionHMM, combined);
    expectSameRecogniser(before, recogniserOf(model));
}

TEST(Initialize, RefusesForFromParametersBeforeLookingAtTheGestures) {
    RecognitionModelHMM model;
    model.fromParameters = true;
    EXPECT_FALSE(model.initialize());
    EXPECT_EQ(model.recognitionHMM, nullptr);
}

TEST(Initialize, StacksGestureStatesInOrder) {
    const GestureSet set = threeAndTwo();
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_EQ(model.numStates, 5U);
    EXPECT_EQ(model.vocabSize, 2U);
    EXPECT_FALSE(model.fromParameters);
    // 1 / 5 each.
    EXPECT_TRUE(bitEqual(std::vector<double>(5, 0.2), model.pi));
    // Self-transitions 0.5, 0.75, 1, 0.25, 1; the rest by 4: 0.125, 0.0625, 0, 0.1875, 0.
    EXPECT_TRUE(bitEqual(std::vector<double>{0.5,    0.125,  0.125,  0.125,  0.125,   //
                                             0.0625, 0.75,   0.0625, 0.0625, 0.0625,  //
                                             0,      0,      1,      0,      0,       //
                                             0.1875, 0.1875, 0.1875, 0.25,   0.1875,  //
                                             0,      0,      0,      0,      1},
                         model.a.data));
    EXPECT_EQ(model.a.rows, 5);
    EXPECT_EQ(model.a.cols, 5);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.9, 0.1, 0.8, 0.2, 0.7, 0.3, 0.6, 0.4, 0.5, 0.5},
                         model.b.data));
    EXPECT_EQ(model.b.rows, 5);
    EXPECT_EQ(model.b.cols, 2);
}

TEST(Initialize, CopiesTheStagingFieldsIntoTheCombinedModel) {
    const GestureSet set = threeAndTwo();
    RecognitionModelHMM model(set.pointers(), 0.5);
    model.name = "all";
    ASSERT_TRUE(model.initialize());
    ASSERT_NE(model.recognitionHMM, nullptr);
    const HMM& combined = *model.recognitionHMM;
    EXPECT_EQ(combined.name, "all");
    EXPECT_EQ(combined.numStates, 5U);
    EXPECT_EQ(combined.vocabSize, 2U);
    EXPECT_EQ(combined.dimension, 1);
    EXPECT_TRUE(bitEqual(model.pi, combined.pi));
    EXPECT_TRUE(bitEqual(model.a, combined.a));
    EXPECT_TRUE(bitEqual(model.b, combined.b));
    EXPECT_TRUE(bitEqual(model.vocab, combined.vocab));
    EXPECT_TRUE(combined.vocabValues.empty());
    EXPECT_TRUE(combined.needsSeed);
    EXPECT_EQ(typeid(combined), typeid(HMM));
}

TEST(Initialize, LeavesTheGesturesAlone) {
    const GestureSet set = threeAndTwo();
    RecognitionModelHMM model(set.pointers(), 0.5);
    const auto first = modelOf(*model.gestures[0]);
    const auto second = modelOf(*model.gestures[1]);
    ASSERT_TRUE(model.initialize());
    expectSameModel(first, modelOf(*model.gestures[0]));
    expectSameModel(second, modelOf(*model.gestures[1]));
}

TEST(Initialize, TakesVocabularyAndItsSizeFromTheFirstGestureOnly) {
    GestureSet set;
    LeftRightHMM& first = set.add("first", 1, 2);
    LeftRightHMM& second = set.add("second", 1, 2);
    first.vocab.resize(2, 3);
    first.vocab.data = {1, 2, 3, 4, 5, 6};
    second.vocab.data = {7, 8};
    second.vocabSize = 99;
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_EQ(model.vocabSize, 2U);
    EXPECT_TRUE(bitEqual(first.vocab, model.vocab));
    EXPECT_TRUE(bitEqual(first.vocab, model.recognitionHMM->vocab));
    EXPECT_EQ(model.recognitionHMM->dimension, 1);
}

TEST(Initialize, OneGestureSpreadsItsRestOverItsOtherStates) {
    GestureSet set;
    fill(set.add("only", 3, 1), {1, 0, 0}, {0.5, 0.5, 0, 0, 0.25, 0.75, 0, 0, 0.125}, {1, 1, 1});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    // (1 - 0.5) / 2 = 0.25, (1 - 0.25) / 2 = 0.375, (1 - 0.125) / 2 = 0.4375.
    EXPECT_TRUE(
        bitEqual(std::vector<double>{0.5, 0.25, 0.25, 0.375, 0.25, 0.375, 0.4375, 0.4375, 0.125},
                 model.a.data));
    EXPECT_TRUE(bitEqual(std::vector<double>(3, 1.0 / 3.0), model.pi));
}

TEST(Initialize, SelfTransitionOfOneGivesAnAllZeroRestOfTheRow) {
    GestureSet set;
    fill(set.add("only", 2, 1), {1, 0}, {1, 0.5, 0, 1}, {1, 1});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_TRUE(bitEqual(std::vector<double>{1, 0, 0, 1}, model.a.data));
}

TEST(Initialize, DropsTheGesturesOwnForwardStructure) {
    GestureSet set;
    // Rows that do not sum to 1: only the diagonal counts. (1 - 0.5) / 1 = 0.5.
    fill(set.add("only", 2, 1), {0, 0}, {0.5, 100, -3, 0.5}, {1, 1});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_TRUE(bitEqual(std::vector<double>{0.5, 0.5, 0.5, 0.5}, model.a.data));
}

TEST(Initialize, SelfTransitionAboveOneSpreadsANegativeRest) {
    GestureSet set;
    fill(set.add("only", 2, 1), {1, 0}, {3, 0, 0, 1}, {1, 1});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_TRUE(bitEqual(std::vector<double>{3, -2, 0, 1}, model.a.data));
}

TEST(Initialize, InfiniteAndNaNSelfTransitionsSpread) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    GestureSet set;
    fill(set.add("only", 2, 1), {1, 0}, {infinity, 0, 0, nan}, {1, 1});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_TRUE(bitEqual(std::vector<double>{infinity, -infinity, nan, nan}, model.a.data));
}

TEST(Initialize, OneStateInAllKeepsOnlyItsSelfTransition) {
    for (const double self : {1.0, 0.5, 0.0}) {
        SCOPED_TRACE(self);
        GestureSet set;
        fill(set.add("only", 1, 2), {1}, {self}, {0.25, 0.75});
        RecognitionModelHMM model(set.pointers(), 0.5);
        ASSERT_TRUE(model.initialize());
        EXPECT_EQ(model.numStates, 1U);
        EXPECT_TRUE(bitEqual(std::vector<double>{1}, model.pi));
        EXPECT_TRUE(bitEqual(std::vector<double>{self}, model.a.data));
        EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.75}, model.b.data));
    }
}

TEST(Initialize, TheSameGestureTwiceGivesItsStatesTwice) {
    GestureSet set;
    LeftRightHMM& gesture = set.add("twice", 1, 1);
    fill(gesture, {1}, {0.25}, {1});
    RecognitionModelHMM model({&gesture, &gesture}, 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.75, 0.75, 0.25}, model.a.data));
}

TEST(Initialize, TakesGeneralModelsAsGestures) {
    GestureSet set;
    fill(set.addGeneral("general", 1, 1), {1}, {0.5}, {1});
    fill(set.add("leftright", 1, 1), {1}, {0.25}, {0.5});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_TRUE(bitEqual(std::vector<double>{0.5, 0.5, 0.75, 0.25}, model.a.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{1, 0.5}, model.b.data));
}

TEST(Initialize, AgainAfterGesturesChangedBuildsAFreshCombinedModel) {
    GestureSet set = threeAndTwo();
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    const HMM* const earlier = model.recognitionHMM;
    const auto earlierCopy = modelOf(*earlier);
    model.gestures.pop_back();
    ASSERT_TRUE(model.initialize());
    EXPECT_NE(model.recognitionHMM, earlier);
    EXPECT_EQ(model.numStates, 3U);
    EXPECT_EQ(model.pi.size(), 3U);
    EXPECT_EQ(model.a.data.size(), 9U);
    EXPECT_EQ(model.b.data.size(), 6U);
    EXPECT_EQ(model.recognitionHMM->numStates, 3U);
    expectSameModel(earlierCopy, modelOf(*earlier));
}

TEST(Initialize, AgainWithMoreStatesExtendsEveryTable) {
    GestureSet set = threeAndTwo();
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    fill(set.add("third", 1, 2), {1}, {0.5}, {0.125, 0.875});
    model.gestures = set.pointers();
    ASSERT_TRUE(model.initialize());
    RecognitionModelHMM fresh(set.pointers(), 0.5);
    ASSERT_TRUE(fresh.initialize());
    EXPECT_TRUE(bitEqual(fresh.pi, model.pi));
    EXPECT_TRUE(bitEqual(fresh.a, model.a));
    EXPECT_TRUE(bitEqual(fresh.b, model.b));
}

TEST(Initialize, DoesNotTouchProbabilitiesOrQuantiserSettings) {
    const GestureSet set = threeAndTwo();
    RecognitionModelHMM model(set.pointers(), 0.4);
    model.codebook = {1, 2, 3};
    model.proxFilterThreshold = 2.5f;
    model.rotationAllowed = false;
    const double share = model.gestureTransitionProb;
    ASSERT_TRUE(model.initialize());
    EXPECT_EQ(model.modelTransitionProb, 0.4);
    EXPECT_EQ(model.gestureTransitionProb, share);
    EXPECT_EQ(model.codebook, (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(model.proxFilterThreshold, 2.5f);
    EXPECT_FALSE(model.rotationAllowed);
}

TEST(SetParameters, OnAFreshModelMakesACombinedModelWithEmptyTables) {
    RecognitionModelHMM model;
    model.name = "empty";
    EXPECT_TRUE(model.setParameters());
    ASSERT_NE(model.recognitionHMM, nullptr);
    // Counts below 1 are raised to 1, the tables take the staging fields' shapes.
    EXPECT_EQ(model.recognitionHMM->numStates, 1U);
    EXPECT_EQ(model.recognitionHMM->vocabSize, 1U);
    EXPECT_EQ(model.recognitionHMM->name, "empty");
    EXPECT_TRUE(model.recognitionHMM->pi.empty());
    EXPECT_TRUE(model.recognitionHMM->a.data.empty());
    EXPECT_TRUE(model.recognitionHMM->b.data.empty());
    EXPECT_TRUE(model.recognitionHMM->vocab.data.empty());
    EXPECT_FALSE(model.fromParameters);
}

TEST(SetParameters, AgainRefillsAndReplacesTheCombinedModel) {
    const GestureSet set = threeAndTwo();
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    const HMM* const earlier = model.recognitionHMM;
    const auto expected = recogniserOf(model);
    model.pi.assign(5, 9.0);
    model.a.data.assign(25, 9.0);
    model.b.data.assign(10, 9.0);
    ASSERT_TRUE(model.setParameters());
    EXPECT_NE(model.recognitionHMM, earlier);
    expectSameRecogniser(expected, recogniserOf(model));
}

TEST(SetParameters, MayBeCalledOnAModelBuiltFromParametersAndKeepsItMarked) {
    const GestureSet set = threeAndTwo();
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    ASSERT_TRUE(model.createRecognitionHMMfromParameters());
    model.a.data.assign(25, 9.0);
    ASSERT_TRUE(model.setParameters());
    EXPECT_TRUE(model.fromParameters);
    EXPECT_EQ(model.recognitionHMM->a(0, 0), 0.5);
    EXPECT_FALSE(model.initialize());
}

TEST(SetParameters, DoesNotResizeThePi) {
    const GestureSet set = threeAndTwo();
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    model.pi.assign(7, 0.5);
    ASSERT_TRUE(model.setParameters());
    const std::vector<double> expected{0.2, 0.2, 0.2, 0.2, 0.2, 0.5, 0.5};
    EXPECT_TRUE(bitEqual(expected, model.pi));
    EXPECT_TRUE(bitEqual(expected, model.recognitionHMM->pi));
    EXPECT_EQ(model.recognitionHMM->numStates, 5U);
}

TEST(CreateFromParameters, TakesTheStagingFieldsAsTheyStand) {
    RecognitionModelHMM model;
    model.name = "staged";
    model.numStates = 2;
    model.vocabSize = 3;
    model.vocab.resize(3, 1);
    model.vocab.data = {4, 5, 6};
    model.pi = {0.25, 0.5};
    model.a.resize(2, 2);
    model.a.data = {0.1, 0.2, 0.3, 0.4};
    model.b.resize(2, 3);
    model.b.data = {1, 2, 3, 4, 5, 6};
    EXPECT_TRUE(model.createRecognitionHMMfromParameters());
    EXPECT_TRUE(model.fromParameters);
    ASSERT_NE(model.recognitionHMM, nullptr);
    EXPECT_EQ(model.recognitionHMM->name, "staged");
    EXPECT_EQ(model.recognitionHMM->numStates, 2U);
    EXPECT_EQ(model.recognitionHMM->vocabSize, 3U);
    EXPECT_EQ(model.recognitionHMM->dimension, 1);
    EXPECT_TRUE(bitEqual(model.pi, model.recognitionHMM->pi));
    EXPECT_TRUE(bitEqual(model.a, model.recognitionHMM->a));
    EXPECT_TRUE(bitEqual(model.b, model.recognitionHMM->b));
    EXPECT_TRUE(bitEqual(model.vocab, model.recognitionHMM->vocab));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.5}, model.pi));
}

TEST(CreateFromParameters, TakesStagingShapesThatDisagreeWithTheCounts) {
    RecognitionModelHMM model;
    model.numStates = 3;
    model.vocabSize = 2;
    model.pi = {0.25};
    model.a.resize(1, 4);
    model.b.resize(2, 0);
    EXPECT_TRUE(model.createRecognitionHMMfromParameters());
    EXPECT_EQ(model.recognitionHMM->numStates, 3U);
    EXPECT_EQ(model.recognitionHMM->pi.size(), 1U);
    EXPECT_EQ(model.recognitionHMM->a.rows, 1);
    EXPECT_EQ(model.recognitionHMM->a.cols, 4);
    EXPECT_EQ(model.recognitionHMM->b.rows, 2);
    EXPECT_EQ(model.recognitionHMM->b.cols, 0);
    EXPECT_EQ(model.recognitionHMM->vocab.rows, 0);
}

TEST(CreateFromParameters, CountsWhoseTablesNoResizeMakesAreRefused) {
    const struct {
        unsigned int states;
        unsigned int symbols;
    } counts[] = {{46341, 1}, {40000, 60000}};  // products from 2^31 on, below 2^32
    for (const auto& [states, symbols] : counts) {
        SCOPED_TRACE(testing::Message() << states << " states, " << symbols << " symbols");
        RecognitionModelHMM model;
        model.numStates = states;
        model.vocabSize = symbols;
        EXPECT_THROW(model.createRecognitionHMMfromParameters(), std::bad_alloc);
        EXPECT_EQ(model.recognitionHMM, nullptr);
        EXPECT_FALSE(model.fromParameters);
    }
}

TEST(CreateFromParameters, EveryCallMakesANewCombinedModel) {
    RecognitionModelHMM model;
    ASSERT_TRUE(model.createRecognitionHMMfromParameters());
    HMM* const earlier = model.recognitionHMM;
    model.setName("second");
    ASSERT_TRUE(model.createRecognitionHMMfromParameters());
    EXPECT_NE(model.recognitionHMM, earlier);
    EXPECT_EQ(model.recognitionHMM->name, "second");
    model.setName("third");
    EXPECT_EQ(earlier->name, "second");
}

}  // namespace
}  // namespace Vesk::Test
