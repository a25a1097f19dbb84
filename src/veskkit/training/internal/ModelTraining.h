#ifndef VESK_VESKKIT_TRAINING_INTERNAL_MODELTRAINING_H
#define VESK_VESKKIT_TRAINING_INTERNAL_MODELTRAINING_H

#include <vesk/leftright/LeftRightHMM.h>
#include <veskkit/recognition/RecognitionModel.h>
#include <veskkit/traces/Trace.h>
#include <veskkit/training/GestureModels.h>
#include <veskkit/training/TrainingOptions.h>
#include <veskkit/training/TrainingReport.h>

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace Vesk::Kit::internal {

/// A trace that is fit for training.
struct Sample {
    const Trace* trace;
    std::vector<int> symbols;
};

/// The samples of one gesture, in the order of the traces.
struct GestureSamples {
    std::string gesture;  ///< name in the model
    std::string label;    ///< label in the traces
    std::vector<Sample> samples;
    std::size_t drawn = 0;  ///< how many there are, with those that a calibration leaves out
};

/// Whether the gesture's models may have turned copies.
bool mayBeTurned(const GestureSamples& gesture);

/// What a left-right model is trained with.
struct ModelSettings {
    int states;
    int delta;
    double smoothing;  ///< degrees
    /// Whether every sequence is also shown turned to the next direction, and to the one before:
    /// few examples lean otherwise too much on how they were held.
    bool turned = false;
};

/// One trained model and how it came about.
struct TrainedModel {
    Vesk::ML::LeftRightHMM model;
    SubModelReport report;
};

/// Estimates and trains one left-right model: proper, floored and smoothed emissions, transitions
/// as trained. O(iterations * symbols * states * (states + M)).
TrainedModel trainModel(const std::vector<std::vector<int>>& sequences,
                        const std::vector<double>& codebook, const ModelSettings& settings,
                        const TrainingOptions& options);

/// The models of one gesture.
GestureModels trainGesture(const GestureSamples& gesture, const std::vector<double>& codebook,
                           const TrainingOptions& options);

/// The models of all gestures, in their order; `trained` is called after each, by one thread at a
/// time.
std::vector<GestureModels> trainGestures(const std::vector<GestureSamples>& gestures,
                                         const std::vector<double>& codebook,
                                         const TrainingOptions& options,
                                         const std::function<void()>& trained);

/// What a gesture has to reach to be recognised.
struct Acceptance {
    double ratio = 1.0;  ///< R: how much likelier than the threshold model it has to be
    /// What the probability of a gesture that is asked for more than R counts for, above 0 and
    /// below 1.
    std::map<std::string, double> priors = {};
};

/// What of a ratio goes into the transition probability, whose six digits hold up to 1e5.
double storedRatio(double ratio);

/// The recognition model that gestures make together, as it reads back from its file. Priors are
/// in the gestures' pi, which `check` weighs like any other, and so are the rest of the ratio and
/// the weights of turned copies, `turns` to either side of each model, which follow the models of
/// their gesture.
RecognitionModel composeRecognitionModel(const std::vector<GestureModels>& gestures,
                                         const std::vector<double>& codebook,
                                         const Acceptance& acceptance, int turns,
                                         const std::string& name);

/// The transition probability p at which a gesture has to be `ratio` times as likely as the
/// threshold model, as much of that as it holds: with K gesture models its weight is (1 - p) / K,
/// so p = R / (R + K).
double transitionProbability(double ratio, std::size_t K);

/// The ratio that a stored transition probability stands for: R = p K / (1 - p).
double acceptanceRatio(double p, std::size_t K);

/// The value as it reads back from a model file.
double storedValue(double value);

}  // namespace Vesk::Kit::internal

#endif
