#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using namespace Vesk::Test;

constexpr double inf = std::numeric_limits<double>::infinity();

LeftRightHMM oneState(std::vector<double> emissions) {
    LeftRightHMM model(1, static_cast<int>(emissions.size()), 0);
    model.pi = {1.0};
    model.a.data = {1.0};
    model.b.data = std::move(emissions);
    return model;
}

Reference::LeftRightModel twoStates() {
    Reference::LeftRightModel model = Reference::makeLeftRight(2, 2, 1);
    model.pi = {1.0, 0.0};
    model.a = {{0.5, 0.5}, {0.0, 1.0}};
    model.b = {{0.75, 0.25}, {0.25, 0.75}};
    return model;
}

TEST(LeftRightBaumWelch, NewEmissionsAreTheMassWithTheSymbolOverTheMassWithout) {
    // One state, O = 0 0 1: every gamma is 1. b(0) = 2 / 1, b(1) = 1 / 2, a = 2 / 2.
    // Old likelihood 0.5^3 = 0.125, new one 2 * 2 * 0.5 = 2.
    LeftRightHMM model = oneState({0.5, 0.5});
    model.baumWelch({0, 0, 1}, 3, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{2.0, 0.5}, model.b.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{1.0}, model.a.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{1.0}, model.pi));
}

TEST(LeftRightBaumWelch, WorkedExampleOfTwoStates) {
    // O = 0 1. alpha: (0.75, 0), then 0.75 * 0.5 * 0.25 = 0.09375 and 0.75 * 0.5 * 0.75 = 0.28125,
    // together 0.375. gamma: (1, 0), then (0.25, 0.75). xi(0, 0) = 0.25, xi(0, 1) = 0.75.
    // a: row 0 = (0.25, 0.75) / 1, row 1 = 0 / 0 = 0.
    // b: state 0: 1 / 0.25 = 4 and 0.25 / 1; state 1: 0 / 0.75 = 0 and 0.75 / 0 = infinity.
    // The candidate's likelihood is infinite: it is adopted.
    LeftRightHMM model = libraryModel(twoStates());
    model.baumWelch({0, 1}, 2, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.75, 0.0, 0.0}, model.a.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{4.0, 0.25, 0.0, inf}, model.b.data));
}

TEST(LeftRightBaumWelch, EquallyLikelyCandidateIsRejected) {
    // The model of the first example after training: it reproduces itself, likelihood 2 again.
    LeftRightHMM model = oneState({2.0, 0.5});
    model.baumWelch({0, 0, 1}, 3, -1);
    EXPECT_TRUE(bitEqual(std::vector<double>{2.0, 0.5}, model.b.data));
    // Different emissions of the same likelihood 4 * 4 * 0.125 = 2: not replaced either.
    LeftRightHMM other = oneState({4.0, 0.125});
    other.baumWelch({0, 0, 1}, 3, -1);
    EXPECT_TRUE(bitEqual(std::vector<double>{4.0, 0.125}, other.b.data));
}

TEST(LeftRightBaumWelch, LessLikelyCandidateIsRejected) {
    LeftRightHMM model = oneState({8.0, 0.5});
    model.baumWelch({0, 0, 1}, 3, 5);
    EXPECT_TRUE(bitEqual(std::vector<double>{8.0, 0.5}, model.b.data));
}

TEST(LeftRightBaumWelch, NotANumberIsRejected) {
    // O = 1 1 in two states: b(0, 1) = mass / 0 = infinity, and pi(1) = 0 times infinity.
    LeftRightHMM model = libraryModel(twoStates());
    model.baumWelch({1, 1}, 2, -1);
    EXPECT_TRUE(sameModel(twoStates(), model));
}

TEST(LeftRightBaumWelch, ASymbolAtEveryTimeGivesAnInfiniteEmission) {
    LeftRightHMM model = oneState({0.5, 0.5});
    model.baumWelch({1, 1, 1}, 3, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0, inf}, model.b.data));
}

TEST(LeftRightBaumWelch, OneStepGivesZeroTransitions) {
    // T = 1: no transition is seen, 0 / 0 = 0; the emission is 1 / 0.
    LeftRightHMM model = oneState({0.5, 0.5});
    model.baumWelch({0}, 1, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0}, model.a.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{inf, 0.0}, model.b.data));
}

TEST(LeftRightBaumWelch, NoIterationLeavesTheModelUnchanged) {
    LeftRightHMM model = oneState({0.5, 0.5});
    const LeftRightHMM before = model;
    model.baumWelch({0, 0, 1}, 3, 0);
    EXPECT_TRUE(sameModel(before, model));
}

