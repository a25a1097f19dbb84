#ifndef VESK_TESTS_UNIT_VESKKIT_TURNABLEMODELS_H
#define VESK_TESTS_UNIT_VESKKIT_TURNABLEMODELS_H

#include <veskkit/training/GestureModels.h>

#include <string>
#include <vector>

namespace Vesk::Test {

/// So many directions, evenly from 0 on.
inline std::vector<double> evenDirections(int count) {
    std::vector<double> codebook;
    for (int k = 0; k < count; ++k) codebook.push_back(360.0 * k / count);
    return codebook;
}

/// Four states in a row, of 16 directions, each of which emits one with probability `most` and the
/// others alike.
inline ML::LeftRightHMM goingTo(const std::string& name, int direction, double most) {
    ML::LeftRightHMM model(4, 16, 1);
    model.name = name;
    model.pi = {1.0, 0.0, 0.0, 0.0};
    for (int i = 0; i < 4; ++i) {
        for (int j = 0; j < 4; ++j) model.a(i, j) = j == i || j == i + 1 ? 0.5 : 0.0;
        for (int k = 0; k < 16; ++k) model.b(i, k) = k == direction ? most : (1 - most) / 15;
    }
    model.a(3, 3) = 1.0;
    return model;
}

/// Two gestures: g0, which may be turned, goes in direction 3, and g1, which may not, a little more
/// in direction 1 than anywhere else.
inline std::vector<Kit::GestureModels> turnableModels() {
    std::vector<Kit::GestureModels> models;
    for (int g = 0; g < 2; ++g) {
        const std::string name = std::string("g").append(std::to_string(g));
        const ML::LeftRightHMM model = goingTo(name, g == 0 ? 3 : 1, g == 0 ? 0.25 : 0.1);
        models.push_back({{model}, model, {name, name, 20, 1, {}}, g == 0});
    }
    return models;
}

}  // namespace Vesk::Test

#endif
