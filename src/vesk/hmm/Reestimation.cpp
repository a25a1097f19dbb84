#include <vesk/hmm/internal/Reestimation.h>

#include <vesk/hmm/internal/Passes.h>

#include <algorithm>
#include <cstddef>

namespace Vesk::ML::internal {

void posteriors(const MatrixT<double>& alpha, const MatrixT<double>& beta, int t,
                std::vector<double>& gamma) {
    double sum = 0.0;
    for (int i = 0; i < alpha.rows; ++i) {
        const double product = alpha(i, t) * beta(i, t);
        gamma[static_cast<std::size_t>(i)] = product;
        sum += product;
    }
    for (double& value : gamma) value = divide(value, sum);
}

Reestimation::Reestimation(int numStates, int vocabSize) : N(numStates), M(vocabSize) {
    const auto n = static_cast<std::size_t>(N);
    const auto m = static_cast<std::size_t>(M);
    gamma.resize(n);
    terms.resize(n * n);
    transitions.resize(n * n);
    departures.resize(n);
    matched.resize(n * m);
    unmatched.resize(n * m);
}

void Reestimation::clear() {
    std::fill(transitions.begin(), transitions.end(), 0.0);
    std::fill(departures.begin(), departures.end(), 0.0);
    std::fill(matched.begin(), matched.end(), 0.0);
    std::fill(unmatched.begin(), unmatched.end(), 0.0);
}

void Reestimation::add(const Parameters& parameters, const int* o, int T,
                       const MatrixT<double>& alpha, const MatrixT<double>& beta) {
    for (int t = 0; t < T; ++t) {
        posteriors(alpha, beta, t, gamma);
        if (t + 1 < T) addTransitions(parameters, o, t, alpha, beta);
        addEmissions(o[t]);
    }
}

void Reestimation::addTransitions(const Parameters& parameters, const int* o, int t,
                                  const MatrixT<double>& alpha, const MatrixT<double>& beta) {
    // The products of xi's numerators are those of its denominator.
    double sum = 0.0;
    double* term = terms.data();
    for (int i = 0; i < N; ++i) {
        for (int j = 0; j < N; ++j) {
            *term = alpha(i, t) * parameters.a(i, j) * parameters.b(j, o[t + 1]) * beta(j, t + 1);
            sum += *term;
            ++term;
        }
    }
    for (std::size_t ij = 0; ij < terms.size(); ++ij) transitions[ij] += divide(terms[ij], sum);
    for (std::size_t i = 0; i < departures.size(); ++i) departures[i] += gamma[i];
}

void Reestimation::addEmissions(int symbol) {
    double* seen = matched.data();
    double* other = unmatched.data();
    // A symbol outside the alphabet, which the caller has to keep away, equals no k.
    const bool known = symbol >= 0 && symbol < M;
    const int before = known ? symbol : M;
    for (int i = 0; i < N; ++i) {
        const double mass = gamma[static_cast<std::size_t>(i)];
        for (int k = 0; k < before; ++k) other[k] += mass;
        if (known) seen[symbol] += mass;
        for (int k = before + 1; k < M; ++k) other[k] += mass;
        seen += M;
        other += M;
    }
}

void Reestimation::estimate(MatrixT<double>& a, MatrixT<double>& b) const {
    a.resize(N, N);
    b.resize(N, M);
    std::size_t ij = 0;
    std::size_t ik = 0;
    for (int i = 0; i < N; ++i) {
        for (int j = 0; j < N; ++j, ++ij) {
            a(i, j) = divide(transitions[ij], departures[static_cast<std::size_t>(i)]);
        }
        for (int k = 0; k < M; ++k, ++ik) b(i, k) = divide(matched[ik], unmatched[ik]);
    }
}

}  // namespace Vesk::ML::internal
