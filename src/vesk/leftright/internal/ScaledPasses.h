#ifndef VESK_LEFTRIGHT_INTERNAL_SCALEDPASSES_H
#define VESK_LEFTRIGHT_INTERNAL_SCALEDPASSES_H

#include <vesk/hmm/internal/Parameters.h>

namespace Vesk::ML::internal {

/// Scaled alpha and beta, N x T; N x 0 for T < 1. `scale` holds at least T factors, which the
/// forward pass writes and the backward pass reads (Rabiner 1989, section V.A, with the inverse of
/// the scale factors there).
MatrixT<double> scaledForward(const Parameters& parameters, const int* o, int T, double* scale);
MatrixT<double> scaledBackward(const Parameters& parameters, const int* o, int T,
                               const double* scale);

/// ln P(o) from a forward pass that keeps no table; 0.0 for T < 1. Fills `scale`.
double scaledLikelihood(const Parameters& parameters, const int* o, int T, double* scale);

/// ln P(o) from the factors of a forward pass.
double logLikelihoodOf(const double* scale, int T);

}  // namespace Vesk::ML::internal

#endif
