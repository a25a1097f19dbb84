#include <support/Capture.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <iostream>
#include <sstream>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::RecognitionModelHMM;

TEST(RecognitionPrint, WritesNothingWithoutACombinedModel) {
    RecognitionModelHMM model;
    Capture capture;
    model.print();
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(std::cout.precision(), 6);
}

TEST(RecognitionPrint, DumpsTheCombinedModelAndLeavesPrecisionThree) {
    GestureSet set;
    fill(set.add("g", 3, 2), {1, 0, 0}, {0.5, 0.5, 0, 0, 0.5, 0.5, 0, 0, 1},
         {1.0 / 3.0, 2.0 / 3.0, 0.00001, 1, 0.5, 0.5});
    RecognitionModelHMM model(set.pointers(), 0.5);
    model.setName("all");
    ASSERT_TRUE(model.initialize());
    Capture capture;
    model.print();
    EXPECT_EQ(capture.text(),
              "name: all\n"
              "numStates: 3\n"
              "vocabSize: 2\n"
              "Initial probs pi:\n"
              "0.333 0.333 0.333 \n"
              "\n"
              "Transition probs a:\n"
              "0.5 0.25 0.25 \n"
              "0.25 0.5 0.25 \n"
              "0 0 1 \n"
              "\n"
              "Emission probs b:\n"
              "0.333 0.667 \n"
              "\n"
              "1e-05 1 \n"
              "\n"
              "0.5 0.5 \n"
              "\n");
    EXPECT_EQ(std::cout.precision(), 3);
    EXPECT_EQ(capture.flushes(), 18);
}

TEST(RecognitionPrint, ShowsTheCombinedModelAndNotTheStagingFields) {
    GestureSet set;
    fill(set.add("g", 1, 1), {1}, {0.5}, {1});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    model.name = "staging";
    model.a(0, 0) = 0.75;
    Capture capture;
    model.print();
    EXPECT_EQ(capture.text(),
              "name: \nnumStates: 1\nvocabSize: 1\nInitial probs pi:\n1 \n\n"
              "Transition probs a:\n0.5 \n\nEmission probs b:\n1 \n\n");
}

/// A host's own model as the combined one.
class Loud : public HMM {
public:
    Loud() : HMM(1, 1) {}
    void print() override { std::cout << "loud\n"; }
};

TEST(RecognitionPrint, CallsTheCombinedModelsOwnPrint) {
    Loud loud;
    RecognitionModelHMM model;
    model.recognitionHMM = &loud;
    Capture capture;
    model.print();
    EXPECT_EQ(capture.text(), "loud\n");
}

TEST(RecognitionPrint, MatchesTheReferenceOnRandomModels) {
    for (std::uint64_t seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const Parameters kind = allParameterKinds[seed % 5];
        const GestureSet set = randomGestures(random, random.integer(1, 4), 4, 5, kind);
        RecognitionModelHMM model(set.pointers(), random.unit());
        model.setName("n" + std::to_string(seed));
        ASSERT_TRUE(model.initialize());
        std::ostringstream expected;
        recogniserOf(model).print(expected);
        Capture capture;
        model.print();
        EXPECT_EQ(Reference::Recognition::withoutNanSigns(expected.str()),
                  Reference::Recognition::withoutNanSigns(capture.text()));
    }
}

}  // namespace
}  // namespace Vesk::Test
