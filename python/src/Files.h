#ifndef VESK_PYTHON_FILES_H
#define VESK_PYTHON_FILES_H

#include <pybind11/pybind11.h>

#include <new>
#include <string>

namespace Vesk::Python {

/// A path: str, bytes or anything with `__fspath__`.
std::string pathFrom(const pybind11::object& path);

/// OSError, naming the file, where it was not `written` or `opened`.
void requireWritten(bool written, const std::string& file);
void requireOpened(bool opened, const std::string& file);

/// MemoryError, naming the file: what it declares does not fit into memory or into itself.
[[noreturn]] void throwTooLarge(const std::string& file);

/// Calls `write` with the path of a file, without the interpreter's lock, and requires it done.
template <typename Write>
void writeFile(const pybind11::object& path, Write write) {
    const std::string file = pathFrom(path);
    bool done = false;
    {
        const pybind11::gil_scoped_release unlocked;
        done = write(file);
    }
    requireWritten(done, file);
}

/// The same with what opens and reads a file.
template <typename Read>
void readFile(const pybind11::object& path, Read read) {
    const std::string file = pathFrom(path);
    bool done = false;
    try {
        const pybind11::gil_scoped_release unlocked;
        done = read(file);
    } catch (const std::bad_alloc&) {
        throwTooLarge(file);
    }
    requireOpened(done, file);
}

}  // namespace Vesk::Python

#endif
