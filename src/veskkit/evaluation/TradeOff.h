#ifndef VESK_VESKKIT_EVALUATION_TRADEOFF_H
#define VESK_VESKKIT_EVALUATION_TRADEOFF_H

#include <veskkit/evaluation/Evaluation.h>

#include <vector>

namespace Vesk::Kit {

/// What the models would have done with another acceptance ratio.
struct TradeOffPoint {
    double factor;          ///< of every fold's ratio R, as a natural logarithm
    Share rejected;         ///< of the traces, their gestures being known
    Share unknownAccepted;  ///< of those taken for unknown, recognised as anything
};

/// The shares at all factors where they change, from lenient to strict, and at the factor 0, which
/// is what was measured; of more than `most` every few. A ratio moves all margins alike, so nothing
/// is trained again. Empty where no gesture was taken for unknown. O(outcomes log outcomes).
std::vector<TradeOffPoint> tradeOffOf(const std::vector<Outcome>& outcomes, std::size_t most = 200);

}  // namespace Vesk::Kit

#endif
