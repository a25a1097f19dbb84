#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <new>
#include <vector>

namespace {

using Vesk::Math::MatrixT;
using Vesk::ML::LeftRightHMM;
using namespace Vesk::Test;

constexpr double inf = std::numeric_limits<double>::infinity();

/// Two states, two symbols, every number below a sum of few powers of two.
Reference::LeftRightModel twoStates() {
    Reference::LeftRightModel model = Reference::makeLeftRight(2, 2, 1);
    model.pi = {1.0, 0.0};
    model.a = {{0.5, 0.5}, {0.0, 1.0}};
    model.b = {{0.75, 0.25}, {0.25, 0.75}};
    return model;
}

/// State 0 shows symbol 0 only, state 1 symbol 1 only; symbol 2 never comes.
Reference::LeftRightModel strictModel() {
    Reference::LeftRightModel model = Reference::makeLeftRight(2, 3, 1);
    model.pi = {1.0, 0.0};
    model.a = {{0.5, 0.5}, {0.0, 1.0}};
    model.b = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}};
    return model;
}

// Worked example, O = 1 1:
//   alpha before scaling at t = 0: 1 * 0.25 = 0.25 and 0; scale[0] = 0.25; alpha = (1, 0).
//   t = 1: (1 * 0.5) * 0.25 = 0.125 and (1 * 0.5) * 0.75 = 0.375; scale[1] = 0.5;
//          alpha = (0.25, 0.75).
//   beta at t = 1: 1 / 0.5 = 2.
//   t = 0: (2 * 0.5 * 0.25 + 2 * 0.5 * 0.75) / 0.25 = 4 and (0 + 2 * 1 * 0.75) / 0.25 = 6.

TEST(LeftRightScaledForward, WorkedExample) {
    LeftRightHMM model = libraryModel(twoStates());
    std::vector<double> scale(2, 9.0);
    const auto alpha = model.forwardProcWithScale({1, 1}, 2, scale);
    EXPECT_TRUE(bitEqual(matrixOf({{1.0, 0.25}, {0.0, 0.75}}), alpha));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.5}, scale));
}

TEST(LeftRightScaledBackward, WorkedExample) {
    LeftRightHMM model = libraryModel(twoStates());
    std::vector<double> scale = {0.25, 0.5};
    const auto beta = model.backwardProcWithScale({1, 1}, 2, scale);
    EXPECT_TRUE(bitEqual(matrixOf({{4.0, 2.0}, {6.0, 2.0}}), beta));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.5}, scale));
}

TEST(LeftRightScaledProbability, WorkedExample) {
    LeftRightHMM model = libraryModel(twoStates());
    std::vector<double> scale(2, 9.0);
    const double log = model.forwardProbabilityWithScale({1, 1}, 2, scale);
    EXPECT_TRUE(bitEqual(std::log(0.25) + std::log(0.5), log));
    EXPECT_NEAR(log, std::log(0.125), 1e-15);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.5}, scale));
    EXPECT_TRUE(bitEqual(log, model.logLikelihood({1, 1})));
}

TEST(LeftRightScaledPasses, WorkOnTheGivenModelAndNotOnTheObjects) {
    const Reference::LeftRightModel given = twoStates();
    LeftRightHMM object(3, 5, 0);
    const LeftRightHMM before = object;
    std::vector<double> scale(2, 9.0);
    const auto a = matrixOf(given.a);
    const auto b = matrixOf(given.b);
    EXPECT_TRUE(bitEqual(matrixOf({{1.0, 0.25}, {0.0, 0.75}}),
                         object.forwardProcWithScaleHMM({1, 1}, 2, scale, 2, given.pi, a, b)));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.5}, scale));
    EXPECT_TRUE(bitEqual(matrixOf({{4.0, 2.0}, {6.0, 2.0}}),
                         object.backwardProcWithScaleHMM({1, 1}, 2, scale, 2, given.pi, a, b)));
    scale = {9.0, 9.0};
    EXPECT_TRUE(bitEqual(std::log(0.25) + std::log(0.5), object.forwardProbabilityWithScaleHMM(
                                                             {1, 1}, 2, scale, 2, given.pi, a, b)));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.5}, scale));
    EXPECT_TRUE(sameModel(before, object));
}

