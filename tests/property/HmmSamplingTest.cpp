#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <vector>

// Sampling from the C library's own generator.

namespace {

using Vesk::Math::VectorT;
using Vesk::ML::HMM;
using Vesk::Test::bitEqual;
using Vesk::Test::modelOf;
using Vesk::Test::Parameters;
using Vesk::Test::Random;
using Vesk::Test::randomModel;
namespace Reference = Vesk::Test::Reference;

TEST(HmmSamplingProperty, SequencesAreThePlainOnesDrawByDraw) {
    for (std::uint64_t seed = 1; seed <= 5000; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const Reference::Model plain =
            randomModel(random, random.integer(1, 12), random.integer(1, 20));
        const int length = random.integer(0, 60);
        HMM model = modelOf(plain);
        std::srand(static_cast<unsigned int>(seed));
        const std::vector<int> expected = Reference::genSeq(plain, length);
        const int nextExpected = std::rand();
        std::srand(static_cast<unsigned int>(seed));
        const VectorT<int> actual = model.genSeq(length);
        const int nextActual = std::rand();
        ASSERT_EQ(static_cast<const std::vector<int>&>(actual), expected);
        // Both took as many draws.
        ASSERT_EQ(nextActual, nextExpected);
    }
}

TEST(HmmSamplingProperty, RandomNumbersAreThePlainOnesAndBelowMax) {
    HMM model(1, 1);
    model.needsSeed = false;
    for (unsigned int seed = 1; seed <= 1000; ++seed) {
        SCOPED_TRACE(seed);
        const double max = Random(seed).unit() * 100.0;
        std::srand(seed);
        const double expected = Reference::randD(max);
        std::srand(seed);
        const double actual = model.randD(max);
        ASSERT_TRUE(bitEqual(expected, actual));
        ASSERT_GE(actual, 0.0);
        ASSERT_LT(actual, max);
    }
}

TEST(HmmSamplingProperty, FirstSequenceOfAModelFollowsTheTimesSeed) {
    Random random(77);
    const Reference::Model plain = randomModel(random, 4, 9, Parameters::Stochastic);
    const int length = 40;
    // Repeated where the second changes in between.
    for (int attempt = 0; attempt < 10; ++attempt) {
        HMM model = modelOf(plain);
        model.needsSeed = true;
        const std::time_t before = std::time(nullptr);
        const VectorT<int> actual = model.genSeq(length);
        if (std::time(nullptr) != before) continue;
        std::srand(static_cast<unsigned int>(before));
        EXPECT_EQ(static_cast<const std::vector<int>&>(actual), Reference::genSeq(plain, length));
        EXPECT_FALSE(model.needsSeed);
        return;
    }
    FAIL() << "the second changed ten times";
}

TEST(HmmSamplingProperty, FrequenciesApproachTheModels) {
    // Two independent coins: state 1 with 1/4, symbol 1 with 1/2 in state 0 and 1 in state 1.
    HMM model(2, 2);
    model.needsSeed = false;
    model.pi = {0.75, 0.25};
    model.a = Vesk::Test::matrixOf({{0.75, 0.25}, {0.75, 0.25}});
    model.b = Vesk::Test::matrixOf({{0.5, 0.5}, {0.0, 1.0}});
    std::srand(4711);
    const int length = 100000;
    const VectorT<int> o = model.genSeq(length);
    int ones = 0;
    for (int symbol : o) ones += symbol;
    // 5/8 expected; the standard deviation of the mean is 0.0015.
    EXPECT_NEAR(static_cast<double>(ones) / length, 0.625, 0.01);
}

TEST(HmmSamplingProperty, SymbolsAreInTheVocabularyAndPossible) {
    for (std::uint64_t seed = 10001; seed <= 11000; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const int M = random.integer(1, 20);
        const Reference::Model plain =
            randomModel(random, random.integer(1, 12), M, Parameters::Stochastic);
        HMM model = modelOf(plain);
        std::srand(static_cast<unsigned int>(seed));
        const VectorT<int> o = model.genSeq(30);
        for (int symbol : o) {
            ASSERT_GE(symbol, 0);
            ASSERT_LT(symbol, M);
        }
        ASSERT_GT(model.forwardProbability(o, 30), 0.0);
    }
}

}  // namespace
