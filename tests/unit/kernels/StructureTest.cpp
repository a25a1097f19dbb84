#include "OnEveryLevel.h"

#include <vesk/kernels/internal/Kernels.h>

#include <support/Random.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

// Where the values of a matrix are, for every size and distance between rows that the kernels'
// vectors can meet.

namespace {

using namespace Vesk::Test;
using Vesk::Kernels::kernels;

/// N rows `stride` apart, in memory of exactly that size; what lies between the rows is 7.
struct Rows {
    int N;
    std::ptrdiff_t stride;
    std::vector<double> values;

    Rows(int n, std::ptrdiff_t distance, double value)
        : N(n), stride(distance), values(static_cast<std::size_t>(stride * (N - 1) + N), 7.0) {
        for (int i = 0; i < N; ++i) std::fill_n(values.data() + stride * i, N, value);
    }

    double& at(int i, int j) { return values[static_cast<std::size_t>(stride * i + j)]; }
};

class Structure : public OnEveryLevel {};

TEST_P(Structure, DiagonalsReachToTheOutermostValues) {
    Random random(1);
    for (int n = 0; n < 20000; ++n) {
        const int N = random.integer(1, 40);
        Rows a(N, N + random.integer(0, 9), random.chance(0.5) ? 0.0 : -0.0);
        int lo = N;
        int hi = -N;
        for (int k = random.integer(0, 3); k > 0; --k) {
            const int i = random.integer(0, N - 1);
            const int j = random.integer(0, N - 1);
            a.at(i, j) = random.chance(0.2) ? std::numeric_limits<double>::quiet_NaN() : 1e-300;
            lo = std::min(lo, j - i);
            hi = std::max(hi, j - i);
        }
        int foundLo = N;
        int foundHi = -N;
        kernels().diagonals(a.values.data(), a.stride, N, &foundLo, &foundHi);
        ASSERT_EQ(foundLo, lo) << "N " << N << ", stride " << a.stride;
        ASSERT_EQ(foundHi, hi) << "N " << N << ", stride " << a.stride;
    }
}

TEST_P(Structure, DiagonalsOfLargeMatricesAreWidened) {
    for (int seed = 1; seed <= 1500; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(static_cast<std::uint64_t>(seed));
        // Around the multiples of 64 most of all.
        const int N = random.chance(0.5) ? random.integer(41, 300)
                                         : 64 * random.integer(1, 4) + random.integer(-2, 2);
        Rows a(N, N + random.integer(0, 9), random.chance(0.5) ? 0.0 : -0.0);
        int lo = N;
        int hi = -N;
        if (random.chance(0.3)) {
            lo = random.integer(-N, N);
            hi = random.integer(-N, N);
        }
        int foundLo = lo;
        int foundHi = hi;
        for (int k = random.integer(0, 4); k > 0; --k) {
            const int i = random.integer(0, N - 1);
            int j = random.integer(0, N - 1);
            if (random.chance(0.3)) j = std::clamp(64 * random.integer(0, N / 64), 1, N) - 1;
            if (random.chance(0.3)) j = std::min(64 * random.integer(0, N / 64), N - 1);
            a.at(i, j) = random.chance(0.2) ? std::numeric_limits<double>::quiet_NaN() : -1e-300;
            lo = std::min(lo, j - i);
            hi = std::max(hi, j - i);
        }
        kernels().diagonals(a.values.data(), a.stride, N, &foundLo, &foundHi);
        ASSERT_EQ(foundLo, lo) << "N " << N << ", stride " << a.stride;
        ASSERT_EQ(foundHi, hi) << "N " << N << ", stride " << a.stride;
    }
}

TEST_P(Structure, DiagonalsAreWidenedByOne) {
    for (const int N : {1, 3, 7, 8, 9, 15, 64, 65, 130}) {
        Rows a(N, N + 3, 0.0);
        for (int i = 0; i < N; ++i) {
            for (int j = 0; j < N; ++j) {
                a.at(i, j) = 1.0;
                int lo = j - i + 1;
                int hi = N;
                kernels().diagonals(a.values.data(), a.stride, N, &lo, &hi);
                ASSERT_EQ(lo, j - i) << "N " << N << ", at " << i << ", " << j;
                ASSERT_EQ(hi, N) << "N " << N << ", at " << i << ", " << j;
                lo = -N;
                hi = j - i - 1;
                kernels().diagonals(a.values.data(), a.stride, N, &lo, &hi);
                ASSERT_EQ(lo, -N) << "N " << N << ", at " << i << ", " << j;
                ASSERT_EQ(hi, j - i) << "N " << N << ", at " << i << ", " << j;
                a.at(i, j) = 0.0;
            }
        }
    }
}

TEST_P(Structure, RowsAreEvenWhereAllValuesOffTheDiagonalAreEqual) {
    Random random(2);
    for (int n = 0; n < 20000; ++n) {
        const int N = random.integer(2, 40);
        Rows a(N, N + random.integer(0, 40), 0.25);
        for (int i = 0; i < N; ++i) {
            const double value = random.unit();
            for (int j = 0; j < N; ++j) a.at(i, j) = i == j ? random.unit() : value;
        }
        ASSERT_TRUE(kernels().rowsAreEven(a.values.data(), a.stride, N)) << "N " << N;
        const int i = random.integer(0, N - 1);
        const int j = random.integer(0, N - 1);
        a.at(i, j) += 0.5;
        // Of two values, one off the diagonal equals itself.
        const bool even = i == j || N == 2;
        ASSERT_EQ(kernels().rowsAreEven(a.values.data(), a.stride, N), even)
            << "N " << N << ", stride " << a.stride << ", at " << i << ", " << j;
    }
}

TEST_P(Structure, RowsOfNothingButNaNAreNotEven) {
    const Rows a(16, 16, std::numeric_limits<double>::quiet_NaN());
    EXPECT_FALSE(kernels().rowsAreEven(a.values.data(), a.stride, 16));
}

TEST_P(Structure, GatheredValuesAreAStrideApart) {
    for (int count = 0; count <= 40; ++count) {
        for (const std::ptrdiff_t stride : {1, 2, 17}) {
            std::vector<double> from(static_cast<std::size_t>(stride) * 40);
            for (std::size_t i = 0; i < from.size(); ++i) from[i] = static_cast<double>(i);
            std::vector<double> to(41, -1.0);
            kernels().gather(from.data(), stride, count, to.data());
            for (int i = 0; i < 41; ++i) {
                const double expected = i < count ? static_cast<double>(i * stride) : -1.0;
                ASSERT_EQ(to[static_cast<std::size_t>(i)], expected) << count << " by " << stride;
            }
        }
    }
}

/// Both tables in memory of exactly the size that they need.
void transposes(int rows, int columns, std::ptrdiff_t stride, std::ptrdiff_t pitch) {
    SCOPED_TRACE(std::to_string(rows) + " x " + std::to_string(columns) + ", stride " +
                 std::to_string(stride) + ", pitch " + std::to_string(pitch));
    std::vector<double> from(static_cast<std::size_t>(stride * (rows - 1) + columns));
    for (std::size_t n = 0; n < from.size(); ++n) from[n] = static_cast<double>(n);
    std::vector<double> to(static_cast<std::size_t>(pitch * (columns - 1) + rows), -7.0);
    kernels().transposeTable(from.data(), stride, rows, columns, to.data(), pitch);
    for (std::size_t n = 0; n < to.size(); ++n) {
        const auto k = static_cast<std::ptrdiff_t>(n) / pitch;
        const auto i = static_cast<std::ptrdiff_t>(n) % pitch;
        const double expected = i < rows ? static_cast<double>(stride * i + k) : -7.0;
        ASSERT_EQ(to[n], expected) << "row " << i << ", column " << k;
    }
}

TEST_P(Structure, TablesAreTransposed) {
    const auto withGaps = [](int rows, int columns) {
        for (const int between : {0, 1, 5, 8}) {
            for (const int after : {0, 3, 8, 11}) {
                transposes(rows, columns, columns + between, rows + after);
                if (HasFatalFailure()) return;
            }
        }
    };
    for (int rows = 1; rows <= 20; ++rows) {
        for (int columns = 1; columns <= 20; ++columns) {
            withGaps(rows, columns);
            if (HasFatalFailure()) return;
        }
    }
    for (const int size : {31, 32, 33, 64, 67, 100}) {
        for (const int other : {1, 3, 7, 8, 9, 63, 65, 130}) {
            withGaps(size, other);
            withGaps(other, size);
            if (HasFatalFailure()) return;
        }
    }
}

VESK_ON_EVERY_LEVEL(Structure);

}  // namespace
