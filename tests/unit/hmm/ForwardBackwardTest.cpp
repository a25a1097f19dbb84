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
using Vesk::Test::Matrix;
using Vesk::Test::matrixOf;
using Vesk::Test::modelsEqual;

/// Two states and two symbols; every product and sum below is exact in binary.
HMM weather() {
    HMM model(2, 2);
    model.pi = {0.5, 0.5};
    model.a = matrixOf({{0.5, 0.5}, {0.25, 0.75}});
    model.b = matrixOf({{0.5, 0.5}, {0.25, 0.75}});
    return model;
}

/// One state, one symbol, everything certain.
HMM certain() {
    HMM model(1, 1);
    model.pi = {1.0};
    model.a = matrixOf({{1.0}});
    model.b = matrixOf({{1.0}});
    return model;
}

TEST(HmmForward, WorkedExample) {
    // alpha(0, 0) = 1/2 * 1/2 = 1/4
    // alpha(1, 0) = 1/2 * 1/4 = 1/8
    // alpha(0, 1) = (1/4 * 1/2 + 1/8 * 1/4) * 1/2 = 5/32 * 1/2 = 5/64
    // alpha(1, 1) = (1/4 * 1/2 + 1/8 * 3/4) * 3/4 = 7/32 * 3/4 = 21/128
    HMM model = weather();
    EXPECT_TRUE(
        bitEqual(matrixOf({{0.25, 5.0 / 64}, {0.125, 21.0 / 128}}), model.forwardProc({0, 1}, 2)));
    // 10/128 + 21/128
    EXPECT_TRUE(bitEqual(31.0 / 128, model.forwardProbability({0, 1}, 2)));
}

TEST(HmmBackward, WorkedExample) {
    // beta(0, 0) = 1 * 1/2 * 1/2 + 1 * 1/2 * 3/4 = 5/8
    // beta(1, 0) = 1 * 1/4 * 1/2 + 1 * 3/4 * 3/4 = 11/16
    HMM model = weather();
    EXPECT_TRUE(bitEqual(matrixOf({{0.625, 1.0}, {0.6875, 1.0}}), model.backwardProc({0, 1}, 2)));
    // 1/2 * 1/2 * 5/8 + 1/2 * 1/4 * 11/16 = 20/128 + 11/128
    EXPECT_TRUE(bitEqual(31.0 / 128, model.backwardProbability({0, 1}, 2)));
}

TEST(HmmForward, SingleSymbolGivesTheInitialColumn) {
    HMM model = weather();
    EXPECT_TRUE(bitEqual(matrixOf({{0.25}, {0.375}}), model.forwardProc({1}, 1)));
    EXPECT_TRUE(bitEqual(0.625, model.forwardProbability({1}, 1)));
}

TEST(HmmBackward, SingleSymbolGivesOnes) {
    HMM model = weather();
    EXPECT_TRUE(bitEqual(matrixOf({{1.0}, {1.0}}), model.backwardProc({1}, 1)));
    EXPECT_TRUE(bitEqual(0.625, model.backwardProbability({1}, 1)));
}

TEST(HmmForwardBackward, CertainModelIsOneEverywhere) {
    HMM model = certain();
    for (int T : {1, 2, 3, 50}) {
        SCOPED_TRACE(T);
        const VectorT<int> o(static_cast<std::size_t>(T), 0);
        const std::vector<double> ones(static_cast<std::size_t>(T), 1.0);
        const Matrix alpha = model.forwardProc(o, T);
        const Matrix beta = model.backwardProc(o, T);
        EXPECT_EQ(alpha.rows, 1);
        EXPECT_EQ(alpha.cols, T);
        EXPECT_EQ(beta.rows, 1);
        EXPECT_EQ(beta.cols, T);
        EXPECT_TRUE(bitEqual(ones, alpha.data));
        EXPECT_TRUE(bitEqual(ones, beta.data));
        EXPECT_TRUE(bitEqual(1.0, model.forwardProbability(o, T)));
        EXPECT_TRUE(bitEqual(1.0, model.backwardProbability(o, T)));
    }
}

