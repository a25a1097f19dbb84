#ifndef VESK_VESKKIT_IO_INTERNAL_LINEREADER_H
#define VESK_VESKKIT_IO_INTERNAL_LINEREADER_H

#include <cstddef>
#include <fstream>
#include <istream>
#include <string>

namespace Vesk::Kit::internal {

/// The longest line that a reader of traces takes, in bytes.
inline constexpr std::size_t longestLine = std::size_t{16} << 20;

/// Reads text line by line: without line ends (LF or CR LF) and a byte order mark at the start.
class LineReader {
public:
    /// Opens a file. InputError "<path>: ..." for a directory and for what cannot be read.
    explicit LineReader(const std::string& path);

    /// Reads from a stream that outlives the reader; `name` stands for it in messages.
    LineReader(std::istream& stream, std::string name);

    LineReader(const LineReader&) = delete;
    LineReader& operator=(const LineReader&) = delete;

    /// Takes the next line; false at the end. InputError for one that is longer than `longestLine`,
    /// which is skipped, and where reading fails.
    bool next();

    const std::string& line() const { return text; }
    std::size_t number() const { return count; }  ///< of the line, from 1
    const std::string& source() const { return name; }

    /// "<source>:<line>", for messages.
    std::string place() const;

private:
    std::ifstream file;
    std::istream& in;
    std::string name;
    std::size_t count = 0;
    std::string text;
};

/// Whether the line holds white space alone.
bool isBlank(const std::string& line);

}  // namespace Vesk::Kit::internal

#endif
