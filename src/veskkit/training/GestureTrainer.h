#ifndef VESK_VESKKIT_TRAINING_GESTURETRAINER_H
#define VESK_VESKKIT_TRAINING_GESTURETRAINER_H

#include <veskkit/recognition/RecognitionModel.h>
#include <veskkit/traces/Trace.h>
#include <veskkit/training/TrainingOptions.h>
#include <veskkit/training/TrainingReport.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace Vesk::Kit {

/// How far a training is, counted in gestures trained and rounds of discrimination, calibration
/// runs included.
struct TrainingProgress {
    std::size_t done;   ///< steps so far, from 1
    std::size_t total;  ///< steps in all
};

/// Told after every step, by one thread at a time, which may be another one than that of the
/// call. An exception that it throws ends the training and passes through.
using TrainingObserver = std::function<void(const TrainingProgress&)>;

/// A model ready to be saved or to recognise with, and how it came about.
struct TrainingResult {
    RecognitionModel model;  ///< as it reads back from its file
    TrainingReport report;   ///< how it came about
};

/// Trains a recognition model from labelled traces (docs/numerics.md has the recipe's reasons).
///
/// Every trace becomes a symbol sequence; every gesture up to S left-right models that all carry
/// its name, one a cluster of its traces; every gesture also one coarse model, and these make the
/// threshold model. Emissions are kept proper probabilities, floored and smoothed, so that a
/// direction not seen in training does not rule a gesture out.
///
/// Deterministic: traces in the same order give the same bits. Gestures are in the order of their
/// names. Immutable; const calls from several threads.
class GestureTrainer {
public:
    /// InputError, naming the option, for a setting out of its range.
    explicit GestureTrainer(TrainingOptions options = {});

    /// The settings that it trains with.
    const TrainingOptions& options() const { return settings; }

    /// InputError for: no traces; a trace without a label, with a label of control characters,
    /// with unusable positions or (unless `skipBad`) without a direction, each named; a gesture of
    /// which nothing is left; two labels that become the same name. A label's blanks become
    /// underscores, with a warning.
    ///
    /// Time, for n traces of T symbols, K gesture models and jumps to delta: O(n T N (N + M)) a
    /// training iteration, O(n T N delta) a round of discrimination and O(n K T N delta) where it
    /// looks for rivals, every eighth; O(subModels^2 n^2) to cluster the n traces of one gesture,
    /// of which 1000 count at most. All that again for each calibration run.
    TrainingResult train(const std::vector<Trace>& traces,
                         const TrainingObserver& observer = {}) const;

private:
    TrainingOptions settings;
};

}  // namespace Vesk::Kit

#endif
