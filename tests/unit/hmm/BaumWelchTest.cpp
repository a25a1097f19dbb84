#include <support/Capture.h>
#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

using Vesk::Math::VectorT;
using Vesk::ML::HMM;
using Vesk::Test::bitEqual;
using Vesk::Test::matrixOf;
using Vesk::Test::modelsEqual;

constexpr double infinity = std::numeric_limits<double>::infinity();

HMM weather() {
    HMM model(2, 2);
    model.pi = {0.5, 0.5};
    model.a = matrixOf({{0.5, 0.5}, {0.25, 0.75}});
    model.b = matrixOf({{0.5, 0.5}, {0.25, 0.75}});
    return model;
}

/// One state that emits two symbols equally often; every number of its training is exact.
HMM coin() {
    HMM model(1, 2);
    model.pi = {1.0};
    model.a = matrixOf({{0.5}});
    model.b = matrixOf({{0.5, 0.5}});
    return model;
}

HMM certain() {
    HMM model(1, 1);
    model.pi = {1.0};
    model.a = matrixOf({{1.0}});
    model.b = matrixOf({{1.0}});
    return model;
}

TEST(HmmBaumWelch, WorkedExampleOfOneState) {
    // All posteriors are 1. a = 2/2; b(0, 0) = 2/1, b(0, 1) = 1/2. The reference value is the
    // 0.0 past the end, the candidate 1 * 2 * 1 * 2 * 1 * 1/2 = 2: adopted.
    HMM model = coin();
    model.baumWelch({0, 0, 1}, 3, 1);
    EXPECT_TRUE(bitEqual({1.0}, model.pi));
    EXPECT_TRUE(bitEqual(matrixOf({{1.0}}), model.a));
    EXPECT_TRUE(bitEqual(matrixOf({{2.0, 0.5}}), model.b));
}

TEST(HmmBaumWelch, WorkedExampleOfTwoStates) {
    // For 0, 1: gamma(., 0) = {20, 11}/31, gamma(., 1) = {10, 21}/31, and
    // xi(., ., 0) = {8, 12; 2, 9}/31. Hence
    // pi = {20, 11}/31, a = {8/20, 12/20; 2/11, 9/11},
    // b(0, .) = {20/10, 10/20}, b(1, .) = {11/21, 21/11}.
    // The reference value is alpha(1, 0) = 1/8; the candidate is larger than 20/31 * 2 * 3/5.
    HMM model = weather();
    model.baumWelch({0, 1}, 2, 1);
    const std::vector<double> expected = {20.0 / 31, 11.0 / 31, 0.4, 0.6,       2.0 / 11,
                                          9.0 / 11,  2.0,       0.5, 11.0 / 21, 21.0 / 11};
    std::vector<double> actual = model.pi;
    actual.insert(actual.end(), model.a.data.begin(), model.a.data.end());
    actual.insert(actual.end(), model.b.data.begin(), model.b.data.end());
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_NEAR(actual[i], expected[i], 1e-15);
    }
}

TEST(HmmBaumWelch, NoIterationsLeaveTheModel) {
    HMM model = weather();
    model.baumWelch({0, 1, 1, 0}, 4, 0);
    EXPECT_TRUE(modelsEqual(weather(), model));
}

TEST(HmmBaumWelch, NoSymbolsLeaveTheModel) {
    for (int T : {0, -1, -5}) {
        for (int maxIterations : {-1, 0, 1, 10}) {
            SCOPED_TRACE(T);
            SCOPED_TRACE(maxIterations);
            HMM model = weather();
            model.baumWelch({0, 1}, T, maxIterations);
            EXPECT_TRUE(modelsEqual(weather(), model));
            model.baumWelch({}, T, maxIterations);
            EXPECT_TRUE(modelsEqual(weather(), model));
        }
    }
}

TEST(HmmBaumWelch, CertainModelOnOneSymbolGetsAnInfiniteEmission) {
    // No transition is seen: 0/0 is 0. The one symbol is matched once and unmatched never: 1/0.
    // The reference value is 0.0, the candidate 1 * infinity.
    HMM model = certain();
    model.baumWelch({0}, 1, 1);
    EXPECT_TRUE(bitEqual({1.0}, model.pi));
    EXPECT_TRUE(bitEqual(matrixOf({{0.0}}), model.a));
    EXPECT_TRUE(bitEqual(matrixOf({{infinity}}), model.b));
}

