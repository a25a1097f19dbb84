#include <vesk/hmm/internal/Passes.h>

#include <algorithm>
#include <utility>

namespace Vesk::ML::internal {

ForwardColumn::ForwardColumn(const Parameters& parameters)
    : alpha(static_cast<std::size_t>(parameters.N)),
      p(parameters),
      sums(static_cast<std::size_t>(parameters.N)) {}

void ForwardColumn::start(int symbol) {
    for (int i = 0; i < p.N; ++i) {
        alpha[static_cast<std::size_t>(i)] = p.pi[i] * p.b(i, symbol);
    }
}

void ForwardColumn::advance(int symbol) {
    // The sum for state j runs over i in order; all j are done side by side, along the rows of a.
    std::fill(sums.begin(), sums.end(), 0.0);
    double* sum = sums.data();
    for (int i = 0; i < p.N; ++i) {
        const double from = alpha[static_cast<std::size_t>(i)];
        const double* a = p.a.row(i);
        for (int j = 0; j < p.N; ++j) sum[j] += from * a[j];
    }
    for (int j = 0; j < p.N; ++j) alpha[static_cast<std::size_t>(j)] = sum[j] * p.b(j, symbol);
}

BackwardColumn::BackwardColumn(const Parameters& parameters, double last)
    : beta(static_cast<std::size_t>(parameters.N), last),
      p(parameters),
      emission(static_cast<std::size_t>(parameters.N)),
      sums(static_cast<std::size_t>(parameters.N)) {}

void BackwardColumn::retreat(int symbol) {
    for (int j = 0; j < p.N; ++j) emission[static_cast<std::size_t>(j)] = p.b(j, symbol);
    for (int i = 0; i < p.N; ++i) {
        const double* a = p.a.row(i);
        double sum = 0.0;
        for (int j = 0; j < p.N; ++j) {
            const auto to = static_cast<std::size_t>(j);
            sum += beta[to] * a[j] * emission[to];
        }
        sums[static_cast<std::size_t>(i)] = sum;
    }
    beta.swap(sums);
}

MatrixT<double> forward(const Parameters& parameters, const int* o, int T) {
    MatrixT<double> alpha = Vesk::Math::internal::zeros(parameters.N, std::max(T, 0));
    if (T < 1) return alpha;
    ForwardColumn column(parameters);
    column.start(o[0]);
    storeColumn(alpha, 0, column.alpha);
    for (int t = 1; t < T; ++t) {
        column.advance(o[t]);
        storeColumn(alpha, t, column.alpha);
    }
    return alpha;
}

MatrixT<double> backward(const Parameters& parameters, const int* o, int T) {
    MatrixT<double> beta = Vesk::Math::internal::zeros(parameters.N, std::max(T, 0));
    if (T < 1) return beta;
    BackwardColumn column(parameters, 1.0);
    storeColumn(beta, T - 1, column.beta);
    for (int t = T - 2; t >= 0; --t) {
        column.retreat(o[t + 1]);
        storeColumn(beta, t, column.beta);
    }
    return beta;
}

std::vector<double> lastForwardColumn(const Parameters& parameters, const int* o, int T) {
    ForwardColumn column(parameters);
    column.start(o[0]);
    for (int t = 1; t < T; ++t) column.advance(o[t]);
    return std::move(column.alpha);
}

double forwardLikelihood(const Parameters& parameters, const int* o, int T) {
    if (T < 1) return 0.0;
    return orderedSum(lastForwardColumn(parameters, o, T));
}

double backwardLikelihood(const Parameters& parameters, const int* o, int T) {
    if (T < 1) return 0.0;
    BackwardColumn column(parameters, 1.0);
    for (int t = T - 2; t >= 0; --t) column.retreat(o[t + 1]);
    double sum = 0.0;
    for (int i = 0; i < parameters.N; ++i) {
        sum += parameters.pi[i] * parameters.b(i, o[0]) * column.beta[static_cast<std::size_t>(i)];
    }
    return sum;
}

double orderedSum(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double value : values) sum += value;
    return sum;
}

void storeColumn(MatrixT<double>& table, int t, const std::vector<double>& column) {
    auto position = static_cast<std::size_t>(t);
    for (const double value : column) {
        table.data[position] = value;
        position += static_cast<std::size_t>(table.cols);
    }
}

}  // namespace Vesk::ML::internal
