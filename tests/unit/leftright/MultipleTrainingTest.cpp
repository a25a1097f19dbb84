#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace {

using Vesk::ML::LeftRightHMM;
using namespace Vesk::Test;

constexpr double inf = std::numeric_limits<double>::infinity();

void trainQuietly(LeftRightHMM& model, const Sequences& sequences, int maxIterations) {
    const Capture capture;
    model.baumWelchMultiple(sequences, maxIterations);
}

Reference::LeftRightModel oneState(std::vector<double> emissions) {
    Reference::LeftRightModel model =
        Reference::makeLeftRight(1, static_cast<int>(emissions.size()), 0);
    model.pi = {1.0};
    model.a = {{1.0}};
    model.b = {std::move(emissions)};
    return model;
}

/// A start that several iterations improve, and what it is trained on.
struct Example {
    Reference::LeftRightModel start;
    Sequences sequences;
};

Example threeStates() {
    Random random(13);
    Example example;
    example.start = randomModel(random, 3, 4, Shape::LeftRight, Parameters::Stochastic);
    example.sequences = randomSequences(random, 3, 4, 9, 4);
    return example;
}

TEST(LeftRightBaumWelchMultiple, PoolsCountsOfAllSequences) {
    // One state: every gamma is 1. Symbol 0 is shown 3 times and symbol 1 twice:
    // b = (3 / 2, 2 / 3), a = (2 + 1) / (2 + 1) = 1.
    LeftRightHMM model = libraryModel(oneState({0.5, 0.5}));
    trainQuietly(model, {{0, 0, 1}, {1, 0}}, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{3.0 / 2.0, 2.0 / 3.0}, model.b.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{1.0}, model.a.data));
}

TEST(LeftRightBaumWelchMultiple, SequencesOfOneSymbolAddToTheEmissionsOnly) {
    LeftRightHMM model = libraryModel(oneState({0.5, 0.5}));
    trainQuietly(model, {{0}, {1}, {0}, {0, 1}}, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{3.0 / 2.0, 2.0 / 3.0}, model.b.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{1.0}, model.a.data));
}

TEST(LeftRightBaumWelchMultiple, OnlySequencesOfOneSymbolZeroTheTransitions) {
    LeftRightHMM model = libraryModel(oneState({0.25, 0.25}));
    trainQuietly(model, {{0}, {1}}, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0}, model.a.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{1.0, 1.0}, model.b.data));
}

TEST(LeftRightBaumWelchMultiple, OneSequenceIsReestimatedAsTheSingleTrainerDoes) {
    // The tables differ by their scaling only, which xi and gamma divide out.
    for (std::uint64_t seed = 1; seed <= 200; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const Reference::LeftRightModel start =
            randomModel(random, 3, 4, Shape::LeftRight, Parameters::Stochastic);
        const std::vector<int> O = random.symbols(10, 4);
        LeftRightHMM single = libraryModel(start);
        LeftRightHMM multiple = libraryModel(start);
        single.baumWelch(O, 10, 1);
        trainQuietly(multiple, {O}, 1);
        if (sameModel(start, single) || sameModel(start, multiple)) continue;
        for (std::size_t n = 0; n < single.a.data.size(); ++n) {
            EXPECT_NEAR(single.a.data[n], multiple.a.data[n], 1e-12);
        }
        for (std::size_t n = 0; n < single.b.data.size(); ++n) {
            if (std::isinf(single.b.data[n])) continue;
            EXPECT_NEAR(single.b.data[n], multiple.b.data[n], 1e-9 * (1.0 + single.b.data[n]));
        }
    }
}

TEST(LeftRightBaumWelchMultiple, ARepeatedSequenceWeighsTwice) {
    LeftRightHMM model = libraryModel(oneState({0.25, 0.25, 0.25}));
    trainQuietly(model, {{0, 1}, {0, 1}, {2, 2}}, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{2.0 / 4.0, 2.0 / 4.0, 2.0 / 4.0}, model.b.data));
}

