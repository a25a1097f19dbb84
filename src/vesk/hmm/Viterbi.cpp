#include <vesk/hmm/HMM.h>

#include <vesk/hmm/internal/Parameters.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace Vesk::ML {
namespace {

/// Row j holds ln a(i, j) for all i: the terms of one maximisation side by side.
std::vector<double> logTransitionsByTarget(const internal::Parameters& p) {
    const auto N = static_cast<std::size_t>(p.N);
    std::vector<double> logA(N * N);
    for (int i = 0; i < p.N; ++i) {
        for (int j = 0; j < p.N; ++j) {
            logA[N * static_cast<std::size_t>(j) + static_cast<std::size_t>(i)] =
                std::log(p.a(i, j));
        }
    }
    return logA;
}

/// The lowest cost and the lowest index that has it; a cost of NaN at index 0 stays.
struct Best {
    double cost;
    int state;
};

}  // namespace

Vesk::Math::MatrixT<double> HMM::viterbi(Vesk::Math::VectorT<int> observation, int T) {
    Vesk::Math::MatrixT<double> result = Vesk::Math::internal::zeros(2, std::max(T, 0));
    if (T < 1) return result;
    const internal::Parameters p = internal::parametersFor(*this, vocabSize, T);
    const int* o = internal::observed(observation, T, vocabSize);
    const auto N = static_cast<std::size_t>(p.N);

    std::vector<double> score(N);
    std::vector<double> next(N);
    std::vector<int> psi(N * static_cast<std::size_t>(T));
    const std::vector<double> logA = T > 1 ? logTransitionsByTarget(p) : std::vector<double>();

    for (int i = 0; i < p.N; ++i) {
        score[static_cast<std::size_t>(i)] = -std::log(p.pi[i]) - std::log(p.b(i, o[0]));
    }
    for (int t = 1; t < T; ++t) {
        int* backPointer = psi.data() + N * static_cast<std::size_t>(t);
        for (std::size_t j = 0; j < N; ++j) {
            const double* logTo = logA.data() + N * j;
            Best best{score[0] - logTo[0], 0};
            for (int i = 1; i < p.N; ++i) {
                const double cost = score[static_cast<std::size_t>(i)] - logTo[i];
                if (best.cost > cost) best = {cost, i};
            }
            next[j] = best.cost - std::log(p.b(static_cast<int>(j), o[t]));
            backPointer[j] = best.state;
        }
        score.swap(next);
    }

    Best best{score[0], 0};
    for (int i = 1; i < p.N; ++i) {
        const double cost = score[static_cast<std::size_t>(i)];
        if (best.cost > cost) best = {cost, i};
    }
    int state = best.state;
    result(1, T - 1) = state;
    for (int t = T - 1; t > 0; --t) {
        state = psi[N * static_cast<std::size_t>(t) + static_cast<std::size_t>(state)];
        result(1, t - 1) = state;
    }
    result(0, 0) = std::exp(-best.cost);
    return result;
}

}  // namespace Vesk::ML
