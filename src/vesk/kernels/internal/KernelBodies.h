// The kernels, once for every width: a source file defines VESK_LANES, the number of values in a
// vector, and VESK_KERNELS, the name of the set that it makes. Nothing here has external linkage,
// since the same function must not be shared between files compiled for different processors.
#include <vesk/kernels/internal/Kernels.h>

#include <cstdint>

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
inline bool noneSet(Index mask) {
    std::int64_t any = 0;
    for (int l = 0; l < L; ++l) any |= mask[l];
    return any == 0;
}
#endif

/// x / y, but 0.0 where x is.
inline V guarded(V x, V y) {
    const V q = x / y;
    return x == splat(0.0) ? splat(0.0) : q;
}

inline int widthOf(const Band& band) { return band.hi - band.lo + 1; }

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

bool allEqual(const double* values, double value, int count) {
    if (count < L) {
        for (int i = 0; i < count; ++i) {
            if (values[i] != value) return false;
        }
        return true;
    }
    const V expected = splat(value);
    Index different{};
    for (int i = 0; i + L <= count; i += L) different |= load(values + i) != expected;
    different |= load(values + count - L) != expected;
    return noneSet(different);
}

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

void forwardBand(const double* from, const Band& band, const double* e, double* to, int P,
                 double* watch) {
    const int width = widthOf(band);
    const double* first = from - band.hi;
    const double* a = band.arriving;
    V odd = load(watch);
    inBlocks(P, [=, &odd](auto vectors, int j) {
        constexpr int B = vectors.count;
        V sum[B] = {};
        for (int q = 0; q < width; ++q) {
            const double* x = first + j + q;
            const double* row = a + static_cast<std::ptrdiff_t>(P) * q + j;
            unrolled<B>([&](int v) { sum[v] += load(x + v * L) * load(row + v * L); });
        }
        unrolled<B>([&](int v) {
            const V x = load(from + j + v * L);
            odd += x - x;
            store(to + j + v * L, sum[v] * load(e + j + v * L));
        });
    });
    store(watch, odd);
}

void backwardBand(const double* next, const Band& band, const double* e, double* to, int P,
                  double* watch) {
    const int width = widthOf(band);
    const double* a = band.departing;
    V odd = load(watch);
    const int lo = band.lo;
    inBlocks(P, [=, &odd](auto vectors, int i) {
        constexpr int B = vectors.count;
        V sum[B] = {};
        for (int q = 0; q < width; ++q) {
            const std::ptrdiff_t j = i + lo + q;
            const double* row = a + static_cast<std::ptrdiff_t>(P) * q + i;
            unrolled<B>([&](int v) {
                sum[v] += load(next + j + v * L) * load(row + v * L) * load(e + j + v * L);
            });
        }
        unrolled<B>([&](int v) {
            const V x = load(next + i + v * L);
            odd += x - x;
            store(to + i + v * L, sum[v]);
        });
    });
    store(watch, odd);
}

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
                           double* scale, double* watch) {
    Short a[Reach + 1];
    unrolled<Reach + 1>([&](int d) { a[d] = loadShort(band.arriving + (Reach - d) * lanes); });
    Short x = loadShort(column);
    Short odd = loadShort(watch);
    for (int u = 0; u < steps; ++u) {
        Short sum{};
        addShortTerms<Reach>(x, a, sum);
        unrolled<lanes / L>([&](int v) {
            odd.part[v] += x.part[v] - x.part[v];
            x.part[v] = sum.part[v] * load(e[u] + v * L);
        });
        if (scale == nullptr) continue;
        scale[u] = orderedSum(x);
        const V y = splat(scale[u]);
        unrolled<lanes / L>([&](int v) { x.part[v] = guarded(x.part[v], y); });
    }
    unrolled<lanes / L>([&](int v) {
        store(column + v * L, x.part[v]);
        store(watch + v * L, odd.part[v]);
    });
}

