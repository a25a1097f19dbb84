#include "Differential.h"
#include "Target.h"

#include <support/LeftRightModels.h>
#include <support/LeftRightReference.h>

namespace Vesk::Fuzz {

using Vesk::Test::bitEqual;
namespace Literal = Vesk::Test::Reference;

namespace {

/// Transitions with zeros outside of a band, where `delta` is not negative.
Literal::Table transitions(Bytes& bytes, int N, int delta) {
    Literal::Table a = Literal::zeros(N, N);
    for (int i = 0; i < N; ++i) {
        for (int j = 0; j < N; ++j) {
            const bool within = delta < 0 || (j >= i && j <= i + delta);
            if (within) a[Literal::at(i)][Literal::at(j)] = bytes.parameter();
        }
    }
    return a;
}

Literal::LeftRightModel modelOf(Bytes& bytes, int N, int M) {
    const int delta = bytes.integer(-1, 4);
    Literal::LeftRightModel model = Literal::makeLeftRight(N, M, delta);
    model.pi = bytes.parameters(static_cast<std::size_t>(N));
    model.a = transitions(bytes, N, delta);
    for (auto& row : model.b) row = bytes.parameters(static_cast<std::size_t>(M));
    model.convergenceThreshold = bytes.flag() ? -1.0F : 0.001F;
    return model;
}

}  // namespace

void compareLeftRight(Bytes& bytes) {
    const int N = bytes.integer(1, 20);
    const int M = bytes.integer(1, 6);
    const int K = bytes.integer(0, 3);
    const int iterations = bytes.integer(0, 2);
    Literal::LeftRightModel literal = modelOf(bytes, N, M);
    Vesk::ML::LeftRightHMM model = Vesk::Test::libraryModel(literal);
    std::vector<std::vector<int>> sequences;
    for (int k = 0; k < K; ++k) sequences.push_back(bytes.symbols(bytes.integer(0, 12), M));

    for (const std::vector<int>& o : sequences) {
        const int T = static_cast<int>(o.size());
        if (T == 0) continue;
        std::vector<double> literalScale(o.size());
        std::vector<double> scale(o.size());
        const auto alpha = Literal::forwardProcWithScale(literal, o, T, literalScale);
        expect(bitEqual(Vesk::Test::matrixOf(alpha), model.forwardProcWithScale(o, T, scale)),
               "scaled forward table");
        expect(bitEqual(literalScale, scale), "scales");
        const auto beta = Literal::backwardProcWithScale(literal, o, T, literalScale);
        expect(bitEqual(Vesk::Test::matrixOf(beta), model.backwardProcWithScale(o, T, scale)),
               "scaled backward table");
        expect(bitEqual(Literal::logLikelihood(literal, o), model.logLikelihood(o)),
               "log likelihood");
    }

    if (N <= 6) {  // the literal trainers are slow
        Literal::baumWelchMultiple(literal, sequences, iterations);
        model.trainMultiple(sequences, iterations);
        expect(Vesk::Test::sameModel(literal, model), "model trained on several sequences");
        if (K > 0 && !sequences[0].empty()) {
            const int T = static_cast<int>(sequences[0].size());
            Literal::baumWelch(literal, sequences[0], T, iterations);
            model.baumWelch(sequences[0], T, iterations);
            expect(Vesk::Test::sameModel(literal, model), "model trained on one sequence");
        }
    }
    Literal::calcInitialProbs(literal, Vesk::ML::HMM::EqualSegments, sequences);
    model.estimate(Vesk::ML::HMM::EqualSegments, sequences);
    expect(Vesk::Test::sameModel(literal, model), "initial estimate");
}

}  // namespace Vesk::Fuzz
