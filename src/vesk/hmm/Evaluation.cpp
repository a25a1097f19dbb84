#include <vesk/hmm/HMM.h>

#include <vesk/hmm/internal/Parameters.h>
#include <vesk/hmm/internal/PlainPasses.h>

#include <algorithm>
#include <cassert>
#include <vector>

namespace Vesk::ML {

using Vesk::Math::MatrixT;
using Vesk::Math::VectorT;
using Vesk::Math::internal::givenTable;

MatrixT<double> HMM::forwardProc(VectorT<int> observation, int T) {
    return internal::forward(internal::parametersFor(*this, vocabSize, T),
                             internal::observed(observation, T, vocabSize), T);
}

MatrixT<double> HMM::forwardProcHMM(VectorT<int> observation, int T, int N, VectorT<double> initial,
                                    MatrixT<double> transitions, MatrixT<double> emissions) {
    return internal::forward(internal::givenParameters(N, initial, transitions, emissions),
                             internal::observed(observation, T, emissions.cols), T);
}

MatrixT<double> HMM::backwardProc(VectorT<int> observation, int T) {
    return internal::backward(
        internal::parametersFor(*this, vocabSize, T, internal::Direction::Backward),
        internal::observed(observation, T, vocabSize), T);
}

MatrixT<double> HMM::backwardProcHMM(VectorT<int> observation, int T, int N,
                                     MatrixT<double> transitions, MatrixT<double> emissions) {
    return internal::backward(internal::givenParameters(N, transitions, emissions),
                              internal::observed(observation, T, emissions.cols), T);
}

double HMM::forwardProbability(VectorT<int> observation, int T) {
    if (T < 1) return 0.0;
    return internal::forwardLikelihood(internal::parametersFor(*this, vocabSize, T),
                                       internal::observed(observation, T, vocabSize), T);
}

double HMM::forwardProbabilityHMM(VectorT<int> observation, int T, int N, VectorT<double> initial,
                                  MatrixT<double> transitions, MatrixT<double> emissions) {
    if (T < 1) return 0.0;
    return internal::forwardLikelihood(
        internal::givenParameters(N, initial, transitions, emissions),
        internal::observed(observation, T, emissions.cols), T);
}

std::vector<double> HMM::likelihoods(const std::vector<std::vector<int>>& sequences) const {
    int longest = 0;
    for (const std::vector<int>& o : sequences) {
        const auto T = static_cast<int>(o.size());
        internal::observed(o, T, vocabSize);
        longest = std::max(longest, T);
    }
    return internal::forwardLikelihoods(internal::parametersFor(*this, vocabSize, longest),
                                        sequences);
}

double HMM::backwardProbability(VectorT<int> observation, int T) {
    if (T < 1) return 0.0;
    return internal::backwardLikelihood(internal::parametersFor(*this, vocabSize, T),
                                        internal::observed(observation, T, vocabSize), T);
}

double HMM::backwardProbabilityHMM(VectorT<int> observation, int T, int N, VectorT<double> initial,
                                   MatrixT<double> transitions, MatrixT<double> emissions) {
    if (T < 1) return 0.0;
    return internal::backwardLikelihood(
        internal::givenParameters(N, initial, transitions, emissions),
        internal::observed(observation, T, emissions.cols), T);
}

double HMM::xi(int i, int j, int t, VectorT<int> observation, MatrixT<double> alpha,
               MatrixT<double> beta) {
    const internal::Parameters p =
        internal::parametersFor(*this, vocabSize, t + 2, internal::Direction::Backward);
    assert(i >= 0 && i < p.N && j >= 0 && j < p.N && t >= 0);
    const auto forwards = givenTable(alpha, p.N, t + 1);
    const auto backwards = givenTable(beta, p.N, t + 2);
    const int symbol = internal::observed(observation, t + 2, vocabSize)[t + 1];
    double sum = 0.0;
    for (int k = 0; k < p.N; ++k) {
        for (int l = 0; l < p.N; ++l) {
            sum += p.a(k, l) * forwards(k, t) * p.b(l, symbol) * backwards(l, t + 1);
        }
    }
    return divide(forwards(i, t) * p.a(i, j) * p.b(j, symbol) * backwards(j, t + 1), sum);
}

double HMM::gamma(int i, int t, MatrixT<double> alpha, MatrixT<double> beta) {
    const auto N = static_cast<int>(numStates);
    assert(i >= 0 && i < N && t >= 0);
    const auto forwards = givenTable(alpha, N, t + 1);
    const auto backwards = givenTable(beta, N, t + 1);
    double sum = 0.0;
    for (int k = 0; k < N; ++k) sum += forwards(k, t) * backwards(k, t);
    return divide(forwards(i, t) * backwards(i, t), sum);
}

double HMM::divide(double x, double y) { return Vesk::Math::internal::divide(x, y); }

}  // namespace Vesk::ML
