#ifndef VESK_VESKKIT_TRAINING_INTERNAL_DISCRIMINATION_H
#define VESK_VESKKIT_TRAINING_INTERNAL_DISCRIMINATION_H

#include <veskkit/training/internal/ModelTraining.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace Vesk::Kit::internal {

/// Makes the fine models of gestures tell the gestures apart. Each was trained on its own traces
/// alone; here those traces count that another gesture's model finds nearly as likely, or likelier:
/// along the best path of each of the two models the observed directions, and those near them,
/// become likelier in the right one and less likely in the other, and the more so the smaller the
/// lead of the right one (B.-H. Juang and S. Katagiri, Discriminative learning for minimum error
/// classification, 1992, with a fixed step and all traces at once).
///
/// `samples` are the gestures' own, in the same order. `options.discrimination` rounds; nothing
/// happens for 0 or for a single gesture. Emissions stay floored rows of sum 1. The same bits at
/// any number of threads. `told` is called after every round. O(rounds * samples * N T) beside
/// O(samples * models * N T) for the first search of rivals; the later ones, every eight rounds,
/// look at those not far behind.
void discriminate(
    std::vector<GestureModels>& gestures, const std::vector<const GestureSamples*>& samples,
    const std::vector<double>& codebook, const TrainingOptions& options,
    const std::function<void()>& told = [] {});

/// How many rounds that takes for so many gestures.
inline std::size_t discriminationRounds(std::size_t gestures, const TrainingOptions& options) {
    return gestures < 2 ? 0 : static_cast<std::size_t>(options.discrimination);
}

}  // namespace Vesk::Kit::internal

#endif
