#include "Arrays.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numeric>
#include <stdexcept>

namespace Vesk::Python {

using Vesk::Kit::Points;
using Vesk::Math::MatrixT;

namespace {

using Doubles = py::array_t<double, py::array::c_style | py::array::forcecast>;
using Integers = py::array_t<std::int64_t, py::array::c_style | py::array::forcecast>;

[[noreturn]] void refuse(const std::string& what, const std::string& found,
                         const std::string& expected) {
    throw py::value_error(what + ": found " + found + ", expected " + expected);
}

std::string shapeText(const py::array& array) { return py::str(array.attr("shape")); }

std::string shapeText(std::initializer_list<py::ssize_t> shape) {
    std::string text = "(";
    for (const py::ssize_t n : shape) text += (n == any ? "any" : std::to_string(n)) + ", ";
    text.resize(text.size() - (shape.size() > 1 ? 2 : 1));
    return text + ")";
}

/// An array of numbers of that shape; `kinds` are NumPy's letters for what they may be.
py::array arrayFrom(py::handle value, const std::string& what, const char* kinds,
                    std::initializer_list<py::ssize_t> shape) {
    py::array array;
    try {
        array = py::module_::import("numpy").attr("asarray")(value);
    } catch (const py::error_already_set& problem) {
        if (!problem.matches(PyExc_ValueError) && !problem.matches(PyExc_TypeError)) throw;
        refuse(what, "what is no array", "an array of numbers");
    }
    // An empty list has no kind of its own.
    if (array.size() > 0 && std::strchr(kinds, array.dtype().kind()) == nullptr) {
        refuse(what, "values of type " + std::string(py::str(array.dtype())),
               std::strchr(kinds, 'f') != nullptr ? "numbers" : "whole numbers");
    }
    bool fits = static_cast<std::size_t>(array.ndim()) == shape.size();
    py::ssize_t axis = 0;
    for (const py::ssize_t wanted : shape) {
        fits = fits && (wanted == any || array.shape(axis) == wanted);
        ++axis;
    }
    if (!fits) refuse(what, "shape " + shapeText(array), shapeText(shape));
    return array;
}

constexpr const char* real = "fiu";
constexpr const char* whole = "iu";

py::array_t<std::int64_t> lengthsOf(const std::vector<std::size_t>& lengths) {
    py::array_t<std::int64_t> result(static_cast<py::ssize_t>(lengths.size()));
    std::copy(lengths.begin(), lengths.end(), result.mutable_data());
    return result;
}

/// The lengths of rows that make `total` together.
std::vector<std::size_t> lengthsFrom(const py::handle& value, std::size_t total) {
    const Integers array(arrayFrom(value, "lengths", whole, {any}));
    std::vector<std::size_t> lengths;
    std::size_t left = total;
    for (py::ssize_t i = 0; i < array.size(); ++i) {
        const std::int64_t length = array.at(i);
        if (length < 0 || static_cast<std::uint64_t>(length) > left) {
            refuse("lengths", std::to_string(length), "0 to " + std::to_string(left));
        }
        lengths.push_back(static_cast<std::size_t>(length));
        left -= lengths.back();
    }
    return lengths;
}

/// Writes positions from `to` on, and returns where they end.
double* copied(const Points& points, double* to) {
    for (const std::vector<double>& point : points) to = std::copy_n(point.begin(), 2, to);
    return to;
}

/// The items of anything that can be gone through.
py::list itemsOf(py::handle values, const std::string& what) {
    if (!py::isinstance<py::iterable>(values) || py::isinstance<py::str>(values)) {
        refuse(what, std::string(py::str(py::type::of(values))), "a list of arrays");
    }
    return py::list(py::reinterpret_borrow<py::object>(values));
}

template <typename Convert>
auto convertedItems(py::handle values, const std::string& what, Convert convert) {
    std::vector<decltype(convert(values, what))> result;
    for (const py::handle item : itemsOf(values, what)) {
        result.push_back(convert(item, what + "[" + std::to_string(result.size()) + "]"));
    }
    return result;
}

}  // namespace

std::vector<double> vectorFrom(py::handle value, const std::string& what, py::ssize_t length) {
    const Doubles array(arrayFrom(value, what, real, {length}));
    return {array.data(), array.data() + array.size()};
}

MatrixT<double> matrixFrom(py::handle value, const std::string& what, py::ssize_t rows,
                           py::ssize_t cols) {
    const Doubles array(arrayFrom(value, what, real, {rows, cols}));
    constexpr py::ssize_t most = std::numeric_limits<int>::max();
    if (array.shape(0) > most || array.shape(1) > most || array.size() > most) {
        refuse(what, "shape " + shapeText(array), "at most 2147483647 values");
    }
    MatrixT<double> matrix(static_cast<int>(array.shape(0)), static_cast<int>(array.shape(1)));
    std::copy_n(array.data(), array.size(), matrix.data.begin());
    return matrix;
}

std::vector<int> symbolsFrom(py::handle value, const std::string& what, int end) {
    const Integers array(arrayFrom(value, what, whole, {any}));
    std::vector<int> symbols;
    symbols.reserve(static_cast<std::size_t>(array.size()));
    for (py::ssize_t t = 0; t < array.size(); ++t) {
        const std::int64_t symbol = array.data()[t];
        if (symbol < 0 || symbol >= end) {
            refuse(what + "[" + std::to_string(t) + "]", "the symbol " + std::to_string(symbol),
                   "0 to " + std::to_string(end - 1));
        }
        symbols.push_back(static_cast<int>(symbol));
    }
    return symbols;
}

std::vector<std::vector<int>> sequencesFrom(py::handle values, const std::string& what, int end) {
    return convertedItems(values, what, [end](py::handle item, const std::string& name) {
        return symbolsFrom(item, name, end);
    });
}

Points pointsFrom(py::handle value, const std::string& what) {
    const Doubles array(arrayFrom(value, what, real, {any, 2}));
    Points points;
    points.reserve(static_cast<std::size_t>(array.shape(0)));
    for (py::ssize_t t = 0; t < array.shape(0); ++t) {
        points.push_back({array.data()[2 * t], array.data()[2 * t + 1]});
    }
    return points;
}

std::vector<Points> pointListFrom(py::handle values, const std::string& what) {
    return convertedItems(values, what, pointsFrom);
}

py::array_t<double> arrayOf(const std::vector<double>& values) {
    return py::array_t<double>(static_cast<py::ssize_t>(values.size()), values.data());
}

py::array_t<int> arrayOf(const std::vector<int>& values) {
    return py::array_t<int>(static_cast<py::ssize_t>(values.size()), values.data());
}

py::array_t<double> arrayOf(const MatrixT<double>& values) {
    const py::array::ShapeContainer shape{values.rows, values.cols};
    return py::array_t<double>(shape, values.data.data());
}

py::array_t<double> arrayOf(const Points& points) {
    py::array_t<double> array({static_cast<py::ssize_t>(points.size()), py::ssize_t{2}});
    copied(points, array.mutable_data());
    return array;
}

py::list listOf(const std::vector<std::vector<int>>& sequences) {
    py::list list;
    for (const std::vector<int>& sequence : sequences) list.append(arrayOf(sequence));
    return list;
}

py::tuple packed(const std::vector<std::vector<int>>& sequences) {
    std::vector<int> all;
    std::vector<std::size_t> lengths;
    for (const std::vector<int>& sequence : sequences) {
        all.insert(all.end(), sequence.begin(), sequence.end());
        lengths.push_back(sequence.size());
    }
    return py::make_tuple(arrayOf(all), lengthsOf(lengths));
}

std::vector<std::vector<int>> unpackedSequences(const py::tuple& state) {
    const std::vector<int> all = symbolsFrom(state[0], "symbols", std::numeric_limits<int>::max());
    std::vector<std::vector<int>> sequences;
    auto from = all.begin();
    for (const std::size_t length : lengthsFrom(state[1], all.size())) {
        const auto to = from + static_cast<std::ptrdiff_t>(length);
        sequences.emplace_back(from, to);
        from = to;
    }
    return sequences;
}

py::tuple packed(const std::vector<Points>& traces) {
    std::vector<std::size_t> lengths;
    lengths.reserve(traces.size());
    for (const Points& points : traces) lengths.push_back(points.size());
    const std::size_t total = std::accumulate(lengths.begin(), lengths.end(), std::size_t{0});
    py::array_t<double> all({static_cast<py::ssize_t>(total), py::ssize_t{2}});
    double* to = all.mutable_data();
    for (const Points& points : traces) to = copied(points, to);
    return py::make_tuple(all, lengthsOf(lengths));
}

std::vector<Points> unpackedPoints(const py::tuple& state) {
    const Points all = pointsFrom(state[0], "points");
    std::vector<Points> traces;
    auto from = all.begin();
    for (const std::size_t length : lengthsFrom(state[1], all.size())) {
        const auto to = from + static_cast<std::ptrdiff_t>(length);
        traces.emplace_back(from, to);
        from = to;
    }
    return traces;
}

py::str textOf(const std::string& bytes) {
    return py::reinterpret_steal<py::str>(PyUnicode_DecodeUTF8(
        bytes.data(), static_cast<py::ssize_t>(bytes.size()), "surrogateescape"));
}

std::string bytesFrom(const py::str& text) {
    return py::bytes(text.attr("encode")("utf-8", "surrogateescape"));
}

}  // namespace Vesk::Python
