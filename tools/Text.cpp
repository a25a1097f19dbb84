#include "Text.h"

namespace Vesk::Tool {

std::string printable(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x20 || code == 0x7f) c = '?';
    }
    return result;
}

std::string wrapped(std::string line, std::size_t indent) {
    constexpr std::size_t widest = 100;
    std::string result;
    while (line.size() > widest) {
        // Not among the blanks that it begins with.
        const std::size_t blank = line.rfind(' ', widest);
        if (blank == std::string::npos || line.find_first_not_of(' ') > blank) break;
        result += line.substr(0, blank) + '\n';
        line = std::string(indent, ' ') + line.substr(blank + 1);
    }
    return result + line;
}

std::string counted(std::size_t count, std::string_view noun) {
    return std::to_string(count).append(" ").append(noun).append(count == 1 ? "" : "s");
}

}  // namespace Vesk::Tool
