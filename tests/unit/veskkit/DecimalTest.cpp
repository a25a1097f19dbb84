#include <support/BitEqual.h>
#include <support/Random.h>
#include <veskkit/internal/Decimal.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <locale>
#include <sstream>
#include <string>

namespace {

using Vesk::Kit::internal::shortDecimal;
using Vesk::Test::bitEqual;
using Vesk::Test::Random;

/// What a stream makes of the whole text.
double asStream(const std::string& text) {
    std::istringstream in(text);
    in.imbue(std::locale::classic());
    double value = 0.0;
    in >> value;
    EXPECT_TRUE(!in.fail() && in.peek() == std::istringstream::traits_type::eof()) << text;
    return value;
}

std::string written(double value, int digits) {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out.precision(digits);
    out << value;
    return out.str();
}

TEST(DecimalTest, WhatAProgramWritesIsReadAsByAStream) {
    int taken = 0;
    for (std::uint64_t seed = 1; seed <= 50000; ++seed) {
        Random random(seed);
        const double value = (random.chance(0.3) ? -1.0 : 1.0) *
                             std::ldexp(1.0 + random.integer(0, 1 << 30) / std::ldexp(1.0, 30),
                                        random.integer(-60, 60));
        const std::string text = written(value, random.integer(1, 17));
        const auto found = shortDecimal(text);
        if (!found) continue;
        ++taken;
        ASSERT_TRUE(bitEqual(asStream(text), *found)) << text;
    }
    EXPECT_GT(taken, 30000);
}

TEST(DecimalTest, TheNumbersOfAModelAreTaken) {
    for (const char* text : {"0", "-0", "1", "0.5", "0.00123457", "1.23457e-05", "1e-22", "-4e+07",
                             "360", "123456789012345", "0.00000000000001", "1e+22", "00.50"}) {
        const auto found = shortDecimal(text);
        ASSERT_TRUE(found.has_value()) << text;
        EXPECT_TRUE(bitEqual(asStream(text), *found)) << text;
    }
}

TEST(DecimalTest, EverythingElseIsLeft) {
    for (const char* text : {"",
                             "-",
                             "+1",
                             ".5",
                             "1.",
                             "1.e5",
                             "e5",
                             "1e",
                             "1e+",
                             "1e1234",
                             "1e23",
                             "1e-23",
                             "0x10",
                             "inf",
                             "nan",
                             "1 ",
                             " 1",
                             "1,5",
                             "1.2.3",
                             "--1",
                             "1234567890123456",
                             "0.1234567890123456",
                             "1e5.0",
                             "1E5",
                             "12a",
                             "9999999999999999999999999999999999999999"}) {
        EXPECT_FALSE(shortDecimal(text).has_value()) << text;
    }
}

}  // namespace
