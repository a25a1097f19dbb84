#include <vesk/leftright/internal/ScaledPasses.h>

#include <vesk/hmm/internal/Passes.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace Vesk::ML::internal {
namespace {

/// Divides the column by its sum and returns the sum.
double normalise(std::vector<double>& column) {
    const double sum = orderedSum(column);
    for (double& value : column) value = divide(value, sum);
    return sum;
}

}  // namespace

MatrixT<double> scaledForward(const Parameters& parameters, const int* o, int T, double* scale) {
    MatrixT<double> alpha = Vesk::Math::internal::zeros(parameters.N, std::max(T, 0));
    if (T < 1) return alpha;
    ForwardColumn column(parameters);
    column.start(o[0]);
    scale[0] = normalise(column.alpha);
    storeColumn(alpha, 0, column.alpha);
    for (int t = 1; t < T; ++t) {
        column.advance(o[t]);
        scale[t] = normalise(column.alpha);
        storeColumn(alpha, t, column.alpha);
    }
    return alpha;
}

MatrixT<double> scaledBackward(const Parameters& parameters, const int* o, int T,
                               const double* scale) {
    MatrixT<double> beta = Vesk::Math::internal::zeros(parameters.N, std::max(T, 0));
    if (T < 1) return beta;
    BackwardColumn column(parameters, divide(1.0, scale[T - 1]));
    storeColumn(beta, T - 1, column.beta);
    for (int t = T - 2; t >= 0; --t) {
        column.retreat(o[t + 1]);
        for (double& value : column.beta) value /= scale[t];
        storeColumn(beta, t, column.beta);
    }
    return beta;
}

double scaledLikelihood(const Parameters& parameters, const int* o, int T, double* scale) {
    if (T < 1) return 0.0;
    ForwardColumn column(parameters);
    column.start(o[0]);
    scale[0] = normalise(column.alpha);
    for (int t = 1; t < T; ++t) {
        column.advance(o[t]);
        scale[t] = normalise(column.alpha);
    }
    return logLikelihoodOf(scale, T);
}

double logLikelihoodOf(const double* scale, int T) {
    double sum = 0.0;
    for (int t = 0; t < T; ++t) sum += std::log(scale[t]);
    return sum;
}

}  // namespace Vesk::ML::internal
