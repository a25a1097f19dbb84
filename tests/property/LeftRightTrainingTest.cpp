#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

using Vesk::ML::LeftRightHMM;
using Vesk::ML::TrainingStep;
using namespace Vesk::Test;

class LeftRightTraining : public testing::TestWithParam<ModelKind> {};

INSTANTIATE_TEST_SUITE_P(AllKinds, LeftRightTraining, testing::ValuesIn(allModelKinds()),
                         testing::PrintToStringParamName());

float randomThreshold(Random& random) {
    switch (random.integer(0, 7)) {
        case 0: return 0.0f;
        case 1: return -std::numeric_limits<float>::infinity();
        case 2: return 0.5f;
        case 3: return -0.25f;
        case 4: return std::numeric_limits<float>::quiet_NaN();
        default: return 0.001f;
    }
}

/// Trains both on one sequence and compares everything.
void compareSingle(const Reference::LeftRightModel& start, const std::vector<int>& O, int T,
                   int maxIterations) {
    Reference::LeftRightModel expected = start;
    LeftRightHMM model = libraryModel(start);
    Reference::baumWelch(expected, O, T, maxIterations);
    model.baumWelch(O, T, maxIterations);
    ASSERT_TRUE(sameModel(expected, model));
}

/// Trains both on several sequences and compares models, printed text and steps.
void compareMultiple(const Reference::LeftRightModel& start, const Sequences& sequences,
                     int maxIterations) {
    Reference::LeftRightModel expected = start;
    const std::vector<Reference::Step> steps =
        Reference::baumWelchMultiple(expected, sequences, maxIterations);
    LeftRightHMM loud = libraryModel(start);
    LeftRightHMM silent = libraryModel(start);
    std::vector<TrainingStep> told;
    {
        const Capture capture;
        loud.baumWelchMultiple(sequences, maxIterations);
        ASSERT_EQ(withoutNanSigns(capture.text()), withoutNanSigns(Reference::report(steps)));
    }
    silent.trainMultiple(sequences, maxIterations, [&told](const TrainingStep& step) {
        told.push_back(step);
        return true;
    });
    ASSERT_TRUE(sameModel(expected, loud));
    ASSERT_TRUE(sameModel(expected, silent));
    ASSERT_EQ(told.size(), steps.size());
    for (std::size_t n = 0; n < steps.size(); ++n) {
        ASSERT_TRUE(bitEqual(steps[n].oldLog, told[n].oldLogLikelihood));
        ASSERT_TRUE(bitEqual(steps[n].newLog, told[n].newLogLikelihood));
        ASSERT_EQ(steps[n].accepted, told[n].accepted);
    }
}

TEST_P(LeftRightTraining, OnOneSequenceMatchesTheLiteralVersionBitForBit) {
    for (std::uint64_t seed = 1; seed <= 600; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.integer(1, 5);
        const int M = random.integer(1, 6);
        const int T = random.integer(1, 12);
        const Reference::LeftRightModel start =
            randomModel(random, N, M, GetParam().shape, GetParam().parameters);
        const std::vector<int> O =
            random.symbols(T + (random.chance(0.3) ? random.integer(1, 4) : 0), M);
        ASSERT_NO_FATAL_FAILURE(compareSingle(start, O, T, random.integer(0, 3)));
    }
}

TEST_P(LeftRightTraining, OnSeveralSequencesMatchesTheLiteralVersionBitForBit) {
    for (std::uint64_t seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.integer(1, 4);
        const int M = random.integer(1, 5);
        Reference::LeftRightModel start =
            randomModel(random, N, M, GetParam().shape, GetParam().parameters);
        start.convergenceThreshold = randomThreshold(random);
        const Sequences sequences =
            randomSequences(random, random.integer(0, 3), random.integer(0, 2), 8, M);
        ASSERT_NO_FATAL_FAILURE(compareMultiple(start, sequences, random.integer(0, 3)));
    }
}

TEST_P(LeftRightTraining, OfWiderModelsMatchesTheLiteralVersionBitForBit) {
    for (std::uint64_t seed = 1; seed <= 6; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.integer(6, 10);
        const int M = random.integer(8, 16);
        const Reference::LeftRightModel start =
            randomModel(random, N, M, GetParam().shape, GetParam().parameters);
        ASSERT_NO_FATAL_FAILURE(compareSingle(start, random.symbols(25, M), 25, 2));
        ASSERT_NO_FATAL_FAILURE(compareMultiple(start, randomSequences(random, 2, 10, 14, M), 1));
    }
}

