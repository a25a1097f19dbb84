#ifndef VESK_QUANTIZER_PROXIMITYFILTER_H
#define VESK_QUANTIZER_PROXIMITYFILTER_H

#include <vesk/Export.h>

#include <vector>

namespace Vesk::ML {

/// Thins a trace: drops positions that lie too close to the last one kept. T is the coordinates'
/// type: the library has it for double.
template <typename T>
class ProximityFilter {
public:
    /// Appends to `out` (never cleared, not the same object as `in`) the first position of `in` and
    /// every later one whose Euclidean distance from the last kept is at least `threshold`, in the
    /// positions' unit.
    ///
    /// Nothing is appended where `in` holds fewer than two positions. The distance is taken over
    /// the coordinates of the position at hand; std::out_of_range where the last kept has fewer. A
    /// NaN distance drops the position; a threshold of 0 or below keeps every other.
    /// O(coordinates).
    static void run(std::vector<std::vector<T>>& in, std::vector<std::vector<T>>& out, T threshold);
};

/// For double, in the library.
template <>
VESK_API void ProximityFilter<double>::run(std::vector<std::vector<double>>& in,
                                           std::vector<std::vector<double>>& out, double threshold);

}  // namespace Vesk::ML

#endif
