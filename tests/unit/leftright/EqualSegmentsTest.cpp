#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <numeric>
#include <ostream>
#include <stdexcept>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using namespace Vesk::Test;

void estimateQuietly(LeftRightHMM& model, const Sequences& sequences) {
    const Capture capture;
    model.calcInitialProbs(HMM::EqualSegments, sequences);
}

std::vector<int> countingUp(int L) {
    std::vector<int> sequence(static_cast<std::size_t>(L));
    std::iota(sequence.begin(), sequence.end(), 0);
    return sequence;
}

/// The positions that each of N states was given of a sequence of L symbols: every position shows
/// a symbol of its own, so the emissions tell.
Sequences positionsOfStates(int N, int L) {
    LeftRightHMM model(N, L, 1);
    estimateQuietly(model, {countingUp(L)});
    Sequences positions(static_cast<std::size_t>(N));
    for (int i = 0; i < N; ++i) {
        for (int k = 0; k < L; ++k) {
            if (model.b(i, k) != 0.0) positions[static_cast<std::size_t>(i)].push_back(k);
        }
    }
    return positions;
}

struct SegmentLengths {
    int N;
    int L;
    std::vector<std::size_t> lengths;  ///< of the states from 0 on; the others get nothing
};

std::ostream& operator<<(std::ostream& out, const SegmentLengths& cut) {
    return out << cut.N << "States" << cut.L << "Symbols";
}

class LeftRightSegmentLengths : public testing::TestWithParam<SegmentLengths> {};

TEST_P(LeftRightSegmentLengths, AreConsecutiveCutsOfTheStatedLengths) {
    const auto& [N, L, lengths] = GetParam();
    Sequences expected(static_cast<std::size_t>(N));
    int next = 0;
    for (std::size_t i = 0; i < lengths.size(); ++i) {
        for (std::size_t n = 0; n < lengths[i]; ++n) expected[i].push_back(next++);
    }
    EXPECT_EQ(positionsOfStates(N, L), expected);
}

INSTANTIATE_TEST_SUITE_P(
    Stated, LeftRightSegmentLengths,
    testing::Values(SegmentLengths{2, 1, {0}}, SegmentLengths{2, 2, {1}},
                    SegmentLengths{3, 3, {1, 1}}, SegmentLengths{3, 4, {1, 1, 2}},
                    SegmentLengths{4, 6, {2, 1, 1, 2}}, SegmentLengths{5, 4, {1, 1, 1}},
                    SegmentLengths{5, 7, {2, 1, 1, 1, 2}}, SegmentLengths{3, 9, {3, 3, 3}},
                    SegmentLengths{4, 10, {3, 2, 2, 3}}),
    testing::PrintToStringParamName());

// More cuts, by the same walk. 7 states, 12 symbols: 5 left over, 2 of them at the front.
INSTANTIATE_TEST_SUITE_P(Further, LeftRightSegmentLengths,
                         testing::Values(SegmentLengths{1, 1, {1}}, SegmentLengths{1, 5, {5}},
                                         SegmentLengths{2, 3, {1, 2}}, SegmentLengths{3, 2, {1}},
                                         SegmentLengths{3, 5, {2, 1, 2}},
                                         SegmentLengths{4, 7, {2, 1, 2, 2}},
                                         SegmentLengths{5, 3, {1, 1}},
                                         SegmentLengths{7, 12, {2, 2, 1, 1, 2, 2, 2}}),
                         testing::PrintToStringParamName());

TEST(LeftRightEqualSegments, EverySequenceLongerThanTheStatesIsCutWhole) {
    for (int N = 1; N <= 12; ++N) {
        for (int L = N + 1; L <= 60; ++L) {
            SCOPED_TRACE(testing::Message() << "N " << N << ", L " << L);
            const int shortest = L / N;
            const int surplus = L % N;
            const int head = surplus / 2;
            Sequences expected(static_cast<std::size_t>(N));
            int next = 0;
            for (int i = 0; i < N; ++i) {
                const bool longer = i < head || i >= head + N - surplus;
                const int length = shortest + (longer ? 1 : 0);
                for (int n = 0; n < length; ++n) {
                    expected[static_cast<std::size_t>(i)].push_back(next++);
                }
            }
            ASSERT_EQ(positionsOfStates(N, L), expected);
        }
    }
}

