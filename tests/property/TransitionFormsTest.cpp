#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <vector>

// Models of every size and structure that the library computes in a way of its own: dense ones,
// bands around the diagonal, rows of one value off the diagonal. VESK_CASES is how many of them.

namespace {

using Vesk::ML::LeftRightHMM;
using Vesk::ML::TrainingStep;
using namespace Vesk::Test;

/// What transitions may look like.
enum class Form { Dense, Band, Even, Nearly, Empty };

/// Sizes on both sides of every multiple that vectors and blocks of them have.
int randomSize(Random& random) {
    constexpr int sizes[] = {15, 16, 17, 23, 24, 25, 31, 32, 33, 40, 47, 48, 63, 64, 65, 72, 129};
    if (random.chance(0.7)) return random.integer(1, 14);
    return sizes[random.integer(0, static_cast<int>(std::size(sizes)) - 1)];
}

double randomOdd(Random& random) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double odd[] = {infinity, -infinity, std::numeric_limits<double>::quiet_NaN(),
                              -0.0,     -1.0,      std::numeric_limits<double>::denorm_min(),
                              1e300,    0.0};
    return odd[random.integer(0, static_cast<int>(std::size(odd)) - 1)];
}

void giveForm(Random& random, Form form, Reference::Table& a) {
    const int N = static_cast<int>(a.size());
    const int lo = random.chance(0.5) ? 0 : -random.integer(1, 2);
    const int hi = random.integer(0, 4);
    for (int i = 0; i < N; ++i) {
        std::vector<double>& row = a[Reference::at(i)];
        const double other = row[0];
        for (int j = 0; j < N; ++j) {
            double& value = row[Reference::at(j)];
            const bool inBand = lo <= j - i && j - i <= hi;
            if (form == Form::Band && !inBand) value = 0.0;
            if ((form == Form::Even || form == Form::Nearly) && j != i) value = other;
            if (form == Form::Empty) value = 0.0;
        }
    }
    if (form == Form::Nearly) {
        a[Reference::at(random.integer(0, N - 1))][Reference::at(random.integer(0, N - 1))] += 0.25;
    }
}

Reference::LeftRightModel randomForm(Random& random, int N, int M) {
    const Parameters kind =
        random.chance(0.5) ? Parameters::Stochastic : allParameterKinds[random.integer(0, 4)];
    Reference::LeftRightModel model = randomModel(random, N, M, Shape::Full, kind);
    giveForm(random, static_cast<Form>(random.integer(0, 4)), model.a);
    if (random.chance(0.5)) giveForm(random, Form::Band, model.a);
    while (random.chance(0.2)) {
        const auto i = Reference::at(random.integer(0, N - 1));
        switch (random.integer(0, 2)) {
            case 0: model.pi[i] = randomOdd(random); break;
            case 1: model.a[i][Reference::at(random.integer(0, N - 1))] = randomOdd(random); break;
            default: model.b[i][Reference::at(random.integer(0, M - 1))] = randomOdd(random); break;
        }
    }
    return model;
}

TEST(TransitionForms, PassesAndPathsAreTheLiteralOnes) {
    for (std::uint64_t seed = 1; seed <= VESK_CASES; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = randomSize(random);
        const int M = random.chance(0.05) ? 700 : random.integer(1, 20);
        const int T = N < 15 && random.chance(0.1) ? random.integer(1, 70) : random.integer(1, 9);
        const Reference::LeftRightModel reference = randomForm(random, N, M);
        const std::vector<int> o = random.symbols(T, M);
        LeftRightHMM model = libraryModel(reference);

        ASSERT_TRUE(
            bitEqual(matrixOf(Reference::forwardProc(reference, o, T)), model.forwardProc(o, T)));
        ASSERT_TRUE(bitEqual(Reference::forwardProbability(reference, o, T),
                             model.forwardProbability(o, T)));
        const std::vector<int> o2 = random.symbols(random.integer(1, 5), M);
        const double likelihood = Reference::forwardProbability(reference, o, T);
        const double likelihood2 =
            Reference::forwardProbability(reference, o2, static_cast<int>(o2.size()));
        ASSERT_TRUE(bitEqual({likelihood, likelihood2, likelihood, 0.0, likelihood2, likelihood},
                             model.likelihoods({o, o2, o, {}, o2, o})));
        ASSERT_TRUE(
            bitEqual(matrixOf(Reference::backwardProc(reference, o, T)), model.backwardProc(o, T)));
        ASSERT_TRUE(bitEqual(Reference::backwardProbability(reference, o, T),
                             model.backwardProbability(o, T)));
        ASSERT_TRUE(bitEqual(matrixOf(Reference::viterbi(reference, o, T)), model.viterbi(o, T)));

        std::vector<double> expectedScale(o.size());
        std::vector<double> scale(o.size());
        ASSERT_TRUE(bitEqual(Reference::forwardProbabilityWithScale(reference, o, T, expectedScale),
                             model.forwardProbabilityWithScale(o, T, scale)));
        ASSERT_TRUE(bitEqual(expectedScale, scale));
        std::fill(scale.begin(), scale.end(), 0.0);
        ASSERT_TRUE(
            bitEqual(matrixOf(Reference::forwardProcWithScale(reference, o, T, expectedScale)),
                     model.forwardProcWithScale(o, T, scale)));
        ASSERT_TRUE(bitEqual(expectedScale, scale));
        ASSERT_TRUE(
            bitEqual(matrixOf(Reference::backwardProcWithScale(reference, o, T, expectedScale)),
                     model.backwardProcWithScale(o, T, scale)));
    }
}

