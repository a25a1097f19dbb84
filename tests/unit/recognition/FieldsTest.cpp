#include <vesk/recognition/RecognitionModelHMM.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::ML::RecognitionModelHMM;

TEST(RecognitionFields, ClassHasNoVirtualOperationsAndNoBase) {
    EXPECT_FALSE(std::is_polymorphic_v<RecognitionModelHMM>);
    // The first field stands at the object's start: neither a vtable pointer nor a base is before.
    EXPECT_EQ(offsetof(RecognitionModelHMM, fromParameters), 0U);
    EXPECT_TRUE(std::is_standard_layout_v<RecognitionModelHMM>);
}

TEST(RecognitionFields, HaveTheStatedTypes) {
    using M = RecognitionModelHMM;
    EXPECT_TRUE((std::is_same_v<decltype(M::fromParameters), bool>));
    EXPECT_TRUE((std::is_same_v<decltype(M::gestureTransitionProb), double>));
    EXPECT_TRUE((std::is_same_v<decltype(M::modelTransitionProb), double>));
    EXPECT_TRUE((std::is_same_v<decltype(M::name), std::string>));
    EXPECT_TRUE((std::is_same_v<decltype(M::numStates), unsigned int>));
    EXPECT_TRUE((std::is_same_v<decltype(M::vocabSize), unsigned int>));
    EXPECT_EQ(sizeof(M::numStates), 4U);
    EXPECT_TRUE((std::is_same_v<decltype(M::vocab), Vesk::Math::MatrixT<double>>));
    EXPECT_TRUE((std::is_same_v<decltype(M::pi), std::vector<double>>));
    EXPECT_TRUE((std::is_same_v<decltype(M::a), Vesk::Math::MatrixT<double>>));
    EXPECT_TRUE((std::is_same_v<decltype(M::b), Vesk::Math::MatrixT<double>>));
    EXPECT_TRUE((std::is_same_v<decltype(M::gestures), std::vector<HMM*>>));
    EXPECT_TRUE((std::is_same_v<decltype(M::codebook), std::vector<double>>));
    EXPECT_TRUE((std::is_same_v<decltype(M::proxFilterThreshold), float>));
    EXPECT_TRUE((std::is_same_v<decltype(M::rotationAllowed), bool>));
    EXPECT_TRUE((std::is_same_v<decltype(M::recognitionHMM), HMM*>));
}

TEST(RecognitionFields, FollowEachOtherWithoutAnythingBetween) {
    using M = RecognitionModelHMM;
    // Each field at the first place after its predecessor that its alignment allows.
    std::size_t end = 0;
    const auto place = [&end](std::size_t size, std::size_t alignment) {
        const std::size_t start = (end + alignment - 1) / alignment * alignment;
        end = start + size;
        return start;
    };
#define VESK_EXPECT_NEXT_FIELD(field) \
    EXPECT_EQ(place(sizeof(M::field), alignof(decltype(M::field))), offsetof(M, field))
    VESK_EXPECT_NEXT_FIELD(fromParameters);
    VESK_EXPECT_NEXT_FIELD(gestureTransitionProb);
    VESK_EXPECT_NEXT_FIELD(modelTransitionProb);
    VESK_EXPECT_NEXT_FIELD(name);
    VESK_EXPECT_NEXT_FIELD(numStates);
    VESK_EXPECT_NEXT_FIELD(vocabSize);
    VESK_EXPECT_NEXT_FIELD(vocab);
    VESK_EXPECT_NEXT_FIELD(pi);
    VESK_EXPECT_NEXT_FIELD(a);
    VESK_EXPECT_NEXT_FIELD(b);
    VESK_EXPECT_NEXT_FIELD(gestures);
    VESK_EXPECT_NEXT_FIELD(codebook);
    VESK_EXPECT_NEXT_FIELD(proxFilterThreshold);
    VESK_EXPECT_NEXT_FIELD(rotationAllowed);
    VESK_EXPECT_NEXT_FIELD(recognitionHMM);
#undef VESK_EXPECT_NEXT_FIELD
    EXPECT_EQ(end, sizeof(M));
}