TEST(HmmBaumWelch, NotANumberIsNotAdopted) {
    // After the infinity, gamma is infinity / infinity: the next candidate is NaN.
    HMM once = certain();
    once.baumWelch({0}, 1, 1);
    for (int maxIterations : {2, 100, -1}) {
        SCOPED_TRACE(maxIterations);
        HMM model = certain();
        model.baumWelch({0}, 1, maxIterations);
        EXPECT_TRUE(modelsEqual(once, model));
    }
}

TEST(HmmBaumWelch, NegativeBoundGoesOnUntilTheCandidateStopsBeatingTheReference) {
    // Two steps in one state: b becomes infinite, then NaN, which ends it.
    for (int maxIterations : {-1, -7, std::numeric_limits<int>::min()}) {
        SCOPED_TRACE(maxIterations);
        HMM model = certain();
        model.baumWelch({0, 0}, 2, maxIterations);
        EXPECT_TRUE(bitEqual({1.0}, model.pi));
        EXPECT_TRUE(bitEqual(matrixOf({{1.0}}), model.a));
        EXPECT_TRUE(bitEqual(matrixOf({{infinity}}), model.b));
    }
}

TEST(HmmBaumWelch, SymbolThatNeverOccursGetsZero) {
    HMM model(2, 3);
    model.pi = {0.5, 0.5};
    model.a = matrixOf({{0.5, 0.5}, {0.25, 0.75}});
    model.b = matrixOf({{0.25, 0.5, 0.25}, {0.25, 0.25, 0.5}});
    model.baumWelch({0, 1, 0, 1}, 4, 1);
    EXPECT_TRUE(bitEqual(0.0, model.b(0, 2)));
    EXPECT_TRUE(bitEqual(0.0, model.b(1, 2)));
    EXPECT_GT(model.b(0, 0), 0.0);
}

TEST(HmmBaumWelch, SymbolThatAlwaysOccursGetsInfinity) {
    HMM model = weather();
    model.baumWelch({1, 1, 1}, 3, 1);
    EXPECT_TRUE(bitEqual(matrixOf({{0.0, infinity}, {0.0, infinity}}), model.b));
}

TEST(HmmBaumWelch, ImpossibleSequenceLeavesTheModel) {
    // Every posterior is 0 by the guarded division, so candidate and reference are both 0.
    HMM model(3, 2);
    model.baumWelch({0, 1, 0}, 3, 5);
    EXPECT_TRUE(modelsEqual(HMM(3, 2), model));
}

TEST(HmmBaumWelch, EqualCandidateIsNotAdopted) {
    // A model that starts in state 0 and cannot show symbol 1 from there: alpha is 0 in state 1
    // at time 0 and everywhere later, candidate 0 is not greater than reference 0.
    HMM model(2, 2);
    model.pi = {1.0, 0.0};
    model.a = matrixOf({{1, 0}, {0, 1}});
    model.b = matrixOf({{1, 0}, {1, 0}});
    const HMM before = model;
    model.baumWelch({0, 1}, 2, 3);
    EXPECT_TRUE(modelsEqual(before, model));
}

