#ifndef VESK_VESKKIT_EVALUATION_TRADEOFF_H
#define VESK_VESKKIT_EVALUATION_TRADEOFF_H

#include <veskkit/evaluation/Evaluation.h>

#include <vector>

namespace Vesk::Kit {

/// What the hidden Markov models of an evaluation would have answered at an acceptance ratio: a
/// higher one keeps more unknown gestures out, and more known ones with them.
struct TradeOffPoint {
    double ratio;           ///< R, at least 0
    Share correct;          ///< of the known traces, as in Rates
    Share wrong;            ///< of the known traces
    Share rejected;         ///< of the known traces
    Share unknownAccepted;  ///< of the traces taken for unknown; of none where none were
};

/// The point at one ratio, 0 or above. O(n log k), n outcomes of k gestures.
TradeOffPoint tradeOffAt(const std::vector<Outcome>& outcomes, double ratio);

/// Points by rising ratio, four a decade, from 1e-6 to 1e12: all that a model can be given.
/// O(n log k) each, n outcomes of k gestures.
std::vector<TradeOffPoint> tradeOffOf(const std::vector<Outcome>& outcomes);

/// The least ratio from 1e-6 to 1e12 at which no more than the share `unknownAccepted`, 0 to 1, of
/// the unknown traces is accepted; 1e12 where there is none. O(n log n).
double ratioFor(const std::vector<Outcome>& outcomes, double unknownAccepted);

}  // namespace Vesk::Kit

#endif
