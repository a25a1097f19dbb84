#ifndef VESK_VESKKIT_INTERNAL_DECIMAL_H
#define VESK_VESKKIT_INTERNAL_DECIMAL_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace Vesk::Kit::internal {

/// The number that a decimal text as programs write it stands for: [-]digits[.digits][e[+-]digits]
/// of at most 15 digits, whose power of ten a double holds. Then one operation on exact numbers
/// gives the nearest one (W. D. Clinger, How to read floating point numbers accurately, 1990).
/// Nothing for any other text, be it a number or not. O(length).
inline std::optional<double> shortDecimal(std::string_view text) {
    constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                 1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr int largestPower = 22;
    constexpr std::size_t mostDigits = 15;
    const auto isDigit = [&text](std::size_t i) {
        return i < text.size() && text[i] >= '0' && text[i] <= '9';
    };

    std::size_t i = 0;
    const bool negative = i < text.size() && text[i] == '-';
    if (negative) ++i;
    std::int64_t digits = 0;
    std::size_t count = 0;
    const auto takeDigits = [&] {
        const std::size_t before = count;
        for (; isDigit(i) && count <= mostDigits; ++i, ++count)
            digits = 10 * digits + (text[i] - '0');
        return static_cast<int>(count - before);
    };
    if (takeDigits() == 0) return std::nullopt;
    int power = 0;
    if (i < text.size() && text[i] == '.') {
        ++i;
        power = -takeDigits();
        if (power == 0) return std::nullopt;
    }
    if (count > mostDigits) return std::nullopt;
    if (i < text.size() && text[i] == 'e') {
        ++i;
        const bool down = i < text.size() && text[i] == '-';
        if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
        int exponent = 0;
        const std::size_t begin = i;
        for (; isDigit(i) && i < begin + 3; ++i) exponent = 10 * exponent + (text[i] - '0');
        if (i == begin) return std::nullopt;
        power += down ? -exponent : exponent;
    }
    if (i != text.size() || power < -largestPower || power > largestPower) return std::nullopt;
    const auto exact = static_cast<double>(digits);
    const double value = power < 0 ? exact / powers[-power] : exact * powers[power];
    return negative ? -value : value;
}

}  // namespace Vesk::Kit::internal

#endif
