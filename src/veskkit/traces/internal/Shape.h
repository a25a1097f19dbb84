#ifndef VESK_VESKKIT_TRACES_INTERNAL_SHAPE_H
#define VESK_VESKKIT_TRACES_INTERNAL_SHAPE_H

#include <veskkit/traces/Trace.h>

#include <vector>

namespace Vesk::Kit::internal {

/// A trace's shape, size and position put aside: 32 positions at equal distances, centred, divided
/// by the largest absolute coordinate; x and y in turns. InputError for a trace without a
/// direction.
std::vector<double> shapeOf(const Points& trace);

/// Squared Euclidean distance of two shapes.
double squaredDistance(const std::vector<double>& x, const std::vector<double>& y);

}  // namespace Vesk::Kit::internal

#endif
