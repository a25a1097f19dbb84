#include "Checks.h"
#include "Command.h"
#include "DoctorPage.h"
#include "ModelInput.h"
#include "OutputFile.h"
#include "ProgressBar.h"
#include "ReportFile.h"
#include "Splitting.h"
#include "StandardStreams.h"
#include "Text.h"
#include "TraceInput.h"
#include "TrainingInput.h"

#include <veskkit/Error.h>
#include <veskkit/diagnosis/Doctor.h>
#include <veskkit/diagnosis/ModelDoctor.h>
#include <veskkit/io/InputFile.h>
#include <veskkit/recognition/ModelText.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Vesk::Tool {

namespace {

using Json = nlohmann::ordered_json;

struct Options {
    TraceInput input;
    CLI::Option* traces = nullptr;
    TrainingInput training;
    std::string model;
    ReportFile report;
    std::uint64_t seed = 1;
    bool withoutCrossValidation = false;
    bool json = false;
};

/// What was examined, and what was found.
struct Examined {
    std::vector<Kit::Trace> traces;
    std::vector<Kit::Finding> findings;  ///< sorted
};

/// "12 traces and the model"
std::string whatWas(const Examined& examined, const Options& options) {
    std::string what = options.traces->empty() ? "" : counted(examined.traces.size(), "trace");
    if (!options.model.empty()) what += what.empty() ? "the model" : " and the model";
    return what;
}

std::string findingsText(const Examined& examined, const Options& options) {
    // Those with the same advice together, where the first of them stands.
    std::vector<std::pair<std::string, std::string>> groups;
    std::map<std::pair<Kit::Weight, std::string>, std::size_t> places;
    for (const Kit::Finding& finding : examined.findings) {
        const auto [place, isNew] =
            places.try_emplace({finding.weight, finding.advice}, groups.size());
        if (isNew) groups.emplace_back("", printable(finding.advice));
        groups[place->second].first +=
            fmt::format("{}: {}\n", Kit::toString(finding.weight), printable(finding.text));
    }
    std::string text;
    for (const auto& [found, advice] : groups) text += fmt::format("{}    {}\n", found, advice);
    if (text.empty()) text = fmt::format("nothing found in {}\n", whatWas(examined, options));
    if (options.report.wanted()) text += "\n" + options.report.done();
    return text;
}

Json numberJson(const std::optional<double>& number) { return number ? Json(*number) : Json(); }

Json findingJson(const Kit::Finding& finding) {
    Json json{{"kind", Kit::toString(finding.kind)},
              {"weight", Kit::toString(finding.weight)},
              {"gestures", finding.gestures}};
    json["traces"] = Json::array();
    for (const Kit::TracePlace& place : finding.traces) {
        json["traces"].push_back(
            {{"source", place.source}, {"line", place.line}, {"user", place.user}});
    }
    json["found"] = numberJson(finding.found);
    json["expected"] = numberJson(finding.expected);
    json["sureness"] = numberJson(finding.sureness);
    json["text"] = finding.text;
    json["advice"] = finding.advice;
    for (const Kit::MeanTrace& mean : finding.means)
        json["means"].push_back({{"gesture", mean.gesture}, {"points", mean.points}});
    return json;
}

std::string findingsJson(const Examined& examined) {
    Json json{{"traces", examined.traces.size()}, {"findings", Json::array()}};
    for (const Kit::Finding& finding : examined.findings)
        json["findings"].push_back(findingJson(finding));
    // A path need not be UTF-8.
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::vector<Kit::Finding> examineTraces(const std::vector<Kit::Trace>& traces,
                                        const Options& options) {
    Kit::DoctorOptions settings;
    settings.training = options.training.optionsFor(options.input.preparation());
    settings.crossValidation = !options.withoutCrossValidation;
    settings.seed = options.seed;
    ProgressBar bar("examining");
    return Kit::diagnose(traces, settings, [&](double share) {
        constexpr std::size_t parts = 1000;
        bar.show(static_cast<std::size_t>(share * parts), parts);
    });
}

std::vector<Kit::Finding> examineModelIn(std::istream& stream, const Options& options) {
    const Kit::Preparation& preparation = options.input.preparation();
    try {
        const Kit::RecognitionModel model = Kit::parseModel(stream, sourceOf(options.model));
        return preparation.points == Kit::Preparation::asDrawn
                   ? Kit::diagnoseModel(model.get())
                   : Kit::diagnoseModel(model.get(), preparation.symbols());
    } catch (const Kit::InputError& problem) {
        return {Kit::unreadableModel(problem.what())};
    }
}

/// A file that cannot be opened is an error; what is wrong inside is a finding.
std::vector<Kit::Finding> examineModel(const Options& options) {
    if (isStandard(options.model)) return examineModelIn(std::cin, options);
    std::ifstream file = Kit::openInput(options.model);
    return examineModelIn(file, options);
}

void examine(Options& options) {
    if (options.traces->empty() && options.model.empty())
        throw UsageError("expected TRACES, --model or both");
    if (isStandard(options.model) && options.input.readsStandardInput())
        throw UsageError("the model and the traces cannot both come from standard input");
    options.report.probe();
    Examined examined;
    if (!options.model.empty()) examined.findings = examineModel(options);
    if (!options.traces->empty()) {
        examined.traces = readTraces(options.input);
        std::vector<Kit::Finding> others = examineTraces(examined.traces, options);
        std::move(others.begin(), others.end(), std::back_inserter(examined.findings));
    }
    Kit::sortFindings(examined.findings);
    if (options.report.wanted()) {
        options.report.write(
            doctorPage(fmt::format("{} in {}.", counted(examined.findings.size(), "finding"),
                                   whatWas(examined, options)),
                       examined.findings, examined.traces, options.report.style()));
    }
    writeResult(options.json ? findingsJson(examined) : findingsText(examined, options));
    flushResults();
    const auto serious = static_cast<std::size_t>(
        std::count_if(examined.findings.begin(), examined.findings.end(),
                      [](const auto& it) { return it.weight == Kit::Weight::Serious; }));
    if (serious == 0) return;
    throw Kit::InputError("found " + counted(serious, "serious problem"));
}

}  // namespace

Command addDoctor(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* line =
        program.add_subcommand("doctor",
                               "Say what is wrong with a set of traces or a model, and what to do "
                               "about it (exit status 3: something serious)");
    options->input.addTo(*line);
    options->traces = line->get_option("TRACES")->required(false);
    line->add_option("-m,--model", options->model,
                     "Model file to examine, whoever trained it; - is standard input")
        ->type_name("MODEL");
    line->add_flag("--no-cross-validation", options->withoutCrossValidation,
                   "Quickly, without training: finds no confusable gestures, and fewer of the "
                   "mislabelled traces");
    line->add_option("--seed", options->seed, "Draws the parts of the cross-validation")
        ->capture_default_str()
        ->transform(numberIn<std::uint64_t>(0, UINT64_MAX))
        ->type_name("N");
    line->add_flag("--json", options->json, "One JSON object");
    options->report.addTo(*line,
                          "HTML page to write: the findings with the strokes that they are about, "
                          "and the means of confusable gestures over one another");
    options->training.addTo(*line);
    return {line, [options] { examine(*options); }, "vesk doctor traces.jsonl -m gestures.model"};
}

}  // namespace Vesk::Tool
