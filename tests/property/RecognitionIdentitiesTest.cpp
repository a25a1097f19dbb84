#include <support/Capture.h>
#include <support/Files.h>
#include <support/Random.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::Recognition;
using Vesk::ML::RecognitionModelHMM;

// The same cases in every run; a host's own RC_PARAMS wins.
[[maybe_unused]] const int seeded = setenv("RC_PARAMS", "seed=20261120 max_success=500", 0);

/// Gestures drawn by rapidcheck, so that a failure shrinks to few states and plain numbers.
GestureSet drawGestures(int M, int leastCount) {
    GestureSet set;
    const int count = *rc::gen::inRange(leastCount, 5).as("number of gestures");
    const auto probability =
        rc::gen::map(rc::gen::inRange(0, 1001), [](int n) { return n / 1000.0; });
    for (int g = 0; g < count; ++g) {
        const int N = *rc::gen::inRange(1, 5).as("states");
        LeftRightHMM& model = set.add("g" + std::to_string(g), N, M, *rc::gen::inRange(-1, 4));
        for (double& value : model.pi) value = *probability;
        for (double& value : model.a.data) value = *probability;
        for (double& value : model.b.data) value = *probability;
    }
    return set;
}

std::vector<int> drawSequence(int M, int least) {
    const int length = *rc::gen::inRange(least, 10).as("length");
    return *rc::gen::container<std::vector<int>>(static_cast<std::size_t>(length),
                                                 rc::gen::inRange(0, M))
                .as("sequence");
}

RC_GTEST_PROP(RecognitionIdentities, CheckNamesEvaluatesWinner, ()) {
    const int M = *rc::gen::inRange(1, 5).as("symbols");
    const GestureSet set = drawGestures(M, 0);
    RecognitionModelHMM model(set.pointers(), *rc::gen::inRange(0, 11) / 10.0);
    if (*rc::gen::arbitrary<bool>()) model.initialize();
    const std::vector<int> sequence = drawSequence(M, 0);
    const Recognition found = model.evaluate(sequence);
    const Capture silence;
    const std::string name = model.check(sequence);
    RC_ASSERT(name == (found.winner < 0
                           ? std::string()
                           : model.gestures[static_cast<std::size_t>(found.winner)]->name));
    // The winner is the last that was accepted, and no accepted one is more likely.
    int lastAccepted = -1;
    for (std::size_t g = 0; g < found.gestures.size(); ++g) {
        if (found.gestures[g].accepted) lastAccepted = static_cast<int>(g);
    }
    RC_ASSERT(found.winner == lastAccepted);
    for (const auto& score : found.gestures) {
        if (score.accepted) {
            RC_ASSERT(score.probability <=
                      found.gestures[static_cast<std::size_t>(found.winner)].probability);
        }
    }
}

RC_GTEST_PROP(RecognitionIdentities, AFileReadAndWrittenAgainIsTheSameFile, ()) {
    const int M = *rc::gen::inRange(1, 5).as("symbols");
    const GestureSet set = drawGestures(M, 1);
    RecognitionModelHMM model(set.pointers(), *rc::gen::inRange(0, 1001) / 1000.0);
    model.setName("n");
    model.initialize();
    model.codebook = *rc::gen::container<std::vector<double>>(
        rc::gen::map(rc::gen::inRange(0, 3600000), [](int n) { return n / 9973.0; }));
    model.rotationAllowed = *rc::gen::arbitrary<bool>();
    const TemporaryFolder folder;
    model.write(folder.path("first").c_str());
    RecognitionModelHMM loaded;
    RC_ASSERT(loaded.read(folder.path("first")));
    loaded.write(folder.path("second").c_str());
    RC_ASSERT(readFile(folder.path("first")) == readFile(folder.path("second")));
    // And from then on every parameter is exactly what the file says.
    RecognitionModelHMM again;
    RC_ASSERT(again.read(folder.path("second")));
    RC_ASSERT(bool(bitEqual(loaded.recognitionHMM->a, again.recognitionHMM->a)));
    RC_ASSERT(bool(bitEqual(loaded.recognitionHMM->b, again.recognitionHMM->b)));
    RC_ASSERT(bool(bitEqual(loaded.gestureTransitionProb, again.gestureTransitionProb)));
    RC_ASSERT(loaded.gestures.size() == again.gestures.size());
    for (std::size_t g = 0; g < loaded.gestures.size(); ++g) {
        RC_ASSERT(bool(bitEqual(loaded.gestures[g]->a, again.gestures[g]->a)));
        RC_ASSERT(bool(bitEqual(loaded.gestures[g]->b, again.gestures[g]->b)));
    }
}

