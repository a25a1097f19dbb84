#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/io/CsvReader.h>
#include <veskkit/io/internal/LineReader.h>
#include <veskkit/io/internal/Number.h>

#include <algorithm>
#include <utility>

namespace Vesk::Kit {

using internal::joined;
using internal::quoted;

namespace {

/// How many traces back a row may not return to.
constexpr std::size_t remembered = 100;

std::string lowerCase(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") + 1 - first);
}

/// The separator of a line: of those that occur outside of quotation marks the most frequent one.
char separatorOf(const std::string& line) {
    constexpr char candidates[] = {',', ';', '\t'};
    std::size_t counts[3] = {};
    bool inQuotes = false;
    for (const char c : line) {
        if (c == '"') inQuotes = !inQuotes;
        const auto* found = std::find(std::begin(candidates), std::end(candidates), c);
        if (!inQuotes && found != std::end(candidates)) ++counts[found - candidates];
    }
    return candidates[std::max_element(std::begin(counts), std::end(counts)) - counts];
}

/// The fields of a line; false for quotation marks that are not closed.
bool splitFields(const std::string& line, char separator, std::vector<std::string>& fields) {
    fields.assign(1, {});
    bool quotedField = false;
    bool inQuotes = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (inQuotes) {
            if (c != '"') {
                fields.back() += c;
            } else if (i + 1 < line.size() && line[i + 1] == '"') {
                fields.back() += line[++i];
            } else {
                inQuotes = false;
            }
        } else if (c == '"' && trimmed(fields.back()).empty() && !quotedField) {
            fields.back().clear();
            inQuotes = quotedField = true;
        } else if (c == separator) {
            if (!quotedField) fields.back() = trimmed(fields.back());
            fields.emplace_back();
            quotedField = false;
        } else if (!quotedField || (c != ' ' && c != '\t')) {
            fields.back() += c;
        }
    }
    if (!quotedField) fields.back() = trimmed(fields.back());
    return !inQuotes;
}

}  // namespace

CsvReader::CsvReader(const std::string& path)
    : lines(std::make_unique<internal::LineReader>(path)) {}

CsvReader::CsvReader(std::istream& stream, std::string name)
    : lines(std::make_unique<internal::LineReader>(stream, std::move(name))) {}

CsvReader::~CsvReader() = default;

bool CsvReader::next(Trace& result) {
    if (!started) readHead();
    // Stays so where something is refused: the table ends there.
    if (!std::exchange(rowAtHand, false)) return false;
    Trace read;
    read.source = lines->source();
    read.line = lines->number();
    const Key key{field(trace), field(gesture), field(user)};
    requireNew(key);
    read.gesture = key.gesture;
    read.user = key.user;
    do {
        const Key own{field(trace), field(gesture), field(user)};
        if (!(own == key)) {
            if (trace != absent) {
                rowAtHand = true;
                break;
            }
            throw InputError(joined(lines->place(), ": found a row of gesture ",
                                    quoted(own.gesture), " and user ", quoted(own.user),
                                    " in the file of one trace, expected a column \"trace\""));
        }
        read.points.push_back({number(x, "x"), number(y, "y")});
    } while (readRow());
    result = std::move(read);
    return true;
}

/// Takes the first line: the names of the columns, or already a row.
void CsvReader::readHead() {
    started = true;
    do {
        if (!lines->next()) return;
    } while (internal::isBlank(lines->line()));
    separator = separatorOf(lines->line());
    if (!splitFields(lines->line(), separator, fields)) {
        throw InputError(lines->place() + ": found a quotation mark that is not closed, expected " +
                         "the names of columns");
    }
    double value = 0.0;
    const bool isRow = std::all_of(fields.begin(), fields.end(), [&](const std::string& text) {
        return internal::readNumber(text, value);
    });
    if (isRow) {
        if (fields.size() < 2) {
            throw InputError(lines->place() + ": found 1 column, expected at least x and y");
        }
        rowAtHand = true;
        return;
    }
    names.clear();
    for (const std::string& name : fields) names.push_back(lowerCase(name));
    x = column("x");
    y = column("y");
    trace = column("trace");
    gesture = column("gesture");
    user = column("user");
    for (const auto& [place, name] : {std::pair(x, "x"), std::pair(y, "y")}) {
        if (place != absent) continue;
        throw InputError(joined(lines->place(), ": found no column ", quoted(name), " among ",
                                fields.size(), ", expected a first line that names x and y"));
    }
    rowAtHand = readRow();
}

bool CsvReader::readRow() {
    do {
        if (!lines->next()) return false;
    } while (internal::isBlank(lines->line()));
    if (!splitFields(lines->line(), separator, fields)) {
        throw InputError(lines->place() + ": found a quotation mark that is not closed, expected " +
                         "a row of the table");
    }
    if (!names.empty() && fields.size() != names.size()) {
        throw InputError(joined(lines->place(), ": found ", fields.size(),
                                fields.size() == 1 ? " field" : " fields", ", expected ",
                                names.size(), " as in the first line"));
    }
    return true;
}

std::size_t CsvReader::column(const char* name) const {
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) return absent;
    if (std::find(found + 1, names.end(), name) != names.end()) {
        throw InputError(
            joined(lines->place(), ": found two columns ", quoted(name), ", expected one"));
    }
    return static_cast<std::size_t>(found - names.begin());
}

std::string CsvReader::field(std::size_t column) const {
    return column < fields.size() ? fields[column] : std::string();
}

double CsvReader::number(std::size_t column, const char* name) const {
    double value = 0.0;
    if (column < fields.size() && internal::readNumber(fields[column], value)) return value;
    const std::string found = column < fields.size() ? quoted(fields[column]) : "no field";
    throw InputError(
        joined(lines->place(), ": found ", found, " as ", name, ", expected a finite number"));
}

void CsvReader::requireNew(const Key& key) {
    if (trace == absent) return;
    if (std::find(before.begin(), before.end(), key) != before.end()) {
        throw InputError(joined(lines->place(), ": found a row of trace ", quoted(key.trace),
                                " after rows of others, expected the rows of a trace together"));
    }
    before.push_back(key);
    if (before.size() > remembered) before.pop_front();
}

}  // namespace Vesk::Kit
