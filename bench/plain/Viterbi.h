#ifndef VESK_BENCH_PLAIN_VITERBI_H
#define VESK_BENCH_PLAIN_VITERBI_H

#include <vesk/hmm/HMM.h>

#include <cmath>
#include <vector>

namespace Vesk::Bench::Plain {

/// The states of the best path.
inline std::vector<int> viterbi(const ML::HMM& model, const std::vector<int>& o) {
    using Matrix = Vesk::Math::MatrixT<double>;
    const int N = static_cast<int>(model.numStates);
    const int T = static_cast<int>(o.size());
    Matrix logA = model.a;
    Matrix logB = model.b;
    for (double& value : logA.data) value = std::log(value);
    for (double& value : logB.data) value = std::log(value);
    Matrix score(N, T);
    Vesk::Math::MatrixT<int> psi(N, T);
    for (int i = 0; i < N; ++i) score(i, 0) = -std::log(model.pi[i]) - logB(i, o[0]);
    for (int t = 1; t < T; ++t) {
        for (int j = 0; j < N; ++j) {
            double best = score(0, t - 1) - logA(0, j);
            for (int i = 1; i < N; ++i) {
                const double cost = score(i, t - 1) - logA(i, j);
                if (best > cost) {
                    best = cost;
                    psi(j, t) = i;
                }
            }
            score(j, t) = best - logB(j, o[t]);
        }
    }
    std::vector<int> path(o.size());
    for (int i = 1; i < N; ++i) {
        if (score(path[T - 1], T - 1) > score(i, T - 1)) path[T - 1] = i;
    }
    for (int t = T - 1; t > 0; --t) path[t - 1] = psi(path[t], t);
    return path;
}

}  // namespace Vesk::Bench::Plain

#endif
