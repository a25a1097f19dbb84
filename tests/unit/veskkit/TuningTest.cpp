#include "Gestures.h"

#include <veskkit/Error.h>
#include <veskkit/evaluation/Tuning.h>
#include <veskkit/training/GestureTrainer.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::drawnTraces;
using Vesk::Test::textOf;

const TunedOption symbols{"symbols", {2, 16}, [](TrainingOptions& it, double value) {
                              it.symbols = static_cast<int>(value);
                          }};
const TunedOption states{"states", {6, 12}, [](TrainingOptions& it, double value) {
                             it.states = static_cast<int>(value);
                         }};

/// Models small enough to be trained many times, with too few directions to begin with.
TuningOptions quickly() {
    TuningOptions options;
    options.training.preparation.points = 17;
    options.training.symbols = 2;
    options.training.states = 12;
    options.training.thresholdStates = 5;
    options.training.subModels = 1;
    options.training.smoothing = 10.0;
    options.training.iterations = 1;
    options.options = {symbols, states};
    options.falseAccept = 0.1;
    return options;
}

std::vector<std::string> changesOf(const TuningResult& result) {
    std::vector<std::string> changes;
    for (const Trial& trial : result.trials) changes.push_back(trial.change);
    return changes;
}

TEST(TuningTest, FindsTheDirectionsThatAreNeeded) {
    const std::vector<Trace> traces = drawnTraces(1, 3, 4);
    const TuningResult result = tune(traces, leaveOneUserOut(traces), quickly());
    EXPECT_EQ(result.training.symbols, 16);
    ASSERT_TRUE(result.training.acceptanceRatio.has_value());
    const Trial& best = result.trials[result.best];
    EXPECT_TRUE(best.adopted);
    EXPECT_EQ(best.result.ratio, *result.training.acceptanceRatio);
    EXPECT_GT(best.result.correct.value(), 0.8);
    EXPECT_LT(result.trials.front().result.correct.value(), best.result.correct.value());
    EXPECT_LE(best.result.unknownAccepted.value(), 0.1);
    EXPECT_EQ(result.trials.front().change, "start");
    EXPECT_EQ(result.trials.front().training.symbols, 2);
    EXPECT_FALSE(result.trials.front().training.acceptanceRatio.has_value());
}

TEST(TuningTest, OutcomesAreThoseOfTheBestTrial) {
    const std::vector<Trace> traces = drawnTraces(2, 3, 2, 0.3);
    const TuningResult result = tune(traces, leaveOneUserOut(traces), quickly());
    ASSERT_EQ(result.outcomes.size(), traces.size());
    const TradeOffPoint& told = result.trials[result.best].result;
    const TradeOffPoint counted = tradeOffAt(result.outcomes, told.ratio);
    EXPECT_EQ(told.correct.count, counted.correct.count);
    EXPECT_EQ(told.wrong.count, counted.wrong.count);
    EXPECT_EQ(told.unknownAccepted.count, counted.unknownAccepted.count);
    EXPECT_EQ(told.ratio, ratioFor(result.outcomes, 0.1));
}

TEST(TuningTest, WhatIsNoBetterIsNotAdoptedAndEndsTheSearch) {
    TuningOptions options = quickly();
    options.training.symbols = 16;
    options.options = {states};
    options.options[0].values = {12, 12};
    const std::vector<Trace> traces = drawnTraces(3, 2, 2);
    const TuningResult result = tune(traces, leaveOneUserOut(traces), options);
    EXPECT_EQ(changesOf(result), std::vector<std::string>{"start"}) << "the same as the start";
    EXPECT_EQ(result.best, 0U);
    EXPECT_EQ(result.training.states, 12);
    EXPECT_EQ(result.training.acceptanceRatio, result.trials[0].result.ratio);
}

TEST(TuningTest, NoSettingIsTriedTwiceInARow) {
    TuningOptions options = quickly();
    options.rounds = 5;
    const std::vector<Trace> traces = drawnTraces(4, 2, 2);
    const std::vector<std::string> changes =
        changesOf(tune(traces, leaveOneUserOut(traces), options));
    EXPECT_LE(changes.size(), 1U + 4U * 4U);
    for (std::size_t i = 1; i < changes.size(); ++i) EXPECT_NE(changes[i], changes[i - 1]);
}

TEST(TuningTest, ThreadsChangeNothing) {
    const std::vector<Trace> traces = drawnTraces(5, 2, 2, 0.3);
    TuningOptions options = quickly();
    options.training.threads = 1;
    const TuningResult alone = tune(traces, leaveOneUserOut(traces), options);
    options.training.threads = 3;
    const TuningResult together = tune(traces, leaveOneUserOut(traces), options);
    EXPECT_EQ(changesOf(alone), changesOf(together));
    EXPECT_EQ(alone.best, together.best);
    EXPECT_EQ(alone.training.acceptanceRatio, together.training.acceptanceRatio);
    ASSERT_EQ(alone.outcomes.size(), together.outcomes.size());
    for (std::size_t i = 0; i < alone.outcomes.size(); ++i) {
        const std::vector<Answer>& x = alone.outcomes[i].answers;
        const std::vector<Answer>& y = together.outcomes[i].answers;
        ASSERT_EQ(x.size(), y.size());
        for (std::size_t k = 0; k < x.size(); ++k) EXPECT_EQ(x[k].logRatio, y[k].logRatio);
    }
}

TEST(TuningTest, TellsHowFarItIs) {
    const std::vector<Trace> traces = drawnTraces(6, 2, 2);
    double last = -1.0;
    std::size_t calls = 0;
    tune(traces, leaveOneUserOut(traces), quickly(), [&](const TuningProgress& progress) {
        EXPECT_EQ(progress.rounds, 3);
        EXPECT_GE(progress.share, 0.0);
        EXPECT_LE(progress.share, 1.0);
        EXPECT_GE(progress.round + progress.share, last);
        last = progress.round + progress.share;
        ++calls;
    });
    EXPECT_GT(calls, 10U);
}

TEST(TuningTest, UsualOptionsAreWithinTheirRanges) {
    for (const TunedOption& option : usualTunedOptions()) {
        EXPECT_GE(option.values.size(), 2U);
        for (const double value : option.values) {
            TrainingOptions training;
            option.set(training, value);
            EXPECT_NO_THROW(GestureTrainer{training}) << option.name << ' ' << value;
        }
    }
}

TEST(TuningTest, RefusesWhatMakesNoSense) {
    const std::vector<Trace> traces = drawnTraces(7, 2, 1);
    const std::vector<Fold> folds = leaveOneUserOut(traces);
    for (const double share : {-0.1, 1.1, std::numeric_limits<double>::quiet_NaN()}) {
        TuningOptions options = quickly();
        options.falseAccept = share;
        EXPECT_NE(textOf<InputError>([&] {
                      tune(traces, folds, options);
                  }).find("for false acceptance, expected 0 to 1"),
                  std::string::npos);
    }
    TuningOptions options = quickly();
    options.rounds = 0;
    EXPECT_EQ(textOf<InputError>([&] { tune(traces, folds, options); }),
              "found 0 for rounds, expected at least 1");
    options = quickly();
    options.options[0].values = {1};
    EXPECT_NE(textOf<InputError>([&] { tune(traces, folds, options); }).find("symbols"),
              std::string::npos);
}

}  // namespace
}  // namespace Vesk::Kit
