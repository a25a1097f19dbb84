#include <veskcore/internal/NearestCentre.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Vesk::ML::internal {

namespace {

/// Gaps from this many degrees on outlast all rounding: a distance is exact to 1e-13.
constexpr double leastGap = 1e-9;

/// Cells a centre, and questions that are worth a cell.
constexpr std::size_t fewestCellsEach = 4;
constexpr std::size_t mostCellsEach = 64;
constexpr std::size_t questionsEach = 2;
constexpr std::size_t mostCells = 65536;

/// Keeps angles below 360 out of a cell after the last one, where rounding would put them.
constexpr double lessThanOne = 1.0 - 1e-15;

/// Further from the middle between two centres than this, rounding does not decide: the distances
/// differ by twice as much at least, or by `leastGap`, each off by 1e-13.
constexpr double margin = leastGap / 8;

}  // namespace

double reduced(double degrees) {
    if (degrees >= 0.0 && degrees < 360.0) return degrees;
    double angle = std::fmod(degrees, 360.0);
    if (angle < 0.0) angle += 360.0;
    return angle == 360.0 ? 0.0 : angle;  // -1e-20 + 360 rounds to 360
}

NearestCentre::NearestCentre(const std::vector<double>& centres, std::size_t questions)
    : answers(1, unknown) {
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
    angles.reserve(k);
    for (std::size_t i = 1; i <= k; ++i) {
        angles.push_back(circle[i].angle);
        spread = spread &&
                 (k == 1 || circularDistance(circle[i].angle, circle[i + 1].angle) >= leastGap);
    }
    if (!spread || questions < k) return;
    fillCells(std::clamp(questions / questionsEach, fewestCellsEach * k, mostCellsEach * k));
}

/// Gives each cell the answer of its angles, but those that rounding decides in.
void NearestCentre::fillCells(std::size_t wanted) {
    const std::size_t k = angles.size();
    const std::size_t count = std::min(wanted, mostCells);
    cellsPerDegree = static_cast<double>(count) / 360.0 * lessThanOne;
    answers.assign(count, circle[1].index);
    if (k == 1) return;

    // The answer changes in the middle between two centres.
    std::vector<Entry> changes;
    changes.reserve(k);
    for (std::size_t i = 0; i < k; ++i) {
        const double next = i + 1 < k ? angles[i + 1] : angles[0] + 360.0;
        changes.push_back({reduced(angles[i] + (next - angles[i]) / 2), circle[i + 2].index});
    }
    // The last one may lie before the first one.
    if (changes.back().angle < changes[0].angle) {
        std::rotate(changes.begin(), changes.end() - 1, changes.end());
    }
    auto from = answers.begin();
    int index = changes.back().index;
    for (const Entry& change : changes) {
        const auto to = answers.begin() + static_cast<std::ptrdiff_t>(cellOf(change.angle));
        std::fill(from, to, index);
        from = to;
        index = change.index;
    }
    std::fill(from, answers.end(), index);
    for (const Entry& change : changes) {
        answers[cellOf(reduced(change.angle - margin))] = unknown;
        answers[cellOf(reduced(change.angle + margin))] = unknown;
    }
}

int NearestCentre::bySearch(double angle) const {
    if (!std::isfinite(angle) || circle.empty()) return 0;
    const double target = reduced(angle);
    return spread ? nearerNeighbour(target) : amongEquals(target);
}

/// How many centres are below a reduced angle.
std::size_t NearestCentre::below(double angle) const {
    const auto found = std::lower_bound(angles.begin(), angles.end(), angle);
    return static_cast<std::size_t>(found - angles.begin());
}

/// Of a reduced angle and spread centres, the nearest one is a neighbour of the angle: each centre
/// beyond a neighbour is farther from the angle by the gap between them, on the shorter way.
int NearestCentre::nearerNeighbour(double angle) const {
    const Entry* neighbours = &circle[below(angle)];
    const double down = circularDistance(angle, neighbours[0].angle);
    const double up = circularDistance(angle, neighbours[1].angle);
    if (up == down) return std::min(neighbours[0].index, neighbours[1].index);
    return neighbours[up < down ? 1 : 0].index;
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
    const auto end = ascending.end();
    for (std::size_t i = 0; i <= angles.size(); ++i) {
        const int lower = circle[i].index;
        const auto to = i < angles.size() ? std::lower_bound(from, end, angles[i]) : end;
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