TEST(LeftRightEqualSegments, EverySequenceOfAtMostTheStatesLosesItsLastSymbolAndState) {
    for (int N = 2; N <= 12; ++N) {
        for (int L = 1; L <= N; ++L) {
            SCOPED_TRACE(testing::Message() << "N " << N << ", L " << L);
            const Sequences positions = positionsOfStates(N, L);
            for (int t = 0; t < N; ++t) {
                const std::vector<int> expected =
                    t < L - 1 ? std::vector<int>{t} : std::vector<int>{};
                ASSERT_EQ(positions[static_cast<std::size_t>(t)], expected) << "state " << t;
            }
        }
    }
}

TEST(LeftRightEqualSegments, ExactlyAsManySymbolsAsStatesLeavesTheLastStateWithoutCounts) {
    LeftRightHMM model(3, 2, 1);
    estimateQuietly(model, {{0, 1, 1}});
    EXPECT_TRUE(bitEqual(std::vector<double>{1, 0, 0, 1, 0, 0}, model.b.data));
}

TEST(LeftRightEqualSegments, OneMoreSymbolThanStatesFillsAllStates) {
    LeftRightHMM model(3, 2, 1);
    estimateQuietly(model, {{0, 1, 1, 0}});
    EXPECT_TRUE(bitEqual(std::vector<double>{1, 0, 0, 1, 0.5, 0.5}, model.b.data));
}

TEST(LeftRightEqualSegments, OneStateTakesTheOnlySymbol) {
    LeftRightHMM model(1, 3, 1);
    estimateQuietly(model, {{2}});
    EXPECT_TRUE(bitEqual(std::vector<double>{0, 0, 1}, model.b.data));
}

TEST(LeftRightEqualSegments, PoolsCountsOverAllSequences) {
    // Two states. {0 0 1 | 1 1 2} has 3 + 3 symbols, {2 | 1 0} has 1 + 2 (one left over, at the
    // end). State 0 saw 0 0 1 2, state 1 saw 1 1 2 1 0.
    LeftRightHMM model(2, 3, 1);
    estimateQuietly(model, {{0, 0, 1, 1, 1, 2}, {2, 1, 0}});
    EXPECT_TRUE(bitEqual(std::vector<double>{2.0 / 4.0, 1.0 / 4.0, 1.0 / 4.0,  //
                                             1.0 / 5.0, 3.0 / 5.0, 1.0 / 5.0},
                         model.b.data));
}

TEST(LeftRightEqualSegments, NoSequencesSetStartAndTransitionsAndZeroTheEmissions) {
    LeftRightHMM model(2, 2, 1);
    model.b.data.assign(4, 0.25);
    estimateQuietly(model, {});
    EXPECT_TRUE(bitEqual(std::vector<double>{1, 0}, model.pi));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.5, 0.5, 0, 1}, model.a.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{0, 0, 0, 0}, model.b.data));
}

TEST(LeftRightEqualSegments, AnEmptySequenceContributesNothing) {
    LeftRightHMM with(2, 3, 1);
    LeftRightHMM without(2, 3, 1);
    estimateQuietly(with, {{}, {0, 1, 2, 2}, {}, {1, 1, 0}, {}});
    estimateQuietly(without, {{0, 1, 2, 2}, {1, 1, 0}});
    EXPECT_TRUE(sameModel(without, with));
}

TEST(LeftRightEqualSegments, OnlyEmptySequencesZeroTheEmissions) {
    LeftRightHMM model(2, 2, 1);
    model.b.data.assign(4, 0.25);
    estimateQuietly(model, {{}, {}});
    EXPECT_TRUE(bitEqual(std::vector<double>{0, 0, 0, 0}, model.b.data));
}

