#ifndef VESK_PYTHON_HMM_H
#define VESK_PYTHON_HMM_H

#include "Files.h"

#include <vesk/hmm/HMM.h>

#include <pybind11/pybind11.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace Vesk::Python {

// Shared by the two model classes.

/// M as a signed number; no symbol passes where a damaged file declared none.
int symbolsOf(const Vesk::ML::HMM& model);

/// Everything in a general model, bit for bit, and back into one.
pybind11::tuple stateOf(const Vesk::ML::HMM& model);
void restore(Vesk::ML::HMM& model, const pybind11::tuple& state);

/// ValueError where tables of these sizes would not fit 32-bit positions.
void requireSizes(int numStates, int vocabSize, int dimension);

/// ValueError unless a file can hold the name: one word.
void requireStorableName(const std::string& name);

/// ValueError for a negative count of iterations, of which there would be no end.
void requireIterations(int maxIterations);

/// Symbols of the model, named "observation" in errors.
std::vector<int> observationFor(const Vesk::ML::HMM& model, pybind11::handle observation);

/// Changes a copy without the interpreter's lock and puts it in place.
template <typename Model, typename Change>
void changed(Model& model, Change change) {
    Model snapshot(model);
    {
        const pybind11::gil_scoped_release unlocked;
        change(snapshot);
    }
    model = std::move(snapshot);
}

template <typename Model>
void trainOnOne(Model& model, pybind11::handle observation, int maxIterations) {
    requireIterations(maxIterations);
    std::vector<int> symbols = observationFor(model, observation);
    const auto T = static_cast<int>(symbols.size());
    changed(model, [&](Model& it) { it.baumWelch(std::move(symbols), T, maxIterations); });
}

template <typename Model>
void saveModel(const Model& model, const pybind11::object& path) {
    requireStorableName(model.name);
    const Model snapshot(model);
    writeFile(path, [&](const std::string& file) { return snapshot.save(file); });
}

template <typename Model>
std::shared_ptr<Model> loadedModel(const pybind11::object& path, Model* (*load)(const char*)) {
    std::shared_ptr<Model> model;
    readFile(path, [&](const std::string& file) {
        model.reset(load(file.c_str()));
        return model != nullptr;
    });
    return model;
}

}  // namespace Vesk::Python

#endif
