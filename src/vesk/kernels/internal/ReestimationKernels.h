// Posteriors and their sums.
#ifndef VESK_KERNELS_INTERNAL_REESTIMATIONKERNELS_H
#define VESK_KERNELS_INTERNAL_REESTIMATIONKERNELS_H

#include <vesk/kernels/internal/Division.h>
#include <vesk/kernels/internal/Kernels.h>
#include <vesk/kernels/internal/Vector.h>

namespace Vesk::Kernels {
namespace {

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

void posteriors(const double* const* alpha, const double* const* beta, const double* sums,
                int times, double* to, int P) {
    const Divisors divisors(sums, times, P == L);
    for (int i = 0; i < P; i += L) {
        divisors.exactly([=](auto quotient) {
            V total{};
            for (int u = 0; u < times; ++u) {
                const V q = quotient(load(alpha[u] + i) * load(beta[u] + i), u);
                store(to + static_cast<std::ptrdiff_t>(P) * u + i, q);
                total += q;
            }
            return total;
        });
    }
}

/// `addJoint` for R rows, which share the columns of each time.
template <int R>
inline void addJointRows(const double* const* alpha, const double* const* e,
                         const double* const* beta, const Divisors& divisors, int times, int i,
                         const double* a, std::ptrdiff_t stride, double* transitions, int P) {
    const double* row = a + stride * i;
    double* added = transitions + static_cast<std::ptrdiff_t>(P) * i;
    for (int j = 0; j < P; j += L) {
        V x[R];
        V sum[R];
        unrolled<R>([&](int v) { x[v] = load(row + stride * v + j); });
        divisors.exactly([&](auto quotient) {
            unrolled<R>(
                [&](int v) { sum[v] = load(added + static_cast<std::ptrdiff_t>(P) * v + j); });
            for (int u = 0; u < times; ++u) {
                unrolled<R>([&](int v) {
                    sum[v] += quotient(
                        splat(alpha[u][i + v]) * x[v] * load(e[u] + j) * load(beta[u] + j), u);
                });
            }
            V total = sum[0];
            unrolled<R - 1>([&](int v) { total += sum[v + 1]; });
            return total;
        });
        unrolled<R>([&](int v) { store(added + static_cast<std::ptrdiff_t>(P) * v + j, sum[v]); });
    }
}

void addJoint(const double* const* alpha, const double* const* e, const double* const* beta,
              const double* sums, int times, const double* a, std::ptrdiff_t stride,
              double* transitions, int N, int P) {
    const Divisors divisors(sums, times, false);
    int i = 0;
    for (; i + 2 <= N; i += 2) {
        addJointRows<2>(alpha, e, beta, divisors, times, i, a, stride, transitions, P);
    }
    if (i < N) addJointRows<1>(alpha, e, beta, divisors, times, i, a, stride, transitions, P);
}

void addJointBand(const double* const* alpha, const double* const* e, const double* const* beta,
                  const double* sums, int times, const Band& band, double* transitions, int P) {
    const Divisors divisors(sums, times, P == L);
    for (int d = band.lo; d <= band.hi; ++d) {
        const std::ptrdiff_t diagonal = static_cast<std::ptrdiff_t>(P) * (d - band.lo);
        for (int i = 0; i < P; i += L) {
            const V x = load(band.departing + diagonal + i);
            double* added = transitions + diagonal + i;
            V sum;
            divisors.exactly([&](auto quotient) {
                sum = load(added);
                for (int u = 0; u < times; ++u) {
                    sum += quotient(
                        load(alpha[u] + i) * x * load(e[u] + i + d) * load(beta[u] + i + d), u);
                }
                return sum;
            });
            store(added, sum);
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

void addToOwn(const double* values, const int* o, int times, double* sums, int M, int P) {
    for (int u = 0; u < times; ++u) {
        if (o[u] < 0 || o[u] >= M) continue;
        double* sum = sums + static_cast<std::ptrdiff_t>(P) * o[u];
        const double* added = values + static_cast<std::ptrdiff_t>(P) * u;
        for (int i = 0; i < P; i += L) store(sum + i, load(sum + i) + load(added + i));
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

}  // namespace
}  // namespace Vesk::Kernels

#endif
