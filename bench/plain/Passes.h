#ifndef VESK_BENCH_PLAIN_PASSES_H
#define VESK_BENCH_PLAIN_PASSES_H

#include <vesk/hmm/HMM.h>

#include <cmath>
#include <vector>

/// What the library is compared with: the same operations in the same order, each table computed
/// once, one number at a time.
namespace Vesk::Bench::Plain {

using Matrix = Vesk::Math::MatrixT<double>;

inline Matrix forward(const ML::HMM& model, const std::vector<int>& o) {
    const int N = static_cast<int>(model.numStates);
    const int T = static_cast<int>(o.size());
    Matrix alpha(N, T);
    for (int i = 0; i < N; ++i) alpha(i, 0) = model.pi[i] * model.b(i, o[0]);
    for (int t = 1; t < T; ++t) {
        for (int j = 0; j < N; ++j) {
            double sum = 0.0;
            for (int i = 0; i < N; ++i) sum += alpha(i, t - 1) * model.a(i, j);
            alpha(j, t) = sum * model.b(j, o[t]);
        }
    }
    return alpha;
}

inline double lastColumnSum(const Matrix& alpha) {
    double sum = 0.0;
    for (int i = 0; i < alpha.rows; ++i) sum += alpha(i, alpha.cols - 1);
    return sum;
}

inline Matrix backward(const ML::HMM& model, const std::vector<int>& o) {
    const int N = static_cast<int>(model.numStates);
    const int T = static_cast<int>(o.size());
    Matrix beta(N, T);
    for (int i = 0; i < N; ++i) beta(i, T - 1) = 1.0;
    for (int t = T - 2; t >= 0; --t) {
        for (int i = 0; i < N; ++i) {
            double sum = 0.0;
            for (int j = 0; j < N; ++j) {
                sum += beta(j, t + 1) * model.a(i, j) * model.b(j, o[t + 1]);
            }
            beta(i, t) = sum;
        }
    }
    return beta;
}

inline Matrix scaledForward(const ML::HMM& model, const std::vector<int>& o,
                            std::vector<double>& scale) {
    const int N = static_cast<int>(model.numStates);
    const int T = static_cast<int>(o.size());
    Matrix alpha(N, T);
    for (int t = 0; t < T; ++t) {
        scale[t] = 0.0;
        for (int j = 0; j < N; ++j) {
            double sum = 0.0;
            if (t == 0) {
                sum = model.pi[j];
            } else {
                for (int i = 0; i < N; ++i) sum += alpha(i, t - 1) * model.a(i, j);
            }
            alpha(j, t) = sum * model.b(j, o[t]);
            scale[t] += alpha(j, t);
        }
        for (int j = 0; j < N; ++j) alpha(j, t) = ML::HMM::divide(alpha(j, t), scale[t]);
    }
    return alpha;
}

inline Matrix scaledBackward(const ML::HMM& model, const std::vector<int>& o,
                             const std::vector<double>& scale) {
    const int N = static_cast<int>(model.numStates);
    const int T = static_cast<int>(o.size());
    Matrix beta(N, T);
    for (int i = 0; i < N; ++i) beta(i, T - 1) = ML::HMM::divide(1.0, scale[T - 1]);
    for (int t = T - 2; t >= 0; --t) {
        for (int i = 0; i < N; ++i) {
            double sum = 0.0;
            for (int j = 0; j < N; ++j) {
                sum += beta(j, t + 1) * model.a(i, j) * model.b(j, o[t + 1]);
            }
            beta(i, t) = sum / scale[t];
        }
    }
    return beta;
}

inline double logLikelihood(const ML::HMM& model, const std::vector<int>& o,
                            std::vector<double>& scale) {
    scaledForward(model, o, scale);
    double sum = 0.0;
    for (std::size_t t = 0; t < o.size(); ++t) sum += std::log(scale[t]);
    return sum;
}

}  // namespace Vesk::Bench::Plain

#endif
