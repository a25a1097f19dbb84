#ifndef VESK_VESKKIT_SYNTHESIS_INTERNAL_STROKE_H
#define VESK_VESKKIT_SYNTHESIS_INTERNAL_STROKE_H

#include <veskkit/synthesis/internal/Shapes.h>

#include <vector>

namespace Vesk::Kit::internal {

/// A path and the time at which the pen passes each of its positions, in seconds from 0.
struct Motion {
    std::vector<Position> path;
    std::vector<double> times;

    double duration() const { return times.back(); }

    /// Where the pen is; the nearest end outside the times.
    Position at(double time) const;
};

/// The curve through the knots, densely: Catmull-Rom pieces that start and end straight at
/// corners.
std::vector<Position> curveThrough(const std::vector<Knot>& knots);

/// Rounds corners off: moves every position but the ends towards the middle of its neighbours,
/// `rounds` times.
void smooth(std::vector<Position>& path, int rounds);

/// Gives a path a hand's speed: slow at both ends and where the path bends, and the quicker the
/// longer the path, so that a drawing of any length takes about `seconds`.
Motion setInMotion(std::vector<Position> path, double seconds);

}  // namespace Vesk::Kit::internal

#endif
