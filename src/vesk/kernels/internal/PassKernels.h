// Steps of forward and backward passes.
#ifndef VESK_KERNELS_INTERNAL_PASSKERNELS_H
#define VESK_KERNELS_INTERNAL_PASSKERNELS_H

#include <vesk/kernels/internal/Division.h>
#include <vesk/kernels/internal/Kernels.h>
#include <vesk/kernels/internal/Vector.h>

namespace Vesk::Kernels {
namespace {

void forward(const double* from, const double* a, std::ptrdiff_t stride, const double* e,
             double* to, int N, int P) {
    inBlocks(P, [=](auto vectors, int j) {
        constexpr int B = vectors.count;
        V sum[B] = {};
        for (int i = 0; i < N; ++i) {
            const V x = splat(from[i]);
            const double* row = a + stride * i + j;
            unrolled<B>([&](int v) { sum[v] += x * load(row + v * L); });
        }
        unrolled<B>([&](int v) { store(to + j + v * L, sum[v] * load(e + j + v * L)); });
    });
}

void backward(const double* next, const double* aByColumn, std::ptrdiff_t stride, const double* e,
              double* to, int N, int P) {
    inBlocks(P, [=](auto vectors, int i) {
        constexpr int B = vectors.count;
        V sum[B] = {};
        for (int j = 0; j < N; ++j) {
            const V x = splat(next[j]);
            const V y = splat(e[j]);
            const double* column = aByColumn + stride * j + i;
            unrolled<B>([&](int v) { sum[v] += x * load(column + v * L) * y; });
        }
        unrolled<B>([&](int v) { store(to + i + v * L, sum[v]); });
    });
}

/// The L values that begin `at` values into the first of two vectors.
template <int at>
inline V between([[maybe_unused]] V first, [[maybe_unused]] V second) {
    if constexpr (at == 0) return first;
    if constexpr (at == L) return second;
#if VESK_LANES == 4
    return __builtin_shufflevector(first, second, at, at + 1, at + 2, at + 3);
#elif VESK_LANES == 8
    return __builtin_shufflevector(first, second, at, at + 1, at + 2, at + 3, at + 4, at + 5,
                                   at + 6, at + 7);
#endif
}

/// `forwardBand` of a left-right model with lo = 0 and hi = Reach <= L. A column that has just been
/// stored is soonest read as it was stored: it is put together in registers for each diagonal.
template <int Reach>
inline void forwardReach(const double* from, const double* a, const double* e, double* to, int P) {
    V before{};
    for (int j = 0; j < P; j += L) {
        const V here = load(from + j);
        V sum{};
        forConstants<Reach + 1>(
            [&](auto q) { sum += between<L - Reach + q>(before, here) * load(a + q * P + j); });
        store(to + j, sum * load(e + j));
        before = here;
    }
}

/// `backwardBand` in the same way.
template <int Reach>
inline void backwardReach(const double* next, const double* a, const double* e, double* to, int P) {
    V here = load(next);
    for (int i = 0; i < P; i += L) {
        const V after = load(next + i + L);
        V sum{};
        forConstants<Reach + 1>([&](auto d) {
            sum += between<d>(here, after) * load(a + d * P + i) * load(e + i + d);
        });
        store(to + i, sum);
        here = after;
    }
}

void forwardBand(const double* from, const Band& band, const double* e, double* to, int P) {
#if VESK_LANES > 1
    if (withReach(band,
                  [=, a = band.arriving](auto reach) { forwardReach<reach>(from, a, e, to, P); })) {
        return;
    }
#endif
    const int width = band.hi - band.lo + 1;
    const double* first = from - band.hi;
    const double* a = band.arriving;
    inBlocks(P, [=](auto vectors, int j) {
        constexpr int B = vectors.count;
        V sum[B] = {};
        for (int q = 0; q < width; ++q) {
            const double* x = first + j + q;
            const double* row = a + static_cast<std::ptrdiff_t>(P) * q + j;
            unrolled<B>([&](int v) { sum[v] += load(x + v * L) * load(row + v * L); });
        }
        unrolled<B>([&](int v) { store(to + j + v * L, sum[v] * load(e + j + v * L)); });
    });
}

void backwardBand(const double* next, const Band& band, const double* e, double* to, int P) {
#if VESK_LANES > 1
    if (withReach(band, [=, a = band.departing](auto reach) {
            backwardReach<reach>(next, a, e, to, P);
        })) {
        return;
    }
#endif
    const int width = band.hi - band.lo + 1;
    const double* a = band.departing;
    const int lo = band.lo;
    inBlocks(P, [=](auto vectors, int i) {
        constexpr int B = vectors.count;
        V sum[B] = {};
        for (int q = 0; q < width; ++q) {
            const std::ptrdiff_t j = i + lo + q;
            const double* row = a + static_cast<std::ptrdiff_t>(P) * q + i;
            unrolled<B>([&](int v) {
                sum[v] += load(next + j + v * L) * load(row + v * L) * load(e + j + v * L);
            });
        }
        unrolled<B>([&](int v) { store(to + i + v * L, sum[v]); });
    });
}

void forwardEven(const double* products, const double* self, const double* e, double* to, int N,
                 int P) {
    // All sums of a block share the terms before the block.
    double before = 0.0;
    inBlocks(P, [=, &before](auto vectors, int j) {
        constexpr int B = vectors.count;
        V sum[B];
        unrolled<B>([&](int v) { sum[v] = splat(before); });
        // The terms of the block's own states, of which each replaces one in one of the sums.
        unrolled<B>([&](int own) {
            for (int l = 0; l < L; ++l) {
                const int i = j + own * L + l;
                if (i >= N) break;
                const V x = splat(products[i]);
                const V replaced = positions() == splatIndex(l) ? splat(self[i]) : x;
                unrolled<B>([&](int v) { sum[v] += v == own ? replaced : x; });
                before += products[i];
            }
        });
        for (int i = j + B * L; i < N; ++i) {
            const V x = splat(products[i]);
            unrolled<B>([&](int v) { sum[v] += x; });
        }
        unrolled<B>([&](int v) { store(to + j + v * L, sum[v] * load(e + j + v * L)); });
    });
}

void multiply(const double* x, const double* y, double* to, int P) {
    for (int i = 0; i < P; i += L) store(to + i, load(x + i) * load(y + i));
}

void divide(double* column, double divisor, int P) {
    const V y = splat(divisor);
    for (int i = 0; i < P; i += L) store(column + i, load(column + i) / y);
}

double normalise(double* column, int N, int P) {
    double sum = 0.0;
    for (int i = 0; i < N; ++i) sum += column[i];
    const V y = splat(sum);
    for (int i = 0; i < P; i += L) store(column + i, guarded(load(column + i), y));
    return sum;
}

}  // namespace
}  // namespace Vesk::Kernels

#endif
