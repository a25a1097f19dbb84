#include <veskkit/evaluation/TemplateMatcher.h>
#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/traces/Resampler.h>
#include <veskkit/traces/internal/Shape.h>

#include <algorithm>
#include <limits>
#include <set>
#include <utility>

namespace Vesk::Kit {

using internal::shapeOf;
using internal::squaredDistance;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

bool hasDirection(const Trace& trace) { return !Resampler().resample(trace).empty(); }

}  // namespace

TemplateMatcher::TemplateMatcher(const std::vector<const Trace*>& traces, double falseRejection)
    : limit(infinity) {
    std::set<std::string> users;
    for (const Trace* trace : traces) {
        if (!hasDirection(*trace)) continue;
        const std::string name = storedName(trace->gesture);
        const auto place = std::find(names.begin(), names.end(), name);
        const auto gesture = static_cast<std::size_t>(place - names.begin());
        if (place == names.end()) names.push_back(name);
        templates.push_back({shapeOf(trace->points), gesture, trace->user});
        users.insert(trace->user);
    }
    std::vector<double> distances;
    for (const Template& one : templates) {
        double least = infinity;
        for (const Template& other : templates) {
            if (&one == &other || one.gesture != other.gesture) continue;
            if (users.size() > 1 && one.user == other.user) continue;
            least = std::min(least, squaredDistance(one.shape, other.shape));
        }
        if (least < infinity) distances.push_back(least);
    }
    if (distances.empty()) return;
    std::sort(distances.begin(), distances.end());
    const auto rejected =
        static_cast<std::size_t>(falseRejection * static_cast<double>(distances.size()));
    limit = distances[distances.size() - 1 - std::min(rejected, distances.size() - 1)];
}

TemplateMatcher::Match TemplateMatcher::nearest(const Trace& trace, const std::string& but) const {
    if (!hasDirection(trace)) return {{}, infinity};
    const std::vector<double> shape = shapeOf(trace.points);
    Match match{{}, infinity};
    for (const Template& candidate : templates) {
        if (names[candidate.gesture] == but) continue;
        const double distance = squaredDistance(shape, candidate.shape);
        if (distance >= match.distance) continue;
        match = {names[candidate.gesture], distance};
    }
    return match;
}

}  // namespace Vesk::Kit
