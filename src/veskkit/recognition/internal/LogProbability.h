#ifndef VESK_VESKKIT_RECOGNITION_INTERNAL_LOGPROBABILITY_H
#define VESK_VESKKIT_RECOGNITION_INTERNAL_LOGPROBABILITY_H

#include <vesk/leftright/LeftRightHMM.h>

#include <cmath>
#include <limits>
#include <vector>

namespace Vesk::Kit::internal {

/// ln P of a sequence whose plain probability is known: that one's logarithm while it has all its
/// digits, else the scaled pass.
inline double logProbability(double plain, const Vesk::ML::LeftRightHMM& gesture,
                             const std::vector<int>& symbols) {
    if (std::isnormal(plain)) return std::log(plain);
    const double scaled = gesture.logLikelihood(symbols);
    return std::isnan(scaled) ? -std::numeric_limits<double>::infinity() : scaled;
}

}  // namespace Vesk::Kit::internal

#endif