TEST(LeftRightScaledBackward, DoesNotUseThePiItIsGiven) {
    const Reference::LeftRightModel given = twoStates();
    LeftRightHMM object(1, 1, 0);
    std::vector<double> scale = {0.25, 0.5};
    for (const std::vector<double>& pi :
         {std::vector<double>{0.0, 1.0}, {inf, -inf}, {std::nan(""), 5.0}}) {
        EXPECT_TRUE(bitEqual(matrixOf({{4.0, 2.0}, {6.0, 2.0}}),
                             object.backwardProcWithScaleHMM(
                                 {1, 1}, 2, scale, 2, pi, matrixOf(given.a), matrixOf(given.b))));
    }
}

TEST(LeftRightScaledPasses, UseTheLeadingStatesWhereNIsSmallerThanTheTables) {
    const Reference::LeftRightModel small = twoStates();
    Reference::LeftRightModel large = Reference::makeLeftRight(3, 4, 1);
    large.pi = {1.0, 0.0, 7.0};
    large.a = {{0.5, 0.5, 7.0}, {0.0, 1.0, 7.0}, {7.0, 7.0, 7.0}};
    large.b = {{0.75, 0.25, 7.0, 7.0}, {0.25, 0.75, 7.0, 7.0}, {7.0, 7.0, 7.0, 7.0}};
    LeftRightHMM object(1, 1, 0);
    std::vector<double> scale(2);
    EXPECT_TRUE(bitEqual(matrixOf({{1.0, 0.25}, {0.0, 0.75}}),
                         object.forwardProcWithScaleHMM({1, 1}, 2, scale, 2, large.pi,
                                                        matrixOf(large.a), matrixOf(large.b))));
    EXPECT_TRUE(bitEqual(matrixOf({{4.0, 2.0}, {6.0, 2.0}}),
                         object.backwardProcWithScaleHMM({1, 1}, 2, scale, 2, large.pi,
                                                         matrixOf(large.a), matrixOf(large.b))));
}

TEST(LeftRightScaledPasses, OneStateThatAlwaysShowsTheSymbolScalesByOne) {
    LeftRightHMM model(1, 3, 0);
    model.pi = {1.0};
    model.a.data = {1.0};
    model.b.data = {0.0, 1.0, 0.0};
    for (const int T : {1, 2, 7, 50}) {
        const std::vector<int> O(static_cast<std::size_t>(T), 1);
        std::vector<double> scale(O.size(), 9.0);
        EXPECT_TRUE(bitEqual(0.0, model.forwardProbabilityWithScale(O, T, scale)));
        EXPECT_TRUE(bitEqual(std::vector<double>(O.size(), 1.0), scale));
        EXPECT_TRUE(bitEqual(std::vector<double>(O.size(), 1.0),
                             model.forwardProcWithScale(O, T, scale).data));
        EXPECT_TRUE(bitEqual(std::vector<double>(O.size(), 1.0),
                             model.backwardProcWithScale(O, T, scale).data));
    }
}

TEST(LeftRightScaledPasses, OneStepFillsOneColumn) {
    LeftRightHMM model = libraryModel(twoStates());
    std::vector<double> scale(1, 9.0);
    EXPECT_TRUE(bitEqual(matrixOf({{1.0}, {0.0}}), model.forwardProcWithScale({0}, 1, scale)));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.75}, scale));
    EXPECT_TRUE(bitEqual(matrixOf({{1.0 / 0.75}, {1.0 / 0.75}}),
                         model.backwardProcWithScale({0}, 1, scale)));
}