TEST(LeftRightBaumWelchMultiple, EmptySequencesAreSkipped) {
    const Example example = threeStates();
    Sequences withEmpty = {{}};
    for (const std::vector<int>& sequence : example.sequences) {
        withEmpty.push_back(sequence);
        withEmpty.emplace_back();
    }
    LeftRightHMM with = libraryModel(example.start);
    LeftRightHMM without = libraryModel(example.start);
    trainQuietly(with, withEmpty, 4);
    trainQuietly(without, example.sequences, 4);
    EXPECT_TRUE(sameModel(without, with));
    EXPECT_FALSE(sameModel(example.start, with));
}

TEST(LeftRightBaumWelchMultiple, NothingToTrainOnIsRejected) {
    const Example example = threeStates();
    for (const Sequences& nothing : {Sequences{}, Sequences{{}}, Sequences{{}, {}}}) {
        LeftRightHMM model = libraryModel(example.start);
        const Capture capture;
        model.baumWelchMultiple(nothing, -1);
        EXPECT_EQ(capture.text(),
                  "log oldProb = 0.00000\nlog newProb = 0.00000\n"
                  "------------------------------------\n");
        EXPECT_TRUE(sameModel(example.start, model));
    }
}

TEST(LeftRightBaumWelchMultiple, NoIterationLeavesTheModelUnchangedAndPrintsNothing) {
    const Example example = threeStates();
    LeftRightHMM model = libraryModel(example.start);
    const Capture capture;
    const auto precision = std::cout.precision();
    model.baumWelchMultiple(example.sequences, 0);
    EXPECT_TRUE(sameModel(example.start, model));
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(std::cout.precision(), precision);
}

TEST(LeftRightBaumWelchMultiple, StopsAtTheLimitOrAtTheFirstRejection) {
    const Example example = threeStates();
    Reference::LeftRightModel unlimited = example.start;
    const int ran =
        static_cast<int>(Reference::baumWelchMultiple(unlimited, example.sequences, 500).size());
    ASSERT_GE(ran, 3);
    ASSERT_LT(ran, 500);
    for (int limit = 0; limit <= std::min(ran + 1, 8); ++limit) {
        SCOPED_TRACE(limit);
        Reference::LeftRightModel expected = example.start;
        Reference::baumWelchMultiple(expected, example.sequences, limit);
        LeftRightHMM model = libraryModel(example.start);
        trainQuietly(model, example.sequences, limit);
        EXPECT_TRUE(sameModel(expected, model));
    }
    for (const int noLimit : {ran, ran + 1, -1, -2, -2147483647 - 1}) {
        SCOPED_TRACE(noLimit);
        LeftRightHMM model = libraryModel(example.start);
        trainQuietly(model, example.sequences, noLimit);
        EXPECT_TRUE(sameModel(unlimited, model));
    }
}

TEST(LeftRightBaumWelchMultiple, KeepsPiAndEverythingElse) {
    Example example = threeStates();
    example.start.pi = {0.5, 0.25, 0.125};
    example.start.name = "tick";
    example.start.vocabValues = {3, 4, 5, 6};
    example.start.stateSymbols = {{0}, {1}, {2}};
    example.start.vocab = {{3}, {2}, {1}, {0}};
    Reference::LeftRightModel expected = example.start;
    const auto steps = Reference::baumWelchMultiple(expected, example.sequences, 2);
    ASSERT_TRUE(steps.back().accepted);
    LeftRightHMM model = libraryModel(example.start);
    trainQuietly(model, example.sequences, 2);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.5, 0.25, 0.125}, model.pi));
    EXPECT_TRUE(sameModel(expected, model));
}

TEST(LeftRightBaumWelchMultiple, DoesNotReadTheStoredTrainingSequences) {
    Sequences stored = {{1, 1, 1}};
    LeftRightHMM model(1, 2, stored, 0);
    model.pi = {1.0};
    model.a.data = {1.0};
    model.b.data = {0.5, 0.5};
    trainQuietly(model, {{0, 0, 1}}, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{2.0, 0.5}, model.b.data));
    EXPECT_EQ(model.trainingSequences, stored);
}

TEST(LeftRightBaumWelchMultiple, ASymbolAtEveryTimeGivesAnInfiniteEmission) {
    // b(1) = 2 / 0; the log likelihood of one symbol under it is infinite and gains on any other.
    LeftRightHMM model = libraryModel(oneState({0.5, 0.5}));
    trainQuietly(model, {{1}, {1}}, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0, inf}, model.b.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0}, model.a.data));
}

