#include <veskkit/diagnosis/internal/Examination.h>
#include <veskkit/internal/Text.h>
#include <veskkit/traces/internal/Shape.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <utility>

namespace Vesk::Kit::internal {

namespace {

/// A pair is confusable from so many traces on, and from such a share of a gesture's.
constexpr std::size_t fewestConfused = 3;
constexpr double confusedShare = 0.05;
constexpr double hopelessShare = 1.0 / 3.0;
/// What the right answer's lead has to be to be safe: ten times likelier.
const double narrowLead = std::log(10.0);
constexpr std::size_t fewestNarrow = 5;
constexpr double narrowShare = 0.1;
/// The chance that one of a gesture's traces is larger than one of the other's, or further to one
/// side, from which on the two differ in that.
constexpr double distinct = 0.95;

using Members = std::vector<std::size_t>;  ///< places in the list of samples

/// What became of the traces of one gesture with the other as rival.
struct Confused {
    std::size_t taken = 0;   ///< for the other
    std::size_t narrow = 0;  ///< not taken, but by a narrow lead
};

/// The chance that a value of `x` exceeds one of `y`, ties counted half.
double exceeding(const std::vector<double>& x, const std::vector<double>& y) {
    double count = 0.0;
    for (const double a : x) {
        for (const double b : y) count += a > b ? 1.0 : a == b ? 0.5 : 0.0;
    }
    return count / (static_cast<double>(x.size()) * static_cast<double>(y.size()));
}

/// Size, and centre along both axes, of every member.
std::array<std::vector<double>, 3> measured(const Examination& examination,
                                            const std::vector<ShapedTrace>& samples,
                                            const Members& members) {
    std::array<std::vector<double>, 3> result;
    for (const std::size_t s : members) {
        const Points& points = examination.traces[samples[s].trace].points;
        double low[2] = {points[0][0], points[0][1]};
        double high[2] = {points[0][0], points[0][1]};
        for (const std::vector<double>& point : points) {
            for (const std::size_t axis : {std::size_t{0}, std::size_t{1}}) {
                low[axis] = std::min(low[axis], point[axis]);
                high[axis] = std::max(high[axis], point[axis]);
            }
        }
        result[0].push_back(std::max(high[0] - low[0], high[1] - low[1]));
        result[1].push_back((low[0] + high[0]) / 2.0);
        result[2].push_back((low[1] + high[1]) / 2.0);
    }
    return result;
}

/// What a recogniser of directions does not see and sets two gestures apart: "size", "position" or
/// nothing.
std::string unseenDifference(const Examination& examination,
                             const std::vector<ShapedTrace>& samples, const Members& first,
                             const Members& second) {
    const auto x = measured(examination, samples, first);
    const auto y = measured(examination, samples, second);
    for (std::size_t k = 0; k < x.size(); ++k) {
        const double chance = exceeding(x[k], y[k]);
        if (std::max(chance, 1.0 - chance) >= distinct) return k == 0 ? "size" : "position";
    }
    return "";
}

Points pointsOf(const std::vector<double>& shape) {
    Points points;
    for (std::size_t k = 0; k + 1 < shape.size(); k += 2)
        points.push_back({shape[k], shape[k + 1]});
    return points;
}

/// Finds the pairs among one another.
class Pairs {
public:
    Pairs(Examination& all, const std::vector<ShapedTrace>& compared,
          const std::vector<Outcome>& outcomes)
        : examination(all), samples(compared) {
        for (const Outcome& outcome : outcomes) {
            // A wrong label says nothing of the gesture.
            if (examination.marked[samples[outcome.trace].trace]) continue;
            gestures[outcome.expected].push_back(outcome.trace);
            if (outcome.rival.empty() || outcome.lead > narrowLead) continue;
            Confused& count = counts[{outcome.expected, outcome.rival}];
            ++(outcome.lead < 0.0 ? count.taken : count.narrow);
        }
    }

    void examine() {
        for (auto x = gestures.begin(); x != gestures.end(); ++x) {
            for (auto y = std::next(x); y != gestures.end(); ++y) examine(x->first, y->first);
        }
    }

private:
    Confused confused(const std::string& from, const std::string& to) const {
        const auto place = counts.find({from, to});
        return place == counts.end() ? Confused{} : place->second;
    }