TEST(LeftRightScaledPasses, EqualBeginningsGiveEqualColumnsAndScales) {
    LeftRightHMM model = libraryModel(twoStates());
    const std::vector<int> first = {0, 1, 1, 0, 0, 1};
    const std::vector<int> second = {0, 1, 1, 0, 1, 0};
    std::vector<double> firstScale(6);
    std::vector<double> secondScale(6);
    const auto firstAlpha = model.forwardProcWithScale(first, 6, firstScale);
    const auto secondAlpha = model.forwardProcWithScale(second, 6, secondScale);
    for (int t = 0; t < 4; ++t) {
        for (int i = 0; i < 2; ++i) {
            EXPECT_TRUE(bitEqual(firstAlpha(i, t), secondAlpha(i, t))) << i << " " << t;
        }
        EXPECT_TRUE(bitEqual(firstScale[static_cast<std::size_t>(t)],
                             secondScale[static_cast<std::size_t>(t)]));
    }
    EXPECT_NE(firstScale[4], secondScale[4]);
}

TEST(LeftRightScaledPasses, UseTheFirstTSymbolsAndScalesOnly) {
    LeftRightHMM model = libraryModel(twoStates());
    std::vector<double> scale = {9.0, 8.0, 7.0, 6.0};
    EXPECT_TRUE(bitEqual(matrixOf({{1.0, 0.25}, {0.0, 0.75}}),
                         model.forwardProcWithScale({1, 1, 0, 0}, 2, scale)));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.5, 7.0, 6.0}, scale));
    EXPECT_TRUE(bitEqual(matrixOf({{4.0, 2.0}, {6.0, 2.0}}),
                         model.backwardProcWithScale({1, 1, 0, 0}, 2, scale)));
    scale = {9.0, 8.0, 7.0, 6.0};
    model.forwardProbabilityWithScale({1, 1, 0, 0}, 2, scale);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.5, 7.0, 6.0}, scale));
}

TEST(LeftRightScaledPasses, LeaveTheModelAndTheCallersSequenceAlone) {
    LeftRightHMM model = libraryModel(twoStates());
    const LeftRightHMM before = model;
    const std::vector<int> O = {1, 0, 1};
    std::vector<double> scale(3);
    const Capture capture;
    model.forwardProcWithScale(O, 3, scale);
    model.backwardProcWithScale(O, 3, scale);
    model.forwardProbabilityWithScale(O, 3, scale);
    model.logLikelihood(O);
    EXPECT_EQ(O, (std::vector<int>{1, 0, 1}));
    EXPECT_TRUE(sameModel(before, model));
    EXPECT_EQ(capture.text(), "");
}

TEST(LeftRightScaledBackward, TakesWhateverScalesItIsGiven) {
    // Not the forward pass's: beta(1) = 1 / 4, beta(0) = (0.25 * ...) / 0.5.
    LeftRightHMM model = libraryModel(twoStates());
    std::vector<double> scale = {0.5, 4.0};
    EXPECT_TRUE(bitEqual(matrixOf({{0.25, 0.25}, {0.375, 0.25}}),
                         model.backwardProcWithScale({1, 1}, 2, scale)));
}

// T below 1

TEST(LeftRightScaledProbability, BelowOneStepIsZeroAndTouchesNothing) {
    LeftRightHMM model = libraryModel(twoStates());
    const Reference::LeftRightModel given = twoStates();
    for (const int T : {0, -1, -3, -2147483647 - 1}) {
        std::vector<double> scale = {9.0, 8.0};
        EXPECT_TRUE(bitEqual(0.0, model.forwardProbabilityWithScale({1, 1}, T, scale)));
        EXPECT_TRUE(bitEqual(
            0.0, model.forwardProbabilityWithScaleHMM({1, 1}, T, scale, 2, given.pi,
                                                      matrixOf(given.a), matrixOf(given.b))));
        EXPECT_TRUE(bitEqual(std::vector<double>{9.0, 8.0}, scale));
        std::vector<double> none;
        EXPECT_TRUE(bitEqual(0.0, model.forwardProbabilityWithScale({}, T, none)));
        EXPECT_TRUE(none.empty());
    }
    EXPECT_TRUE(bitEqual(0.0, model.logLikelihood({})));
}

