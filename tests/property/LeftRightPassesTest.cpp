#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

using Vesk::Math::MatrixT;
using Vesk::ML::LeftRightHMM;
using namespace Vesk::Test;

class LeftRightPasses : public testing::TestWithParam<ModelKind> {};

INSTANTIATE_TEST_SUITE_P(AllKinds, LeftRightPasses, testing::ValuesIn(allModelKinds()),
                         testing::PrintToStringParamName());

/// A model, a sequence and the number of its symbols to use.
struct Case {
    Reference::LeftRightModel model;
    std::vector<int> O;
    int T;
};

Case randomCase(Random& random, const ModelKind& kind) {
    const int N = random.integer(1, 12);
    const int M = random.integer(1, 20);
    const int T = random.integer(1, 60);
    Case result{randomModel(random, N, M, kind.shape, kind.parameters), {}, T};
    result.O = random.symbols(T + (random.chance(0.3) ? random.integer(1, 5) : 0), M);
    return result;
}

TEST_P(LeftRightPasses, ForwardAndBackwardMatchTheLiteralVersionBitForBit) {
    for (std::uint64_t seed = 1; seed <= 700; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const Case c = randomCase(random, GetParam());
        LeftRightHMM model = libraryModel(c.model);

        std::vector<double> expectedScale(c.O.size(), 7.0);
        std::vector<double> scale(c.O.size(), 7.0);
        const auto alpha = Reference::forwardProcWithScale(c.model, c.O, c.T, expectedScale);
        ASSERT_TRUE(bitEqual(matrixOf(alpha), model.forwardProcWithScale(c.O, c.T, scale)));
        ASSERT_TRUE(bitEqual(expectedScale, scale));

        const auto beta = Reference::backwardProcWithScale(c.model, c.O, c.T, expectedScale);
        ASSERT_TRUE(bitEqual(matrixOf(beta), model.backwardProcWithScale(c.O, c.T, scale)));
        ASSERT_TRUE(bitEqual(expectedScale, scale));

        std::fill(scale.begin(), scale.end(), 7.0);
        std::fill(expectedScale.begin(), expectedScale.end(), 7.0);
        const double log = Reference::forwardProbabilityWithScale(c.model, c.O, c.T, expectedScale);
        ASSERT_TRUE(bitEqual(log, model.forwardProbabilityWithScale(c.O, c.T, scale)));
        ASSERT_TRUE(bitEqual(expectedScale, scale));
        ASSERT_TRUE(bitEqual(Reference::logLikelihood(c.model, c.O), model.logLikelihood(c.O)));
        ASSERT_TRUE(sameModel(c.model, model));
    }
}

TEST_P(LeftRightPasses, OnAGivenModelAreThoseOfAnObjectWithThatModel) {
    LeftRightHMM object(2, 2, 1);
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const Case c = randomCase(random, GetParam());
        LeftRightHMM model = libraryModel(c.model);
        const int N = c.model.N;

        std::vector<double> own(c.O.size(), 7.0);
        std::vector<double> given(c.O.size(), 7.0);
        const auto alpha = model.forwardProcWithScale(c.O, c.T, own);
        ASSERT_TRUE(bitEqual(
            alpha, object.forwardProcWithScaleHMM(c.O, c.T, given, N, model.pi, model.a, model.b)));
        ASSERT_TRUE(bitEqual(own, given));
        ASSERT_TRUE(bitEqual(
            model.backwardProcWithScale(c.O, c.T, own),
            object.backwardProcWithScaleHMM(c.O, c.T, given, N, model.pi, model.a, model.b)));
        std::fill(given.begin(), given.end(), 7.0);
        ASSERT_TRUE(bitEqual(
            model.forwardProbabilityWithScale(c.O, c.T, own),
            object.forwardProbabilityWithScaleHMM(c.O, c.T, given, N, model.pi, model.a, model.b)));
        ASSERT_TRUE(bitEqual(own, given));
    }
    EXPECT_TRUE(sameModel(LeftRightHMM(2, 2, 1), object));
}

TEST_P(LeftRightPasses, BackwardMatchesTheLiteralVersionForAnyScales) {
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const Case c = randomCase(random, GetParam());
        LeftRightHMM model = libraryModel(c.model);
        std::vector<double> scale =
            randomRow(random, static_cast<int>(c.O.size()),
                      random.chance(0.5) ? Parameters::Odd : Parameters::Unnormalised);
        const auto beta = Reference::backwardProcWithScale(c.model, c.O, c.T, scale);
        ASSERT_TRUE(bitEqual(matrixOf(beta), model.backwardProcWithScale(c.O, c.T, scale)));
    }
}

