#ifndef VESK_VESKKIT_TRAINING_TRAININGPLAN_H
#define VESK_VESKKIT_TRAINING_TRAININGPLAN_H

#include <veskkit/training/CalibrationAnswers.h>
#include <veskkit/training/GestureModels.h>
#include <veskkit/training/GestureTrainer.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// Sequences of symbols, each at least 2 long.
using SymbolSequences = std::vector<std::vector<int>>;

/// Trains the models of one gesture, for the model itself and for every training that its
/// acceptance ratio is calibrated on.
struct GestureTask {
    TrainingOptions options;       ///< of the whole training
    std::vector<double> codebook;  ///< directions in degrees, one a symbol
    std::string gesture;           ///< its name in the model
    std::vector<Trace> traces;     ///< the gesture's usable ones, in their order
    SymbolSequences sequences;     ///< of these traces

    /// Per training the places of its traces. The last one is the model's own; one without traces
    /// does without the gesture.
    std::vector<std::vector<std::size_t>> trainings;

    /// Per training the gesture's models, nothing for one without its traces. Two tasks run in any
    /// order and anywhere: the same bits. One thread. InputError where there are no traces, or not
    /// as many sequences; std::out_of_range for places beyond them.
    std::vector<std::optional<GestureModels>> run() const;
};

/// The symbols of some traces of one gesture.
struct GestureSequences {
    std::string gesture;        ///< its name in the model
    SymbolSequences sequences;  ///< one a trace, in their order
};

/// What became of a training's models.
struct ToldApart {
    std::vector<GestureModels> gestures;  ///< the model's own training: its models
    CalibrationAnswers answers;           ///< a calibration's: what they say of its traces
};

/// Teaches the models of all gestures of one training to tell each other's traces apart and, for a
/// calibration, asks them about the traces that were left out.
struct TellApartTask {
    TrainingOptions options;                 ///< of the whole training
    std::vector<double> codebook;            ///< directions in degrees, one a symbol
    std::vector<GestureModels> gestures;     ///< each trained by itself
    std::vector<GestureSequences> training;  ///< of the same gestures
    std::vector<GestureSequences> test;      ///< empty for the model's own training
    std::vector<int> turns = {0};            ///< numbers of turned copies to try, one or two
    std::size_t stride = 1;                  ///< every how manieth test trace counts

    /// The same bits wherever it runs. `options.threads` threads. InputError where `training` has
    /// not as many gestures as `gestures`, and where `turns` is empty or has other numbers than 0
    /// to 4.
    ToldApart run() const;
};

/// GestureTrainer::train taken to pieces, for hosts that spread its work over processes and
/// machines: first one task a gesture, then one a training (those of the calibration, then the
/// model's own), each a value that depends on nothing else. The result is the same to the bit as
/// that of GestureTrainer, wherever and in whichever order tasks ran.
///
/// Immutable; const calls from several threads.
class TrainingPlan {
public:
    /// InputError as GestureTrainer and its `train`.
    TrainingPlan(std::vector<Trace> traces, TrainingOptions options);
    TrainingPlan(TrainingPlan&&) noexcept;             ///< the other is left to be destroyed
    TrainingPlan& operator=(TrainingPlan&&) noexcept;  ///< the other is left to be destroyed
    ~TrainingPlan();

    std::size_t gestures() const;   ///< of the model: how many gesture tasks there are
    std::size_t trainings() const;  ///< those of the calibration, and the model's own, the last

    /// What is to be done for a gesture, with copies of its traces. std::out_of_range for a gesture
    /// that is not one of `gestures`.
    GestureTask gestureTask(std::size_t gesture) const;

    /// std::out_of_range for a training that is not one of `trainings`, the model's own the last.
    /// @param trained per gesture what its task returned. InputError where that does not fit.
    TellApartTask tellApartTask(
        std::size_t training,
        const std::vector<std::vector<std::optional<GestureModels>>>& trained) const;

    /// @param parts per training what its task returned. InputError where that does not fit.
    TrainingResult result(const std::vector<ToldApart>& parts) const;

private:
    struct Parts;
    std::unique_ptr<const Parts> parts;
};

}  // namespace Vesk::Kit

#endif
