#ifndef VESK_HMM_INTERNAL_COLUMNS_H
#define VESK_HMM_INTERNAL_COLUMNS_H

#include <vesk/hmm/internal/Scratch.h>
#include <vesk/kernels/internal/Kernels.h>

#include <cstddef>

namespace Vesk::ML::internal {

/// The next multiple of what the kernels take at once.
inline int padded(int count) {
    return (count + Vesk::Kernels::lanes - 1) / Vesk::Kernels::lanes * Vesk::Kernels::lanes;
}

/// Columns of N values, one a time step or symbol; padded, one after the other, with at least
/// `margin` zeros before the first and after the last. Kernels read so far into the neighbours, but
/// multiply what stands there by zero.
class Columns {
public:
    Columns(Scratch& scratch, std::size_t count, int N, int margin) : apart(padded(N)) {
        const auto ends = static_cast<std::size_t>(padded(margin));
        first = scratch.zeros(count * static_cast<std::size_t>(apart) + 2 * ends, 1) + ends;
    }

    double* operator[](int index) const { return first + apart * index; }

    /// From one column to the next.
    std::ptrdiff_t pitch() const { return apart; }

private:
    std::ptrdiff_t apart;
    double* first;
};

/// The sum of the values in order.
inline double orderedSum(const double* values, int count) {
    double sum = 0.0;
    for (int i = 0; i < count; ++i) sum += values[i];
    return sum;
}

}  // namespace Vesk::ML::internal

#endif
