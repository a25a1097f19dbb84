#ifndef VESK_PYTHON_LEFTRIGHTHMM_H
#define VESK_PYTHON_LEFTRIGHTHMM_H

#include <vesk/leftright/LeftRightHMM.h>

#include <pybind11/pybind11.h>

namespace Vesk::Python {

/// Everything in a left-right model, bit for bit, and the model of that.
pybind11::tuple stateOf(const Vesk::ML::LeftRightHMM& model);
Vesk::ML::LeftRightHMM leftRightFrom(const pybind11::tuple& state);

}  // namespace Vesk::Python

#endif
