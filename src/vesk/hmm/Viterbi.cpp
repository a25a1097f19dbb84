#include <vesk/hmm/HMM.h>

#include <vesk/hmm/internal/Columns.h>
#include <vesk/hmm/internal/Emissions.h>
#include <vesk/hmm/internal/Parameters.h>
#include <vesk/hmm/internal/Transitions.h>
#include <vesk/kernels/internal/Kernels.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

namespace Vesk::ML {
namespace {

using internal::padded;
using internal::Values;

/// ln a, in padded rows.
Values logTransitions(const internal::Parameters& p) {
    const int P = padded(p.N);
    Values logA(static_cast<std::size_t>(p.N), P);
    for (int i = 0; i < p.N; ++i) {
        const double* row = p.a.row(i);
        double* to = logA.get() + std::ptrdiff_t{P} * i;
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
    const int P = padded(p.N);

    internal::Emissions logE(p.b, *std::max_element(o, o + T) + 1, T, 0);
    logE.add(o, T);
    logE.takeLogarithms();
    const Values logA = T > 1 ? logTransitions(p) : Values();
    const internal::Diagonals used = internal::diagonalsOf(p.a);

    Values columns(2, P);
    double* score = columns.get();
    double* next = score + P;
    std::vector<int> psi(static_cast<std::size_t>(P) * static_cast<std::size_t>(T));
    for (int i = 0; i < p.N; ++i) score[i] = -std::log(p.pi[i]) - logE[o[0]][i];
    for (int t = 1; t < T; ++t) {
        Vesk::Kernels::kernels().viterbi(score, logA.get(), logE[o[t]], used.lo, used.hi, next,
                                         psi.data() + std::ptrdiff_t{P} * t, p.N, P);
        std::swap(score, next);
    }

    int state = 0;
    for (int i = 1; i < p.N; ++i) {
        if (score[state] > score[i]) state = i;
    }
    result(0, 0) = std::exp(-score[state]);
    result(1, T - 1) = state;
    for (int t = T - 1; t > 0; --t) {
        state = psi[static_cast<std::size_t>(P) * static_cast<std::size_t>(t) +
                    static_cast<std::size_t>(state)];
        result(1, t - 1) = state;
    }
    return result;
}

}  // namespace Vesk::ML
