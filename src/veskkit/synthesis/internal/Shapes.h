#ifndef VESK_VESKKIT_SYNTHESIS_INTERNAL_SHAPES_H
#define VESK_VESKKIT_SYNTHESIS_INTERNAL_SHAPES_H

#include <string>
#include <vector>

namespace Vesk::Kit::internal {

struct Position {
    double x;
    double y;
};

/// A place that the pen passes. The path is smooth there, unless it is a corner.
struct Knot {
    Position at;
    bool corner = false;
};

/// How a gesture is drawn: one stroke through its knots, in a box of about 1 x 1, y downwards.
struct Shape {
    std::string name;
    std::vector<Knot> knots;
};

/// All shapes in the order of their names.
const std::vector<Shape>& shapes();

}  // namespace Vesk::Kit::internal

#endif
