#ifndef VESK_VESKKIT_TRAINING_INTERNAL_CALIBRATION_H
#define VESK_VESKKIT_TRAINING_INTERNAL_CALIBRATION_H

#include <veskkit/training/internal/AcceptanceRatios.h>
#include <veskkit/training/internal/ModelTraining.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace Vesk::Kit::internal {

/// One training on some samples and its test on the others.
struct CalibrationRun {
    std::vector<GestureSamples> training;  ///< gestures of which nothing is left are not in it
    std::vector<GestureSamples> test;
};

/// The runs that leave every user out once, alone or, of more than six users, with others. Empty
/// where the samples have fewer than three users, or one of no user.
std::vector<CalibrationRun> runsByUser(const std::vector<GestureSamples>& gestures);

/// Four runs (or fewer, for fewer samples) that leave every sample out once. Empty where no gesture
/// has two samples.
std::vector<CalibrationRun> runsBySample(const std::vector<GestureSamples>& gestures);

/// What the runs train with: fewer iterations, since the ratio hardly moves with more.
TrainingOptions calibrationOptions(const TrainingOptions& options);

/// Every how manieth test trace is recognised.
std::size_t testStride(const std::vector<CalibrationRun>& runs);

/// Whether a gesture has traces enough for turned copies.
bool anyMayBeTurned(const std::vector<GestureSamples>& gestures);

/// How many turned copies to either side of a model calibration tries: none where no gesture may
/// be turned, else as many as the options say, or none and, where the runs leave users out, also
/// the usual two.
std::vector<int> turnsToTry(const std::vector<GestureSamples>& gestures,
                            const TrainingOptions& options, bool runsAreUsers);

/// What the models of one run, told apart, say of every `stride`-th of the traces that it left out.
CalibrationAnswers answersOf(const std::vector<GestureModels>& gestures,
                             const std::vector<GestureSamples>& test,
                             const std::vector<double>& codebook, const std::vector<int>& turns,
                             std::size_t stride);

/// Trains and tests all runs. `step` is called after every gesture and every round of
/// discrimination of every run.
CalibratedRatios calibrateRatios(const std::vector<CalibrationRun>& runs,
                                 const std::vector<double>& codebook, const std::vector<int>& turns,
                                 const TrainingOptions& options, const std::function<void()>& step);

}  // namespace Vesk::Kit::internal

#endif
