#include <vesk/hmm/internal/Passes.h>

namespace Vesk::ML::internal {
void storeColumn(MatrixT<double>& table, int t, const double* column) {
    double* to = table.data.data() + t;
    for (int i = 0; i < table.rows; ++i, to += table.cols) *to = column[i];
}

MatrixT<double> forward(const Parameters& parameters, const int* o, int T) {
    MatrixT<double> alpha = Vesk::Math::internal::zeros(parameters.N, std::max(T, 0));
    if (T < 1) return alpha;
    Scratch scratch;
    Passes passes(scratch, parameters, o, T);
    const Columns columns = passes.columns(2);
    passes.exactly([&] {
        complete(ForwardPass(passes, o, T, alternating(columns),
                             [&](int t, const double* column) { storeColumn(alpha, t, column); }));
    });
    return alpha;
}

MatrixT<double> backward(const Parameters& parameters, const int* o, int T) {
    MatrixT<double> beta = Vesk::Math::internal::zeros(parameters.N, std::max(T, 0));
    if (T < 1) return beta;
    Scratch scratch;
    Passes passes(scratch, parameters, o, T);
    const Columns columns = passes.columns(2);
    passes.exactly([&] {
        complete(BackwardPass(passes, o, T, 1.0, alternating(columns),
                              [&](int t, const double* column) { storeColumn(beta, t, column); }));
    });
    return beta;
}

std::vector<double> lastForwardColumn(const Parameters& parameters, const int* o, int T) {
    Scratch scratch;
    Passes passes(scratch, parameters, o, T);
    const Columns columns = passes.columns(2);
    passes.exactly([&] { complete(ForwardPass(passes, o, T, alternating(columns), asItIs)); });
    const double* last = alternating(columns)(T - 1);
    return {last, last + parameters.N};
}

double forwardLikelihood(const Parameters& parameters, const int* o, int T) {
    if (T < 1) return 0.0;
    const std::vector<double> alpha = lastForwardColumn(parameters, o, T);
    return orderedSum(alpha.data(), parameters.N);
}

double backwardLikelihood(const Parameters& parameters, const int* o, int T) {
    if (T < 1) return 0.0;
    Scratch scratch;
    Passes passes(scratch, parameters, o, T);
    const Columns columns = passes.columns(2);
    passes.exactly(
        [&] { complete(BackwardPass(passes, o, T, 1.0, alternating(columns), asItIs)); });
    const double* beta = alternating(columns)(0);
    const double* e = passes.emissions[o[0]];
    double sum = 0.0;
    for (int i = 0; i < parameters.N; ++i) sum += parameters.pi[i] * e[i] * beta[i];
    return sum;
}

}  // namespace Vesk::ML::internal
