#include <veskkit/diagnosis/internal/Examination.h>
#include <veskkit/internal/Parallel.h>
#include <veskkit/internal/Text.h>
#include <veskkit/traces/internal/Shape.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace Vesk::Kit::internal {

namespace {

/// How much likelier (natural logarithm) and how many times nearer (squared distance) another
/// gesture has to be before a label is doubted. docs/doctor.md has the figures.
constexpr double likelier = 8.0;
constexpr double nearer = 3.0;
constexpr double nearerAlone = 6.0;  ///< where models are not asked

/// An outlier keeps a distance to its nearest neighbour beyond the median by so many deviations
/// (1.4826 times the median absolute deviation, the standard deviation of a normal distribution),
/// and by so many times the median; and beyond the median of all gestures, since traces of the
/// simplest hardly differ.
constexpr double deviations = 8.0;
constexpr double deviationPerMad = 1.4826;
constexpr double timesMedian = 3.0;
constexpr std::size_t enoughToCompare = 5;

/// Whether another gesture is so many times nearer than the trace's own.
bool isNearer(const Neighbours& nearest, double times) {
    return std::isfinite(nearest.own) && nearest.other * times < nearest.own;
}

void doubt(Examination& examination, const ShapedTrace& sample, const Neighbours& nearest) {
    const std::string& rival = nearest.otherGesture;
    const double sureness = 1.0 - nearest.other / nearest.own;
    Finding& finding = examination.addAbout(
        sample.trace, FindingKind::MislabelledTrace, Weight::Warning,
        joined("found a drawing of ", quoted(rival), " (", std::floor(100.0 * sureness),
               " % sure)"),
        joined("Look at it: relabel it as ", quoted(rival), ", or leave it out."));
    finding.gestures.push_back(rival);
    finding.sureness = sureness;
}

}  // namespace

std::vector<Neighbours> neighboursOf(const std::vector<ShapedTrace>& samples, unsigned threads) {
    std::vector<Neighbours> result(samples.size());
    parallelFor(samples.size(), threads, [&](std::size_t i) {
        Neighbours& nearest = result[i];
        for (std::size_t j = 0; j < samples.size(); ++j) {
            if (j == i) continue;
            const double distance = squaredDistance(samples[i].shape, samples[j].shape);
            if (samples[j].gesture == samples[i].gesture) {
                nearest.own = std::min(nearest.own, distance);
            } else if (distance < nearest.other) {
                nearest.other = distance;
                nearest.otherGesture = samples[j].gesture;
            }
        }
    });
    return result;
}

void examineLabelling(Examination& examination, const std::vector<ShapedTrace>& samples,
                      const std::vector<Neighbours>& neighbours) {
    for (std::size_t s = 0; s < samples.size(); ++s) {
        if (isNearer(neighbours[s], nearerAlone)) doubt(examination, samples[s], neighbours[s]);
    }
}

void examineLabelling(Examination& examination, const std::vector<ShapedTrace>& samples,
                      const std::vector<Neighbours>& neighbours,
                      const std::vector<Outcome>& outcomes) {
    for (const Outcome& outcome : outcomes) {
        const Neighbours& nearest = neighbours[outcome.trace];
        if (outcome.rival == nearest.otherGesture && outcome.lead <= -likelier &&
            isNearer(nearest, nearer)) {
            doubt(examination, samples[outcome.trace], nearest);
        }
    }
}

void examineOutliers(Examination& examination, const std::vector<ShapedTrace>& samples,
                     const std::vector<Neighbours>& neighbours) {
    std::map<std::string, std::vector<std::size_t>> gestures;
    for (std::size_t s = 0; s < samples.size(); ++s) gestures[samples[s].gesture].push_back(s);
    std::vector<double> all;
    for (const Neighbours& nearest : neighbours) all.push_back(std::sqrt(nearest.own));
    const double usual = all.empty() ? 0.0 : medianOf(all);
    for (const auto& [gesture, members] : gestures) {
        if (members.size() < enoughToCompare) continue;
        std::vector<double> distances;
        for (const std::size_t s : members) distances.push_back(std::sqrt(neighbours[s].own));
        const double median = medianOf(distances);
        std::vector<double> apart;
        for (const double distance : distances) apart.push_back(std::abs(distance - median));
        const double limit = std::max(
            {usual, timesMedian * median, median + deviations * deviationPerMad * medianOf(apart)});
        for (const std::size_t s : members) {
            const double distance = std::sqrt(neighbours[s].own);
            if (examination.marked[samples[s].trace] || !(distance > limit)) continue;
            Finding& finding = examination.addAbout(
                samples[s].trace, FindingKind::OutlierTrace, Weight::Advice,
                joined("found a distance of ", rounded(distance),
                       " to the gesture's most similar other trace, expected at most ",
                       rounded(limit)),
                "Look at it: leave it out if it went wrong, record more if that is another way of "
                "drawing the gesture.");
            finding.found = distance;
            finding.expected = limit;
        }
    }
}

}  // namespace Vesk::Kit::internal
