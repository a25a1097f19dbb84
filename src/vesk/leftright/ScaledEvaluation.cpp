#include <vesk/leftright/LeftRightHMM.h>

#include <vesk/hmm/internal/Parameters.h>
#include <vesk/leftright/internal/ScaledPasses.h>

#include <cassert>

namespace Vesk::ML {

using Vesk::Math::MatrixT;
using Vesk::Math::VectorT;

namespace {

/// The caller's scale vector, which has to hold at least T factors.
double* factors(std::vector<double>& scale, [[maybe_unused]] int T) {
    assert(T < 1 || static_cast<std::size_t>(T) <= scale.size());
    return scale.data();
}

}  // namespace

MatrixT<double> LeftRightHMM::forwardProcWithScale(std::vector<int> O, int T,
                                                   std::vector<double>& scale) {
    return internal::scaledForward(internal::parametersFor(*this, vocabSize, T),
                                   internal::observed(O, T, vocabSize), T, factors(scale, T));
}

MatrixT<double> LeftRightHMM::forwardProcWithScaleHMM(std::vector<int> O, int T,
                                                      std::vector<double>& scale, int N,
                                                      VectorT<double> initial,
                                                      MatrixT<double> transitions,
                                                      MatrixT<double> emissions) {
    return internal::scaledForward(internal::givenParameters(N, initial, transitions, emissions),
                                   internal::observed(O, T, emissions.cols), T, factors(scale, T));
}

MatrixT<double> LeftRightHMM::backwardProcWithScale(std::vector<int> O, int T,
                                                    std::vector<double>& scale) {
    return internal::scaledBackward(
        internal::parametersFor(*this, vocabSize, T, internal::Direction::Backward),
        internal::observed(O, T, vocabSize), T, factors(scale, T));
}

MatrixT<double> LeftRightHMM::backwardProcWithScaleHMM(std::vector<int> O, int T,
                                                       std::vector<double>& scale, int N,
                                                       VectorT<double> /*initial*/,
                                                       MatrixT<double> transitions,
                                                       MatrixT<double> emissions) {
    return internal::scaledBackward(internal::givenParameters(N, transitions, emissions),
                                    internal::observed(O, T, emissions.cols), T, factors(scale, T));
}

double LeftRightHMM::forwardProbabilityWithScale(std::vector<int> O, int T,
                                                 std::vector<double>& scale) {
    if (T < 1) return 0.0;
    return internal::scaledLikelihood(internal::parametersFor(*this, vocabSize, T),
                                      internal::observed(O, T, vocabSize), T, factors(scale, T));
}

double LeftRightHMM::forwardProbabilityWithScaleHMM(std::vector<int> O, int T,
                                                    std::vector<double>& scale, int N,
                                                    VectorT<double> initial,
                                                    MatrixT<double> transitions,
                                                    MatrixT<double> emissions) {
    if (T < 1) return 0.0;
    return internal::scaledLikelihood(internal::givenParameters(N, initial, transitions, emissions),
                                      internal::observed(O, T, emissions.cols), T,
                                      factors(scale, T));
}

double LeftRightHMM::logLikelihood(const std::vector<int>& sequence) const {
    const auto T = static_cast<int>(sequence.size());
    if (T < 1) return 0.0;
    std::vector<double> scale(sequence.size());
    return internal::scaledLikelihood(internal::parametersFor(*this, vocabSize, T),
                                      internal::observed(sequence, T, vocabSize), T, scale.data());
}

}  // namespace Vesk::ML