TEST(HmmForwardBackward, ProbabilityOfNoSymbolsIsZero) {
    HMM model = weather();
    const HMM before = model;
    for (int T : {0, -1, -3, std::numeric_limits<int>::min()}) {
        SCOPED_TRACE(T);
        EXPECT_TRUE(bitEqual(0.0, model.forwardProbability({0, 1}, T)));
        EXPECT_TRUE(bitEqual(0.0, model.backwardProbability({0, 1}, T)));
        EXPECT_TRUE(
            bitEqual(0.0, model.forwardProbabilityHMM({}, T, 2, model.pi, model.a, model.b)));
        EXPECT_TRUE(
            bitEqual(0.0, model.backwardProbabilityHMM({}, T, 2, model.pi, model.a, model.b)));
    }
    EXPECT_TRUE(modelsEqual(before, model));
}

TEST(HmmForwardBackward, TablesOfNoSymbolsAreEmpty) {
    HMM model = weather();
    for (int T : {0, -1, -3, std::numeric_limits<int>::min()}) {
        SCOPED_TRACE(T);
        const Matrix tables[] = {model.forwardProc({0, 1}, T), model.backwardProc({0, 1}, T),
                                 model.forwardProcHMM({}, T, 2, model.pi, model.a, model.b),
                                 model.backwardProcHMM({}, T, 2, model.a, model.b)};
        for (const Matrix& table : tables) {
            EXPECT_EQ(table.rows, 2);
            EXPECT_EQ(table.cols, 0);
            EXPECT_TRUE(table.data.empty());
        }
    }
}

TEST(HmmForwardBackward, UsesTheFirstTSymbolsOnly) {
    HMM model = weather();
    EXPECT_TRUE(bitEqual(model.forwardProc({0, 1}, 2), model.forwardProc({0, 1, 1, 0, 1}, 2)));
    EXPECT_TRUE(bitEqual(model.backwardProc({0, 1}, 2), model.backwardProc({0, 1, 1, 0, 1}, 2)));
    EXPECT_TRUE(bitEqual(31.0 / 128, model.forwardProbability({0, 1, 1, 0, 1}, 2)));
    EXPECT_TRUE(bitEqual(31.0 / 128, model.backwardProbability({0, 1, 1, 0, 1}, 2)));
}

TEST(HmmForwardBackward, FormsWithParametersUseThemAndNotTheModel) {
    HMM model = certain();
    const HMM other = weather();
    const VectorT<int> o = {0, 1};
    EXPECT_TRUE(bitEqual(matrixOf({{0.25, 5.0 / 64}, {0.125, 21.0 / 128}}),
                         model.forwardProcHMM(o, 2, 2, other.pi, other.a, other.b)));
    EXPECT_TRUE(bitEqual(matrixOf({{0.625, 1.0}, {0.6875, 1.0}}),
                         model.backwardProcHMM(o, 2, 2, other.a, other.b)));
    EXPECT_TRUE(
        bitEqual(31.0 / 128, model.forwardProbabilityHMM(o, 2, 2, other.pi, other.a, other.b)));
    EXPECT_TRUE(
        bitEqual(31.0 / 128, model.backwardProbabilityHMM(o, 2, 2, other.pi, other.a, other.b)));
    EXPECT_TRUE(modelsEqual(certain(), model));
}

TEST(HmmForwardBackward, FormsWithTheModelsOwnParametersGiveTheSame) {
    HMM model = weather();
    const VectorT<int> o = {0, 1, 1, 0, 0, 1, 0};
    const int T = 7;
    EXPECT_TRUE(bitEqual(model.forwardProc(o, T),
                         model.forwardProcHMM(o, T, 2, model.pi, model.a, model.b)));
    EXPECT_TRUE(
        bitEqual(model.backwardProc(o, T), model.backwardProcHMM(o, T, 2, model.a, model.b)));
    EXPECT_TRUE(bitEqual(model.forwardProbability(o, T),
                         model.forwardProbabilityHMM(o, T, 2, model.pi, model.a, model.b)));
    EXPECT_TRUE(bitEqual(model.backwardProbability(o, T),
                         model.backwardProbabilityHMM(o, T, 2, model.pi, model.a, model.b)));
}

