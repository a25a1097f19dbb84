#include "Differential.h"
#include "Target.h"

#include <support/HmmModels.h>
#include <support/HmmReference.h>

namespace Vesk::Fuzz {

using Vesk::Test::bitEqual;
namespace Literal = Vesk::Test::Reference;

namespace {

Literal::Table tableOf(Bytes& bytes, int rows, int cols) {
    Literal::Table table;
    for (int r = 0; r < rows; ++r)
        table.push_back(bytes.parameters(static_cast<std::size_t>(cols)));
    return table;
}

}  // namespace

void compareGeneral(Bytes& bytes) {
    const int N = bytes.integer(1, 20);
    const int M = bytes.integer(1, 6);
    const int T = bytes.integer(0, 24);
    const int iterations = bytes.integer(0, 2);
    Literal::Model literal = Literal::makeModel(N, M);
    literal.pi = bytes.parameters(static_cast<std::size_t>(N));
    literal.a = tableOf(bytes, N, N);
    literal.b = tableOf(bytes, N, M);
    const std::vector<int> o = bytes.symbols(T + bytes.integer(0, 2), M);
    Vesk::ML::HMM model = Vesk::Test::modelOf(literal);

    const Literal::Table alpha = Literal::forwardProc(literal, o, T);
    const Literal::Table beta = Literal::backwardProc(literal, o, T);
    expect(bitEqual(alpha, T, model.forwardProc(o, T)), "forward table");
    expect(bitEqual(beta, T, model.backwardProc(o, T)), "backward table");
    expect(bitEqual(Literal::forwardProbability(literal, o, T), model.forwardProbability(o, T)),
           "forward probability");
    expect(bitEqual(Literal::backwardProbability(literal, o, T), model.backwardProbability(o, T)),
           "backward probability");
    expect(bitEqual(Literal::viterbi(literal, o, T), T, model.viterbi(o, T)), "best path");
    if (T == 0) return;
    const int i = bytes.integer(0, N - 1);
    const int t = bytes.integer(0, T - 1);
    const auto forward = model.forwardProc(o, T);
    const auto backward = model.backwardProc(o, T);
    expect(bitEqual(Literal::gamma(i, t, N, alpha, beta), model.gamma(i, t, forward, backward)),
           "gamma");
    if (t + 1 < T) {
        const int j = bytes.integer(0, N - 1);
        expect(bitEqual(Literal::xi(i, j, t, o, N, literal.a, literal.b, alpha, beta),
                        model.xi(i, j, t, o, forward, backward)),
               "xi");
    }
    if (N > 8) return;  // the literal trainer is slow
    Literal::baumWelch(literal, o, T, iterations);
    model.baumWelch(o, T, iterations);
    expect(Vesk::Test::modelsEqual(literal, model), "trained model");
}

}  // namespace Vesk::Fuzz
