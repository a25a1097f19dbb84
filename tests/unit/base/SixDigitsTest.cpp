#include <support/Random.h>
#include <vesk/base/internal/SixDigits.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

namespace {

using Vesk::ML::internal::longestSixDigits;
using Vesk::ML::internal::putSixDigits;
using Vesk::Test::Random;

std::string asStream(double value) {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << value;
    return out.str();
}

testing::AssertionResult writtenAsByAStream(double value) {
    char text[longestSixDigits];
    const char* const end = putSixDigits(text, value);
    if (end == nullptr) return testing::AssertionFailure() << asStream(value) << " is left";
    const std::string written(text, static_cast<std::size_t>(end - text));
    if (written == asStream(value)) return testing::AssertionSuccess();
    return testing::AssertionFailure() << written << ", a stream writes " << asStream(value);
}

/// The value and its neighbours, above and below zero.
void expectAround(double value) {
    for (const double near : {value, std::nextafter(value, 0.0), std::nextafter(value, 1e9)}) {
        ASSERT_TRUE(writtenAsByAStream(near));
        ASSERT_TRUE(writtenAsByAStream(-near));
    }
}

TEST(SixDigitsTest, NumbersOfEverySizeAreWrittenAsByAStream) {
    for (std::uint64_t seed = 1; seed <= 30000; ++seed) {
        Random random(seed);
        const double value = std::ldexp(1.0 + random.unit(), random.integer(-53, 18));
        ASSERT_TRUE(writtenAsByAStream(random.chance(0.3) ? -value : value)) << seed;
    }
}

TEST(SixDigitsTest, PowersOfTenAndWhatIsRoundedToThem) {
    for (int exponent = -15; exponent <= 5; ++exponent) {
        const double power = std::pow(10.0, exponent);
        expectAround(power);
        for (const double share : {0.9999994, 0.9999995, 0.9999996, 1.000004, 1.000005, 1.000006})
            expectAround(share * power);
    }
}

/// (2n + 1) / 2 in units of the sixth digit: m / 2^(j + 1) is such a half for odd m of a magnitude
/// that has j digits after the point.
TEST(SixDigitsTest, OfTwoNearestTheEvenOne) {
    int halves = 0;
    for (std::uint64_t seed = 1; seed <= 6000; ++seed) {
        Random random(seed);
        const int j = random.integer(0, 6);
        const double least = std::pow(10.0, 5 - j);
        const double unit = std::ldexp(1.0, -(j + 1));
        const double value = std::floor(least * (1.0 + 8.9 * random.unit()) / unit) * unit;
        if (std::fmod(value * std::pow(10.0, j), 1.0) == 0.5) ++halves;
        expectAround(value);
    }
    EXPECT_GT(halves, 1500);
}

/// Halves of the sixth digit that no double is: their products may be rounded to halves.
TEST(SixDigitsTest, OfTwoTheNearerOneHoweverNear) {
    for (std::uint64_t seed = 1; seed <= 6000; ++seed) {
        Random random(seed);
        const double half = random.integer(100000, 999999) + 0.5;
        expectAround(half / std::pow(10.0, random.integer(1, 20)));
    }
}

TEST(SixDigitsTest, WhatModelsAreMadeOf) {
    for (const double value :
         {0.0, -0.0, 1.0, 0.5, 11.25, 348.75, 0.001, 0.0001, 0.00001234567, 1e-15})
        EXPECT_TRUE(writtenAsByAStream(value));
}

TEST(SixDigitsTest, TheRestIsLeftToTheStream) {
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double value : {1e6, 999999.5e5, 9e-17, 5e-324, 1e300, infinity,
                               std::numeric_limits<double>::quiet_NaN()}) {
        char text[longestSixDigits];
        EXPECT_EQ(putSixDigits(text, value), nullptr) << value;
        EXPECT_EQ(putSixDigits(text, -value), nullptr) << value;
    }
}

}  // namespace
