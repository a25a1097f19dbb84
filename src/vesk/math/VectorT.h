#ifndef VESK_MATH_VECTORT_H
#define VESK_MATH_VECTORT_H

#include <utility>
#include <vector>

namespace Vesk::Math {

/// A dense one-dimensional array: a standard vector under the name that the model interfaces use.
///
/// Converts from and to `std::vector<T>` without any change of layout, so a model's
/// `std::vector<double>` can be handed to a `VectorT<double>` parameter and the other way round.
/// Element access is the vector's zero-based, unchecked `operator[]`. A copy duplicates the
/// elements; a move does not.
template <typename T>
class VectorT : public std::vector<T> {
public:
    using std::vector<T>::vector;

    VectorT() = default;
    /// A copy of the elements. O(n).
    VectorT(const std::vector<T>& other) : std::vector<T>(other) {}
    /// Takes the elements over. O(1).
    VectorT(std::vector<T>&& other) noexcept : std::vector<T>(std::move(other)) {}
};

}  // namespace Vesk::Math

#endif
