#include <vesk/quantizer/internal/TraceFilters.h>

#include <vesk/quantizer/ProximityFilter.h>

#include <cmath>
#include <cstddef>
#include <stdexcept>

namespace Vesk::ML {
namespace internal {
namespace {

// Most positions have two coordinates and are spared the loops.

bool areEqual(const Position& x, const Position& y) {
    if (x.size() == 2 && y.size() == 2) return x[0] == y[0] && x[1] == y[1];
    return x == y;
}

double squaredDistance(const Position& position, const Position& last) {
    double sum = 0.0;
    for (std::size_t k = 0; k < position.size(); ++k) {
        if (k >= last.size()) throw std::out_of_range("vector::_M_range_check");
        const double difference = position[k] - last[k];
        sum += difference * difference;
    }
    return sum;
}

/// Euclidean distance over the coordinates of `position`.
inline double distance(const Position& position, const Position& last) {
    if (position.size() != 2 || last.size() < 2) return std::sqrt(squaredDistance(position, last));
    const double x = position[0] - last[0];
    const double y = position[1] - last[1];
    return std::sqrt(x * x + y * y);
}

/// Whether a position is far enough from the last one kept; not where the distance is NaN.
inline bool farEnough(const Position& position, const Position& last, double threshold) {
    return distance(position, last) >= threshold;
}

/// Keeps positions that are far enough from the last one kept, the first one in any case.
class ProximityRule {
public:
    explicit ProximityRule(double threshold) : threshold(threshold) {}

    bool keeps(const Position& position) {
        if (last != nullptr && !farEnough(position, *last, threshold)) return false;
        last = &position;
        return true;
    }

private:
    double threshold;
    const Position* last = nullptr;
};

/// Gives `keep` each position that stays, as soon as that is known.
template <typename Keep>
void filterByProximity(const Positions& positions, double threshold, Keep keep) {
    if (positions.size() < 2) return;
    ProximityRule rule(threshold);
    for (const Position* position : positions) {
        if (rule.keeps(*position)) keep(position);
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
        if (!areEqual(trace[i], trace[i - 1])) kept.push_back(&trace[i]);
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
    ProximityRule rule(threshold);
    bool severalDiffer = false;
    const Position* previous = nullptr;
    for (const Position& position : trace) {
        const bool repeated = previous != nullptr && areEqual(position, *previous);
        severalDiffer = severalDiffer || (previous != nullptr && !repeated);
        previous = &position;
        if (!repeated && rule.keeps(position)) kept.push_back(&position);
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
