#ifndef VESK_QUANTIZER_INTERNAL_TRACEFILTERS_H
#define VESK_QUANTIZER_INTERNAL_TRACEFILTERS_H

#include <vector>

namespace Vesk::ML::internal {

using Position = std::vector<double>;
using Trace = std::vector<Position>;

/// A trace thinned or not: positions of another trace, borrowed, in their order.
using Positions = std::vector<const Position*>;

/// All of a trace's positions.
Positions positionsOf(const Trace& trace);

/// Without those that equal their predecessor in number and value of coordinates; empty for fewer
/// than two positions.
Positions eqFiltered(const Trace& trace);

/// Without those closer than `threshold` to the last one kept; empty for fewer than two positions.
/// std::out_of_range where the last one kept has fewer coordinates.
Positions proximityFiltered(const Positions& positions, double threshold);

/// Both filters, in this order, in one go.
Positions filtered(const Trace& trace, double threshold);

}  // namespace Vesk::ML::internal

#endif
