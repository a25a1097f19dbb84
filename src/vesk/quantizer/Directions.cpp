#include <vesk/quantizer/internal/Directions.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <cassert>
#include <cmath>
#include <cstddef>

namespace Vesk::ML {
namespace internal {
namespace {

/// 180 / pi
constexpr double degreesPerRadian = 57.29577951308232;

double toDegrees(double rad) { return rad * degreesPerRadian; }

/// The direction from one position to the next, 0 along x and 90 along y. The arctangent of the
/// slope with a correction for the quadrant, not the two-argument arctangent: its rounding is part
/// of the result (a slope of -1e-20 gives 360).
double direction(const Position& from, const Position& to) {
    assert(from.size() >= 2 && to.size() >= 2);
    if (to[0] == from[0]) return from[1] < to[1] ? 90.0 : 270.0;
    double angle = toDegrees(std::atan((to[1] - from[1]) / (to[0] - from[0])));
    if (from[0] > to[0]) angle += 180.0;
    if (angle < 0.0) angle += 360.0;
    return angle;
}

}  // namespace

std::vector<double> directionsOf(const Positions& positions) {
    if (positions.size() < 2) return {0.0};
    std::vector<double> angles(positions.size() - 1);
    for (std::size_t i = 0; i < angles.size(); ++i) {
        angles[i] = direction(*positions[i], *positions[i + 1]);
    }
    return angles;
}

}  // namespace internal

double VectorQuantizer2D::radToDeg(double rad) { return internal::toDegrees(rad); }

std::vector<double> VectorQuantizer2D::convertSequence(std::vector<std::vector<double>>& trace) {
    return internal::directionsOf(internal::positionsOf(trace));
}

}  // namespace Vesk::ML
