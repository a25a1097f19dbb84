#include <support/Capture.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <iomanip>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::RecognitionModelHMM;

/// Two gestures of one and two states, probability share 0.25 each.
GestureSet twoGestures() {
    GestureSet set;
    fill(set.add("one", 1, 2), {1}, {1}, {0.75, 0.25});
    fill(set.add("two", 2, 2), {1, 0}, {0.5, 0.5, 0, 1}, {0.5, 0.5, 1, 0});
    return set;
}

TEST(CheckOutput, IsTheThresholdAndTwoLinesAGesture) {
    const GestureSet set = twoGestures();
    RecognitionModelHMM model(set.pointers(), 0.5);
    HMM combined(1, 2);
    fill(combined, {1}, {1}, {0.25, 0.75});
    model.recognitionHMM = &combined;
    Capture capture;
    // Symbols 0 0. Combined: 0.0625 * 0.5. First: 0.5625 * 0.25, gamma 1 * 0.25.
    // Second: alpha = 0.5 0 / 0.125 0.25, P = 0.375; gamma = 0.25 / 0.375 = 2/3; each * 0.25.
    EXPECT_EQ(model.check({0, 0}), "one");
    EXPECT_EQ(capture.text(),
              "threshold = 0.03125\n"
              "prob[0] = 0.140625\n"
              "gamma = 0.25\n"
              "prob[1] = 0.09375\n"
              "gamma = 0.166667\n");
}

TEST(CheckOutput, FlushesEveryLine) {
    const GestureSet set = twoGestures();
    RecognitionModelHMM model(set.pointers(), 0.5);
    Capture capture;
    model.check({0, 0});
    EXPECT_EQ(capture.flushes(), 5);
}

TEST(CheckOutput, GesturesAreWrittenInFullWhateverWasAccepted) {
    GestureSet set;
    for (int g = 0; g < 12; ++g) fill(set.add("g", 1, 1), {1}, {1}, {g == 3 ? 1.0 : 0.5});
    RecognitionModelHMM model(set.pointers(), 1.0);
    model.recognitionHMM = nullptr;
    std::string expected = "threshold = 0\n";
    for (int g = 0; g < 12; ++g) {
        expected +=
            "prob[" + std::to_string(g) + (g == 3 ? "] = 1\n" : "] = 0.25\n") + "gamma = 1\n";
    }
    Capture capture;
    model.check({0, 0});
    EXPECT_EQ(capture.text(), expected);
}

TEST(CheckOutput, FollowsThePrecisionThatPrintLeaves) {
    const GestureSet set = twoGestures();
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    std::ostringstream expected;
    const auto reference = recogniserOf(model);
    reference.print(expected);
    reference.check({0, 0, 0}, expected);
    Capture capture;
    model.print();
    model.check({0, 0, 0});
    EXPECT_EQ(capture.text(), expected.str());
    EXPECT_EQ(std::cout.precision(), 3);
}

TEST(CheckOutput, FollowsTheStreamsFlagsAndLeavesThem) {
    const GestureSet set = twoGestures();
    RecognitionModelHMM model(set.pointers(), 0.5);
    Capture capture;
    std::cout << std::fixed << std::setprecision(5);
    model.check({0, 0});
    EXPECT_EQ(capture.text(),
              "threshold = 0.00000\nprob[0] = 0.14062\ngamma = 0.25000\n"
              "prob[1] = 0.09375\ngamma = 0.16667\n");
    EXPECT_EQ(std::cout.precision(), 5);
    EXPECT_EQ(std::cout.flags() & std::ios::floatfield, std::ios::fixed);
}

TEST(CheckOutput, LeavesTheDefaultPrecision) {
    const GestureSet set = twoGestures();
    RecognitionModelHMM model(set.pointers(), 0.5);
    Capture capture;
    model.check({0, 0});
    EXPECT_EQ(std::cout.precision(), 6);
    EXPECT_EQ(std::cout.flags(), std::ios(nullptr).flags());
}

TEST(CheckOutput, WritesSmallAndInfiniteNumbersInGeneralNotation) {
    GestureSet set;
    fill(set.add("small", 1, 2), {1}, {1}, {1e-10, 0});
    RecognitionModelHMM model;
    model.setModelTransitionProb(0.5);  // no gestures yet: infinite share
    model.gestures = set.pointers();
    {
        Capture capture;
        model.check({0, 0});
        EXPECT_EQ(capture.text(), "threshold = 0\nprob[0] = inf\ngamma = inf\n");
    }
    model.gestureTransitionProb = 0.125;
    {
        Capture capture;
        model.check({0, 0});
        EXPECT_EQ(capture.text(), "threshold = 0\nprob[0] = 1.25e-21\ngamma = 0.125\n");
    }
}

TEST(CheckOutput, AnImpossibleSequenceHasGammaZero) {
    GestureSet set;
    fill(set.add("g", 1, 2), {1}, {1}, {1, 0});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    Capture capture;
    EXPECT_EQ(model.check({0, 1}), "");
    EXPECT_EQ(capture.text(), "threshold = 0\nprob[0] = 0\ngamma = 0\n");
}

TEST(CheckOutput, GesturesBeforeOneWithTooSmallATableAreWritten) {
    enum class Missing { Pi, A, B };
    for (const Missing missing : {Missing::Pi, Missing::A, Missing::B}) {
        SCOPED_TRACE(testing::Message() << "missing table " << static_cast<int>(missing));
        GestureSet set = twoGestures();
        HMM& damaged = set.add("damaged", 2, 2);
        switch (missing) {
            case Missing::Pi: damaged.pi.clear(); break;
            case Missing::A: damaged.a.resize(1, 1); break;
            default: damaged.b.resize(1, 1); break;
        }
        RecognitionModelHMM model(set.pointers(), 0.25);
        Capture capture;
        EXPECT_THROW(model.check({0, 0}), std::out_of_range);
        EXPECT_EQ(capture.text(),
                  "threshold = 0\n"
                  "prob[0] = 0.140625\n"
                  "gamma = 0.25\n"
                  "prob[1] = 0.09375\n"
                  "gamma = 0.166667\n");
    }
}

TEST(CheckOutput, ANegativeShareWritesANegativeZero) {
    GestureSet set;
    fill(set.add("g", 1, 2), {1}, {1}, {1, 0});
    RecognitionModelHMM model(set.pointers(), 3.0);  // (1 - 3) / 1 = -2
    Capture capture;
    EXPECT_EQ(model.check({0, 1}), "");
    EXPECT_EQ(capture.text(), "threshold = 0\nprob[0] = -0\ngamma = -0\n");
}

}  // namespace
}  // namespace Vesk::Test
