#ifndef VESK_VESKKIT_REPORT_INTERNAL_DIRECTION_H
#define VESK_VESKKIT_REPORT_INTERNAL_DIRECTION_H

#include <veskkit/report/StrokePlot.h>

#include <cmath>

namespace Vesk::Kit::internal {

/// A step of length 1 on the page, whose y grows downwards.
struct Direction {
    Direction(double degrees, YAxis axis)
        : x(std::cos(degrees / degreesPerRadian)),
          y(std::sin(degrees / degreesPerRadian) * (axis == YAxis::Down ? 1.0 : -1.0)) {}

    static constexpr double degreesPerRadian = 57.29577951308232;  // 180 / pi

    double x;
    double y;
};

}  // namespace Vesk::Kit::internal

#endif
