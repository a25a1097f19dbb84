#include <veskcore/internal/NearestCentre.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Vesk::ML::internal {

double reduced(double degrees) {
    double angle = std::fmod(degrees, 360.0);
    if (angle < 0.0) angle += 360.0;
    return angle == 360.0 ? 0.0 : angle;  // -1e-20 + 360 rounds to 360
}

double circularDistance(double x, double y) {
    const double d = std::fabs(x - y);
    return std::min(d, 360.0 - d);
}

NearestCentre::NearestCentre(const std::vector<double>& centres) {
    sorted.reserve(centres.size());
    for (std::size_t i = 0; i < centres.size(); ++i) {
        if (std::isfinite(centres[i])) sorted.push_back({reduced(centres[i]), static_cast<int>(i)});
    }
    std::sort(sorted.begin(), sorted.end(), [](const Entry& x, const Entry& y) {
        return x.angle != y.angle ? x.angle < y.angle : x.index < y.index;
    });
    const auto last = std::unique(sorted.begin(), sorted.end(), [](const Entry& x, const Entry& y) {
        return x.angle == y.angle;
    });
    sorted.erase(last, sorted.end());
}

int NearestCentre::operator()(double angle) const {
    if (!std::isfinite(angle) || sorted.empty()) return 0;
    const double target = reduced(angle);
    const auto above =
        std::lower_bound(sorted.begin(), sorted.end(), target,
                         [](const Entry& entry, double value) { return entry.angle < value; });
    const auto position = static_cast<std::size_t>(above - sorted.begin());
    const std::size_t k = sorted.size();
    // Going away from the angle on either side, distances as computed never fall before the far
    // side of the circle: the nearest centre is a neighbour, unless rounding makes equals of more.
    Nearest nearest{360.0, 0};
    considerFrom(position % k, true, target, nearest);
    considerFrom((position + k - 1) % k, false, target, nearest);
    return nearest.index;
}

void NearestCentre::considerFrom(std::size_t start, bool upwards, double angle,
                                 Nearest& nearest) const {
    const std::size_t k = sorted.size();
    const double first = circularDistance(angle, sorted[start].angle);
    if (first > nearest.distance) return;
    if (first < nearest.distance) nearest = {first, sorted[start].index};
    std::size_t at = start;
    for (std::size_t steps = 0; steps < k; ++steps) {
        if (circularDistance(angle, sorted[at].angle) != first) return;
        nearest.index = std::min(nearest.index, sorted[at].index);
        at = upwards ? (at + 1) % k : (at + k - 1) % k;
    }
}

}  // namespace Vesk::ML::internal
