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

/// What stands between blanks.
std::vector<std::string> wordsOf(const std::string& line) {
    constexpr const char* blanks = " \t";
    std::vector<std::string> words;
    for (std::size_t end = 0; (end = line.find_first_not_of(blanks, end)) != std::string::npos;) {
        const std::size_t begin =
            std::exchange(end, std::min(line.find_first_of(blanks, end), line.size()));
        words.push_back(line.substr(begin, end - begin));
    }
    return words;
}

bool areNumbers(const std::vector<std::string>& texts) {
    double value = 0.0;
    return std::all_of(texts.begin(), texts.end(),
                       [&](const std::string& text) { return internal::readNumber(text, value); });
}

/// Whether a recognition model begins so: threshold, rotation or not, size of the codebook; and in
/// the second line the codebook.
bool beginModel(const std::vector<std::string>& first, const std::vector<std::string>& second) {
    return first.size() == 3 && areNumbers(first) && (first[1] == "0" || first[1] == "1") &&
           first[2] == std::to_string(second.size()) && areNumbers(second);
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
    if (fields.size() == 1) refuseColumn();
    if (areNumbers(fields)) {
        rowAtHand = true;
        return;
    }
    names.clear();
    for (const std::string& name : fields) names.push_back(lowerCase(name));
    x = column("x");
    y = column("y");
    trace = column("trace");
    gesture = labelColumn();
    user = column("user");
    for (const auto& [place, name] : {std::pair(x, "x"), std::pair(y, "y")}) {
        if (place != absent) continue;
        throw InputError(joined(lines->place(), ": found no column ", quoted(name), " among ",
                                fields.size(), ", expected a first line that names x and y"));
    }
    rowAtHand = readRow();
}

/// Says what a first line of one column may be instead of one of a table.
void CsvReader::refuseColumn() {
    const std::string place = lines->place();
    const std::vector<std::string> words = wordsOf(lowerCase(lines->line()));
    const auto named = [&](const char* name) {
        return std::find(words.begin(), words.end(), name) != words.end();
    };
    if (words.size() > 1 && (areNumbers(words) || (named("x") && named("y")))) {
        if (beginModel(words,
                       lines->next() ? wordsOf(lines->line()) : std::vector<std::string>())) {
            throw InputError(place + ": found what looks like a model file, expected traces");
        }
        throw InputError(place + ": found columns separated by blanks, expected commas, " +
                         "semicolons or tabs");
    }
    throw InputError(place + ": found 1 column, expected at least x and y");
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

/// The column of labels, by the first of its names that there is.
std::size_t CsvReader::labelColumn() const {
    const std::size_t own = column("gesture");
    if (own != absent) return own;
    const std::size_t label = column("label");
    const std::size_t other = column("class");
    if (label != absent && other != absent) {
        throw InputError(lines->place() + ": found columns \"label\" and \"class\", expected one " +
                         "of them or \"gesture\"");
    }
    return std::min(label, other);
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
