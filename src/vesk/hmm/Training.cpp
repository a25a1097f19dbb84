#include <vesk/hmm/HMM.h>

#include <vesk/hmm/internal/Passes.h>
#include <vesk/hmm/internal/Reestimation.h>
#include <vesk/hmm/internal/SingleTraining.h>

namespace Vesk::ML {
namespace internal {

void trainOnSequence(HMM& model, const std::vector<int>& observation, int T, int maxIterations,
                     const SingleTraining& training) {
    if (T < 1 || maxIterations == 0) return;
    const int* o = observed(observation, T, model.vocabSize);
    Parameters p = parametersFor(model, model.vocabSize, T);
    Reestimation reestimation(p.N, static_cast<int>(model.vocabSize));
    std::vector<double> piNew(static_cast<std::size_t>(p.N));
    MatrixT<double> aNew;
    MatrixT<double> bNew;

    for (long adopted = 0; maxIterations < 0 || adopted < maxIterations; ++adopted) {
        const MatrixT<double> alpha = forward(p, o, T);
        const MatrixT<double> beta = backward(p, o, T);
        reestimation.clear();
        reestimation.add(p, o, T, alpha, beta);
        reestimation.estimate(aNew, bNew);
        if (training.adoptsPi) posteriors(alpha, beta, 0, piNew);

        const double* pi = training.adoptsPi ? piNew.data() : p.pi;
        const double likelihood = forwardLikelihood(candidate(pi, aNew, bNew), o, T);
        if (!(likelihood > training.reference(alpha))) return;
        if (training.adoptsPi) {
            model.pi.swap(piNew);
            piNew.resize(model.pi.size());
        }
        model.a.swap(aNew);
        model.b.swap(bNew);
        p = parametersFor(model, model.vocabSize, T);
    }
}

}  // namespace internal

namespace {

/// The first column of alpha less its first value, where the last column would be expected:
/// required, like the 0.0 that stands for the value after the last.
double firstColumnButOne(const Vesk::Math::MatrixT<double>& alpha) {
    double sum = 0.0;
    for (int i = 1; i < alpha.rows; ++i) sum += alpha(i, 0);
    return sum;
}

}  // namespace

void HMM::baumWelch(Vesk::Math::VectorT<int> observation, int T, int maxIterations) {
    internal::trainOnSequence(*this, observation, T, maxIterations, {true, firstColumnButOne});
}

}  // namespace Vesk::ML
