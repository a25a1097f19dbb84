#ifndef VESK_VESKKIT_TRAINING_INTERNAL_CALIBRATION_H
#define VESK_VESKKIT_TRAINING_INTERNAL_CALIBRATION_H

#include <veskkit/training/internal/ModelTraining.h>

#include <cstddef>
#include <functional>
#include <map>
#include <string>
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

/// Per gesture natural logarithms of P(gesture) / P(threshold model).
using LogRatios = std::map<std::string, std::vector<double>>;

/// Whether a gesture has traces enough for turned copies.
bool anyMayBeTurned(const std::vector<GestureSamples>& gestures);

/// How many turned copies to either side of a model calibration tries: as many as the options say,
/// or none and, where the runs leave users out of gestures that may be turned, also the usual two.
std::vector<int> turnsToTry(const std::vector<GestureSamples>& gestures,
                            const TrainingOptions& options, bool runsAreUsers);

/// What the models of one run, told apart, say of the traces that it left out.
struct RunAnswers {
    /// Of those whose likeliest gesture is the right one; one for each number of turned copies.
    std::vector<LogRatios> ratios;
    /// Of the same traces: logarithms of P(gesture) / P(likeliest other gesture).
    std::vector<LogRatios> leads;
    std::size_t gained = 0;  ///< traces whose likeliest gesture is right only with the last number
    std::size_t lost = 0;    ///< traces whose likeliest gesture is right only with the first
};

/// Those of one run, for every number of turned copies.
RunAnswers answersOf(const std::vector<GestureModels>& gestures,
                     const std::vector<GestureSamples>& test, const std::vector<double>& codebook,
                     const std::vector<int>& turns, std::size_t stride);

/// The likelihood ratios that gestures may be asked for.
struct CalibratedRatios {
    /// Of the test traces whose likeliest gesture is the right one all but the share
    /// `falseRejection` reach it, and half of every single gesture's reach twice as much. 0.0 where
    /// there are none.
    double all = 0.0;
    /// Per gesture of 50 such traces or more: what all but 2 % of its own reach three times. Some
    /// gestures are far from the threshold model whoever draws them, and what is nearer to it
    /// is something else. But no more than `all` times what all but 1 % of them lead by: those
    /// would become other gestures.
    std::map<std::string, double> own = {};
    /// Of the numbers of turned copies the last, or the first where more traces are lost to the
    /// last than gained, by more than the square root of both together: one standard error (Q.
    /// McNemar, "Note on the sampling error of the difference between correlated proportions or
    /// percentages", Psychometrika 12, 1947).
    int turns = 0;
};

/// Whether a gesture has traces enough for a ratio of its own.
bool anyMayHaveItsOwnRatio(const std::vector<GestureSamples>& gestures);

/// What calibration finds in the answers of all runs to each number of turned copies; the ratios
/// are those with as many as it finds.
CalibratedRatios ratiosOf(const std::vector<RunAnswers>& runs, const std::vector<int>& turns,
                          double falseRejection);

/// Trains and tests all runs. `step` is called after every gesture and every round of
/// discrimination of every run.
CalibratedRatios calibrateRatios(const std::vector<CalibrationRun>& runs,
                                 const std::vector<double>& codebook, const std::vector<int>& turns,
                                 const TrainingOptions& options, const std::function<void()>& step);

}  // namespace Vesk::Kit::internal

#endif
