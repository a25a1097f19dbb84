#ifndef VESK_VESKKIT_TRAINING_TRAININGREPORT_H
#define VESK_VESKKIT_TRAINING_TRAININGREPORT_H

#include <cstddef>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// How one sub-model came about.
struct SubModelReport {
    std::size_t traces;    ///< that it was trained on
    int iterations;        ///< training iterations that were adopted
    double logLikelihood;  ///< mean natural log likelihood a symbol of those traces, at the end
};

/// How one gesture came about.
struct GestureReport {
    std::string gesture;  ///< the name in the model
    std::string label;    ///< the label in the traces: differs where it had blanks
    std::size_t traces;   ///< that were used
    std::size_t users;    ///< different users among them
    std::vector<SubModelReport> subModels;  ///< in the model's order
};

/// What a training has to tell.
struct TrainingReport {
    std::vector<GestureReport> gestures;  ///< in the model's order: by name
    std::size_t traces = 0;               ///< used in all
    std::vector<std::string> skipped;     ///< one line for every trace that was left out
    std::vector<std::string> warnings;    ///< one line each: renamed labels, few traces, ...
    double acceptanceRatio = 0.0;         ///< R that the model was given
    int turns = 0;                        ///< turned copies to either side of a model, of gestures
                                          ///< of 20 traces or more
    std::size_t calibrationRuns = 0;      ///< trainings for calibration, where R was given only of
                                          ///< single gestures' ratios and of `turns`
};

}  // namespace Vesk::Kit

#endif
