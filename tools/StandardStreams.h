#ifndef VESK_TOOLS_STANDARDSTREAMS_H
#define VESK_TOOLS_STANDARDSTREAMS_H

#include <veskkit/Error.h>

#include <string_view>

namespace Vesk::Tool {

/// Whoever reads standard output has seen enough: nothing to tell anybody.
class ReaderGone : public Kit::OutputError {
public:
    using OutputError::OutputError;
};

/// Makes writing to a pipe that nobody reads, or beyond the largest size of a file, an error rather
/// than a signal.
void outliveFailedWrites();

/// Writes results. OutputError where standard output cannot take them, at the latest on flushing;
/// ReaderGone where it is a pipe that nobody reads any more.
void writeResult(std::string_view text);
void flushResults();

/// From now on standard error gets problems only: no notes, no progress.
void beQuiet();

/// One line on standard error: "vesk: <text>".
void tell(std::string_view text);

/// The same for what is no problem; nothing where quiet.
void note(std::string_view text);

/// Lines on standard error that would be results if standard output took something else; nothing
/// where quiet.
void writeNotes(std::string_view text);

/// Whether standard error is a terminal that can redraw a line, and may.
bool canRedraw();

/// Whether standard output is a terminal, or a pipe, at whose end there may be one.
bool resultsMayBeSeen();

}  // namespace Vesk::Tool

#endif
