#ifndef VESK_BENCH_PLAIN_TRAINING_H
#define VESK_BENCH_PLAIN_TRAINING_H

#include "Passes.h"

#include <vesk/leftright/LeftRightHMM.h>

#include <vector>

namespace Vesk::Bench::Plain {

/// The sums that new parameters are quotients of.
struct Counts {
    Matrix transitions;
    std::vector<double> departures;
    Matrix matched;
    Matrix unmatched;

    explicit Counts(const ML::HMM& model)
        : transitions(model.a.rows, model.a.cols),
          departures(model.numStates),
          matched(model.b.rows, model.b.cols),
          unmatched(model.b.rows, model.b.cols) {}

    void add(const ML::HMM& model, const std::vector<int>& o, const Matrix& alpha,
             const Matrix& beta) {
        const int N = static_cast<int>(model.numStates);
        const int M = static_cast<int>(model.vocabSize);
        const int T = static_cast<int>(o.size());
        std::vector<double> gamma(model.numStates);
        for (int t = 0; t < T; ++t) {
            double sum = 0.0;
            for (int i = 0; i < N; ++i) sum += alpha(i, t) * beta(i, t);
            for (int i = 0; i < N; ++i) {
                gamma[i] = ML::HMM::divide(alpha(i, t) * beta(i, t), sum);
                for (int k = 0; k < M; ++k) {
                    (k == o[t] ? matched : unmatched)(i, k) += gamma[i];
                }
            }
            if (t + 1 == T) break;
            sum = 0.0;
            for (int i = 0; i < N; ++i) {
                departures[i] += gamma[i];
                for (int j = 0; j < N; ++j) sum += joint(model, o, alpha, beta, i, j, t);
            }
            for (int i = 0; i < N; ++i) {
                for (int j = 0; j < N; ++j) {
                    transitions(i, j) +=
                        ML::HMM::divide(joint(model, o, alpha, beta, i, j, t), sum);
                }
            }
        }
    }

    void estimate(ML::HMM& model) const {
        for (int i = 0; i < model.a.rows; ++i) {
            for (int j = 0; j < model.a.cols; ++j) {
                model.a(i, j) = ML::HMM::divide(transitions(i, j), departures[i]);
            }
            for (int k = 0; k < model.b.cols; ++k) {
                model.b(i, k) = ML::HMM::divide(matched(i, k), unmatched(i, k));
            }
        }
    }

private:
    static double joint(const ML::HMM& model, const std::vector<int>& o, const Matrix& alpha,
                        const Matrix& beta, int i, int j, int t) {
        return alpha(i, t) * model.a(i, j) * model.b(j, o[t + 1]) * beta(j, t + 1);
    }
};

/// One iteration of the training on several sequences; the gain in log likelihood.
inline double trainOnce(ML::HMM& model, const std::vector<std::vector<int>>& sequences) {
    Counts counts(model);
    double gain = 0.0;
    std::vector<double> scale;
    for (const std::vector<int>& o : sequences) {
        scale.resize(o.size());
        const Matrix alpha = scaledForward(model, o, scale);
        counts.add(model, o, alpha, scaledBackward(model, o, scale));
        for (const double factor : scale) gain -= std::log(factor);
    }
    counts.estimate(model);
    for (const std::vector<int>& o : sequences) {
        scale.resize(o.size());
        gain += logLikelihood(model, o, scale);
    }
    return gain;
}

/// One iteration on one sequence with unscaled tables; the candidate's likelihood.
inline double trainOnce(ML::HMM& model, const std::vector<int>& o) {
    Counts counts(model);
    counts.add(model, o, forward(model, o), backward(model, o));
    counts.estimate(model);
    return lastColumnSum(forward(model, o));
}

}  // namespace Vesk::Bench::Plain

#endif