TEST(LeftRightBaumWelchMultiple, AdoptedTablesHaveTheModelsShape) {
    // Three states' tables of which two states are used.
    Reference::LeftRightModel reference = Reference::makeLeftRight(2, 2, 1);
    reference.pi = {1.0, 0.0, 9.0};
    reference.a = {{0.5, 0.5, 9.0}, {0.25, 0.75, 9.0}, {9.0, 9.0, 9.0}};
    reference.b = {{0.75, 0.25, 9.0}, {0.25, 0.75, 9.0}, {9.0, 9.0, 9.0}};
    LeftRightHMM model = libraryModel(reference);
    const Sequences sequences = {{0, 1, 1, 0, 1}, {0, 0, 1}};
    ASSERT_TRUE(Reference::baumWelchMultiple(reference, sequences, 1).back().accepted);
    trainQuietly(model, sequences, 1);
    EXPECT_EQ(model.a.cols, 2);
    EXPECT_EQ(model.b.rows, 2);
    EXPECT_TRUE(sameModel(reference, model));
}

// Convergence

/// One state, O = 0 1, both emissions p: the candidate has emissions 1 / 1 and so a log
/// likelihood of 0; the gain is -2 ln p.
Reference::LeftRightModel withGain(double p, float threshold) {
    Reference::LeftRightModel model = oneState({p, p});
    model.convergenceThreshold = threshold;
    return model;
}

/// The p next to exp(-0.5) whose logarithm is exactly -0.5.
double exactRootOfE() {
    double p = std::exp(-0.5);
    for (int n = 0; n < 4; ++n) p = std::nextafter(p, 0.0);
    for (int n = 0; n < 9 && std::log(p) != -0.5; ++n) p = std::nextafter(p, 1.0);
    return p;
}

bool accepts(const Reference::LeftRightModel& start) {
    LeftRightHMM model = libraryModel(start);
    trainQuietly(model, {{0, 1}}, 1);
    if (sameModel(start, model)) return false;
    EXPECT_TRUE(bitEqual(std::vector<double>{1.0, 1.0}, model.b.data));
    return true;
}

TEST(LeftRightConvergence, GainEqualToTheThresholdIsAccepted) {
    const double p = exactRootOfE();
    ASSERT_EQ(std::log(p), -0.5);
    EXPECT_TRUE(accepts(withGain(p, 1.0f)));
    EXPECT_FALSE(accepts(withGain(p, std::nextafter(1.0f, 2.0f))));
    EXPECT_TRUE(accepts(withGain(p, std::nextafter(1.0f, 0.0f))));
}

TEST(LeftRightConvergence, SlightlySmallerGainIsRejected) {
    double p = exactRootOfE();
    while (std::log(p) == -0.5) p = std::nextafter(p, 1.0);
    ASSERT_LT(-2.0 * std::log(p), 1.0);
    EXPECT_FALSE(accepts(withGain(p, 1.0f)));
}

TEST(LeftRightConvergence, GainIsTheDifferenceAsRounded) {
    // O = 0 0 1: the candidate has emissions 2 and 1 / 2, so a log likelihood of ln 2. The old one
    // is ln p + ln p + ln q. Where the difference lies just below 1 it may be rounded to 1, though
    // adding 1 to the old one gives more than ln 2.
    const double newLog = std::log(2.0) + std::log(2.0) + std::log(0.5);
    const double middle = std::exp((newLog - 1.0) / 3.0);
    double p = middle;
    double q = middle;
    const auto isExample = [&] {
        const double oldLog = std::log(p) + std::log(p) + std::log(q);
        return newLog - oldLog >= 1.0 && newLog < oldLog + 1.0;
    };
    for (int n = 0; n < 10000 && !isExample(); ++n) {
        p = middle - (n / 100) * 0x1p-53;
        q = middle + (n % 100 + n / 100) * 0x1p-53;
    }
    ASSERT_TRUE(isExample());
    Reference::LeftRightModel start = oneState({p, q});
    start.convergenceThreshold = 1.0f;
    LeftRightHMM model = libraryModel(start);
    trainQuietly(model, {{0, 0, 1}}, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{2.0, 0.5}, model.b.data));
}

