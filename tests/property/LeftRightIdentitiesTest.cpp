#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <vector>

namespace {

using Vesk::Math::MatrixT;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using namespace Vesk::Test;

// The same cases in every run; a host's own RC_PARAMS wins.
[[maybe_unused]] const int seeded = setenv("RC_PARAMS", "seed=20261120 max_success=500", 0);

/// A model with odds, zeros and ones on a grid, so that shrinking reads well.
Reference::LeftRightModel anyModel() {
    const int N = *rc::gen::inRange(1, 5);
    const int M = *rc::gen::inRange(1, 5);
    Reference::LeftRightModel model = Reference::makeLeftRight(N, M, 1);
    const auto row = [](int count) {
        Reference::Vector values(static_cast<std::size_t>(count));
        for (double& value : values) value = *rc::gen::inRange(0, 9) / 8.0;
        return values;
    };
    model.pi = row(N);
    for (Reference::Vector& values : model.a) values = row(N);
    for (Reference::Vector& values : model.b) values = row(M);
    return model;
}

std::vector<int> anySequence(int M) {
    return *rc::gen::nonEmpty(rc::gen::container<std::vector<int>>(rc::gen::inRange(0, M)));
}

RC_GTEST_PROP(LeftRightIdentity, ScaledLogLikelihoodIsTheLogarithmOfThePlainProbability, ()) {
    const Reference::LeftRightModel reference = anyModel();
    LeftRightHMM model = libraryModel(reference);
    const std::vector<int> O = anySequence(reference.M);
    const double plain = model.forwardProbability(O, static_cast<int>(O.size()));
    const double log = model.logLikelihood(O);
    if (plain == 0.0) {
        // Factors of at least 1/64 do not underflow so soon: the sequence is impossible.
        RC_PRE(O.size() < 150);
        RC_ASSERT(log == -std::numeric_limits<double>::infinity());
    } else {
        RC_ASSERT(std::abs(log - std::log(plain)) <= 1e-12 * (1.0 + std::abs(log)));
    }
}

RC_GTEST_PROP(LeftRightIdentity, XiAndGammaAreTheSameFromScaledAndFromPlainTables, ()) {
    const Reference::LeftRightModel reference = anyModel();
    LeftRightHMM model = libraryModel(reference);
    const std::vector<int> O = anySequence(reference.M);
    const int T = static_cast<int>(O.size());
    RC_PRE(T < 60);
    RC_PRE(model.forwardProbability(O, T) > 0.0);
    std::vector<double> scale(O.size());
    const MatrixT<double> alpha = model.forwardProcWithScale(O, T, scale);
    const MatrixT<double> beta = model.backwardProcWithScale(O, T, scale);
    const MatrixT<double> plainAlpha = model.forwardProc(O, T);
    const MatrixT<double> plainBeta = model.backwardProc(O, T);
    for (int t = 0; t < T; ++t) {
        double sum = 0.0;
        for (int i = 0; i < reference.N; ++i) {
            const double scaled = model.gamma(i, t, alpha, beta);
            RC_ASSERT(std::abs(scaled - model.gamma(i, t, plainAlpha, plainBeta)) < 1e-12);
            sum += scaled;
            if (t == T - 1) continue;
            double leaving = 0.0;
            for (int j = 0; j < reference.N; ++j) {
                const double step = model.xi(i, j, t, O, alpha, beta);
                RC_ASSERT(std::abs(step - model.xi(i, j, t, O, plainAlpha, plainBeta)) < 1e-12);
                leaving += step;
            }
            RC_ASSERT(std::abs(leaving - scaled) < 1e-12);
        }
        RC_ASSERT(std::abs(sum - 1.0) < 1e-12);
    }
}

RC_GTEST_PROP(LeftRightIdentity, AColumnOfAlphaSumsToOneOrIsZeroWithItsScale, ()) {
    const Reference::LeftRightModel reference = anyModel();
    LeftRightHMM model = libraryModel(reference);
    const std::vector<int> O = anySequence(reference.M);
    const int T = static_cast<int>(O.size());
    std::vector<double> scale(O.size());
    const MatrixT<double> alpha = model.forwardProcWithScale(O, T, scale);
    for (int t = 0; t < T; ++t) {
        double sum = 0.0;
        for (int i = 0; i < reference.N; ++i) sum += alpha(i, t);
        if (scale[static_cast<std::size_t>(t)] == 0.0) {
            RC_ASSERT(sum == 0.0);
        } else {
            RC_ASSERT(std::abs(sum - 1.0) < 1e-14);
        }
    }
}

RC_GTEST_PROP(LeftRightIdentity, ALongerSequenceKeepsTheColumnsOfItsBeginning, ()) {
    const Reference::LeftRightModel reference = anyModel();
    LeftRightHMM model = libraryModel(reference);
    const std::vector<int> O = anySequence(reference.M);
    const int T = static_cast<int>(O.size());
    const int shorter = *rc::gen::inRange(1, T + 1);
    std::vector<double> scale(O.size(), 7.0);
    std::vector<double> shorterScale(O.size(), 7.0);
    const MatrixT<double> alpha = model.forwardProcWithScale(O, T, scale);
    const MatrixT<double> beginning = model.forwardProcWithScale(O, shorter, shorterScale);
    for (int t = 0; t < T; ++t) {
        const auto at = static_cast<std::size_t>(t);
        RC_ASSERT(sameBits(t < shorter ? scale[at] : 7.0, shorterScale[at]));
        for (int i = 0; i < reference.N && t < shorter; ++i) {
            RC_ASSERT(sameBits(alpha(i, t), beginning(i, t)));
        }
    }
}

/// The symbols in reverse order of their numbers.
void renameSymbols(Reference::LeftRightModel& model, Sequences& sequences) {
    for (Reference::Vector& row : model.b) std::reverse(row.begin(), row.end());
    for (std::vector<int>& sequence : sequences) {
        for (int& symbol : sequence) symbol = model.M - 1 - symbol;
    }
}

RC_GTEST_PROP(LeftRightIdentity, RenamingSymbolsRenamesTheTrainedEmissionsBitForBit, ()) {
    Reference::LeftRightModel reference = anyModel();
    LeftRightHMM plain = libraryModel(reference);
    LeftRightHMM plainSingle = plain;
    Sequences sequences = {anySequence(reference.M), anySequence(reference.M)};
    plain.trainMultiple(sequences, 2);
    plainSingle.baumWelch(sequences[0], static_cast<int>(sequences[0].size()), 2);

    renameSymbols(reference, sequences);
    LeftRightHMM renamed = libraryModel(reference);
    LeftRightHMM renamedSingle = renamed;
    renamed.trainMultiple(sequences, 2);
    renamedSingle.baumWelch(sequences[0], static_cast<int>(sequences[0].size()), 2);

    RC_ASSERT(static_cast<bool>(bitEqual(plain.a, renamed.a)));
    RC_ASSERT(static_cast<bool>(bitEqual(plainSingle.a, renamedSingle.a)));
    for (int i = 0; i < reference.N; ++i) {
        for (int k = 0; k < reference.M; ++k) {
            const int other = reference.M - 1 - k;
            RC_ASSERT(sameBits(plain.b(i, k), renamed.b(i, other)));
            RC_ASSERT(sameBits(plainSingle.b(i, k), renamedSingle.b(i, other)));
        }
    }
}

RC_GTEST_PROP(LeftRightIdentity, RenamingStatesRenamesTheRowsOfTheTables, ()) {
    const Reference::LeftRightModel reference = anyModel();
    Reference::LeftRightModel turned = reference;
    std::reverse(turned.pi.begin(), turned.pi.end());
    std::reverse(turned.a.begin(), turned.a.end());
    for (Reference::Vector& row : turned.a) std::reverse(row.begin(), row.end());
    std::reverse(turned.b.begin(), turned.b.end());
    LeftRightHMM model = libraryModel(reference);
    LeftRightHMM other = libraryModel(turned);
    const std::vector<int> O = anySequence(reference.M);
    const int T = static_cast<int>(O.size());
    std::vector<double> scale(O.size());
    std::vector<double> otherScale(O.size());
    const MatrixT<double> alpha = model.forwardProcWithScale(O, T, scale);
    const MatrixT<double> otherAlpha = other.forwardProcWithScale(O, T, otherScale);
    for (int t = 0; t < T; ++t) {
        const auto at = static_cast<std::size_t>(t);
        RC_ASSERT(std::abs(scale[at] - otherScale[at]) <= 1e-12 * scale[at]);
        for (int i = 0; i < reference.N; ++i) {
            RC_ASSERT(std::abs(alpha(i, t) - otherAlpha(reference.N - 1 - i, t)) < 1e-12);
        }
    }
}

TEST(LeftRightIdentities, ProbabilitiesOfAllSequencesOfALengthSumToOne) {
    for (std::uint64_t seed = 1; seed <= 60; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int M = random.integer(1, 3);
        const Reference::LeftRightModel reference =
            randomModel(random, random.integer(1, 6), M, Shape::LeftRight, Parameters::Stochastic);
        const LeftRightHMM model = libraryModel(reference);
        for (int T = 1; T <= 5; ++T) {
            double total = 0.0;
            Reference::forEachPath(M, T, [&](const std::vector<int>& O) {
                total += std::exp(model.logLikelihood(O));
            });
            EXPECT_NEAR(total, 1.0, 1e-12) << "T " << T;
        }
    }
}

TEST(LeftRightIdentities, BestPathNeverOutscoresTheTotalAndNeverStepsBack) {
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int M = random.integer(1, 6);
        const int T = random.integer(1, 30);
        const Reference::LeftRightModel reference =
            randomModel(random, random.integer(1, 8), M, Shape::LeftRight, Parameters::Stochastic);
        LeftRightHMM model = libraryModel(reference);
        const std::vector<int> O = random.symbols(T, M);
        const MatrixT<double> best = model.viterbi(O, T);
        EXPECT_LE(std::log(best(0, 0)), model.logLikelihood(O) + 1e-9);
        EXPECT_EQ(best(1, 0), 0.0);
        for (int t = 1; t < T; ++t) {
            EXPECT_GE(best(1, t), best(1, t - 1));
            EXPECT_LE(best(1, t), best(1, t - 1) + reference.delta);
        }
    }
}

TEST(LeftRightIdentities, TrainingNeverGainsABackwardStepOrALongerJump) {
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.integer(1, 7);
        const int M = random.integer(1, 6);
        const int delta = random.integer(0, N);
        const Sequences sequences = randomSequences(random, 4, 1, 30, M);
        LeftRightHMM model(N, M, delta);
        model.estimate(HMM::EqualSegments, sequences);
        model.trainMultiple(sequences, 6);
        for (int i = 0; i < N; ++i) {
            for (int j = 0; j < N; ++j) {
                if (j < i || j > i + delta) {
                    ASSERT_TRUE(bitEqual(0.0, model.a(i, j))) << i << " " << j;
                }
            }
        }
    }
}

}  // namespace