TEST(LeftRightBaumWelch, BelowOneStepLeavesTheModelUnchanged) {
    for (const int T : {0, -1, -2147483647 - 1}) {
        for (const int maxIterations : {-1, 0, 1, 5}) {
            LeftRightHMM model = oneState({0.5, 0.5});
            const LeftRightHMM before = model;
            model.baumWelch({}, T, maxIterations);
            model.baumWelch({0, 1}, T, maxIterations);
            EXPECT_TRUE(sameModel(before, model));
        }
    }
}

TEST(LeftRightBaumWelch, CountsAdoptedIterations) {
    Random random(13);
    const std::vector<int> O = random.symbols(12, 3);
    Reference::LeftRightModel start =
        randomModel(random, 3, 3, Shape::LeftRight, Parameters::Stochastic);
    Reference::LeftRightModel unlimited = start;
    const int adopted = Reference::baumWelch(unlimited, O, 12, 1000);
    ASSERT_GE(adopted, 2);
    ASSERT_LT(adopted, 1000);
    for (int limit = 0; limit <= adopted + 1; ++limit) {
        SCOPED_TRACE(limit);
        Reference::LeftRightModel expected = start;
        ASSERT_EQ(Reference::baumWelch(expected, O, 12, limit), std::min(limit, adopted));
        LeftRightHMM model = libraryModel(start);
        model.baumWelch(O, 12, limit);
        EXPECT_TRUE(sameModel(expected, model));
    }
    for (const int noLimit : {-1, -2, -2147483647 - 1}) {
        LeftRightHMM model = libraryModel(start);
        model.baumWelch(O, 12, noLimit);
        EXPECT_TRUE(sameModel(unlimited, model));
    }
}

TEST(LeftRightBaumWelch, OneIterationTwiceIsTwoIterations) {
    Random random(5);
    const std::vector<int> O = random.symbols(15, 4);
    const Reference::LeftRightModel start =
        randomModel(random, 3, 4, Shape::LeftRight, Parameters::Stochastic);
    LeftRightHMM stepwise = libraryModel(start);
    LeftRightHMM atOnce = libraryModel(start);
    stepwise.baumWelch(O, 15, 1);
    stepwise.baumWelch(O, 15, 1);
    atOnce.baumWelch(O, 15, 2);
    EXPECT_TRUE(sameModel(stepwise, atOnce));
}

TEST(LeftRightBaumWelch, UsesTheFirstTSymbolsOnly) {
    LeftRightHMM model = oneState({0.5, 0.5});
    model.baumWelch({0, 0, 1, 1, 1, 1}, 3, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{2.0, 0.5}, model.b.data));
}

TEST(LeftRightBaumWelch, KeepsPiAndEverythingElse) {
    Reference::LeftRightModel reference = twoStates();
    reference.pi = {0.25, 0.5};
    reference.name = "tick";
    reference.vocabValues = {3, 4};
    reference.stateSymbols = {{0}, {1}};
    reference.vocab = {{8}, {9}};
    LeftRightHMM model = libraryModel(reference);
    const std::vector<int> O = {0, 1, 1, 0, 1};
    model.baumWelch(O, 5, 2);
    ASSERT_EQ(Reference::baumWelch(reference, O, 5, 2), 2);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.5}, model.pi));
    EXPECT_TRUE(sameModel(reference, model));
}

TEST(LeftRightBaumWelch, ComparesSymbolsByIndexAndNotByTheVocabulary) {
    LeftRightHMM plain = libraryModel(twoStates());
    LeftRightHMM swapped = libraryModel(twoStates());
    swapped.vocab.data = {1.0, 0.0};
    plain.baumWelch({0, 1, 0, 0}, 4, 1);
    swapped.baumWelch({0, 1, 0, 0}, 4, 1);
    EXPECT_TRUE(bitEqual(plain.b, swapped.b));
    EXPECT_TRUE(bitEqual(plain.a, swapped.a));
}

TEST(LeftRightBaumWelch, ImpossibleSequenceLeavesTheModelUnchanged) {
    Reference::LeftRightModel reference = twoStates();
    reference.b = {{1.0, 0.0}, {0.0, 1.0}};
    LeftRightHMM model = libraryModel(reference);
    model.baumWelch({1, 0, 1}, 3, -1);
    EXPECT_TRUE(sameModel(reference, model));
}

TEST(LeftRightBaumWelch, UnseenSymbolGetsZeroEmissions) {
    LeftRightHMM model = oneState({0.25, 0.25, 0.5});
    model.baumWelch({0, 1, 0}, 3, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{2.0, 0.5, 0.0}, model.b.data));
}

TEST(LeftRightBaumWelch, DoesNotReadTheConvergenceThreshold) {
    LeftRightHMM model = oneState({0.5, 0.5});
    model.convergenceThreshold = std::numeric_limits<float>::infinity();
    model.baumWelch({0, 0, 1}, 3, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{2.0, 0.5}, model.b.data));
}

