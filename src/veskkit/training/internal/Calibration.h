#ifndef VESK_VESKKIT_TRAINING_INTERNAL_CALIBRATION_H
#define VESK_VESKKIT_TRAINING_INTERNAL_CALIBRATION_H

#include <veskkit/training/internal/ModelTraining.h>

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

/// The likelihood ratio that a gesture may be asked for: of the test traces whose likeliest gesture
/// is the right one all but the share `falseRejection` reach it, and half of every single gesture's
/// reach twice as much. 0.0 where there are none. `step` is called after every gesture and every
/// round of discrimination of every run.
double calibrateRatio(const std::vector<CalibrationRun>& runs, const std::vector<double>& codebook,
                      const TrainingOptions& options, const std::function<void()>& step);

}  // namespace Vesk::Kit::internal

#endif
