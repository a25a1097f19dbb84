#ifndef VESK_PYTHON_OPTIONS_H
#define VESK_PYTHON_OPTIONS_H

#include <veskkit/training/TrainingOptions.h>

#include <pybind11/pybind11.h>

namespace Vesk::Python {

/// Training options by their Python names; those left out have their defaults. TypeError for a name
/// that is none.
Vesk::Kit::TrainingOptions optionsFrom(const pybind11::dict& values);

/// All of them.
pybind11::dict dictOf(const Vesk::Kit::TrainingOptions& options);

}  // namespace Vesk::Python

#endif
