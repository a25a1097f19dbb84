#include "Command.h"
#include "ModelInput.h"
#include "ModelPage.h"
#include "ModelSummary.h"
#include "OutputFile.h"
#include "ReportFile.h"
#include "Splitting.h"
#include "StandardStreams.h"
#include "TableText.h"
#include "TraceInput.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace Vesk::Tool {

namespace {

struct Options {
    std::string model;
    TraceInput traces;
    ReportFile report;
    bool json = false;
};

void inspect(Options& options) {
    if (isStandard(options.model) && options.traces.readsStandardInput()) {
        throw UsageError("the model and the traces cannot both come from standard input");
    }
    options.report.probe();
    Kit::RecognitionModel model = readModel(options.model);
    std::string text =
        options.json ? summaryJson(model)
                     : tableText(modelTable(model)) + "\n" + tableText(gestureModelsTable(model));
    if (options.report.wanted()) {
        std::vector<Kit::Trace> traces;
        if (options.traces.given()) traces = readTraces(options.traces);
        const Kit::GestureRecognizer recognizer(std::move(model), options.traces.preparation(),
                                                sourceOf(options.model));
        options.report.write(modelPage(recognizer, traces, options.report.style()));
        if (!options.json) text += "\n" + options.report.done();
    }
    writeResult(text);
}

}  // namespace

Command addInspect(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* line = program.add_subcommand("inspect", "Show what a model consists of");
    line->add_option("MODEL", options->model, "Model file; - is standard input")
        ->required()
        ->type_name("");
    line->add_flag("--json", options->json, "One JSON object");
    CLI::Option* report =
        options->report.addTo(*line, "HTML page to write, with pictures of the models");
    options->traces
        .addOptionTo(*line,
                     "Traces to show with the report, coloured by the states of their models; "
                     "repeatable")
        ->needs(report);
    return {line, [options] { inspect(*options); },
            "vesk inspect gestures.model --report model.html --traces traces.jsonl"};
}

}  // namespace Vesk::Tool
