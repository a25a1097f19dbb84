#ifndef VESK_TOOLS_CHECKS_H
#define VESK_TOOLS_CHECKS_H

#include "Suggestion.h"

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <string>
#include <system_error>
#include <type_traits>
#include <vector>

namespace Vesk::Tool {

/// Reads the whole of a text as a decimal number. False, with `value` undefined, where it is none.
template <class Number>
bool readNumber(const std::string& text, Number& value) {
    if constexpr (std::is_floating_point_v<Number>) {
        return CLI::detail::lexical_cast(text, value);
    } else {
        const char* end = text.data() + text.size();
        const auto [rest, problem] = std::from_chars(text.data(), end, value);
        return problem == std::errc{} && rest == end;
    }
}

/// Accepts the numbers from `least` to `most`, both included: to be used as a transformation, since
/// it takes leading zeros away, which the parser would read as octal.
template <class Number>
CLI::Validator numberIn(Number least, Number most) {
    const auto check = [least, most](std::string& text) -> std::string {
        Number value{};
        // A NaN compares with nothing.
        if (!readNumber(text, value) || !(value >= least && value <= most)) {
            return fmt::format("found {}, expected a number from {} to {}", text, least, most);
        }
        if constexpr (std::is_integral_v<Number>) text = std::to_string(value);
        return {};
    };
    return CLI::Validator(check, "");
}

/// Accepts the words given.
inline CLI::Validator oneOf(const std::vector<std::string>& words) {
    const auto check = [words](const std::string& text) -> std::string {
        const bool known = std::find(words.begin(), words.end(), text) != words.end();
        return known ? "" : notOneOf(text, words);
    };
    return CLI::Validator(check, "");
}

}  // namespace Vesk::Tool

#endif
