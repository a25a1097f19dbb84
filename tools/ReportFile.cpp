#include "ReportFile.h"

#include "Command.h"
#include "OutputFile.h"
#include "Text.h"

#include <vesk/Version.h>

#include <CLI/CLI.hpp>

namespace Vesk::Tool {

CLI::Option* ReportFile::addTo(CLI::App& line, const std::string& help) {
    CLI::Option* report = line.add_option("--report", path, help)->type_name("HTML");
    line.add_flag_function(
            "--y-up", [this](std::int64_t) { strokes.y = Kit::YAxis::Up; },
            "The model's y axis grows upwards: draw strokes and directions so [downwards, as on a "
            "screen]")
        ->needs(report);
    return report;
}

void ReportFile::probe() const {
    if (!wanted()) return;
    if (isStandard(path)) {
        throw UsageError("--report: found -, expected a file: standard output has the text");
    }
    OutputFile::probe(path);
}

void ReportFile::write(const Kit::Page& page) const {
    OutputFile output(path);
    output.write(page.html("vesk " VESK_VERSION));
    output.commit();
}

std::string ReportFile::done() const { return "report written to " + printable(path) + '\n'; }

}  // namespace Vesk::Tool
