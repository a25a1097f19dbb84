#ifndef VESK_PYTHON_ARRAYS_H
#define VESK_PYTHON_ARRAYS_H

#include <vesk/math/MatrixT.h>
#include <veskkit/traces/Trace.h>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <optional>
#include <string>
#include <vector>

namespace Vesk::Python {

namespace py = pybind11;

// What comes from Python is checked and copied once; `what` names it in errors, which are
// ValueError (wrong shape, range or kind of number) in one line: what was found and expected.

/// A shape's part that may be anything.
inline constexpr py::ssize_t any = -1;

/// Numbers of one dimension, `length` of them.
std::vector<double> vectorFrom(py::handle value, const std::string& what, py::ssize_t length = any);

/// Numbers of two dimensions.
Vesk::Math::MatrixT<double> matrixFrom(py::handle value, const std::string& what,
                                       py::ssize_t rows = any, py::ssize_t cols = any);

/// Whole numbers of one dimension, each at least 0 and less than `end`.
std::vector<int> symbolsFrom(py::handle value, const std::string& what, int end);

/// A list of those, which the errors name "what[i]".
std::vector<std::vector<int>> sequencesFrom(py::handle values, const std::string& what, int end);

/// Positions, an array (P, 2).
Vesk::Kit::Points pointsFrom(py::handle value, const std::string& what);

/// A list of those.
std::vector<Vesk::Kit::Points> pointListFrom(py::handle values, const std::string& what);

py::array_t<double> arrayOf(const std::vector<double>& values);
py::array_t<int> arrayOf(const std::vector<int>& values);
py::array_t<double> arrayOf(const Vesk::Math::MatrixT<double>& values);
py::array_t<double> arrayOf(const Vesk::Kit::Points& points);
py::list listOf(const std::vector<std::vector<int>>& sequences);

// Many short rows as one array and their lengths: cheaper to send than an array each.

py::tuple packed(const std::vector<std::vector<int>>& sequences);
std::vector<std::vector<int>> unpackedSequences(const py::tuple& state);
py::tuple packed(const std::vector<Vesk::Kit::Points>& traces);
std::vector<Vesk::Kit::Points> unpackedPoints(const py::tuple& state);

/// Text that need not be UTF-8 comes and goes with its bytes escaped, as Python has file names.
py::str textOf(const std::string& bytes);
std::string bytesFrom(const py::str& text);

}  // namespace Vesk::Python

#endif
