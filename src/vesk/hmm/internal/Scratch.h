#ifndef VESK_HMM_INTERNAL_SCRATCH_H
#define VESK_HMM_INTERNAL_SCRATCH_H

#include <vesk/kernels/internal/Kernels.h>

#include <algorithm>
#include <cstddef>
#include <memory_resource>

namespace Vesk::ML::internal {

/// The tables of one operation: all given back together, small ones without an allocation.
class Scratch {
public:
    Scratch() = default;
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    /// rows x cols copies of a value, aligned for the kernels.
    template <typename T>
    T* filled(std::size_t rows, int cols, T value) {
        const std::size_t count = rows * static_cast<std::size_t>(cols);
        auto* values = static_cast<T*>(resource.allocate(count * sizeof(T), alignment));
        std::fill_n(values, count, value);
        return values;
    }
    double* zeros(std::size_t rows, int cols) { return filled(rows, cols, 0.0); }

private:
    static constexpr std::size_t alignment = Vesk::Kernels::lanes * sizeof(double);
    /// Enough for a pass over a gesture model of 16 states and symbols.
    static constexpr std::size_t roomSize = 8192;

    alignas(alignment) std::byte room[roomSize];
    std::pmr::monotonic_buffer_resource resource{room, roomSize};
};

}  // namespace Vesk::ML::internal

#endif
