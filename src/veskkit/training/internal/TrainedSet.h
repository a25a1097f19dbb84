#ifndef VESK_VESKKIT_TRAINING_INTERNAL_TRAINEDSET_H
#define VESK_VESKKIT_TRAINING_INTERNAL_TRAINEDSET_H

#include <veskkit/training/GestureTrainer.h>
#include <veskkit/training/internal/Calibration.h>
#include <veskkit/training/internal/ModelTraining.h>

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace Vesk::Kit::internal {

/// What a training begins with; refers to the traces.
struct PreparedSet {
    std::vector<double> codebook;
    std::vector<GestureSamples> samples;  ///< in the order of their names
    std::vector<CalibrationRun> runs;     ///< none where nothing is calibrated
    bool runsAreUsers;                    ///< whether these leave users out
    std::vector<int> turns;               ///< numbers of turned copies that these try
    TrainingReport report;                ///< but for the gestures, the ratio and the turns
};

/// InputError as GestureTrainer::train.
PreparedSet prepareSet(const std::vector<const Trace*>& traces, const TrainingOptions& options);

/// The models of all gestures, each trained by itself, from which recognition models are put
/// together.
struct TrainedSet {
    TrainingOptions options;
    std::vector<GestureSamples> samples;  ///< in the order of their names; refer to the traces
    std::vector<GestureModels> gestures;  ///< in the same order
    std::vector<double> codebook;
    Acceptance acceptance;  ///< calibrated where the options ask for it
    TrainingReport report;  ///< but for the ratio that the composed model has

    /// The recognition model of all gestures, told apart, as it reads back from its file.
    RecognitionModel compose(const std::function<void()>& step = [] {}) const;

    /// The same without one gesture of several, with the same acceptance: what would be known of
    /// the gesture's traces if it had never been trained.
    RecognitionModel composeWithout(
        const std::string& gesture, const std::function<void()>& step = [] {}) const;
};

/// Counts the steps of a training and tells its observer.
class TrainingSteps {
public:
    explicit TrainingSteps(TrainingObserver told = {}) : observer(std::move(told)) {}

    void expect(std::size_t count) { progress.total += count; }

    void operator()() {
        ++progress.done;
        if (observer) observer(progress);
    }

private:
    TrainingObserver observer;
    TrainingProgress progress{0, 0};
};

/// The whole of GestureTrainer::train but the last step, the composition, whose steps are expected
/// too; the traces have to stay for the set's life.
TrainedSet trainSet(const std::vector<const Trace*>& traces, const TrainingOptions& options,
                    TrainingSteps& steps);

}  // namespace Vesk::Kit::internal

#endif
