#ifndef VESK_VESKKIT_TRAINING_INTERNAL_ACCEPTANCERATIOS_H
#define VESK_VESKKIT_TRAINING_INTERNAL_ACCEPTANCERATIOS_H

#include <veskkit/training/CalibrationAnswers.h>
#include <veskkit/training/internal/ModelTraining.h>

#include <map>
#include <string>
#include <vector>

namespace Vesk::Kit::internal {

/// What an acceptance ratio may be.
inline constexpr double leastRatio = 1e-6;
inline constexpr double largestRatio = 1e12;

/// The likelihood ratios that gestures may be asked for.
struct CalibratedRatios {
    /// Of the traces whose likeliest gesture is the right one all but the share `falseRejection`
    /// reach it, and half of every single gesture's reach twice as much; from `leastRatio` to
    /// `largestRatio`. 0.0 where there are no such traces.
    double all = 0.0;
    /// Per gesture of 50 such traces or more: what all but that share of its own reach. Some
    /// gestures are far from the threshold model whoever draws them, and what is nearer to it
    /// is something else. But no more than `all` times what as many of them lead by: more would
    /// become other gestures.
    std::map<std::string, double> own = {};
    /// Of the numbers of turned copies the last, or the first where more traces are lost to the
    /// last than gained, by more than the square root of both together: one standard error (Q.
    /// McNemar, "Note on the sampling error of the difference between correlated proportions or
    /// percentages", Psychometrika 12, 1947).
    int turns = 0;
};

/// What the answers of all runs to each number of turned copies come to; the ratios are those with
/// the number that is chosen. O(n log n) for n traces.
CalibratedRatios ratiosOf(const std::vector<CalibrationAnswers>& runs,
                          const std::vector<int>& turns, double falseRejection);

/// Whether a gesture has traces enough for a ratio of its own.
bool anyMayHaveItsOwnRatio(const std::vector<GestureSamples>& gestures);

/// R: of the options, or as calibrated, or what is customary. Priors where users were left out:
/// how much more than R single gestures are asked for is the same whatever R is.
Acceptance acceptanceFor(const std::vector<GestureModels>& gestures, const TrainingOptions& options,
                         const CalibratedRatios& calibrated, bool runsAreUsers);

}  // namespace Vesk::Kit::internal

#endif
