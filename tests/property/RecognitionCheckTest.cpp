#include <support/Capture.h>
#include <support/Random.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::Recognition;
using Vesk::ML::RecognitionModelHMM;

double randomShare(Random& random) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double odd[] = {0.0,  -0.0,     1.0,       2.0,
                              -0.5, infinity, -infinity, std::numeric_limits<double>::quiet_NaN()};
    if (random.chance(0.2)) return odd[random.integer(0, 7)];
    return std::pow(10.0, -12.0 * random.unit());
}

/// Everything that `check`, `forwardProb` and `evaluate` say about `sequence`.
void compare(RecognitionModelHMM& model, const std::vector<int>& sequence, int precision) {
    const auto reference = recogniserOf(model);
    std::ostringstream expectedText;
    expectedText.precision(precision);
    const auto expected = reference.check(sequence, expectedText);

    std::string name;
    std::string text;
    int flushes = 0;
    {
        Capture capture;
        std::cout.precision(precision);
        name = model.check(sequence);
        text = capture.text();
        flushes = capture.flushes();
        EXPECT_EQ(std::cout.precision(), precision);
    }
    EXPECT_EQ(expected.name, name);
    EXPECT_EQ(Reference::Recognition::withoutNanSigns(expectedText.str()),
              Reference::Recognition::withoutNanSigns(text));
    const int lines = expected.longEnough ? 1 + 2 * static_cast<int>(reference.gestures.size()) : 0;
    EXPECT_EQ(flushes, lines);
    EXPECT_TRUE(bitEqual(reference.forwardProb(sequence), model.forwardProb(sequence)));

    const Recognition found = model.evaluate(sequence);
    EXPECT_EQ(expected.longEnough, found.longEnough);
    EXPECT_TRUE(bitEqual(expected.threshold, found.threshold));
    EXPECT_EQ(expected.winner, found.winner);
    ASSERT_EQ(expected.scores.size(), found.gestures.size());
    for (std::size_t g = 0; g < found.gestures.size(); ++g) {
        SCOPED_TRACE("gesture " + std::to_string(g));
        EXPECT_TRUE(bitEqual(expected.scores[g].probability, found.gestures[g].probability));
        EXPECT_TRUE(bitEqual(expected.scores[g].weightedProbability,
                             found.gestures[g].weightedProbability));
        EXPECT_TRUE(bitEqual(expected.scores[g].weightedGamma, found.gestures[g].weightedGamma));
        EXPECT_EQ(expected.scores[g].accepted, found.gestures[g].accepted);
    }
    expectSameRecogniser(reference, recogniserOf(model));
}

void compareRandomModels(Parameters kind, std::uint64_t firstSeed) {
    for (std::uint64_t seed = firstSeed; seed < firstSeed + 800; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const int M = random.integer(1, 12);
        const GestureSet set = randomGestures(random, random.integer(0, 5), 6, M, kind);
        RecognitionModelHMM model(set.pointers(), randomShare(random));
        if (random.chance(0.9)) model.initialize();
        if (random.chance(0.2)) model.gestureTransitionProb = randomShare(random);
        for (int repetition = 0; repetition < 3; ++repetition) {
            const std::vector<int> sequence = random.symbols(random.integer(0, 24), M);
            compare(model, sequence, random.integer(1, 17));
        }
        if (testing::Test::HasFailure()) return;
    }
}

TEST(RecognitionCheck, MatchesTheReferenceOnStochasticModels) {
    compareRandomModels(Parameters::Stochastic, 1000);
}
TEST(RecognitionCheck, MatchesTheReferenceOnSparseModels) {
    compareRandomModels(Parameters::Sparse, 2000);
}
TEST(RecognitionCheck, MatchesTheReferenceOnUnnormalisedModels) {
    compareRandomModels(Parameters::Unnormalised, 3000);
}
TEST(RecognitionCheck, MatchesTheReferenceOnTinyModels) {
    compareRandomModels(Parameters::Tiny, 4000);
}
TEST(RecognitionCheck, MatchesTheReferenceOnOddModels) {
    compareRandomModels(Parameters::Odd, 5000);
}

