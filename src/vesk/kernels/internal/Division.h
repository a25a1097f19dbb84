// Divisions of many values by few divisors.
#ifndef VESK_KERNELS_INTERNAL_DIVISION_H
#define VESK_KERNELS_INTERNAL_DIVISION_H

#include <vesk/kernels/internal/Kernels.h>
#include <vesk/kernels/internal/Vector.h>

namespace Vesk::Kernels {
namespace {

/// x / y, but 0.0 where x is.
template <typename Values>
inline Values guarded(Values x, Values y) {
    const Values q = x / y;
    return x == Values{} ? Values{} : q;
}

#if VESK_LANES > 1
#if VESK_LANES == 4
inline V multiplyAdd(V x, V y, V z) { return _mm256_fmadd_pd(x, y, z); }
inline V lessProduct(V z, V x, V y) { return _mm256_fnmadd_pd(x, y, z); }
#else
inline V multiplyAdd(V x, V y, V z) { return _mm512_fmadd_pd(x, y, z); }
inline V lessProduct(V z, V x, V y) { return _mm512_fnmadd_pd(x, y, z); }
#endif

/// Of two values the lesser one, or `least` where x is zero.
inline V leastNonzero(V least, V x) {
#if VESK_LANES == 4
    return _mm256_blendv_pd(least, _mm256_min_pd(least, x), x != V{});
#else
    return _mm512_mask_min_pd(least, _mm512_cmp_pd_mask(x, V{}, _CMP_NEQ_UQ), least, x);
#endif
}
#endif

/// A divisor for each time of a tile, and quotients by it: the very bits of a division.
///
/// A division takes a processor as long as eight products. Where no operand is near the ends of
/// the range, a product and three fused operations find the same quotient: with high = 1 / y
/// rounded and low what 1 / y has left, q = x * high + x * low is off by less than one unit of its
/// last place, and q + (x - q * y) * high, whose difference is exact, is x / y correctly rounded
/// (Markstein 1990; Brisebarre, Muller, Raina 2004).
class Divisors {
public:
    /// Where `few` quotients are asked for, they are not worth the inverses, nor the lower clock
    /// that some processors fall to while they compute with fused operations.
    Divisors(const double* divisors, [[maybe_unused]] int times, [[maybe_unused]] bool few)
        : values(divisors) {
#if VESK_LANES > 1
        fused = !few;
        if (few) return;
        double all[tileTimes] = {};
        for (int u = 0; u < times; ++u) all[u] = divisors[u];
        for (int u = 0; u < tileTimes; u += L) {
            const V y = load(all + u);
            const V size = y < splat(0.0) ? -y : y;
            const auto usable = (size >= splat(leastOperand)) & (size <= splat(largestDivisor));
            const V inverse = usable ? splat(1.0) / y : splat(__builtin_nan(""));
            store(high + u, inverse);
            store(low + u, lessProduct(splat(1.0), y, inverse) * inverse);
        }
#endif
    }

    /// Calls run(quotient), where quotient(x, u) is guarded(x, divisors[u]) but for the sign of a
    /// zero; a second time from the start where some quotient of the first time may be inexact. Run
    /// returns values that are NaN where any of its quotients is.
    template <typename Run>
    void exactly(Run run) const {
#if VESK_LANES > 1
        if (!fused) return runDividing(run);
        V least = splat(1.0);
        const V result = run([this, &least](V x, int u) {
            least = leastNonzero(least, x);
            const V inverse = splat(high[u]);
            const V q = multiplyAdd(x, inverse, x * splat(low[u]));
            return multiplyAdd(lessProduct(x, q, splat(values[u])), inverse, q);
        });
        if (noneSet((least < splat(leastOperand)) | (result != result))) return;
#endif
        runDividing(run);
    }

private:
    template <typename Run>
    void runDividing(Run run) const {
        run([this](V x, int u) { return guarded(x, splat(values[u])); });
    }

#if VESK_LANES > 1
    // From these on nothing underflows, and what overflows leaves a NaN.
    static constexpr double leastOperand = 0x1p-800;
    static constexpr double largestDivisor = 0x1p100;

    double high[tileTimes];
    double low[tileTimes];
    bool fused;
#endif
    const double* values;
};

}  // namespace
}  // namespace Vesk::Kernels

#endif
