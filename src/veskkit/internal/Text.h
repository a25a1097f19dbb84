#ifndef VESK_VESKKIT_INTERNAL_TEXT_H
#define VESK_VESKKIT_INTERNAL_TEXT_H

#include <cstddef>
#include <ios>
#include <locale>
#include <sstream>
#include <string>

namespace Vesk::Kit::internal {

/// The text on one line: control characters become '?', and what is long is cut.
inline std::string oneLine(std::string text, std::size_t longest = 4096) {
    for (char& c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f) c = '?';
    }
    if (text.size() > longest) {
        // Not inside a UTF-8 sequence, whose later bytes are 10xxxxxx.
        while (longest > 0 && (static_cast<unsigned char>(text[longest]) & 0xC0) == 0x80) --longest;
        text = text.substr(0, longest) + "...";
    }
    return text;
}

/// Something that was found, in quotation marks.
inline std::string quoted(const std::string& text) { return '"' + oneLine(text, 60) + '"'; }

/// The parts one after another; numbers in the classic locale with six significant digits. An
/// allocation that fails on the way is std::bad_alloc, never a shorter text.
template <typename... Parts>
std::string joined(const Parts&... parts) {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out.exceptions(std::ios_base::badbit);
    (out << ... << parts);
    return out.str();
}

}  // namespace Vesk::Kit::internal

#endif
