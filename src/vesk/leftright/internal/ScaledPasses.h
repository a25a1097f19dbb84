#ifndef VESK_LEFTRIGHT_INTERNAL_SCALEDPASSES_H
#define VESK_LEFTRIGHT_INTERNAL_SCALEDPASSES_H

#include <vesk/hmm/internal/Passes.h>

#include <vector>

namespace Vesk::ML::internal {

/// Scaled alpha and beta, N x T; N x 0 for T < 1. `scale` holds at least T factors, which the
/// forward pass writes and the backward pass reads (Rabiner 1989, section V.A, with the inverse of
/// the scale factors there).
MatrixT<double> scaledForward(const Parameters& parameters, const int* o, int T, double* scale);
MatrixT<double> scaledBackward(const Parameters& parameters, const int* o, int T,
                               const double* scale);

/// ln P(o) from a forward pass that keeps no table; 0.0 for T < 1. Fills `scale`.
double scaledLikelihood(const Parameters& parameters, const int* o, int T, double* scale);

/// A sequence of T >= 1 symbols and room for as many scale factors.
struct Track {
    const int* o;
    int T;
    double* scale;
};

/// The passes over several sequences together, into a table for each; to be run by
/// `Passes::exactly`.
void scaledForward(Passes& passes, const std::vector<Track>& tracks,
                   const std::vector<Columns>& alpha);
void scaledBackward(Passes& passes, const std::vector<Track>& tracks,
                    const std::vector<Columns>& beta);

/// Fills the scale factors of several sequences with forward passes that keep two columns each.
void scaleFactors(Passes& passes, const std::vector<Track>& tracks,
                  const std::vector<Columns>& two);

/// ln P(o) from the factors of a forward pass.
double logLikelihoodOf(const double* scale, int T);

}  // namespace Vesk::ML::internal

#endif
