// Where the values of a matrix are.
#ifndef VESK_KERNELS_INTERNAL_STRUCTUREKERNELS_H
#define VESK_KERNELS_INTERNAL_STRUCTUREKERNELS_H

#include <vesk/kernels/internal/Vector.h>

#include <cstddef>
#include <cstdint>

namespace Vesk::Kernels {
namespace {

/// Whether row[begin .. end-1], of N values, all equal `value`.
inline bool allEqual(const double* row, int begin, int end, int N, double value) {
    if (N < L) {
        for (int j = begin; j < end; ++j) {
            if (row[j] != value) return false;
        }
        return true;
    }
    const V expected = splat(value);
    Index different{};
    int j = begin;
    for (; j + L <= end; j += L) different |= load(row + j) != expected;
    if (j < end) {
        // The last vector may begin before them, or go on behind them.
        const int start = j < N - L ? j : N - L;
        const Index index = positions() + splatIndex(start);
        Index among = index >= splatIndex(j);
        among &= index < splatIndex(end);
        different |= (load(row + start) != expected) & among;
    }
    return noneSet(different);
}

#if VESK_LANES == 1
void diagonals(const double* a, std::ptrdiff_t stride, int N, int* lo, int* hi) {
    for (int i = 0; i < N; ++i) {
        // Only what lies outside of the diagonals found so far has to be looked at.
        const double* row = a + stride * i;
        int first = 0;
        while (first < N && first - i < *lo && row[first] == 0.0) ++first;
        int last = N - 1;
        while (last >= 0 && last - i > *hi && row[last] == 0.0) --last;
        if (first < N && first - i < *lo) *lo = first - i;
        if (last >= 0 && last - i > *hi) *hi = last - i;
    }
}
#else
/// Bit j of the result: whether row[j] is not zero; for `count` values, 64 at the most.
inline std::uint64_t nonzero(const double* row, int count) {
    const auto bits = [row](int j) { return mask(load(row + j) != V{}) << j; };
    std::uint64_t set = 0;
    int j = 0;
    for (; j + L <= count; j += L) set |= bits(j);
    if (j < count && count >= L) return set | bits(count - L);
    for (; j < count; ++j) set |= std::uint64_t{row[j] != 0.0} << j;
    return set;
}

void diagonals(const double* a, std::ptrdiff_t stride, int N, int* lo, int* hi) {
    constexpr int most = 64;
    for (int i = 0; i < N; ++i) {
        for (int j = 0; j < N; j += most) {
            const int count = N - j < most ? N - j : most;
            // Only what lies outside of the diagonals found so far has to be looked at.
            if (j - i >= *lo && j + count - 1 - i <= *hi) continue;
            const std::uint64_t set = nonzero(a + stride * i + j, count);
            if (set == 0) continue;
            const int first = j + __builtin_ctzll(set) - i;
            const int last = j + most - 1 - __builtin_clzll(set) - i;
            if (first < *lo) *lo = first;
            if (last > *hi) *hi = last;
        }
    }
}
#endif

bool rowsAreEven(const double* a, std::ptrdiff_t stride, int N) {
    for (int i = 0; i < N; ++i) {
        const double* row = a + stride * i;
        const double value = row[i == 0 ? 1 : 0];
        if (!allEqual(row, 0, i, N, value) || !allEqual(row, i + 1, N, N, value)) return false;
    }
    return true;
}

void gather(const double* from, std::ptrdiff_t stride, int count, double* to) {
    int i = 0;
    for (; i + L <= count; i += L, from += stride * L) {
#if VESK_LANES == 1
        to[i] = *from;
#else
        V v;
        for (int l = 0; l < L; ++l) v[l] = from[stride * l];
        store(to + i, v);
#endif
    }
    for (; i < count; ++i, from += stride) to[i] = *from;
}

void transposeTable(const double* from, std::ptrdiff_t stride, int rows, int columns, double* to,
                    std::ptrdiff_t pitch) {
    if (rows < L || columns < L) {
        for (int k = 0; k < columns; ++k) gather(from + k, stride, rows, to + pitch * k);
        return;
    }
    for (int row = 0; row < rows; row += L) {
        // The last blocks may repeat some of the ones before.
        const int i = row + L <= rows ? row : rows - L;
        for (int column = 0; column < columns; column += L) {
            const int k = column + L <= columns ? column : columns - L;
            V block[L];
            unrolled<L>([&](int v) { block[v] = load(from + stride * (i + v) + k); });
            transposeBlock(block);
            unrolled<L>([&](int v) { store(to + pitch * (k + v) + i, block[v]); });
        }
    }
}

}  // namespace
}  // namespace Vesk::Kernels

#endif
