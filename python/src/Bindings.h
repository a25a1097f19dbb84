#ifndef VESK_PYTHON_BINDINGS_H
#define VESK_PYTHON_BINDINGS_H

#include <pybind11/pybind11.h>

namespace Vesk::Python {

// Each adds what its source is named after to the module. Every operation takes a snapshot of its
// object first, with the interpreter's lock held, and works on that without the lock: threads may
// use one object at a time, and one that is changed meanwhile is seen as it was.

void addErrors(pybind11::module_& module);
void addHmm(pybind11::module_& module);
void addLeftRightHmm(pybind11::module_& module);
void addRecognitionModel(pybind11::module_& module);
void addQuantizer(pybind11::module_& module);
void addClusterer(pybind11::module_& module);
void addTraces(pybind11::module_& module);
void addTraining(pybind11::module_& module);
void addRecognizer(pybind11::module_& module);
void addTemplateMatcher(pybind11::module_& module);
void addEvaluation(pybind11::module_& module);
void addPlots(pybind11::module_& module);

}  // namespace Vesk::Python

#endif
