#ifndef VESK_VESKKIT_IO_CSVREADER_H
#define VESK_VESKKIT_IO_CSVREADER_H

#include <veskkit/io/TraceReader.h>

#include <cstddef>
#include <deque>
#include <istream>
#include <memory>
#include <string>
#include <vector>

namespace Vesk::Kit {

namespace internal {
class LineReader;
}

/// Reads traces from a table of positions, one a row (RFC 4180, but for line ends in quotation
/// marks): columns separated by commas, semicolons or tabs, whichever the first line has.
///
/// The first line names the columns, in any order and case: `x` and `y`; `trace` where the file
/// holds several traces, whose rows stand together; `gesture`, the label, which without a column of
/// that name may be called `label` or `class`; `user`. Other columns are ignored. Without `trace`
/// the whole file is one trace. Without a line of names, which is a first line of numbers, the
/// columns are x and y. Blank lines are skipped.
class CsvReader : public TraceReader {
public:
    /// Opens a file. InputError "<path>: ..." for a directory and for what cannot be read.
    explicit CsvReader(const std::string& path);

    /// Reads from a stream that outlives the reader; `name` stands for it in messages and traces.
    CsvReader(std::istream& stream, std::string name);

    ~CsvReader() override;

    /// O(bytes of the trace's rows).
    bool next(Trace& trace) override;

    /// Whether the table has no column `trace`. Known once the first trace has been read.
    bool holdsOneTrace() const { return trace == absent; }

    /// Whether the table has a column of labels. Known at the same time.
    bool namesGestures() const { return gesture != absent; }

private:
    static constexpr std::size_t absent = static_cast<std::size_t>(-1);

    /// What a row says about the trace that it belongs to.
    struct Key {
        std::string trace;
        std::string gesture;
        std::string user;
        bool operator==(const Key& other) const {
            return trace == other.trace && gesture == other.gesture && user == other.user;
        }
    };

    void readHead();
    [[noreturn]] void refuseColumn();
    bool readRow();
    std::size_t column(const char* name) const;
    std::size_t labelColumn() const;
    std::string field(std::size_t column) const;
    double number(std::size_t column, const char* name) const;
    void requireNew(const Key& key);

    std::unique_ptr<internal::LineReader> lines;
    char separator = ',';
    std::vector<std::string> names;   ///< of the columns, in lower case
    std::vector<std::string> fields;  ///< of the row at hand
    std::size_t x = 0;
    std::size_t y = 1;
    std::size_t trace = absent;
    std::size_t gesture = absent;
    std::size_t user = absent;
    bool started = false;
    bool rowAtHand = false;
    std::deque<Key> before;  ///< the latest traces: rows that come back to one are noticed
};

}  // namespace Vesk::Kit

#endif
