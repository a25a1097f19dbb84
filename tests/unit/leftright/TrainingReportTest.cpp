#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <ios>
#include <iostream>
#include <streambuf>
#include <vector>

namespace {

using Vesk::ML::LeftRightHMM;
using Vesk::ML::TrainingStep;
using namespace Vesk::Test;

/// A start that several iterations improve, what it is trained on, and what comes of it.
struct Example {
    Reference::LeftRightModel start;
    Sequences sequences;
    std::vector<Reference::Step> steps;  ///< the last one rejected
};

Example threeStates() {
    Random random(13);
    Example example;
    example.start = randomModel(random, 3, 4, Shape::LeftRight, Parameters::Stochastic);
    example.sequences = randomSequences(random, 3, 4, 9, 4);
    Reference::LeftRightModel trained = example.start;
    example.steps = Reference::baumWelchMultiple(trained, example.sequences, 500);
    EXPECT_GE(example.steps.size(), 3U);
    EXPECT_LT(example.steps.size(), 500U);
    return example;
}

/// One state whose single iteration over 0 0 1 goes from 3 ln 0.5 to ln 2.
LeftRightHMM oneState() {
    LeftRightHMM model(1, 2, 0);
    model.pi = {1.0};
    model.a.data = {1.0};
    model.b.data = {0.5, 0.5};
    return model;
}

// Printed lines

TEST(LeftRightTrainingReport, OneIterationIsOnePairOfLogLinesAndOneLineOfHyphens) {
    LeftRightHMM model = oneState();
    const Capture capture;
    model.baumWelchMultiple({{0, 0, 1}}, 1);
    EXPECT_EQ(capture.text(),
              "log oldProb = -2.07944\nlog newProb = 0.69315\n"
              "------------------------------------\n");
}

TEST(LeftRightTrainingReport, ARejectedIterationIsReportedLikeAnAcceptedOne) {
    LeftRightHMM model = oneState();
    const Capture capture;
    model.baumWelchMultiple({{0, 0, 1}}, -1);
    EXPECT_EQ(capture.text(),
              "log oldProb = -2.07944\nlog newProb = 0.69315\n"
              "------------------------------------\n"
              "log oldProb = 0.69315\nlog newProb = 0.69315\n"
              "------------------------------------\n");
}

TEST(LeftRightTrainingReport, HoldsEveryIterationOfALongTraining) {
    const Example example = threeStates();
    LeftRightHMM model = libraryModel(example.start);
    const Capture capture;
    model.baumWelchMultiple(example.sequences, -1);
    EXPECT_EQ(withoutNanSigns(capture.text()), withoutNanSigns(Reference::report(example.steps)));
}

TEST(LeftRightTrainingReport, FlushesEveryLine) {
    LeftRightHMM model = oneState();
    const Capture capture;
    model.baumWelchMultiple({{0, 0, 1}}, -1);
    EXPECT_EQ(capture.flushes(), 6);
}

TEST(LeftRightTrainingReport, LeavesThePrecisionAtFiveAndTheNotationGeneral) {
    LeftRightHMM model = oneState();
    const Capture capture;
    std::cout.precision(9);
    model.baumWelchMultiple({{0, 0, 1}}, 1);
    EXPECT_EQ(std::cout.precision(), 5);
    EXPECT_EQ(std::cout.flags() & std::ios::floatfield, std::ios::fmtflags());
    std::cout << 1.0 / 3.0;
    EXPECT_EQ(capture.text().substr(capture.text().rfind('\n') + 1), "0.33333");
}

TEST(LeftRightTrainingReport, IsInFixedNotationWhateverTheStreamHadBefore) {
    for (const auto before : {std::ios::fixed, std::ios::scientific, std::ios::fmtflags()}) {
        LeftRightHMM model = oneState();
        const Capture capture;
        std::cout.setf(before, std::ios::floatfield);
        model.baumWelchMultiple({{0, 0, 1}}, 1);
        EXPECT_EQ(capture.text(),
                  "log oldProb = -2.07944\nlog newProb = 0.69315\n"
                  "------------------------------------\n");
        EXPECT_EQ(std::cout.flags() & std::ios::floatfield, std::ios::fmtflags());
        EXPECT_EQ(std::cout.precision(), 5);
    }
}

TEST(LeftRightTrainingReport, LeavesOtherFormattingAlone) {
    LeftRightHMM model = oneState();
    const Capture capture;
    std::cout.setf(std::ios::showpos | std::ios::boolalpha);
    std::cout.setf(std::ios::hex, std::ios::basefield);
    const auto flags = std::cout.flags();
    model.baumWelchMultiple({{0, 0, 1}}, 1);
    EXPECT_EQ(std::cout.flags(), flags);
}

/// Looks at a model's emissions whenever a line is flushed.
class Watching : public std::streambuf {
public:
    explicit Watching(const LeftRightHMM& watched) : model(watched) {}
    std::vector<std::vector<double>> seen;

protected:
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
    int sync() override {
        seen.push_back(model.b.data);
        return 0;
    }

private:
    const LeftRightHMM& model;
};

TEST(LeftRightTrainingReport, LogLinesComeBeforeTheCandidateIsAdoptedAndHyphensAfter) {
    LeftRightHMM model = oneState();
    Watching watching(model);
    {
        const Capture restoresTheFormatting;
        std::streambuf* const captured = std::cout.rdbuf(&watching);
        model.baumWelchMultiple({{0, 0, 1}}, 1);
        std::cout.rdbuf(captured);
    }
    const std::vector<double> before = {0.5, 0.5};
    const std::vector<double> after = {2.0, 0.5};
    EXPECT_EQ(watching.seen, (std::vector<std::vector<double>>{before, before, after}));
}

// The silent twin

TEST(LeftRightTrainMultiple, TrainsAsTheFixedOperationAndWritesNothing) {
    const Example example = threeStates();
    for (const int limit : {0, 1, 2, 5, -1}) {
        SCOPED_TRACE(limit);
        LeftRightHMM loud = libraryModel(example.start);
        LeftRightHMM silent = libraryModel(example.start);
        {
            const Capture capture;
            loud.baumWelchMultiple(example.sequences, limit);
        }
        const Capture capture;
        const auto flags = std::cout.flags();
        const auto precision = std::cout.precision();
        silent.trainMultiple(example.sequences, limit);
        EXPECT_EQ(capture.text(), "");
        EXPECT_EQ(capture.flushes(), 0);
        EXPECT_EQ(std::cout.flags(), flags);
        EXPECT_EQ(std::cout.precision(), precision);
        EXPECT_TRUE(sameModel(loud, silent));
    }
}

TEST(LeftRightTrainMultiple, TellsTheObserverOfEveryIteration) {
    const Example example = threeStates();
    LeftRightHMM model = libraryModel(example.start);
    std::vector<TrainingStep> told;
    model.trainMultiple(example.sequences, -1, [&](const TrainingStep& step) {
        told.push_back(step);
        return true;
    });
    ASSERT_EQ(told.size(), example.steps.size());
    for (std::size_t n = 0; n < told.size(); ++n) {
        SCOPED_TRACE(n);
        EXPECT_EQ(told[n].iteration, static_cast<int>(n));
        EXPECT_TRUE(bitEqual(example.steps[n].oldLog, told[n].oldLogLikelihood));
        EXPECT_TRUE(bitEqual(example.steps[n].newLog, told[n].newLogLikelihood));
        EXPECT_EQ(told[n].accepted, example.steps[n].accepted);
    }
    EXPECT_FALSE(told.back().accepted);
}

TEST(LeftRightTrainMultiple, TellsTheObserverAfterTheCandidateWasAdoptedOrDropped) {
    const Example example = threeStates();
    LeftRightHMM model = libraryModel(example.start);
    std::size_t n = 0;
    model.trainMultiple(example.sequences, -1, [&](const TrainingStep&) {
        EXPECT_TRUE(sameModel(example.steps.at(n).after, model)) << "iteration " << n;
        ++n;
        return true;
    });
    EXPECT_EQ(n, example.steps.size());
}

TEST(LeftRightTrainMultiple, AnObserverThatSaysNoEndsTheTrainingAndKeepsWhatWasAdopted) {
    const Example example = threeStates();
    for (std::size_t last = 0; last < example.steps.size(); ++last) {
        SCOPED_TRACE(last);
        LeftRightHMM model = libraryModel(example.start);
        std::size_t n = 0;
        model.trainMultiple(example.sequences, -1,
                            [&](const TrainingStep&) { return n++ != last; });
        EXPECT_EQ(n, last + 1);
        EXPECT_TRUE(sameModel(example.steps[last].after, model));
    }
}

TEST(LeftRightTrainMultiple, NoIterationTellsNobody) {
    const Example example = threeStates();
    LeftRightHMM model = libraryModel(example.start);
    bool told = false;
    model.trainMultiple(example.sequences, 0, [&](const TrainingStep&) { return told = true; });
    EXPECT_FALSE(told);
    EXPECT_TRUE(sameModel(example.start, model));
}

}  // namespace
