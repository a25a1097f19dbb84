#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <limits>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using namespace Vesk::Test;

void estimateQuietly(LeftRightHMM& model) {
    const Capture capture;
    model.calcInitialProbs(HMM::StateSymbols, {});
}

std::vector<double> emissionRow(const LeftRightHMM& model, int i) {
    std::vector<double> row;
    for (int k = 0; k < model.b.cols; ++k) row.push_back(model.b(i, k));
    return row;
}

TEST(LeftRightStateSymbols, OneAllowedSymbolOfFourTakesWhatTheFloorLeaves) {
    LeftRightHMM model(1, 4, 1);
    model.stateSymbols = {{2}};
    estimateQuietly(model);
    const double floorSum = 0.001 + 0.001 + 0.001;
    EXPECT_TRUE(
        bitEqual(std::vector<double>{0.001, 0.001, 1.0 - floorSum, 0.001}, emissionRow(model, 0)));
    EXPECT_DOUBLE_EQ(emissionRow(model, 0)[2], 0.997);
}

TEST(LeftRightStateSymbols, AllowedSymbolsShareEqually) {
    LeftRightHMM model(3, 4, 1);
    model.stateSymbols = {{0, 3}, {3, 1, 0}, {0, 1, 2, 3}};
    estimateQuietly(model);
    const double two = (1.0 - (0.001 + 0.001)) / 2.0;
    const double three = (1.0 - 0.001) / 3.0;
    EXPECT_TRUE(bitEqual(std::vector<double>{two, 0.001, 0.001, two}, emissionRow(model, 0)));
    EXPECT_TRUE(bitEqual(std::vector<double>{three, three, 0.001, three}, emissionRow(model, 1)));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.25, 0.25, 0.25}, emissionRow(model, 2)));
}

TEST(LeftRightStateSymbols, ListWithNoSymbolLeavesTheRowAtTheFloor) {
    LeftRightHMM model(2, 3, 1);
    model.stateSymbols = {{}, {7, -1}};
    estimateQuietly(model);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.001, 0.001, 0.001}, emissionRow(model, 0)));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.001, 0.001, 0.001}, emissionRow(model, 1)));
}

TEST(LeftRightStateSymbols, RepeatedAndForeignEntriesCountOnce) {
    LeftRightHMM model(1, 3, 1);
    model.stateSymbols = {{1, 1, 9, 1, -4}};
    estimateQuietly(model);
    EXPECT_TRUE(
        bitEqual(std::vector<double>{0.001, 1.0 - (0.001 + 0.001), 0.001}, emissionRow(model, 0)));
}

TEST(LeftRightStateSymbols, FloorSumIsAddedUpTermByTerm) {
    LeftRightHMM model(1, 1000, 1);
    model.stateSymbols = {{500}};
    estimateQuietly(model);
    double floorSum = 0.0;
    for (int k = 0; k < 999; ++k) floorSum += 0.001;
    ASSERT_NE(floorSum, 0.999);
    EXPECT_TRUE(bitEqual(1.0 - floorSum, model.b(0, 500)));
}

TEST(LeftRightStateSymbols, MoreThanAThousandSymbolsMakeTheShareNegative) {
    LeftRightHMM model(1, 1200, 1);
    model.stateSymbols = {{0, 1}};
    estimateQuietly(model);
    double floorSum = 0.0;
    for (int k = 0; k < 1198; ++k) floorSum += 0.001;
    EXPECT_TRUE(bitEqual((1.0 - floorSum) / 2.0, model.b(0, 0)));
    EXPECT_LT(model.b(0, 1), 0.0);
}

TEST(LeftRightStateSymbols, SetsStartAndTransitionsAsTheOtherEstimateDoes) {
    LeftRightHMM symbols(4, 3, 2);
    symbols.stateSymbols = {{0}, {1}, {2}, {0}};
    LeftRightHMM segments(4, 3, 2);
    estimateQuietly(symbols);
    const Capture capture;
    segments.calcInitialProbs(HMM::EqualSegments, {});
    EXPECT_TRUE(bitEqual(segments.pi, symbols.pi));
    EXPECT_TRUE(bitEqual(segments.a, symbols.a));
}

