#ifndef VESK_KERNELS_INTERNAL_KERNELS_H
#define VESK_KERNELS_INTERNAL_KERNELS_H

#include <cstddef>

namespace Vesk::Kernels {

/// The columns of all tables are padded to a multiple of this many values and begin on such a
/// multiple: what the widest kernels take at once.
inline constexpr int lanes = 8;

/// How many times `Set::jointSums` and `Set::posteriorSums` take at once.
inline constexpr int tileTimes = 16;

/// The longest forward jump that `Set::forwardShort` takes.
inline constexpr int shortReach = 3;

/// Transitions within a band: a(i, j) is 0 unless lo <= j - i <= hi. Diagonal d = lo + q of a has
/// its value a(i, i + d) at departing[q * P + i], and at arriving[(hi - d) * P + i + d]: arriving
/// is in the order of i for each j. Values outside of a are 0.
struct Band {
    int lo;
    int hi;
    const double* departing;  ///< (hi - lo + 1) x P
    const double* arriving;   ///< (hi - lo + 1) x P
};

/// A pass that `Set::forwardShort` takes some steps further.
struct ShortPass {
    const double* const* e;  ///< e[u], the emissions of step u
    double* column;          ///< the one before the steps; needs no zeros around it
    std::ptrdiff_t pitch;    ///< to the column after a step from the one before; 0: in place
    double* scale;           ///< takes the sum of the column after step u at scale[u]
};

/// The arithmetic of the algorithms on columns of P values (N padded to `lanes`), in one order of
/// operations: all levels give the same bits. Every sum starts at 0.0 and runs over its terms in
/// order; only sums that do not depend on one another are computed side by side. Results in the
/// padding are not to be used. Inputs and outputs must not overlap unless they are the same column.
///
/// Letters as in HMM. e is a column of emissions, e[j] = b(j, o[t]).
struct Set {
    // The structure of an N x N matrix, whose rows are `stride` apart and need not be padded.

    /// Widens *lo and *hi to the diagonals d = j - i that hold values other than zero.
    void (*diagonals)(const double* a, std::ptrdiff_t stride, int N, int* lo, int* hi);

    /// Whether the values of each row but the one on the diagonal are equal, N > 1. Not where they
    /// are NaN.
    bool (*rowsAreEven)(const double* a, std::ptrdiff_t stride, int N);

    /// to[i] = from[i * stride].
    void (*gather)(const double* from, std::ptrdiff_t stride, int count, double* to);

    /// to[k * pitch + i] = from[i * stride + k] for i < rows and k < columns.
    void (*transposeTable)(const double* from, std::ptrdiff_t stride, int rows, int columns,
                           double* to, std::ptrdiff_t pitch);

    // One step of a pass. What `...Band` reads beyond a column's P values, for as far as the band
    // reaches, it multiplies by zero.

    /// to[j] = (sum over i of from[i] * a(i, j)) * e[j]; rows of a are `stride` apart, P long.
    void (*forward)(const double* from, const double* a, std::ptrdiff_t stride, const double* e,
                    double* to, int N, int P);

    /// to[i] = sum over j of (next[j] * a(i, j)) * e[j]; columns of a are `stride` apart.
    void (*backward)(const double* next, const double* aByColumn, std::ptrdiff_t stride,
                     const double* e, double* to, int N, int P);

    /// `forward` and `backward` without the terms outside of the band.
    void (*forwardBand)(const double* from, const Band& band, const double* e, double* to, int P);
    void (*backwardBand)(const double* next, const Band& band, const double* e, double* to, int P);

    /// Steps of a pass over a left-right model of P = `lanes`, lo = 0 and hi <= `shortReach`:
    /// `forwardBand`, and `normalise` where `scale` is not null, over the padding too, which has to
    /// be zero at first.
    void (*forwardShort)(const Band& band, const ShortPass& pass, int steps);

    /// `forward` where the terms of state i are the same for all j but i: to[j] = (products[0] +
    /// .. + self[j] + .. + products[N-1]) * e[j], with self[j] in the place of products[j].
    void (*forwardEven)(const double* products, const double* self, const double* e, double* to,
                        int N, int P);

    /// to[i] = x[i] * y[i].
    void (*multiply)(const double* x, const double* y, double* to, int P);

    /// Divides the column.
    void (*divide)(double* column, double divisor, int P);

    /// Divides the column by the sum of its N values, which it returns; 0.0 stays 0.0.
    double (*normalise)(double* column, int N, int P);

    // Re-estimation, `tileTimes` times or fewer at once. A tile holds row i at i * tileTimes.

    /// tile[i * tileTimes + u] = columns[u][i] for u < times, 0 for the rest; i < P.
    void (*transpose)(const double* const* columns, int times, double* tile, int P);

    /// sums[u] = sum over i of alpha(i, u) * beta(i, u).
    void (*posteriorSums)(const double* alphaTile, const double* betaTile, int N, double* sums);

    /// sums[u] = sum over i, and j in lo <= j - i <= hi, of ((alpha(i, u) * a(i, j)) * e(j, u)) *
    /// beta(j, u), where e and beta are those of the time after u.
    void (*jointSums)(const double* alphaTile, const double* eTile, const double* betaTile,
                      const double* a, std::ptrdiff_t stride, int N, int lo, int hi, double* sums);

    /// to[u * P + i] = alpha(i, u) * beta(i, u) / sums[u], 0 where the product is; u < times. Zeros
    /// may have either sign: the sums that they are for began at 0.0.
    void (*posteriors)(const double* const* alpha, const double* const* beta, const double* sums,
                       int times, double* to, int P);

    /// Adds the terms of `jointSums` over their sums to transitions[i * P + j], time after time.
    /// Rows of a are `stride` apart, P long; e[u] and beta[u] are columns of the time after u.
    void (*addJoint)(const double* const* alpha, const double* const* e, const double* const* beta,
                     const double* sums, int times, const double* a, std::ptrdiff_t stride,
                     double* transitions, int N, int P);

    /// The same for the diagonals of a band, transitions[q * P + i].
    void (*addJointBand)(const double* const* alpha, const double* const* e,
                         const double* const* beta, const double* sums, int times, const Band& band,
                         double* transitions, int P);

    /// sum[i] += values[u * P + i] for u < times.
    void (*addColumns)(const double* values, int times, double* sum, int P);

    /// sums[k * P + i] += values[u * P + i] for u < times and k = o[u]; a symbol outside of
    /// 0 .. M-1, which the caller has to keep away, equals no k.
    void (*addToOwn)(const double* values, const int* o, int times, double* sums, int M, int P);

    /// The same for all k < M but o[u].
    void (*addToOthers)(const double* values, const int* o, int times, double* sums, int M, int P);

    // Viterbi.

    /// next[j] = least - logE[j], with the least of score[i] - logA(i, j) over i in order: of
    /// equal ones the lowest i, which from[j] becomes; NaN at i = 0 stays. Terms with i > 0 and
    /// not lo <= j - i <= hi, where logA is minus infinity, are left out. Rows of logA are P long.
    void (*viterbi)(const double* score, const double* logA, const double* logE, int lo, int hi,
                    double* next, int* from, int N, int P);
};

/// How wide the kernels compute. All of them are bit for bit the same.
enum class Level { Plain, Avx2, Avx512 };

/// Whether this processor has what a level needs. Plain always.
bool available(Level level);

/// The kernels in use: the widest available ones.
const Set& kernels();

/// For tests: which kernels are in use from now on. Not while an operation is under way.
void use(Level level);

}  // namespace Vesk::Kernels

#endif
