#ifndef VESK_VESKKIT_EVALUATION_TEMPLATEMATCHER_H
#define VESK_VESKKIT_EVALUATION_TEMPLATEMATCHER_H

#include <veskkit/traces/Trace.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// The yardstick: recognises a trace as the gesture of the nearest training trace. Shapes are 32
/// positions at equal distances, centred, divided by the largest absolute coordinate, and compared
/// by squared Euclidean distance, the way of the simple recognisers that compare templates (J. O.
/// Wobbrock, A. D. Wilson, Y. Li, "Gestures without libraries, toolkits or training", UIST 2007,
/// without its turning and stretching).
///
/// Immutable; const calls from any number of threads.
class TemplateMatcher {
public:
    /// The outcome of a comparison with all templates.
    struct Match {
        std::string gesture;  ///< the nearest training trace's label, blanks as underscores
        double distance;      ///< squared, between shapes; infinity where there is none
    };

    /// Keeps the shapes of labelled traces, those without a direction left out. The rejection
    /// threshold is the distance that all but the share `falseRejection` of the training traces
    /// keep to the nearest one of the same gesture, drawn by another user where there are several;
    /// infinity where no two can be compared. `falseRejection`, 0 to 1, is not checked. InputError,
    /// naming the trace, for unusable positions. O(n^2) for n traces, and their points.
    explicit TemplateMatcher(const std::vector<const Trace*>& traces, double falseRejection = 0.02);

    /// The nearest training trace, of all gestures but one (its name, blanks as underscores), the
    /// first of several; no gesture where the trace has no direction or no other gesture is known.
    /// InputError for unusable positions. O(training traces + points).
    Match nearest(const Trace& trace, const std::string& but = {}) const;

    /// The largest distance that is accepted, squared, between shapes; it may be infinite.
    double threshold() const { return limit; }

    /// Whether there is a match within the threshold.
    bool accepts(const Match& match) const {
        return !match.gesture.empty() && match.distance <= limit;
    }

private:
    struct Template {
        std::vector<double> shape;
        std::size_t gesture;
        std::string user;
    };

    std::vector<std::string> names;
    std::vector<Template> templates;
    double limit;
};

}  // namespace Vesk::Kit

#endif
