#ifndef VESK_VESKKIT_TRACES_TRACE_H
#define VESK_VESKKIT_TRACES_TRACE_H

#include <cstddef>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// The positions of one stroke in the order of time. A position holds x at index 0 and y at
/// index 1; further numbers are ignored.
using Points = std::vector<std::vector<double>>;

/// One recorded stroke, what it shows, who drew it and where it was read.
struct Trace {
    Points points;         ///< positions in any unit; y grows whichever way the device has it
    std::string gesture;   ///< label; empty where not known
    std::string user;      ///< who drew it; empty where not known
    std::string source;    ///< file that it comes from; empty for a trace made in memory
    std::size_t line = 0;  ///< line in `source` where it begins, from 1; 0 where not known
};

/// Where a trace comes from, for messages: "file:line", "file", "line 7" or "trace".
std::string placeOf(const Trace& trace);

/// Throws InputError, naming the trace, for a position with fewer than two numbers or with a
/// non-finite x or y. A trace of no positions passes. O(positions).
void requireUsablePoints(const Trace& trace);

}  // namespace Vesk::Kit

#endif
