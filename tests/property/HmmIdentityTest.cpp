#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

// What must hold between results, whatever they are.

namespace {

using Vesk::ML::HMM;
using Vesk::Test::bitEqual;
using Vesk::Test::Matrix;
using Vesk::Test::modelOf;
using Vesk::Test::Parameters;
using Vesk::Test::Random;
using Vesk::Test::randomModel;
namespace Reference = Vesk::Test::Reference;
using Reference::at;

struct Case {
    explicit Case(std::uint64_t seed) : random(seed) {
        const int M = random.integer(1, 20);
        model = randomModel(random, random.integer(1, 12), M,
                            random.chance(0.5) ? Parameters::Stochastic : Parameters::Sparse);
        T = random.integer(1, 60);
        o = random.symbols(T, M);
    }

    Random random;
    Reference::Model model;
    int T = 1;
    std::vector<int> o;
};

std::vector<int> permutation(Random& random, int count) {
    std::vector<int> order(at(count));
    std::iota(order.begin(), order.end(), 0);
    for (int i = count - 1; i > 0; --i) std::swap(order[at(i)], order[at(random.integer(0, i))]);
    return order;
}

TEST(HmmIdentity, ForwardAndBackwardAgree) {
    for (std::uint64_t seed = 1; seed <= 3000; ++seed) {
        SCOPED_TRACE(seed);
        const Case c(seed);
        HMM model = modelOf(c.model);
        const double forward = model.forwardProbability(c.o, c.T);
        ASSERT_NEAR(forward, model.backwardProbability(c.o, c.T), 1e-12 * forward);
    }
}

TEST(HmmIdentity, EveryTimeHasTheSameProbability) {
    for (std::uint64_t seed = 10001; seed <= 12000; ++seed) {
        SCOPED_TRACE(seed);
        const Case c(seed);
        HMM model = modelOf(c.model);
        const double p = model.forwardProbability(c.o, c.T);
        const Matrix alpha = model.forwardProc(c.o, c.T);
        const Matrix beta = model.backwardProc(c.o, c.T);
        for (int t = 0; t < c.T; ++t) {
            double sum = 0.0;
            for (int i = 0; i < c.model.N; ++i) sum += alpha(i, t) * beta(i, t);
            ASSERT_NEAR(sum, p, 1e-12 * p) << t;
        }
    }
}

TEST(HmmIdentity, PosteriorsSumToOne) {
    int possible = 0;
    for (std::uint64_t seed = 20001; seed <= 21000; ++seed) {
        SCOPED_TRACE(seed);
        Case c(seed);
        HMM model = modelOf(c.model);
        if (model.forwardProbability(c.o, c.T) == 0.0) continue;
        ++possible;
        const Matrix alpha = model.forwardProc(c.o, c.T);
        const Matrix beta = model.backwardProc(c.o, c.T);
        const int t = c.random.integer(0, c.T - 1);
        double states = 0.0;
        for (int i = 0; i < c.model.N; ++i) states += model.gamma(i, t, alpha, beta);
        ASSERT_NEAR(states, 1.0, 1e-12);
        if (t == c.T - 1) continue;
        double pairs = 0.0;
        for (int i = 0; i < c.model.N; ++i) {
            double row = 0.0;
            for (int j = 0; j < c.model.N; ++j) row += model.xi(i, j, t, c.o, alpha, beta);
            // Leaving state i at t for anywhere is being in it.
            ASSERT_NEAR(row, model.gamma(i, t, alpha, beta), 1e-12);
            pairs += row;
        }
        ASSERT_NEAR(pairs, 1.0, 1e-12);
    }
    EXPECT_GT(possible, 500);
}

TEST(HmmIdentity, BestPathNeverOutscoresTheTotal) {
    for (std::uint64_t seed = 30001; seed <= 32000; ++seed) {
        SCOPED_TRACE(seed);
        const Case c(seed);
        HMM model = modelOf(c.model);
        const double total = model.forwardProbability(c.o, c.T);
        const Matrix result = model.viterbi(c.o, c.T);
        ASSERT_LE(result(0, 0), total * (1.0 + 1e-11));
        if (total == 0.0) continue;
        // Nor does it use what is impossible.
        const auto state = [&result](int t) { return static_cast<int>(result(1, t)); };
        ASSERT_GT(model.pi[at(state(0))], 0.0);
        for (int t = 0; t < c.T; ++t) {
            ASSERT_GT(model.b(state(t), c.o[at(t)]), 0.0) << t;
            if (t > 0) {
                ASSERT_GT(model.a(state(t - 1), state(t)), 0.0) << t;
            }
        }
    }
}

TEST(HmmIdentity, PrefixesHaveTheSameForwardColumns) {
    for (std::uint64_t seed = 40001; seed <= 42000; ++seed) {
        SCOPED_TRACE(seed);
        Case c(seed);
        c.model = randomModel(c.random, c.model.N, c.model.M);
        HMM model = modelOf(c.model);
        const Matrix whole = model.forwardProc(c.o, c.T);
        const int shorter = c.random.integer(1, c.T);
        const Matrix prefix = model.forwardProc(c.o, shorter);
        for (int i = 0; i < c.model.N; ++i) {
            for (int t = 0; t < shorter; ++t) ASSERT_TRUE(bitEqual(whole(i, t), prefix(i, t)));
        }
    }
}

TEST(HmmIdentity, SuffixesHaveTheSameBackwardColumns) {
    for (std::uint64_t seed = 50001; seed <= 52000; ++seed) {
        SCOPED_TRACE(seed);
        Case c(seed);
        c.model = randomModel(c.random, c.model.N, c.model.M);
        HMM model = modelOf(c.model);
        const Matrix whole = model.backwardProc(c.o, c.T);
        const int from = c.random.integer(0, c.T - 1);
        const std::vector<int> suffix(c.o.begin() + from, c.o.end());
        const Matrix part = model.backwardProc(suffix, c.T - from);
        for (int i = 0; i < c.model.N; ++i) {
            for (int t = from; t < c.T; ++t) {
                ASSERT_TRUE(bitEqual(whole(i, t), part(i, t - from)));
            }
        }
    }
}

TEST(HmmIdentity, RelabelledStatesHaveRelabelledResults) {
    for (std::uint64_t seed = 60001; seed <= 62000; ++seed) {
        SCOPED_TRACE(seed);
        Case c(seed);
        const int N = c.model.N;
        const std::vector<int> order = permutation(c.random, N);
        Reference::Model relabelled = c.model;
        for (int i = 0; i < N; ++i) {
            const std::size_t to = at(order[at(i)]);
            relabelled.pi[to] = c.model.pi[at(i)];
            relabelled.b[to] = c.model.b[at(i)];
            for (int j = 0; j < N; ++j) {
                relabelled.a[to][at(order[at(j)])] = c.model.a[at(i)][at(j)];
            }
        }
        HMM before = modelOf(c.model);
        HMM after = modelOf(relabelled);
        const Matrix alphaBefore = before.forwardProc(c.o, c.T);
        const Matrix alphaAfter = after.forwardProc(c.o, c.T);
        const Matrix betaBefore = before.backwardProc(c.o, c.T);
        const Matrix betaAfter = after.backwardProc(c.o, c.T);
        for (int i = 0; i < N; ++i) {
            const int to = order[at(i)];
            for (int t = 0; t < c.T; ++t) {
                ASSERT_NEAR(alphaBefore(i, t), alphaAfter(to, t), 1e-12 * alphaBefore(i, t));
                ASSERT_NEAR(betaBefore(i, t), betaAfter(to, t), 1e-12 * betaBefore(i, t));
            }
        }
        const double best = before.viterbi(c.o, c.T)(0, 0);
        ASSERT_NEAR(best, after.viterbi(c.o, c.T)(0, 0), 1e-11 * best);
    }
}

TEST(HmmIdentity, RelabelledSymbolsChangeNotABit) {
    for (std::uint64_t seed = 70001; seed <= 72000; ++seed) {
        SCOPED_TRACE(seed);
        Case c(seed);
        c.model = randomModel(c.random, c.model.N, c.model.M);
        const std::vector<int> order = permutation(c.random, c.model.M);
        Reference::Model relabelled = c.model;
        for (int i = 0; i < c.model.N; ++i) {
            for (int k = 0; k < c.model.M; ++k) {
                relabelled.b[at(i)][at(order[at(k)])] = c.model.b[at(i)][at(k)];
            }
        }
        std::vector<int> o = c.o;
        for (int& symbol : o) symbol = order[at(symbol)];
        HMM before = modelOf(c.model);
        HMM after = modelOf(relabelled);
        ASSERT_TRUE(bitEqual(before.forwardProc(c.o, c.T), after.forwardProc(o, c.T)));
        ASSERT_TRUE(bitEqual(before.backwardProc(c.o, c.T), after.backwardProc(o, c.T)));
        ASSERT_TRUE(bitEqual(before.viterbi(c.o, c.T), after.viterbi(o, c.T)));
        before.baumWelch(c.o, c.T, 1);
        after.baumWelch(o, c.T, 1);
        ASSERT_TRUE(bitEqual(before.pi, after.pi));
        ASSERT_TRUE(bitEqual(before.a, after.a));
        for (int i = 0; i < c.model.N; ++i) {
            for (int k = 0; k < c.model.M; ++k) {
                ASSERT_TRUE(bitEqual(before.b(i, k), after.b(i, order[at(k)])));
            }
        }
    }
}

TEST(HmmIdentity, PowersOfTwoScaleEveryBit) {
    // Halved initial probabilities halve alpha exactly, and leave beta and the path alone.
    for (std::uint64_t seed = 80001; seed <= 82000; ++seed) {
        SCOPED_TRACE(seed);
        Case c(seed);
        c.T = std::min(c.T, 30);  // far from underflow
        HMM model = modelOf(c.model);
        HMM halved = model;
        for (double& value : halved.pi) value *= 0.5;
        Matrix alpha = model.forwardProc(c.o, c.T);
        for (double& value : alpha.data) value *= 0.5;
        ASSERT_TRUE(bitEqual(alpha, halved.forwardProc(c.o, c.T)));
        ASSERT_TRUE(bitEqual(model.backwardProc(c.o, c.T), halved.backwardProc(c.o, c.T)));
        ASSERT_TRUE(bitEqual(0.5 * model.forwardProbability(c.o, c.T),
                             halved.forwardProbability(c.o, c.T)));
        ASSERT_TRUE(bitEqual(0.5 * model.backwardProbability(c.o, c.T),
                             halved.backwardProbability(c.o, c.T)));
    }
}

TEST(HmmIdentity, TrainingStepByStepIsTrainingAtOnce) {
    for (std::uint64_t seed = 90001; seed <= 91000; ++seed) {
        SCOPED_TRACE(seed);
        Case c(seed);
        c.model = randomModel(c.random, c.model.N, c.model.M);
        HMM atOnce = modelOf(c.model);
        HMM bySteps = modelOf(c.model);
        const int steps = c.random.integer(1, 4);
        atOnce.baumWelch(c.o, c.T, steps);
        for (int step = 0; step < steps; ++step) bySteps.baumWelch(c.o, c.T, 1);
        ASSERT_TRUE(Vesk::Test::modelsEqual(atOnce, bySteps));
    }
}

}  // namespace
