#include <veskcore/internal/NearestCentre.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

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
    const std::size_t k = sorted.size();
    for (std::size_t i = 0; i < k && k > 1; ++i) {
        const double next = sorted[(i + 1) % k].angle;
        crowded = crowded || circularDistance(sorted[i].angle, next) < leastGap;
    }

    const std::size_t count = cellsEach * k;
    cellsPerDegree = static_cast<double>(count) / 360.0;
    cells.assign(count + 2, k);
    std::size_t below = 0;
    for (std::size_t cell = 0; cell <= count; ++cell) {
        while (below < k && cellOf(sorted[below].angle) < cell) ++below;
        cells[cell] = below;
    }
}

std::size_t NearestCentre::lowerBound(double angle) const {
    const std::size_t cell = cellOf(angle);
    const auto at = [this](std::size_t position) {
        return sorted.begin() + static_cast<std::ptrdiff_t>(position);
    };
    const auto found =
        std::lower_bound(at(cells[cell]), at(cells[cell + 1]), angle,
                         [](const Entry& entry, double value) { return entry.angle < value; });
    return static_cast<std::size_t>(found - sorted.begin());
}

int NearestCentre::operator()(double angle) const {
    if (!std::isfinite(angle) || sorted.empty()) return 0;
    const double target = reduced(angle);
    const std::size_t position = lowerBound(target);
    const std::size_t k = sorted.size();
    const std::size_t above = position < k ? position : 0;
    const std::size_t below = position > 0 ? position - 1 : k - 1;
    if (crowded) return amongEquals(above, below, target);
    // The nearest centre is a neighbour of the angle: each centre beyond a neighbour is farther
    // from the angle by the gap between them, on the shorter way.
    const double up = circularDistance(target, sorted[above].angle);
    const double down = circularDistance(target, sorted[below].angle);
    if (up != down) return sorted[up < down ? above : below].index;
    return std::min(sorted[above].index, sorted[below].index);
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
    if (crowded || sorted.empty()) {
        for (std::size_t i = 0; i < ascending.size(); ++i) add(i + 1, (*this)(ascending[i]));
        return found;
    }
    // Between two centres the answer changes once, from the lower one to the upper one.
    const std::size_t k = sorted.size();
    auto from = ascending.begin();
    for (std::size_t i = 0; i <= k; ++i) {
        const int lower = sorted[(i + k - 1) % k].index;
        const auto to =
            i == k ? ascending.end() : std::lower_bound(from, ascending.end(), sorted[i].angle);
        const auto change =
            std::partition_point(from, to, [&](double angle) { return (*this)(angle) == lower; });
        add(static_cast<std::size_t>(change - ascending.begin()), lower);
        add(static_cast<std::size_t>(to - ascending.begin()), sorted[i % k].index);
        from = to;
    }
    return found;
}

int NearestCentre::amongEquals(std::size_t above, std::size_t below, double angle) const {
    const std::size_t k = sorted.size();
    double least = 360.0;
    int nearest = 0;
    // Going away from the angle on either side, distances as computed never fall before the far
    // side of the circle.
    const auto consider = [&](std::size_t start, std::size_t step) {
        const double first = circularDistance(angle, sorted[start].angle);
        if (first > least) return;
        if (first < least) nearest = sorted[start].index;
        least = first;
        std::size_t at = start;
        for (std::size_t steps = 0; steps < k; ++steps, at = (at + step) % k) {
            if (circularDistance(angle, sorted[at].angle) != first) return;
            nearest = std::min(nearest, sorted[at].index);
        }
    };
    consider(above, 1);
    consider(below, k - 1);
    return nearest;
}

}  // namespace Vesk::ML::internal
