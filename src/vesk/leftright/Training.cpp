#include <vesk/leftright/LeftRightHMM.h>

#include <vesk/hmm/internal/Parameters.h>
#include <vesk/hmm/internal/Passes.h>
#include <vesk/hmm/internal/Reestimation.h>
#include <vesk/leftright/internal/ScaledPasses.h>

#include <algorithm>
#include <iostream>

namespace Vesk::ML {
namespace {

using Vesk::Math::MatrixT;

/// Tells standard output what the fixed operation tells.
bool reportStep(const TrainingStep& step) {
    std::cout.setf(std::ios_base::fixed, std::ios_base::floatfield);
    std::cout.precision(5);  // stays, as hosts expect
    std::cout << "log oldProb = " << step.oldLogLikelihood << std::endl;
    std::cout << "log newProb = " << step.newLogLikelihood << std::endl;
    std::cout.unsetf(std::ios_base::fixed);
    std::cout << "------------------------------------" << std::endl;
    return true;
}

}  // namespace

void LeftRightHMM::baumWelch(Vesk::Math::VectorT<int> O, int T, int maxIterations) {
    if (T < 1 || maxIterations == 0) return;
    const int* o = internal::observed(O, T, vocabSize);
    internal::Parameters p = internal::parametersFor(*this, vocabSize, T);
    const int N = p.N;
    const auto M = static_cast<int>(vocabSize);
    internal::Reestimation reestimation(N, M);
    MatrixT<double> newA = Vesk::Math::internal::zeros(N, N);
    MatrixT<double> newB = Vesk::Math::internal::zeros(N, M);

    for (long n = 0; maxIterations < 0 || n < maxIterations; ++n) {
        const MatrixT<double> alpha = internal::forward(p, o, T);
        const MatrixT<double> beta = internal::backward(p, o, T);
        reestimation.clear();
        reestimation.add(p, o, T, alpha, beta);
        reestimation.estimate(newA, newB);

        double oldProb = 0.0;
        for (int i = 0; i < N; ++i) oldProb += alpha(i, T - 1);
        const double newProb =
            internal::forwardLikelihood(internal::candidate(p.pi, newA, newB), o, T);
        if (!(newProb > oldProb)) return;
        a.swap(newA);
        b.swap(newB);
        p = internal::parametersOf(*this);
    }
}

void LeftRightHMM::baumWelchMultiple(std::vector<std::vector<int>> sequences, int maxIterations) {
    trainMultiple(sequences, maxIterations, reportStep);
}

void LeftRightHMM::trainMultiple(const std::vector<std::vector<int>>& sequences, int maxIterations,
                                 const TrainingObserver& observer) {
    if (maxIterations == 0) return;
    std::size_t longest = 0;
    for (const std::vector<int>& s : sequences) longest = std::max(longest, s.size());
    std::vector<double> scale(longest);
    internal::Parameters p =
        internal::parametersFor(*this, vocabSize, static_cast<int>(longest));
    const int N = p.N;
    const auto M = static_cast<int>(vocabSize);
    internal::Reestimation reestimation(N, M);
    MatrixT<double> newA = Vesk::Math::internal::zeros(N, N);
    MatrixT<double> newB = Vesk::Math::internal::zeros(N, M);

    for (int n = 0; maxIterations < 0 || n < maxIterations; ++n) {
        reestimation.clear();
        double oldLog = 0.0;
        for (const std::vector<int>& s : sequences) {
            if (s.empty()) continue;
            const auto L = static_cast<int>(s.size());
            const int* o = internal::observed(s, L, M);
            const MatrixT<double> alpha = internal::scaledForward(p, o, L, scale.data());
            const MatrixT<double> beta = internal::scaledBackward(p, o, L, scale.data());
            reestimation.add(p, o, L, alpha, beta);
            oldLog += internal::logLikelihoodOf(scale.data(), L);
        }
        reestimation.estimate(newA, newB);

        const internal::Parameters candidate = internal::candidate(p.pi, newA, newB);
        double newLog = 0.0;
        for (const std::vector<int>& s : sequences) {
            newLog += internal::scaledLikelihood(candidate, s.data(), static_cast<int>(s.size()),
                                                 scale.data());
        }
        const bool accepted = newLog - oldLog >= static_cast<double>(convergenceThreshold);
        if (accepted) {
            a.swap(newA);
            b.swap(newB);
            p = internal::parametersFor(*this, vocabSize, static_cast<int>(longest));
        }
        const bool goOn = !observer || observer({n, oldLog, newLog, accepted});
        if (!accepted || !goOn) return;
    }
}

}  // namespace Vesk::ML
