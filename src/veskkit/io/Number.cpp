#include <veskkit/io/internal/Number.h>

#include <charconv>
#include <cmath>
#include <locale>
#include <sstream>
#include <system_error>

namespace Vesk::Kit::internal {

bool readNumber(const std::string& text, double& value) {
    constexpr const char* blanks = " \t";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos) return false;
    const std::size_t sign = text[first] == '+' ? 1 : 0;
    const std::string digits =
        text.substr(first + sign, text.find_last_not_of(blanks) + 1 - first - sign);
    if (digits.empty() || (sign == 1 && digits[0] == '-')) return false;
#ifdef __cpp_lib_to_chars
    const char* end = digits.data() + digits.size();
    const auto [rest, problem] = std::from_chars(digits.data(), end, value);
    return problem == std::errc{} && rest == end && std::isfinite(value);
#else
    if (digits.find_first_not_of("+-.0123456789eE") != std::string::npos) return false;
    std::istringstream in(digits);
    in.imbue(std::locale::classic());
    in >> value;
    return !in.fail() && in.peek() == std::istringstream::traits_type::eof() &&
           std::isfinite(value);
#endif
}

}  // namespace Vesk::Kit::internal
