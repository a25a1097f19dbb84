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
/// computed: the lowest index among the smallest. Most angles lie in a cell of the circle whose
/// angles all have the same answer; the others take O(log k), where centres are so close that
/// rounding makes e of them equally far O(log k + e).
class NearestCentre {
public:
    /// Takes a sorted view of the centres; at least one. `questions` is about how many angles will
    /// be asked for one by one: more of them are worth more cells. O(k log k).
    NearestCentre(const std::vector<double>& centres, std::size_t questions);

    /// The index of the centre nearest to `angle`; 0 where the angle is not finite.
    int operator()(double angle) const {
        if (angle >= 0.0 && angle < 360.0) {
            const int index = answers[cellOf(angle)];
            if (index != unknown) return index;
        }
        return bySearch(angle);
    }

    /// The same for many reduced angles in ascending order, as runs of one answer in their order.
    /// O(k log angles) unless centres are closer than rounding tells apart.
    std::vector<Run> runs(const std::vector<double>& ascending) const;

private:
    struct Entry {
        double angle;  ///< reduced
        int index;     ///< the lowest among equal centres
    };

    static constexpr int unknown = -1;

    void fillCells(std::size_t wanted);
    std::size_t cellOf(double angle) const {
        // By way of the type that processors convert to.
        return static_cast<std::size_t>(static_cast<std::ptrdiff_t>(angle * cellsPerDegree));
    }

    int bySearch(double angle) const;
    std::size_t below(double angle) const;
    int nearerNeighbour(double angle) const;
    int amongEquals(double angle) const;

    std::vector<double> angles;  ///< finite centres in order, each angle once
    std::vector<Entry> circle;   ///< theirs, after the last of them and before the first one
    std::vector<int> answers;    ///< by cell of the circle
    double cellsPerDegree = 0.0;
    bool spread = false;  ///< there are centres, too far apart for rounding to make them equal
};

}  // namespace Vesk::ML::internal

#endif
