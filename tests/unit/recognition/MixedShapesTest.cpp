#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;

TEST(MixedAlphabets, ColumnsBeyondANarrowGestureStayZeroOnAFirstBuild) {
    GestureSet set;
    fill(set.add("wide", 1, 3), {1}, {1}, {0.1, 0.2, 0.3});
    fill(set.add("narrow", 1, 2), {1}, {1}, {0.4, 0.5});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_TRUE(bitEqual(std::vector<double>{0.1, 0.2, 0.3, 0.4, 0.5, 0}, model.b.data));
}

TEST(MixedAlphabets, ColumnsBeyondANarrowGestureKeepWhatAnEarlierBuildLeft) {
    GestureSet set;
    LeftRightHMM& wide = set.add("wide", 1, 3);
    LeftRightHMM& other = set.add("other", 1, 3);
    LeftRightHMM& narrow = set.add("narrow", 1, 1);
    fill(wide, {1}, {1}, {0.1, 0.2, 0.3});
    fill(other, {1}, {1}, {0.4, 0.5, 0.6});
    fill(narrow, {1}, {1}, {0.7});
    RecognitionModelHMM model({&wide, &other}, 0.5);
    ASSERT_TRUE(model.initialize());
    model.gestures = {&wide, &narrow};
    ASSERT_TRUE(model.initialize());
    const std::vector<double> expected{0.1, 0.2, 0.3, 0.7, 0.5, 0.6};
    EXPECT_TRUE(bitEqual(expected, model.b.data));
    EXPECT_TRUE(bitEqual(expected, model.recognitionHMM->b.data));
}

TEST(MixedAlphabets, AChangedAlphabetShiftsStaleValuesToTheirFlatPositions) {
    GestureSet set;
    LeftRightHMM& two = set.add("two", 1, 2);
    LeftRightHMM& three = set.add("three", 1, 3);
    LeftRightHMM& narrow = set.add("narrow", 1, 1);
    fill(two, {1}, {1}, {0.1, 0.2});
    fill(three, {1}, {1}, {0.3, 0.4, 0.5});
    fill(narrow, {1}, {1}, {0.6});
    RecognitionModelHMM model({&three, &three}, 0.5);
    ASSERT_TRUE(model.initialize());
    // 0.3 0.4 0.5 / 0.3 0.4 0.5 cut to 2 x 2: 0.3 0.4 / 0.5 0.3; row 1 then gets column 0 only.
    model.gestures = {&two, &narrow};
    ASSERT_TRUE(model.initialize());
    EXPECT_TRUE(bitEqual(std::vector<double>{0.1, 0.2, 0.6, 0.3}, model.b.data));
}

TEST(MixedAlphabets, AWideGestureOverwritesTheStartOfTheNextRow) {
    GestureSet set;
    fill(set.add("first", 1, 2), {1}, {1}, {0.1, 0.2});
    fill(set.add("wide", 1, 4), {1}, {1}, {0.3, 0.4, 0.5, 0.6});
    fill(set.add("narrow", 1, 1), {1}, {1}, {0.7});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    // Row 1 spills 0.5 0.6 into row 2, whose column 0 the last gesture then replaces.
    EXPECT_TRUE(bitEqual(std::vector<double>{0.1, 0.2, 0.3, 0.4, 0.7, 0.6}, model.b.data));
}

TEST(MixedAlphabets, AWideGesturesOwnNextRowReplacesItsSpill) {
    GestureSet set;
    fill(set.add("first", 1, 2), {1}, {1}, {0.1, 0.2});
    fill(set.add("wide", 2, 3), {1, 0}, {1, 0, 0, 1}, {0.3, 0.4, 0.5, 0.6, 0.7, 0.8});
    fill(set.add("none", 1, 1), {1}, {1}, {0.9});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_TRUE(bitEqual(std::vector<double>{0.1, 0.2, 0.3, 0.4, 0.6, 0.7, 0.9, 0}, model.b.data));
}

TEST(MixedAlphabets, ASpillPastTheLastRowIsOutOfRangeAndChangesNothing) {
    GestureSet set;
    fill(set.add("first", 1, 2), {1}, {0.5}, {0.1, 0.2});
    LeftRightHMM& wide = set.add("wide", 1, 3);
    fill(wide, {1}, {0.5}, {0.3, 0.4, 0.5});
    RecognitionModelHMM model(set.pointers(), 0.5);
    const auto before = recogniserOf(model);
    EXPECT_THROW(model.initialize(), std::out_of_range);
    expectSameRecogniser(before, recogniserOf(model));
}

