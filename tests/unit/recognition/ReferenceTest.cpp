// The reference that the library is compared with, itself against values worked out by hand and
// against the enumeration of all state paths.

#include <support/Random.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace Vesk::Test {
namespace {

using namespace Reference::Recognition;

Model twoStates() {
    Model model = leftRightModel(2, 2, 1);
    model.pi = {0.5, 0.25};
    model.a.flat = {0.5, 0.25, 0.125, 1};
    model.b.flat = {1, 0.5, 0.25, 2};
    return model;
}

TEST(RecognitionReference, ForwardAndBackwardOfTwoStatesByHand) {
    const Model model = twoStates();
    const Table alpha = forwardTable(model, {0, 1});
    // 0.5 * 1, 0.25 * 0.25; then (0.25 + 0.0078125) 0.5 and (0.125 + 0.0625) 2.
    EXPECT_EQ(alpha.flat, (std::vector<double>{0.5, 0.12890625, 0.0625, 0.375}));
    const Table beta = backwardTable(model, {0, 1});
    // 0.5 * 0.5 + 0.25 * 2 and 0.125 * 0.5 + 1 * 2.
    EXPECT_EQ(beta.flat, (std::vector<double>{0.75, 1, 2.0625, 1}));
    EXPECT_EQ(forwardProbability(model, {0, 1}), 0.50390625);
    EXPECT_EQ(gamma(model, 1, 1, alpha, beta), 0.375 / 0.50390625);
    EXPECT_EQ(forwardProbability(model, {}), 0.0);
}

TEST(RecognitionReference, ForwardProbabilityIsTheSumOverAllPaths) {
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const int N = random.integer(1, 3);
        const int M = random.integer(1, 4);
        Model model = generalModel(N, M);
        model.pi = randomRow(random, N, Parameters::Stochastic);
        model.a.flat = randomMatrix(random, N, N, Parameters::Stochastic).data;
        model.b.flat = randomMatrix(random, N, M, Parameters::Stochastic).data;
        const std::vector<int> o = random.symbols(random.integer(1, 5), M);
        const double expected = probabilityByEnumeration(model, o);
        EXPECT_NEAR(forwardProbability(model, o), expected, 1e-14 * expected);
    }
}

TEST(RecognitionReference, DivideGivesPlusZeroForAnyZero) {
    EXPECT_TRUE(bitEqual(0.0, divide(0.0, 0.0)));
    EXPECT_TRUE(bitEqual(0.0, divide(-0.0, -1.0)));
    EXPECT_TRUE(bitEqual(-0.5, divide(1.0, -2.0)));
}

TEST(RecognitionReference, ComposesTheWorkedLayout) {
    Model first = leftRightModel(3, 1, 1);
    Model second = leftRightModel(2, 1, 1);
    first.a.flat = {0.5, 0.5, 0, 0, 0.75, 0.25, 0, 0, 1};
    second.a.flat = {0.25, 0.75, 0, 1};
    first.b.flat = {1, 2, 3};
    second.b.flat = {4, 5};
    Recogniser model({first, second}, 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_EQ(model.pi, std::vector<double>(5, 0.2));
    EXPECT_EQ(model.a.at(3, 3), 0.25);
    for (const int j : {0, 1, 2, 4}) EXPECT_EQ(model.a.at(3, j), 0.1875);
    EXPECT_EQ(model.b.flat, (std::vector<double>{1, 2, 3, 4, 5}));
    EXPECT_EQ(model.gestureTransitionProb, 0.25);
}

TEST(RecognitionReference, ThrowsWhereATableWouldBeLeft) {
    Model wide = leftRightModel(1, 2, 1);
    Model first = leftRightModel(1, 1, 1);
    Recogniser model({first, wide}, 0.5);
    EXPECT_THROW(model.initialize(), std::out_of_range);
}

TEST(RecognitionReference, ChecksAndDescribes) {
    Model one = leftRightModel(1, 1, 0);
    one.name = "one";
    one.pi = {1};
    one.a.flat = {1};
    one.b.flat = {0.5};
    Recogniser model({one}, 0.5);
    std::ostringstream out;
    const Decision decision = model.check({0, 0}, out);
    EXPECT_EQ(decision.name, "one");
    EXPECT_EQ(decision.winner, 0);
    EXPECT_EQ(out.str(), "threshold = 0\nprob[0] = 0.125\ngamma = 0.5\n");
}

TEST(RecognitionReference, WritesAndReadsTheFileByHand) {
    const std::string text =
        "2.5 0 2\n0 90\n\nmodel\n1 2 1 0.5\n1\n0.5\n0.25 0.75\n0 1\n\n"
        "wave\n1 2 1 3\n1\n1\n0.125 0.875\n\n";
    Recogniser model;
    std::ostringstream out;
    ASSERT_TRUE(model.load(text, out));
    EXPECT_EQ(out.str(), "loading gesture 'wave'\n");
    EXPECT_EQ(model.proxFilterThreshold, 2.5f);
    EXPECT_FALSE(model.rotationAllowed);
    EXPECT_EQ(model.codebook, (std::vector<double>{0, 90}));
    EXPECT_EQ(model.vocab.flat, (std::vector<double>{0, 1}));
    ASSERT_EQ(model.gestures.size(), 1U);
    EXPECT_EQ(model.gestures[0].delta, 3);
    EXPECT_EQ(model.gestures[0].b.flat, (std::vector<double>{0.125, 0.875}));
    EXPECT_EQ(model.fileText(), text);
}

TEST(RecognitionReference, RefusesWhatAFileCannotHold) {
    std::ostringstream out;
    Recogniser many;
    EXPECT_THROW(many.load("1 1 4294967295", out), std::bad_alloc);
    Recogniser large;
    EXPECT_THROW(large.load("1 1 0 name 1025 1 1 1", out), std::bad_alloc);
}

TEST(RecognitionReference, WritesTheSceneByHand) {
    Recogniser model;
    EXPECT_EQ(model.sceneText(),
              "#VRML V2.0 utf8\n\nRecognitionModel {\n\tname \"\"\n\tnumStates 0\n"
              "\tvocabSize 0\n\tdimension 1 \n\tdelta -1 \n\tmodelTransitionProb 1\n"
              "\tinitialStateProbs [ ]\n\ttransitionProbs [ ]\n\temissionProbs [ ]\n"
              "\tvocab [ ]\n\tcodebook [ ]\n\tproxFilterThreshold 1\n\trotationAllowed TRUE\n"
              "\tgestures [ \n\t]\n}\n");
}

}  // namespace
}  // namespace Vesk::Test
