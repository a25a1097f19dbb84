#include "OnEveryLevel.h"

#include <vesk/kernels/internal/Kernels.h>

#include <support/BitEqual.h>
#include <support/Random.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <vector>

// Sums of joint posteriors, of which some are beyond the range where quotients need no division.

namespace {

using namespace Vesk::Test;
using Vesk::Kernels::Band;
using Vesk::Kernels::kernels;
using Vesk::Kernels::tileTimes;

constexpr int margin = 8;
constexpr int P = 24;

/// Values of one time: zeros on both sides.
struct alignas(64) Column {
    double values[margin + P + margin] = {};
    double* data() { return values + margin; }
};

struct Tile {
    Column alpha[tileTimes];
    Column e[tileTimes];
    Column beta[tileTimes];
    double sums[tileTimes];
    const double* alphas[tileTimes];
    const double* es[tileTimes];
    const double* betas[tileTimes];

    Tile(Random& random, int N) {
        for (int u = 0; u < tileTimes; ++u) {
            for (int i = 0; i < N; ++i) {
                alpha[u].data()[i] = random.chance(0.1) ? 0.0 : random.unit();
                e[u].data()[i] = random.unit();
                beta[u].data()[i] = random.unit();
            }
            sums[u] = 1.0 + random.unit();
            alphas[u] = alpha[u].data();
            es[u] = e[u].data();
            betas[u] = beta[u].data();
        }
        // Out of the range: an overflow, a subnormal product, a divisor too small.
        while (random.chance(0.6)) {
            const int u = random.integer(0, tileTimes - 1);
            const int i = random.integer(0, N - 1);
            switch (random.integer(0, 2)) {
                case 0:
                    alpha[u].data()[i] = 1e300;
                    sums[u] = 1e-10;
                    break;
                case 1: beta[u].data()[i] = 1e-310; break;
                default: sums[u] = 1e-270; break;
            }
        }
    }

    double term(int u, int i, int j, double a) {
        const double product = alpha[u].data()[i] * a * e[u].data()[j] * beta[u].data()[j];
        return product == 0.0 ? 0.0 : product / sums[u];
    }
};

class Joint : public OnEveryLevel {};

TEST_P(Joint, DenseSumsAreThoseOfDivisions) {
    Random random(1);
    for (int n = 0; n < 2000; ++n) {
        const int N = random.integer(1, P);
        const int times = random.integer(1, tileTimes);
        Tile tile(random, N);
        std::vector<double> a(static_cast<std::size_t>(N * P));
        for (int i = 0; i < N; ++i) {
            for (int j = 0; j < N; ++j) a[static_cast<std::size_t>(P * i + j)] = random.unit();
        }
        std::vector<double> sums(a.size(), 0.125);
        kernels().addJoint(tile.alphas, tile.es, tile.betas, tile.sums, times, a.data(), P,
                           sums.data(), N, P);
        for (int i = 0; i < N; ++i) {
            for (int j = 0; j < N; ++j) {
                const auto at = static_cast<std::size_t>(P * i + j);
                double expected = 0.125;
                for (int u = 0; u < times; ++u) expected += tile.term(u, i, j, a[at]);
                ASSERT_TRUE(bitEqual(expected, sums[at])) << "N " << N << ": " << i << ", " << j;
            }
        }
    }
}

TEST_P(Joint, SumsOfABandAreThoseOfDivisions) {
    Random random(2);
    for (int n = 0; n < 2000; ++n) {
        const int N = random.integer(1, P);
        const int rows =
            (N + Vesk::Kernels::lanes - 1) / Vesk::Kernels::lanes * Vesk::Kernels::lanes;
        const int times = random.integer(1, tileTimes);
        Tile tile(random, N);
        const int lo = -random.integer(0, 2);
        const int hi = random.integer(0, 3);
        std::vector<double> a(static_cast<std::size_t>((hi - lo + 1) * rows));
        for (int d = lo; d <= hi; ++d) {
            for (int i = std::max(0, -d); i < std::min(N, N - d); ++i) {
                a[static_cast<std::size_t>((d - lo) * rows + i)] = random.unit();
            }
        }
        std::vector<double> sums(a.size(), 0.125);
        kernels().addJointBand(tile.alphas, tile.es, tile.betas, tile.sums, times,
                               Band{lo, hi, a.data(), nullptr}, sums.data(), rows);
        for (int d = lo; d <= hi; ++d) {
            for (int i = std::max(0, -d); i < std::min(N, N - d); ++i) {
                const auto at = static_cast<std::size_t>((d - lo) * rows + i);
                double expected = 0.125;
                for (int u = 0; u < times; ++u) expected += tile.term(u, i, i + d, a[at]);
                ASSERT_TRUE(bitEqual(expected, sums[at])) << "N " << N << ": " << i << " by " << d;
            }
        }
    }
}

VESK_ON_EVERY_LEVEL(Joint);

}  // namespace
