#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using namespace Vesk::Test;

// The same cases in every run; a host's own RC_PARAMS wins.
[[maybe_unused]] const int seeded = setenv("RC_PARAMS", "seed=20261120 max_success=500", 0);

Sequences anySequences(int M) {
    return *rc::gen::container<Sequences>(
        rc::gen::container<std::vector<int>>(rc::gen::inRange(0, M)));
}

RC_GTEST_PROP(LeftRightEstimateProperty, EveryRowOfTransitionsSumsToOne, ()) {
    const int N = *rc::gen::inRange(1, 40);
    const int delta = *rc::gen::inRange(0, 60);
    LeftRightHMM model(N, 1, delta);
    model.estimate(HMM::EqualSegments, {});
    for (int i = 0; i < N; ++i) {
        double sum = 0.0;
        for (int j = 0; j < N; ++j) {
            sum += model.a(i, j);
            const bool inBand = j >= i && j <= i + delta;
            RC_ASSERT((model.a(i, j) != 0.0) == inBand);
        }
        RC_ASSERT(sum > 1.0 - 1e-14);
        RC_ASSERT(sum < 1.0 + 1e-14);
    }
}

RC_GTEST_PROP(LeftRightEstimateProperty, EveryEstimateIsTheLiteralOne, ()) {
    const int N = *rc::gen::inRange(1, 9);
    const int M = *rc::gen::inRange(1, 7);
    Reference::LeftRightModel expected =
        Reference::makeLeftRight(N, M, *rc::gen::inRange(-4, N + 3));
    expected.stateSymbols = anySequences(M);
    const Sequences sequences = anySequences(M);
    const int type = *rc::gen::inRange(-1, 5);
    LeftRightHMM model = libraryModel(expected);
    Reference::calcInitialProbs(expected, type, sequences);
    model.estimate(static_cast<HMM::SegmentationType>(type), sequences);
    RC_ASSERT(static_cast<bool>(sameModel(expected, model)));
}

RC_GTEST_PROP(LeftRightEstimateProperty, OrderOfTheSequencesDoesNotMatter, ()) {
    const int N = *rc::gen::inRange(1, 7);
    const int M = *rc::gen::inRange(1, 5);
    Sequences sequences = anySequences(M);
    LeftRightHMM forwards(N, M, 1);
    LeftRightHMM backwards(N, M, 1);
    forwards.estimate(HMM::EqualSegments, sequences);
    std::reverse(sequences.begin(), sequences.end());
    backwards.estimate(HMM::EqualSegments, sequences);
    RC_ASSERT(static_cast<bool>(sameModel(forwards, backwards)));
}

RC_GTEST_PROP(LeftRightEstimateProperty, RenamingSymbolsRenamesTheColumnsOfEmissions, ()) {
    const int N = *rc::gen::inRange(1, 7);
    const int M = *rc::gen::inRange(1, 6);
    Sequences sequences = anySequences(M);
    LeftRightHMM plain(N, M, 1);
    plain.estimate(HMM::EqualSegments, sequences);
    for (std::vector<int>& sequence : sequences) {
        for (int& symbol : sequence) symbol = M - 1 - symbol;
    }
    LeftRightHMM renamed(N, M, 1);
    renamed.estimate(HMM::EqualSegments, sequences);
    for (int i = 0; i < N; ++i) {
        for (int k = 0; k < M; ++k) {
            RC_ASSERT(sameBits(plain.b(i, k), renamed.b(i, M - 1 - k)));
        }
    }
}

RC_GTEST_PROP(LeftRightEstimateProperty, RepeatingAllSequencesChangesNothing, ()) {
    // Counts of n and of 2 n give the same quotients, bit for bit.
    const int N = *rc::gen::inRange(1, 7);
    const int M = *rc::gen::inRange(1, 6);
    Sequences sequences = anySequences(M);
    LeftRightHMM once(N, M, 1);
    once.estimate(HMM::EqualSegments, sequences);
    const Sequences copy = sequences;
    sequences.insert(sequences.end(), copy.begin(), copy.end());
    LeftRightHMM twice(N, M, 1);
    twice.estimate(HMM::EqualSegments, sequences);
    RC_ASSERT(static_cast<bool>(sameModel(once, twice)));
}

}  // namespace
