#include <support/BitEqual.h>
#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <stdexcept>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::Test::bitEqual;
using Vesk::Test::Matrix;
using Vesk::Test::matrixOf;
using Vesk::Test::modelsEqual;

TEST(HmmInitialEstimate, RefusesDamagedTablesBeforeItChangesOne) {
    std::vector<HMM> models(5, HMM(2, 2));
    models[0].pi = {5.0};
    models[1].pi.clear();
    models[2].a = matrixOf({{3.0, 3.0}});
    models[3].b = matrixOf({{4.0}, {4.0}});
    models[4].numStates = 3;
    for (std::size_t i = 0; i < models.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "model " << i);
        const HMM before = models[i];
        EXPECT_THROW(models[i].calcInitialProbs(HMM::EqualSegments, {}), std::out_of_range);
        EXPECT_TRUE(modelsEqual(before, models[i]));
    }
}

TEST(HmmBackward, TableOfOneSymbolNeedsNoEmissions) {
    HMM model(2, 2);
    model.b = Matrix();
    EXPECT_TRUE(bitEqual(matrixOf({{1.0}, {1.0}}), model.backwardProc({1}, 1)));
    EXPECT_THROW(model.backwardProc({1, 0}, 2), std::out_of_range);
}

TEST(HmmProbability, OfGivenParametersForANegativeNumberOfStatesIsBadAlloc) {
    HMM model(1, 1);
    const Matrix one = matrixOf({{1.0}});
    EXPECT_THROW(model.forwardProbabilityHMM({0}, 1, -1, {1.0}, one, one), std::bad_alloc);
    EXPECT_THROW(model.backwardProbabilityHMM({0}, 1, -1, {1.0}, one, one), std::bad_alloc);
    EXPECT_THROW(model.forwardProcHMM({0}, 1, -1, {1.0}, one, one), std::bad_alloc);
    EXPECT_THROW(model.backwardProcHMM({0}, 1, -1, one, one), std::bad_alloc);
}

TEST(HmmPasses, TablesBeyond32BitPositionsAreBadAlloc) {
    // 2048 * (2^21 + 1) = 2^32 + 2048 values, which 32 bits would take for 2048.
    HMM model(2048, 1);
    const int T = (1 << 21) + 1;
    const std::vector<int> o(static_cast<std::size_t>(T), 0);
    EXPECT_THROW(model.forwardProc(o, T), std::bad_alloc);
    EXPECT_THROW(model.backwardProc(o, T), std::bad_alloc);
}

TEST(HmmProbability, OfNoSymbolsLooksAtNoGivenParameter) {
    HMM model(1, 1);
    EXPECT_TRUE(bitEqual(0.0, model.forwardProbabilityHMM({}, 0, -1, {}, {}, {})));
    EXPECT_TRUE(bitEqual(0.0, model.backwardProbabilityHMM({}, -3, -1, {}, {}, {})));
}

TEST(HmmBaumWelch, AdoptedPiHasOneValueAStateHoweverLongItWas) {
    HMM model(2, 2);
    model.pi = {0.5, 0.5};
    model.a = matrixOf({{0.5, 0.5}, {0.25, 0.75}});
    model.b = matrixOf({{0.5, 0.5}, {0.25, 0.75}});
    HMM longer = model;
    longer.pi.resize(5, 0.25);
    HMM atOnce = longer;
    for (int iteration = 1; iteration <= 3; ++iteration) {
        SCOPED_TRACE(iteration);
        const HMM before = model;
        model.baumWelch({0, 1, 1, 0, 1}, 5, 1);
        longer.baumWelch({0, 1, 1, 0, 1}, 5, 1);
        EXPECT_FALSE(bitEqual(before.pi, model.pi));
        EXPECT_TRUE(modelsEqual(model, longer));
    }
    atOnce.baumWelch({0, 1, 1, 0, 1}, 5, 3);
    EXPECT_TRUE(modelsEqual(model, atOnce));
}

/// Only state 0 can produce two symbols, so the candidate's likelihood is 1 whatever the other
/// states' first values are; those are the reference.
HMM withFirstValues(double one, double two, double three) {
    HMM model(4, 2);
    model.pi = {1.0, one, two, three};
    model.a(0, 0) = 1.0;
    model.b = matrixOf({{0.5, 0.5}, {1.0, 1.0}, {1.0, 1.0}, {1.0, 1.0}});
    return model;
}

TEST(HmmBaumWelch, AddsTheReferenceInTheOrderOfTheStates) {
    const double below = 1.0 - 0x1p-53;
    const double quarter = 0x1p-55;  // of the distance from `below` to 1

    // Each quarter is rounded away: the reference stays below 1 and the candidate is adopted.
    HMM adopting = withFirstValues(below, quarter, quarter);
    adopting.baumWelch({0, 1}, 2, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{1.0, 0.0, 0.0, 0.0}, adopting.pi));

    // The two quarters come first, and the tie goes to 1: the candidate does not exceed it.
    HMM keeping = withFirstValues(quarter, quarter, below);
    keeping.baumWelch({0, 1}, 2, 1);
    EXPECT_TRUE(modelsEqual(withFirstValues(quarter, quarter, below), keeping));
}

TEST(HmmViterbi, NoStatesAreOutOfRange) {
    HMM model(1, 2);
    model.numStates = 0;
    EXPECT_THROW(model.viterbi({1, 0}, 2), std::out_of_range);
}

TEST(HmmForward, RowsLieAsFarApartAsTheTableIsWide) {
    HMM narrow(8, 1);
    for (int i = 0; i < 8; ++i) {
        narrow.pi[static_cast<std::size_t>(i)] = 0.125;
        narrow.b(i, 0) = 0.5 + 0.0625 * i;
        for (int j = 0; j < 8; ++j) narrow.a(i, j) = 1.0 / (3.0 + i + 2.0 * j);
    }
    // Tables that begin on a cache line are used where they lie: tries until some do.
    std::vector<HMM> wide(64, narrow);
    int onALine = 0;
    for (HMM& model : wide) {
        model.a = Matrix(8, 16);
        for (int i = 0; i < 8; ++i) {
            for (int j = 0; j < 16; ++j) model.a(i, j) = j < 8 ? narrow.a(i, j) : 7.0;
        }
        if (reinterpret_cast<std::uintptr_t>(model.a.data.data()) % 64 == 0) ++onALine;
        EXPECT_TRUE(bitEqual(narrow.forwardProc({0, 0, 0}, 3), model.forwardProc({0, 0, 0}, 3)));
    }
    if (onALine == 0) GTEST_SKIP() << "the allocator begins no table on a line";
}

}  // namespace
