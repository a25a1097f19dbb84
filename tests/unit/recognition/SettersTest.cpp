#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::RecognitionModelHMM;

TEST(ModelTransitionProb, SharesTheRestEvenlyAmongTheGestures) {
    HMM gesture(1, 1);
    RecognitionModelHMM model;
    model.gestures = {&gesture, &gesture, &gesture, &gesture};
    model.setModelTransitionProb(0.5);
    EXPECT_EQ(model.modelTransitionProb, 0.5);
    EXPECT_EQ(model.gestureTransitionProb, 0.125);  // (1 - 0.5) / 4
}

TEST(ModelTransitionProb, ExactlyOneGivesEachGestureOne) {
    HMM gesture(1, 1);
    RecognitionModelHMM model;
    model.gestures = {&gesture, &gesture};
    model.setModelTransitionProb(0.5);
    model.setModelTransitionProb(1.0);
    EXPECT_EQ(model.gestureTransitionProb, 1.0);
}

TEST(ModelTransitionProb, NextToOneIsNotOne) {
    HMM gesture(1, 1);
    RecognitionModelHMM model({&gesture, &gesture}, 1.0);
    model.setModelTransitionProb(std::nextafter(1.0, 0.0));
    EXPECT_EQ(model.gestureTransitionProb, 0x1p-54);  // 2^-53 / 2
    model.setModelTransitionProb(std::nextafter(1.0, 2.0));
    EXPECT_EQ(model.gestureTransitionProb, -0x1p-53);  // -2^-52 / 2
}

TEST(ModelTransitionProb, AboveOneGivesANegativeShare) {
    HMM gesture(1, 1);
    RecognitionModelHMM model({&gesture, &gesture}, 3.0);
    EXPECT_EQ(model.gestureTransitionProb, -1.0);
}

TEST(ModelTransitionProb, HalfWithoutGesturesGivesInfinity) {
    RecognitionModelHMM model;
    model.setModelTransitionProb(0.5);
    EXPECT_EQ(model.modelTransitionProb, 0.5);
    EXPECT_EQ(model.gestureTransitionProb, std::numeric_limits<double>::infinity());
}

TEST(ModelTransitionProb, OneWithoutGesturesGivesOne) {
    RecognitionModelHMM model;
    model.setModelTransitionProb(0.5);
    model.setModelTransitionProb(1.0);
    EXPECT_EQ(model.gestureTransitionProb, 1.0);
}

TEST(ModelTransitionProb, NaNPassesThrough) {
    HMM gesture(1, 1);
    RecognitionModelHMM model({&gesture}, std::numeric_limits<double>::quiet_NaN());
    EXPECT_TRUE(std::isnan(model.modelTransitionProb));
    EXPECT_TRUE(std::isnan(model.gestureTransitionProb));
}

TEST(ModelTransitionProb, GoesStaleWhenGesturesChangeAndIsRecomputedFromTheirPresentNumber) {
    HMM gesture(1, 1);
    RecognitionModelHMM model({&gesture}, 0.5);
    EXPECT_EQ(model.gestureTransitionProb, 0.5);
    model.gestures.push_back(&gesture);
    EXPECT_EQ(model.gestureTransitionProb, 0.5);
    model.setModelTransitionProb(0.5);
    EXPECT_EQ(model.gestureTransitionProb, 0.25);
}

TEST(ModelTransitionProb, ChangesNothingElse) {
    GestureSet set;
    Random random(1);
    fillRandom(set.add("g", 2, 3), random, Parameters::Stochastic);
    RecognitionModelHMM model(set.pointers(), 0.25);
    ASSERT_TRUE(model.initialize());
    auto expected = recogniserOf(model);
    expected.modelTransitionProb = 0.75;
    expected.gestureTransitionProb = 0.25;
    model.setModelTransitionProb(0.75);
    expectSameRecogniser(expected, recogniserOf(model));
}

TEST(SetName, BeforeInitializeChangesOnlyTheModelUntilTheCombinedModelIsBuilt) {
    HMM gesture(2, 3);
    gesture.name = "gesture";
    RecognitionModelHMM model({&gesture}, 0.5);
    model.setName("early");
    EXPECT_EQ(model.name, "early");
    EXPECT_EQ(model.recognitionHMM, nullptr);
    ASSERT_TRUE(model.initialize());
    EXPECT_EQ(model.recognitionHMM->name, "early");
    EXPECT_EQ(gesture.name, "gesture");
}

TEST(SetName, AfterInitializeRenamesTheCombinedModelToo) {
    HMM gesture(2, 3);
    RecognitionModelHMM model({&gesture}, 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_EQ(model.recognitionHMM->name, "");
    HMM* const combined = model.recognitionHMM;
    model.setName("late");
    EXPECT_EQ(model.name, "late");
    EXPECT_EQ(model.recognitionHMM, combined);
    EXPECT_EQ(combined->name, "late");
}

TEST(SetName, TakesAnyBytes) {
    HMM gesture(1, 1);
    RecognitionModelHMM model({&gesture}, 0.5);
    ASSERT_TRUE(model.initialize());
    const std::string odd("a b\0\"\n", 6);
    model.setName(odd);
    EXPECT_EQ(model.name, odd);
    EXPECT_EQ(model.recognitionHMM->name, odd);
}

}  // namespace
}  // namespace Vesk::Test
