#include <veskkit/diagnosis/Finding.h>

#include <algorithm>
#include <limits>
#include <tuple>

namespace Vesk::Kit {

const char* toString(FindingKind kind) {
    switch (kind) {
        case FindingKind::MissingLabel: return "missing-label";
        case FindingKind::UnstorableLabel: return "unstorable-label";
        case FindingKind::CollidingLabels: return "colliding-labels";
        case FindingKind::SimilarLabels: return "similar-labels";
        case FindingKind::RenamedLabel: return "renamed-label";
        case FindingKind::FewExamples: return "few-examples";
        case FindingKind::UnevenExamples: return "uneven-examples";
        case FindingKind::SingleUser: return "single-user";
        case FindingKind::UnusablePoints: return "unusable-points";
        case FindingKind::HugeCoordinates: return "huge-coordinates";
        case FindingKind::NoDirection: return "no-direction";
        case FindingKind::FewPoints: return "few-points";
        case FindingKind::Dot: return "dot";
        case FindingKind::ShortPath: return "short-path";
        case FindingKind::StraightPath: return "straight-path";
        case FindingKind::ContradictoryDuplicates: return "contradictory-duplicates";
        case FindingKind::DuplicateTrace: return "duplicate-trace";
        case FindingKind::MislabelledTrace: return "mislabelled-trace";
        case FindingKind::OutlierTrace: return "outlier-trace";
        case FindingKind::ConfusableGestures: return "confusable-gestures";
        case FindingKind::UnsoundModel: return "unsound-model";
        case FindingKind::UnreachableEnd: return "unreachable-end";
        case FindingKind::IdleStates: return "idle-states";
        case FindingKind::ImproperRows: return "improper-rows";
        case FindingKind::OddsForProbabilities: return "odds-for-probabilities";
        case FindingKind::ZeroEmissions: return "zero-emissions";
        case FindingKind::NeverWins: return "never-wins";
        case FindingKind::DoubledDirections: return "doubled-directions";
        case FindingKind::ThresholdWeight: return "threshold-weight";
        case FindingKind::RotationAllowed: return "rotation-allowed";
    }
    return "";
}

const char* toString(Weight weight) {
    switch (weight) {
        case Weight::Serious: return "serious";
        case Weight::Warning: return "warning";
        case Weight::Advice: return "advice";
    }
    return "";
}

void sortFindings(std::vector<Finding>& findings) {
    const auto key = [](const Finding& finding) {
        const std::size_t trace = finding.traces.empty() ? std::numeric_limits<std::size_t>::max()
                                                         : finding.traces.front().trace;
        return std::tuple(finding.weight, finding.gestures, finding.kind, trace);
    };
    std::stable_sort(findings.begin(), findings.end(),
                     [&](const Finding& x, const Finding& y) { return key(x) < key(y); });
}

bool anySerious(const std::vector<Finding>& findings) {
    return std::any_of(findings.begin(), findings.end(),
                       [](const Finding& it) { return it.weight == Weight::Serious; });
}

}  // namespace Vesk::Kit
