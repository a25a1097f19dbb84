#include "Files.h"

#include "Arrays.h"

namespace Vesk::Python {
namespace {

[[noreturn]] void refuse(PyObject* kind, const std::string& text) {
    PyErr_SetObject(kind, textOf(text).ptr());
    throw py::error_already_set();
}

}  // namespace

std::string pathFrom(const py::object& path) {
    std::string bytes = py::bytes(py::module_::import("os").attr("fsencode")(path));
    if (bytes.find('\0') == std::string::npos) return bytes;
    throw py::value_error("path: found a null character, expected the name of a file");
}

void requireWritten(bool written, const std::string& file) {
    if (!written) refuse(PyExc_OSError, file + ": could not be written");
}

void requireOpened(bool opened, const std::string& file) {
    if (!opened) refuse(PyExc_OSError, file + ": could not be opened");
}

void throwTooLarge(const std::string& file) {
    refuse(PyExc_MemoryError, file + ": declares more than fits into memory or has numbers for");
}

}  // namespace Vesk::Python
