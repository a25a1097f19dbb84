#include <veskkit/diagnosis/internal/Examination.h>
#include <veskkit/internal/Text.h>
#include <veskkit/traces/Resampler.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace Vesk::Kit::internal {

namespace {

constexpr double hugeCoordinate = 1e7;
constexpr std::size_t fewestPositions = 5;
/// Gestures and users with fewer traces say nothing of what is usual.
constexpr std::size_t enoughToCompare = 5;
constexpr double shortShare = 0.2;
constexpr double dotShare = 0.1;
/// Chord by length: of a straight path from `straight` on; a gesture of which all but the share
/// `bentShare` stay below `bent` is no line.
constexpr double straight = 0.995;
constexpr double bent = 0.9;
constexpr double bentShare = 0.1;

/// What of a path does not depend on its shape alone.
struct Measures {
    double length = 0.0;
    double extent = 0.0;        ///< the larger side of the box around it
    double chord = 0.0;         ///< from the first position to the last
    std::size_t positions = 0;  ///< that differ from the one before
};

Measures measure(const Points& points) {
    Measures result;
    if (points.empty()) return result;
    const auto distance = [](const std::vector<double>& from, const std::vector<double>& to) {
        return std::hypot(to[0] - from[0], to[1] - from[1]);
    };
    std::vector<double> low = points[0];
    std::vector<double> high = points[0];
    result.positions = 1;
    for (std::size_t p = 1; p < points.size(); ++p) {
        const double step = distance(points[p - 1], points[p]);
        result.length += step;
        if (step > 0.0) ++result.positions;
        for (std::size_t axis = 0; axis < 2; ++axis) {
            low[axis] = std::min(low[axis], points[p][axis]);
            high[axis] = std::max(high[axis], points[p][axis]);
        }
    }
    result.extent = std::max(high[0] - low[0], high[1] - low[1]);
    result.chord = distance(points.front(), points.back());
    return result;
}

/// "" where all positions are two finite numbers.
std::string problemOfPoints(const Trace& trace) {
    for (std::size_t p = 0; p < trace.points.size(); ++p) {
        const std::vector<double>& point = trace.points[p];
        if (point.size() < 2)
            return joined("found ", point.size(), point.size() == 1 ? " number" : " numbers",
                          " as points[", p, "], expected 2");
        for (const std::size_t axis : {std::size_t{0}, std::size_t{1}}) {
            if (std::isfinite(point[axis])) continue;
            return joined("found ", point[axis], " in points[", p, "], expected a finite number");
        }
    }
    return "";
}

double largestCoordinate(const Points& points) {
    double largest = 0.0;
    for (const std::vector<double>& point : points)
        largest = std::max({largest, std::abs(point[0]), std::abs(point[1])});
    return largest;
}

/// What can be said of a trace without the others.
void examineAlone(Examination& examination, std::size_t i) {
    const Trace& trace = examination.traces[i];
    const std::string problem = problemOfPoints(trace);
    if (!problem.empty()) {
        examination.addAbout(i, FindingKind::UnusablePoints, Weight::Serious, problem,
                             "Leave the trace out, or repair what wrote it: training refuses it.");
        return;
    }
    const bool directed = !Resampler().resample(trace.points).empty();
    const double largest = largestCoordinate(trace.points);
    if (largest > hugeCoordinate) {
        Finding& finding = examination.addAbout(
            i, FindingKind::HugeCoordinates, directed ? Weight::Warning : Weight::Serious,
            joined("found the coordinate ", largest, ", expected at most ", hugeCoordinate),
            "Look for a time or a marker of a missing value among the positions.");
        finding.found = largest;
        finding.expected = hugeCoordinate;
        return;
    }
    if (!directed) {
        const std::size_t count = trace.points.size();
        Finding& finding = examination.addAbout(
            i, FindingKind::NoDirection, Weight::Serious,
            joined("found ", count, count == 1 ? " point" : " points",
                   " and no movement, expected a path"),
            "Leave the trace out (vesk train --skip-bad does): there is nothing to recognise.");
        finding.found = 0.0;
        return;
    }
    const std::size_t positions = measure(trace.points).positions;
    if (positions < fewestPositions) {
        Finding& finding = examination.addAbout(
            i, FindingKind::FewPoints, Weight::Warning,
            joined("found ", positions, " different positions, expected at least ",
                   fewestPositions),
            "Record it again at a higher rate: what lies between is taken for straight.");
        finding.found = static_cast<double>(positions);
        finding.expected = static_cast<double>(fewestPositions);
    }
}

/// Median path length of the traces in each group, where these are enough.
std::map<std::string, double> medianLengths(const Examination& examination,
                                            const std::vector<Measures>& measures,
                                            std::string Trace::*group) {
    std::map<std::string, std::vector<double>> lengths;
    for (std::size_t i = 0; i < measures.size(); ++i) {
        if (!examination.marked[i])
            lengths[examination.traces[i].*group].push_back(measures[i].length);
    }
    std::map<std::string, double> medians;
    for (auto& [name, values] : lengths) {
        if (values.size() >= enoughToCompare) medians[name] = medianOf(values);
    }
    return medians;
}

/// Per trace in what unit to measure it: users have devices and sizes of their own.
std::vector<double> unitsOf(const Examination& examination, const std::vector<Measures>& measures) {
    std::vector<double> all;
    for (std::size_t i = 0; i < measures.size(); ++i) {
        if (!examination.marked[i]) all.push_back(measures[i].length);
    }
    if (all.empty()) return std::vector<double>(measures.size(), 1.0);
    const double median = medianOf(all);
    const std::map<std::string, double> ofUser = medianLengths(examination, measures, &Trace::user);
    std::vector<double> units(measures.size(), median);
    for (std::size_t i = 0; i < measures.size(); ++i) {
        const auto own = ofUser.find(examination.traces[i].user);
        if (own != ofUser.end()) units[i] = own->second;
    }
    return units;
}

/// What is usual for a gesture.
struct Usual {
    double length;
    double extent;
    double straightness;  ///< what all but the share `bentShare` stay below
};

Usual usualOf(const std::vector<std::size_t>& places, const std::vector<Measures>& measures,
              const std::vector<double>& units) {
    std::vector<double> lengths;
    std::vector<double> extents;
    std::vector<double> straightness;
    for (const std::size_t i : places) {
        lengths.push_back(measures[i].length / units[i]);
        extents.push_back(measures[i].extent / units[i]);
        straightness.push_back(measures[i].chord / measures[i].length);
    }
    std::sort(straightness.begin(), straightness.end());
    const auto straighter =
        static_cast<std::size_t>(bentShare * static_cast<double>(straightness.size()));
    return {medianOf(lengths), medianOf(extents),
            straightness[straightness.size() - 1 - std::max<std::size_t>(straighter, 1)]};
}

void examineAmongOthers(Examination& examination, std::size_t i, const Measures& measures,
                        double unit, const Usual& usual) {
    const auto tell = [&](FindingKind kind, const char* what, double found, double expected,
                          const char* bound, const char* advice) {
        Finding& finding =
            examination.addAbout(i, kind, Weight::Warning,
                                 joined("found ", what, " of ", rounded(found), ", expected ",
                                        rounded(expected), ' ', bound),
                                 advice);
        finding.found = found;
        finding.expected = expected;
    };
    constexpr const char* atLeast = "at least, as the gesture's others have";
    const double straightness = measures.chord / measures.length;
    if (measures.extent < dotShare * usual.extent * unit) {
        tell(FindingKind::Dot, "an extent", measures.extent, dotShare * usual.extent * unit,
             atLeast, "Leave it out if the pen only touched: at this size directions are tremor.");
    } else if (measures.length < shortShare * usual.length * unit) {
        tell(FindingKind::ShortPath, "a path length", measures.length,
             shortShare * usual.length * unit, atLeast, "Leave it out if the drawing broke off.");
    } else if (straightness >= straight && usual.straightness < bent) {
        tell(FindingKind::StraightPath, "one direction and a straightness", straightness,
             usual.straightness, "at most, as the gesture's others have",
             "Leave it out if the drawing broke off or lost its points.");
    }
}

}  // namespace

void examinePaths(Examination& examination) {
    std::vector<Measures> measures(examination.traces.size());
    std::map<std::string, std::vector<std::size_t>> gestures;
    for (std::size_t i = 0; i < measures.size(); ++i) {
        if (!examination.marked[i]) examineAlone(examination, i);
        if (examination.marked[i]) continue;
        measures[i] = measure(examination.traces[i].points);
        gestures[examination.traces[i].gesture].push_back(i);
    }
    const std::vector<double> units = unitsOf(examination, measures);
    for (const auto& [gesture, places] : gestures) {
        if (places.size() < enoughToCompare) continue;
        const Usual usual = usualOf(places, measures, units);
        for (const std::size_t i : places)
            examineAmongOthers(examination, i, measures[i], units[i], usual);
    }
}

}  // namespace Vesk::Kit::internal
