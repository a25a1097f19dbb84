#include <veskkit/synthesis/internal/Stroke.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Vesk::Kit::internal {

namespace {

constexpr int stepsPerPiece = 16;

Position mixed(const Position& from, const Position& to, double share) {
    return {from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share};
}

double distance(const Position& p, const Position& q) {
    const double x = q.x - p.x;
    const double y = q.y - p.y;
    return std::sqrt(x * x + y * y);
}

/// The cubic from p to q whose neighbours on the curve are `before` and `after`, at u in [0, 1].
double catmullRom(double before, double p, double q, double after, double u) {
    const double linear = q - before;
    const double quadratic = 2.0 * before - 5.0 * p + 4.0 * q - after;
    const double cubic = 3.0 * (p - q) + after - before;
    return 0.5 * (2.0 * p + u * (linear + u * (quadratic + u * cubic)));
}

/// How far the path turns around position i: 0 straight on, 2 right back.
double bend(const std::vector<Position>& path, std::size_t i) {
    constexpr std::size_t reach = 3;
    const Position& before = path[i - std::min(i, reach)];
    const Position& after = path[std::min(i + reach, path.size() - 1)];
    const double lengths = distance(before, path[i]) * distance(path[i], after);
    if (!(lengths > 0.0)) return 0.0;
    const double dot = (path[i].x - before.x) * (after.x - path[i].x) +
                       (path[i].y - before.y) * (after.y - path[i].y);
    return std::clamp(1.0 - dot / lengths, 0.0, 2.0);
}

/// The speed where `done` of the path, 0 to 1, lies behind; 1 at most.
double speed(double done, double bending) {
    constexpr double ramp = 0.15;
    constexpr double slowest = 0.15;
    const double fromEnd = std::min({done / ramp, (1.0 - done) / ramp, 1.0});
    const double eased = fromEnd * fromEnd * (3.0 - 2.0 * fromEnd);
    return (slowest + (1.0 - slowest) * eased) / (1.0 + 2.0 * std::sqrt(bending));
}

}  // namespace

Position Motion::at(double time) const {
    if (time <= 0.0) return path.front();
    if (time >= duration()) return path.back();
    const auto next = std::upper_bound(times.begin(), times.end(), time);
    const auto i = static_cast<std::size_t>(next - times.begin());
    return mixed(path[i - 1], path[i], (time - times[i - 1]) / (times[i] - times[i - 1]));
}

std::vector<Position> curveThrough(const std::vector<Knot>& knots) {
    std::vector<Position> path{knots.front().at};
    for (std::size_t i = 0; i + 1 < knots.size(); ++i) {
        const Position& p = knots[i].at;
        const Position& q = knots[i + 1].at;
        const bool startsFresh = i == 0 || knots[i].corner;
        const bool endsHere = i + 2 == knots.size() || knots[i + 1].corner;
        const Position& before = startsFresh ? p : knots[i - 1].at;
        const Position& after = endsHere ? q : knots[i + 2].at;
        for (int step = 1; step <= stepsPerPiece; ++step) {
            const double u = static_cast<double>(step) / stepsPerPiece;
            // A piece between two corners is a straight line, evenly walked.
            path.push_back(startsFresh && endsHere
                               ? mixed(p, q, u)
                               : Position{catmullRom(before.x, p.x, q.x, after.x, u),
                                          catmullRom(before.y, p.y, q.y, after.y, u)});
        }
    }
    return path;
}

void smooth(std::vector<Position>& path, int rounds) {
    for (int round = 0; round < rounds; ++round) {
        Position previous = path.front();
        for (std::size_t i = 1; i + 1 < path.size(); ++i) {
            const Position here = path[i];
            path[i] = mixed(here, mixed(previous, path[i + 1], 0.5), 0.5);
            previous = here;
        }
    }
}

Motion setInMotion(std::vector<Position> path, double seconds) {
    double length = 0.0;
    for (std::size_t i = 1; i < path.size(); ++i) length += distance(path[i - 1], path[i]);

    Motion motion;
    motion.times.push_back(0.0);
    double done = 0.0;
    for (std::size_t i = 1; i < path.size(); ++i) {
        const double step = distance(path[i - 1], path[i]);
        const double middle = (done + 0.5 * step) / length;
        done += step;
        const double bending = std::max(bend(path, i - 1), bend(path, i));
        motion.times.push_back(motion.times.back() + step / length / speed(middle, bending));
    }
    // Long drawings take longer, though less so than their length.
    const double scale = seconds * std::sqrt(length) / motion.times.back();
    for (double& time : motion.times) time *= scale;
    motion.path = std::move(path);
    return motion;
}

}  // namespace Vesk::Kit::internal
