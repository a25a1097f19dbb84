#ifndef VESK_TESTS_UNIT_VESKKIT_GESTURES_H
#define VESK_TESTS_UNIT_VESKKIT_GESTURES_H

#include <support/Random.h>
#include <veskkit/recognition/RecognitionModel.h>
#include <veskkit/traces/Trace.h>

#include <vesk/leftright/LeftRightHMM.h>
#include <vesk/recognition/RecognitionModelHMM.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace Vesk::Test {

/// The text of the exception E that `action` throws; a failure and "" where it throws none.
template <typename E>
std::string textOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const E& error) {
        return error.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return "";
}

/// Corners of a few gestures in a unit square.
inline const std::map<std::string, Kit::Points>& corners() {
    static const std::map<std::string, Kit::Points> all{
        {"caret", {{0, 0}, {0.5, 1}, {1, 0}}},
        {"check", {{0, 0.4}, {0.3, 0}, {1, 1}}},
        {"corner", {{0, 1}, {0, 0}, {1, 0}}},
        {"square", {{0, 1}, {0, 0}, {1, 0}, {1, 1}, {0, 1}}},
        {"zigzag", {{0, 1}, {1, 1}, {0, 0}, {1, 0}}}};
    return all;
}

/// A drawing of the corners: 60 positions with a tremor, moved and resized.
inline Kit::Points drawn(const Kit::Points& shape, Random& random, double tremor) {
    constexpr int steps = 60;
    const double size = 50.0 + 100.0 * random.unit();
    const double left = 500.0 * random.unit();
    const auto edges = static_cast<double>(shape.size() - 1);
    Kit::Points points;
    for (int s = 0; s < steps; ++s) {
        const double along = edges * s / (steps - 1);
        const auto edge = static_cast<std::size_t>(std::min(along, edges - 1e-9));
        const double share = along - static_cast<double>(edge);
        std::vector<double> point;
        for (std::size_t axis = 0; axis < 2; ++axis) {
            const double from = shape[edge][axis];
            const double to = shape[edge + 1][axis];
            const double shake = tremor * (random.unit() - 0.5);
            point.push_back(left + size * (from + share * (to - from) + shake));
        }
        points.push_back(point);
    }
    return points;
}

/// `repetitions` traces of every gesture by each of `users` users.
inline std::vector<Kit::Trace> drawnTraces(std::uint64_t seed, int users, int repetitions,
                                           double tremor = 0.05) {
    Random random(seed);
    std::vector<Kit::Trace> traces;
    for (int user = 1; user <= users; ++user) {
        for (const auto& [name, shape] : corners()) {
            for (int repetition = 0; repetition < repetitions; ++repetition) {
                Kit::Trace trace;
                trace.gesture = name;
                trace.user = std::string("u").append(std::to_string(user));
                trace.points = drawn(shape, random, tremor);
                traces.push_back(trace);
            }
        }
    }
    return traces;
}

/// A gesture model of two states and four symbols that likes `first` and then `second`.
inline Vesk::ML::LeftRightHMM smallGesture(const std::string& name, int first, int second) {
    Vesk::ML::LeftRightHMM gesture(2, 4, 1);
    gesture.name = name;
    gesture.pi = {1.0, 0.0};
    gesture.a.data = {0.5, 0.5, 0.0, 1.0};
    gesture.b.data.assign(8, 0.1);
    gesture.b(0, first) = 0.7;
    gesture.b(1, second) = 0.7;
    return gesture;
}

/// The settings of a model of the gestures, for `RecognitionModel::build`.
inline Vesk::ML::RecognitionModelHMM smallSettings(double p,
                                                   std::vector<Vesk::ML::LeftRightHMM> gestures) {
    std::vector<Vesk::ML::HMM*> pointers;
    for (Vesk::ML::LeftRightHMM& gesture : gestures) pointers.push_back(&gesture);
    Vesk::ML::RecognitionModelHMM model(pointers, p);
    model.initialize();
    model.gestures.clear();
    delete model.recognitionHMM;
    model.recognitionHMM = nullptr;
    model.name = "small";
    model.codebook = {0.0, 90.0, 180.0, 270.0};
    model.proxFilterThreshold = 0.0f;
    model.rotationAllowed = false;
    return model;
}

/// "right" (0 0 ... then 1), "up" (1, then 2) and a second sub-model of "right" (0, then 3).
inline std::vector<Vesk::ML::LeftRightHMM> smallGestures() {
    return {smallGesture("right", 0, 1), smallGesture("up", 1, 2), smallGesture("right", 0, 3)};
}

inline Kit::RecognitionModel smallModel(double p = 0.5) {
    Kit::RecognitionModel model;
    for (Vesk::ML::LeftRightHMM& gesture : smallGestures()) model.add(gesture);
    model.build(smallSettings(p, smallGestures()));
    return model;
}

}  // namespace Vesk::Test

#endif
