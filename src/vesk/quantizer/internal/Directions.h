#ifndef VESK_QUANTIZER_INTERNAL_DIRECTIONS_H
#define VESK_QUANTIZER_INTERNAL_DIRECTIONS_H

#include <vesk/quantizer/internal/TraceFilters.h>

#include <vector>

namespace Vesk::ML::internal {

/// The directions of the steps between consecutive positions, in degrees; {0.0} for fewer than two
/// positions. Every position must have at least two coordinates.
std::vector<double> directionsOf(const Positions& positions);

}  // namespace Vesk::ML::internal

#endif
