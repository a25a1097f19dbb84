#ifndef VESK_VESKKIT_TRAINING_CODEBOOK_H
#define VESK_VESKKIT_TRAINING_CODEBOOK_H

#include <veskkit/traces/Resampler.h>
#include <veskkit/traces/Trace.h>

#include <cstddef>
#include <vector>

namespace Vesk::Kit {

/// A codebook and how the steps of some traces fall on its directions.
struct CodebookUse {
    std::vector<double> directions;  ///< degrees, at least 0 and less than 360, ascending
    std::vector<std::size_t> steps;  ///< nearest to each direction
    double meanDistance;             ///< degrees between a step and its direction; 0 of no steps
};

/// `symbols` evenly spaced directions, 1 to 360, on traces prepared for recognition. Traces without
/// a direction have no steps. InputError, naming the trace, for unusable positions; for a number
/// of symbols out of range. O((n + traces * symbols) log symbols), n steps.
CodebookUse evenCodebook(const std::vector<Trace>& traces, int symbols,
                         const Preparation& preparation = {});

/// The directions that the clusterer makes of those: its centres, which move to the means of the
/// steps nearest to them until none moves by a degree; as a file holds them, those that coincide
/// once, and ascending. Errors as above. O(n log n), and O(n + symbols log n) a round
/// (KMeansMotionVec).
CodebookUse learntCodebook(const std::vector<Trace>& traces, int symbols,
                           const Preparation& preparation = {});

}  // namespace Vesk::Kit

#endif
