#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <limits>

namespace {

using Vesk::Math::VectorT;
using Vesk::ML::HMM;
using Vesk::Test::bitEqual;
using Vesk::Test::Matrix;
using Vesk::Test::matrixOf;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

HMM weather() {
    HMM model(2, 2);
    model.pi = {0.5, 0.5};
    model.a = matrixOf({{0.5, 0.5}, {0.25, 0.75}});
    model.b = matrixOf({{0.5, 0.5}, {0.25, 0.75}});
    return model;
}

TEST(HmmDivide, DividesOrdinaryNumbers) {
    EXPECT_TRUE(bitEqual(2.0, HMM::divide(6.0, 3.0)));
    EXPECT_TRUE(bitEqual(1.0 / 3.0, HMM::divide(1.0, 3.0)));
    EXPECT_TRUE(bitEqual(-0.5, HMM::divide(-1.0, 2.0)));
}

TEST(HmmDivide, ZeroNumeratorGivesPositiveZeroWhateverTheDenominator) {
    for (double y : {0.0, -0.0, 1.0, -1.0, infinity, -infinity, nan}) {
        SCOPED_TRACE(y);
        EXPECT_TRUE(bitEqual(0.0, HMM::divide(0.0, y)));
        EXPECT_TRUE(bitEqual(0.0, HMM::divide(-0.0, y)));
    }
}

TEST(HmmDivide, DenominatorIsNotGuarded) {
    EXPECT_TRUE(bitEqual(infinity, HMM::divide(1.0, 0.0)));
    EXPECT_TRUE(bitEqual(-infinity, HMM::divide(1.0, -0.0)));
    EXPECT_TRUE(bitEqual(-infinity, HMM::divide(-1.0, 0.0)));
    EXPECT_TRUE(bitEqual(infinity, HMM::divide(5e-324, 0.0)));
    EXPECT_TRUE(bitEqual(nan, HMM::divide(nan, 0.0)));
}

TEST(HmmDivide, OtherOddNumbersFollowTheDivision) {
    EXPECT_TRUE(bitEqual(nan, HMM::divide(nan, 1.0)));
    EXPECT_TRUE(bitEqual(nan, HMM::divide(1.0, nan)));
    EXPECT_TRUE(bitEqual(nan, HMM::divide(infinity, infinity)));
    EXPECT_TRUE(bitEqual(0.0, HMM::divide(1.0, infinity)));
    EXPECT_TRUE(bitEqual(-0.0, HMM::divide(-1.0, infinity)));
    EXPECT_TRUE(bitEqual(infinity, HMM::divide(1e308, 1e-308)));
}

TEST(HmmGamma, WorkedExample) {
    // For 0, 1 in the weather model: alpha = {1/4, 5/64; 1/8, 21/128}, beta = {5/8, 1; 11/16, 1}.
    // gamma(0, 0) = 20/128 / (20/128 + 11/128) = 20/31, and gamma(1, 1) = 21/31.
    HMM model = weather();
    const Matrix alpha = matrixOf({{0.25, 5.0 / 64}, {0.125, 21.0 / 128}});
    const Matrix beta = matrixOf({{0.625, 1.0}, {0.6875, 1.0}});
    EXPECT_TRUE(bitEqual(20.0 / 31, model.gamma(0, 0, alpha, beta)));
    EXPECT_TRUE(bitEqual(11.0 / 31, model.gamma(1, 0, alpha, beta)));
    EXPECT_TRUE(bitEqual(10.0 / 31, model.gamma(0, 1, alpha, beta)));
    EXPECT_TRUE(bitEqual(21.0 / 31, model.gamma(1, 1, alpha, beta)));
}

TEST(HmmXi, WorkedExample) {
    // xi(0, 0, 0) = 1/4 * 1/2 * 1/2 / (31/128) = 8/31; xi(0, 1, 0) = 1/4 * 1/2 * 3/4 / (31/128)
    // = 12/31; xi(1, 0, 0) = 1/8 * 1/4 * 1/2 / (31/128) = 2/31; xi(1, 1, 0) = 9/31.
    HMM model = weather();
    const Matrix alpha = matrixOf({{0.25, 5.0 / 64}, {0.125, 21.0 / 128}});
    const Matrix beta = matrixOf({{0.625, 1.0}, {0.6875, 1.0}});
    EXPECT_TRUE(bitEqual(8.0 / 31, model.xi(0, 0, 0, {0, 1}, alpha, beta)));
    EXPECT_TRUE(bitEqual(12.0 / 31, model.xi(0, 1, 0, {0, 1}, alpha, beta)));
    EXPECT_TRUE(bitEqual(2.0 / 31, model.xi(1, 0, 0, {0, 1}, alpha, beta)));
    EXPECT_TRUE(bitEqual(9.0 / 31, model.xi(1, 1, 0, {0, 1}, alpha, beta)));
}

TEST(HmmGamma, ImpossibleTimeGivesZero) {
    HMM model(2, 1);
    const Matrix alpha = matrixOf({{0.0, 0.5}, {1.0, 0.5}});
    const Matrix beta = matrixOf({{1.0, 0.0}, {0.0, 0.0}});
    for (int i : {0, 1}) {
        for (int t : {0, 1}) EXPECT_TRUE(bitEqual(0.0, model.gamma(i, t, alpha, beta)));
    }
}

TEST(HmmXi, ImpossibleStepGivesZero) {
    HMM model(2, 1);  // all transitions 0.0
    const Matrix ones = matrixOf({{1.0, 1.0}, {1.0, 1.0}});
    for (int i : {0, 1}) {
        for (int j : {0, 1}) EXPECT_TRUE(bitEqual(0.0, model.xi(i, j, 0, {0, 0}, ones, ones)));
    }
}

TEST(HmmGamma, FindsElementsByTheTablesOwnColumnCounts) {
    HMM model(2, 1);
    // Three and four columns; time 1 is used. 3 * 2 / (3 * 2 + 5 * 1) = 6/11.
    const Matrix alpha = matrixOf({{99, 3, 99}, {99, 5, 99}});
    const Matrix beta = matrixOf({{99, 2, 99, 99}, {99, 1, 99, 99}});
    EXPECT_TRUE(bitEqual(6.0 / 11, model.gamma(0, 1, alpha, beta)));
    EXPECT_TRUE(bitEqual(5.0 / 11, model.gamma(1, 1, alpha, beta)));
}

TEST(HmmXi, FindsElementsByTheTablesOwnColumnCounts) {
    HMM model(2, 2);
    model.a = matrixOf({{1, 2, 99}, {3, 4, 99}});
    model.b = matrixOf({{99, 1, 99, 99}, {99, 2, 99, 99}});
    const Matrix alpha = matrixOf({{99, 1, 99}, {99, 2, 99}});
    const Matrix beta = matrixOf({{99, 99, 1, 99}, {99, 99, 3, 99}});
    // At t = 1 with o[2] = 1: terms alpha(k) a(k, l) b(l, 1) beta(l):
    // (0, 0): 1 * 1 * 1 * 1 = 1, (0, 1): 1 * 2 * 2 * 3 = 12, (1, 0): 2 * 3 * 1 * 1 = 6,
    // (1, 1): 2 * 4 * 2 * 3 = 48; together 67.
    const VectorT<int> o = {0, 0, 1};
    EXPECT_TRUE(bitEqual(1.0 / 67, model.xi(0, 0, 1, o, alpha, beta)));
    EXPECT_TRUE(bitEqual(12.0 / 67, model.xi(0, 1, 1, o, alpha, beta)));
    EXPECT_TRUE(bitEqual(6.0 / 67, model.xi(1, 0, 1, o, alpha, beta)));
    EXPECT_TRUE(bitEqual(48.0 / 67, model.xi(1, 1, 1, o, alpha, beta)));
}

TEST(HmmGamma, UsesTheModelsOwnNumberOfStates) {
    HMM model(2, 1);
    // The third row does not count: 1 / (1 + 3).
    const Matrix alpha = matrixOf({{1.0}, {3.0}, {99.0}});
    const Matrix beta = matrixOf({{1.0}, {1.0}, {99.0}});
    EXPECT_TRUE(bitEqual(0.25, model.gamma(0, 0, alpha, beta)));
}

TEST(HmmGamma, InfiniteMassIsNotANumber) {
    HMM model(2, 1);
    const Matrix alpha = matrixOf({{infinity}, {1.0}});
    const Matrix beta = matrixOf({{1.0}, {1.0}});
    EXPECT_TRUE(bitEqual(nan, model.gamma(0, 0, alpha, beta)));
    EXPECT_TRUE(bitEqual(0.0, model.gamma(1, 0, alpha, beta)));
}

TEST(HmmPosterior, ChangesNeitherModelNorTables) {
    HMM model = weather();
    const HMM before = model;
    const Matrix alpha = matrixOf({{0.25, 5.0 / 64}, {0.125, 21.0 / 128}});
    const Matrix beta = matrixOf({{0.625, 1.0}, {0.6875, 1.0}});
    const Matrix alphaBefore = alpha;
    const Matrix betaBefore = beta;
    const VectorT<int> o = {0, 1};
    model.gamma(0, 0, alpha, beta);
    model.xi(0, 1, 0, o, alpha, beta);
    EXPECT_TRUE(Vesk::Test::modelsEqual(before, model));
    EXPECT_TRUE(bitEqual(alphaBefore, alpha));
    EXPECT_TRUE(bitEqual(betaBefore, beta));
    EXPECT_EQ(o, (VectorT<int>{0, 1}));
}

}  // namespace
