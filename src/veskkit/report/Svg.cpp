#include <veskkit/report/internal/Svg.h>

#include <cmath>
#include <utility>

namespace Vesk::Kit::internal {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

/// The length in bytes of the UTF-8 character that a text begins with; 0 where it is none. The
/// bounds of the second byte are those of the Unicode standard's table of well-formed sequences.
std::size_t characterAt(std::string_view text) {
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80) return 1;
    if (first < 0xC2 || first > 0xF4) return 0;
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (text.size() < length) return 0;
    const auto second = static_cast<unsigned char>(text[1]);
    const unsigned low = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned high = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (second < low || second > high) return 0;
    for (std::size_t i = 2; i < length; ++i) {
        if (!isContinuation(static_cast<unsigned char>(text[i]))) return 0;
    }
    return length;
}

/// What stands for one character of a text.
std::string_view escapedCharacter(std::string_view character) {
    const auto byte = static_cast<unsigned char>(character[0]);
    switch (byte) {
        case '&': return "&amp;";
        case '<': return "&lt;";
        case '>': return "&gt;";
        case '"': return "&quot;";
        case '\'': return "&#39;";
        default: break;
    }
    // U+FFFE and U+FFFF are no characters of XML.
    const bool none = character == "\xEF\xBF\xBE" || character == "\xEF\xBF\xBF";
    const bool control = byte < 0x20 || byte == 0x7F ||
                         (byte == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0);
    return none || control ? replacement : character;
}

}  // namespace

std::string escaped(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t length = characterAt(text);
        result += length == 0 ? replacement : escapedCharacter(text.substr(0, length));
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return result;
}

std::size_t lengthOf(std::string_view text) {
    std::size_t count = 0;
    for (; !text.empty(); ++count) {
        const std::size_t length = characterAt(text);
        text.remove_prefix(length == 0 ? 1 : length);
    }
    return count;
}

std::string shortened(std::string_view text, std::size_t longest) {
    if (lengthOf(text) <= longest) return std::string(text);
    std::size_t end = 0;
    for (std::size_t i = 1; i < longest; ++i) {
        const std::size_t length = characterAt(text.substr(end));
        end += length == 0 ? 1 : length;
    }
    return std::string(text.substr(0, end)) + "\xE2\x80\xA6";
}

std::string coordinate(double value) {
    if (!std::isfinite(value)) return "0";
    std::string text = fmt::format("{:.2f}", value);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    return text == "-0" ? "0" : text;
}

Svg::Svg(double width, double height, std::string_view title) {
    const std::string w = coordinate(width);
    const std::string h = coordinate(height);
    add(R"(<svg xmlns="http://www.w3.org/2000/svg" role="img" width="{}" height="{}" )"
        R"(viewBox="0 0 {} {}" font-family="system-ui,sans-serif" font-size="12" )"
        R"(fill="currentColor"><title>{}</title>)",
        w, h, w, h, escaped(title));
}

void Svg::label(double x, double y, std::string_view words, std::string_view attributes) {
    add(R"(<text x="{}" y="{}"{}{}>{}</text>)", coordinate(x), coordinate(y),
        attributes.empty() ? "" : " ", attributes, escaped(words));
}

void Svg::turnedLabel(double x, double y, int degrees, std::string_view words,
                      std::string_view attributes) {
    add(R"-(<text transform="translate({} {}) rotate({})"{}{}>{}</text>)-", coordinate(x),
        coordinate(y), -degrees, attributes.empty() ? "" : " ", attributes, escaped(words));
}

std::string Svg::take() { return std::move(text) + "</svg>"; }

}  // namespace Vesk::Kit::internal
