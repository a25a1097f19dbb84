#ifndef VESK_TOOLS_STANDARDSTREAMS_H
#define VESK_TOOLS_STANDARDSTREAMS_H

#include <string_view>

namespace Vesk::Tool {

/// Makes writing to a pipe that nobody reads an error rather than a signal.
void outliveClosedPipes();

/// Writes results. OutputError where standard output cannot take them, at the latest on flushing.
void writeResult(std::string_view text);
void flushResults();

/// One line on standard error: "vesk: <text>".
void tell(std::string_view text);

/// Whether standard error is a terminal that can redraw a line.
bool canRedraw();

}  // namespace Vesk::Tool

#endif
