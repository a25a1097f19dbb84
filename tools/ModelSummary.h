#ifndef VESK_TOOLS_MODELSUMMARY_H
#define VESK_TOOLS_MODELSUMMARY_H

#include <veskkit/recognition/RecognitionModel.h>

#include <cstddef>
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
    double prior;       ///< what its probability counts for beside the others': less than 1 where
                        ///< more is asked for
    Range transitions;  ///< of those that are not 0
    Range emissions;
    std::size_t turnedCopies;  ///< that stand beside it in the model
};

/// The models that carry one name, but for turned copies.
struct GestureSummary {
    std::string name;
    std::vector<SubModelSummary> models;
};

struct ModelSummary {
    std::vector<GestureSummary> gestures;  ///< in the order of first appearance

    /// How many times as likely as the threshold model a gesture of prior 1 has to be, whether the
    /// file has that as its transition probability or in every pi; 0 where any will do.
    double acceptanceRatio;
};

/// The largest sum of a gesture's pi, which is 1 but where the ratio is beyond what the transition
/// probability holds; 1 where there is none.
double largestPrior(const Kit::RecognitionModel& model);

/// The figures of a sound model (ModelCheck.h).
ModelSummary summaryOf(const Kit::RecognitionModel& model);

/// The same and the model's settings as one JSON object.
std::string summaryJson(const Kit::RecognitionModel& model);

}  // namespace Vesk::Tool

#endif