TEST(TransitionForms, InfinityCountsAlsoWhereNoTransitionLeadsOn) {
    constexpr int N = 8;
    Reference::LeftRightModel reference = Reference::makeLeftRight(N, 2, 1);
    reference.pi.assign(N, 0.0);
    reference.pi[N - 1] = 1e300;
    reference.a = Reference::zeros(N, N);
    for (std::size_t i = 0; i + 1 < N; ++i) reference.a[i][i + 1] = i == 0 ? 1e300 : 1.0;
    reference.b = Reference::zeros(N, 2);
    reference.b[1][0] = 1e300;
    reference.b[2][0] = 1e-300;
    reference.b[N - 1][1] = 1e300;
    LeftRightHMM model = libraryModel(reference);
    constexpr int T = 5;

    // Infinite in the first state at T - 2, which no state leads to.
    const std::vector<int> backwards(T, 0);
    const auto beta = matrixOf(Reference::backwardProc(reference, backwards, T));
    ASSERT_TRUE(std::isinf(beta(0, T - 2)) && std::isnan(beta(N - 1, 0)));
    EXPECT_TRUE(bitEqual(beta, model.backwardProc(backwards, T)));
    // Infinite in the last state at 0, which leads to none.
    const std::vector<int> forwards(T, 1);
    const auto alpha = matrixOf(Reference::forwardProc(reference, forwards, T));
    ASSERT_TRUE(std::isinf(alpha(N - 1, 0)) && std::isnan(alpha(0, T - 1)));
    EXPECT_TRUE(bitEqual(alpha, model.forwardProc(forwards, T)));
}

TEST(TransitionForms, TrainingIsTheLiteralOne) {
    int adopted = 0;
    for (std::uint64_t seed = 1; seed <= VESK_CASES / 10; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.chance(0.02) ? 33 : random.integer(1, 12);
        const int M = random.integer(1, 9);
        const int longest = random.chance(0.1) ? 40 : 6;
        const Reference::LeftRightModel start = randomForm(random, N, M);
        const Sequences sequences = randomSequences(random, random.integer(1, 6), 0, longest, M);

        Reference::LeftRightModel expected = start;
        const auto steps = Reference::baumWelchMultiple(expected, sequences, 2);
        LeftRightHMM model = libraryModel(start);
        std::vector<TrainingStep> told;
        model.trainMultiple(sequences, 2, [&told](const TrainingStep& step) {
            told.push_back(step);
            return true;
        });
        ASSERT_TRUE(sameModel(expected, model));
        ASSERT_EQ(told.size(), steps.size());
        for (std::size_t n = 0; n < steps.size(); ++n) {
            ASSERT_TRUE(bitEqual(steps[n].oldLog, told[n].oldLogLikelihood));
            ASSERT_TRUE(bitEqual(steps[n].newLog, told[n].newLogLikelihood));
        }
        for (const Reference::Step& step : steps) adopted += step.accepted ? 1 : 0;

        const std::vector<int>& o = sequences[0];
        const auto T = static_cast<int>(o.size());
        if (T < 1) continue;
        expected = start;
        Reference::baumWelch(expected, o, T, 2);
        model = libraryModel(start);
        model.baumWelch(o, T, 2);
        ASSERT_TRUE(sameModel(expected, model));
    }
    EXPECT_GT(adopted, VESK_CASES / 100);
}

}  // namespace
