#include <veskkit/Error.h>
#include <veskkit/traces/Resampler.h>
#include <veskkit/traces/internal/Shape.h>

#include <algorithm>
#include <cmath>

namespace Vesk::Kit::internal {

namespace {

constexpr int shapePoints = 32;

}  // namespace

std::vector<double> shapeOf(const Points& trace) {
    const Points points = Resampler({shapePoints, false, 0}).resample(trace);
    if (points.empty()) throw InputError("found a trace without a direction, expected a path");
    double centreX = 0.0;
    double centreY = 0.0;
    for (const std::vector<double>& point : points) {
        centreX += point[0] / shapePoints;
        centreY += point[1] / shapePoints;
    }
    std::vector<double> shape;
    double largest = 0.0;
    for (const std::vector<double>& point : points) {
        for (const double value : {point[0] - centreX, point[1] - centreY}) {
            shape.push_back(value);
            largest = std::max(largest, std::abs(value));
        }
    }
    for (double& value : shape) value = largest > 0.0 ? value / largest : 0.0;
    return shape;
}

double squaredDistance(const std::vector<double>& x, const std::vector<double>& y) {
    double sum = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) sum += (x[i] - y[i]) * (x[i] - y[i]);
    return sum;
}

}  // namespace Vesk::Kit::internal
