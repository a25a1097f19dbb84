#include <vesk/leftright/LeftRightHMM.h>

#include <vesk/hmm/internal/Parameters.h>
#include <vesk/hmm/internal/Passes.h>
#include <vesk/hmm/internal/Reestimation.h>
#include <vesk/hmm/internal/SingleTraining.h>
#include <vesk/leftright/internal/ScaledPasses.h>

#include <algorithm>
#include <iostream>

namespace Vesk::ML {
namespace {

using Vesk::Math::MatrixT;

/// P(O) of the model that a plain alpha belongs to.
double likelihoodOf(const MatrixT<double>& alpha) {
    double sum = 0.0;
    for (int i = 0; i < alpha.rows; ++i) sum += alpha(i, alpha.cols - 1);
    return sum;
}

/// Tells standard output what the fixed operation tells: the likelihoods before a candidate is
/// adopted, the line that closes the iteration afterwards.
struct Printing {
    void onLikelihoods(double oldLog, double newLog) {
        std::cout.setf(std::ios_base::fixed, std::ios_base::floatfield);
        std::cout.precision(5);  // stays, as hosts expect
        std::cout << "log oldProb = " << oldLog << std::endl;
        std::cout << "log newProb = " << newLog << std::endl;
        std::cout.unsetf(std::ios_base::fixed);
    }
    bool onStep(const TrainingStep&) {
        std::cout << "------------------------------------" << std::endl;
        return true;
    }
};

struct Observing {
    const TrainingObserver& observer;

    void onLikelihoods(double, double) {}
    bool onStep(const TrainingStep& step) { return !observer || observer(step); }
};

/// The rules of training on several sequences.
template <typename Reporter>
void train(LeftRightHMM& model, const std::vector<std::vector<int>>& sequences, int maxIterations,
           Reporter reporter) {
    if (maxIterations == 0) return;
    std::size_t longest = 0;
    for (const std::vector<int>& s : sequences) longest = std::max(longest, s.size());
    std::vector<double> scale(longest);
    const auto longestT = static_cast<int>(longest);
    internal::Parameters p = internal::parametersFor(model, model.vocabSize, longestT);
    const auto M = static_cast<int>(model.vocabSize);
    internal::Reestimation reestimation(p.N, M);
    MatrixT<double> newA;
    MatrixT<double> newB;

    for (long n = 0; maxIterations < 0 || n < maxIterations; ++n) {
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
        reporter.onLikelihoods(oldLog, newLog);
        const bool accepted = newLog - oldLog >= static_cast<double>(model.convergenceThreshold);
        if (accepted) {
            model.a.swap(newA);
            model.b.swap(newB);
            p = internal::parametersFor(model, model.vocabSize, longestT);
        }
        const bool goOn = reporter.onStep({n, oldLog, newLog, accepted});
        if (!accepted || !goOn) return;
    }
}

}  // namespace

void LeftRightHMM::baumWelch(Vesk::Math::VectorT<int> O, int T, int maxIterations) {
    internal::trainOnSequence(*this, O, T, maxIterations, {false, likelihoodOf});
}

void LeftRightHMM::baumWelchMultiple(std::vector<std::vector<int>> sequences, int maxIterations) {
    train(*this, sequences, maxIterations, Printing());
}

void LeftRightHMM::trainMultiple(const std::vector<std::vector<int>>& sequences, int maxIterations,
                                 const TrainingObserver& observer) {
    train(*this, sequences, maxIterations, Observing{observer});
}

}  // namespace Vesk::ML