#if defined(__GLIBCXX__) && defined(__x86_64__)
TEST(RecognitionFields, StandAtTheseBytesOn64BitLinux) {
    using M = RecognitionModelHMM;
    EXPECT_EQ(offsetof(M, gestureTransitionProb), 8U);
    EXPECT_EQ(offsetof(M, modelTransitionProb), 16U);
    EXPECT_EQ(offsetof(M, name), 24U);
    EXPECT_EQ(offsetof(M, numStates), 56U);
    EXPECT_EQ(offsetof(M, vocabSize), 60U);
    EXPECT_EQ(offsetof(M, vocab), 64U);
    EXPECT_EQ(offsetof(M, pi), 96U);
    EXPECT_EQ(offsetof(M, a), 120U);
    EXPECT_EQ(offsetof(M, b), 152U);
    EXPECT_EQ(offsetof(M, gestures), 184U);
    EXPECT_EQ(offsetof(M, codebook), 208U);
    EXPECT_EQ(offsetof(M, proxFilterThreshold), 232U);
    EXPECT_EQ(offsetof(M, rotationAllowed), 236U);
    EXPECT_EQ(offsetof(M, recognitionHMM), 240U);
    EXPECT_EQ(sizeof(M), 248U);
}
#endif

void expectDefaultsBesidesGesturesAndProbabilities(const RecognitionModelHMM& model) {
    EXPECT_FALSE(model.fromParameters);
    EXPECT_EQ(model.name, "");
    EXPECT_EQ(model.numStates, 0U);
    EXPECT_EQ(model.vocabSize, 0U);
    EXPECT_EQ(model.vocab.rows, 0);
    EXPECT_EQ(model.vocab.cols, 0);
    EXPECT_TRUE(model.vocab.data.empty());
    EXPECT_TRUE(model.pi.empty());
    EXPECT_EQ(model.a.rows, 0);
    EXPECT_EQ(model.a.cols, 0);
    EXPECT_TRUE(model.a.data.empty());
    EXPECT_EQ(model.b.rows, 0);
    EXPECT_EQ(model.b.cols, 0);
    EXPECT_TRUE(model.b.data.empty());
    EXPECT_TRUE(model.codebook.empty());
    EXPECT_EQ(model.proxFilterThreshold, 1.0f);
    EXPECT_TRUE(model.rotationAllowed);
    EXPECT_EQ(model.recognitionHMM, nullptr);
}

TEST(RecognitionFields, DefaultConstructorSetsTheDefaults) {
    const RecognitionModelHMM model;
    expectDefaultsBesidesGesturesAndProbabilities(model);
    EXPECT_EQ(model.gestureTransitionProb, 1.0);
    EXPECT_EQ(model.modelTransitionProb, 1.0);
    EXPECT_TRUE(model.gestures.empty());
}

TEST(RecognitionFields, SecondConstructorTakesModelsAndProbability) {
    HMM first(2, 3);
    HMM second(4, 5);
    HMM third(1, 1);
    std::vector<HMM*> models{&first, &second, &third};
    const RecognitionModelHMM model(models, 0.4);
    expectDefaultsBesidesGesturesAndProbabilities(model);
    EXPECT_EQ(model.gestures, models);
    EXPECT_EQ(model.modelTransitionProb, 0.4);
    // (1 - 0.4) / 3: 0.6 as the difference of doubles, a third of it.
    EXPECT_EQ(model.gestureTransitionProb, (1.0 - 0.4) / 3.0);
    EXPECT_DOUBLE_EQ(model.gestureTransitionProb, 0.2);
}

TEST(RecognitionFields, SecondConstructorWithExactlyOneLeavesTheGestureShareAtOne) {
    HMM gesture(2, 3);
    const RecognitionModelHMM model({&gesture, &gesture}, 1.0);
    EXPECT_EQ(model.modelTransitionProb, 1.0);
    EXPECT_EQ(model.gestureTransitionProb, 1.0);
}

TEST(RecognitionFields, SecondConstructorCopiesThePointersOnly) {
    HMM gesture(2, 3);
    std::vector<HMM*> models{&gesture};
    const RecognitionModelHMM model(models, 0.5);
    models.clear();
    ASSERT_EQ(model.gestures.size(), 1U);
    EXPECT_EQ(model.gestures[0], &gesture);
    gesture.name = "renamed";
    EXPECT_EQ(model.gestures[0]->name, "renamed");
}

TEST(RecognitionFields, SecondConstructorDoesNotBuildTheCombinedModel) {
    HMM gesture(2, 3);
    const RecognitionModelHMM model({&gesture}, 0.5);
    EXPECT_EQ(model.recognitionHMM, nullptr);
    EXPECT_EQ(model.numStates, 0U);
}

TEST(RecognitionFields, SecondConstructorWithoutModelsDividesByZero) {
    const RecognitionModelHMM model({}, 0.5);
    EXPECT_EQ(model.gestureTransitionProb, std::numeric_limits<double>::infinity());
}

}  // namespace
