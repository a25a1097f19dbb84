#include "Checks.h"
#include "Command.h"
#include "EvaluationPage.h"
#include "EvaluationText.h"
#include "ProgressBar.h"
#include "ReportFile.h"
#include "Splitting.h"
#include "StandardStreams.h"
#include "Text.h"
#include "TraceInput.h"
#include "TrainingInput.h"

#include <veskkit/Error.h>
#include <veskkit/evaluation/Evaluation.h>
#include <veskkit/evaluation/Folds.h>
#include <veskkit/training/GestureTrainer.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Vesk::Tool {

namespace {

struct Options {
    TraceInput input;
    TrainingInput training;
    std::string by;
    std::optional<std::size_t> folds;
    std::size_t ownExamples = 3;
    std::vector<std::size_t> examples;
    std::size_t draws = 5;
    std::uint64_t seed = 1;
    bool withoutUnknown = false;
    bool json = false;
    ReportFile report;
};

constexpr std::size_t mostUserFolds = 10;
constexpr std::size_t usualParts = 5;

/// The folds of several draws, each with a seed of its own: draw(seed) are those of one.
template <typename Draw>
std::vector<Kit::Fold> drawn(const Options& options, const Draw& draw) {
    std::vector<Kit::Fold> folds;
    for (std::size_t d = 0; d < options.draws; ++d) {
        std::vector<Kit::Fold> some = draw(options.seed + d);
        std::move(some.begin(), some.end(), std::back_inserter(folds));
    }
    return folds;
}

Split split(const Options& options, const std::vector<Kit::Trace>& traces) {
    const std::string usual = hasSeveralUsers(traces) ? "user" : "fold";
    const std::string by = options.by.empty() ? usual : options.by;
    if (by == "user") return leavingUsersOut(traces, options.folds.value_or(mostUserFolds));
    if (by == "fold") return leavingPartsOut(traces, options.folds, usualParts, options.seed);
    std::vector<Kit::Fold> folds = drawn(options, [&](std::uint64_t seed) {
        return Kit::ownExamples(traces, options.ownExamples, seed);
    });
    return {std::move(folds),
            fmt::format("each user's own models from {} a gesture ({}, seed {})",
                        counted(options.ownExamples, "example"), counted(options.draws, "draw"),
                        options.seed),
            options.draws};
}

/// A model of all traces, whose states the report's strokes are coloured by.
Kit::GestureRecognizer trainOnAll(const std::vector<Kit::Trace>& traces,
                                  Kit::TrainingOptions training) {
    training.calibrate = false;
    training.skipBad = true;
    return Kit::GestureRecognizer(Kit::GestureTrainer(training).train(traces).model,
                                  training.preparation);
}

/// Trains and tests, all examples and then few of them. The bar is gone when results are told.
void runFolds(const Options& options, Kit::EvaluationOptions settings, EvaluationResult& result) {
    ProgressBar bar("evaluating");
    const std::size_t runs = options.examples.size() + 1;
    const auto run = [&](std::size_t done, const std::vector<Kit::Fold>& folds) {
        constexpr std::size_t parts = 1000;
        return Kit::evaluate(
            result.traces, folds, settings, [&](const Kit::EvaluationProgress& progress) {
                const double share = (static_cast<double>(progress.fold) + progress.share) /
                                     static_cast<double>(progress.folds);
                const auto part = static_cast<std::size_t>(share * parts);
                bar.show(done * parts + part, runs * parts);
            });
    };
    result.outcomes = run(0, result.folds);
    settings.unknownGestures = false;
    for (const std::size_t examples : options.examples) {
        const auto folds = drawn(options, [&](std::uint64_t seed) {
            return Kit::withFewExamples(result.folds, result.traces, examples, seed);
        });
        result.curve.push_back(
            {examples, options.draws * result.draws, run(result.curve.size() + 1, folds)});
    }
}

void evaluate(Options& options) {
    options.report.probe();
    Kit::EvaluationOptions settings;
    settings.training = options.training.optionsFor(options.input.preparation());
    settings.unknownGestures = !options.withoutUnknown;
    EvaluationResult result;
    result.traces = readTraces(options.input);
    Split chosen = split(options, result.traces);
    result.folds = std::move(chosen.folds);
    result.split = std::move(chosen.description);
    result.draws = chosen.draws;
    runFolds(options, settings, result);

    std::string text = options.json ? evaluationJson(result) : evaluationText(result);
    if (options.report.wanted()) {
        const Kit::GestureRecognizer recognizer = trainOnAll(result.traces, settings.training);
        options.report.write(evaluationPage(result, recognizer, options.report.style()));
        if (!options.json) text += "\n" + options.report.done();
    }
    writeResult(text);
}

}  // namespace

Command addEvaluate(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* line = program.add_subcommand("evaluate",
                                            "Find out how well gestures would be recognised, by "
                                            "training on some traces and testing others");
    options->input.addTo(*line);
    line->add_option("--by", options->by,
                     "What is tested without being trained on, in turn: each user; each of some "
                     "parts (fold); each user's own traces but for some examples (own) [user where "
                     "several drew, else fold]")
        ->check(oneOf({"user", "fold", "own"}))
        ->type_name("user|fold|own");
    line->add_option(
            "--folds", options->folds,
            "Parts for --by fold [5, or as many as the rarest gesture has traces]; groups of "
            "users for --by user [10, or each user alone]")
        ->transform(numberIn<std::size_t>(2, 1000))
        ->type_name("N");
    line->add_option("--own-examples", options->ownExamples, "Examples a gesture for --by own")
        ->capture_default_str()
        ->transform(numberIn<std::size_t>(1, 1000000))
        ->type_name("N");
    line->add_option("--examples", options->examples,
                     "Also with so many training examples a gesture only, as in 3,5,10,20")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->transform(numberIn<std::size_t>(1, 1000000))
        ->type_name("N,...");
    line->add_option("--draws", options->draws,
                     "Times that examples are drawn for --own-examples and --examples; all count")
        ->capture_default_str()
        ->transform(numberIn<std::size_t>(1, 1000))
        ->type_name("N");
    line->add_option("--seed", options->seed, "Of what is drawn at random")
        ->capture_default_str()
        ->transform(numberIn<std::uint64_t>(0, UINT64_MAX))
        ->type_name("N");
    line->add_flag("--no-unknown", options->withoutUnknown,
                   "Do not take each gesture for unknown in turn");
    line->add_flag("--json", options->json, "One JSON object, with every trace");
    options->report.addTo(*line, "HTML page to write, with tables, plots and the worst mistakes");
    options->training.addTo(*line);
    return {line, [options] { evaluate(*options); },
            "vesk evaluate traces.jsonl --examples 3,5,10"};
}

}  // namespace Vesk::Tool
