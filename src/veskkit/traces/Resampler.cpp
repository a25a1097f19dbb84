#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/traces/Resampler.h>

#include <cmath>
#include <limits>

namespace Vesk::Kit {

namespace {

constexpr int mostPoints = 100000;
constexpr int mostBearings = 1000;

struct Position {
    double x;
    double y;
};

double distance(const Position& from, const Position& to) {
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    return std::sqrt(dx * dx + dy * dy);
}

std::vector<Position> flipped(const Points& points, bool flipY) {
    std::vector<Position> result;
    result.reserve(points.size());
    for (const std::vector<double>& point : points) {
        result.push_back({point[0], flipY ? -point[1] : point[1]});
    }
    return result;
}

double pathLength(const std::vector<Position>& path) {
    double length = 0.0;
    for (std::size_t p = 1; p < path.size(); ++p) length += distance(path[p - 1], path[p]);
    return length;
}

/// `count` positions, `step` apart along the path.
Points atEqualDistances(const std::vector<Position>& path, double step, std::size_t count) {
    Points result;
    result.reserve(count);
    result.push_back({path[0].x, path[0].y});
    double covered = 0.0;  // since the last position that was put out
    Position from = path[0];
    for (std::size_t p = 1; p < path.size(); ++p) {
        double rest = distance(from, path[p]);
        while (rest > 0.0 && covered + rest >= step && result.size() < count) {
            const double share = (step - covered) / rest;
            from = {from.x + share * (path[p].x - from.x), from.y + share * (path[p].y - from.y)};
            result.push_back({from.x, from.y});
            covered = 0.0;
            rest = distance(from, path[p]);
        }
        covered += rest;
        from = path[p];
    }
    while (result.size() < count) result.push_back({path.back().x, path.back().y});
    return result;
}

Position meanOf(const Points& path) {
    Position sum{0.0, 0.0};
    for (const std::vector<double>& point : path) {
        sum.x += point[0];
        sum.y += point[1];
    }
    const auto count = static_cast<double>(path.size());
    return {sum.x / count, sum.y / count};
}

/// Appends `count` steps of that length, each in the direction in which a position of the path
/// lies as seen from their mean.
void appendBearings(Points& path, std::size_t count, double step) {
    const Position centre = meanOf(path);
    const std::size_t last = path.size() - 1;
    Position at{path[last][0], path[last][1]};
    Position move{step, 0.0};
    path.reserve(path.size() + count);
    for (std::size_t k = 0; k < count; ++k) {
        const std::vector<double>& seen = path[count == 1 ? last : k * last / (count - 1)];
        const Position position{seen[0], seen[1]};
        const double away = distance(centre, position);
        // The sum of positions near the end of the range may be beyond it.
        if (away > 0.0 && std::isfinite(away)) {
            move = {(position.x - centre.x) / away * step, (position.y - centre.y) / away * step};
        }
        at = {at.x + move.x, at.y + move.y};
        path.push_back({at.x, at.y});
    }
}

}  // namespace

Resampler::Resampler(Preparation preparation) : settings(preparation) {
    const int points = settings.points;
    if (points != Preparation::asDrawn && (points < 2 || points > mostPoints)) {
        throw InputError(internal::joined("found ", points,
                                          " points to resample to, expected 2 to ", mostPoints));
    }
    if (settings.bearings < 0 || settings.bearings > mostBearings) {
        throw InputError(internal::joined("found ", settings.bearings, " bearings, expected 0 to ",
                                          mostBearings));
    }
}

Points Resampler::resample(const Points& points) const {
    return prepared(points, settings.bearings);
}

Points Resampler::path(const Points& points) const { return prepared(points, 0); }

Points Resampler::prepared(const Points& points, int bearings) const {
    const std::vector<Position> path = flipped(points, settings.flipY);
    if (settings.points == Preparation::asDrawn) {
        Points result;
        result.reserve(path.size());
        for (const Position& position : path) result.push_back({position.x, position.y});
        return result;
    }
    const double length = pathLength(path);
    const double step = length / (settings.points - 1);
    // Below the normal numbers, and where squares overflow, distances lose their meaning.
    if (!std::isfinite(length) || step < std::numeric_limits<double>::min()) return {};
    Points result = atEqualDistances(path, step, static_cast<std::size_t>(settings.points));
    appendBearings(result, static_cast<std::size_t>(bearings), step);
    return result;
}

Points Resampler::resample(const Trace& trace) const {
    requireUsablePoints(trace);
    return resample(trace.points);
}

}  // namespace Vesk::Kit
