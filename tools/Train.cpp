#include "Command.h"
#include "ModelOutput.h"
#include "ModelSummary.h"
#include "ProgressBar.h"
#include "StandardStreams.h"
#include "Text.h"
#include "TraceInput.h"
#include "TrainingInput.h"

#include <veskkit/Error.h>
#include <veskkit/training/GestureTrainer.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Vesk::Tool {

namespace {

struct Options {
    TraceInput input;
    ModelOutput output;
    TrainingInput training;
};

Kit::GestureTrainer makeTrainer(const Options& options) {
    Kit::TrainingOptions training = options.training.optionsFor(options.input.preparation());
    training.name = options.output.modelName();
    return Kit::GestureTrainer(training);
}

/// How many gestures are asked for more than the ratio.
std::size_t strictGestures(const Kit::RecognitionModel& model) {
    const ModelSummary summary = summaryOf(model);
    return static_cast<std::size_t>(
        std::count_if(summary.gestures.begin(), summary.gestures.end(),
                      [](const GestureSummary& it) { return it.models.front().prior < 1.0; }));
}

/// Four digits that count, no exponent.
std::string ratioText(double ratio) {
    const double rounded = std::stod(fmt::format("{:.4g}", ratio));
    return rounded < 1e4 ? fmt::format("{:.4g}", rounded) : fmt::format("{:.0f}", rounded);
}

std::string reportText(const Kit::TrainingResult& result, std::size_t users, bool ratioWasGiven) {
    const Kit::TrainingReport& report = result.report;
    std::size_t models = 0;
    for (const Kit::GestureReport& gesture : report.gestures) models += gesture.subModels.size();
    std::string text = fmt::format("{} of {} by {}: {}\n", counted(report.traces, "trace"),
                                   counted(report.gestures.size(), "gesture"),
                                   counted(users, "user"), counted(models, "model"));
    if (report.turns > 0) {
        text += fmt::format("gestures of 20 traces or more also turned, {} to either side\n",
                            counted(static_cast<std::size_t>(report.turns), "time"));
    }
    if (!report.skipped.empty()) {
        text += counted(report.skipped.size(), "trace") + " left out\n";
    }
    const std::string how =
        report.calibrationRuns > 0
            ? fmt::format(" (calibrated in {})", counted(report.calibrationRuns, "training"))
            : "";
    text += "a gesture has to be " + ratioText(report.acceptanceRatio) +
            " times as likely as the threshold model" + (ratioWasGiven ? "" : how) + "\n";
    const std::size_t strict = strictGestures(result.model);
    if (strict > 0) {
        text += "the ratio is higher for " + counted(strict, "gesture") +
                (ratioWasGiven ? how : "") + ": vesk inspect shows them\n";
    }
    return text;
}

void train(Options& options) {
    const Kit::GestureTrainer trainer = makeTrainer(options);
    options.output.probe();

    std::vector<Kit::Trace> traces;
    std::set<std::string> users;
    options.input.forEach([&](const Kit::Trace& trace) {
        traces.push_back(trace);
        users.insert(trace.user);
    });
    options.input.finish();

    const Kit::TrainingResult result = [&] {
        ProgressBar bar("training", "steps");
        return trainer.train(traces, [&](const Kit::TrainingProgress& progress) {
            bar.show(progress.done, progress.total);
        });
    }();
    for (const std::string& line : result.report.skipped) note("left out: " + line);
    for (const std::string& line : result.report.warnings) note("warning: " + line);

    options.output.write(result.model);
    const std::string report =
        reportText(result, users.size(), trainer.options().acceptanceRatio.has_value()) +
        options.output.report();
    // The model itself is the result where it goes to standard output.
    if (options.output.goesToStandardOutput()) {
        writeNotes(report);
    } else {
        writeResult(report);
    }
}

}  // namespace

Command addTrain(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* line = program.add_subcommand("train", "Train a recognition model from traces");
    options->input.addTo(*line);
    options->output.addTo(*line)->required();
    options->training.addTo(*line);
    return {line, [options] { train(*options); }, "vesk train traces.jsonl -o gestures.model"};
}

}  // namespace Vesk::Tool
