#include "Checks.h"
#include "Command.h"
#include "OutputFile.h"
#include "ProgressBar.h"
#include "StandardStreams.h"
#include "Text.h"
#include "TraceInput.h"

#include <veskkit/io/TraceText.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <filesystem>
#include <memory>
#include <string>

namespace Vesk::Tool {

namespace {

struct Options {
    TraceInput input;
    std::string to;
    bool flipY = false;
};

/// Whether a table is to be written: as asked, or else as the file's name ends.
bool toTable(const Options& options, const std::string& output) {
    if (!options.to.empty()) return options.to == "csv";
    return std::filesystem::path(output).extension() == ".csv";
}

void convert(Options& options) {
    const std::string output = options.input.takeLastPath();
    OutputFile::probe(output);
    const bool table = toTable(options, output);
    OutputFile file(output);
    if (table) file.write(Kit::tableHeader());
    std::size_t traces = 0;
    {
        ProgressBar bar("converting", "traces");
        options.input.forEach([&](const Kit::Trace& trace) {
            bar.count(++traces);
            Kit::Trace turned = trace;
            if (options.flipY) {
                for (std::vector<double>& point : turned.points) {
                    if (point.size() > 1) point[1] = -point[1];
                }
            }
            file.write(table ? Kit::tableRows(turned, traces) : Kit::jsonLine(turned));
        });
    }
    options.input.finish();
    file.commit();
    if (isStandard(output)) return;
    writeResult(fmt::format("{} written to {}\n", counted(traces, "trace"), printable(output)));
}

}  // namespace

Command addConvert(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* line =
        program.add_subcommand("convert", "Write traces of any format as JSON Lines or as a table");
    options->input.addReadingTo(*line,
                                "Files of traces, or folders of them, and at last the file to "
                                "write; - is standard input or output");
    line->add_option("--to", options->to, "What to write [by the file's name, else jsonl]")
        ->check(oneOf({"jsonl", "csv"}))
        ->type_name("jsonl|csv");
    line->add_flag("--flip-y", options->flipY, "Negate y");
    return {line, [options] { convert(*options); },
            "vesk convert strokes.xml strokes.jsonl --label-from file"};
}

}  // namespace Vesk::Tool
