#include <vesk/hmm/HMM.h>

#include <vesk/hmm/internal/Columns.h>
#include <vesk/hmm/internal/Emissions.h>
#include <vesk/hmm/internal/Parameters.h>
#include <vesk/hmm/internal/Symbols.h>
#include <vesk/hmm/internal/Transitions.h>
#include <vesk/kernels/internal/Kernels.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace Vesk::ML {
namespace {

using internal::padded;

/// ln a, in padded rows.
double* logTransitions(internal::Scratch& scratch, const internal::Parameters& p) {
    const int P = padded(p.N);
    double* logA = scratch.zeros(static_cast<std::size_t>(p.N), P);
    for (int i = 0; i < p.N; ++i) {
        const double* row = p.a.row(i);
        double* to = logA + std::ptrdiff_t{P} * i;
        for (int j = 0; j < p.N; ++j) {
            // Most of a left-right model: spares the call.
            to[j] = row[j] == 0.0 ? -std::numeric_limits<double>::infinity() : std::log(row[j]);
        }
    }
    return logA;
}

}  // namespace

Vesk::Math::MatrixT<double> HMM::viterbi(Vesk::Math::VectorT<int> observation, int T) {
    Vesk::Math::MatrixT<double> result = Vesk::Math::internal::zeros(2, std::max(T, 0));
    if (T < 1) return result;
    const internal::Parameters p = internal::parametersFor(*this, vocabSize, T);
    const int* o = internal::observed(observation, T, vocabSize);
    if (p.N < 1) Vesk::Math::internal::throwTableTooSmall();
    const int P = padded(p.N);

    internal::Scratch scratch;
    const internal::Symbols symbols(scratch, o, T);
    internal::Emissions logE(scratch, p.b, symbols, 0);
    logE.takeLogarithms();
    const double* logA = T > 1 ? logTransitions(scratch, p) : nullptr;
    const internal::Diagonals used = internal::diagonalsOf(p.a);

    double* score = scratch.zeros(1, P);
    double* next = scratch.zeros(1, P);
    int* psi = scratch.filled(static_cast<std::size_t>(T), P, 0);
    for (int i = 0; i < p.N; ++i) score[i] = -std::log(p.pi[i]) - logE[o[0]][i];
    for (int t = 1; t < T; ++t) {
        Vesk::Kernels::kernels().viterbi(score, logA, logE[o[t]], used.lo, used.hi, next,
                                         psi + std::ptrdiff_t{P} * t, p.N, P);
        std::swap(score, next);
    }

    int state = 0;
    for (int i = 1; i < p.N; ++i) {
        if (score[state] > score[i]) state = i;
    }
    result(0, 0) = std::exp(-score[state]);
    result(1, T - 1) = state;
    for (int t = T - 1; t > 0; --t) {
        state = psi[std::ptrdiff_t{P} * t + state];
        result(1, t - 1) = state;
    }
    return result;
}

}  // namespace Vesk::ML
