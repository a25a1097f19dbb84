#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/io/JsonLinesReader.h>
#include <veskkit/io/internal/LineReader.h>

#include <nlohmann/json.hpp>

#include <utility>

namespace Vesk::Kit {

using internal::joined;
using nlohmann::json;

namespace {

/// Builds a trace from the parts of one JSON text as they are read, and throws at the first part
/// that has no place in one.
class TraceBuilder : public nlohmann::json_sax<json> {
public:
    TraceBuilder(Trace& result, std::string where, std::size_t bytes)
        : trace(result), place(std::move(where)), length(bytes) {}

    bool null() override { return scalar("null"); }
    bool boolean(bool value) override { return scalar(value ? "true" : "false"); }
    bool number_integer(number_integer_t value) override {
        return number(static_cast<double>(value));
    }
    bool number_unsigned(number_unsigned_t value) override {
        return number(static_cast<double>(value));
    }
    bool number_float(number_float_t value, const string_t&) override { return number(value); }
    bool binary(binary_t&) override { return scalar("binary data"); }

    bool string(string_t& value) override {
        if (level == Level::Object && field == Field::Gesture) {
            trace.gesture = value;
        } else if (level == Level::Object && field == Field::User) {
            trace.user = value;
        } else {
            return scalar("a string");
        }
        return true;
    }

    bool start_object(std::size_t) override {
        if (level != Level::Outside) return misplaced("an object");
        level = Level::Object;
        return true;
    }

    bool key(string_t& name) override {
        if (ignored > 0) return true;
        field = Field::Other;
        if (name == "gesture") field = Field::Gesture;
        if (name == "user") field = Field::User;
        if (name == "points") field = Field::Points;
        return true;
    }

    bool end_object() override {
        if (ignored > 0) {
            --ignored;
        } else {
            level = Level::Outside;
        }
        return true;
    }

    bool start_array(std::size_t) override {
        if (level == Level::Outside)
            fail("a list", "JSON Lines: an object a line, no list of them");
        if (field != Field::Points) return misplaced("a list");
        if (level == Level::Object) {
            level = Level::Points;
            trace.points.clear();
            sawPoints = true;
        } else if (level == Level::Points) {
            level = Level::Position;
            trace.points.emplace_back();
        } else {
            return misplaced("a list");
        }
        return true;
    }

    bool end_array() override {
        if (ignored > 0) {
            --ignored;
        } else if (level == Level::Position) {
            requireTwoNumbers();
            level = Level::Points;
        } else {
            level = Level::Object;
        }
        return true;
    }

    bool parse_error(std::size_t position, const std::string& token,
                     const nlohmann::detail::exception& error) override {
        constexpr int numberOutOfRange = 406;
        if (error.id == numberOutOfRange) {
            fail("the number " + internal::oneLine(token, 60), "a finite number");
        }
        if (position > length) fail("the end of the line", "the rest of the object");
        fail(joined("text that is not JSON at byte ", position, " of the line"), "an object");
    }

    void requirePoints() const {
        if (!sawPoints) fail("no key \"points\"", "a list of positions");
    }

private:
    enum class Level { Outside, Object, Points, Position };
    enum class Field { Gesture, User, Points, Other };

    bool number(double value) {
        if (level != Level::Position) return scalar("a number");
        trace.points.back().push_back(value);
        return true;
    }

    /// A value that carries nothing for a trace: fine under a key of no concern.
    bool scalar(const char* found) const {
        if (level == Level::Outside) fail(found, "an object");
        if (field == Field::Other) return true;
        if (level == Level::Position) {
            fail(joined(found, " as ", pointName(), '[', trace.points.back().size(), ']'),
                 "a finite number");
        }
        if (level == Level::Points) {
            fail(joined(found, " as points[", trace.points.size(), ']'),
                 "a list of at least 2 numbers");
        }
        if (field == Field::Points) fail(joined(found, " as \"points\""), "a list of positions");
        fail(joined(found, " as ", field == Field::User ? "\"user\"" : "\"gesture\""), "a string");
    }

    /// A list or an object where a trace has none.
    bool misplaced(const char* found) {
        scalar(found);
        ++ignored;
        return true;
    }

    void requireTwoNumbers() const {
        const std::size_t count = trace.points.back().size();
        if (count >= 2) return;
        fail(joined(count, count == 1 ? " number" : " numbers", " in ", pointName()), "at least 2");
    }

    std::string pointName() const { return joined("points[", trace.points.size() - 1, ']'); }

    [[noreturn]] void fail(const std::string& found, const std::string& expected) const {
        throw InputError(joined(place, ": found ", found, ", expected ", expected));
    }

    Trace& trace;
    std::string place;
    std::size_t length;  ///< of the text, in bytes
    Level level = Level::Outside;
    Field field = Field::Other;
    std::size_t ignored = 0;  ///< lists and objects open under a key of no concern
    bool sawPoints = false;
};

}  // namespace

JsonLinesReader::JsonLinesReader(const std::string& path)
    : lines(std::make_unique<internal::LineReader>(path)) {}

JsonLinesReader::JsonLinesReader(std::istream& stream, std::string name)
    : lines(std::make_unique<internal::LineReader>(stream, std::move(name))) {}

JsonLinesReader::~JsonLinesReader() = default;

bool JsonLinesReader::next(Trace& trace) {
    do {
        if (!lines->next()) return false;
    } while (internal::isBlank(lines->line()));
    const std::string& line = lines->line();
    Trace result;
    result.source = lines->source();
    result.line = lines->number();
    // The parser takes a zero byte for the end.
    if (const std::size_t zero = line.find('\0'); zero != std::string::npos) {
        throw InputError(joined(lines->place(), ": found text that is not JSON at byte ", zero + 1,
                                " of the line, expected an object"));
    }
    TraceBuilder builder(result, lines->place(), line.size());
    json::sax_parse(line, &builder);
    builder.requirePoints();
    trace = std::move(result);
    return true;
}

}  // namespace Vesk::Kit