/// Trained models: bands of zeros, emissions above 1, an infinity here and there.
TEST(RecognitionCheck, MatchesTheReferenceOnBandedModels) {
    for (std::uint64_t seed = 6000; seed < 6600; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const int M = random.integer(2, 16);
        GestureSet set;
        const int count = random.integer(1, 4);
        for (int g = 0; g < count; ++g) {
            const int N = random.integer(1, 12);
            const int delta = random.integer(0, 3);
            LeftRightHMM& model = set.add("g" + std::to_string(g % 3), N, M, delta);
            model.pi[0] = 1.0;
            for (int i = 0; i < N; ++i) {
                for (int j = i; j < N && j <= i + delta; ++j) model.a(i, j) = random.unit();
                for (int k = 0; k < M; ++k) {
                    model.b(i, k) = random.chance(0.2) ? 0.0 : random.unit() * 4.0;
                    if (random.chance(0.01)) {
                        model.b(i, k) = std::numeric_limits<double>::infinity();
                    }
                }
            }
        }
        RecognitionModelHMM model(set.pointers(), randomShare(random));
        ASSERT_TRUE(model.initialize());
        for (int repetition = 0; repetition < 3; ++repetition) {
            compare(model, random.symbols(random.integer(2, 60), M), 6);
        }
        if (testing::Test::HasFailure()) return;
    }
}

/// A host's own combined model: rows with nothing in common.
TEST(RecognitionCheck, MatchesTheReferenceWithAnyCombinedModel) {
    for (std::uint64_t seed = 7000; seed < 7600; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const Parameters kind = allParameterKinds[seed % 5];
        const int M = random.integer(1, 8);
        const GestureSet set = randomGestures(random, random.integer(1, 4), 5, M, kind);
        HMM combined(random.integer(1, 12), M);
        fillRandom(combined, random, kind);
        RecognitionModelHMM model(set.pointers(), randomShare(random));
        model.recognitionHMM = &combined;
        for (int repetition = 0; repetition < 3; ++repetition) {
            compare(model, random.symbols(random.integer(2, 30), M), 6);
        }
        if (testing::Test::HasFailure()) return;
    }
}

/// Combined rows changed in one place after they were built.
TEST(RecognitionCheck, MatchesTheReferenceWhereACombinedRowWasTouched) {
    for (std::uint64_t seed = 8000; seed < 8600; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const Parameters kind = allParameterKinds[seed % 5];
        const int M = random.integer(1, 8);
        const GestureSet set = randomGestures(random, random.integer(1, 4), 5, M, kind);
        RecognitionModelHMM model(set.pointers(), randomShare(random));
        ASSERT_TRUE(model.initialize());
        HMM& combined = *model.recognitionHMM;
        const int N = static_cast<int>(combined.numStates);
        combined.a(random.integer(0, N - 1), random.integer(0, N - 1)) = random.unit();
        if (random.chance(0.5)) combined.pi[0] = random.unit();
        compare(model, random.symbols(random.integer(2, 30), M), 6);
        if (testing::Test::HasFailure()) return;
    }
}

TEST(RecognitionCheck, MatchesTheReferenceOnLargeModels) {
    for (std::uint64_t seed = 9000; seed < 9012; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const GestureSet set = randomGestures(random, 8, 33, 32, allParameterKinds[seed % 5]);
        RecognitionModelHMM model(set.pointers(), 0.001);
        ASSERT_TRUE(model.initialize());
        compare(model, random.symbols(random.integer(30, 120), 32), 6);
    }
}

/// A threshold model that was built from other gestures than those that it judges.
TEST(RecognitionCheck, MatchesTheReferenceWithTheCombinedModelOfOtherGestures) {
    for (std::uint64_t seed = 9100; seed < 9300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const int M = random.integer(1, 8);
        const GestureSet fine = randomGestures(random, 3, 6, M, Parameters::Stochastic);
        const GestureSet coarse = randomGestures(random, 2, 3, M, Parameters::Stochastic);
        RecognitionModelHMM built(coarse.pointers(), 0.5);
        ASSERT_TRUE(built.initialize());
        RecognitionModelHMM model(fine.pointers(), randomShare(random));
        model.numStates = built.numStates;
        model.vocabSize = built.vocabSize;
        model.vocab = built.vocab;
        model.pi = built.pi;
        model.a = built.a;
        model.b = built.b;
        ASSERT_TRUE(model.createRecognitionHMMfromParameters());
        compare(model, random.symbols(random.integer(2, 30), M), 6);
        if (testing::Test::HasFailure()) return;
    }
}

}  // namespace
}  // namespace Vesk::Test
