#ifndef VESK_VESKKIT_TRAINING_INTERNAL_MODELTRAINING_H
#define VESK_VESKKIT_TRAINING_INTERNAL_MODELTRAINING_H

#include <vesk/leftright/LeftRightHMM.h>
#include <veskkit/recognition/RecognitionModel.h>
#include <veskkit/traces/Trace.h>
#include <veskkit/training/TrainingOptions.h>
#include <veskkit/training/TrainingReport.h>

#include <cstddef>
#include <functional>
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
};

/// What a left-right model is trained with.
struct ModelSettings {
    int states;
    int delta;
    double smoothing;  ///< degrees
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

/// A recognition model of all gestures, as stored; appends to `reports`. Its acceptance ratio is
/// that of the options, where they set none 1e3, or 1e4 where a gesture has several models; in any
/// case at most `largestRatio`. `trained` is called after every gesture, by one thread at a time.
RecognitionModel trainRecognitionModel(const std::vector<GestureSamples>& gestures,
                                       const std::vector<double>& codebook, double largestRatio,
                                       const TrainingOptions& options,
                                       std::vector<GestureReport>& reports,
                                       const std::function<void()>& trained);

/// The transition probability p at which a gesture has to be `ratio` times as likely as the
/// threshold model: with K gesture models its weight is (1 - p) / K, so p = R / (R + K).
double transitionProbability(double ratio, std::size_t K);

/// The ratio that a stored transition probability stands for: R = p K / (1 - p).
double acceptanceRatio(double p, std::size_t K);

/// The value as it reads back from a model file.
double storedValue(double value);

}  // namespace Vesk::Kit::internal

#endif
