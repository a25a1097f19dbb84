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
    const auto M = static_cast<int>(model.vocabSize);
    std::vector<double> piNew;
    MatrixT<double> aNew;
    MatrixT<double> bNew;

    Scratch symbolScratch;
    const Symbols symbols(symbolScratch, o, T);

    for (long adopted = 0; maxIterations < 0 || adopted < maxIterations; ++adopted) {
        Scratch scratch;
        Passes passes(scratch, p, symbols);
        const Columns alpha = passes.columns(T);
        const Columns beta = passes.columns(T);
        passes.exactly([&] {
            complete(ForwardPass(passes, o, T, all(alpha), asItIs));
            complete(BackwardPass(passes, o, T, 1.0, all(beta), asItIs));
            Reestimation reestimation(passes, M);
            reestimation.add(o, T, alpha, beta);
            reestimation.estimate(aNew, bNew);
        });
        if (training.adoptsPi) piNew = firstPosteriors(alpha, beta, p.N);

        const double* pi = training.adoptsPi ? piNew.data() : p.pi;
        const double likelihood = forwardLikelihood(candidate(pi, aNew, bNew), symbols, o, T);
        if (!(likelihood > training.reference(alpha, p.N, T))) return;
        if (training.adoptsPi) model.pi.swap(piNew);
        model.a.swap(aNew);
        model.b.swap(bNew);
        p = parametersFor(model, model.vocabSize, T);
    }
}

}  // namespace internal

namespace {

/// The first column of alpha less its first value, where the last column would be expected:
/// required, like the 0.0 that stands for the value after the last.
double firstColumnButOne(const internal::Columns& alpha, int N, int) {
    return internal::orderedSum(alpha[0] + 1, N - 1);
}

}  // namespace

void HMM::baumWelch(Vesk::Math::VectorT<int> observation, int T, int maxIterations) {
    internal::trainOnSequence(*this, observation, T, maxIterations, {true, firstColumnButOne});
}

}  // namespace Vesk::ML
