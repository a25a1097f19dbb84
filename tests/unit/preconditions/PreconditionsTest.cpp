// What only a host can get wrong is asserted, where assertions are compiled in; builds that leave
// them out have no such test. What a file can make is thrown in every build.

#include <vesk/hmm/HMM.h>
#include <vesk/leftright/LeftRightHMM.h>
#include <vesk/quantizer/VectorQuantizer2D.h>
#include <vesk/recognition/RecognitionModelHMM.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

namespace {

using Vesk::Math::MatrixT;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;

constexpr int N = 2;
constexpr int M = 3;
constexpr int T = 4;

using Symbols = std::vector<int>;

const Symbols good{0, 1, 2, 0};
/// Sequences that break the duty to keep symbols in 0 .. M-1, or T within the sequence.
const std::vector<Symbols> bad{{0, M, 1, 0}, {0, 1, 2, -1}, {0, 1, 2}};

class PreconditionsDeathTest : public testing::Test {
protected:
    HMM model{N, M};
    LeftRightHMM gesture{N, M, 1};
    const MatrixT<double> a{N, N};
    const MatrixT<double> b{N, M};
    const std::vector<double> pi = std::vector<double>(N);
};

#define EXPECT_ASSERTED(statement) EXPECT_DEATH(statement, "[Aa]ssertion")

TEST_F(PreconditionsDeathTest, SymbolsAndLengthsOfGeneralModels) {
    for (const Symbols& o : bad) {
        EXPECT_ASSERTED(model.forwardProc(o, T));
        EXPECT_ASSERTED(model.backwardProc(o, T));
        EXPECT_ASSERTED(model.forwardProbability(o, T));
        EXPECT_ASSERTED(model.backwardProbability(o, T));
        EXPECT_ASSERTED(model.viterbi(o, T));
        EXPECT_ASSERTED(model.baumWelch(o, T, 1));
        EXPECT_ASSERTED(model.forwardProcHMM(o, T, N, pi, a, b));
        EXPECT_ASSERTED(model.backwardProcHMM(o, T, N, a, b));
        EXPECT_ASSERTED(model.forwardProbabilityHMM(o, T, N, pi, a, b));
        EXPECT_ASSERTED(model.backwardProbabilityHMM(o, T, N, pi, a, b));
    }
}

TEST_F(PreconditionsDeathTest, SymbolsAndLengthsOfLeftRightModels) {
    std::vector<double> scale(T);
    for (const Symbols& o : bad) {
        EXPECT_ASSERTED(gesture.forwardProcWithScale(o, T, scale));
        EXPECT_ASSERTED(gesture.backwardProcWithScale(o, T, scale));
        EXPECT_ASSERTED(gesture.forwardProbabilityWithScale(o, T, scale));
        EXPECT_ASSERTED(gesture.baumWelch(o, T, 1));
    }
    EXPECT_ASSERTED(gesture.logLikelihood({0, M}));
    EXPECT_ASSERTED(gesture.likelihoods({good, {0, M}}));
    EXPECT_ASSERTED(gesture.trainMultiple({good, {-1, 0}}, 1));
}

TEST_F(PreconditionsDeathTest, ScaleVectors) {
    std::vector<double> scale(T - 1);
    EXPECT_ASSERTED(gesture.forwardProcWithScale(good, T, scale));
    EXPECT_ASSERTED(gesture.backwardProcWithScale(good, T, scale));
    EXPECT_ASSERTED(gesture.forwardProbabilityWithScale(good, T, scale));
    EXPECT_ASSERTED(gesture.forwardProcWithScaleHMM(good, T, scale, N, pi, a, b));
    EXPECT_ASSERTED(gesture.backwardProcWithScaleHMM(good, T, scale, N, pi, a, b));
}

TEST_F(PreconditionsDeathTest, ShapesThatAreGiven) {
    const MatrixT<double> small(N - 1, N - 1);
    const std::vector<double> shorter(N - 1);
    EXPECT_ASSERTED(model.forwardProcHMM(good, T, N, shorter, a, b));
    EXPECT_ASSERTED(model.forwardProcHMM(good, T, N, pi, small, b));
    EXPECT_ASSERTED(model.forwardProcHMM(good, T, N, pi, a, MatrixT<double>(N - 1, M)));
    EXPECT_ASSERTED(model.backwardProcHMM(good, T, N, small, b));
    std::vector<double> scale(T);
    EXPECT_ASSERTED(gesture.forwardProcWithScaleHMM(good, T, scale, N, shorter, a, b));
    EXPECT_ASSERTED(gesture.forwardProcWithScaleHMM(good, T, scale, N, pi, small, b));
}

TEST_F(PreconditionsDeathTest, PosteriorsWithinTheirTables) {
    const MatrixT<double> table = model.forwardProc(good, T);
    EXPECT_EQ(model.xi(N - 1, 0, T - 2, good, table, table), 0.0);
    EXPECT_EQ(model.gamma(N - 1, T - 1, table, table), 0.0);
    EXPECT_ASSERTED(model.xi(N, 0, 0, good, table, table));
    EXPECT_ASSERTED(model.xi(-1, 0, 0, good, table, table));
    EXPECT_ASSERTED(model.xi(0, N, 0, good, table, table));
    EXPECT_ASSERTED(model.xi(0, -1, 0, good, table, table));
    EXPECT_ASSERTED(model.xi(0, 0, -1, good, table, table));
    EXPECT_ASSERTED(model.xi(0, 0, T - 1, good, table, table));
    EXPECT_ASSERTED(model.gamma(N, 0, table, table));
    EXPECT_ASSERTED(model.gamma(-1, 0, table, table));
    EXPECT_ASSERTED(model.gamma(0, -1, table, table));
    EXPECT_ASSERTED(model.gamma(0, T, table, table));
}

TEST_F(PreconditionsDeathTest, Recognition) {
    RecognitionModelHMM recognizer({&gesture}, 0.5);
    ASSERT_TRUE(recognizer.initialize());
    EXPECT_ASSERTED(recognizer.evaluate({0, -1}));
    EXPECT_ASSERTED(RecognitionModelHMM(std::vector<HMM*>{nullptr}, 0.5).setParameters());
    // A file can make a gesture of fewer symbols than the others have.
    EXPECT_THROW(recognizer.evaluate(Symbols{0, M}), std::out_of_range);
}

TEST_F(PreconditionsDeathTest, PositionsOfTwoNumbers) {
    Vesk::ML::VectorQuantizer2D quantizer;
    std::vector<std::vector<double>> trace{{0, 0}, {1}};
    EXPECT_ASSERTED(quantizer.convertSequence(trace));
}

TEST_F(PreconditionsDeathTest, ElementsOfMatrices) {
    MatrixT<double> matrix(N, M);
    EXPECT_EQ(matrix(N - 1, M - 1), 0.0);
    // Its own assertion, not the one of the vector in it, which some builds lack.
    EXPECT_DEATH(matrix(N, 0) = 1.0, "[Aa]ssertion.*data\\.size");
    EXPECT_DEATH(a(-1, 0), "[Aa]ssertion.*data\\.size");
}

}  // namespace
