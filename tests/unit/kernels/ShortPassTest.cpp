#include "OnEveryLevel.h"

#include <vesk/kernels/internal/Kernels.h>

#include <support/BitEqual.h>
#include <support/Random.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

// Passes in registers: each of their steps is one of `forwardBand`, and `normalise` where the sums
// are asked for.

namespace {

using namespace Vesk::Test;
using Vesk::Kernels::Band;
using Vesk::Kernels::kernels;
using Vesk::Kernels::lanes;
using Vesk::Kernels::ShortPass;
using Vesk::Kernels::shortReach;

using Column = std::vector<double>;

constexpr double untouched = 7.0;
constexpr double infinity = std::numeric_limits<double>::infinity();
const double nan = std::numeric_limits<double>::quiet_NaN();

/// A left-right model of N states with jumps of `reach` at the most, and what it is shown.
struct Steps {
    int N;
    int reach;
    Column arriving;
    Column start;
    std::vector<Column> e;

    /// Every value outside of the model is 0, as it is where columns are laid out.
    template <typename Value>
    Steps(int N, int reach, int steps, Value value)
        : N(N),
          reach(reach),
          arriving(static_cast<std::size_t>((reach + 1) * lanes), 0.0),
          start(column(value)) {
        for (int d = 0; d <= reach; ++d) {
            for (int j = d; j < N; ++j) {
                arriving[static_cast<std::size_t>((reach - d) * lanes + j)] = value();
            }
        }
        for (int u = 0; u < steps; ++u) e.push_back(column(value));
    }

    template <typename Value>
    Column column(Value value) const {
        Column result(lanes, 0.0);
        for (int i = 0; i < N; ++i) result[static_cast<std::size_t>(i)] = value();
        return result;
    }

