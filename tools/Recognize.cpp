#include "Command.h"
#include "ModelInput.h"
#include "OutputFile.h"
#include "ProgressBar.h"
#include "RecognitionTable.h"
#include "StandardStreams.h"
#include "Text.h"
#include "TraceInput.h"

#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/recognition/ModelCheck.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cmath>
#include <memory>
#include <string>

namespace Vesk::Tool {

namespace {

struct Options {
    TraceInput input;
    std::string model;
    bool json = false;
    bool scores = false;
    bool table = false;
};

std::string jsonLine(const Kit::Trace& trace, const Kit::Result& result, bool withScores) {
    nlohmann::ordered_json json;
    json["gesture"] = result.gesture;
    if (!trace.gesture.empty()) json["expected"] = Kit::storedName(trace.gesture);
    json["source"] = trace.source;
    json["line"] = trace.line;
    if (withScores) {
        json["scores"] = nlohmann::ordered_json::array();
        for (const Kit::Score& score : result.scores) {
            nlohmann::ordered_json entry;
            entry["gesture"] = score.gesture;
            // JSON has no infinity: probability zero is null.
            entry["logProbability"] = std::isfinite(score.logProbability)
                                          ? nlohmann::ordered_json(score.logProbability)
                                          : nlohmann::ordered_json(nullptr);
            json["scores"].push_back(std::move(entry));
        }
    }
    // A path need not be UTF-8.
    return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

/// "traces.jsonl:7: star by s02 recognised as star, margin 5.21"
std::string plainLine(const Kit::Trace& trace, const Kit::Result& result) {
    std::string line = fmt::format("{}:{}:", trace.source, trace.line);
    if (!trace.gesture.empty()) line += " " + Kit::storedName(trace.gesture);
    if (!trace.user.empty()) line += " by " + trace.user;
    if (result.recognized()) {
        line += fmt::format(" recognised as {}, margin {:.2f}", result.gesture, result.margin);
    } else {
        line += fmt::format(" rejected ({})", Kit::toString(result.rejection));
        if (!result.scores.empty()) {
            line += fmt::format(", likeliest {}, margin {:.2f}", result.scores.front().gesture,
                                result.margin);
        }
    }
    return printable(line) + "\n";
}

void recognize(Options& options) {
    if (isStandard(options.model) && options.input.readsStandardInput()) {
        throw UsageError("the model and the traces cannot both come from standard input");
    }
    const Kit::GestureRecognizer recognizer(readModel(options.model), options.input.preparation(),
                                            sourceOf(options.model));
    RecognitionTable table;
    std::size_t unlabelled = 0;
    std::size_t recognized = 0;
    const auto take = [&](const Kit::Trace& trace) {
        const Kit::Result result = recognizer.recognize(trace);
        if (options.table) {
            if (trace.gesture.empty()) {
                ++unlabelled;
            } else {
                table.add(Kit::storedName(trace.gesture), result);
            }
            return;
        }
        writeResult(options.json ? jsonLine(trace, result, options.scores)
                                 : plainLine(trace, result));
        // At once: whoever feeds standard input may be waiting for the answer.
        flushResults();
    };
    {
        ProgressBar bar("recognising", "traces");
        options.input.forEach([&](const Kit::Trace& trace) {
            bar.count(++recognized);
            take(trace);
        });
    }
    options.input.finish();
    if (unlabelled > 0) note("warning: " + counted(unlabelled, "trace") + " without a label");
    if (options.table) writeResult(table.text());
}

}  // namespace

Command addRecognize(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* line = program.add_subcommand("recognize", "Recognise traces with a trained model");
    line->add_option("-m,--model", options->model, "Model file; - is standard input")
        ->required()
        ->type_name("MODEL");
    options->input.addTo(*line);
    CLI::Option* json = line->add_flag("--json", options->json, "One JSON object a trace");
    line->add_flag("--scores", options->scores, "With --json: every gesture's log probability")
        ->needs(json);
    line->add_flag(
            "--table", options->table,
            "Instead of a line a trace, how many of each gesture were recognised, and how many "
            "rejected: taken for no gesture")
        ->excludes(json);
    return {line, [options] { recognize(*options); },
            "vesk recognize -m gestures.model traces.jsonl --table"};
}

}  // namespace Vesk::Tool
