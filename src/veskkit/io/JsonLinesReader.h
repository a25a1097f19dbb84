#ifndef VESK_VESKKIT_IO_JSONLINESREADER_H
#define VESK_VESKKIT_IO_JSONLINESREADER_H

#include <veskkit/io/TraceReader.h>

#include <istream>
#include <memory>
#include <string>

namespace Vesk::Kit {

namespace internal {
class LineReader;
}

/// Reads traces from JSON Lines (UTF-8): one object a line with the keys
///
///     gesture   string, the label; optional
///     user      string, who drew it; optional
///     points    list of positions, each a list of two or more finite numbers, x and y first
///
/// Other keys are ignored. Blank lines, a byte order mark and carriage returns before line ends
/// are skipped. Memory is bounded by one line, a line by 16 MiB.
///
/// Every error is an InputError of one line, "<source>:<line>: found ..., expected ...", lines
/// counted from 1. The reader goes on with the next line when it is called again.
class JsonLinesReader : public TraceReader {
public:
    /// Opens a file. InputError "<path>: ..." for a directory and for what cannot be read.
    explicit JsonLinesReader(const std::string& path);

    /// Reads from a stream that outlives the reader; `name` stands for it in messages and traces.
    JsonLinesReader(std::istream& stream, std::string name);

    ~JsonLinesReader() override;

    /// O(bytes of the line).
    bool next(Trace& trace) override;

private:
    std::unique_ptr<internal::LineReader> lines;
};

}  // namespace Vesk::Kit

#endif
