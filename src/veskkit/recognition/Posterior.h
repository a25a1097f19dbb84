#ifndef VESK_VESKKIT_RECOGNITION_POSTERIOR_H
#define VESK_VESKKIT_RECOGNITION_POSTERIOR_H

#include <veskkit/recognition/GestureRecognizer.h>

#include <string>
#include <vector>

namespace Vesk::Kit {

/// How gestures and the threshold model share a trace between them.
struct Posterior {
    std::vector<double> gestures;  ///< per asked gesture its probability given the trace
    double threshold;              ///< the threshold model's; all of them sum to 1

    /// Per asked gesture ln(weighted probability / threshold), as Result::margin: positive where it
    /// is likelier than the threshold model. Minus infinity where it is not in the scores.
    std::vector<double> margins;
};

/// Of a result, by Bayes' rule with the weights that recognition itself uses, for gestures in any
/// order. Each gesture is represented by its best sub-model. All is the threshold's where the trace
/// was too short or nothing can produce it. O(asked gestures * gestures of the model).
Posterior posteriorOf(const Result& result, const std::vector<std::string>& gestures);

}  // namespace Vesk::Kit

#endif
