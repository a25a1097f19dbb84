#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

// The library's best paths against the plain ones, bit for bit.

namespace {

using Vesk::ML::HMM;
using Vesk::Test::bitEqual;
using Vesk::Test::modelOf;
using Vesk::Test::modelsEqual;
using Vesk::Test::Random;
using Vesk::Test::randomModel;
namespace Reference = Vesk::Test::Reference;

void expectPlainPath(const Reference::Model& plain, const std::vector<int>& o, int T) {
    HMM model = modelOf(plain);
    ASSERT_TRUE(bitEqual(Reference::viterbi(plain, o, T), T, model.viterbi(o, T)));
    ASSERT_TRUE(modelsEqual(plain, model));
}

TEST(HmmViterbiProperty, RandomModelsHaveThePlainPaths) {
    for (std::uint64_t seed = 1; seed <= 3000; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const int N = random.integer(1, 12);
        const int M = random.integer(1, 20);
        const Reference::Model plain = randomModel(random, N, M);
        const int T = random.chance(0.1) ? 1 : random.integer(1, 60);
        const std::vector<int> o = random.symbols(T + random.integer(0, 3), M);
        ASSERT_NO_FATAL_FAILURE(expectPlainPath(plain, o, T));
    }
}

TEST(HmmViterbiProperty, TiesAreBrokenAsPlainly) {
    // Parameters of few values, so that most steps are tied.
    const double values[] = {0.0, 0.25, 0.5, 0.5, 1.0};
    for (std::uint64_t seed = 10001; seed <= 15000; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const int N = random.integer(2, 6);
        const int M = random.integer(1, 3);
        Reference::Model plain = Reference::makeModel(N, M);
        for (double& value : plain.pi) value = values[random.integer(0, 4)];
        for (auto& row : plain.a) {
            for (double& value : row) value = values[random.integer(0, 4)];
        }
        for (auto& row : plain.b) {
            for (double& value : row) value = values[random.integer(0, 4)];
        }
        const int T = random.integer(1, 12);
        const std::vector<int> o = random.symbols(T, M);
        ASSERT_NO_FATAL_FAILURE(expectPlainPath(plain, o, T));
    }
}

TEST(HmmViterbiProperty, LargeModelsHaveThePlainPaths) {
    std::uint64_t seed = 20000;
    for (int N : {13, 16, 17, 31, 33, 64, 65}) {
        for (Vesk::Test::Parameters kind : Vesk::Test::allParameterKinds) {
            SCOPED_TRACE(++seed);
            Random random(seed);
            const int M = random.integer(1, 40);
            const Reference::Model plain = randomModel(random, N, M, kind);
            const int T = random.integer(2, 20);
            const std::vector<int> o = random.symbols(T, M);
            ASSERT_NO_FATAL_FAILURE(expectPlainPath(plain, o, T));
        }
    }
}

}  // namespace
