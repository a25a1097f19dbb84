#include <support/Capture.h>
#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

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

/// All states and symbols alike.
HMM alike(int N, int M) {
    HMM model(N, M);
    for (double& value : model.pi) value = 1.0 / N;
    for (double& value : model.a.data) value = 1.0 / N;
    for (double& value : model.b.data) value = 1.0 / M;
    return model;
}

std::vector<double> pathOf(const Matrix& result) {
    std::vector<double> path;
    for (int t = 0; t < result.cols; ++t) path.push_back(result(1, t));
    return path;
}

TEST(HmmViterbi, WorkedExample) {
    // Paths of 0, 1: 00 has 1/4 * 1/2 * 1/2 = 8/128, 01 has 1/4 * 1/2 * 3/4 = 12/128,
    // 10 has 1/8 * 1/4 * 1/2 = 2/128, 11 has 1/8 * 3/4 * 3/4 = 9/128.
    HMM model = weather();
    const Matrix result = model.viterbi({0, 1}, 2);
    EXPECT_EQ(result.rows, 2);
    EXPECT_EQ(result.cols, 2);
    EXPECT_EQ(pathOf(result), (std::vector<double>{0.0, 1.0}));
    EXPECT_NEAR(result(0, 0), 12.0 / 128, 1e-16);
    EXPECT_TRUE(bitEqual(0.0, result(0, 1)));
}

TEST(HmmViterbi, AddsNegativeLogarithmsInOrder) {
    // Path 0, 1 as above: ((-ln 1/2 - ln 1/2) - ln 1/2) - ln 3/4.
    HMM model = weather();
    double cost = -std::log(0.5) - std::log(0.5);
    cost = cost - std::log(0.5);
    cost = cost - std::log(0.75);
    EXPECT_TRUE(bitEqual(std::exp(-cost), model.viterbi({0, 1}, 2)(0, 0)));
}

TEST(HmmViterbi, RestOfTheFirstRowIsZero) {
    HMM model = weather();
    const Matrix result = model.viterbi({0, 1, 1, 0, 1}, 5);
    for (int t = 1; t < 5; ++t) EXPECT_TRUE(bitEqual(0.0, result(0, t)));
    EXPECT_GT(result(0, 0), 0.0);
}

TEST(HmmViterbi, OneSymbolPicksTheBestInitialState) {
    HMM model(3, 2);
    model.pi = {0.5, 0.25, 0.25};
    model.b = matrixOf({{0.25, 0.75}, {0.75, 0.25}, {1.0, 0.0}});
    // 1/8, 3/16, 1/4 for symbol 0; 3/8, 1/16, 0 for symbol 1.
    const Matrix first = model.viterbi({0}, 1);
    EXPECT_EQ(first.rows, 2);
    EXPECT_EQ(first.cols, 1);
    EXPECT_EQ(first(1, 0), 2.0);
    EXPECT_NEAR(first(0, 0), 0.25, 1e-16);
    const Matrix second = model.viterbi({1}, 1);
    EXPECT_EQ(second(1, 0), 0.0);
    EXPECT_NEAR(second(0, 0), 0.375, 1e-16);
}

TEST(HmmViterbi, PicksTheLowestStateOnTies) {
    HMM model = alike(5, 3);
    const Matrix result = model.viterbi({0, 2, 1, 1, 0}, 5);
    EXPECT_EQ(pathOf(result), std::vector<double>(5, 0.0));
}

TEST(HmmViterbi, PicksTheLowerOfTwoTiedStatesBehindAWorseOne) {
    // States 1 and 2 are alike and better than state 0 at every step.
    HMM model(3, 1);
    model.pi = {0.25, 0.5, 0.5};
    model.a = matrixOf({{0.25, 0.5, 0.5}, {0.25, 0.5, 0.5}, {0.25, 0.5, 0.5}});
    model.b = matrixOf({{0.5}, {0.5}, {0.5}});
    EXPECT_EQ(pathOf(model.viterbi({0, 0, 0, 0}, 4)), (std::vector<double>{1, 1, 1, 1}));
}

TEST(HmmViterbi, PicksTheLowestPredecessorOfTheWinningState) {
    // Only state 2 can end; states 0 and 1 reach it equally well.
    HMM model(3, 2);
    model.pi = {0.5, 0.5, 0.0};
    model.a = matrixOf({{0, 0, 1}, {0, 0, 1}, {0, 0, 1}});
    model.b = matrixOf({{1, 0}, {1, 0}, {0, 1}});
    EXPECT_EQ(pathOf(model.viterbi({0, 1, 1}, 3)), (std::vector<double>{0, 2, 2}));
}