    int count() const { return static_cast<int>(e.size()); }
    Band band() const { return {0, reach, nullptr, arriving.data()}; }
};

/// The N values of each column from the one before the steps on, and the sums of those after it.
struct Outcome {
    std::vector<Column> columns;
    Column sums;
};

Outcome byBandKernels(const Steps& steps, bool scaled) {
    Outcome outcome{{Column(steps.start.begin(), steps.start.begin() + steps.N)}, {}};
    Column from(3 * lanes, 0.0);
    std::copy(steps.start.begin(), steps.start.end(), from.begin() + lanes);
    for (const Column& e : steps.e) {
        Column to(3 * lanes, 0.0);
        double* values = to.data() + lanes;
        kernels().forwardBand(from.data() + lanes, steps.band(), e.data(), values, lanes);
        if (scaled) outcome.sums.push_back(kernels().normalise(values, steps.N, lanes));
        outcome.columns.emplace_back(values, values + steps.N);
        from = to;
    }
    return outcome;
}

/// In place there is only the last column to be seen. Fails where anything but the columns after
/// the steps has been written.
Outcome inRegisters(const Steps& steps, bool scaled, std::ptrdiff_t pitch) {
    std::vector<const double*> e;
    for (const Column& column : steps.e) e.push_back(column.data());
    std::vector<double> memory(static_cast<std::size_t>(pitch * steps.count() + lanes), untouched);
    std::copy(steps.start.begin(), steps.start.end(), memory.begin());
    Outcome outcome;
    outcome.sums.resize(scaled ? e.size() : 0);
    kernels().forwardShort(steps.band(),
                           {e.data(), memory.data(), pitch, scaled ? outcome.sums.data() : nullptr},
                           steps.count());

    const int first = pitch == 0 ? steps.count() : 0;
    for (int t = first; t <= steps.count(); ++t) {
        const auto begin = memory.begin() + pitch * t;
        outcome.columns.emplace_back(begin, begin + steps.N);
        for (std::ptrdiff_t i = lanes; t < steps.count() && i < pitch; ++i) {
            EXPECT_EQ(begin[i], untouched) << "behind column " << t << ", at " << i;
        }
    }
    return outcome;
}

testing::AssertionResult sameSteps(const Steps& steps, bool scaled, std::ptrdiff_t pitch) {
    const Outcome expected = byBandKernels(steps, scaled);
    const Outcome actual = inRegisters(steps, scaled, pitch);
    const std::size_t missing = expected.columns.size() - actual.columns.size();
    for (std::size_t t = missing; t < expected.columns.size(); ++t) {
        const auto same = bitEqual(expected.columns[t], actual.columns[t - missing]);
        if (!same) return testing::AssertionFailure() << "column " << t << ": " << same.message();
    }
    const auto same = bitEqual(expected.sums, actual.sums);
    if (!same) return testing::AssertionFailure() << "sums: " << same.message();
    return testing::AssertionSuccess();
}

/// Calls run(random, reach, steps, scaled, pitch) with `seeds` seeds for every reach, few and many
/// steps, with sums and without, columns in place and any distance apart.
template <typename Run>
void overAllShapes(int seeds, Run run) {
    for (int reach = 0; reach <= shortReach; ++reach) {
        for (int steps = 1; steps <= 6; ++steps) {
            for (const bool scaled : {false, true}) {
                for (const std::ptrdiff_t pitch : {0, 8, 9, 16, 24, 31}) {
                    for (int seed = 1; seed <= seeds; ++seed) {
                        SCOPED_TRACE("reach " + std::to_string(reach) + ", " +
                                     std::to_string(steps) + " steps, " +
                                     (scaled ? "scaled" : "not scaled") + ", pitch " +
                                     std::to_string(pitch) + ", seed " + std::to_string(seed));
                        Random random(static_cast<std::uint64_t>(seed));
                        run(random, reach, steps, scaled, pitch);
                        if (testing::Test::HasFailure()) return;
                    }
                }
            }
        }
    }
}

class ShortPassTest : public OnEveryLevel {};

TEST_P(ShortPassTest, TwoStatesByHand) {
    // a = (1/2 1/2; 0 1), from (1, 0): (1/2, 1/2), times b: (1/4, 1/8), of sum 3/8.
    // From (2/3, 1/3): (1/3, 1/3 + 1/3), times b: (1/3, 0).
    double arriving[2 * lanes] = {0.0, 0.5, 0, 0, 0, 0, 0, 0, 0.5, 1.0};
    const double first[lanes] = {0.5, 0.25};
    const double second[lanes] = {1.0, 0.0};
    const double* e[] = {first, second};
    double columns[3 * lanes] = {1.0};
    double sums[2] = {};
    kernels().forwardShort(Band{0, 1, nullptr, arriving}, {e, columns, lanes, sums}, 2);
    EXPECT_TRUE(bitEqual(0.375, sums[0]));
    EXPECT_TRUE(bitEqual(2.0 / 3.0, columns[lanes]));
    EXPECT_TRUE(bitEqual(1.0 / 3.0, columns[lanes + 1]));
    EXPECT_TRUE(bitEqual(1.0 / 3.0, sums[1]));
    EXPECT_TRUE(bitEqual(1.0, columns[2 * lanes]));
    EXPECT_TRUE(bitEqual(0.0, columns[2 * lanes + 1]));
}

TEST_P(ShortPassTest, StepsOfFewerStatesThanLanesAreThoseOfTheBand) {
    overAllShapes(40, [](Random& random, int reach, int steps, bool scaled, std::ptrdiff_t pitch) {
        const double zeros = random.chance(0.5) ? 0.0 : 0.4;
        const auto value = [&] { return random.chance(zeros) ? 0.0 : random.unit(); };
        const Steps pass(random.integer(1, lanes), reach, steps, value);
        ASSERT_TRUE(sameSteps(pass, scaled, pitch)) << "N " << pass.N;
    });
}

TEST_P(ShortPassTest, StepsOverNumbersOfEveryKindAreThoseOfTheBand) {
    const double odd[] = {0.0,     -0.0,  -1.0,   -0.25,    5e-324,    -5e-324, 3e-310,
                          -2e-309, 1e300, 1e-200, infinity, -infinity, nan,     2.0};
    overAllShapes(40, [&](Random& random, int reach, int steps, bool scaled, std::ptrdiff_t pitch) {
        // One infinity soon makes everything NaN: most passes have numbers of a few kinds.
        const double oddOnes = random.chance(0.3) ? 0.5 : 0.1;
        const int kinds = random.chance(0.6) ? 9 : 13;
        const auto value = [&] {
            if (random.chance(oddOnes)) return odd[random.integer(0, kinds)];
            return random.unit();
        };
        const Steps pass(lanes, reach, steps, value);
        ASSERT_TRUE(sameSteps(pass, scaled, pitch));
    });
}

TEST_P(ShortPassTest, ZerosOfBothSignsAreThoseOfTheBand) {
    int negative = 0;
    overAllShapes(40, [&](Random& random, int reach, int steps, bool scaled, std::ptrdiff_t pitch) {
        const auto value = [&] {
            const double values[] = {0.0, -0.0, 1.0, -1.0};
            return values[random.integer(0, 3)];
        };
        const Steps pass(lanes, reach, steps, value);
        ASSERT_TRUE(sameSteps(pass, scaled, pitch));
        const Outcome outcome = inRegisters(pass, scaled, lanes);
        for (std::size_t t = 1; t < outcome.columns.size(); ++t) {
            for (const double x : outcome.columns[t]) {
                if (x != 0.0 || !std::signbit(x)) continue;
                ASSERT_FALSE(scaled) << "a negative zero was divided";
                ++negative;
            }
        }
    });
    EXPECT_GT(negative, 1000);
}

VESK_ON_EVERY_LEVEL(ShortPassTest);

}  // namespace