TEST(LeftRightStateSymbols, IgnoresTheSequences) {
    LeftRightHMM without(2, 3, 1);
    without.stateSymbols = {{0}, {1, 2}};
    LeftRightHMM with = without;
    estimateQuietly(without);
    const Capture capture;
    with.calcInitialProbs(HMM::StateSymbols, {{0, 1, 2}, {2, 2, 99, -7}});
    EXPECT_TRUE(sameModel(without, with));
}

TEST(LeftRightStateSymbols, DoesNothingUnlessThereIsExactlyOneListPerState) {
    for (const std::size_t lists : {0U, 1U, 2U, 4U}) {
        SCOPED_TRACE(lists);
        LeftRightHMM model(3, 2, 1);
        model.pi = {3, 4, 5};
        model.a.data.assign(9, 6.0);
        model.b.data.assign(6, 7.0);
        model.stateSymbols.assign(lists, {0});
        const LeftRightHMM before = model;
        const Capture capture;
        model.calcInitialProbs(HMM::StateSymbols, {});
        EXPECT_EQ(capture.text(), "LeftRightHMM::calcInitialProbs: 1\n\n");
        EXPECT_TRUE(sameModel(before, model));
    }
}

TEST(LeftRightStateSymbols, DoesNothingForAModelWithoutStates) {
    LeftRightHMM model(1, 2, 1);
    model.pi = {3};
    model.numStates = 0;
    const LeftRightHMM before = model;
    estimateQuietly(model);
    EXPECT_TRUE(bitEqual(before.pi, model.pi));
    EXPECT_TRUE(bitEqual(before.a, model.a));
    EXPECT_TRUE(bitEqual(before.b, model.b));
}

TEST(LeftRightStateSymbols, LeavesTheEmissionsAloneWithoutSymbols) {
    LeftRightHMM model(2, 2, 1);
    model.b.data = {3, 4, 5, 6};
    model.vocabSize = 0;
    model.stateSymbols = {{0}, {1}};
    estimateQuietly(model);
    EXPECT_TRUE(bitEqual(std::vector<double>{3, 4, 5, 6}, model.b.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{1, 0}, model.pi));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.5, 0.5, 0, 1}, model.a.data));
}

TEST(LeftRightStateSymbols, LooksSymbolsUpByTheirValueInTheVocabulary) {
    LeftRightHMM model(1, 4, 1);
    model.vocab.data = {10, 2.5, std::numeric_limits<double>::quiet_NaN(), -3};
    model.stateSymbols = {{-3, 2, 10}};
    estimateQuietly(model);
    const double share = (1.0 - (0.001 + 0.001)) / 2.0;
    EXPECT_TRUE(bitEqual(std::vector<double>{share, 0.001, 0.001, share}, emissionRow(model, 0)));
}

TEST(LeftRightStateSymbols, MatchesTheLiteralVersionOnRandomLists) {
    for (std::uint64_t seed = 1; seed <= 2000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const int N = random.integer(1, 8);
        const int M = random.integer(1, 20);
        Reference::LeftRightModel expected = Reference::makeLeftRight(N, M, random.integer(-1, N));
        const int lists = random.chance(0.9) ? N : random.integer(0, N + 1);
        for (int i = 0; i < lists; ++i) {
            std::vector<int> list(static_cast<std::size_t>(random.integer(0, M)));
            for (int& entry : list) entry = random.integer(-2, M + 2);
            expected.stateSymbols.push_back(list);
        }
        if (random.chance(0.2)) expected.vocab[0][0] = random.integer(0, M);
        LeftRightHMM model = libraryModel(expected);
        Reference::calcInitialProbs(expected, 1, {});
        estimateQuietly(model);
        ASSERT_TRUE(sameModel(expected, model));
    }
}

}  // namespace