RC_GTEST_PROP(RecognitionIdentities, ReversingTheGesturesReversesScoresAndBlocks, ()) {
    const int M = *rc::gen::inRange(1, 5).as("symbols");
    const GestureSet set = drawGestures(M, 1);
    std::vector<HMM*> gestures = set.pointers();
    RecognitionModelHMM forwards(gestures, 0.25);
    std::reverse(gestures.begin(), gestures.end());
    RecognitionModelHMM backwards(gestures, 0.25);
    forwards.initialize();
    backwards.initialize();
    const std::vector<int> sequence = drawSequence(M, 2);
    const Recognition first = forwards.evaluate(sequence);
    const Recognition second = backwards.evaluate(sequence);
    const std::size_t K = gestures.size();
    for (std::size_t g = 0; g < K; ++g) {
        RC_ASSERT(
            bool(bitEqual(first.gestures[g].probability, second.gestures[K - 1 - g].probability)));
        RC_ASSERT(bool(
            bitEqual(first.gestures[g].weightedGamma, second.gestures[K - 1 - g].weightedGamma)));
    }
    // The combined model's states come in another order: the same sum in another order.
    RC_ASSERT(std::abs(first.threshold - second.threshold) <= 1e-12 * std::abs(first.threshold));
    int state = 0;
    int mirrored = static_cast<int>(forwards.numStates);
    for (std::size_t g = 0; g < K; ++g) {
        const HMM& gesture = *forwards.gestures[g];
        const int N = static_cast<int>(gesture.numStates);
        mirrored -= N;
        for (int i = 0; i < N; ++i) {
            RC_ASSERT(bool(bitEqual(forwards.a(state + i, state + i),
                                    backwards.a(mirrored + i, mirrored + i))));
            for (int k = 0; k < M; ++k) {
                RC_ASSERT(bool(bitEqual(forwards.b(state + i, k), backwards.b(mirrored + i, k))));
            }
        }
        state += N;
    }
}

TEST(RecognitionIdentities, CombinedRowsOfStochasticGesturesSumToOne) {
    for (std::uint64_t seed = 80000; seed < 80500; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const GestureSet set =
            randomGestures(random, random.integer(2, 5), 6, random.integer(1, 8),
                           seed % 2 == 0 ? Parameters::Stochastic : Parameters::Sparse);
        RecognitionModelHMM model(set.pointers(), 0.5);
        ASSERT_TRUE(model.initialize());
        const int N = static_cast<int>(model.numStates);
        double initial = 0.0;
        for (int i = 0; i < N; ++i) {
            initial += model.pi[static_cast<std::size_t>(i)];
            double row = 0.0;
            for (int j = 0; j < N; ++j) row += model.a(i, j);
            EXPECT_NEAR(row, 1.0, 1e-13);
            double emissions = 0.0;
            for (int k = 0; k < static_cast<int>(model.vocabSize); ++k) {
                emissions += model.b(i, k);
            }
            EXPECT_NEAR(emissions, 1.0, 1e-13);
        }
        EXPECT_NEAR(initial, 1.0, 1e-13);
    }
}

TEST(RecognitionIdentities, TheCombinedModelsTotalOverAllSequencesIsOne) {
    for (std::uint64_t seed = 81000; seed < 81100; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const int M = random.integer(1, 3);
        const GestureSet set = randomGestures(random, 2, 3, M, Parameters::Stochastic);
        RecognitionModelHMM model(set.pointers(), 0.5);
        ASSERT_TRUE(model.initialize());
        const int T = random.integer(1, 5);
        double total = 0.0;
        std::vector<int> sequence(static_cast<std::size_t>(T), 0);
        for (bool more = true; more;) {
            total += model.forwardProb(sequence);
            std::size_t t = 0;
            while (t < sequence.size() && ++sequence[t] == M) sequence[t++] = 0;
            more = t < sequence.size();
        }
        EXPECT_NEAR(total, 1.0, 1e-12);
    }
}

TEST(RecognitionIdentities, ForwardProbIsTheSumOverAllPathsOfTheCombinedModel) {
    for (std::uint64_t seed = 82000; seed < 82300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const int M = random.integer(1, 5);
        GestureSet set;
        fillRandom(set.add("one", random.integer(1, 2), M), random, Parameters::Sparse);
        fillRandom(set.add("two", 1, M), random, Parameters::Sparse);
        RecognitionModelHMM model(set.pointers(), 0.5);
        ASSERT_TRUE(model.initialize());
        const std::vector<int> sequence = random.symbols(random.integer(1, 5), M);
        const double expected = probabilityByEnumeration(modelOf(*model.recognitionHMM), sequence);
        EXPECT_NEAR(model.forwardProb(sequence), expected, 1e-14 * expected);
    }
}

TEST(RecognitionIdentities, ScalingTheWeightsLeavesTheProbabilities) {
    for (std::uint64_t seed = 83000; seed < 83200; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const int M = random.integer(1, 5);
        const GestureSet set = randomGestures(random, 3, 4, M, Parameters::Stochastic);
        RecognitionModelHMM model(set.pointers(), 1.0);
        ASSERT_TRUE(model.initialize());
        const std::vector<int> sequence = random.symbols(random.integer(2, 12), M);
        const Recognition whole = model.evaluate(sequence);
        model.setModelTransitionProb(0.25);  // a quarter each: exact
        const Recognition quarter = model.evaluate(sequence);
        EXPECT_TRUE(bitEqual(whole.threshold * 0.25, quarter.threshold));
        for (std::size_t g = 0; g < 3; ++g) {
            EXPECT_TRUE(bitEqual(whole.gestures[g].probability, quarter.gestures[g].probability));
            EXPECT_TRUE(bitEqual(whole.gestures[g].weightedGamma * 0.25,
                                 quarter.gestures[g].weightedGamma));
        }
    }
}

}  // namespace
}  // namespace Vesk::Test