TEST(LeftRightScaledPasses, BelowOneStepGiveAnEmptyTable) {
    LeftRightHMM model = libraryModel(twoStates());
    const Reference::LeftRightModel given = twoStates();
    for (const int T : {0, -3}) {
        std::vector<double> scale;
        for (const auto& table :
             {model.forwardProcWithScale({}, T, scale), model.backwardProcWithScale({}, T, scale),
              model.forwardProcWithScaleHMM({}, T, scale, 2, given.pi, matrixOf(given.a),
                                            matrixOf(given.b)),
              model.backwardProcWithScaleHMM({}, T, scale, 2, given.pi, matrixOf(given.a),
                                             matrixOf(given.b))}) {
            EXPECT_EQ(table.rows, 2);
            EXPECT_EQ(table.cols, 0);
            EXPECT_TRUE(table.data.empty());
        }
        EXPECT_TRUE(scale.empty());
    }
}

TEST(LeftRightScaledPasses, WithoutStatesEveryScaleIsZero) {
    LeftRightHMM object(1, 2, 0);
    std::vector<double> scale = {9.0, 9.0};
    const MatrixT<double> a;
    const MatrixT<double> b(0, 2);
    const auto alpha = object.forwardProcWithScaleHMM({0, 1}, 2, scale, 0, {}, a, b);
    EXPECT_EQ(alpha.rows, 0);
    EXPECT_EQ(alpha.cols, 2);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0, 0.0}, scale));
    EXPECT_TRUE(
        bitEqual(-inf, object.forwardProbabilityWithScaleHMM({0, 1}, 2, scale, 0, {}, a, b)));
}

TEST(LeftRightScaledPasses, ANegativeNumberOfStatesIsBadAlloc) {
    LeftRightHMM object(1, 2, 0);
    std::vector<double> scale(2);
    const MatrixT<double> a;
    const MatrixT<double> b(0, 2);
    EXPECT_THROW(object.forwardProcWithScaleHMM({0, 1}, 2, scale, -1, {}, a, b), std::bad_alloc);
    EXPECT_THROW(object.backwardProcWithScaleHMM({0, 1}, 2, scale, -1, {}, a, b), std::bad_alloc);
}

// Impossible sequences

TEST(LeftRightScaledForward, AnImpossibleSymbolZeroesItsColumnAndAllLaterOnes) {
    LeftRightHMM model = libraryModel(strictModel());
    std::vector<double> scale(4, 9.0);
    const auto alpha = model.forwardProcWithScale({0, 2, 0, 1}, 4, scale);
    EXPECT_TRUE(bitEqual(matrixOf({{1, 0, 0, 0}, {0, 0, 0, 0}}), alpha));
    EXPECT_TRUE(bitEqual(std::vector<double>{1, 0, 0, 0}, scale));
}

TEST(LeftRightScaledProbability, AnImpossibleSequenceIsMinusInfinity) {
    LeftRightHMM model = libraryModel(strictModel());
    for (const std::vector<int>& O : Sequences{{2}, {1}, {0, 2}, {0, 1, 0}, {0, 2, 0, 1}}) {
        std::vector<double> scale(O.size());
        EXPECT_TRUE(bitEqual(
            -inf, model.forwardProbabilityWithScale(O, static_cast<int>(O.size()), scale)));
        EXPECT_TRUE(bitEqual(-inf, model.logLikelihood(O)));
    }
}

TEST(LeftRightScaledBackward, ZeroScaleAtTheEndGivesInfinityAndNanBefore) {
    LeftRightHMM model = libraryModel(strictModel());
    // O = 0 2: scale = (1, 0). beta(1) = 1 / 0; before it inf * 0.5 * 0 is not a number.
    std::vector<double> scale = {1.0, 0.0};
    const auto beta = model.backwardProcWithScale({0, 2}, 2, scale);
    EXPECT_TRUE(bitEqual(inf, beta(0, 1)));
    EXPECT_TRUE(bitEqual(inf, beta(1, 1)));
    EXPECT_TRUE(std::isnan(beta(0, 0)));
    EXPECT_TRUE(std::isnan(beta(1, 0)));
}

