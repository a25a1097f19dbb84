#ifndef VESK_PYTHON_COPIES_H
#define VESK_PYTHON_COPIES_H

#include <pybind11/pybind11.h>

namespace Vesk::Python {

/// What the module `copy` asks for; an object's fields are its own, so one copy is as deep as the
/// other.
template <typename Class>
void addCopies(Class& bound) {
    using Type = typename Class::type;
    bound.def("__copy__", [](const Type& it) { return Type(it); });
    bound.def(
        "__deepcopy__", [](const Type& it, const pybind11::dict&) { return Type(it); },
        pybind11::arg("memo"));
}

}  // namespace Vesk::Python

#endif
