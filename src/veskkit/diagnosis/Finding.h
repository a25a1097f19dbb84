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
    MissingLabel,     ///< a trace has none
    UnstorableLabel,  ///< it has control characters
    CollidingLabels,  ///< several become one name in a model
    SimilarLabels,    ///< they differ in case, blanks or underscores only
    RenamedLabel,     ///< its blanks become underscores
    // How many traces, and whose
    FewExamples,     ///< of a gesture
    UnevenExamples,  ///< far fewer of a gesture than of others
    SingleUser,      ///< drew all, or all of a gesture
    // A trace alone
    UnusablePoints,   ///< a position is no pair of finite numbers
    HugeCoordinates,  ///< beyond what differences stand
    NoDirection,      ///< all positions are one
    FewPoints,        ///< few positions differ from the one before
    Dot,              ///< far smaller than usual
    ShortPath,        ///< far shorter than usual
    StraightPath,     ///< of a gesture that is no line
    // A trace among others
    ContradictoryDuplicates,  ///< the same points under two labels
    DuplicateTrace,           ///< the same points again
    MislabelledTrace,         ///< drawn like another gesture
    OutlierTrace,             ///< far from all others of its gesture
    // Gestures among one another
    ConfusableGestures,  ///< many traces of one are taken for the other
    // A model
    UnsoundModel,          ///< cannot be read, or does not pass ModelCheck.h
    UnreachableEnd,        ///< sequences are too short for the last state
    IdleStates,            ///< on no way from the first to the last
    ImproperRows,          ///< that do not sum to 1
    OddsForProbabilities,  ///< emissions as the library's training leaves them
    ZeroEmissions,         ///< a direction rules a gesture out
    NeverWins,             ///< not even with what the gesture's models like best
    DoubledDirections,     ///< one stands in the codebook twice
    ThresholdWeight,       ///< too small or too large to work
    RotationAllowed        ///< turned gestures become the same
};

/// The kind as one word: "few-examples". "" for a value that is none of the enumeration's.
const char* toString(FindingKind kind);

/// How much a finding matters.
enum class Weight {
    Serious,  ///< training refuses it, or what comes out cannot work
    Warning,  ///< probably a mistake
    Advice    ///< works, and would work better otherwise
};

/// "serious", "warning", "advice"; "" as above.
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

/// The most serious first, then by gestures, kind and first trace; equal ones keep their order.
/// O(n log n).
void sortFindings(std::vector<Finding>& findings);

/// Whether one of them is serious. O(n).
bool anySerious(const std::vector<Finding>& findings);

}  // namespace Vesk::Kit

#endif
