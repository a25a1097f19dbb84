#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <climits>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using namespace Vesk::Test;

constexpr int allTypes[] = {INT_MIN, -3, -1, 0, 1, 2, 3, 7, 1000, INT_MAX};

/// Estimates without sequences and without showing the announcement.
LeftRightHMM estimated(int N, int M, int delta) {
    LeftRightHMM model(N, M, delta);
    const Capture capture;
    model.calcInitialProbs(HMM::EqualSegments, {});
    return model;
}

/// A model that holds a different number everywhere.
LeftRightHMM filled(int N, int M) {
    LeftRightHMM model(N, M, 1);
    double value = 10.0;
    for (double& p : model.pi) p = value++;
    for (double& p : model.a.data) p = value++;
    for (double& p : model.b.data) p = value++;
    return model;
}

// Announcement

TEST(LeftRightAnnouncement, NamesTheTypeAndEndsWithAnEmptyLineForEveryType) {
    for (const int type : allTypes) {
        LeftRightHMM model(2, 2, 1);
        const Capture capture;
        model.calcInitialProbs(static_cast<HMM::SegmentationType>(type), {});
        EXPECT_EQ(capture.text(),
                  "LeftRightHMM::calcInitialProbs: " + std::to_string(type) + "\n\n");
        EXPECT_EQ(capture.flushes(), 2);
    }
}

TEST(LeftRightAnnouncement, IsWrittenOnEveryCall) {
    LeftRightHMM model(2, 2, 1);
    const Capture capture;
    model.calcInitialProbs(HMM::EqualSegments, {{0, 1, 0}});
    model.calcInitialProbs(HMM::EqualSegments, {{0, 1, 0}});
    EXPECT_EQ(capture.text(),
              "LeftRightHMM::calcInitialProbs: 2\n\nLeftRightHMM::calcInitialProbs: 2\n\n");
}

TEST(LeftRightAnnouncement, LeavesTheStreamsFormattingAlone) {
    LeftRightHMM model(2, 2, 1);
    const Capture capture;
    const auto flags = std::cout.flags();
    const auto precision = std::cout.precision();
    model.calcInitialProbs(HMM::EqualSegments, {{0, 1, 0}});
    EXPECT_EQ(std::cout.flags(), flags);
    EXPECT_EQ(std::cout.precision(), precision);
}

TEST(LeftRightAnnouncement, ComesFromTheInheritedInitializeToo) {
    LeftRightHMM model(2, 2, 1);
    const Capture capture;
    model.initialize({{0, 1, 0}}, HMM::EqualSegments);
    EXPECT_EQ(capture.text(), "LeftRightHMM::calcInitialProbs: 2\n\n");
}

// Start and transitions

TEST(LeftRightTransitions, DeltaOneWithFourStatesIsTheWorkedExample) {
    const LeftRightHMM model = estimated(4, 2, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{1, 0, 0, 0}, model.pi));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.5, 0.5, 0, 0,  //
                                             0, 0.5, 0.5, 0,  //
                                             0, 0, 0.5, 0.5,  //
                                             0, 0, 0, 1},
                         model.a.data));
}

TEST(LeftRightTransitions, DeltaTwoNarrowsTowardsTheEnd) {
    const double third = 1.0 / 3.0;
    const LeftRightHMM model = estimated(4, 2, 2);
    EXPECT_TRUE(bitEqual(std::vector<double>{third, third, third, 0,  //
                                             0, third, third, third,  //
                                             0, 0, 0.5, 0.5,          //
                                             0, 0, 0, 1},
                         model.a.data));
}

TEST(LeftRightTransitions, DeltaOfAtLeastTheLastStateIsUniformFromEachStateOn) {
    const double third = 1.0 / 3.0;
    for (const int delta : {3, 4, 5, 1000, INT_MAX - 4, INT_MAX}) {
        SCOPED_TRACE(delta);
        const LeftRightHMM model = estimated(4, 2, delta);
        EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.25, 0.25, 0.25,  //
                                                 0, third, third, third,  //
                                                 0, 0, 0.5, 0.5,          //
                                                 0, 0, 0, 1},
                             model.a.data));
    }
}