// One infinity or NaN in an otherwise ordinary left-right model: the zeros outside the band make
// it NaN, and no shortcut may lose that.
TEST(LeftRightPassesWithOneOddEntry, MatchTheLiteralVersionBitForBit) {
    const double odd[] = {std::numeric_limits<double>::infinity(),
                          -std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN(),
                          -0.0,
                          -0.5,
                          std::numeric_limits<double>::max(),
                          std::numeric_limits<double>::denorm_min()};
    for (std::uint64_t seed = 1; seed <= 4000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.integer(2, 12);
        const int M = random.integer(1, 6);
        const int T = random.integer(1, 20);
        Reference::LeftRightModel reference =
            randomModel(random, N, M, Shape::LeftRight, Parameters::Stochastic);
        const double value = odd[random.integer(0, 6)];
        const auto i = static_cast<std::size_t>(random.integer(0, N - 1));
        switch (random.integer(0, 2)) {
            case 0: reference.pi[i] = value; break;
            case 1:
                reference.a[i][static_cast<std::size_t>(random.integer(0, N - 1))] = value;
                break;
            default:
                reference.b[i][static_cast<std::size_t>(random.integer(0, M - 1))] = value;
                break;
        }
        LeftRightHMM model = libraryModel(reference);
        const std::vector<int> O = random.symbols(T, M);
        std::vector<double> expectedScale(O.size());
        std::vector<double> scale(O.size());
        ASSERT_TRUE(
            bitEqual(matrixOf(Reference::forwardProcWithScale(reference, O, T, expectedScale)),
                     model.forwardProcWithScale(O, T, scale)));
        ASSERT_TRUE(bitEqual(expectedScale, scale));
        ASSERT_TRUE(
            bitEqual(matrixOf(Reference::backwardProcWithScale(reference, O, T, expectedScale)),
                     model.backwardProcWithScale(O, T, scale)));
        ASSERT_TRUE(bitEqual(Reference::logLikelihood(reference, O), model.logLikelihood(O)));
    }
}

// Enumeration of every path as a second oracle.

TEST(LeftRightPassesByEnumeration, ScalesMultiplyToTheSumOverAllPaths) {
    for (std::uint64_t seed = 1; seed <= 2000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.integer(1, 3);
        const int M = random.integer(1, 4);
        const int T = random.integer(1, 5);
        const Reference::LeftRightModel reference =
            randomModel(random, N, M, random.chance(0.5) ? Shape::LeftRight : Shape::Full,
                        random.chance(0.5) ? Parameters::Stochastic : Parameters::Sparse);
        LeftRightHMM model = libraryModel(reference);
        const std::vector<int> O = random.symbols(T, M);
        std::vector<double> scale(O.size());
        const double log = model.forwardProbabilityWithScale(O, T, scale);
        const double total = Reference::enumeratedProbability(reference, O, T);
        if (total == 0.0) {
            EXPECT_TRUE(bitEqual(-std::numeric_limits<double>::infinity(), log));
            continue;
        }
        EXPECT_NEAR(std::exp(log) / total, 1.0, 1e-13);
        double product = 1.0;
        for (const double factor : scale) product *= factor;
        EXPECT_NEAR(product / total, 1.0, 1e-13);
    }
}

TEST(LeftRightPassesByEnumeration, AlphaBetaAndScaleGiveThePosteriorOfEveryState) {
    for (std::uint64_t seed = 1; seed <= 1000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.integer(1, 3);
        const int M = random.integer(1, 4);
        const int T = random.integer(1, 5);
        const Reference::LeftRightModel reference =
            randomModel(random, N, M, random.chance(0.5) ? Shape::LeftRight : Shape::Full,
                        random.chance(0.5) ? Parameters::Stochastic : Parameters::Sparse);
        LeftRightHMM model = libraryModel(reference);
        const std::vector<int> O = random.symbols(T, M);
        const double total = Reference::enumeratedProbability(reference, O, T);
        if (total == 0.0) continue;
        Reference::Table through = Reference::zeros(N, T);
        Reference::forEachPath(N, T, [&](const std::vector<int>& path) {
            const double p = Reference::pathProbability(reference, O, path);
            for (std::size_t t = 0; t < path.size(); ++t) {
                through[static_cast<std::size_t>(path[t])][t] += p / total;
            }
        });
        std::vector<double> scale(O.size());
        const MatrixT<double> alpha = model.forwardProcWithScale(O, T, scale);
        const MatrixT<double> beta = model.backwardProcWithScale(O, T, scale);
        for (int i = 0; i < N; ++i) {
            for (int t = 0; t < T; ++t) {
                const double posterior =
                    alpha(i, t) * beta(i, t) * scale[static_cast<std::size_t>(t)];
                EXPECT_NEAR(posterior,
                            through[static_cast<std::size_t>(i)][static_cast<std::size_t>(t)],
                            1e-13);
                EXPECT_NEAR(model.gamma(i, t, alpha, beta), posterior, 1e-13);
            }
        }
    }
}

}  // namespace
