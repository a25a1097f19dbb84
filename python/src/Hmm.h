#ifndef VESK_PYTHON_HMM_H
#define VESK_PYTHON_HMM_H

#include <vesk/hmm/HMM.h>

#include <pybind11/pybind11.h>

#include <string>

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

}  // namespace Vesk::Python

#endif
