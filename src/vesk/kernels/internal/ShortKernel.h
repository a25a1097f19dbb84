// Forward passes of models whose columns fit the registers.
#ifndef VESK_KERNELS_INTERNAL_SHORTKERNEL_H
#define VESK_KERNELS_INTERNAL_SHORTKERNEL_H

#include <vesk/kernels/internal/Division.h>
#include <vesk/kernels/internal/Kernels.h>
#include <vesk/kernels/internal/Vector.h>

namespace Vesk::Kernels {
namespace {

/// A column of `lanes` values in registers.
struct Short {
    V part[lanes / L];
};

inline Short loadShort(const double* from) {
    Short x;
    unrolled<lanes / L>([&](int v) { x.part[v] = load(from + v * L); });
    return x;
}

/// The values D places further on, after zeros.
template <int D>
inline Short shifted(const Short& x) {
    Short y;
#if VESK_LANES == 1
    unrolled<lanes>([&](int v) { y.part[v] = v >= D ? x.part[v - D] : 0.0; });
#elif VESK_LANES == 4
    y.part[0] = __builtin_shufflevector(V{}, x.part[0], 4 - D, 5 - D, 6 - D, 7 - D);
    y.part[1] = __builtin_shufflevector(x.part[0], x.part[1], 4 - D, 5 - D, 6 - D, 7 - D);
#else
    y.part[0] = __builtin_shufflevector(V{}, x.part[0], 8 - D, 9 - D, 10 - D, 11 - D, 12 - D,
                                        13 - D, 14 - D, 15 - D);
#endif
    return y;
}

/// Adds the terms of diagonals D .. 0, in this order.
template <int D>
inline void addShortTerms(const Short& x, const Short* a, Short& sum) {
    const Short from = shifted<D>(x);
    unrolled<lanes / L>([&](int v) { sum.part[v] += from.part[v] * a[D].part[v]; });
    if constexpr (D > 0) addShortTerms<D - 1>(x, a, sum);
}

inline double orderedSum(const Short& x) {
    double sum = 0.0;
#if VESK_LANES == 1
    unrolled<lanes>([&](int v) { sum += x.part[v]; });
#else
    unrolled<lanes>([&](int j) { sum += x.part[j / L][j % L]; });
#endif
    return sum;
}

template <int Reach>
inline void forwardShortBy(const Band& band, const double* const* e, int steps, double* column,
                           double* scale) {
    Short a[Reach + 1];
    unrolled<Reach + 1>([&](int d) { a[d] = loadShort(band.arriving + (Reach - d) * lanes); });
    Short x = loadShort(column);
    for (int u = 0; u < steps; ++u) {
        Short sum{};
        addShortTerms<Reach>(x, a, sum);
        unrolled<lanes / L>([&](int v) { x.part[v] = sum.part[v] * load(e[u] + v * L); });
        if (scale == nullptr) continue;
        scale[u] = orderedSum(x);
        const V y = splat(scale[u]);
        unrolled<lanes / L>([&](int v) { x.part[v] = guarded(x.part[v], y); });
    }
    unrolled<lanes / L>([&](int v) { store(column + v * L, x.part[v]); });
}

void forwardShort(const Band& band, const double* const* e, int steps, double* column,
                  double* scale) {
    static_assert(shortReach == 3);
    switch (band.hi) {
        case 0: return forwardShortBy<0>(band, e, steps, column, scale);
        case 1: return forwardShortBy<1>(band, e, steps, column, scale);
        case 2: return forwardShortBy<2>(band, e, steps, column, scale);
        default: return forwardShortBy<3>(band, e, steps, column, scale);
    }
}

}  // namespace
}  // namespace Vesk::Kernels

#endif
