#include "Gestures.h"

#include <veskkit/recognition/RecognitionModel.h>

#include <gtest/gtest.h>

#include <utility>

namespace Vesk::Kit {
namespace {

using Vesk::ML::RecognitionModelHMM;
using Vesk::Test::smallModel;

TEST(RecognitionModelTest, RefersToTheModelsItOwns) {
    const RecognitionModel model = smallModel(0.25);
    const RecognitionModelHMM& inner = model.get();
    ASSERT_EQ(inner.gestures.size(), 3u);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(inner.gestures[i], model.gestures()[i].get());
    ASSERT_NE(inner.recognitionHMM, nullptr);
    EXPECT_EQ(inner.recognitionHMM->numStates, 6u);
    EXPECT_EQ(inner.recognitionHMM->b.data, inner.b.data);
    EXPECT_TRUE(inner.fromParameters);
    EXPECT_EQ(inner.modelTransitionProb, 0.25);
    EXPECT_EQ(inner.gestureTransitionProb, 0.25);  // (1 - 0.25) / 3
}

TEST(RecognitionModelTest, NamesEveryGestureOnce) {
    EXPECT_EQ(smallModel().gestureNames(), (std::vector<std::string>{"right", "up"}));
    EXPECT_TRUE(RecognitionModel().gestureNames().empty());
}

TEST(RecognitionModelTest, MovesWithoutMovingItsModels) {
    RecognitionModel first = smallModel();
    const Vesk::ML::HMM* gesture = first.get().gestures[1];
    const Vesk::ML::HMM* combined = first.get().recognitionHMM;
    RecognitionModel second = std::move(first);
    RecognitionModel third;
    third = std::move(second);
    EXPECT_EQ(third.get().gestures[1], gesture);
    EXPECT_EQ(third.get().recognitionHMM, combined);
    EXPECT_EQ(third.gestureNames().size(), 2u);
}

TEST(RecognitionModelTest, ACloneSharesNothing) {
    const RecognitionModel model = smallModel(0.25);
    const RecognitionModel copy = model.clone();
    ASSERT_EQ(copy.get().gestures.size(), 3u);
    EXPECT_EQ(copy.get().gestures[0], copy.gestures()[0].get());
    EXPECT_NE(copy.get().gestures[0], model.get().gestures[0]);
    EXPECT_NE(copy.get().recognitionHMM, model.get().recognitionHMM);
    EXPECT_EQ(copy.get().gestures[0]->b.data, model.get().gestures[0]->b.data);
    EXPECT_EQ(copy.get().recognitionHMM->a.data, model.get().recognitionHMM->a.data);
    EXPECT_EQ(copy.get().codebook, model.get().codebook);
    EXPECT_EQ(copy.get().name, "small");
    EXPECT_EQ(copy.get().gestureTransitionProb, 0.25);
    copy.gestures()[0]->b(0, 0) = 0.0;
    EXPECT_EQ(model.gestures()[0]->b(0, 0), 0.7);
}

TEST(RecognitionModelTest, AnEmptyModelClonesToAnEmptyModel) {
    const RecognitionModel copy = RecognitionModel().clone();
    EXPECT_TRUE(copy.get().gestures.empty());
    EXPECT_EQ(copy.get().recognitionHMM, nullptr);
}

TEST(RecognitionModelTest, BuildTakesSettingsWithoutTheirModels) {
    RecognitionModel model = smallModel();
    RecognitionModelHMM settings = model.get();
    Vesk::ML::LeftRightHMM stranger = Vesk::Test::smallGesture("stranger", 0, 0);
    settings.gestures = {&stranger};
    settings.modelTransitionProb = 1.0;
    model.build(settings);
    EXPECT_EQ(model.gestureNames(), (std::vector<std::string>{"right", "up"}));
    EXPECT_EQ(model.get().gestures[0], model.gestures()[0].get());
    EXPECT_EQ(model.get().gestureTransitionProb, 1.0);
}

}  // namespace
}  // namespace Vesk::Kit
