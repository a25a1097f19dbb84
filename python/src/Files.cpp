#include "Files.h"

#include "Arrays.h"

namespace Vesk::Python {
namespace {

void require(bool done, const std::string& file, const char* otherwise) {
    if (done) return;
    PyErr_SetObject(PyExc_OSError, textOf(file + ": " + otherwise).ptr());
    throw py::error_already_set();
}

}  // namespace

std::string pathFrom(const py::object& path) {
    const std::string bytes = py::bytes(py::module_::import("os").attr("fsencode")(path));
    if (bytes.find('\0') == std::string::npos) return bytes;
    throw py::value_error("path: found a null character, expected the name of a file");
}

void requireWritten(bool written, const std::string& file) {
    require(written, file, "could not be written");
}

void requireOpened(bool opened, const std::string& file) {
    require(opened, file, "could not be opened");
}

}  // namespace Vesk::Python
