#include "Checks.h"
#include "Command.h"
#include "OutputFile.h"
#include "Splitting.h"
#include "StandardStreams.h"
#include "Text.h"
#include "TraceInput.h"

#include <veskkit/io/CodebookFile.h>
#include <veskkit/training/Codebook.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

namespace Vesk::Tool {

namespace {

struct Options {
    TraceInput input;
    std::string output;
    int symbols = 32;
    bool even = false;
    bool json = false;
};

std::size_t stepsOf(const Kit::CodebookUse& use) {
    return std::accumulate(use.steps.begin(), use.steps.end(), std::size_t{0});
}

std::string useText(const Kit::CodebookUse& use, const Kit::CodebookUse& even) {
    constexpr std::size_t width = 40;
    const std::size_t steps = std::max<std::size_t>(stepsOf(use), 1);
    const std::size_t most = *std::max_element(use.steps.begin(), use.steps.end());
    std::string text = fmt::format("{:>6} {:>10} {:>8}\n", "symbol", "direction", "steps");
    for (std::size_t k = 0; k < use.directions.size(); ++k) {
        const std::size_t length = most == 0 ? 0 : width * use.steps[k] / most;
        std::string line =
            fmt::format("{:>6} {:>10.2f} {:>6.2f} %  {}", k, use.directions[k],
                        100.0 * static_cast<double>(use.steps[k]) / static_cast<double>(steps),
                        std::string(length, '#'));
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text + fmt::format(
                      "{}, {:.3f} degrees from their directions in the mean ({:.3f} from "
                      "evenly spaced ones)\n",
                      counted(stepsOf(use), "step"), use.meanDistance, even.meanDistance);
}

std::string useJson(const Kit::CodebookUse& use, const Kit::CodebookUse& even) {
    const nlohmann::ordered_json json{{"directions", use.directions},
                                      {"steps", use.steps},
                                      {"meanDistance", use.meanDistance},
                                      {"meanDistanceOfEven", even.meanDistance}};
    return json.dump() + "\n";
}

void makeCodebook(Options& options) {
    if (!options.output.empty()) OutputFile::probe(options.output);
    const std::vector<Kit::Trace> traces = readTraces(options.input);
    const Kit::Preparation& preparation = options.input.preparation();
    const Kit::CodebookUse even = Kit::evenCodebook(traces, options.symbols, preparation);
    const Kit::CodebookUse use =
        options.even ? even : Kit::learntCodebook(traces, options.symbols, preparation);
    std::string text = options.json ? useJson(use, even) : useText(use, even);
    if (!options.output.empty()) {
        OutputFile file(options.output);
        file.write(Kit::codebookText(use.directions));
        file.commit();
        // The codebook itself is the result where it goes to standard output.
        if (isStandard(options.output)) return writeNotes(text);
        if (!options.json) text += "codebook written to " + printable(options.output) + "\n";
    }
    writeResult(text);
}

}  // namespace

Command addCodebook(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* line = program.add_subcommand(
        "codebook", "Learn from traces which directions to tell apart, and show how they are used");
    options->input.addTo(*line);
    line->add_option("-o,--output", options->output,
                     "Codebook file to write, for vesk train --codebook; - is standard output")
        ->type_name("FILE");
    line->add_option("--symbols", options->symbols, "Directions that are told apart")
        ->capture_default_str()
        ->transform(numberIn(2, 360))
        ->type_name("N");
    line->add_flag("--even", options->even, "Evenly spaced directions: learn nothing");
    line->add_flag("--json", options->json, "One JSON object");
    return {line, [options] { makeCodebook(*options); },
            "vesk codebook traces.jsonl --symbols 24 -o directions.txt"};
}

}  // namespace Vesk::Tool
