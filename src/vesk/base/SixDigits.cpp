#include <vesk/base/internal/SixDigits.h>

#include <algorithm>
#include <cmath>

namespace Vesk::ML::internal {

namespace {

/// Powers of ten, all of which a double holds exactly.
constexpr double powers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                             1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int figures = 6;
constexpr double leastDigits = 1e5;
constexpr double beyondDigits = 1e6;
constexpr double leastMagnitude = 1e-16;  ///< its six digits are before the point at 1e21 times
constexpr double beyondMagnitude = 1e6;
constexpr int leastFixed = -4;  ///< smaller numbers are written with a power of ten

/// digits * 10^(exponent - 5), 1e5 <= digits < 1e6.
struct Decimal {
    int digits;
    int exponent;
};

/// A number as two of at most 26 bits: products of halves are exact.
struct Halves {
    explicit Halves(double x) {
        constexpr double splitter = 134217729.0;  // 2^27 + 1
        const double scaled = splitter * x;
        high = scaled - (scaled - x);
        low = x - high;
    }

    double high;
    double low;
};

/// x * y as a double, and what rounding took off, exactly (T. J. Dekker, A floating-point technique
/// for extending the available precision, 1971).
struct Product {
    Product(double first, double second) : x(first), y(second), rounded(first * second) {}

    double rest() const {
        const Halves a(x);
        const Halves b(y);
        return ((a.high * b.high - rounded) + a.high * b.low + a.low * b.high) + a.low * b.low;
    }

    /// Whether the exact product is below a double.
    bool isBelow(double value) const {
        return rounded < value || (rounded == value && rest() < 0.0);
    }

    /// The integer that is nearest to the exact product, of two the even one. Below 2^51 a product
    /// on one side of a half is rounded to that side, or to the half itself.
    double nearestInteger() const {
        const double whole = std::floor(rounded);
        const double part = rounded - whole;
        double up = part - 0.5;
        if (up == 0.0) up = rest();
        if (up == 0.0) up = std::fmod(whole, 2.0) - 0.5;
        return up > 0.0 ? whole + 1.0 : whole;
    }

    double x;
    double y;
    double rounded;
};

/// Of a magnitude in the range above.
Decimal decimalOf(double magnitude) {
    int exponent = 0;
    while (magnitude >= powers[exponent + 1]) ++exponent;
    while (exponent <= 0 && magnitude * powers[-exponent] < 1.0) --exponent;
    // What is just below a power of ten may have been rounded to it.
    const auto scaled = [&] { return Product(magnitude, powers[figures - 1 - exponent]); };
    if (scaled().isBelow(leastDigits)) --exponent;
    const double digits = scaled().nearestInteger();
    if (digits >= beyondDigits) return {static_cast<int>(leastDigits), exponent + 1};
    return {static_cast<int>(digits), exponent};
}

}  // namespace

char* putSixDigits(char* to, double value) {
    const double magnitude = std::abs(value);
    // Written so that what is no number is refused.
    if (!(magnitude >= leastMagnitude && magnitude < beyondMagnitude) && value != 0.0)
        return nullptr;
    if (std::signbit(value)) *to++ = '-';
    if (value == 0.0) {
        *to++ = '0';
        return to;
    }
    const Decimal decimal = decimalOf(magnitude);
    char digits[figures];
    int kept = 0;
    for (int rest = decimal.digits, i = figures - 1; i >= 0; --i, rest /= 10) {
        digits[i] = static_cast<char>('0' + rest % 10);
        if (kept == 0 && digits[i] != '0') kept = i + 1;
    }
    const bool fixed = decimal.exponent >= leastFixed;
    const int before = fixed ? decimal.exponent + 1 : 1;
    if (before <= 0) *to++ = '0';
    for (int i = 0; i < before; ++i) *to++ = digits[i];
    if (kept > before) *to++ = '.';
    for (int i = before; i < 0; ++i) *to++ = '0';
    for (int i = std::max(before, 0); i < kept; ++i) *to++ = digits[i];
    if (!fixed) {
        for (const char c : {'e', '-'}) *to++ = c;
        *to++ = static_cast<char>('0' + -decimal.exponent / 10);
        *to++ = static_cast<char>('0' + -decimal.exponent % 10);
    }
    return to;
}

}  // namespace Vesk::ML::internal
