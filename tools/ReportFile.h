#ifndef VESK_TOOLS_REPORTFILE_H
#define VESK_TOOLS_REPORTFILE_H

#include "CommandLine.h"

#include <veskkit/report/Page.h>
#include <veskkit/report/StrokePlot.h>

#include <string>

namespace Vesk::Tool {

/// The page that a subcommand may be told to make.
class ReportFile {
public:
    /// Adds --report, described by `help`, and --y-up; the object has to stay. Returns --report,
    /// for options that need it.
    CLI::Option* addTo(CLI::App& line, const std::string& help);

    bool wanted() const { return !path.empty(); }

    /// Refuses, before any work is done, a path that could not be written, and standard output,
    /// which has the other result: OutputError, UsageError.
    void probe() const;

    const Kit::StrokeStyle& style() const { return strokes; }

    /// Writes the page, whole or not at all. OutputError.
    void write(const Kit::Page& page) const;

    /// "report written to out.html", a line for people.
    std::string done() const;

private:
    std::string path;
    Kit::StrokeStyle strokes;
};

}  // namespace Vesk::Tool

#endif