TEST(LeftRightTransitions, DeltaZeroIsTheIdentity) {
    const LeftRightHMM model = estimated(3, 2, 0);
    EXPECT_TRUE(bitEqual(std::vector<double>{1, 0, 0, 0, 1, 0, 0, 0, 1}, model.a.data));
}

TEST(LeftRightTransitions, DeltaMinusOneMakesTheFirstRowUniformAndTheOthersZero) {
    const LeftRightHMM model = estimated(4, 2, -1);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.25, 0.25, 0.25,  //
                                             0, 0, 0, 0,              //
                                             0, 0, 0, 0,              //
                                             0, 0, 0, 0},
                         model.a.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{1, 0, 0, 0}, model.pi));
}

TEST(LeftRightTransitions, DeltaBelowMinusOneWrapsAroundRowByRow) {
    // i + delta as an unsigned number: 2^32 - 2, 2^32 - 1, 0, 1. Rows 0 and 1 reach every later
    // state; rows 2 and 3 reach nothing at or after themselves.
    const double third = 1.0 / 3.0;
    const LeftRightHMM minusTwo = estimated(4, 2, -2);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.25, 0.25, 0.25,  //
                                             0, third, third, third,  //
                                             0, 0, 0, 0,              //
                                             0, 0, 0, 0},
                         minusTwo.a.data));
    // Far below, every row reaches the end.
    const LeftRightHMM farBelow = estimated(3, 2, INT_MIN);
    EXPECT_TRUE(bitEqual(std::vector<double>{third, third, third,  //
                                             0, 0.5, 0.5,          //
                                             0, 0, 1},
                         farBelow.a.data));
}

TEST(LeftRightTransitions, OneStateLoopsOnItself) {
    for (const int delta : {INT_MIN, -1, 0, 1, INT_MAX}) {
        SCOPED_TRACE(delta);
        const LeftRightHMM model = estimated(1, 2, delta);
        EXPECT_TRUE(bitEqual(std::vector<double>{1}, model.pi));
        EXPECT_TRUE(bitEqual(std::vector<double>{1}, model.a.data));
    }
}

TEST(LeftRightTransitions, MatchTheLiteralVersionForEveryDeltaAndSize) {
    for (int N = 1; N <= 12; ++N) {
        for (int delta = -N - 2; delta <= N + 2; ++delta) {
            SCOPED_TRACE(testing::Message() << "N " << N << ", delta " << delta);
            Reference::LeftRightModel expected = Reference::makeLeftRight(N, 3, delta);
            Reference::calcInitialProbs(expected, 2, {});
            EXPECT_TRUE(sameModel(expected, estimated(N, 3, delta)));
        }
    }
}

TEST(LeftRightTransitions, ReplaceWhateverTheModelHeld) {
    LeftRightHMM model = filled(3, 2);
    LeftRightHMM fresh(3, 2, 1);
    const Capture capture;
    const Sequences sequences = {{0, 1, 1, 0}};
    model.calcInitialProbs(HMM::EqualSegments, sequences);
    fresh.calcInitialProbs(HMM::EqualSegments, sequences);
    EXPECT_TRUE(sameModel(fresh, model));
}

TEST(LeftRightTransitions, SeeDeltaAsItIsAtTheCall) {
    LeftRightHMM model(3, 2, 0);
    model.delta = 1;
    const Capture capture;
    model.calcInitialProbs(HMM::EqualSegments, {});
    EXPECT_TRUE(bitEqual(std::vector<double>{0.5, 0.5, 0, 0, 0.5, 0.5, 0, 0, 1}, model.a.data));
}

TEST(LeftRightTransitions, FillTheLeadingStatesOfLargerTables) {
    LeftRightHMM model(2, 1, 1);
    model.pi = {7, 7, 7};
    model.a = matrixOf({{7, 7, 7}, {7, 7, 7}, {7, 7, 7}});
    model.b = matrixOf({{7, 7}, {7, 7}, {7, 7}});
    const Capture capture;
    model.calcInitialProbs(HMM::EqualSegments, {{0, 0, 0}});
    EXPECT_TRUE(bitEqual(std::vector<double>{1, 0, 7}, model.pi));
    EXPECT_TRUE(bitEqual(matrixOf({{0.5, 0.5, 7}, {0, 1, 7}, {7, 7, 7}}), model.a));
    EXPECT_TRUE(bitEqual(matrixOf({{1, 7}, {1, 7}, {7, 7}}), model.b));
}