TEST(LeftRightTrainingFromAnEstimate, MatchesTheLiteralVersionBitForBit) {
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.integer(1, 5);
        const int M = random.integer(2, 5);
        Reference::LeftRightModel start = Reference::makeLeftRight(N, M, random.integer(-1, N));
        const Sequences sequences = randomSequences(random, random.integer(1, 4), 1, 10, M);
        Reference::calcInitialProbs(start, 2, sequences);
        ASSERT_NO_FATAL_FAILURE(compareMultiple(start, sequences, 3));
        const std::vector<int>& O = sequences[0];
        ASSERT_NO_FATAL_FAILURE(compareSingle(start, O, static_cast<int>(O.size()), 3));
    }
}

TEST(LeftRightTrainingWithOneOddEntry, MatchesTheLiteralVersionBitForBit) {
    const double odd[] = {std::numeric_limits<double>::infinity(),
                          std::numeric_limits<double>::quiet_NaN(),
                          -0.0,
                          -0.5,
                          std::numeric_limits<double>::max(),
                          std::numeric_limits<double>::denorm_min()};
    for (std::uint64_t seed = 1; seed <= 1500; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.integer(2, 4);
        const int M = random.integer(1, 4);
        Reference::LeftRightModel start =
            randomModel(random, N, M, Shape::LeftRight, Parameters::Stochastic);
        start.convergenceThreshold = randomThreshold(random);
        const double value = odd[random.integer(0, 5)];
        const auto i = static_cast<std::size_t>(random.integer(0, N - 1));
        switch (random.integer(0, 2)) {
            case 0: start.pi[i] = value; break;
            case 1: start.a[i][static_cast<std::size_t>(random.integer(0, N - 1))] = value; break;
            default: start.b[i][static_cast<std::size_t>(random.integer(0, M - 1))] = value; break;
        }
        const Sequences sequences = randomSequences(random, 2, 1, 7, M);
        ASSERT_NO_FATAL_FAILURE(compareMultiple(start, sequences, 2));
        const std::vector<int>& O = sequences[0];
        ASSERT_NO_FATAL_FAILURE(compareSingle(start, O, static_cast<int>(O.size()), 2));
    }
}

TEST(LeftRightTrainingWithoutALimit, EndsWhereTheLiteralVersionDoes) {
    int compared = 0;
    for (std::uint64_t seed = 1; seed <= 120; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.integer(1, 3);
        const int M = random.integer(2, 4);
        const Reference::LeftRightModel start =
            randomModel(random, N, M, Shape::LeftRight, Parameters::Stochastic);
        const Sequences sequences = randomSequences(random, 2, 3, 7, M);

        Reference::LeftRightModel multiple = start;
        if (Reference::baumWelchMultiple(multiple, sequences, 60).size() < 60) {
            ASSERT_NO_FATAL_FAILURE(compareMultiple(start, sequences, -1));
            ++compared;
        }
        const std::vector<int>& O = sequences[0];
        const int T = static_cast<int>(O.size());
        Reference::LeftRightModel single = start;
        if (Reference::baumWelch(single, O, T, 200) < 200) {
            ASSERT_NO_FATAL_FAILURE(compareSingle(start, O, T, -1));
            ++compared;
        }
    }
    EXPECT_GT(compared, 100);
}

TEST(LeftRightTrainingShape, ATransitionThatIsZeroStaysZero) {
    for (std::uint64_t seed = 1; seed <= 500; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.integer(2, 8);
        const int M = random.integer(2, 6);
        const Reference::LeftRightModel start = randomModel(
            random, N, M, random.chance(0.5) ? Shape::LeftRight : Shape::Full, Parameters::Sparse);
        LeftRightHMM multiple = libraryModel(start);
        LeftRightHMM single = libraryModel(start);
        const Sequences sequences = randomSequences(random, 3, 2, 20, M);
        multiple.trainMultiple(sequences, 8);
        single.baumWelch(sequences[0], static_cast<int>(sequences[0].size()), 8);
        for (int i = 0; i < N; ++i) {
            for (int j = 0; j < N; ++j) {
                if (start.a[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] != 0.0) {
                    continue;
                }
                ASSERT_TRUE(bitEqual(0.0, multiple.a(i, j))) << i << " " << j;
                ASSERT_TRUE(bitEqual(0.0, single.a(i, j))) << i << " " << j;
            }
        }
    }
}

TEST(LeftRightTrainingShape, PiNeverChanges) {
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const Reference::LeftRightModel start =
            randomModel(random, 4, 4, Shape::Full, Parameters::Unnormalised);
        LeftRightHMM model = libraryModel(start);
        const Sequences sequences = randomSequences(random, 3, 2, 12, 4);
        model.trainMultiple(sequences, 3);
        model.baumWelch(sequences[0], static_cast<int>(sequences[0].size()), 3);
        ASSERT_TRUE(bitEqual(start.pi, model.pi));
    }
}

}  // namespace