TEST(HmmForwardBackward, FormsWithParametersMayUseFewerStatesThanTheTablesHold) {
    // The leading 2 x 2 of a 3 x 4 and the leading 2 x 2 of a 3 x 3, found by their column counts.
    HMM model = certain();
    const VectorT<double> pi = {0.5, 0.5, 99.0};
    const Matrix a = matrixOf({{0.5, 0.5, 99, 99}, {0.25, 0.75, 99, 99}, {99, 99, 99, 99}});
    const Matrix b = matrixOf({{0.5, 0.5, 99}, {0.25, 0.75, 99}, {99, 99, 99}});
    EXPECT_TRUE(bitEqual(matrixOf({{0.25, 5.0 / 64}, {0.125, 21.0 / 128}}),
                         model.forwardProcHMM({0, 1}, 2, 2, pi, a, b)));
    EXPECT_TRUE(bitEqual(matrixOf({{0.625, 1.0}, {0.6875, 1.0}}),
                         model.backwardProcHMM({0, 1}, 2, 2, a, b)));
    EXPECT_TRUE(bitEqual(31.0 / 128, model.forwardProbabilityHMM({0, 1}, 2, 2, pi, a, b)));
    EXPECT_TRUE(bitEqual(31.0 / 128, model.backwardProbabilityHMM({0, 1}, 2, 2, pi, a, b)));
}

TEST(HmmForwardBackward, ModelsTablesAreIndexedByTheirOwnColumnCounts) {
    HMM model = weather();
    model.pi = {0.5, 0.5, 99.0};
    model.a = matrixOf({{0.5, 0.5, 99}, {0.25, 0.75, 99}});
    model.b = matrixOf({{0.5, 0.5, 99, 99}, {0.25, 0.75, 99, 99}});
    EXPECT_TRUE(
        bitEqual(matrixOf({{0.25, 5.0 / 64}, {0.125, 21.0 / 128}}), model.forwardProc({0, 1}, 2)));
    EXPECT_TRUE(bitEqual(matrixOf({{0.625, 1.0}, {0.6875, 1.0}}), model.backwardProc({0, 1}, 2)));
    EXPECT_TRUE(bitEqual(31.0 / 128, model.forwardProbability({0, 1}, 2)));
    EXPECT_TRUE(bitEqual(31.0 / 128, model.backwardProbability({0, 1}, 2)));
}

TEST(HmmForwardBackward, ImpossibleSequenceHasProbabilityZero) {
    HMM model = weather();
    model.b = matrixOf({{1.0, 0.0}, {1.0, 0.0}});
    EXPECT_TRUE(bitEqual(0.0, model.forwardProbability({0, 1, 0}, 3)));
    EXPECT_TRUE(bitEqual(0.0, model.backwardProbability({0, 1, 0}, 3)));
}

TEST(HmmForwardBackward, EmptyModelGivesZeros) {
    HMM model(3, 2);
    EXPECT_TRUE(bitEqual(Matrix(3, 2), model.forwardProc({0, 1}, 2)));
    EXPECT_TRUE(
        bitEqual(matrixOf({{0.0, 1.0}, {0.0, 1.0}, {0.0, 1.0}}), model.backwardProc({0, 1}, 2)));
    EXPECT_TRUE(bitEqual(0.0, model.forwardProbability({0, 1}, 2)));
    EXPECT_TRUE(bitEqual(0.0, model.backwardProbability({0, 1}, 2)));
}

