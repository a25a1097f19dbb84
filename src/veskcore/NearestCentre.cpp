#include <veskcore/internal/NearestCentre.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace Vesk::ML::internal {

namespace {

/// Gaps from this many degrees on outlast all rounding: a distance is exact to 1e-13.
constexpr double leastGap = 1e-9;

/// Cells a centre: most cells hold one entry or none.
constexpr std::size_t cellsEach = 4;

}  // namespace

double reduced(double degrees) {
    if (degrees >= 0.0 && degrees < 360.0) return degrees;
    double angle = std::fmod(degrees, 360.0);
    if (angle < 0.0) angle += 360.0;
    return angle == 360.0 ? 0.0 : angle;  // -1e-20 + 360 rounds to 360
}

NearestCentre::NearestCentre(const std::vector<double>& centres) {
    std::vector<Entry> sorted;
    sorted.reserve(centres.size());
    for (std::size_t i = 0; i < centres.size(); ++i) {
        if (std::isfinite(centres[i])) sorted.push_back({reduced(centres[i]), static_cast<int>(i)});
    }
    if (sorted.empty()) return;
    std::sort(sorted.begin(), sorted.end(), [](const Entry& x, const Entry& y) {
        return x.angle != y.angle ? x.angle < y.angle : x.index < y.index;
    });
    const auto end = std::unique(sorted.begin(), sorted.end(),
                                 [](const Entry& x, const Entry& y) { return x.angle == y.angle; });
    circle.reserve(sorted.size() + 2);
    circle.push_back(*(end - 1));
    circle.insert(circle.end(), sorted.begin(), end);
    circle.push_back(sorted[0]);

    const std::size_t k = circle.size() - 2;
    spread = true;
    angles.reserve(k + 1);
    for (std::size_t i = 1; i <= k; ++i) {
        angles.push_back(circle[i].angle);
        spread = spread &&
                 (k == 1 || circularDistance(circle[i].angle, circle[i + 1].angle) >= leastGap);
    }
    angles.push_back(std::numeric_limits<double>::infinity());

    const std::size_t count = cellsEach * k;
    cellsPerDegree = static_cast<double>(count) / 360.0;
    cells.assign(count + 2, k);
    std::size_t lower = 0;
    for (std::size_t cell = 0; cell <= count; ++cell) {
        const std::size_t before = lower;
        while (lower < k && cellOf(angles[lower]) < static_cast<std::ptrdiff_t>(cell)) ++lower;
        cells[cell] = lower;
        mostInCell = std::max(mostInCell, lower - before);
    }
    mostInCell = std::max(mostInCell, k - lower);
}

std::size_t NearestCentre::belowInCell(const std::size_t* cell, double angle) const {
    const auto at = [this](std::size_t position) {
        return angles.begin() + static_cast<std::ptrdiff_t>(position);
    };
    const auto found = std::lower_bound(at(cell[0]), at(cell[1]), angle);
    return static_cast<std::size_t>(found - angles.begin());
}

int NearestCentre::ofAny(double angle) const {
    if (!std::isfinite(angle) || circle.empty()) return 0;
    const double target = reduced(angle);
    return spread ? nearerNeighbour(target) : amongEquals(target);
}

std::vector<Run> NearestCentre::runs(const std::vector<double>& ascending) const {
    std::vector<Run> found;
    const auto add = [&](std::size_t end, int index) {
        if (end == (found.empty() ? 0 : found.back().end)) return;
        if (!found.empty() && found.back().index == index) {
            found.back().end = end;
        } else {
            found.push_back({end, index});
        }
    };
    if (!spread) {
        for (std::size_t i = 0; i < ascending.size(); ++i) add(i + 1, (*this)(ascending[i]));
        return found;
    }
    // Between two centres the answer changes once, from the lower one to the upper one.
    auto from = ascending.begin();
    for (std::size_t i = 0; i + 1 < circle.size(); ++i) {
        const int lower = circle[i].index;
        const auto to = std::lower_bound(from, ascending.end(), angles[i]);
        const auto change =
            std::partition_point(from, to, [&](double angle) { return (*this)(angle) == lower; });
        add(static_cast<std::size_t>(change - ascending.begin()), lower);
        add(static_cast<std::size_t>(to - ascending.begin()), circle[i + 1].index);
        from = to;
    }
    return found;
}

int NearestCentre::amongEquals(double angle) const {
    const std::size_t k = circle.size() - 2;
    const std::size_t position = below(angle);
    double least = 360.0;
    int nearest = 0;
    // Going away from the angle on either side, distances as computed never fall before the far
    // side of the circle.
    const auto consider = [&](std::size_t start, std::size_t step) {
        const double first = circularDistance(angle, angles[start]);
        if (first > least) return;
        if (first < least) nearest = circle[start + 1].index;
        least = first;
        std::size_t at = start;
        for (std::size_t steps = 0; steps < k; ++steps, at = (at + step) % k) {
            if (circularDistance(angle, angles[at]) != first) return;
            nearest = std::min(nearest, circle[at + 1].index);
        }
    };
    consider(position % k, 1);
    consider((position + k - 1) % k, k - 1);
    return nearest;
}

}  // namespace Vesk::ML::internal
