#include "Checks.h"
#include "Command.h"
#include "ModelOutput.h"
#include "ProgressBar.h"
#include "Splitting.h"
#include "StandardStreams.h"
#include "Text.h"
#include "TraceInput.h"
#include "TrainingInput.h"
#include "TuningText.h"

#include <veskkit/evaluation/Tuning.h>
#include <veskkit/training/GestureTrainer.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace Vesk::Tool {

namespace {

constexpr std::size_t usualFolds = 3;

struct Options {
    TraceInput input;
    TrainingInput training;
    ModelOutput output;
    double falseAccept = 0.02;
    std::string by;
    std::optional<std::size_t> folds;
    int rounds = 2;
    std::uint64_t seed = 1;
    bool json = false;
};

Split split(const Options& options, const std::vector<Kit::Trace>& traces) {
    const bool byUser = options.by.empty() ? hasSeveralUsers(traces) : options.by == "user";
    return byUser ? leavingUsersOut(traces, options.folds.value_or(usualFolds))
                  : leavingPartsOut(traces, options.folds, usualFolds, options.seed);
}

Kit::TuningResult search(const Options& options, const TuningFindings& findings,
                         const std::vector<Kit::Fold>& folds) {
    Kit::TuningOptions settings;
    settings.training = options.training.optionsFor(options.input.preparation());
    settings.falseAccept = options.falseAccept;
    settings.rounds = options.rounds;
    ProgressBar bar("tuning");
    return Kit::tune(findings.traces, folds, settings, [&](const Kit::TuningProgress& progress) {
        constexpr std::size_t parts = 1000;
        // The first trial is part of the first round.
        const double share = progress.round == 0 ? 0.0 : progress.share;
        const auto round = static_cast<std::size_t>(progress.round == 0 ? 0 : progress.round - 1);
        bar.show(round * parts + static_cast<std::size_t>(share * parts),
                 static_cast<std::size_t>(progress.rounds) * parts);
    });
}

Kit::RecognitionModel train(const Options& options, const TuningFindings& findings) {
    Kit::TrainingOptions training = findings.result.training;
    training.name = options.output.modelName();
    ProgressBar bar("training", "steps");
    return Kit::GestureTrainer(training)
        .train(
            findings.traces,
            [&](const Kit::TrainingProgress& progress) { bar.show(progress.done, progress.total); })
        .model;
}

void tune(Options& options) {
    if (options.output.wanted()) {
        static_cast<void>(options.output.modelName());
        options.output.probe();
    }
    TuningFindings findings{readTraces(options.input), {}, options.falseAccept, {}};
    Split chosen = split(options, findings.traces);
    findings.split = std::move(chosen.description);
    findings.result = search(options, findings, chosen.folds);
    const std::string warning = tuningWarning(findings);
    if (!warning.empty()) note(warning);

    std::string text = options.json ? tuningJson(findings) : tuningText(findings);
    if (options.output.wanted()) {
        options.output.write(train(options, findings));
        if (!options.json) text += options.output.report();
    }
    // The model itself is the result where it goes to standard output.
    if (options.output.wanted() && options.output.goesToStandardOutput()) {
        writeNotes(text);
    } else {
        writeResult(text);
    }
}

}  // namespace

Command addTune(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* line = program.add_subcommand(
        "tune",
        "Find the training options that suit some gestures, by training on some traces and "
        "testing others, and train with them");
    options->input.addTo(*line);
    options->output.addTo(*line);
    line->add_option("--target-false-accept", options->falseAccept,
                     "Share of unknown gestures that may be accepted, 0 to 1")
        ->capture_default_str()
        ->transform(numberIn(0.0, 1.0))
        ->type_name("SHARE");
    line->add_option("--by", options->by,
                     "What is tested without being trained on, in turn: each of some groups of "
                     "users; each of some parts (fold) [user where several drew, else fold]")
        ->check(oneOf({"user", "fold"}))
        ->type_name("user|fold");
    line->add_option("--folds", options->folds, "Groups or parts [3]")
        ->transform(numberIn<std::size_t>(2, 1000))
        ->type_name("N");
    line->add_option("--rounds", options->rounds, "Most times that all options are gone through")
        ->capture_default_str()
        ->transform(numberIn(1, 100))
        ->type_name("N");
    line->add_option("--seed", options->seed, "Of what is drawn at random")
        ->capture_default_str()
        ->transform(numberIn<std::uint64_t>(0, UINT64_MAX))
        ->type_name("N");
    line->add_flag("--json", options->json, "One JSON object, with all of the trade-off curve");
    options->training.addSettingsTo(*line);
    return {line, [options] { tune(*options); },
            "vesk tune traces.jsonl --target-false-accept 0.02 -o gestures.model"};
}

}  // namespace Vesk::Tool
