// One vector of VESK_LANES values, and loops over blocks of them.
//
// This file and the others that define kernels are included once by the source file of each width,
// which defines VESK_LANES first. Nothing in them has external linkage: a function must not be
// shared between files that are compiled for different processors.
#ifndef VESK_KERNELS_INTERNAL_VECTOR_H
#define VESK_KERNELS_INTERNAL_VECTOR_H

#include <vesk/kernels/internal/Kernels.h>

#include <cstdint>
#if VESK_LANES > 1
#include <immintrin.h>
#endif

namespace Vesk::Kernels {
namespace {

constexpr int L = VESK_LANES;

#if VESK_LANES == 1
using V = double;
using Index = std::int64_t;

inline V load(const double* p) { return *p; }
inline void store(double* p, V v) { *p = v; }
inline void storeIndices(int* p, Index v) { *p = static_cast<int>(v); }
inline V splat(double x) { return x; }
inline Index splatIndex(int x) { return x; }
inline Index positions() { return 0; }
inline bool noneSet(Index mask) { return mask == 0; }
#else
using V = double __attribute__((vector_size(8 * VESK_LANES)));
using Index = std::int64_t __attribute__((vector_size(8 * VESK_LANES)));
using Ints = int __attribute__((vector_size(4 * VESK_LANES)));

inline V load(const double* p) {
    V v;
    __builtin_memcpy(&v, p, sizeof v);
    return v;
}
inline void store(double* p, V v) { __builtin_memcpy(p, &v, sizeof v); }
inline void storeIndices(int* p, Index v) {
    const Ints ints = __builtin_convertvector(v, Ints);
    __builtin_memcpy(p, &ints, sizeof ints);
}
inline V splat(double x) { return x - V{}; }  // exact: -0.0 stays -0.0
inline Index splatIndex(int x) { return std::int64_t{x} - Index{}; }
inline Index positions() {
    Index index;
    for (int l = 0; l < L; ++l) index[l] = l;
    return index;
}
#if VESK_LANES == 4
inline bool noneSet(Index mask) {
    const auto bits = reinterpret_cast<__m256i>(mask);
    return _mm256_testz_si256(bits, bits) != 0;
}
inline std::uint64_t mask(Index set) {
    return static_cast<std::uint64_t>(_mm256_movemask_pd(reinterpret_cast<__m256d>(set)));
}
#else
inline bool noneSet(Index mask) {
    const auto bits = reinterpret_cast<__m512i>(mask);
    return _mm512_test_epi64_mask(bits, bits) == 0;
}
inline std::uint64_t mask(Index set) {
    return _mm512_movepi64_mask(reinterpret_cast<__m512i>(set));
}
#endif
#endif

template <int B>
struct Vectors {
    static constexpr int count = B;
};

/// Calls part(Vectors<B>, j) for blocks of B vectors from value j on that cover P values, the
/// largest blocks first.
template <typename Part>
inline void inBlocks(int P, Part part) {
    int j = 0;
    for (; j + 8 * L <= P; j += 8 * L) part(Vectors<8>(), j);
    if (j + 4 * L <= P) {
        part(Vectors<4>(), j);
        j += 4 * L;
    }
    if (j + 2 * L <= P) {
        part(Vectors<2>(), j);
        j += 2 * L;
    }
    if (j < P) part(Vectors<1>(), j);
}

/// Calls part(v) for v = 0 .. B-1.
template <int B, typename Part>
inline void unrolled(Part part) {
#pragma GCC unroll 16
    for (int v = 0; v < B; ++v) part(v);
}

template <int n>
struct Constant {
    constexpr operator int() const { return n; }
};

/// Calls part(Constant<q>()) for q = 0 .. count-1: `unrolled` where q has to be a constant, as the
/// positions of a shuffle are.
template <int count, typename Part>
inline void forConstants(Part part) {
    if constexpr (count > 0) {
        forConstants<count - 1>(part);
        part(Constant<count - 1>());
    }
}

/// Calls run(Constant<band.hi>()) where lo = 0 and hi <= `shortReach`; else returns false.
template <typename Run>
inline bool withReach(const Band& band, Run run) {
    static_assert(shortReach == 3);
    if (band.lo != 0 || band.hi > shortReach) return false;
    switch (band.hi) {
        case 0: run(Constant<0>()); break;
        case 1: run(Constant<1>()); break;
        case 2: run(Constant<2>()); break;
        default: run(Constant<3>());
    }
    return true;
}

/// Transposes L vectors: the perfect shuffle of their values, as often as halves make one.
inline void transposeBlock([[maybe_unused]] V (&rows)[L]) {
#if VESK_LANES > 1
    for (int halves = L; halves > 1; halves /= 2) {
        V shuffled[L];
        unrolled<L / 2>([&](int v) {
            const V x = rows[v];
            const V y = rows[v + L / 2];
#if VESK_LANES == 4
            shuffled[2 * v] = __builtin_shufflevector(x, y, 0, 4, 1, 5);
            shuffled[2 * v + 1] = __builtin_shufflevector(x, y, 2, 6, 3, 7);
#else
            shuffled[2 * v] = __builtin_shufflevector(x, y, 0, 8, 1, 9, 2, 10, 3, 11);
            shuffled[2 * v + 1] = __builtin_shufflevector(x, y, 4, 12, 5, 13, 6, 14, 7, 15);
#endif
        });
        unrolled<L>([&](int v) { rows[v] = shuffled[v]; });
    }
#endif
}

}  // namespace
}  // namespace Vesk::Kernels

#endif
