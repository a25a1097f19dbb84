#ifndef VESK_HMM_INTERNAL_SINGLETRAINING_H
#define VESK_HMM_INTERNAL_SINGLETRAINING_H

#include <vesk/hmm/internal/Columns.h>
#include <vesk/hmm/internal/Parameters.h>

namespace Vesk::ML::internal {

/// What the two trainers on one sequence do not share.
struct SingleTraining {
    bool adoptsPi;  ///< whether the initial probabilities are re-estimated too
    /// What the candidate's likelihood has to exceed, from the present model's alpha, N x T.
    double (*reference)(const Columns& alpha, int N, int T);
};

/// Re-estimates a model from the first T symbols with plain tables, adopting candidates while they
/// exceed the reference. Nothing happens for T < 1.
void trainOnSequence(HMM& model, const std::vector<int>& observation, int T, int maxIterations,
                     const SingleTraining& training);

}  // namespace Vesk::ML::internal

#endif