TEST(LeftRightConvergence, DefaultThresholdIsComparedAsTheDoubleOfTheFloat) {
    // The float nearest to 0.001 is 0.001000000047...; a gain between the two is too small.
    const double between = std::exp(-0.00100000002 / 2.0);
    const double gain = -(std::log(between) + std::log(between));
    ASSERT_GT(gain, 0.001);
    ASSERT_LT(gain, static_cast<double>(0.001f));
    EXPECT_FALSE(accepts(withGain(between, 0.001f)));
    const double enough = std::exp(-0.00100000006 / 2.0);
    ASSERT_GT(-(std::log(enough) + std::log(enough)), static_cast<double>(0.001f));
    EXPECT_TRUE(accepts(withGain(enough, 0.001f)));
}

TEST(LeftRightConvergence, ThresholdZeroAcceptsAnEquallyLikelyCandidate) {
    // exp(ln 4 + ln 0.25) = 1: the candidate (1, 1) is exactly as likely.
    Reference::LeftRightModel start = oneState({4.0, 0.25});
    start.convergenceThreshold = 0.0f;
    ASSERT_EQ(std::log(4.0) + std::log(0.25), 0.0);
    EXPECT_TRUE(accepts(start));
    start.convergenceThreshold = std::numeric_limits<float>::denorm_min();
    EXPECT_FALSE(accepts(start));
}

TEST(LeftRightConvergence, NegativeThresholdAcceptsALoss) {
    Reference::LeftRightModel start = oneState({4.0, 4.0});
    EXPECT_FALSE(accepts(start));
    start.convergenceThreshold = -3.0f;  // the loss is 2 ln 4 = 2.77
    EXPECT_TRUE(accepts(start));
}

TEST(LeftRightConvergence, AnImpossibleSequenceEndsTheTraining) {
    // Its scale is 0, its posteriors 0 times infinity: the candidate is not a number.
    const Reference::LeftRightModel start = oneState({0.0, 0.5});
    LeftRightHMM model = libraryModel(start);
    const Capture capture;
    model.baumWelchMultiple({{1, 1}, {0, 1}}, -1);
    EXPECT_TRUE(sameModel(start, model));
    EXPECT_EQ(withoutNanSigns(capture.text()),
              "log oldProb = -inf\nlog newProb = nan\n"
              "------------------------------------\n");
}

TEST(LeftRightConvergence, AnInfiniteEmissionBeforeTheEndIsNotANumberAndRejected) {
    // The candidate (0, 3 / 0) scales infinity by infinity at the first step.
    const Reference::LeftRightModel start = oneState({0.5, 0.5});
    LeftRightHMM model = libraryModel(start);
    const Capture capture;
    model.baumWelchMultiple({{1, 1, 1}}, -1);
    EXPECT_TRUE(sameModel(start, model));
    EXPECT_EQ(withoutNanSigns(capture.text()),
              "log oldProb = -2.07944\nlog newProb = nan\n"
              "------------------------------------\n");
}

TEST(LeftRightConvergence, AnInfiniteLogLikelihoodIsAcceptedAndItsSuccessorRejected) {
    LeftRightHMM model = libraryModel(oneState({0.5, 0.5}));
    const Capture capture;
    model.baumWelchMultiple({{1}}, -1);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0, inf}, model.b.data));
    EXPECT_EQ(withoutNanSigns(capture.text()),
              "log oldProb = -0.69315\nlog newProb = inf\n"
              "------------------------------------\n"
              "log oldProb = inf\nlog newProb = nan\n"
              "------------------------------------\n");
}

TEST(LeftRightConvergence, InfiniteGainReachesAnInfiniteThreshold) {
    Reference::LeftRightModel start = oneState({0.5, 0.5});
    start.convergenceThreshold = std::numeric_limits<float>::infinity();
    LeftRightHMM model = libraryModel(start);
    trainQuietly(model, {{1}}, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0, inf}, model.b.data));
}

TEST(LeftRightConvergence, NotANumberAsThresholdRejects) {
    Reference::LeftRightModel start = oneState({0.5, 0.5});
    start.convergenceThreshold = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(accepts(start));
}

TEST(LeftRightConvergence, InfiniteThresholdRejectsAnyFiniteGain) {
    Reference::LeftRightModel start = oneState({0.5, 0.5});
    start.convergenceThreshold = std::numeric_limits<float>::infinity();
    EXPECT_FALSE(accepts(start));
}

}  // namespace
