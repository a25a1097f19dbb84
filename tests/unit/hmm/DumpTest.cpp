#include <support/Capture.h>
#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <limits>
#include <string>

namespace {

using Vesk::ML::HMM;
using Vesk::Test::Capture;
using Vesk::Test::matrixOf;

HMM gesture() {
    HMM model(2, 3);
    model.name = "gesture";
    model.pi = {1, 0};
    model.a = matrixOf({{1.0 / 3, 2.0 / 3}, {0, 1}});
    model.b = matrixOf({{0.5, 0.25, 0.25}, {0.00001, 0.99999, 0}});
    return model;
}

const std::string gestureDump =
    "name: gesture\n"
    "numStates: 2\n"
    "vocabSize: 3\n"
    "Initial probs pi:\n"
    "1 0 \n"
    "\n"
    "Transition probs a:\n"
    "0.333 0.667 \n"
    "0 1 \n"
    "\n"
    "Emission probs b:\n"
    "0.5 0.25 0.25 \n"
    "\n"
    "1e-05 1 0 \n"
    "\n";

TEST(HmmDump, ShowsNameSizesAndProbabilities) {
    const Capture capture;
    gesture().print();
    EXPECT_EQ(capture.text(), gestureDump);
}

TEST(HmmDump, SmallestModel) {
    HMM model(1, 1);
    model.name = "one";
    model.pi = {1};
    model.a = matrixOf({{0.5}});
    model.b = matrixOf({{0.125}});
    const Capture capture;
    model.print();
    EXPECT_EQ(capture.text(),
              "name: one\nnumStates: 1\nvocabSize: 1\n"
              "Initial probs pi:\n1 \n\n"
              "Transition probs a:\n0.5 \n\n"
              "Emission probs b:\n0.125 \n\n");
}

TEST(HmmDump, InitialProbabilitiesStandOnALineThatEndsWithASpace) {
    const Capture capture;
    gesture().print();
    EXPECT_NE(capture.text().find("\nInitial probs pi:\n1 0 \n"), std::string::npos);
}

TEST(HmmDump, EveryLineEndFlushes) {
    const Capture capture;
    gesture().print();
    const std::string text = capture.text();
    EXPECT_EQ(capture.flushes(), std::count(text.begin(), text.end(), '\n'));
    EXPECT_EQ(capture.flushes(), 15);
}

TEST(HmmDump, LeavesPrecisionThree) {
    const Capture capture;
    EXPECT_EQ(std::cout.precision(), 6);
    gesture().print();
    EXPECT_EQ(std::cout.precision(), 3);
    std::cout << 1.0 / 7;
    EXPECT_EQ(capture.text(), gestureDump + "0.143");
}

TEST(HmmDump, OverridesThePrecisionItFinds) {
    const Capture capture;
    std::cout.precision(17);
    gesture().print();
    EXPECT_EQ(capture.text(), gestureDump);
    EXPECT_EQ(std::cout.precision(), 3);
}

TEST(HmmDump, LeavesAllOtherFormatting) {
    const Capture capture;
    const std::ios::fmtflags flags = std::cout.flags();
    const char fill = std::cout.fill();
    gesture().print();
    EXPECT_EQ(std::cout.flags(), flags);
    EXPECT_EQ(std::cout.fill(), fill);
    EXPECT_EQ(std::cout.width(), 0);
    EXPECT_TRUE(std::cout.good());
}

TEST(HmmDump, NumbersHaveThreeSignificantDigits) {
    HMM model(1, 8);
    model.pi = {0.9999};
    model.a = matrixOf({{-0.0}});
    const double infinity = std::numeric_limits<double>::infinity();
    model.b = matrixOf({{1234, 999, 0.00012345, 1e100, infinity, -infinity,
                         std::numeric_limits<double>::quiet_NaN(), -2.5}});
    const Capture capture;
    model.print();
    EXPECT_EQ(capture.text(),
              "name: \nnumStates: 1\nvocabSize: 8\n"
              "Initial probs pi:\n1 \n\n"
              "Transition probs a:\n-0 \n\n"
              "Emission probs b:\n1.23e+03 999 0.000123 1e+100 inf -inf nan -2.5 \n\n");
}

TEST(HmmDump, NameIsPrintedAsItIsStored) {
    HMM model = gesture();
    model.name = std::string("two\0 words", 10);
    const Capture capture;
    model.print();
    EXPECT_EQ(capture.text(), "name: " + model.name + gestureDump.substr(13));
}

TEST(HmmDump, ShowsNeitherDimensionNorVocabulary) {
    HMM model(2, 3, 2);
    const HMM plain = gesture();
    model.name = plain.name;
    model.pi = plain.pi;
    model.a = plain.a;
    model.b = plain.b;
    model.vocab = matrixOf({{41, 42}, {43, 44}, {45, 46}});
    const Capture capture;
    model.print();
    EXPECT_EQ(capture.text(), gestureDump);
}

TEST(HmmDump, TablesAreReadByTheirOwnColumnCounts) {
    HMM model = gesture();
    model.pi.push_back(99);
    model.a = matrixOf({{1.0 / 3, 2.0 / 3, 99}, {0, 1, 99}});
    model.b = matrixOf({{0.5, 0.25, 0.25, 99}, {0.00001, 0.99999, 0, 99}});
    const Capture capture;
    model.print();
    const std::string text = capture.text();
    EXPECT_EQ(text.substr(text.find("Transition")),
              gestureDump.substr(gestureDump.find("Transition")));
}

TEST(HmmDump, ChangesNothingInTheModel) {
    HMM model = gesture();
    const Capture capture;
    model.print();
    EXPECT_TRUE(Vesk::Test::modelsEqual(gesture(), model));
    EXPECT_EQ(capture.text(), gestureDump);
}

}  // namespace
