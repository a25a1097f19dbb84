#ifndef VESK_VESKKIT_RECOGNITION_STATEPATH_H
#define VESK_VESKKIT_RECOGNITION_STATEPATH_H

#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/traces/Trace.h>

#include <cstddef>
#include <optional>
#include <vector>

namespace Vesk::Kit {

/// A trace as a gesture model sees it, without its bearings (Resampler.h).
struct StatePath {
    Points points;             ///< of the path: prepared, and filtered as the quantiser does
    std::vector<int> states;   ///< one a step between them, of the likeliest path (HMM::viterbi)
    double meanLogLikelihood;  ///< ln P(symbols | gesture model) / T
};

/// The trace's path through the gesture model of that place in `recognizer.model().gestures()`.
/// Nothing where it has fewer than two symbols or the model cannot produce it. InputError as
/// GestureRecognizer::symbols, std::out_of_range for another place. O(T N^2 + N M).
std::optional<StatePath> statePathOf(const GestureRecognizer& recognizer, std::size_t gesture,
                                     const Trace& trace);

/// A model's best example.
struct Example {
    std::size_t trace;  ///< its place in the list of traces
    StatePath path;     ///< through the model
};

/// Per gesture model the trace of its gesture that is likeliest under it, the first of several.
/// Each trace stands for that sub-model of its gesture alone that explains it best, so a sub-model
/// may have none; turned copies have none. InputError as above. O(sub-models of its gesture * T
/// N^2) a trace.
std::vector<std::optional<Example>> bestExamples(const GestureRecognizer& recognizer,
                                                 const std::vector<Trace>& traces);

}  // namespace Vesk::Kit

#endif
