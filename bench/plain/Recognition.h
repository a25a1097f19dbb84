#ifndef VESK_BENCH_PLAIN_RECOGNITION_H
#define VESK_BENCH_PLAIN_RECOGNITION_H

#include "Passes.h"

#include <vesk/recognition/RecognitionModelHMM.h>

#include <vector>

namespace Vesk::Bench::Plain {

/// The index of the gesture recognised, -1 for none: one forward pass a model.
inline int check(const ML::RecognitionModelHMM& model, const std::vector<int>& o) {
    const double threshold =
        lastColumnSum(forward(*model.recognitionHMM, o)) * model.modelTransitionProb;
    int winner = -1;
    double best = 0.0;
    for (std::size_t i = 0; i < model.gestures.size(); ++i) {
        const Matrix alpha = forward(*model.gestures[i], o);
        const double probability = lastColumnSum(alpha);
        const double gamma = ML::HMM::divide(alpha(alpha.rows - 1, alpha.cols - 1), probability);
        if (probability > best && probability * model.gestureTransitionProb > threshold &&
            model.gestureTransitionProb * gamma > threshold) {
            best = probability;
            winner = static_cast<int>(i);
        }
    }
    return winner;
}

}  // namespace Vesk::Bench::Plain

#endif
