#ifndef VESKCORE_INTERNAL_NEARESTCENTRE_H
#define VESKCORE_INTERNAL_NEARESTCENTRE_H

#include <cstddef>
#include <vector>

namespace Vesk::ML::internal {

/// An angle in degrees brought to [0, 360).
double reduced(double degrees);

/// The distance of two reduced angles on the circle, in [0, 180].
double circularDistance(double x, double y);

/// Finds the centre nearest to an angle in O(log k + e), e the number of centres that rounding
/// makes equally far (one or two, unless they crowd within 1e-13 degrees), with the answer of a
/// direct comparison of all distances as computed: the lowest index among the smallest.
class NearestCentre {
public:
    /// Takes a sorted view of the centres; at least one. O(k log k).
    explicit NearestCentre(const std::vector<double>& centres);

    /// The index of the centre nearest to `angle`; 0 where the angle is not finite.
    int operator()(double angle) const;

private:
    struct Entry {
        double angle;  ///< reduced
        int index;     ///< the lowest among equal centres
    };

    struct Nearest {
        double distance;
        int index;
    };

    /// Takes in the centre at `start` and those beyond it that are equally far.
    void considerFrom(std::size_t start, bool upwards, double angle, Nearest& nearest) const;

    std::vector<Entry> sorted;  ///< the finite centres, by angle, each angle once
};

}  // namespace Vesk::ML::internal

#endif