void forwardShort(const Band& band, const double* const* e, int steps, double* column,
                  double* scale, double* watch) {
    static_assert(shortReach == 3);
    switch (band.hi) {
        case 0: return forwardShortBy<0>(band, e, steps, column, scale, watch);
        case 1: return forwardShortBy<1>(band, e, steps, column, scale, watch);
        case 2: return forwardShortBy<2>(band, e, steps, column, scale, watch);
        default: return forwardShortBy<3>(band, e, steps, column, scale, watch);
    }
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

void divideGuarded(double* column, double divisor, int P) {
    const V y = splat(divisor);
    for (int i = 0; i < P; i += L) store(column + i, guarded(load(column + i), y));
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

void transpose(const double* const* columns, int times, double* tile, int P) {
    for (int u = 0; u < tileTimes; u += L) {
        for (int i = 0; i < P; i += L) {
            V rows[L];
            unrolled<L>([&](int v) { rows[v] = u + v < times ? load(columns[u + v] + i) : V{}; });
            transposeBlock(rows);
            double* to = tile + static_cast<std::ptrdiff_t>(tileTimes) * i + u;
            unrolled<L>([&](int v) { store(to + tileTimes * v, rows[v]); });
        }
    }
}

constexpr int tileVectors = tileTimes / L;

void posteriorSums(const double* alphaTile, const double* betaTile, int N, double* sums) {
    V sum[tileVectors] = {};
    for (int i = 0; i < N; ++i) {
        const double* alpha = alphaTile + static_cast<std::ptrdiff_t>(tileTimes) * i;
        const double* beta = betaTile + static_cast<std::ptrdiff_t>(tileTimes) * i;
        unrolled<tileVectors>([&](int v) { sum[v] += load(alpha + v * L) * load(beta + v * L); });
    }
    unrolled<tileVectors>([&](int v) { store(sums + v * L, sum[v]); });
}

void jointSums(const double* alphaTile, const double* eTile, const double* betaTile,
               const double* a, std::ptrdiff_t stride, int N, int lo, int hi, double* sums) {
    V sum[tileVectors] = {};
    for (int i = 0; i < N; ++i) {
        const double* alpha = alphaTile + static_cast<std::ptrdiff_t>(tileTimes) * i;
        const double* row = a + stride * i;
        const int end = i + hi < N ? i + hi + 1 : N;
        for (int j = i + lo > 0 ? i + lo : 0; j < end; ++j) {
            const double* e = eTile + static_cast<std::ptrdiff_t>(tileTimes) * j;
            const double* beta = betaTile + static_cast<std::ptrdiff_t>(tileTimes) * j;
            const V x = splat(row[j]);
            unrolled<tileVectors>([&](int v) {
                sum[v] += load(alpha + v * L) * x * load(e + v * L) * load(beta + v * L);
            });
        }
    }
    unrolled<tileVectors>([&](int v) { store(sums + v * L, sum[v]); });
}

void posteriors(const double* alpha, const double* beta, double sum, double* to, int P) {
    const V y = splat(sum);
    for (int i = 0; i < P; i += L) store(to + i, guarded(load(alpha + i) * load(beta + i), y));
}

void addJoint(const double* const* alpha, const double* const* e, const double* const* beta,
              const double* sums, int times, const double* a, std::ptrdiff_t stride,
              double* transitions, int N, int P) {
    for (int i = 0; i < N; ++i) {
        const double* row = a + stride * i;
        double* added = transitions + static_cast<std::ptrdiff_t>(P) * i;
        for (int j = 0; j < P; j += L) {
            const V x = load(row + j);
            V sum = load(added + j);
            for (int u = 0; u < times; ++u) {
                const V term = splat(alpha[u][i]) * x * load(e[u] + j) * load(beta[u] + j);
                sum += guarded(term, splat(sums[u]));
            }
            store(added + j, sum);
        }
    }
}

void addJointBand(const double* const* alpha, const double* const* e, const double* const* beta,
                  const double* sums, int times, const Band& band, double* transitions, int P) {
    for (int q = 0; q < widthOf(band); ++q) {
        const std::ptrdiff_t d = band.lo + q;
        const double* row = band.departing + static_cast<std::ptrdiff_t>(P) * q;
        double* added = transitions + static_cast<std::ptrdiff_t>(P) * q;
        for (int i = 0; i < P; i += L) {
            const V x = load(row + i);
            V sum = load(added + i);
            for (int u = 0; u < times; ++u) {
                const V term = load(alpha[u] + i) * x * load(e[u] + i + d) * load(beta[u] + i + d);
                sum += guarded(term, splat(sums[u]));
            }
            store(added + i, sum);
        }
    }
}

void addColumns(const double* values, int times, double* sum, int P) {
    for (int i = 0; i < P; i += L) {
        V total = load(sum + i);
        for (int u = 0; u < times; ++u) {
            total += load(values + static_cast<std::ptrdiff_t>(P) * u + i);
        }
        store(sum + i, total);
    }
}

/// `addToOthers` for S times and one vector of states.
template <int S>
inline void addToOthersAtOnce(const double* values, const int* o, double* sums, int M, int P) {
    V added[S];
    V spared[S] = {};
    unrolled<S>([&](int u) { added[u] = load(values + static_cast<std::ptrdiff_t>(P) * u); });
    const auto rowOf = [=](int k) { return sums + static_cast<std::ptrdiff_t>(P) * k; };
    // The rows of symbols seen are made apart from the others, and put in their place at the end.
    unrolled<S>([&](int s) {
        if (o[s] < 0 || o[s] >= M) return;
        spared[s] = load(rowOf(o[s]));
        unrolled<S>([&](int u) {
            if (o[u] != o[s]) spared[s] += added[u];
        });
    });
    for (int k = 0; k < M; ++k) {
        V sum = load(rowOf(k));
        unrolled<S>([&](int u) { sum += added[u]; });
        store(rowOf(k), sum);
    }
    unrolled<S>([&](int s) {
        if (o[s] >= 0 && o[s] < M) store(rowOf(o[s]), spared[s]);
    });
}

void addToOthers(const double* values, const int* o, int times, double* sums, int M, int P) {
    int u = 0;
    for (; u + 4 <= times; u += 4) {
        for (int i = 0; i < P; i += L) {
            addToOthersAtOnce<4>(values + static_cast<std::ptrdiff_t>(P) * u + i, o + u, sums + i,
                                 M, P);
        }
    }
    for (; u < times; ++u) {
        for (int i = 0; i < P; i += L) {
            addToOthersAtOnce<1>(values + static_cast<std::ptrdiff_t>(P) * u + i, o + u, sums + i,
                                 M, P);
        }
    }
}

void viterbi(const double* score, const double* logA, const double* logE, int lo, int hi,
             double* next, int* from, int N, int P) {
    inBlocks(P, [=](auto vectors, int j) {
        constexpr int B = vectors.count;
        V least[B];
        Index state[B] = {};
        unrolled<B>([&](int v) { least[v] = splat(score[0]) - load(logA + j + v * L); });
        const int last = j + B * L - 1 - lo < N ? j + B * L - lo : N;
        for (int i = j - hi > 1 ? j - hi : 1; i < last; ++i) {
            const V x = splat(score[i]);
            const Index index = splatIndex(i);
            const double* row = logA + static_cast<std::ptrdiff_t>(P) * i + j;
            unrolled<B>([&](int v) {
                const V cost = x - load(row + v * L);
                const auto less = least[v] > cost;
                least[v] = less ? cost : least[v];
                state[v] = less ? index : state[v];
            });
        }
        unrolled<B>([&](int v) {
            store(next + j + v * L, least[v] - load(logE + j + v * L));
            storeIndices(from + j + v * L, state[v]);
        });
    });
}

}  // namespace

extern const Set VESK_KERNELS;
const Set VESK_KERNELS = {
    .allEqual = allEqual,
    .forward = forward,
    .backward = backward,
    .forwardBand = forwardBand,
    .backwardBand = backwardBand,
    .forwardShort = forwardShort,
    .forwardEven = forwardEven,
    .multiply = multiply,
    .divide = divide,
    .divideGuarded = divideGuarded,
    .transpose = transpose,
    .posteriorSums = posteriorSums,
    .jointSums = jointSums,
    .posteriors = posteriors,
    .addJoint = addJoint,
    .addJointBand = addJointBand,
    .addColumns = addColumns,
    .addToOthers = addToOthers,
    .viterbi = viterbi,
};

}  // namespace Vesk::Kernels
