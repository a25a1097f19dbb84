#ifndef VESK_VESKKIT_DIAGNOSIS_FINDING_H
#define VESK_VESKKIT_DIAGNOSIS_FINDING_H

#include <veskkit/traces/Trace.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// What a finding is about. docs/doctor.md has the rule of each.
enum class FindingKind {
    // Labels
    MissingLabel,
    UnstorableLabel,
    CollidingLabels,
    SimilarLabels,
    RenamedLabel,
    // How many traces, and whose
    FewExamples,
    UnevenExamples,
    SingleUser,
    // A trace alone
    UnusablePoints,
    HugeCoordinates,
    NoDirection,
    FewPoints,
    Dot,
    ShortPath,
    StraightPath,
    // A trace among others
    ContradictoryDuplicates,
    DuplicateTrace,
    MislabelledTrace,
    OutlierTrace,
    // Gestures among one another
    ConfusableGestures,
    // A model
    UnsoundModel,
    UnreachableEnd,
    IdleStates,
    ImproperRows,
    OddsForProbabilities,
    ZeroEmissions,
    NeverWins,
    DoubledDirections,
    ThresholdWeight,
    RotationAllowed
};

/// The kind as one word: "few-examples".
const char* toString(FindingKind kind);

/// How much a finding matters.
enum class Weight {
    Serious,  ///< training refuses it, or what comes out cannot work
    Warning,  ///< probably a mistake
    Advice    ///< works, and would work better otherwise
};

/// "serious", "warning", "advice".
const char* toString(Weight weight);

/// A trace that a finding concerns.
struct TracePlace {
    std::size_t trace;   ///< its place in the list of traces
    std::string source;  ///< as in Trace
    std::size_t line;    ///< as in Trace
    std::string user;    ///< as in Trace
};

/// How a gesture is drawn on average: 32 positions, centred, the largest coordinate about 1.
struct MeanTrace {
    std::string gesture;  ///< its label
    Points points;        ///< 32, x at index 0, y at index 1
};

/// One thing that is wrong, with what to do about it.
struct Finding {
    FindingKind kind;                        ///< what is wrong
    Weight weight;                           ///< how much it matters
    std::vector<std::string> gestures = {};  ///< labels, or names in the model; the first one sorts
    std::vector<TracePlace> traces = {};     ///< in the order of the list
    std::optional<double> found = {};        ///< the number that counts, where there is one
    std::optional<double> expected = {};     ///< and its bound
    std::optional<double> sureness = {};     ///< of a guess, from 0 to 1
    std::string text = {};                   ///< one line: where, what was found, what was expected
    std::string advice = {};                 ///< one sentence: what to do
    std::vector<MeanTrace> means = {};       ///< of ConfusableGestures: one of each, to be overlaid
};

/// The most serious first, then by gesture, kind and trace.
void sortFindings(std::vector<Finding>& findings);

/// Whether one of them is serious.
bool anySerious(const std::vector<Finding>& findings);

}  // namespace Vesk::Kit

#endif
