#ifndef VESK_VESKKIT_IO_TRACETEXT_H
#define VESK_VESKKIT_IO_TRACETEXT_H

#include <veskkit/traces/Trace.h>

#include <cstddef>
#include <string>

namespace Vesk::Kit {

// Traces as docs/formats.md has them. Numbers have as many digits as it takes to read them back to
// the bit. InputError, naming the trace, for unusable positions; labels and users that are not
// UTF-8 get replacement characters.

/// The trace as a line of JSON, its end included; without a label or a user where there is none.
std::string jsonLine(const Trace& trace);

/// The first line of a table of traces.
std::string tableHeader();

/// The trace's rows in a table; its number tells it from its neighbours. InputError for a label or
/// a user with a line break.
std::string tableRows(const Trace& trace, std::size_t number);

}  // namespace Vesk::Kit

#endif
