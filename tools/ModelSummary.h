#ifndef VESK_TOOLS_MODELSUMMARY_H
#define VESK_TOOLS_MODELSUMMARY_H

#include <veskkit/recognition/RecognitionModel.h>

#include <string>
#include <vector>

namespace Vesk::Tool {

struct Range {
    double smallest;
    double largest;
};

struct SubModelSummary {
    unsigned states;
    int delta;
    double prior;       ///< what its probability counts for: less than 1 where more is asked for
    Range transitions;  ///< of those that are not 0
    Range emissions;
};

/// The models that carry one name.
struct GestureSummary {
    std::string name;
    std::vector<SubModelSummary> models;
};

struct ModelSummary {
    std::vector<GestureSummary> gestures;  ///< in the order of first appearance

    /// How many times as likely as the threshold model a gesture of prior 1 has to be; 0 where any
    /// will do.
    double acceptanceRatio;
};

/// The figures of a sound model (ModelCheck.h).
ModelSummary summaryOf(const Kit::RecognitionModel& model);

/// The same and the model's settings as one JSON object.
std::string summaryJson(const Kit::RecognitionModel& model);

}  // namespace Vesk::Tool

#endif
