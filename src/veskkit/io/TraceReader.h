#ifndef VESK_VESKKIT_IO_TRACEREADER_H
#define VESK_VESKKIT_IO_TRACEREADER_H

#include <veskkit/traces/Trace.h>

namespace Vesk::Kit {

/// Reads traces one after the other, from one source. Holds one trace at a time, unless the
/// reader says otherwise.
class TraceReader {
public:
    TraceReader() = default;
    TraceReader(const TraceReader&) = delete;
    TraceReader& operator=(const TraceReader&) = delete;
    virtual ~TraceReader() = default;

    /// Reads the next trace into `trace`; false at the end. InputError of one line,
    /// "<source>:<line>: found ..., expected ...", lines counted from 1. The next call
    /// goes on behind what was refused; a table ends there.
    virtual bool next(Trace& trace) = 0;
};

}  // namespace Vesk::Kit

#endif
