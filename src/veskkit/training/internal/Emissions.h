#ifndef VESK_VESKKIT_TRAINING_INTERNAL_EMISSIONS_H
#define VESK_VESKKIT_TRAINING_INTERNAL_EMISSIONS_H

#include <vesk/math/MatrixT.h>

#include <vector>

namespace Vesk::Kit::internal {

/// Relative frequencies of symbols over the even cut: time t of T belongs to state floor(t N / T).
/// A state that saw nothing gets a row of zeros.
Vesk::Math::MatrixT<double> evenCutEmissions(const std::vector<std::vector<int>>& sequences, int N,
                                             int M);

/// Raises every emission to `floor` at least and makes the rows sum to 1.
void floorEmissions(Vesk::Math::MatrixT<double>& b, double floor);

/// Turns trained emissions, which are odds p / (1 - p), back into the probabilities p.
void oddsToProbabilities(Vesk::Math::MatrixT<double>& b);

/// M x M: a Gaussian on the circle, `sigma` degrees wide, between any two directions; 1 from each
/// to itself.
Vesk::Math::MatrixT<double> circularGaussian(const std::vector<double>& codebook, double sigma);

/// Spreads every emission over the neighbouring directions with a Gaussian on the circle, `sigma`
/// degrees wide. A row's sum stays. Nothing happens for a sigma of 0.
void smoothEmissions(Vesk::Math::MatrixT<double>& b, const std::vector<double>& codebook,
                     double sigma);

}  // namespace Vesk::Kit::internal

#endif
