#include <support/Random.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace Vesk::Test {
namespace {

using Reference::Recognition::Recogniser;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;

/// What the reference makes of `model` by `operation`; nothing where it leaves a table.
template <typename Operation>
std::optional<Recogniser> expectation(const RecognitionModelHMM& model, Operation operation) {
    Recogniser reference = recogniserOf(model);
    try {
        operation(reference);
    } catch (const std::out_of_range&) {
        return std::nullopt;
    }
    return reference;
}

/// Runs the same operation on both; where the reference leaves a table, the library must refuse
/// and change nothing. Says whether it was refused.
template <typename Operation>
bool compareComposition(RecognitionModelHMM& model, Operation operation) {
    const Recogniser before = recogniserOf(model);
    HMM* const combinedBefore = model.recognitionHMM;
    const auto expected = expectation(model, operation);
    if (!expected) {
        EXPECT_THROW(operation(model), std::out_of_range);
        EXPECT_EQ(model.recognitionHMM, combinedBefore);
        expectSameRecogniser(before, recogniserOf(model));
        return true;
    }
    EXPECT_NO_THROW(operation(model));
    expectSameRecogniser(*expected, recogniserOf(model));
    return false;
}

const auto initialize = [](auto& model) { model.initialize(); };
const auto setParameters = [](auto& model) { model.setParameters(); };
const auto create = [](auto& model) { model.createRecognitionHMMfromParameters(); };

void compareRandomSets(Parameters kind, std::uint64_t firstSeed) {
    for (std::uint64_t seed = firstSeed; seed < firstSeed + 1000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const GestureSet set =
            randomGestures(random, random.integer(0, 6), 12, random.integer(1, 20), kind);
        RecognitionModelHMM model(set.pointers(), random.unit());
        model.setName("n" + std::to_string(seed));
        EXPECT_FALSE(compareComposition(model, initialize));
        if (testing::Test::HasFailure()) return;
    }
}

TEST(RecognitionComposition, MatchesTheReferenceOnStochasticGestures) {
    compareRandomSets(Parameters::Stochastic, 10000);
}
TEST(RecognitionComposition, MatchesTheReferenceOnSparseGestures) {
    compareRandomSets(Parameters::Sparse, 12000);
}
TEST(RecognitionComposition, MatchesTheReferenceOnUnnormalisedGestures) {
    compareRandomSets(Parameters::Unnormalised, 14000);
}
TEST(RecognitionComposition, MatchesTheReferenceOnTinyGestures) {
    compareRandomSets(Parameters::Tiny, 16000);
}
TEST(RecognitionComposition, MatchesTheReferenceOnOddGestures) {
    compareRandomSets(Parameters::Odd, 18000);
}

/// A matrix whose shape has nothing to do with its model.
Vesk::Math::MatrixT<double> anyMatrix(Random& random, int mostRows, int mostCols) {
    return randomMatrix(random, random.integer(0, mostRows), random.integer(0, mostCols),
                        Parameters::Unnormalised);
}

/// Gestures of different alphabets, a third of them with tables of any shape.
void addMixed(GestureSet& set, Random& random, int count) {
    for (int g = 0; g < count; ++g) {
        LeftRightHMM& model = set.add("m", random.integer(1, 4), random.integer(1, 4));
        fillRandom(model, random, Parameters::Unnormalised);
        if (random.chance(0.15)) model.a = anyMatrix(random, 4, 4);
        if (random.chance(0.15)) model.b = anyMatrix(random, 4, 5);
        if (random.chance(0.1)) model.vocab = anyMatrix(random, 3, 3);
        if (random.chance(0.1)) model.numStates = static_cast<unsigned>(random.integer(0, 6));
        if (random.chance(0.1)) model.vocabSize = static_cast<unsigned>(random.integer(0, 6));
        if (random.chance(0.05)) model.a.rows = -random.integer(1, 3);
    }
}

TEST(RecognitionComposition, MatchesTheReferenceOnGesturesOfDisagreeingShapes) {
    int refused = 0;
    int composed = 0;
    for (std::uint64_t seed = 20000; seed < 26000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        GestureSet set;
        addMixed(set, random, random.integer(1, 5));
        RecognitionModelHMM model(set.pointers(), random.unit());
        ++(compareComposition(model, initialize) ? refused : composed);
        if (testing::Test::HasFailure()) return;
    }
    EXPECT_GT(refused, 500);
    EXPECT_GT(composed, 500);
}

TEST(RecognitionComposition, MatchesTheReferenceThroughRepeatedBuildsWithStaleTables) {
    for (std::uint64_t seed = 30000; seed < 32000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        GestureSet set;
        addMixed(set, random, 6);
        const std::vector<HMM*> all = set.pointers();
        RecognitionModelHMM model;
        for (int round = 0; round < 5; ++round) {
            model.gestures.clear();
            const int count = random.integer(0, 4);
            for (int g = 0; g < count; ++g) {
                model.gestures.push_back(all[static_cast<std::size_t>(random.integer(0, 5))]);
            }
            model.name = "round" + std::to_string(round);
            compareComposition(model, initialize);
        }
        if (testing::Test::HasFailure()) return;
    }
}

TEST(RecognitionComposition, SetParametersMatchesTheReferenceOnAnyStagingTables) {
    int refused = 0;
    int composed = 0;
    for (std::uint64_t seed = 40000; seed < 46000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        GestureSet set;
        addMixed(set, random, random.integer(0, 3));
        RecognitionModelHMM model(set.pointers(), random.unit());
        try {
            model.initialize();
        } catch (const std::out_of_range&) {
            // Goes on with the fresh staging fields.
        }
        if (random.chance(0.3)) model.numStates = static_cast<unsigned>(random.integer(0, 8));
        if (random.chance(0.3)) model.vocabSize = static_cast<unsigned>(random.integer(0, 5));
        if (random.chance(0.3)) model.pi.resize(static_cast<std::size_t>(random.integer(0, 9)));
        if (random.chance(0.3)) model.a = anyMatrix(random, 8, 8);
        if (random.chance(0.3)) model.b = anyMatrix(random, 8, 6);
        if (random.chance(0.2)) model.vocab = anyMatrix(random, 4, 2);
        ++(compareComposition(model, setParameters) ? refused : composed);
        compareComposition(model, create);
        compareComposition(model, initialize);
        if (testing::Test::HasFailure()) return;
    }
    EXPECT_GT(refused, 500);
    EXPECT_GT(composed, 500);
}

}  // namespace
}  // namespace Vesk::Test
