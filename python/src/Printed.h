#ifndef VESK_PYTHON_PRINTED_H
#define VESK_PYTHON_PRINTED_H

#include <pybind11/pybind11.h>

#include <iostream>
#include <mutex>
#include <sstream>
#include <string>

namespace Vesk::Python {

/// Does what prints to standard output, without the interpreter's lock, and returns what it
/// printed. One at a time, since the stream is the whole process's; its precision starts at the
/// usual 6 each time.
template <typename Work>
std::string printedBy(Work work) {
    static std::mutex guard;
    const pybind11::gil_scoped_release unlocked;
    const std::lock_guard<std::mutex> lock(guard);

    struct Redirection {
        std::ostringstream text;
        std::streambuf* buffer = std::cout.rdbuf(text.rdbuf());
        std::streamsize precision = std::cout.precision(6);
        ~Redirection() {
            std::cout.precision(precision);
            std::cout.rdbuf(buffer);
        }
    } redirection;
    work();
    return redirection.text.str();
}

/// Does what prints, and prints that where Python prints, once it is done.
template <typename Work>
void printing(Work work) {
    pybind11::print(printedBy(work), pybind11::arg("end") = "");
}

}  // namespace Vesk::Python

#endif
