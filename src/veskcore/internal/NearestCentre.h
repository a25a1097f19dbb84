#ifndef VESKCORE_INTERNAL_NEARESTCENTRE_H
#define VESKCORE_INTERNAL_NEARESTCENTRE_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace Vesk::ML::internal {

/// An angle in degrees brought to [0, 360).
double reduced(double degrees);

/// The distance of two reduced angles on the circle, in [0, 180].
inline double circularDistance(double x, double y) {
    const double d = std::fabs(x - y);
    return std::min(d, 360.0 - d);
}

/// Consecutive angles with the same nearest centre.
struct Run {
    std::size_t end;  ///< one past the last
    int index;

    bool operator==(const Run& other) const { return end == other.end && index == other.index; }
};

/// Finds the centre nearest to an angle with the answer of a direct comparison of all distances as
/// computed: the lowest index among the smallest. O(1) where the centres are spread evenly, else
/// O(log k + e), e the number of centres that rounding makes equally far.
class NearestCentre {
public:
    /// Takes a sorted view of the centres; at least one. O(k log k).
    explicit NearestCentre(const std::vector<double>& centres);

    /// The index of the centre nearest to `angle`; 0 where the angle is not finite.
    int operator()(double angle) const {
        const bool ordinary = angle >= 0.0 && angle < 360.0 && spread;
        return ordinary ? nearerNeighbour(angle) : ofAny(angle);
    }

    /// The same for many reduced angles in ascending order, as runs of one answer in their order.
    /// O(k log angles) unless centres are closer than rounding tells apart.
    std::vector<Run> runs(const std::vector<double>& ascending) const;

private:
    struct Entry {
        double angle;  ///< reduced
        int index;     ///< the lowest among equal centres
    };

    /// Cells with more entries than this are searched by halves.
    static constexpr std::size_t fewInCell = 4;

    std::ptrdiff_t cellOf(double angle) const {
        return static_cast<std::ptrdiff_t>(angle * cellsPerDegree);
    }

    /// How many entries are below a reduced angle.
    std::size_t below(double angle) const {
        const std::size_t* cell = cells.data() + cellOf(angle);
        if (mostInCell > fewInCell) return belowInCell(cell, angle);
        // No branch depends on the angle.
        std::size_t count = cell[0];
        for (std::size_t n = 0; n < mostInCell; ++n) count += angles[count] < angle ? 1 : 0;
        return count;
    }
    std::size_t belowInCell(const std::size_t* cell, double angle) const;

    /// Of a reduced angle and spread centres, the nearest one is a neighbour of the angle: each
    /// centre beyond a neighbour is farther from the angle by the gap between them, on the shorter
    /// way.
    int nearerNeighbour(double angle) const {
        const Entry* neighbours = &circle[below(angle)];
        const double down = circularDistance(angle, neighbours[0].angle);
        const double up = circularDistance(angle, neighbours[1].angle);
        if (up == down) return std::min(neighbours[0].index, neighbours[1].index);
        return neighbours[up < down ? 1 : 0].index;
    }

    int ofAny(double angle) const;

    /// The answer for a reduced angle where rounding can make more than its two neighbours equally
    /// far.
    int amongEquals(double angle) const;

    // The search runs over the angles alone, which lie closer together.
    std::vector<double> angles;      ///< finite centres in order, each angle once; then infinity
    std::vector<Entry> circle;       ///< theirs, after the last of them and before the first one
    std::vector<std::size_t> cells;  ///< how many entries lie in lower cells of the circle
    std::size_t mostInCell = 0;      ///< entries of the fullest cell
    double cellsPerDegree = 0.0;
    bool spread = false;  ///< there are centres, too far apart for rounding to make them equal
};

}  // namespace Vesk::ML::internal

#endif
