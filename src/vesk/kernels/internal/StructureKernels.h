// Where the values of a matrix are.
#ifndef VESK_KERNELS_INTERNAL_STRUCTUREKERNELS_H
#define VESK_KERNELS_INTERNAL_STRUCTUREKERNELS_H

#include <vesk/kernels/internal/Vector.h>

#include <cstddef>

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

void diagonals(const double* a, std::ptrdiff_t stride, int N, int* lo, int* hi) {
    for (int i = 0; i < N; ++i) {
        // Only what lies outside of the diagonals found so far has to be looked at.
        const double* row = a + stride * i;
        const int left = i + *lo < N ? i + *lo : N;
        if (left > 0 && !allEqual(row, 0, left, N, 0.0)) {
            int first = 0;
            while (row[first] == 0.0) ++first;
            *lo = first - i;
        }
        const int right = i + *hi + 1 > 0 ? i + *hi + 1 : 0;
        if (right < N && !allEqual(row, right, N, N, 0.0)) {
            int last = N - 1;
            while (row[last] == 0.0) --last;
            *hi = last - i;
        }
    }
}

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

}  // namespace
}  // namespace Vesk::Kernels

#endif
