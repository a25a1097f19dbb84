#include "Gestures.h"
#include "TurnableModels.h"

#include <support/BitEqual.h>
#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/training/internal/Calibration.h>
#include <veskkit/training/internal/TrainedSet.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

namespace Vesk::Kit::internal {
namespace {

using Vesk::Test::evenDirections;
using Vesk::Test::turnableModels;

/// One gesture a list of users: a sample for every entry.
std::vector<GestureSamples> samplesOf(const std::vector<std::vector<std::string>>& users,
                                      std::vector<Trace>& storage) {
    std::size_t count = 0;
    for (const auto& list : users) count += list.size();
    storage.reserve(count);
    std::vector<GestureSamples> gestures;
    for (std::size_t g = 0; g < users.size(); ++g) {
        const std::string name = std::string("g").append(std::to_string(g));
        GestureSamples gesture{name, name, {}};
        for (const std::string& user : users[g]) {
            storage.emplace_back();
            storage.back().user = user;
            gesture.samples.push_back({&storage.back(), {0, 1}});
        }
        gesture.drawn = users[g].size();
        gestures.push_back(gesture);
    }
    return gestures;
}

std::set<std::string> usersOf(const std::vector<GestureSamples>& gestures) {
    std::set<std::string> users;
    for (const GestureSamples& gesture : gestures) {
        for (const Sample& sample : gesture.samples) users.insert(sample.trace->user);
    }
    return users;
}

RecognitionModel composed(const std::vector<GestureModels>& gestures,
                          const std::vector<double>& codebook, double ratio) {
    return composeRecognitionModel(gestures, codebook, {ratio}, 0, "all");
}

TEST(CalibrationTest, LeavesEveryUserOutOnce) {
    std::vector<Trace> storage;
    const std::vector<CalibrationRun> runs =
        runsByUser(samplesOf({{"a", "b", "c", "a"}, {"c", "b"}}, storage));
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(usersOf(runs[0].test), (std::set<std::string>{"a"}));
    EXPECT_EQ(usersOf(runs[0].training), (std::set<std::string>{"b", "c"}));
    EXPECT_EQ(usersOf(runs[2].test), (std::set<std::string>{"c"}));
    // Nobody but c and b drew g1.
    EXPECT_EQ(runs[0].test.size(), 1u);
    EXPECT_EQ(runs[0].test[0].samples.size(), 2u);
    EXPECT_EQ(runs[0].training[1].gesture, "g1");
}

TEST(CalibrationTest, AGestureOfOneUserIsNotTrainedWithoutThem) {
    std::vector<Trace> storage;
    const std::vector<CalibrationRun> runs =
        runsByUser(samplesOf({{"a", "b", "c"}, {"b"}}, storage));
    ASSERT_EQ(runs.size(), 3u);
    EXPECT_EQ(runs[1].training.size(), 1u);
    EXPECT_EQ(runs[1].test.size(), 2u);
}

TEST(CalibrationTest, NeedsThreeKnownUsers) {
    std::vector<Trace> storage;
    EXPECT_TRUE(runsByUser(samplesOf({{"a", "b", "a"}}, storage)).empty());
    std::vector<Trace> more;
    EXPECT_TRUE(runsByUser(samplesOf({{"a", "b", "c", ""}}, more)).empty());
    EXPECT_TRUE(runsByUser({}).empty());
}

TEST(CalibrationTest, ManyUsersAreLeftOutInSixGroups) {
    std::vector<std::string> users;
    for (int u = 0; u < 20; ++u) users.push_back(std::string("u").append(std::to_string(u)));
    std::vector<Trace> storage;
    const std::vector<CalibrationRun> runs = runsByUser(samplesOf({users}, storage));
    ASSERT_EQ(runs.size(), 6u);
    std::set<std::string> tested;
    for (const CalibrationRun& run : runs) {
        const std::set<std::string> left = usersOf(run.test);
        EXPECT_GE(left.size(), 3u);
        EXPECT_LE(left.size(), 4u);
        for (const std::string& user : left) {
            EXPECT_TRUE(tested.insert(user).second) << user;
            EXPECT_EQ(usersOf(run.training).count(user), 0u);
        }
    }
    EXPECT_EQ(tested.size(), 20u);
}

TEST(CalibrationTest, LeavesEverySampleOutOnce) {
    std::vector<Trace> storage;
    const std::vector<std::string> six(6, "a");
    const std::vector<CalibrationRun> runs = runsBySample(samplesOf({six, {"a"}}, storage));
    ASSERT_EQ(runs.size(), 4u);
    std::set<const Trace*> tested;
    for (const CalibrationRun& run : runs) {
        for (const GestureSamples& gesture : run.test) {
            for (const Sample& sample : gesture.samples) {
                EXPECT_TRUE(tested.insert(sample.trace).second);
            }
        }
    }
    EXPECT_EQ(tested.size(), 7u);
    EXPECT_EQ(runs[0].test[0].samples.size(), 2u);  // the first and the fifth
    EXPECT_EQ(runs[0].training[0].samples.size(), 4u);
    EXPECT_EQ(runs[0].training.size(), 1u) << "the other gesture has one sample only";
    EXPECT_EQ(runs[1].training.size(), 2u);
}

TEST(CalibrationTest, LeavesOutInAsManyRunsAsThereAreSamples) {
    std::vector<Trace> storage;
    EXPECT_EQ(runsBySample(samplesOf({{"a", "a"}}, storage)).size(), 2u);
    std::vector<Trace> more;
    EXPECT_TRUE(runsBySample(samplesOf({{"a"}, {"a"}}, more)).empty());
    EXPECT_TRUE(runsBySample({}).empty());
}

// R = p K / (1 - p), so p = R / (R + K).
TEST(CalibrationTest, RatioAndTransitionProbabilityAreTwoViews) {
    EXPECT_DOUBLE_EQ(transitionProbability(3.0, 1), 0.75);
    EXPECT_DOUBLE_EQ(acceptanceRatio(0.75, 1), 3.0);
    EXPECT_DOUBLE_EQ(transitionProbability(1e4, 64), 1e4 / 10064);
    EXPECT_NEAR(acceptanceRatio(transitionProbability(1e4, 64), 64), 1e4, 1e-6);
}

TEST(CalibrationTest, TheTransitionProbabilityNeverRoundsToOne) {
    EXPECT_LT(storedValue(transitionProbability(1e300, 1)), 1.0);
    EXPECT_LT(storedValue(transitionProbability(1e300, 1000)), 1.0);
}

TEST(CalibrationTest, StoredValuesHaveSixDigits) {
    EXPECT_EQ(storedValue(1.0 / 3), 0.333333);
    EXPECT_EQ(storedValue(51.428569793701171875), 51.4286);
    EXPECT_EQ(storedValue(1e-300 / 3), 3.33333e-301);
    EXPECT_EQ(storedValue(348.75), 348.75);
}

/// Two gestures of three users, each a straight line drawn the same way every time.
std::vector<GestureSamples> straightSamples(std::vector<Trace>& storage) {
    std::vector<GestureSamples> gestures = samplesOf({{"a", "b", "c"}, {"a", "b", "c"}}, storage);
    for (Trace& trace : storage) trace.points = {{0, 0}, {1, 0}};
    for (Sample& sample : gestures[0].samples) sample.symbols.assign(12, 0);
    for (Sample& sample : gestures[1].samples) sample.symbols.assign(12, 2);
    return gestures;
}

// All traces have the same ratio, so the share that may be given up does not matter, and half of
// the ratio is asked for.
TEST(CalibrationTest, EqualTracesClearTheRatioByHalf) {
    std::vector<Trace> storage;
    const std::vector<GestureSamples> gestures = straightSamples(storage);
    const std::vector<CalibrationRun> runs = runsByUser(gestures);
    TrainingOptions options;
    options.states = 4;
    options.thresholdStates = 3;
    options.iterations = 2;
    options.discrimination = 0;
    const std::vector<double> codebook{0, 90, 180, 270};
    int trained = 0;
    const auto count = [&] { ++trained; };
    options.falseRejection = 0.0;
    const double least = calibrateRatios(runs, codebook, {0}, options, count).all;
    options.falseRejection = 0.5;
    const double most = calibrateRatios(runs, codebook, {0}, options, count).all;
    EXPECT_TRUE(Vesk::Test::bitEqual(least, most));
    EXPECT_EQ(trained, 2 * 3 * 2);

    const std::vector<GestureModels> trainedOnes =
        trainGestures(runs[0].training, codebook, options, count);
    RecognitionModel model = composed(trainedOnes, codebook, 1.0);
    const double asked = acceptanceRatio(model.get().modelTransitionProb, 2);
    const GestureRecognizer recognizer(std::move(model));
    const double margin = recognizer.recognizeSymbols(gestures[0].samples[0].symbols).margin;
    EXPECT_NEAR(least, asked * std::exp(margin) / 2, 1e-9 * least);
}

const std::vector<double> quarters{0, 90, 180, 270};

TrainingOptions smallOptions() {
    TrainingOptions options;
    options.states = 4;
    options.thresholdStates = 3;
    return options;
}

std::vector<GestureModels> smallModels(const std::vector<GestureSamples>& gestures) {
    return trainGestures(gestures, quarters, smallOptions(), [] {});
}

TEST(CalibrationTest, TheComposedModelHasTheRatioButForItsSixDigits) {
    std::vector<Trace> storage;
    const std::vector<GestureModels> models = smallModels(straightSamples(storage));
    const auto ratioOf = [&](double asked) {
        const RecognitionModel model = composed(models, quarters, asked);
        return acceptanceRatio(model.get().modelTransitionProb, 2);
    };
    EXPECT_NEAR(ratioOf(50.0), 50.0, 0.01);
    EXPECT_NEAR(ratioOf(1e3), 1e3, 1.0);
}

TEST(CalibrationTest, NoRunsNoRatio) {
    const CalibratedRatios none = calibrateRatios({}, {0, 180}, {3}, TrainingOptions(), [] {});
    EXPECT_EQ(none.all, 0.0);
    EXPECT_EQ(none.turns, 3);
    EXPECT_TRUE(none.own.empty());
}

TEST(CalibrationTest, TurnedCopiesAreTriedOnUsersLeftOutOfManyTraces) {
    std::vector<Trace> storage;
    const std::vector<std::string> twenty(20, "a");
    const std::vector<std::string> fewer(19, "a");
    const std::vector<GestureSamples> many = samplesOf({twenty, fewer}, storage);
    std::vector<Trace> others;
    const std::vector<GestureSamples> few = samplesOf({fewer, fewer}, others);
    TrainingOptions options;
    EXPECT_EQ(turnsToTry(many, options, true), (std::vector<int>{0, 2}));
    EXPECT_EQ(turnsToTry(many, options, false), (std::vector<int>{0}));
    EXPECT_EQ(turnsToTry(few, options, true), (std::vector<int>{0}));
    options.turns = 3;
    EXPECT_EQ(turnsToTry(many, options, true), (std::vector<int>{3}));
    EXPECT_EQ(turnsToTry(many, options, false), (std::vector<int>{3}));
    EXPECT_EQ(turnsToTry(few, options, true), (std::vector<int>{0}));
}

// Each run has 14 of 21 traces: what is tried is what the model of all would have.
TEST(CalibrationTest, RunsTurnTheGesturesThatTheWholeTurns) {
    std::vector<Trace> storage;
    std::vector<std::string> users;
    for (int n = 0; n < 21; ++n) users.push_back(std::string(1, static_cast<char>('a' + n % 3)));
    std::vector<GestureSamples> gestures = samplesOf({users, {"a", "b", "c"}}, storage);
    for (Trace& trace : storage) trace.points = {{0, 0}, {1, 0}};
    for (const CalibrationRun& run : runsByUser(gestures)) {
        ASSERT_EQ(run.training[0].samples.size(), 14u);
        EXPECT_TRUE(trainGesture(run.training[0], quarters, smallOptions()).mayBeTurned);
        EXPECT_FALSE(trainGesture(run.training[1], quarters, smallOptions()).mayBeTurned);
    }
}

// Traces in direction 1 are those of g1, unless g0 may be turned by 45 degrees.
TEST(CalibrationTest, TracesThatCopiesGainAndLoseAreCounted) {
    const std::vector<int> symbols(12, 1);
    std::vector<GestureSamples> test{{"g0", "g0", {}}, {"g1", "g1", {}}};
    for (int n = 0; n < 4; ++n) test[0].samples.push_back({nullptr, symbols});
    for (int n = 0; n < 2; ++n) test[1].samples.push_back({nullptr, symbols});
    const CalibrationAnswers both =
        answersOf(turnableModels(), test, evenDirections(16), {0, 2}, 1);
    EXPECT_EQ(both.gained, 4u);
    EXPECT_EQ(both.lost, 2u);
    ASSERT_EQ(both.ratios.size(), 2u);
    ASSERT_EQ(both.ratios[0].size(), 1u);
    EXPECT_EQ(both.ratios[0].at("g1").size(), 2u);
    ASSERT_EQ(both.ratios[1].size(), 1u);
    EXPECT_EQ(both.ratios[1].at("g0").size(), 4u);
    EXPECT_EQ(both.leads[1].at("g0").size(), 4u);
    EXPECT_NEAR(both.leads[0].at("g1").front(), 12 * std::log(0.1 / 0.05), 1e-9);
    EXPECT_NEAR(both.leads[1].at("g0").front(), 12 * std::log(0.25 / 0.1) - 2 * std::log(100.0),
                1e-4);

    const CalibrationAnswers plain = answersOf(turnableModels(), test, evenDirections(16), {0}, 1);
    EXPECT_EQ(plain.gained, 0u);
    EXPECT_EQ(plain.lost, 0u);
    EXPECT_EQ(plain.ratios[0], both.ratios[0]);

    const CalibrationAnswers everySecond =
        answersOf(turnableModels(), test, evenDirections(16), {0, 2}, 2);
    EXPECT_EQ(everySecond.gained, 2u);
    EXPECT_EQ(everySecond.lost, 1u);
}

// `check` compares with what a file holds; the rest decides nothing between gestures.
TEST(CalibrationTest, WhatOfARatioIsNotStoredIsInEveryPi) {
    std::vector<Trace> storage;
    const std::vector<GestureModels> models = smallModels(straightSamples(storage));
    const RecognitionModel plain = composed(models, quarters, 1e5);
    const RecognitionModel strict = composed(models, quarters, 1e7);
    EXPECT_EQ(strict.get().modelTransitionProb, plain.get().modelTransitionProb);
    for (std::size_t g = 0; g < models.size(); ++g) {
        EXPECT_EQ(plain.gestures()[g]->pi[0], 1.0);
        EXPECT_EQ(strict.gestures()[g]->pi[0], 0.01);
        EXPECT_EQ(strict.gestures()[g]->b.data, plain.gestures()[g]->b.data);
    }
    EXPECT_EQ(storedRatio(99.0), 99.0);
    EXPECT_EQ(storedRatio(1e5 + 1.0), 1e5);
}

// P(gesture) shrinks by the prior, in the model as it reads back; nothing else changes.
TEST(CalibrationTest, ThePriorIsInTheGesturesPi) {
    std::vector<Trace> storage;
    const std::vector<GestureSamples> gestures = straightSamples(storage);
    const std::vector<GestureModels> models = smallModels(gestures);
    const RecognitionModel plain = composed(models, quarters, 10.0);
    const RecognitionModel strict =
        composeRecognitionModel(models, quarters, {10.0, {{"g1", 0.125}}}, 0, "all");
    ASSERT_EQ(strict.gestures().size(), 2u);
    EXPECT_EQ(strict.gestures()[0]->pi, plain.gestures()[0]->pi);
    EXPECT_EQ(strict.gestures()[1]->pi, (std::vector<double>{0.125, 0.0, 0.0, 0.0}));
    EXPECT_EQ(strict.gestures()[1]->b.data, plain.gestures()[1]->b.data);
    const std::vector<int>& symbols = gestures[1].samples[0].symbols;
    const double before = plain.get().evaluate(symbols).gestures[1].probability;
    const Vesk::ML::Recognition after = strict.get().evaluate(symbols);
    EXPECT_EQ(after.gestures[1].probability, before / 8);
    EXPECT_EQ(after.threshold, plain.get().evaluate(symbols).threshold);
}

}  // namespace
}  // namespace Vesk::Kit::internal