TEST(HmmViterbi, ImpossibleSequenceStaysInStateZeroWithProbabilityZero) {
    HMM model(3, 2);
    const Matrix result = model.viterbi({0, 1, 0}, 3);
    EXPECT_TRUE(bitEqual(Matrix(2, 3), result));
}

TEST(HmmViterbi, ZeroTransitionsAreNeverTaken) {
    HMM model(2, 2);
    model.pi = {1.0, 0.0};
    model.a = matrixOf({{0.0, 1.0}, {1.0, 0.0}});
    model.b = matrixOf({{0.5, 0.5}, {0.5, 0.5}});
    const Matrix result = model.viterbi({0, 1, 1, 0}, 4);
    EXPECT_EQ(pathOf(result), (std::vector<double>{0, 1, 0, 1}));
    EXPECT_NEAR(result(0, 0), 1.0 / 16, 1e-16);
}

TEST(HmmViterbi, InfiniteParametersMakeNegativeCosts) {
    HMM model = alike(2, 1);
    model.b = matrixOf({{1.0}, {infinity}});
    const Matrix result = model.viterbi({0, 0}, 2);
    // State 0 at time 1 is reached from state 1, so both end at -infinity: the lower one wins.
    EXPECT_EQ(pathOf(result), (std::vector<double>{1, 0}));
    EXPECT_TRUE(bitEqual(infinity, result(0, 0)));
}

TEST(HmmViterbi, NaNCostsAreNeitherBeatenNorChosen) {
    HMM model(2, 1);
    model.a = matrixOf({{0.5, 0.5}, {0.5, 0.5}});
    model.b = matrixOf({{1.0}, {1.0}});
    model.pi = {0.5, nan};
    EXPECT_EQ(pathOf(model.viterbi({0}, 1)), (std::vector<double>{0}));
    EXPECT_NEAR(model.viterbi({0}, 1)(0, 0), 0.5, 1e-16);
    model.pi = {nan, 0.5};
    EXPECT_EQ(pathOf(model.viterbi({0}, 1)), (std::vector<double>{0}));
    EXPECT_TRUE(bitEqual(nan, model.viterbi({0}, 1)(0, 0)));
    // The logarithm of a negative number is NaN as well.
    model.pi = {-1.0, 0.5};
    EXPECT_TRUE(bitEqual(nan, model.viterbi({0}, 1)(0, 0)));
}

TEST(HmmViterbi, NoSymbolsGiveAnEmptyTable) {
    HMM model = weather();
    for (int T : {0, -1, -3, std::numeric_limits<int>::min()}) {
        SCOPED_TRACE(T);
        const Matrix result = model.viterbi({0, 1}, T);
        EXPECT_EQ(result.rows, 2);
        EXPECT_EQ(result.cols, 0);
        EXPECT_TRUE(result.data.empty());
    }
}

TEST(HmmViterbi, UsesTheFirstTSymbolsOnly) {
    HMM model = weather();
    EXPECT_TRUE(bitEqual(model.viterbi({0, 1, 1}, 3), model.viterbi({0, 1, 1, 0, 0}, 3)));
}

TEST(HmmViterbi, FindsElementsByTheTablesOwnColumnCounts) {
    HMM model = weather();
    const Matrix expected = model.viterbi({0, 1, 1, 0}, 4);
    model.pi.push_back(99);
    model.a = matrixOf({{0.5, 0.5, 99}, {0.25, 0.75, 99}});
    model.b = matrixOf({{0.5, 0.5, 99, 99}, {0.25, 0.75, 99, 99}});
    EXPECT_TRUE(bitEqual(expected, model.viterbi({0, 1, 1, 0}, 4)));
}

TEST(HmmViterbi, FollowsAPathOfAHundredThousandSteps) {
    const int T = 100000;
    HMM model(2, 1);
    model.pi = {1.0, 0.0};
    model.a = matrixOf({{0.0, 1.0}, {1.0, 0.0}});
    model.b = matrixOf({{1.0}, {1.0}});
    const Matrix result = model.viterbi(VectorT<int>(static_cast<std::size_t>(T), 0), T);
    EXPECT_TRUE(bitEqual(1.0, result(0, 0)));
    int outOfStep = 0;
    for (int t = 0; t < T; ++t) outOfStep += result(1, t) == t % 2 ? 0 : 1;
    EXPECT_EQ(outOfStep, 0);
}

TEST(HmmViterbi, ChangesNothingAndPrintsNothing) {
    HMM model = weather();
    const VectorT<int> o = {0, 1, 1};
    const Vesk::Test::Capture capture;
    model.viterbi(o, 3);
    EXPECT_EQ(capture.text(), "");
    EXPECT_TRUE(Vesk::Test::modelsEqual(weather(), model));
    EXPECT_EQ(o, (VectorT<int>{0, 1, 1}));
}

}  // namespace
