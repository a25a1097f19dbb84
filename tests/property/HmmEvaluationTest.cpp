#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

// The library's passes against the plain ones, bit for bit.

namespace {

using Vesk::ML::HMM;
using Vesk::Test::bitEqual;
using Vesk::Test::Matrix;
using Vesk::Test::modelOf;
using Vesk::Test::modelsEqual;
using Vesk::Test::Random;
using Vesk::Test::randomKind;
using Vesk::Test::randomModel;
using Vesk::Test::randomTable;
using Vesk::Test::toMatrix;
namespace Reference = Vesk::Test::Reference;

/// One random model and sequence; the sequence may be longer than T.
struct Case {
    explicit Case(std::uint64_t seed) : random(seed) {
        const int N = random.integer(1, 12);
        const int M = random.integer(1, 20);
        model = randomModel(random, N, M);
        T = random.chance(0.1) ? 1 : random.integer(1, 60);
        o = random.symbols(T + (random.chance(0.3) ? random.integer(1, 5) : 0), M);
    }

    Random random;
    Reference::Model model;
    int T = 1;
    std::vector<int> o;
};

constexpr int cases = 5000;

TEST(HmmEvaluationProperty, ForwardTablesAreThePlainOnes) {
    for (std::uint64_t seed = 1; seed <= cases; ++seed) {
        SCOPED_TRACE(seed);
        const Case c(seed);
        HMM model = modelOf(c.model);
        const Matrix expected = toMatrix(Reference::forwardProc(c.model, c.o, c.T), c.T);
        ASSERT_TRUE(bitEqual(expected, model.forwardProc(c.o, c.T)));
        HMM other(1, 1);
        ASSERT_TRUE(bitEqual(
            expected, other.forwardProcHMM(c.o, c.T, c.model.N, model.pi, model.a, model.b)));
        ASSERT_TRUE(modelsEqual(c.model, model));
    }
}

TEST(HmmEvaluationProperty, BackwardTablesAreThePlainOnes) {
    for (std::uint64_t seed = 10001; seed <= 10000 + cases; ++seed) {
        SCOPED_TRACE(seed);
        const Case c(seed);
        HMM model = modelOf(c.model);
        const Matrix expected = toMatrix(Reference::backwardProc(c.model, c.o, c.T), c.T);
        ASSERT_TRUE(bitEqual(expected, model.backwardProc(c.o, c.T)));
        HMM other(1, 1);
        ASSERT_TRUE(
            bitEqual(expected, other.backwardProcHMM(c.o, c.T, c.model.N, model.a, model.b)));
        ASSERT_TRUE(modelsEqual(c.model, model));
    }
}

TEST(HmmEvaluationProperty, ProbabilitiesAreThePlainOnes) {
    for (std::uint64_t seed = 20001; seed <= 20000 + cases; ++seed) {
        SCOPED_TRACE(seed);
        const Case c(seed);
        HMM model = modelOf(c.model);
        HMM other(2, 3);
        const double forward = Reference::forwardProbability(c.model, c.o, c.T);
        ASSERT_TRUE(bitEqual(forward, model.forwardProbability(c.o, c.T)));
        ASSERT_TRUE(bitEqual(
            forward, other.forwardProbabilityHMM(c.o, c.T, c.model.N, model.pi, model.a, model.b)));
        const double backward = Reference::backwardProbability(c.model, c.o, c.T);
        ASSERT_TRUE(bitEqual(backward, model.backwardProbability(c.o, c.T)));
        ASSERT_TRUE(bitEqual(backward, other.backwardProbabilityHMM(c.o, c.T, c.model.N, model.pi,
                                                                    model.a, model.b)));
    }
}

TEST(HmmEvaluationProperty, LikelihoodsOfManySequencesAreThePlainOnes) {
    for (std::uint64_t seed = 50001; seed <= 50000 + cases; ++seed) {
        SCOPED_TRACE(seed);
        Case c(seed);
        const HMM model = modelOf(c.model);
        std::vector<std::vector<int>> sequences;
        std::vector<double> expected;
        for (int k = c.random.integer(0, 9); k > 0; --k) {
            const int T = c.random.chance(0.15) ? 0 : c.random.integer(1, 30);
            sequences.push_back(c.random.symbols(T, c.model.M));
            expected.push_back(T < 1 ? 0.0
                                     : Reference::forwardProbability(c.model, sequences.back(), T));
        }
        ASSERT_TRUE(bitEqual(expected, model.likelihoods(sequences)));
        ASSERT_TRUE(modelsEqual(c.model, model));
    }
}

TEST(HmmEvaluationProperty, PosteriorsOfTheModelsOwnTablesAreThePlainOnes) {
    for (std::uint64_t seed = 30001; seed <= 33000; ++seed) {
        SCOPED_TRACE(seed);
        Case c(seed);
        HMM model = modelOf(c.model);
        const Reference::Table alpha = Reference::forwardProc(c.model, c.o, c.T);
        const Reference::Table beta = Reference::backwardProc(c.model, c.o, c.T);
        const Matrix alphaMatrix = toMatrix(alpha, c.T);
        const Matrix betaMatrix = toMatrix(beta, c.T);
        const int N = c.model.N;
        for (int draw = 0; draw < 5; ++draw) {
            const int i = c.random.integer(0, N - 1);
            const int j = c.random.integer(0, N - 1);
            const int t = c.random.integer(0, c.T - 1);
            ASSERT_TRUE(bitEqual(Reference::gamma(i, t, N, alpha, beta),
                                 model.gamma(i, t, alphaMatrix, betaMatrix)))
                << i << ' ' << t;
            if (t == c.T - 1) continue;
            ASSERT_TRUE(bitEqual(Reference::xi(i, j, t, c.o, N, c.model.a, c.model.b, alpha, beta),
                                 model.xi(i, j, t, c.o, alphaMatrix, betaMatrix)))
                << i << ' ' << j << ' ' << t;
        }
    }
}

TEST(HmmEvaluationProperty, PosteriorsOfAnyTablesAreThePlainOnes) {
    // Tables of all kinds, with more rows and columns than are used, each of its own shape.
    for (std::uint64_t seed = 40001; seed <= 44000; ++seed) {
        SCOPED_TRACE(seed);
        Case c(seed);
        HMM model = modelOf(c.model);
        const int N = c.model.N;
        const int alphaCols = c.T + c.random.integer(0, 3);
        const int betaCols = c.T + c.random.integer(0, 3);
        const Reference::Table alpha =
            randomTable(c.random, N + c.random.integer(0, 2), alphaCols, randomKind(c.random));
        const Reference::Table beta =
            randomTable(c.random, N + c.random.integer(0, 2), betaCols, randomKind(c.random));
        const Matrix alphaMatrix = toMatrix(alpha, alphaCols);
        const Matrix betaMatrix = toMatrix(beta, betaCols);
        const int i = c.random.integer(0, N - 1);
        const int j = c.random.integer(0, N - 1);
        const int t = c.random.integer(0, c.T - 1);
        ASSERT_TRUE(bitEqual(Reference::gamma(i, t, N, alpha, beta),
                             model.gamma(i, t, alphaMatrix, betaMatrix)));
        if (t == c.T - 1) continue;
        ASSERT_TRUE(bitEqual(Reference::xi(i, j, t, c.o, N, c.model.a, c.model.b, alpha, beta),
                             model.xi(i, j, t, c.o, alphaMatrix, betaMatrix)));
    }
}

TEST(HmmEvaluationProperty, LargerTablesThanNeededChangeNothing) {
    // The N x N and N x M in the corner of larger tables, for the model and for the parameters.
    for (std::uint64_t seed = 50001; seed <= 52000; ++seed) {
        SCOPED_TRACE(seed);
        Case c(seed);
        const int N = c.model.N;
        const int M = c.model.M;
        HMM model = modelOf(c.model);
        const auto widened = [&c](const Reference::Table& table, int rows, int cols) {
            Reference::Table wide = randomTable(c.random, rows, cols, randomKind(c.random));
            for (std::size_t r = 0; r < table.size(); ++r) {
                for (std::size_t k = 0; k < table[r].size(); ++k) wide[r][k] = table[r][k];
            }
            return toMatrix(wide, cols);
        };
        model.pi.push_back(3.0);
        model.a = widened(c.model.a, N + c.random.integer(0, 2), N + c.random.integer(1, 3));
        model.b = widened(c.model.b, N + c.random.integer(0, 2), M + c.random.integer(1, 3));
        const Matrix alpha = toMatrix(Reference::forwardProc(c.model, c.o, c.T), c.T);
        const Matrix beta = toMatrix(Reference::backwardProc(c.model, c.o, c.T), c.T);
        ASSERT_TRUE(bitEqual(alpha, model.forwardProc(c.o, c.T)));
        ASSERT_TRUE(bitEqual(beta, model.backwardProc(c.o, c.T)));
        HMM other(1, 1);
        ASSERT_TRUE(bitEqual(alpha, other.forwardProcHMM(c.o, c.T, N, model.pi, model.a, model.b)));
        ASSERT_TRUE(bitEqual(beta, other.backwardProcHMM(c.o, c.T, N, model.a, model.b)));
        ASSERT_TRUE(bitEqual(Reference::forwardProbability(c.model, c.o, c.T),
                             model.forwardProbability(c.o, c.T)));
        ASSERT_TRUE(bitEqual(Reference::backwardProbability(c.model, c.o, c.T),
                             model.backwardProbability(c.o, c.T)));
    }
}

TEST(HmmEvaluationProperty, LargeModelsHaveThePlainTables) {
    // State counts around the widths of vector registers and beyond them.
    std::uint64_t seed = 60000;
    for (int N : {13, 15, 16, 17, 31, 32, 33, 47, 64, 65, 100}) {
        for (Vesk::Test::Parameters kind : Vesk::Test::allParameterKinds) {
            SCOPED_TRACE(++seed);
            Random random(seed);
            const int M = random.integer(1, 40);
            const Reference::Model plain = randomModel(random, N, M, kind);
            const int T = random.integer(2, 20);
            const std::vector<int> o = random.symbols(T, M);
            HMM model = modelOf(plain);
            ASSERT_TRUE(bitEqual(Reference::forwardProc(plain, o, T), T, model.forwardProc(o, T)));
            ASSERT_TRUE(
                bitEqual(Reference::backwardProc(plain, o, T), T, model.backwardProc(o, T)));
            ASSERT_TRUE(bitEqual(Reference::forwardProbability(plain, o, T),
                                 model.forwardProbability(o, T)));
            ASSERT_TRUE(bitEqual(Reference::backwardProbability(plain, o, T),
                                 model.backwardProbability(o, T)));
        }
    }
}

}  // namespace
