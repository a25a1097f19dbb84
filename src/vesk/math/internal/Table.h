#ifndef VESK_MATH_INTERNAL_TABLE_H
#define VESK_MATH_INTERNAL_TABLE_H

#include <vesk/math/MatrixT.h>

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <stdexcept>
#include <vector>

namespace Vesk::Math::internal {

/// The rows x cols elements at the start of a matrix, in the matrix's own row-major layout: what
/// the algorithms read and write.
template <typename T>
struct Table {
    T* data;
    int rows;
    int cols;
    std::ptrdiff_t stride;  ///< the matrix's column count

    T* row(int r) const { return data + stride * r; }
    T& operator()(int r, int c) const { return row(r)[c]; }
};

/// What tells which positions of a matrix exist.
struct Extent {
    std::int64_t stride;  ///< columns
    std::int64_t length;  ///< elements stored
};

template <typename T>
Extent extentOf(const MatrixT<T>& matrix) {
    return {matrix.cols, static_cast<std::int64_t>(matrix.data.size())};
}

/// Whether rows x cols elements starting at (0, 0) lie within the storage.
inline bool covers(const Extent& extent, std::int64_t rows, std::int64_t cols) {
    if (rows < 0 || cols < 0 || extent.stride < 0) return false;
    if (rows == 0 || cols == 0) return true;
    return extent.stride * (rows - 1) + (cols - 1) < extent.length;
}

template <typename T>
bool covers(const MatrixT<T>& matrix, std::int64_t rows, std::int64_t cols) {
    return covers(extentOf(matrix), rows, cols);
}

/// What an operation throws that would leave the storage of a model's tables.
[[noreturn]] inline void throwTableTooSmall() {
    throw std::out_of_range("a table of the model is smaller than its sizes");
}

/// The part of a model's table that an operation is about to use. A damaged file can have made the
/// table smaller than the model's counts say: std::out_of_range then.
template <typename T>
Table<const T> table(const MatrixT<T>& matrix, std::int64_t rows, std::int64_t cols) {
    if (!covers(matrix, rows, cols)) throwTableTooSmall();
    return {matrix.data.data(), static_cast<int>(rows), static_cast<int>(cols), matrix.cols};
}

template <typename T>
Table<T> table(MatrixT<T>& matrix, std::int64_t rows, std::int64_t cols) {
    if (!covers(matrix, rows, cols)) throwTableTooSmall();
    return {matrix.data.data(), static_cast<int>(rows), static_cast<int>(cols), matrix.cols};
}

/// The same for a matrix that the caller of the library gave, whose shape is the caller's duty.
template <typename T>
Table<const T> givenTable(const MatrixT<T>& matrix, int rows, int cols) {
    assert(covers(matrix, rows, cols));
    return {matrix.data.data(), rows, cols, matrix.cols};
}

/// The first `count` elements of a model's vector; std::out_of_range where it has fewer.
inline const double* leading(const std::vector<double>& values, std::int64_t count) {
    if (count < 0 || count > static_cast<std::int64_t>(values.size())) throwTableTooSmall();
    return values.data();
}

/// A rows x cols matrix of zeros; std::bad_alloc where its positions do not fit 32 bits.
inline MatrixT<double> zeros(int rows, int cols) {
    const std::int64_t count = static_cast<std::int64_t>(rows) * cols;
    if (count > std::numeric_limits<std::int32_t>::max()) throw std::bad_alloc();
    return {rows, cols};
}

}  // namespace Vesk::Math::internal

#endif