TEST(LeftRightEqualSegments, DoesNotNeedStateLists) {
    LeftRightHMM with(2, 2, 1);
    with.stateSymbols = {{0}};
    LeftRightHMM without(2, 2, 1);
    estimateQuietly(with, {{0, 1, 0}});
    estimateQuietly(without, {{0, 1, 0}});
    EXPECT_TRUE(bitEqual(without.b, with.b));
}

TEST(LeftRightEqualSegments, UsesTheSymbolItselfAndNotItsValueInTheVocabulary) {
    LeftRightHMM model(1, 2, 1);
    model.vocab.data = {1, 0};
    estimateQuietly(model, {{0, 0, 0, 1}});
    EXPECT_TRUE(bitEqual(std::vector<double>{0.75, 0.25}, model.b.data));
}

TEST(LeftRightEqualSegments, RefusesASymbolOutsideTheVocabularyBeforeAnythingChanges) {
    const std::vector<Sequences> refused = {
        {{0, 1, 2, 0}}, {{0, -1, 1, 0}}, {{0, 1, 0, 1}, {1, 99, 0}}, {{-2147483647 - 1, 0, 0}}};
    for (const Sequences& sequences : refused) {
        SCOPED_TRACE(testing::PrintToString(sequences));
        LeftRightHMM model(2, 2, 1);
        model.pi = {3, 4};
        model.a.data.assign(4, 5.0);
        model.b.data.assign(4, 6.0);
        const LeftRightHMM before = model;
        const Capture capture;
        EXPECT_THROW(model.calcInitialProbs(HMM::EqualSegments, sequences), std::out_of_range);
        EXPECT_EQ(capture.text(), "LeftRightHMM::calcInitialProbs: 2\n\n");
        EXPECT_TRUE(sameModel(before, model));
        EXPECT_THROW(model.estimate(HMM::EqualSegments, sequences), std::out_of_range);
        EXPECT_TRUE(sameModel(before, model));
    }
}

TEST(LeftRightEqualSegments, CoversSequencesWhoseLengthSinglePrecisionCannotHold) {
    // 2^24 + 1 symbols for one state: single precision rounds the length down to 2^24, so one
    // symbol is left over and the only segment is a tail of 2^24 + 1.
    std::vector<int> sequence((1U << 24) + 1U, 0);
    sequence.back() = 1;
    LeftRightHMM one(1, 2, 1);
    one.estimate(HMM::EqualSegments, {sequence});
    EXPECT_TRUE(
        bitEqual(std::vector<double>{16777216.0 / 16777217.0, 1.0 / 16777217.0}, one.b.data));

    // 2^24 + 3 symbols for two states: rounded up to 2^24 + 4, so the segments are cut at
    // 2^23 + 2 and the second one ends a symbol short.
    sequence.resize((1U << 24) + 3U, 0);
    sequence.assign(sequence.size(), 0);
    sequence[(1U << 23) + 1U] = 1;
    sequence[(1U << 23) + 2U] = 2;
    sequence.back() = 3;
    LeftRightHMM two(2, 4, 1);
    two.estimate(HMM::EqualSegments, {sequence});
    EXPECT_TRUE(
        bitEqual(std::vector<double>{8388609.0 / 8388610.0, 1.0 / 8388610.0, 0, 0,  //
                                     8388607.0 / 8388609.0, 0, 1.0 / 8388609.0, 1.0 / 8388609.0},
                 two.b.data));
}

TEST(LeftRightEqualSegments, MatchesTheLiteralVersionOnRandomSequences) {
    for (std::uint64_t seed = 1; seed <= 3000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.integer(1, 12);
        const int M = random.integer(1, 20);
        Reference::LeftRightModel expected = Reference::makeLeftRight(N, M, random.integer(-1, N));
        const Sequences sequences =
            randomSequences(random, random.integer(0, 6), 0, random.integer(0, 60), M);
        LeftRightHMM model = libraryModel(expected);
        Reference::calcInitialProbs(expected, 2, sequences);
        estimateQuietly(model, sequences);
        ASSERT_TRUE(sameModel(expected, model));
    }
}

}  // namespace
