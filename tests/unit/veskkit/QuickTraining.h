#ifndef VESK_TESTS_UNIT_VESKKIT_QUICKTRAINING_H
#define VESK_TESTS_UNIT_VESKKIT_QUICKTRAINING_H

#include "Gestures.h"

#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/training/GestureTrainer.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Vesk::Test {

/// Small and quick models.
inline Kit::TrainingOptions quick() {
    Kit::TrainingOptions options;
    options.symbols = 16;
    options.states = 10;
    options.thresholdStates = 4;
    options.subModels = 1;
    options.preparation.points = 17;
    return options;
}

inline Kit::TrainingResult trainQuick(const std::vector<Kit::Trace>& traces) {
    return Kit::GestureTrainer(quick()).train(traces);
}

/// How many of the traces are recognised as what they are.
inline std::size_t correctOf(const Kit::GestureRecognizer& recognizer,
                             const std::vector<Kit::Trace>& traces) {
    return static_cast<std::size_t>(
        std::count_if(traces.begin(), traces.end(), [&](const Kit::Trace& trace) {
            return recognizer.recognize(trace).gesture == trace.gesture;
        }));
}

/// Two gestures of two users each, once.
inline std::vector<Kit::Trace> fewTraces() {
    std::vector<Kit::Trace> traces;
    for (const Kit::Trace& trace : drawnTraces(5, 2, 1)) {
        if (trace.gesture == "caret" || trace.gesture == "check") traces.push_back(trace);
    }
    return traces;
}

/// Models that are trained in no time, on one thread.
inline Kit::TrainingOptions smallest() {
    Kit::TrainingOptions options;
    options.preparation.points = 5;
    options.symbols = 4;
    options.states = 2;
    options.thresholdStates = 2;
    options.iterations = 1;
    options.discrimination = 1;
    options.threads = 1;
    return options;
}

}  // namespace Vesk::Test

#endif