TEST(HmmBaumWelch, ReferenceIsTheFirstColumnOfTheStatesAfterTheFirst) {
    // State 0 is never left and never entered from elsewhere; states 1 and 2 are impossible later
    // because they cannot show symbol 1. All posteriors are those of state 0:
    // pi = {1, 0, 0}, a(0, 0) = 2/2, b(0, .) = {2/1, 1/2}; the candidate is
    // 1 * 2 * 1 * 2 * 1 * 1/2 = 2.
    // The reference is alpha(1, 0) + alpha(2, 0) = pi[1] + pi[2], whatever the likelihood
    // 1/64 is worth.
    const auto model = [](double first, double second) {
        HMM result(3, 2);
        result.pi = {0.125, first, second};
        result.a = matrixOf({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
        result.b = matrixOf({{0.5, 0.5}, {1, 0}, {1, 0}});
        return result;
    };
    const VectorT<int> o = {0, 0, 1};

    HMM below = model(1.0, 0.5);  // 1.5 < 2
    below.baumWelch(o, 3, 1);
    EXPECT_TRUE(bitEqual({1.0, 0.0, 0.0}, below.pi));
    EXPECT_TRUE(bitEqual(matrixOf({{1, 0, 0}, {0, 0, 0}, {0, 0, 0}}), below.a));
    EXPECT_TRUE(bitEqual(matrixOf({{2, 0.5}, {0, 0}, {0, 0}}), below.b));

    HMM equal = model(1.0, 1.0);  // 2 = 2
    equal.baumWelch(o, 3, 1);
    EXPECT_TRUE(modelsEqual(model(1.0, 1.0), equal));

    HMM above = model(1.0, 1.5);  // 2.5 > 2
    above.baumWelch(o, 3, 1);
    EXPECT_TRUE(modelsEqual(model(1.0, 1.5), above));
}

TEST(HmmBaumWelch, FirstStatesInitialValueIsNotInTheReference) {
    // One state: the reference is the single term past the end, 0.0, however large alpha is.
    HMM model = coin();
    model.pi = {1e6};
    model.baumWelch({0, 0, 1}, 3, 1);
    EXPECT_TRUE(bitEqual({1.0}, model.pi));
    EXPECT_TRUE(bitEqual(matrixOf({{2.0, 0.5}}), model.b));
}

TEST(HmmBaumWelch, BoundCountsAdoptedIterations) {
    HMM bySteps = weather();
    for (int steps = 1; steps <= 4; ++steps) {
        SCOPED_TRACE(steps);
        bySteps.baumWelch({0, 1, 1, 0, 1}, 5, 1);
        HMM atOnce = weather();
        atOnce.baumWelch({0, 1, 1, 0, 1}, 5, steps);
        EXPECT_TRUE(modelsEqual(bySteps, atOnce));
    }
}

TEST(HmmBaumWelch, UsesTheFirstTSymbolsOnly) {
    HMM whole = weather();
    whole.baumWelch({0, 1, 1}, 3, 2);
    HMM part = weather();
    part.baumWelch({0, 1, 1, 0, 0, 0}, 3, 2);
    EXPECT_TRUE(modelsEqual(whole, part));
}

TEST(HmmBaumWelch, AdoptedParametersHaveTheModelsShapes) {
    HMM model = coin();
    model.pi = {1.0, 99.0};
    model.a = matrixOf({{0.5, 99}, {99, 99}});
    model.b = matrixOf({{0.5, 0.5, 99}, {99, 99, 99}});
    HMM untouched = model;
    model.baumWelch({0, 0, 1}, 3, 1);
    EXPECT_TRUE(bitEqual({1.0}, model.pi));
    EXPECT_TRUE(bitEqual(matrixOf({{1.0}}), model.a));
    EXPECT_TRUE(bitEqual(matrixOf({{2.0, 0.5}}), model.b));

    const HMM before = untouched;
    untouched.baumWelch({0, 0, 1}, 3, 0);
    EXPECT_TRUE(modelsEqual(before, untouched));
}

TEST(HmmBaumWelch, TouchesNothingElse) {
    HMM model = weather();
    model.name = "rain";
    model.vocab = matrixOf({{3}, {4}});
    model.vocabValues = {5, 6};
    HMM sampled = model;
    sampled.needsSeed = false;
    model.baumWelch({0, 1, 1}, 3, 2);
    sampled.baumWelch({0, 1, 1}, 3, 2);
    EXPECT_EQ(model.name, "rain");
    EXPECT_EQ(model.numStates, 2U);
    EXPECT_EQ(model.vocabSize, 2U);
    EXPECT_EQ(model.dimension, 1);
    EXPECT_TRUE(bitEqual(matrixOf({{3}, {4}}), model.vocab));
    EXPECT_TRUE(bitEqual({5, 6}, model.vocabValues));
    EXPECT_TRUE(model.needsSeed);
    EXPECT_FALSE(sampled.needsSeed);
    EXPECT_FALSE(bitEqual(weather().pi, model.pi));
}

TEST(HmmBaumWelch, PrintsNothing) {
    const Vesk::Test::Capture capture;
    HMM model = weather();
    model.baumWelch({0, 1, 1, 0}, 4, 3);
    EXPECT_EQ(capture.text(), "");
    EXPECT_FALSE(bitEqual(weather().b, model.b));
}

TEST(HmmBaumWelch, LeavesTheCallersSequence) {
    HMM model = weather();
    const VectorT<int> o = {0, 1, 1};
    model.baumWelch(o, 3, 2);
    EXPECT_EQ(o, (VectorT<int>{0, 1, 1}));
}

}  // namespace
