#include "Bindings.h"

#include <veskkit/Error.h>

#include <exception>
#include <stdexcept>

namespace Vesk::Python {

namespace py = pybind11;

void addErrors(py::module_& module) {
    // The later registered is asked first.
    py::register_exception_translator([](std::exception_ptr problem) {
        try {
            if (problem) std::rethrow_exception(problem);
        } catch (const std::out_of_range& error) {
            // A model whose tables are smaller than its counts.
            PyErr_SetString(PyExc_ValueError, error.what());
        }
    });
    py::register_exception<Kit::InputError>(module, "InputError", PyExc_ValueError).doc() =
        "What was given is not what it has to be. One line: the place, what was found, what was "
        "expected.";
    py::register_exception<Kit::OutputError>(module, "OutputError", PyExc_OSError).doc() =
        "A file could not be written. One line: the path and the reason.";
}

}  // namespace Vesk::Python