TEST(LeftRightBaumWelch, FillsTransitionsBeyondDeltaWhereTheyAreNotZero) {
    Reference::LeftRightModel reference = Reference::makeLeftRight(3, 2, 1);
    reference.pi = {0.5, 0.25, 0.25};
    reference.a = {{0.25, 0.25, 0.5}, {0.5, 0.25, 0.25}, {0.25, 0.5, 0.25}};
    reference.b = {{0.75, 0.25}, {0.5, 0.5}, {0.25, 0.75}};
    LeftRightHMM model = libraryModel(reference);
    const std::vector<int> O = {0, 1, 1, 0, 1, 0};
    ASSERT_EQ(Reference::baumWelch(reference, O, 6, 1), 1);
    model.baumWelch(O, 6, 1);
    EXPECT_TRUE(sameModel(reference, model));
    EXPECT_GT(model.a(0, 2), 0.0);
    EXPECT_GT(model.a(2, 0), 0.0);
}

TEST(LeftRightBaumWelch, AdoptedTablesHaveTheModelsShape) {
    // Three states' tables of which two states are used.
    Reference::LeftRightModel reference = twoStates();
    reference.pi = {1.0, 0.0, 9.0};
    reference.a = {{0.5, 0.5, 9.0}, {0.25, 0.75, 9.0}, {9.0, 9.0, 9.0}};
    reference.b = {{0.75, 0.25, 9.0}, {0.25, 0.75, 9.0}, {9.0, 9.0, 9.0}};
    LeftRightHMM model = libraryModel(reference);
    const std::vector<int> O = {0, 1, 1, 0, 1};
    ASSERT_EQ(Reference::baumWelch(reference, O, 5, 1), 1);
    model.baumWelch(O, 5, 1);
    EXPECT_EQ(model.a.cols, 2);
    EXPECT_EQ(model.b.rows, 2);
    EXPECT_TRUE(sameModel(reference, model));
}

TEST(LeftRightBaumWelch, IsReachedThroughTheBase) {
    LeftRightHMM model = oneState({0.5, 0.5});
    static_cast<HMM&>(model).baumWelch({0, 0, 1}, 3, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{2.0, 0.5}, model.b.data));
}

TEST(LeftRightBaumWelch, PrintsNothing) {
    LeftRightHMM model = oneState({0.5, 0.5});
    const Capture capture;
    const auto precision = std::cout.precision();
    model.baumWelch({0, 0, 1}, 3, 4);
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(capture.flushes(), 0);
    EXPECT_EQ(std::cout.precision(), precision);
}

TEST(LeftRightBaumWelch, AgreesWithTheSumOverAllPaths) {
    // gamma and xi by enumeration: the mass of the paths through a state, or through a step.
    int adopted = 0;
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.integer(1, 3);
        const int M = random.integer(2, 3);
        const int T = random.integer(2, 5);
        const Reference::LeftRightModel start =
            randomModel(random, N, M, Shape::LeftRight, Parameters::Stochastic);
        const std::vector<int> O = random.symbols(T, M);
        LeftRightHMM model = libraryModel(start);
        model.baumWelch(O, T, 1);
        if (sameModel(start, model)) continue;  // the candidate was not adopted
        ++adopted;

        Reference::Table step = Reference::zeros(N, N);
        Reference::Vector left(static_cast<std::size_t>(N), 0.0);
        Reference::Table shown = Reference::zeros(N, M);
        Reference::Vector visited(static_cast<std::size_t>(N), 0.0);
        Reference::forEachPath(N, T, [&](const std::vector<int>& path) {
            const double p = Reference::pathProbability(start, O, path);
            for (std::size_t t = 0; t < path.size(); ++t) {
                const auto i = static_cast<std::size_t>(path[t]);
                shown[i][static_cast<std::size_t>(O[t])] += p;
                visited[i] += p;
                if (t + 1 == path.size()) break;
                step[i][static_cast<std::size_t>(path[t + 1])] += p;
                left[i] += p;
            }
        });
        for (int i = 0; i < N; ++i) {
            const auto row = static_cast<std::size_t>(i);
            for (int j = 0; j < N; ++j) {
                const double numerator = step[row][static_cast<std::size_t>(j)];
                const double expected = numerator == 0.0 ? 0.0 : numerator / left[row];
                EXPECT_NEAR(model.a(i, j), expected, 1e-12) << i << " " << j;
            }
            for (int k = 0; k < M; ++k) {
                const double with = shown[row][static_cast<std::size_t>(k)];
                const double without = visited[row] - with;
                if (with == 0.0) {
                    EXPECT_TRUE(bitEqual(0.0, model.b(i, k))) << i << " " << k;
                } else if (without > 1e-6 * with) {
                    EXPECT_NEAR(model.b(i, k) * without / with, 1.0, 1e-8) << i << " " << k;
                }
            }
        }
    }
    EXPECT_GT(adopted, 100);
}

}  // namespace
