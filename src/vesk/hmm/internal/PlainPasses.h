#ifndef VESK_HMM_INTERNAL_PLAINPASSES_H
#define VESK_HMM_INTERNAL_PLAINPASSES_H

#include <vesk/hmm/internal/Parameters.h>
#include <vesk/hmm/internal/Symbols.h>

#include <vector>

namespace Vesk::ML::internal {

/// alpha and beta, N x T; N x 0 for T < 1.
MatrixT<double> forward(const Parameters& parameters, const int* o, int T);
MatrixT<double> backward(const Parameters& parameters, const int* o, int T);

/// What a forward pass comes to.
struct ForwardResult {
    double likelihood;   ///< P(o): the sum of alpha's last column
    double inLastState;  ///< alpha's last value: P(o, last state at the last time)
};

/// Of several models over the same sequence, T >= 1.
std::vector<ForwardResult> forwardResults(const std::vector<Parameters>& models,
                                          const Symbols& symbols, const int* o, int T);

/// P(o), 0.0 for T < 1; with the symbols at hand for T >= 1.
double forwardLikelihood(const Parameters& parameters, const int* o, int T);
double forwardLikelihood(const Parameters& parameters, const Symbols& symbols, const int* o, int T);

/// The same of many sequences, with columns of b for all symbols.
std::vector<double> forwardLikelihoods(const Parameters& parameters,
                                       const std::vector<std::vector<int>>& sequences);

/// P(o) from beta, which rounds differently.
double backwardLikelihood(const Parameters& parameters, const int* o, int T);

}  // namespace Vesk::ML::internal

#endif
