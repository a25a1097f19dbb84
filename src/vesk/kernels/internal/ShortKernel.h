// Forward passes of models whose columns fit the registers.
#ifndef VESK_KERNELS_INTERNAL_SHORTKERNEL_H
#define VESK_KERNELS_INTERNAL_SHORTKERNEL_H

#include <vesk/kernels/internal/Division.h>
#include <vesk/kernels/internal/Kernels.h>
#include <vesk/kernels/internal/Vector.h>

namespace Vesk::Kernels {
namespace {

// Each step waits for the one before it, so what counts is how soon a value is there, not how many
// are made at once: the values of a pair change places in one cycle, those of wider vectors in
// three.
#if VESK_LANES == 1
constexpr int W = 1;
using Pair = double;
inline double nth(Pair x, int) { return x; }
inline Pair loadPair(const double* from) { return *from; }
inline void storePair(double* to, Pair x) { *to = x; }
#else
constexpr int W = 2;
using Pair = double __attribute__((vector_size(16)));
inline double nth(Pair x, int l) { return x[l]; }
inline Pair loadPair(const double* from) { return _mm_loadu_pd(from); }
inline void storePair(double* to, Pair x) { _mm_storeu_pd(to, x); }
#endif

/// A column of `lanes` values in registers.
struct Short {
    static constexpr int pairs = lanes / W;

    Pair pair[pairs];
};

inline Short loadShort(const double* from) {
    Short x;
    unrolled<Short::pairs>([&](int v) { x.pair[v] = loadPair(from + v * W); });
    return x;
}

/// Pair v of the values D places further on, after zeros.
template <int D>
inline Pair shifted(const Short& x, int v) {
    const auto pair = [&x](int n) { return n < 0 ? Pair{} : x.pair[n]; };
#if VESK_LANES > 1
    if (D % W == 1) return __builtin_shufflevector(pair(v - D / W - 1), pair(v - D / W), 1, 2);
#endif
    return pair(v - D / W);
}

/// Pair v of the sums of the terms of diagonals Reach .. 0, in this order, which begin at 0.0. Only
/// the sign of a zero depends on that 0.0 and on products with the zeros before the column, and is
/// lost where the column is divided later on: there they are left out.
template <int Reach, bool Divided>
inline Pair sumOfTerms(const Short& x, const double* a, int v) {
    Pair sum{};
    const int inside = (v + 1) * W - 1;
    const int first = Divided && inside < Reach ? inside : Reach;
    forConstants<Reach + 1>([&](auto q) {
        constexpr int d = Reach - q;
        if (d > first) return;
        const Pair term = shifted<d>(x, v) * loadPair(a + q * lanes + v * W);
        sum = Divided && d == first ? term : sum + term;
    });
    return sum;
}

/// Divides the column by its sum, which it returns.
inline double normaliseShort(Short& x) {
    // A sum that begins at 0.0 is never -0.0.
    double sum = nth(x.pair[0], 0);
    forConstants<lanes - 1>([&](auto j) { sum += nth(x.pair[(j + 1) / W], (j + 1) % W); });
    unrolled<Short::pairs>([&](int v) { x.pair[v] = guarded(x.pair[v], sum - Pair{}); });
    return sum + 0.0;
}

template <int Reach, bool Scaled>
inline void forwardShortBy(const Band& band, const ShortPass& pass, int steps) {
    const double* a = band.arriving;
    double* column = pass.column;
    Short x = loadShort(column);
    for (int u = 0; u < steps; ++u) {
        Short next;
        unrolled<Short::pairs>([&](int v) {
            next.pair[v] = sumOfTerms<Reach, Scaled>(x, a, v) * loadPair(pass.e[u] + v * W);
        });
        x = next;
        if constexpr (Scaled) pass.scale[u] = normaliseShort(x);
        column += pass.pitch;
        unrolled<Short::pairs>([&](int v) { storePair(column + v * W, x.pair[v]); });
    }
}

void forwardShort(const Band& band, const ShortPass& pass, int steps) {
    withReach(band, [&](auto reach) {
        if (pass.scale == nullptr) {
            forwardShortBy<reach, false>(band, pass, steps);
        } else {
            forwardShortBy<reach, true>(band, pass, steps);
        }
    });
}

}  // namespace
}  // namespace Vesk::Kernels

#endif