TEST(MixedAlphabets, ARefusedCompositionKeepsTheEarlierCombinedModel) {
    GestureSet set;
    LeftRightHMM& first = set.add("first", 2, 2);
    LeftRightHMM& wide = set.add("wide", 1, 3);
    fill(first, {1, 0}, {0.5, 0.5, 0, 1}, {0.1, 0.2, 0.3, 0.4});
    fill(wide, {1}, {0.5}, {0.3, 0.4, 0.5});
    RecognitionModelHMM model({&first}, 0.5);
    ASSERT_TRUE(model.initialize());
    HMM* const combined = model.recognitionHMM;
    model.gestures.push_back(&wide);
    const auto before = recogniserOf(model);
    EXPECT_THROW(model.initialize(), std::out_of_range);
    EXPECT_EQ(model.recognitionHMM, combined);
    expectSameRecogniser(before, recogniserOf(model));
}

TEST(MixedShapes, FewerTransitionRowsThanStatesLeaveTheLastRowsAlone) {
    GestureSet set;
    LeftRightHMM& gesture = set.add("short", 2, 1);
    fill(gesture, {1, 0}, {0.5, 0.5, 0, 1}, {0.25, 0.75});
    gesture.a.resize(1, 1);
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_TRUE(bitEqual(std::vector<double>{0.5, 0.5, 0, 0}, model.a.data));
}

TEST(MixedShapes, ANegativeRowCountContributesNoTransitions) {
    GestureSet set;
    LeftRightHMM& odd = set.add("odd", 1, 1);
    fill(odd, {1}, {0.5}, {0.25});
    odd.a.rows = -3;
    fill(set.add("plain", 1, 1), {1}, {0.25}, {0.75});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    // The plain gesture's transitions move up to row 0, its emissions stay in row 1.
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.75, 0, 0}, model.a.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.75}, model.b.data));
}

TEST(MixedShapes, AnEmptyTransitionTableShiftsTheLaterGesturesUp) {
    GestureSet set;
    LeftRightHMM& odd = set.add("odd", 1, 1);
    fill(odd, {1}, {0.5}, {0.25});
    odd.a.resize(0, 0);
    fill(set.add("plain", 1, 1), {1}, {0.25}, {0.75});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.75, 0, 0}, model.a.data));
}

TEST(MixedShapes, AnEmptyEmissionTableShiftsTheLaterGesturesUp) {
    GestureSet set;
    LeftRightHMM& odd = set.add("odd", 1, 1);
    fill(odd, {1}, {0.5}, {0.25});
    odd.b.resize(0, 1);
    fill(set.add("plain", 1, 1), {1}, {0.25}, {0.75});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_TRUE(bitEqual(std::vector<double>{0.75, 0}, model.b.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.5, 0.5, 0.75, 0.25}, model.a.data));
}

TEST(MixedShapes, TheDiagonalFollowsTheGesturesOwnColumnCount) {
    GestureSet set;
    LeftRightHMM& wide = set.add("wide", 2, 1);
    fill(wide, {1, 0}, {0.5, 0.5, 0, 1}, {0.25, 0.75});
    wide.a.resize(2, 3);
    wide.a.data = {0.5, 9, 9, 9, 0.25, 9};  // (0, 0) and (1, 1) of a 2 x 3 table
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_TRUE(bitEqual(std::vector<double>{0.5, 0.5, 0.75, 0.25}, model.a.data));
}

TEST(MixedShapes, StateCountsAddUpInUnsignedArithmetic) {
    GestureSet set;
    LeftRightHMM& huge = set.add("huge", 1, 1);
    fill(huge, {1}, {0.5}, {0.25});
    huge.numStates = 4294967295U;
    LeftRightHMM& none = set.add("none", 2, 1);
    none.a.resize(0, 0);
    none.b.resize(0, 1);
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_EQ(model.numStates, 1U);  // 2^32 - 1 + 2
    EXPECT_TRUE(bitEqual(std::vector<double>{1}, model.pi));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.5}, model.a.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25}, model.b.data));
}

TEST(MixedShapes, ADiagonalOutsideTheGesturesTableIsOutOfRange) {
    GestureSet set;
    LeftRightHMM& narrow = set.add("narrow", 2, 1);
    fill(narrow, {1, 0}, {0.5, 0.5, 0, 1}, {0.25, 0.75});
    narrow.a.resize(2, 1);  // (1, 1) would be at position 2 of 2
    RecognitionModelHMM model(set.pointers(), 0.5);
    const auto before = recogniserOf(model);
    EXPECT_THROW(model.initialize(), std::out_of_range);
    expectSameRecogniser(before, recogniserOf(model));
}

TEST(MixedShapes, FewerEmissionsThanTheGesturesShapeSaysAreOutOfRange) {
    GestureSet set;
    LeftRightHMM& gesture = set.add("short", 2, 2);
    fill(gesture, {1, 0}, {0.5, 0.5, 0, 1}, {0.25, 0.75, 0.5, 0.5});
    gesture.b.data.pop_back();
    RecognitionModelHMM model(set.pointers(), 0.5);
    const auto before = recogniserOf(model);
    EXPECT_THROW(model.initialize(), std::out_of_range);
    expectSameRecogniser(before, recogniserOf(model));
}

