#ifndef VESK_BASE_INTERNAL_INPUTFILE_H
#define VESK_BASE_INTERNAL_INPUTFILE_H

#include <cstdint>
#include <fstream>
#include <istream>
#include <string>

namespace Vesk::ML::internal {

/// A text file being read as `istream >>` does, in the classic locale, and the bounds on what it
/// may make its reader allocate.
///
/// A regular file may declare tables of as many values as it has bytes, and four times that in
/// all; where that is less, 2^20 and 2^24. What is not a regular file counts as having no size,
/// and ends after 2^28 bytes. A file that cannot be read (a directory) looks empty.
class InputFile {
public:
    /// A null path cannot be opened.
    explicit InputFile(const char* path);

    bool isOpen() const { return buffer.is_open(); }

    /// As `istream >> value`: a failed conversion stores 0 (or the nearest limit), and after any
    /// failure values stay as they are. Returns whether the stream is still good for more.
    template <typename Number>
    bool read(Number& value) {
        return static_cast<bool>(in >> value);
    }
    bool read(double& value) {
        if (in.good() && buffer.takeNumber(value)) return true;
        return static_cast<bool>(in >> value);
    }

    /// Reads `count` values; stops at the first that fails.
    void readValues(double* values, std::uint64_t count);

    /// One white-space-delimited word; false where there is none.
    bool readWord(std::string& word);

    /// One line without its end, empty at the end of the file. False where reading itself fails, as
    /// it does for a directory.
    bool readLine(std::string& line);
    bool atEnd() const { return in.eof(); }

    /// Allows for `copies` tables of rows x cols values, before the first is made. std::bad_alloc
    /// where that is beyond the bounds above or beyond 32-bit positions.
    void claimTable(std::uint64_t rows, std::uint64_t cols, std::uint64_t copies = 1);

    /// The same for a list that grows while it is read, before it holds `length` values.
    void requireLength(std::uint64_t length) const;

private:
    class Buffer : public std::filebuf {
    public:
        /// A number as it is usually written, with white space behind it; what `istream >>` would
        /// make of it, without the stream's detours. Takes nothing where there is anything else,
        /// or where the text goes on beyond what has been read.
        bool takeNumber(double& value);

        std::uint64_t bytesLeft = 0;
        bool unreadable = false;

    protected:
        int_type underflow() override;
    };

    Buffer buffer;
    std::istream in;
    std::uint64_t tableLimit;
    std::uint64_t valuesLeft;
};

}  // namespace Vesk::ML::internal

#endif
