#ifndef VESK_VESKKIT_REPORT_MODELPLOTS_H
#define VESK_VESKKIT_REPORT_MODELPLOTS_H

#include <vesk/math/MatrixT.h>
#include <veskkit/report/StrokePlot.h>

#include <string>
#include <vector>

namespace Vesk::Kit {

// What StrokePlot.h says of plots is true of these. A table's values are looked for within its
// storage only: a damaged model draws what it has.

/// The directions of the symbols, in degrees, as spokes with the symbols' numbers; of many every
/// few bear one. Directions that are not finite are left out.
std::string codebookRose(const std::string& title, const std::vector<double>& directions,
                         YAxis y = YAxis::Down);

/// The states of a model from left to right, and an arrow as wide as its probability for every
/// transition of `a`, N x N, of at least 0.005: staying above, forward jumps below, steps back
/// above. Values that are no probability are not drawn, or as the nearest where above 1.
std::string transitionGraph(const std::string& title, const Vesk::Math::MatrixT<double>& a);

/// The emissions `b`, N x M: a row a state, a column a symbol, the more opaque the likelier, in
/// steps of a fiftieth of the largest value; what is nearer to 0 is blank. Values that are not
/// finite have the colour of errors.
/// @param directions of the symbols in degrees; where given, columns are marked with them
std::string emissionHeatMap(const std::string& title, const Vesk::Math::MatrixT<double>& b,
                            const std::vector<double>& directions = {}, YAxis y = YAxis::Down);

}  // namespace Vesk::Kit

#endif