// Other types

TEST(LeftRightEstimate, AnyOtherTypeLeavesTheModelUntouched) {
    for (const int type : allTypes) {
        if (type == 1 || type == 2) continue;
        SCOPED_TRACE(type);
        LeftRightHMM model = filled(3, 2);
        model.stateSymbols = {{0}, {1}, {0, 1}};
        const LeftRightHMM before = model;
        const Capture capture;
        model.calcInitialProbs(static_cast<HMM::SegmentationType>(type), {{0, 1, 0, 1}});
        EXPECT_TRUE(sameModel(before, model));
    }
}

// Ways in

TEST(LeftRightEstimate, InitializeLandsInTheOverride) {
    LeftRightHMM direct(2, 3, 1);
    LeftRightHMM inherited(2, 3, 1);
    const Sequences sequences = {{0, 1, 2, 2}, {1, 1, 0}};
    const Capture capture;
    direct.calcInitialProbs(HMM::EqualSegments, sequences);
    static_cast<HMM&>(inherited).initialize(sequences, HMM::EqualSegments);
    EXPECT_TRUE(sameModel(direct, inherited));
    EXPECT_TRUE(sameBits(1.0, inherited.pi[0]));
}

TEST(LeftRightEstimate, InitializeDoesNotStoreTheSequences) {
    LeftRightHMM model(2, 3, 1);
    const Capture capture;
    model.initialize({{0, 1, 2}}, HMM::EqualSegments);
    EXPECT_TRUE(model.trainingSequences.empty());
}

TEST(LeftRightEstimate, NeverReadsTheStoredTrainingSequences) {
    Sequences stored = {{0, 0, 0, 0}};
    LeftRightHMM model(2, 2, stored, 1);
    const Capture capture;
    model.calcInitialProbs(HMM::EqualSegments, {});
    EXPECT_TRUE(bitEqual(std::vector<double>{0, 0, 0, 0}, model.b.data));
    EXPECT_EQ(model.trainingSequences, stored);
}

TEST(LeftRightEstimate, LeavesEverythingButTheProbabilitiesAlone) {
    LeftRightHMM model = filled(2, 2);
    model.name = "circle";
    model.vocabValues = {4, 5};
    model.convergenceThreshold = 0.5f;
    model.stateSymbols = {{0}, {1}};
    model.vocab.data = {7, 8};
    const Capture capture;
    model.calcInitialProbs(HMM::EqualSegments, {{0, 1, 1}});
    EXPECT_EQ(model.name, "circle");
    EXPECT_TRUE(bitEqual(std::vector<double>{4, 5}, model.vocabValues));
    EXPECT_TRUE(sameBits(0.5, model.convergenceThreshold));
    EXPECT_EQ(model.stateSymbols, (Sequences{{0}, {1}}));
    EXPECT_TRUE(bitEqual(std::vector<double>{7, 8}, model.vocab.data));
    EXPECT_EQ(model.delta, 1);
    EXPECT_TRUE(model.needsSeed);
}

TEST(LeftRightEstimate, SilentTwinGivesTheSameModelAndWritesNothing) {
    const Sequences sequences = {{0, 1, 2, 2, 1}, {2, 2}, {}};
    for (const int type : allTypes) {
        SCOPED_TRACE(type);
        LeftRightHMM loud = filled(2, 3);
        loud.stateSymbols = {{0, 2}, {}};
        LeftRightHMM silent = loud;
        {
            const Capture capture;
            loud.calcInitialProbs(static_cast<HMM::SegmentationType>(type), sequences);
        }
        const Capture capture;
        silent.estimate(static_cast<HMM::SegmentationType>(type), sequences);
        EXPECT_EQ(capture.text(), "");
        EXPECT_EQ(capture.flushes(), 0);
        EXPECT_TRUE(sameModel(loud, silent));
    }
}

}  // namespace
