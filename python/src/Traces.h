#ifndef VESK_PYTHON_TRACES_H
#define VESK_PYTHON_TRACES_H

#include <veskkit/traces/Trace.h>

#include <pybind11/pybind11.h>

#include <vector>

namespace Vesk::Python {

/// Traces of points (P, 2), which errors name "X[i]". Labels and users, where given (not None), are
/// as many texts.
std::vector<Vesk::Kit::Trace> tracesFrom(pybind11::handle points, const pybind11::object& labels,
                                         const pybind11::object& users);

}  // namespace Vesk::Python

#endif