TEST(LeftRightScaledBackward, DividesInnerStepsPlainly) {
    LeftRightHMM model = libraryModel(strictModel());
    // scale = (0, 1): beta(1) = 1. Row 0 at t = 0, symbol 1 next: 1 * 0.5 * 1 = 0.5, over 0.
    // With symbol 2 next both sums are 0, and 0 / 0 is not a number here, unlike in divide.
    std::vector<double> scale = {0.0, 1.0};
    EXPECT_TRUE(bitEqual(inf, model.backwardProcWithScale({0, 1}, 2, scale)(0, 0)));
    EXPECT_TRUE(std::isnan(model.backwardProcWithScale({0, 2}, 2, scale)(0, 0)));
}

TEST(LeftRightScaledForward, MultipliesZeroTransitionsAndDoesNotSkipThem) {
    // The step from state 1 back to state 0 has probability 0; with an infinite alpha there the
    // product is not a number.
    Reference::LeftRightModel reference = twoStates();
    reference.pi = {1.0, inf};
    LeftRightHMM model = libraryModel(reference);
    std::vector<double> scale(2);
    const auto alpha = model.forwardProcWithScale({1, 1}, 2, scale);
    // t = 0: 0.25 and inf over inf: 0 and NaN; t = 1: NaN everywhere, through the zero too.
    EXPECT_TRUE(bitEqual(0.0, alpha(0, 0)));
    EXPECT_TRUE(std::isnan(alpha(1, 0)));
    EXPECT_TRUE(std::isnan(alpha(0, 1)));
    EXPECT_TRUE(bitEqual(inf, scale[0]));
}

TEST(LeftRightScaledForward, NegativeZeroIsDividedToPositiveZero) {
    Reference::LeftRightModel reference = twoStates();
    reference.pi = {1.0, -0.0};
    LeftRightHMM model = libraryModel(reference);
    std::vector<double> scale(1);
    EXPECT_TRUE(bitEqual(matrixOf({{1.0}, {0.0}}), model.forwardProcWithScale({1}, 1, scale)));
}

TEST(LeftRightScaledForward, StartsEverySumAtPositiveZero) {
    LeftRightHMM model(1, 1, 0);
    model.pi = {-0.0};
    model.a.data = {1.0};
    model.b.data = {1.0};
    std::vector<double> scale(2, 9.0);
    const auto alpha = model.forwardProcWithScale({0, 0}, 2, scale);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0, 0.0}, scale));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0, 0.0}, alpha.data));
}

// Long sequences

TEST(LeftRightScaledProbability, AHundredThousandSymbolsDoNotUnderflow) {
    LeftRightHMM model = libraryModel(twoStates());
    const int T = 100000;
    Random random(7);
    const std::vector<int> O = random.symbols(T, 2);
    std::vector<double> scale(O.size());
    const double log = model.forwardProbabilityWithScale(O, T, scale);
    EXPECT_TRUE(bitEqual(Reference::logLikelihood(twoStates(), O), log));
    EXPECT_TRUE(std::isfinite(log));
    EXPECT_LT(log, -10000.0);
    EXPECT_TRUE(bitEqual(0.0, model.forwardProbability(O, T)));
}

TEST(LeftRightScaledProbability, AddsLogarithmsFromTheFirstTimeOn) {
    LeftRightHMM model = libraryModel(twoStates());
    Random random(11);
    const std::vector<int> O = random.symbols(500, 2);
    std::vector<double> scale(O.size());
    const double log = model.forwardProbabilityWithScale(O, 500, scale);
    double forwards = 0.0;
    for (const double factor : scale) forwards += std::log(factor);
    EXPECT_TRUE(bitEqual(forwards, log));
}

}  // namespace
