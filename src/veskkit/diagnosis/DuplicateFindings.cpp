#include <veskkit/diagnosis/internal/Examination.h>
#include <veskkit/internal/Text.h>

#include <algorithm>
#include <map>
#include <utility>
#include <vector>

namespace Vesk::Kit::internal {

namespace {

using Path = std::vector<std::pair<double, double>>;

Path pathOf(const Points& points) {
    Path path;
    path.reserve(points.size());
    for (const std::vector<double>& point : points) path.emplace_back(point[0], point[1]);
    return path;
}

/// The traces one after another; what is more than a few is counted.
std::string placesText(const Examination& examination, const std::vector<std::size_t>& places) {
    constexpr std::size_t most = 4;
    std::string text;
    for (std::size_t k = 0; k < std::min(places.size(), most); ++k)
        text += (k == 0 ? "" : "; ") + examination.described(places[k]);
    if (places.size() > most) text += joined("; and ", places.size() - most, " more");
    return text;
}

}  // namespace

void examineDuplicates(Examination& examination) {
    std::map<Path, std::vector<std::size_t>> paths;
    for (std::size_t i = 0; i < examination.traces.size(); ++i) {
        if (!examination.marked[i]) paths[pathOf(examination.traces[i].points)].push_back(i);
    }
    for (const auto& [path, places] : paths) {
        if (places.size() < 2) continue;
        Finding finding{FindingKind::DuplicateTrace, Weight::Warning};
        for (const std::size_t i : places) {
            finding.traces.push_back(examination.place(i));
            finding.gestures.push_back(examination.traces[i].gesture);
        }
        auto& labels = finding.gestures;
        std::sort(labels.begin(), labels.end());
        labels.erase(std::unique(labels.begin(), labels.end()), labels.end());
        const bool contradictory = labels.size() > 1;
        finding.found = static_cast<double>(places.size());
        finding.expected = 1.0;
        finding.text = joined(
            placesText(examination, places), ": found the same points ", places.size(), " times",
            contradictory ? joined(" with ", labels.size(), " labels") : "", ", expected once");
        finding.advice = contradictory
                             ? "Keep the one with the right label: at most one of them is."
                             : "Keep one: copies count twice in training and flatter evaluations.";
        if (contradictory) {
            finding.kind = FindingKind::ContradictoryDuplicates;
            finding.weight = Weight::Serious;
        }
        // One of equal copies goes on to be compared with the others.
        for (std::size_t k = contradictory ? 0 : 1; k < places.size(); ++k)
            examination.marked[places[k]] = true;
        examination.findings.push_back(std::move(finding));
    }
}

}  // namespace Vesk::Kit::internal