TEST(HmmForwardBackward, InfinitiesMeetZerosAsNaN) {
    // The forbidden way into state 0 still multiplies: inf * 0 is NaN.
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    HMM model(2, 1);
    model.pi = {1.0, 1.0};
    model.a = matrixOf({{0.0, 1.0}, {0.0, 0.0}});
    model.b = matrixOf({{infinity}, {1.0}});
    EXPECT_TRUE(
        bitEqual(matrixOf({{infinity, nan}, {1.0, infinity}}), model.forwardProc({0, 0}, 2)));
    // beta(0, 0) = 1 * 0 * inf + 1 * 1 * 1; beta(1, 0) = 1 * 0 * inf + 1 * 0 * 1.
    EXPECT_TRUE(bitEqual(matrixOf({{nan, 1.0}, {nan, 1.0}}), model.backwardProc({0, 0}, 2)));
}

TEST(HmmForwardBackward, LongSequencesUnderflowToZero) {
    HMM model = weather();
    const VectorT<int> o(5000, 0);
    EXPECT_TRUE(bitEqual(0.0, model.forwardProbability(o, 5000)));
    EXPECT_TRUE(bitEqual(0.0, model.backwardProbability(o, 5000)));
}

TEST(HmmForwardBackward, AHundredThousandSymbolsAreNoMatter) {
    const int T = 100000;
    HMM model(2, 1);
    model.pi = {1.0, 0.0};
    model.a = matrixOf({{0.0, 1.0}, {1.0, 0.0}});
    model.b = matrixOf({{1.0}, {1.0}});
    const VectorT<int> o(static_cast<std::size_t>(T), 0);
    EXPECT_TRUE(bitEqual(1.0, model.forwardProbability(o, T)));
    EXPECT_TRUE(bitEqual(1.0, model.backwardProbability(o, T)));
    const Matrix alpha = model.forwardProc(o, T);
    EXPECT_EQ(alpha.cols, T);
    EXPECT_EQ(alpha(1, T - 1), 1.0);  // the last time is odd
    EXPECT_EQ(alpha(0, T - 1), 0.0);
    EXPECT_EQ(model.backwardProc(o, T)(0, 0), 1.0);
}

TEST(HmmForwardBackward, ChangesNeitherModelNorArguments) {
    HMM model = weather();
    const HMM before = model;
    const VectorT<int> o = {0, 1, 0};
    const VectorT<double> pi = {0.25, 0.75};
    const Matrix a = matrixOf({{0.5, 0.5}, {1, 0}});
    const Matrix b = matrixOf({{0.5, 0.5}, {0, 1}});
    const Vesk::Test::Capture capture;
    model.forwardProc(o, 3);
    model.backwardProc(o, 3);
    model.forwardProbability(o, 3);
    model.backwardProbability(o, 3);
    model.forwardProcHMM(o, 3, 2, pi, a, b);
    model.backwardProcHMM(o, 3, 2, a, b);
    model.forwardProbabilityHMM(o, 3, 2, pi, a, b);
    model.backwardProbabilityHMM(o, 3, 2, pi, a, b);
    EXPECT_TRUE(modelsEqual(before, model));
    EXPECT_EQ(o, (VectorT<int>{0, 1, 0}));
    EXPECT_TRUE(bitEqual({0.25, 0.75}, pi));
    EXPECT_TRUE(bitEqual(matrixOf({{0.5, 0.5}, {1, 0}}), a));
    EXPECT_TRUE(bitEqual(matrixOf({{0.5, 0.5}, {0, 1}}), b));
    EXPECT_EQ(capture.text(), "");
}

TEST(HmmForwardBackward, TakeStandardVectors) {
    HMM model = weather();
    const std::vector<int> o = {0, 1};
    EXPECT_TRUE(bitEqual(31.0 / 128, model.forwardProbability(o, 2)));
    EXPECT_TRUE(bitEqual(31.0 / 128, model.backwardProbability(o, 2)));
}

}  // namespace
