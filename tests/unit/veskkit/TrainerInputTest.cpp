#include "QuickTraining.h"

#include <veskkit/Error.h>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::drawnTraces;
using Vesk::Test::quick;
using Vesk::Test::textOf;
using Vesk::Test::trainQuick;

std::string refusal(const std::vector<Trace>& traces, const TrainingOptions& options = quick()) {
    return textOf<InputError>([&] { GestureTrainer(options).train(traces); });
}

Trace stillTrace(const std::string& gesture) {
    Trace trace;
    trace.gesture = gesture;
    trace.source = "t.jsonl";
    trace.line = 9;
    trace.points = {{3, 3}, {3, 3}};
    return trace;
}

TEST(TrainerInputTest, BlanksInLabelsBecomeUnderscores) {
    std::vector<Trace> traces = drawnTraces(1, 1, 3);
    for (Trace& trace : traces) {
        if (trace.gesture == "check") trace.gesture = "check mark";
    }
    const TrainingResult result = trainQuick(traces);
    EXPECT_EQ(result.model.gestureNames()[1], "check_mark");
    EXPECT_EQ(result.report.gestures[1].gesture, "check_mark");
    EXPECT_EQ(result.report.gestures[1].label, "check mark");
    EXPECT_EQ(result.report.warnings,
              (std::vector<std::string>{"gesture \"check mark\" is stored as \"check_mark\": names "
                                        "in a model have no blanks"}));
}

TEST(TrainerInputTest, RefusesLabelsThatBecomeTheSame) {
    std::vector<Trace> traces = drawnTraces(1, 1, 3);
    traces[0].gesture = "a b";
    traces[1].gesture = "a_b";
    traces[1].source = "t.jsonl";
    traces[1].line = 4;
    EXPECT_EQ(refusal(traces),
              "t.jsonl:4: found the label \"a_b\" beside \"a b\", expected labels that differ in "
              "more than blanks (both are stored as \"a_b\")");
}

TEST(TrainerInputTest, RefusesTracesItCannotUse) {
    EXPECT_EQ(refusal({}), "found no traces, expected at least 1");
    std::vector<Trace> traces = drawnTraces(1, 1, 1);
    traces[2].gesture = "";
    traces[2].source = "t.jsonl";
    traces[2].line = 3;
    EXPECT_EQ(refusal(traces), "t.jsonl:3: found no label, expected the gesture's name");
    traces[2].gesture =
        "a\x01"
        "b";
    EXPECT_EQ(refusal(traces),
              "t.jsonl:3: found the label \"a?b\", expected one without control characters");
    traces[2].gesture = "g";
    traces[2].points[1] = {0};
    EXPECT_EQ(refusal(traces), "t.jsonl:3: found 1 number in points[1], expected at least 2");
}

TEST(TrainerInputTest, RefusesTracesWithoutADirectionUnlessTheyMayBeLeftOut) {
    std::vector<Trace> traces = drawnTraces(1, 1, 3);
    traces.push_back(stillTrace("check"));
    const std::string problem =
        "t.jsonl:9: found a trace of gesture \"check\" with 0 directions, expected at least 2";
    EXPECT_EQ(refusal(traces), problem);
    TrainingOptions options = quick();
    options.skipBad = true;
    const TrainingResult result = GestureTrainer(options).train(traces);
    EXPECT_EQ(result.report.skipped, std::vector<std::string>{problem});
    EXPECT_EQ(result.report.traces, 15u);

    traces.push_back(stillTrace("nothing else"));
    EXPECT_EQ(refusal(traces, options),
              "found no usable trace of gesture \"nothing else\", expected at least 1");
}

TEST(TrainerInputTest, WarnsOfSequencesShorterThanTheStates) {
    TrainingOptions options = quick();
    options.preparation.points = 8;
    options.preparation.bearings = 0;
    const TrainingReport report = GestureTrainer(options).train(drawnTraces(1, 1, 3)).report;
    ASSERT_EQ(report.warnings.size(), 5u);
    EXPECT_EQ(report.warnings[0],
              "gesture \"caret\" has 3 traces with fewer than 10 directions: too short to reach "
              "the last of 10 states");
    options.delta = 2;  // 9 transitions in 5 jumps: 6 directions do
    EXPECT_TRUE(GestureTrainer(options).train(drawnTraces(1, 1, 3)).report.warnings.empty());
}

struct BadOption {
    std::function<void(TrainingOptions&)> set;
    std::string text;
};

TEST(TrainerInputTest, RefusesOptionsOutOfRange) {
    const std::vector<BadOption> cases{
        {[](TrainingOptions& o) { o.name = "two words"; },
         "found the model name \"two words\", expected one word without blanks"},
        {[](TrainingOptions& o) { o.symbols = 1; }, "found 1 for symbols, expected 2 to 360"},
        {[](TrainingOptions& o) { o.symbols = 361; }, "found 361 for symbols, expected 2 to 360"},
        {[](TrainingOptions& o) { o.states = 1; }, "found 1 for states, expected 2 to 200"},
        {[](TrainingOptions& o) { o.delta = 0; }, "found 0 for delta, expected 1 to 39"},
        {[](TrainingOptions& o) { o.delta = 40; }, "found 40 for delta, expected 1 to 39"},
        {[](TrainingOptions& o) { o.subModels = 0; }, "found 0 for sub-models, expected 1 to 16"},
        {[](TrainingOptions& o) { o.smallestSubModel = 0; },
         "found 0 for smallest sub-model, expected 1 to 1000000"},
        {[](TrainingOptions& o) { o.iterations = -1; },
         "found -1 for iterations, expected 0 to 1000"},
        {[](TrainingOptions& o) { o.emissionFloor = 0.0; },
         "found 0 for emission floor, expected 1e-12 to 0.1"},
        {[](TrainingOptions& o) { o.smoothing = 181.0; },
         "found 181 for smoothing, expected 0 to 180"},
        {[](TrainingOptions& o) { o.thresholdStates = 1; },
         "found 1 for threshold states, expected 2 to 200"},
        {[](TrainingOptions& o) { o.thresholdSmoothing = -1.0; },
         "found -1 for threshold smoothing, expected 0 to 180"},
        {[](TrainingOptions& o) { o.acceptanceRatio = 0.0; },
         "found 0 for acceptance ratio, expected 1e-06 to 1e+12"},
        {[](TrainingOptions& o) { o.falseRejection = std::nan(""); },
         "found nan for false rejection, expected 0 to 0.5"},
        {[](TrainingOptions& o) { o.preparation.points = 1; },
         "found 1 points to resample to, expected 2 to 100000"}};
    for (const BadOption& bad : cases) {
        TrainingOptions options;
        bad.set(options);
        EXPECT_EQ(textOf<InputError>([&] { GestureTrainer trainer(options); }), bad.text);
    }
}

}  // namespace
}  // namespace Vesk::Kit
