#ifndef VESKCORE_INTERNAL_NEARESTCENTRE_H
#define VESKCORE_INTERNAL_NEARESTCENTRE_H

#include <cstddef>
#include <vector>

namespace Vesk::ML::internal {

/// An angle in degrees brought to [0, 360).
double reduced(double degrees);

/// The distance of two reduced angles on the circle, in [0, 180].
double circularDistance(double x, double y);

/// Consecutive angles with the same nearest centre.
struct Run {
    std::size_t end;  ///< one past the last
    int index;

    bool operator==(const Run& other) const { return end == other.end && index == other.index; }
};

/// Finds the centre nearest to an angle with the answer of a direct comparison of all distances as
/// computed: the lowest index among the smallest. O(1) where the centres are spread, else
/// O(log k + e), e the number of centres that rounding makes equally far.
class NearestCentre {
public:
    /// Takes a sorted view of the centres; at least one. O(k log k).
    explicit NearestCentre(const std::vector<double>& centres);

    /// The index of the centre nearest to `angle`; 0 where the angle is not finite.
    int operator()(double angle) const;

    /// The same for many reduced angles in ascending order, as runs of one answer in their order.
    /// O(k log angles) unless centres are closer than rounding tells apart.
    std::vector<Run> runs(const std::vector<double>& ascending) const;

private:
    struct Entry {
        double angle;  ///< reduced
        int index;     ///< the lowest among equal centres
    };

    std::size_t cellOf(double angle) const {
        return static_cast<std::size_t>(angle * cellsPerDegree);
    }

    /// The first entry not below a reduced angle; the number of entries where there is none.
    std::size_t lowerBound(double angle) const;

    /// The answer where rounding can make more than the two neighbours equally far.
    int amongEquals(std::size_t above, std::size_t below, double angle) const;

    std::vector<Entry> sorted;       ///< the finite centres, by angle, each angle once
    std::vector<std::size_t> cells;  ///< how many entries lie in lower cells of the circle
    double cellsPerDegree = 0.0;
    bool crowded = false;  ///< some distances could come out equal that are not
};

}  // namespace Vesk::ML::internal

#endif
