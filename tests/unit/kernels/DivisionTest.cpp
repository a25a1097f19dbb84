#include "OnEveryLevel.h"

#include <vesk/kernels/internal/Kernels.h>

#include <support/BitEqual.h>
#include <support/Random.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

// The kernels that divide many values by one compute some quotients without a division: they have
// to be those of the division, to the last bit.

namespace {

using namespace Vesk::Test;
using Vesk::Kernels::tileTimes;

/// States enough for the kernels of every width to find quotients without divisions.
constexpr int states = 2 * Vesk::Kernels::lanes;

/// Posteriors of alpha = x and beta = 1 are the quotients x / sum.
struct alignas(64) Tile {
    double x[tileTimes][states];
    double one[states];
    double sums[tileTimes];
    double quotients[tileTimes][states];

    void divide() {
        const double* alpha[tileTimes];
        const double* beta[tileTimes];
        for (int u = 0; u < tileTimes; ++u) {
            alpha[u] = x[u];
            beta[u] = one;
        }
        std::fill_n(one, states, 1.0);
        Vesk::Kernels::kernels().posteriors(alpha, beta, sums, tileTimes, quotients[0], states);
    }

    testing::AssertionResult isExact() const {
        for (int u = 0; u < tileTimes; ++u) {
            for (int i = 0; i < states; ++i) {
                const double expected = x[u][i] == 0.0 ? 0.0 : x[u][i] / sums[u];
                const bool bothZero = expected == 0.0 && quotients[u][i] == 0.0;
                if (bothZero || sameBits(expected, quotients[u][i])) continue;
                return bitEqual(expected, quotients[u][i])
                       << std::hexfloat << " for " << x[u][i] << " / " << sums[u];
            }
        }
        return testing::AssertionSuccess();
    }
};

double withExponent(double fraction, int exponent) { return std::ldexp(fraction, exponent); }

/// In [1, 2): any, or with few bits set, or nearly 1 or 2.
double randomFraction(Random& random) {
    constexpr std::uint64_t ones = (std::uint64_t{1} << 52) - 1;
    auto bits = static_cast<std::uint64_t>(random.unit() * 0x1p52);
    switch (random.integer(0, 4)) {
        case 0: bits &= ones << random.integer(0, 51); break;
        case 1: bits = static_cast<std::uint64_t>(random.integer(0, 3)); break;
        case 2: bits = ones - static_cast<std::uint64_t>(random.integer(0, 3)); break;
        default: break;
    }
    return 1.0 + static_cast<double>(bits) * 0x1p-52;
}

class Division : public OnEveryLevel {};

/// X with x = X * 2^-52 in [1, 2) and x / y halfway between two numbers but for a distance * 2^-106
/// at most (nothing comes nearer than 1), for y = Y * 2^-52 and Y odd: X * 2^bits = K * Y +
/// distance for an odd K of 54 bits. 0 where there is none.
std::uint64_t nearlyHalfway(std::uint64_t Y, int bits, std::int64_t distance) {
    std::uint64_t inverse = Y;  // modulo 2^64, by Newton's iteration: right in 3 bits, 6, 12 ...
    for (int n = 0; n < 6; ++n) inverse *= 2 - Y * inverse;
    constexpr std::uint64_t one = 1;
    std::uint64_t K = (0 - static_cast<std::uint64_t>(distance)) * inverse & ((one << bits) - 1);
    if (bits == 53) K |= one << 53;
    __extension__ using Wide = unsigned __int128;
    const auto X = static_cast<std::uint64_t>(
        (static_cast<Wide>(K) * Y + static_cast<Wide>(distance)) >> bits);
    return K >> 53 == 1 && X >> 52 == 1 ? X : 0;
}

TEST_P(Division, IsExactWhereQuotientsAreNearlyHalfway) {
    Random random(1);
    Tile tile;
    int hard = 0;
    for (int n = 0; n < 20000; ++n) {
        for (int u = 0; u < tileTimes; ++u) {
            const auto Y = static_cast<std::uint64_t>(randomFraction(random) * 0x1p52) | 1;
            tile.sums[u] = withExponent(static_cast<double>(Y), random.integer(-100, 0));
            for (double& x : tile.x[u]) {
                const std::uint64_t X =
                    nearlyHalfway(Y, random.integer(53, 54), 2 * random.integer(-4, 3) + 1);
                if (X != 0) ++hard;
                x = withExponent(static_cast<double>(X), random.integer(-100, 0));
            }
        }
        tile.divide();
        ASSERT_TRUE(tile.isExact());
    }
    EXPECT_GT(hard, 500000);
}

TEST_P(Division, IsExactAtTheEndsOfTheRange) {
    Random random(2);
    Tile tile;
    const auto anyExponent = [&] {
        constexpr int ends[] = {-1074, -1022, -970, -900, -800, -799, 0,
                                99,    100,   101,  900,  1022, 1023};
        const int end = ends[random.integer(0, static_cast<int>(std::size(ends)) - 1)];
        return std::clamp(end + random.integer(-3, 3), -1074, 1023);
    };
    for (int n = 0; n < 20000; ++n) {
        // One odd value makes a whole column go another way: most tiles have few.
        const double odd = random.chance(0.3) ? 0.5 : 0.02;
        for (int u = 0; u < tileTimes; ++u) {
            const int exponent = random.chance(odd) ? anyExponent() : random.integer(-20, 20);
            tile.sums[u] = withExponent(randomFraction(random), exponent);
            for (double& x : tile.x[u]) {
                x = withExponent(randomFraction(random),
                                 random.chance(odd) ? anyExponent() : random.integer(-799, 90));
                if (random.chance(odd)) x = -x;
            }
        }
        tile.divide();
        ASSERT_TRUE(tile.isExact());
    }
}

TEST_P(Division, IsExactWhereQuotientsAreSubnormal) {
    Random random(4);
    Tile tile;
    for (int n = 0; n < 20000; ++n) {
        for (int u = 0; u < tileTimes; ++u) {
            const double Y = random.integer(1, 1 << 30);
            const int exponent = random.integer(276, 300);
            tile.sums[u] = withExponent(Y, exponent);
            for (double& x : tile.x[u]) {
                // Odd: the quotient lies halfway between two subnormal numbers.
                const int halves = random.integer(1, 1 << 20);
                x = withExponent(Y * halves, exponent - 1075);
            }
        }
        tile.divide();
        ASSERT_TRUE(tile.isExact());
    }
}

TEST_P(Division, IsExactForZerosAndWhatIsNoNumber) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double odd[] = {0.0,  -0.0, infinity, -infinity, nan,
                              -1.0, 3.0,  5e-324,   -5e-324,   1.7976931348623157e308};
    Random random(3);
    Tile tile;
    for (int n = 0; n < 20000; ++n) {
        for (int u = 0; u < tileTimes; ++u) {
            const auto value = [&](double otherwise) {
                constexpr int last = static_cast<int>(std::size(odd)) - 1;
                return random.chance(0.05) ? odd[random.integer(0, last)] : otherwise;
            };
            tile.sums[u] = value(3.0);
            for (double& x : tile.x[u]) x = value(random.chance(0.3) ? 0.0 : 1.0);
        }
        tile.divide();
        ASSERT_TRUE(tile.isExact());
    }
}

TEST_P(Division, IsExactForASingleTime) {
    Tile tile = {};
    const double* alpha[] = {tile.x[0]};
    const double* beta[] = {tile.one};
    tile.x[0][0] = 1.0;
    tile.x[0][1] = 2.0;
    std::fill_n(tile.one, states, 1.0);
    tile.sums[0] = 3.0;
    std::fill_n(tile.quotients[1], states, 7.0);
    Vesk::Kernels::kernels().posteriors(alpha, beta, tile.sums, 1, tile.quotients[0], states);
    EXPECT_TRUE(bitEqual(1.0 / 3.0, tile.quotients[0][0]));
    EXPECT_TRUE(bitEqual(2.0 / 3.0, tile.quotients[0][1]));
    EXPECT_EQ(tile.quotients[1][0], 7.0);
}

VESK_ON_EVERY_LEVEL(Division);

}  // namespace
