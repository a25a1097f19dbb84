#include <veskkit/Error.h>
#include <veskkit/internal/Text.h>
#include <veskkit/traces/Resampler.h>

#include <cmath>
#include <limits>

namespace Vesk::Kit {

namespace {

constexpr int mostPoints = 100000;

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

}  // namespace

Resampler::Resampler(Preparation preparation) : settings(preparation) {
    const int points = settings.points;
    if (points != Preparation::asDrawn && (points < 2 || points > mostPoints)) {
        throw InputError(internal::joined("found ", points,
                                          " points to resample to, expected 2 to ", mostPoints));
    }
}

Points Resampler::resample(const Points& points) const {
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
    return atEqualDistances(path, step, static_cast<std::size_t>(settings.points));
}

Points Resampler::resample(const Trace& trace) const {
    requireUsablePoints(trace);
    return resample(trace.points);
}

}  // namespace Vesk::Kit
