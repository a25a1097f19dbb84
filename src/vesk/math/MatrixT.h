#ifndef VESK_MATH_MATRIXT_H
#define VESK_MATH_MATRIXT_H

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

namespace Vesk::Math {

/// Storage and resizing of a dense two-dimensional array.
///
/// Row-major: element (r, c) lives at flat position `cols * r + c`. After every resize and
/// assignment `data` holds `rows * cols` elements.
template <typename T>
class MatrixDynamicAccessor {
public:
    std::vector<T> data;  ///< all elements, row after row
    int rows = 0;         ///< number of rows
    int cols = 0;         ///< number of columns

    /// Changes the shape to r x c; elements keep their flat positions.
    ///
    /// Nothing happens where the shape is already r x c. Otherwise the storage is extended at its
    /// end with T() or cut at its end, so after a change of `cols` old values stand at other
    /// (row, column) places: fill the matrix afterwards. The product r * c is taken in 32 bits,
    /// wrapping around; std::bad_alloc where it is negative or memory runs out, and the matrix is
    /// then unchanged. O(r * c) at most.
    void resize(int r, int c) {
        if (rows == r && cols == c) return;
        data.resize(elementCount(r, c));
        rows = r;
        cols = c;
    }

protected:
    /// The length of an r x c storage: the 32-bit product. Throws std::bad_alloc below zero.
    static std::size_t elementCount(int r, int c) {
        const auto count = static_cast<std::int32_t>(static_cast<std::uint32_t>(r) *
                                                     static_cast<std::uint32_t>(c));
        if (count < 0) throw std::bad_alloc();
        return static_cast<std::size_t>(count);
    }
};

/// A dense two-dimensional array: `a` is N x N, `b` N x M, forward and backward tables N x T.
///
/// A copy duplicates the whole array (no sharing), a move leaves the source 0 x 0. Element access
/// is unchecked. Not synchronised: one thread writes or many read.
template <typename T>
class MatrixT : public MatrixDynamicAccessor<T> {
public:
    /// 0 x 0.
    MatrixT() = default;
    MatrixT(const MatrixT& other) = default;
    /// Takes shape and values over and leaves `other` 0 x 0. O(1).
    MatrixT(MatrixT&& other) noexcept { swap(other); }
    ~MatrixT() = default;

    /// r x c elements of T(); std::bad_alloc as `resize`.
    MatrixT(int r, int c) { this->resize(r, c); }

    /// Takes other's shape and values, reusing storage where it suffices. O(rows * cols).
    MatrixT& operator=(const MatrixT& other) {
        if (this == &other) return *this;
        const bool sameShape = this->rows == other.rows && this->cols == other.cols;
        // Values follow at once, so storage of the right length need not be resized first.
        if (!sameShape && other.data.size() != this->elementCount(other.rows, other.cols)) {
            this->resize(other.rows, other.cols);
        }
        this->data = other.data;
        this->rows = other.rows;
        this->cols = other.cols;
        return *this;
    }

    /// Takes shape and values over and leaves `other` 0 x 0. O(1).
    MatrixT& operator=(MatrixT&& other) noexcept {
        MatrixT taken(std::move(other));
        swap(taken);
        return *this;
    }

    /// Exchanges shapes and values. O(1).
    void swap(MatrixT& other) noexcept {
        this->data.swap(other.data);
        std::swap(this->rows, other.rows);
        std::swap(this->cols, other.cols);
    }

    /// Element (r, c), both zero-based; undefined outside the storage (asserted in debug
    /// builds).
    T& operator()(int r, int c) { return this->data[position(r, c)]; }
    /// The same for reading.
    const T& operator()(int r, int c) const { return this->data[position(r, c)]; }

private:
    std::size_t position(int r, int c) const {
        const auto at = static_cast<std::size_t>(this->cols * r + c);
        assert(at < this->data.size());
        return at;
    }
};

}  // namespace Vesk::Math

#endif
