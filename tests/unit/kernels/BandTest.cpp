#include "OnEveryLevel.h"

#include <vesk/kernels/internal/Kernels.h>

#include <support/BitEqual.h>
#include <support/Random.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// Steps of passes over a band, for every reach that has code of its own and some beyond.

namespace {

using namespace Vesk::Test;
using Vesk::Kernels::Band;
using Vesk::Kernels::kernels;
using Vesk::Kernels::lanes;

constexpr int margin = lanes;

/// P values between zeros.
struct Column {
    std::vector<double> values;

    explicit Column(int P) : values(static_cast<std::size_t>(P + 2 * margin), 0.0) {}
    double* data() { return values.data() + margin; }
    double& operator[](int i) { return values[static_cast<std::size_t>(margin + i)]; }
};

/// A model whose transitions lie in a band, and a column of a pass with its emissions.
struct Step {
    int N;
    int P;
    int lo;
    int hi;
    std::vector<std::vector<double>> a;
    std::vector<double> departing;
    std::vector<double> arriving;
    Column from;
    Column e;

    Step(Random& random, int N, int lo, int hi, Parameters kind)
        : N(N),
          P((N + lanes - 1) / lanes * lanes),
          lo(lo),
          hi(hi),
          departing(static_cast<std::size_t>((hi - lo + 1) * P), 0.0),
          arriving(departing),
          from(P),
          e(P) {
        for (int i = 0; i < N; ++i) a.push_back(randomRow(random, N, kind));
        for (int d = lo; d <= hi; ++d) {
            for (int i = std::max(0, -d); i < std::min(N, N - d); ++i) {
                departing[static_cast<std::size_t>((d - lo) * P + i)] = at(i, i + d);
                arriving[static_cast<std::size_t>((hi - d) * P + i + d)] = at(i, i + d);
            }
        }
        const std::vector<double> start = randomRow(random, N, kind);
        std::copy(start.begin(), start.end(), from.data());
        const std::vector<double> emissions = randomRow(random, N, kind);
        std::copy(emissions.begin(), emissions.end(), e.data());
    }

    double at(int i, int j) const {
        return a[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
    }
    Band band() const { return {lo, hi, departing.data(), arriving.data()}; }
    bool inBand(int i, int j) const { return j - i >= lo && j - i <= hi; }
};

/// Calls run(step) for models of all sizes up to a few vectors and bands of all sorts.
template <typename Run>
void overAllBands(Run run) {
    for (int N = 1; N <= 35; ++N) {
        for (int lo = -4; lo <= 0; ++lo) {
            for (int hi = 0; hi <= 5; ++hi) {
                for (std::uint64_t seed = 1; seed <= 8; ++seed) {
                    SCOPED_TRACE("N " + std::to_string(N) + ", band " + std::to_string(lo) +
                                 " .. " + std::to_string(hi) + ", seed " + std::to_string(seed));
                    Random random(seed);
                    // What is in the padding may come of an infinity: only without it, all numbers.
                    const auto kind = N % lanes == 0 && seed % 2 == 0
                                          ? Parameters::Odd
                                          : allParameterKinds[random.integer(0, 3)];
                    Step step(random, N, lo, hi, kind);
                    run(step);
                    if (testing::Test::HasFailure()) return;
                }
            }
        }
    }
}

class BandTest : public OnEveryLevel {
protected:
    /// The first N values, and nothing written around the P values.
    static void expectColumn(const std::vector<double>& expected, Column& to, int P) {
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_TRUE(bitEqual(expected[i], to[static_cast<int>(i)])) << "state " << i;
        }
        for (int i = 0; i < margin; ++i) {
            ASSERT_EQ(to[-1 - i], 0.0);
            ASSERT_EQ(to[P + i], 0.0);
        }
    }
};

TEST_P(BandTest, ForwardStepsAddTheTermsOfTheBandInOrder) {
    overAllBands([](Step& step) {
        std::vector<double> expected;
        for (int j = 0; j < step.N; ++j) {
            double sum = 0.0;
            for (int i = 0; i < step.N; ++i) {
                if (step.inBand(i, j)) sum += step.from[i] * step.at(i, j);
            }
            expected.push_back(sum * step.e[j]);
        }
        Column to(step.P);
        kernels().forwardBand(step.from.data(), step.band(), step.e.data(), to.data(), step.P);
        expectColumn(expected, to, step.P);
    });
}

TEST_P(BandTest, BackwardStepsAddTheTermsOfTheBandInOrder) {
    overAllBands([](Step& step) {
        std::vector<double> expected;
        for (int i = 0; i < step.N; ++i) {
            double sum = 0.0;
            for (int j = 0; j < step.N; ++j) {
                if (step.inBand(i, j)) sum += step.from[j] * step.at(i, j) * step.e[j];
            }
            expected.push_back(sum);
        }
        Column to(step.P);
        kernels().backwardBand(step.from.data(), step.band(), step.e.data(), to.data(), step.P);
        expectColumn(expected, to, step.P);
    });
}

VESK_ON_EVERY_LEVEL(BandTest);

}  // namespace
