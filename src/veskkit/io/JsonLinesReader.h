#ifndef VESK_VESKKIT_IO_JSONLINESREADER_H
#define VESK_VESKKIT_IO_JSONLINESREADER_H

#include <veskkit/traces/Trace.h>

#include <cstddef>
#include <fstream>
#include <istream>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// Reads traces from JSON Lines (UTF-8): one object a line with the keys
///
///     gesture   string, the label; optional
///     user      string, who drew it; optional
///     points    list of positions, each a list of two or more finite numbers, x and y first
///
/// Other keys are ignored. Blank lines, a byte order mark and carriage returns before line ends
/// are skipped. Memory is bounded by one line, a line by `longestLine`.
///
/// Every error is an InputError of one line, "<source>:<line>: found ..., expected ...", lines
/// counted from 1. The reader goes on with the next line when it is called again.
class JsonLinesReader {
public:
    static constexpr std::size_t longestLine = std::size_t{16} << 20;  ///< bytes

    /// Opens a file. InputError "<path>: ..." for a directory and for what cannot be read.
    explicit JsonLinesReader(const std::string& path);

    /// Reads from a stream that outlives the reader; `name` stands for it in messages and traces.
    JsonLinesReader(std::istream& stream, std::string name);

    JsonLinesReader(const JsonLinesReader&) = delete;
    JsonLinesReader& operator=(const JsonLinesReader&) = delete;

    /// Reads the next trace into `trace`; false at the end. O(line).
    bool next(Trace& trace);

private:
    bool nextLine();

    std::ifstream file;
    std::istream& in;
    std::string source;
    std::size_t lineNumber = 0;
    std::string line;
};

/// All traces of a file.
std::vector<Trace> readTraces(const std::string& path);

}  // namespace Vesk::Kit

#endif
