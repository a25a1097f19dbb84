#include <vesk/quantizer/internal/TraceFilters.h>

#include <vesk/quantizer/ProximityFilter.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <stdexcept>

namespace Vesk::ML {
namespace internal {
namespace {

/// A position's coordinates, borrowed.
struct Point {
    const double* x;
    std::size_t count;
};

Point pointAt(const Position& position) { return {position.data(), position.size()}; }

// Most positions have two coordinates and are spared the loops.

bool areEqual(Point p, Point q) {
    if (p.count == 2 && q.count == 2) return p.x[0] == q.x[0] && p.x[1] == q.x[1];
    return std::equal(p.x, p.x + p.count, q.x, q.x + q.count);
}

double squaredDistanceOfAny(Point p, Point last) {
    double sum = 0.0;
    for (std::size_t k = 0; k < p.count; ++k) {
        if (k >= last.count) throw std::out_of_range("vector::_M_range_check");
        const double difference = p.x[k] - last.x[k];
        sum += difference * difference;
    }
    return sum;
}

/// Of the Euclidean distance over the coordinates of p.
inline double squaredDistance(Point p, Point last) {
    if (p.count != 2 || last.count < 2) return squaredDistanceOfAny(p, last);
    const double dx = p.x[0] - last.x[0];
    const double dy = p.x[1] - last.x[1];
    return dx * dx + dy * dy;
}

/// The least value whose square root, as computed, is no less than `root`; NaN for NaN.
double leastSquareOf(double root) {
    if (!(root > 0.0)) return root;
    constexpr double infinity = std::numeric_limits<double>::infinity();
    double square = root * root;
    while (std::sqrt(square) < root) square = std::nextafter(square, infinity);
    double less = std::nextafter(square, 0.0);
    while (std::sqrt(less) >= root) {
        square = less;
        less = std::nextafter(less, 0.0);
    }
    return square;
}

/// Which positions after the first one are far enough from the last one kept; none where the
/// distance is NaN.
class ProximityRule {
public:
    ProximityRule(double threshold, Point first)
        : leastSquare(leastSquareOf(threshold)), last(first) {}

    bool keeps(Point point) {
        if (!(squaredDistance(point, last) >= leastSquare)) return false;
        last = point;
        return true;
    }

private:
    double leastSquare;  ///< of a distance that is far enough
    Point last;
};

/// Gives `keep` each position that stays, as soon as that is known.
template <typename Keep>
void filterByProximity(const Positions& positions, double threshold, Keep keep) {
    if (positions.size() < 2) return;
    keep(positions[0]);
    ProximityRule rule(threshold, pointAt(*positions[0]));
    for (std::size_t i = 1; i < positions.size(); ++i) {
        if (rule.keeps(pointAt(*positions[i]))) keep(positions[i]);
    }
}

}  // namespace

Positions positionsOf(const Trace& trace) {
    Positions positions;
    positions.reserve(trace.size());
    for (const Position& position : trace) positions.push_back(&position);
    return positions;
}

Positions eqFiltered(const Trace& trace) {
    Positions kept;
    if (trace.size() < 2) return kept;
    kept.reserve(trace.size());
    kept.push_back(&trace[0]);
    for (std::size_t i = 1; i < trace.size(); ++i) {
        if (!areEqual(pointAt(trace[i]), pointAt(trace[i - 1]))) kept.push_back(&trace[i]);
    }
    return kept;
}

Positions proximityFiltered(const Positions& positions, double threshold) {
    Positions kept;
    kept.reserve(positions.size());
    filterByProximity(positions, threshold,
                      [&](const Position* position) { kept.push_back(position); });
    return kept;
}

Positions filtered(const Trace& trace, double threshold) {
    Positions kept;
    if (trace.size() < 2) return kept;
    kept.reserve(trace.size());
    kept.push_back(&trace[0]);
    Point previous = pointAt(trace[0]);
    ProximityRule rule(threshold, previous);
    bool severalDiffer = false;
    for (auto position = trace.begin() + 1; position != trace.end(); ++position) {
        const Point point = pointAt(*position);
        const bool repeated = areEqual(point, previous);
        previous = point;
        if (repeated) continue;
        severalDiffer = true;
        if (rule.keeps(point)) kept.push_back(&*position);
    }
    // Of one position the proximity filter leaves none.
    if (!severalDiffer) kept.clear();
    return kept;
}

}  // namespace internal

template <>
void ProximityFilter<double>::run(std::vector<std::vector<double>>& in,
                                  std::vector<std::vector<double>>& out, double threshold) {
    internal::filterByProximity(internal::positionsOf(in), threshold,
                                [&](const internal::Position* kept) { out.push_back(*kept); });
}

}  // namespace Vesk::ML
