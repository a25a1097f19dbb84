#include <veskkit/synthesis/TraceSynthesizer.h>

#include <veskkit/synthesis/internal/Draws.h>
#include <veskkit/synthesis/internal/Hand.h>
#include <veskkit/synthesis/internal/Shapes.h>
#include <veskkit/synthesis/internal/Stroke.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace Vesk::Kit {

namespace {

using internal::Draws;
using internal::Hand;
using internal::Knot;
using internal::Motion;
using internal::Position;
using internal::Shape;

constexpr int fewestPoints = 8;

/// How this user forms the gesture: the same at every repetition.
std::vector<Knot> habitualKnots(const Shape& shape, Draws& draws) {
    std::vector<Knot> knots = shape.knots;
    for (Knot& knot : knots) {
        knot.at.x += 0.03 * draws.normal();
        knot.at.y += 0.03 * draws.normal();
    }
    return knots;
}

void waver(std::vector<Knot>& knots, double amount, Draws& draws) {
    for (Knot& knot : knots) {
        knot.at.x += amount * draws.normal();
        knot.at.y += amount * draws.normal();
    }
}

/// From the shape's box to pixels, without the place on the screen. A turn by an angle with
/// tan(angle / 2) = h has cosine (1 - h^2) / (1 + h^2) and sine 2 h / (1 + h^2).
Position posed(const Position& p, const Hand& hand) {
    const double width = std::sqrt(hand.aspect);
    const double y = (p.y - 0.5) / width;
    const double x = (p.x - 0.5) * width - hand.slant * y;
    const double h = hand.halfTurn;
    const double cosine = (1.0 - h * h) / (1.0 + h * h);
    const double sine = 2.0 * h / (1.0 + h * h);
    return {hand.size * (cosine * x - sine * y), hand.size * (sine * x + cosine * y)};
}

double toTenths(double value) { return std::floor(value * 10.0 + 0.5) / 10.0; }

/// What the pen reports: positions at nearly even times, with a tremor that changes slowly, and
/// often a moment's rest before it sets out.
std::vector<std::vector<double>> sampled(const Motion& motion, const Hand& hand,
                                         const Position& place, Draws& draws) {
    const auto count =
        std::max(fewestPoints, static_cast<int>(motion.duration() * hand.sampling) + 1);
    const int resting = draws.unit() < 0.3 ? 2 : 0;
    const double interval = motion.duration() / (count - 1);
    std::vector<std::vector<double>> points;
    Position tremor{0.0, 0.0};
    for (int i = -resting; i < count; ++i) {
        const double late = 0.2 * (draws.unit() - 0.5);
        const Position p = posed(motion.at((i + late) * interval), hand);
        tremor.x = 0.7 * tremor.x + 0.7 * hand.tremor * draws.normal();
        tremor.y = 0.7 * tremor.y + 0.7 * hand.tremor * draws.normal();
        points.push_back({toTenths(place.x + p.x + tremor.x), toTenths(place.y + p.y + tremor.y)});
    }
    return points;
}

}  // namespace

TraceSynthesizer::TraceSynthesizer(std::uint64_t seed_, double unsteadiness_)
    : seed(seed_), unsteadiness(unsteadiness_) {
    if (!(unsteadiness >= 0.0 && unsteadiness <= mostUnsteadiness)) {
        throw std::invalid_argument("unsteadiness: expected a number from 0 to 10");
    }
}

const std::vector<std::string>& TraceSynthesizer::gestures() {
    static const std::vector<std::string> names = [] {
        std::vector<std::string> result;
        for (const Shape& shape : internal::shapes()) result.push_back(shape.name);
        return result;
    }();
    return names;
}

std::string TraceSynthesizer::userName(int user) {
    const std::string digits = std::to_string(user);
    return (digits.size() < 2 ? "u0" : "u") + digits;
}

Trace TraceSynthesizer::draw(const std::string& gesture, int user, int repetition) const {
    const std::vector<Shape>& all = internal::shapes();
    const auto shape =
        std::find_if(all.begin(), all.end(), [&](const Shape& s) { return s.name == gesture; });
    if (shape == all.end()) throw std::invalid_argument("no such gesture: " + gesture);
    if (user < 1 || repetition < 1) {
        throw std::invalid_argument("users and repetitions count from 1");
    }
    const auto u = static_cast<std::uint64_t>(user);
    const auto g = static_cast<std::uint64_t>(shape - all.begin());
    Draws habit{seed, u, g};
    Draws draws{seed, u, g, static_cast<std::uint64_t>(repetition)};

    const Hand hand = onOccasion(internal::handOf(seed, user), unsteadiness, draws);
    std::vector<Knot> knots = habitualKnots(*shape, habit);
    waver(knots, hand.waver, draws);
    std::vector<Position> path = internal::curveThrough(knots);
    internal::smooth(path, static_cast<int>(hand.roundness));
    const Motion motion = internal::setInMotion(std::move(path), 0.5 * hand.pace);
    const Position place{draws.between(120.0, 520.0), draws.between(120.0, 360.0)};

    Trace trace;
    trace.gesture = gesture;
    trace.user = userName(user);
    trace.points = sampled(motion, hand, place, draws);
    return trace;
}

}  // namespace Vesk::Kit
