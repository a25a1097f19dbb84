#include <support/HmmEnumeration.h>
#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

// What the passes compute, against the sum over every state path written down one by one.

namespace {

using Vesk::ML::HMM;
using Vesk::Test::Matrix;
using Vesk::Test::modelOf;
using Vesk::Test::Parameters;
using Vesk::Test::Random;
using Vesk::Test::randomModel;
using Vesk::Test::Enumeration::allSequences;
using Vesk::Test::Enumeration::enumerate;
using Vesk::Test::Enumeration::pathProbability;
namespace Reference = Vesk::Test::Reference;

/// Sums of at most 243 positive products of ten factors, each rounded to 1.1e-16.
constexpr double tolerance = 1e-14;

void expectClose(double expected, double actual) {
    ASSERT_LE(std::fabs(actual - expected), tolerance * std::fabs(expected))
        << "expected " << expected << ", got " << actual;
}

struct Case {
    explicit Case(std::uint64_t seed) : random(seed) {
        const int N = random.integer(1, 3);
        const int M = random.integer(1, 4);
        const Parameters kinds[] = {Parameters::Stochastic, Parameters::Sparse,
                                    Parameters::Unnormalised};
        model = randomModel(random, N, M, kinds[random.integer(0, 2)]);
        T = random.integer(1, 5);
        o = random.symbols(T, M);
    }

    Random random;
    Reference::Model model;
    int T = 1;
    std::vector<int> o;
};

TEST(HmmEnumerationProperty, ProbabilitiesAreTheSumOverAllPaths) {
    for (std::uint64_t seed = 1; seed <= 3000; ++seed) {
        SCOPED_TRACE(seed);
        const Case c(seed);
        HMM model = modelOf(c.model);
        const double total = enumerate(c.model, c.o, c.T).total;
        ASSERT_NO_FATAL_FAILURE(expectClose(total, model.forwardProbability(c.o, c.T)));
        ASSERT_NO_FATAL_FAILURE(expectClose(total, model.backwardProbability(c.o, c.T)));
    }
}

TEST(HmmEnumerationProperty, PosteriorsAreTheShareOfThePathsThrough) {
    int possible = 0;
    for (std::uint64_t seed = 10001; seed <= 12000; ++seed) {
        SCOPED_TRACE(seed);
        const Case c(seed);
        HMM model = modelOf(c.model);
        const auto summary = enumerate(c.model, c.o, c.T);
        if (summary.total == 0.0) continue;
        ++possible;
        const Matrix alpha = model.forwardProc(c.o, c.T);
        const Matrix beta = model.backwardProc(c.o, c.T);
        for (int t = 0; t < c.T; ++t) {
            for (int i = 0; i < c.model.N; ++i) {
                const double share =
                    summary.state[Reference::at(i)][Reference::at(t)] / summary.total;
                ASSERT_NO_FATAL_FAILURE(expectClose(share, model.gamma(i, t, alpha, beta)));
                if (t + 1 == c.T) continue;
                for (int j = 0; j < c.model.N; ++j) {
                    const double moved =
                        summary.transition[Reference::at(t)][Reference::at(i)][Reference::at(j)] /
                        summary.total;
                    ASSERT_NO_FATAL_FAILURE(
                        expectClose(moved, model.xi(i, j, t, c.o, alpha, beta)));
                }
            }
        }
    }
    EXPECT_GT(possible, 1000);
}

TEST(HmmEnumerationProperty, ViterbiFindsTheBestPath) {
    int decided = 0;
    for (std::uint64_t seed = 20001; seed <= 23000; ++seed) {
        SCOPED_TRACE(seed);
        const Case c(seed);
        HMM model = modelOf(c.model);
        const auto summary = enumerate(c.model, c.o, c.T);
        const Matrix result = model.viterbi(c.o, c.T);
        std::vector<int> path;
        for (int t = 0; t < c.T; ++t) path.push_back(static_cast<int>(result(1, t)));
        if (summary.best == 0.0) {
            ASSERT_EQ(result(0, 0), 0.0);
            continue;
        }
        ASSERT_NEAR(result(0, 0), summary.best, 1e-13 * summary.best);
        ASSERT_NEAR(pathProbability(c.model, c.o, path), summary.best, 1e-13 * summary.best);
        // Where one path is clearly the best it must be that one.
        if (summary.runnerUp < summary.best * (1.0 - 1e-12)) {
            ++decided;
            ASSERT_EQ(path, summary.bestPath);
        }
    }
    EXPECT_GT(decided, 1000);
}

TEST(HmmEnumerationProperty, AllSequencesOfALengthTogetherAreCertain) {
    for (std::uint64_t seed = 30001; seed <= 30300; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const int N = random.integer(1, 6);
        const int M = random.integer(1, 4);
        HMM model = modelOf(randomModel(random, N, M, Parameters::Stochastic));
        const int T = random.integer(1, 5);
        double forward = 0.0;
        double backward = 0.0;
        for (const std::vector<int>& o : allSequences(M, T)) {
            forward += model.forwardProbability(o, T);
            backward += model.backwardProbability(o, T);
        }
        ASSERT_NEAR(forward, 1.0, 1e-12);
        ASSERT_NEAR(backward, 1.0, 1e-12);
    }
}

}  // namespace