TEST(MixedShapes, StagingTablesOfTheRightShapeButTooFewValuesAreOutOfRangeAndChangeNothing) {
    for (const bool transitions : {true, false}) {
        SCOPED_TRACE(transitions);
        GestureSet set;
        LeftRightHMM& gesture = set.add("g", 2, 2);
        fill(gesture, {1, 0}, {0.5, 0.5, 0, 1}, {0.25, 0.75, 0.5, 0.5});
        RecognitionModelHMM model(set.pointers(), 0.5);
        ASSERT_TRUE(model.initialize());
        (transitions ? model.a : model.b).data.pop_back();
        gesture.vocab.data = {7, 8};
        const auto before = recogniserOf(model);
        EXPECT_THROW(model.initialize(), std::out_of_range);
        expectSameRecogniser(before, recogniserOf(model));
    }
}

TEST(MixedShapes, MoreTransitionRowsThanStatesAreOutOfRange) {
    GestureSet set;
    LeftRightHMM& gesture = set.add("big", 2, 1);
    fill(gesture, {1, 0}, {0.5, 0.5, 0, 1}, {0.25, 0.75});
    gesture.numStates = 1;
    RecognitionModelHMM model(set.pointers(), 0.5);
    const auto before = recogniserOf(model);
    EXPECT_THROW(model.initialize(), std::out_of_range);
    expectSameRecogniser(before, recogniserOf(model));
}

TEST(MixedShapes, MoreEmissionRowsThanStatesAreOutOfRange) {
    GestureSet set;
    LeftRightHMM& gesture = set.add("big", 1, 1);
    fill(gesture, {1}, {0.5}, {0.25});
    gesture.b.resize(2, 1);
    RecognitionModelHMM model(set.pointers(), 0.5);
    const auto before = recogniserOf(model);
    EXPECT_THROW(model.initialize(), std::out_of_range);
    expectSameRecogniser(before, recogniserOf(model));
}

TEST(MixedShapes, SetParametersWithAShortPiIsOutOfRangeAndChangesNothing) {
    GestureSet set;
    fill(set.add("g", 2, 1), {1, 0}, {0.5, 0.5, 0, 1}, {0.25, 0.75});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    HMM* const combined = model.recognitionHMM;
    model.pi.resize(1);
    const auto before = recogniserOf(model);
    EXPECT_THROW(model.setParameters(), std::out_of_range);
    EXPECT_EQ(model.recognitionHMM, combined);
    expectSameRecogniser(before, recogniserOf(model));
}

TEST(MixedShapes, SetParametersWithSmallStagingTablesIsOutOfRange) {
    GestureSet set;
    fill(set.add("g", 2, 1), {1, 0}, {0.5, 0.5, 0, 1}, {0.25, 0.75});
    {
        RecognitionModelHMM model(set.pointers(), 0.5);
        ASSERT_TRUE(model.initialize());
        model.a.resize(1, 2);
        EXPECT_THROW(model.setParameters(), std::out_of_range);
    }
    {
        RecognitionModelHMM model(set.pointers(), 0.5);
        ASSERT_TRUE(model.initialize());
        model.b.resize(1, 1);
        EXPECT_THROW(model.setParameters(), std::out_of_range);
    }
    {
        RecognitionModelHMM fresh(set.pointers(), 0.5);
        EXPECT_THROW(fresh.setParameters(), std::out_of_range);
        EXPECT_EQ(fresh.recognitionHMM, nullptr);
    }
}

TEST(MixedShapes, SetParametersFollowsTheStagingTablesOwnColumnCounts) {
    GestureSet set;
    fill(set.add("g", 2, 1), {1, 0}, {0.5, 0.5, 0, 1}, {0.25, 0.75});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    model.a.resize(2, 3);
    model.a.data.assign(6, 9.0);
    model.b.resize(2, 2);
    model.b.data.assign(4, 9.0);
    ASSERT_TRUE(model.setParameters());
    EXPECT_TRUE(bitEqual(std::vector<double>{0.5, 0.5, 9, 0, 1, 9}, model.a.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 9, 0.75, 9}, model.b.data));
    EXPECT_TRUE(bitEqual(model.a, model.recognitionHMM->a));
    EXPECT_TRUE(bitEqual(model.b, model.recognitionHMM->b));
}

TEST(MixedShapes, ZeroStatesLeaveEveryElementOffTheDiagonal) {
    GestureSet set;
    fill(set.add("g", 1, 1), {1}, {0.5}, {0.25});
    RecognitionModelHMM model(set.pointers(), 0.5);
    model.numStates = 0;
    model.a.resize(2, 2);
    model.a.data = {9, 9, 9, 9};
    model.b.resize(1, 1);
    ASSERT_TRUE(model.setParameters());
    EXPECT_TRUE(bitEqual(std::vector<double>{0.5, 9, 9, 9}, model.a.data));
    EXPECT_EQ(model.recognitionHMM->numStates, 1U);
}

}  // namespace
}  // namespace Vesk::Test
