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

std::string counted(std::size_t count, std::string_view noun) {
    return std::to_string(count).append(" ").append(noun).append(count == 1 ? "" : "s");
}

}  // namespace Vesk::Tool
