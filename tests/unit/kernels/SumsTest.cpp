#include "OnEveryLevel.h"

#include <vesk/kernels/internal/Kernels.h>

#include <support/BitEqual.h>
#include <support/Random.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

// Sums of columns by symbol.

namespace {

using namespace Vesk::Test;
using Vesk::Kernels::kernels;
using Vesk::Kernels::lanes;
using Vesk::Kernels::tileTimes;

class Sums : public OnEveryLevel {};

TEST_P(Sums, EachColumnIsAddedToTheSumsOfItsOwnSymbol) {
    constexpr int outside[] = {-1, -2, std::numeric_limits<int>::min(),
                               std::numeric_limits<int>::max()};
    for (int seed = 1; seed <= 4000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(static_cast<std::uint64_t>(seed));
        const int P = lanes * random.integer(1, 5);
        const int M = random.integer(1, 9);
        const int times = random.integer(0, tileTimes);
        std::vector<int> o;
        for (int u = 0; u < times; ++u) {
            o.push_back(random.chance(0.2) ? outside[random.integer(0, 3)]
                                           : random.integer(0, M + 1));
        }
        const std::vector<double> values = randomRow(random, P * times, Parameters::Odd);
        std::vector<double> sums = randomRow(random, P * M, Parameters::Odd);

        std::vector<double> expected = sums;
        for (int u = 0; u < times; ++u) {
            const int k = o[static_cast<std::size_t>(u)];
            for (int i = 0; i < P && k >= 0 && k < M; ++i) {
                expected[static_cast<std::size_t>(k * P + i)] +=
                    values[static_cast<std::size_t>(u * P + i)];
            }
        }
        kernels().addToOwn(values.data(), o.data(), times, sums.data(), M, P);
        ASSERT_TRUE(bitEqual(expected, sums))
            << "P " << P << ", M " << M << ", o " << testing::PrintToString(o);
    }
}

VESK_ON_EVERY_LEVEL(Sums);

}  // namespace
