#include "Command.h"
#include "OutputFile.h"
#include "ProgressBar.h"
#include "StandardStreams.h"
#include "Text.h"
#include "TraceInput.h"
#include "TrainingInput.h"

#include <veskkit/Error.h>
#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/recognition/ModelText.h>
#include <veskkit/training/GestureTrainer.h>

#include <fmt/format.h>

#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Vesk::Tool {

namespace {

struct Options {
    TraceInput input;
    std::string output;
    std::string name;
    TrainingInput training;
};

/// The model's name: the one given, or else the file's name without its extension.
std::string modelName(const Options& options) {
    if (!options.name.empty()) {
        if (Kit::isStorableName(options.name)) return options.name;
        throw UsageError("--name: expected one word without blanks");
    }
    const std::string stem = Kit::storedName(std::filesystem::path(options.output).stem().string());
    const bool usable = !isStandard(options.output) && Kit::isStorableName(stem);
    return usable ? stem : Kit::TrainingOptions{}.name;
}

Kit::GestureTrainer makeTrainer(const Options& options) {
    Kit::TrainingOptions training = options.training.optionsFor(options.input.preparation());
    training.name = modelName(options);
    return Kit::GestureTrainer(training);
}

std::string reportText(const Kit::TrainingReport& report, std::size_t users,
                       const std::string& output) {
    std::size_t models = 0;
    for (const Kit::GestureReport& gesture : report.gestures) models += gesture.subModels.size();
    std::string text = fmt::format("{} of {} by {}: {}\n", counted(report.traces, "trace"),
                                   counted(report.gestures.size(), "gesture"),
                                   counted(users, "user"), counted(models, "model"));
    if (!report.skipped.empty()) {
        text += counted(report.skipped.size(), "trace") + " left out\n";
    }
    text += fmt::format("a gesture has to be {:.4g} times as likely as the threshold model",
                        report.acceptanceRatio);
    text += report.calibrationRuns > 0
                ? fmt::format(" (calibrated in {})\n", counted(report.calibrationRuns, "training"))
                : "\n";
    if (!isStandard(output)) text += fmt::format("model written to {}\n", printable(output));
    return text;
}

void train(Options& options) {
    const Kit::GestureTrainer trainer = makeTrainer(options);
    OutputFile::probe(options.output);

    std::vector<Kit::Trace> traces;
    std::set<std::string> users;
    options.input.forEach([&](const Kit::Trace& trace) {
        traces.push_back(trace);
        users.insert(trace.user);
    });
    const std::vector<std::string> unseen = options.input.unseenUsers();
    if (!unseen.empty()) throw Kit::InputError(unseen.front());

    const Kit::TrainingResult result = [&] {
        ProgressBar bar("training");
        return trainer.train(traces, [&](const Kit::TrainingProgress& progress) {
            bar.show(progress.done, progress.total);
        });
    }();
    for (const std::string& line : result.report.skipped) tell("left out: " + line);
    for (const std::string& line : result.report.warnings) tell("warning: " + line);

    OutputFile output(options.output);
    output.write(Kit::modelText(result.model.get()));
    output.commit();
    const std::string report = reportText(result.report, users.size(), options.output);
    // The model itself is the result where it goes to standard output.
    if (isStandard(options.output)) {
        fmt::print(stderr, "{}", report);
    } else {
        writeResult(report);
    }
}

}  // namespace

Command addTrain(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* line = program.add_subcommand("train", "Train a recognition model from traces");
    options->input.addTo(*line);
    line->add_option("-o,--output", options->output, "Model file to write; - is standard output")
        ->required()
        ->type_name("MODEL");
    line->add_option("--name", options->name, "The model's name, one word [from the file's name]")
        ->type_name("NAME");
    options->training.addTo(*line);
    return {line, [options] { train(*options); }};
}

}  // namespace Vesk::Tool