    /// How much it matters that so many of a gesture's traces are confused; nothing where it does
    /// not.
    std::optional<Weight> weightOf(const Confused& count, const std::string& gesture) const {
        const auto total = static_cast<double>(gestures.at(gesture).size());
        const double share = static_cast<double>(count.taken) / total;
        const std::size_t narrow = count.taken + count.narrow;
        if (count.taken >= fewestConfused && share >= hopelessShare) return Weight::Serious;
        if (count.taken >= fewestConfused && share >= confusedShare) return Weight::Warning;
        if (narrow >= fewestNarrow && static_cast<double>(narrow) / total >= narrowShare)
            return Weight::Advice;
        return {};
    }

    std::string countsText(const std::string& from, const std::string& to) const {
        const Confused count = confused(from, to);
        return joined(count.taken, " of ", gestures.at(from).size(), ' ', quoted(from),
                      " taken for ", quoted(to),
                      count.narrow > 0 ? joined(" (nearly ", count.narrow, " more)") : "");
    }

    MeanTrace meanOf(const std::string& gesture) const {
        std::vector<const std::vector<double>*> shapes;
        for (const std::size_t s : gestures.at(gesture)) shapes.push_back(&samples[s].shape);
        return {gesture, meanShape(shapes)};
    }

    void examine(const std::string& x, const std::string& y) {
        const Confused there = confused(x, y);
        const Confused back = confused(y, x);
        const std::optional<Weight> weight =
            std::min(weightOf(there, x), weightOf(back, y), [](const auto& a, const auto& b) {
                return a.has_value() && (!b.has_value() || *a < *b);
            });
        if (!weight) return;
        Finding finding{FindingKind::ConfusableGestures, *weight};
        finding.gestures = {x, y};
        finding.found = static_cast<double>(there.taken + back.taken);
        finding.expected = 0.0;
        finding.text = joined("gestures ", quoted(x), " and ", quoted(y), ": found ",
                              countsText(x, y), ", ", countsText(y, x));
        const std::string unseen =
            *weight == Weight::Serious
                ? unseenDifference(examination, samples, gestures.at(x), gestures.at(y))
                : "";
        finding.advice = !unseen.empty() ? joined("Draw them differently: they differ in ", unseen,
                                                  ", which is not looked at.")
                         : *weight == Weight::Advice
                             ? "Keep an eye on them: they are told apart by little."
                             : "Draw one of them differently, drop it, or record more of both.";
        finding.means = {meanOf(x), meanOf(y)};
        examination.findings.push_back(std::move(finding));
    }

    Examination& examination;
    const std::vector<ShapedTrace>& samples;
    std::map<std::string, Members> gestures;
    std::map<std::pair<std::string, std::string>, Confused> counts;
};

}  // namespace

Points meanShape(const std::vector<const std::vector<double>*>& shapes) {
    const std::vector<double>* medoid = nullptr;
    double least = std::numeric_limits<double>::infinity();
    for (const std::vector<double>* candidate : shapes) {
        double total = 0.0;
        for (const std::vector<double>* other : shapes)
            total += squaredDistance(*candidate, *other);
        if (total < least) {
            least = total;
            medoid = candidate;
        }
    }
    if (medoid == nullptr) return {};
    std::vector<double> mean(medoid->size());
    double count = 0.0;
    for (const std::vector<double>* shape : shapes) {
        double product = 0.0;
        double square = 0.0;
        for (std::size_t k = 0; k < mean.size(); ++k) {
            product += (*shape)[k] * (*medoid)[k];
            square += (*shape)[k] * (*shape)[k];
        }
        // The scale of least squared distance; negative where only a mirror image would fit.
        if (!(product > 0.0)) continue;
        count += 1.0;
        for (std::size_t k = 0; k < mean.size(); ++k) mean[k] += product / square * (*shape)[k];
    }
    for (double& value : mean) value /= count;
    return pointsOf(mean);
}

void examinePairs(Examination& examination, const std::vector<ShapedTrace>& samples,
                  const std::vector<Outcome>& outcomes) {
    Pairs(examination, samples, outcomes).examine();
}

}  // namespace Vesk::Kit::internal
