#include <veskkit/io/TraceText.h>

#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>

#include <nlohmann/json.hpp>

namespace Vesk::Kit {

namespace {

using Json = nlohmann::json;

/// A single value as JSON.
template <typename Value>
std::string dumped(const Value& value) {
    return Json(value).dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// A field of a table, in quotation marks where it needs them: with blanks, which readers trim, and
/// separators of any kind, since they find out which one is used.
std::string field(const Trace& trace, const std::string& text) {
    if (text.find_first_of("\r\n") != std::string::npos) {
        throw InputError(internal::joined(placeOf(trace), ": found ", internal::quoted(text),
                                          ", expected no line break for a table"));
    }
    if (text.find_first_of("\",;\t ") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

}  // namespace

std::string jsonLine(const Trace& trace) {
    requireUsablePoints(trace);
    // Put together here: a JSON list cannot be destroyed where memory is short.
    std::string line = "{";
    if (!trace.gesture.empty()) line += "\"gesture\":" + dumped(trace.gesture) + ',';
    if (!trace.user.empty()) line += "\"user\":" + dumped(trace.user) + ',';
    line += "\"points\":[";
    for (const std::vector<double>& point : trace.points) {
        line += line.back() == '[' ? "[" : ",[";
        for (const double number : point) {
            if (line.back() != '[') line += ',';
            line += dumped(number);
        }
        line += ']';
    }
    return line + "]}\n";
}

std::string tableHeader() { return "gesture,user,trace,x,y\n"; }

std::string tableRows(const Trace& trace, std::size_t number) {
    requireUsablePoints(trace);
    const std::string start = field(trace, trace.gesture) + ',' + field(trace, trace.user) + ',' +
                              std::to_string(number) + ',';
    std::string rows;
    for (const std::vector<double>& point : trace.points) {
        rows += start + dumped(point[0]) + ',' + dumped(point[1]) + '\n';
    }
    return rows;
}

}  // namespace Vesk::Kit
