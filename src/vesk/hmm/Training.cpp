#include <vesk/hmm/HMM.h>

#include <vesk/hmm/internal/Passes.h>
#include <vesk/hmm/internal/Reestimation.h>
#include <vesk/hmm/internal/SingleTraining.h>

#include <memory>
#include <utility>

namespace Vesk::ML {
namespace internal {
namespace {

/// A model's forward pass over the sequence, which training needs whole if it goes on with it.
class ForwardTable {
    Scratch scratch;

public:
    ForwardTable(const Parameters& parameters, const Symbols& symbols, const int* o, int T)
        : passes(scratch, parameters, symbols), alpha(passes.columns(T)) {
        passes.exactly([&] { complete(ForwardPass(passes, o, T, all(alpha), asItIs)); });
    }

    Passes passes;
    const Columns alpha;
};

}  // namespace

void trainOnSequence(HMM& model, const std::vector<int>& observation, int T, int maxIterations,
                     const SingleTraining& training) {
    if (T < 1 || maxIterations == 0) return;
    const int* o = observed(observation, T, model.vocabSize);
    const Parameters p = parametersFor(model, model.vocabSize, T);
    const auto M = static_cast<int>(model.vocabSize);
    std::vector<double> piNew;
    MatrixT<double> aNew;
    MatrixT<double> bNew;
    Scratch symbolScratch;
    const Symbols symbols(symbolScratch, o, T);

    auto current = std::make_unique<ForwardTable>(p, symbols, o, T);
    for (long adopted = 0; maxIterations < 0 || adopted < maxIterations; ++adopted) {
        Passes& passes = current->passes;
        const Columns& alpha = current->alpha;
        const Columns beta = passes.columns(T);
        passes.exactly([&] {
            complete(BackwardPass(passes, o, T, 1.0, all(beta), asItIs));
            Reestimation reestimation(passes, M);
            reestimation.add(o, T, alpha, beta);
            reestimation.estimate(aNew, bNew);
        });
        if (training.adoptsPi) piNew = firstPosteriors(alpha, beta, p.N);

        // Adopting swaps storage: what the candidate's passes borrow becomes the model's without
        // moving, and is written again only when they have been replaced.
        const double* pi = training.adoptsPi ? piNew.data() : passes.pi;
        auto next = std::make_unique<ForwardTable>(candidate(pi, aNew, bNew), symbols, o, T);
        const double likelihood = orderedSum(next->alpha[T - 1], p.N);
        if (!(likelihood > training.reference(alpha, p.N, T))) return;
        if (training.adoptsPi) model.pi.swap(piNew);
        model.a.swap(aNew);
        model.b.swap(bNew);
        current = std::move(next);
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
