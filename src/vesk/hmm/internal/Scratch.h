#ifndef VESK_HMM_INTERNAL_SCRATCH_H
#define VESK_HMM_INTERNAL_SCRATCH_H

#include <vesk/kernels/internal/Kernels.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace Vesk::ML::internal {

/// The tables of one operation: all given back together, small ones without an allocation.
class Scratch {
public:
    Scratch() = default;
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    /// rows x cols copies of a value, aligned for the kernels. std::bad_alloc for a number of
    /// columns below zero, as for all that no memory can hold.
    template <typename T>
    T* filled(std::size_t rows, int cols, T value) {
        constexpr std::size_t most = std::numeric_limits<std::size_t>::max() / sizeof(T) / 2;
        const auto width = static_cast<std::size_t>(cols);
        if (cols < 0 || (cols > 0 && rows > most / width)) throw std::bad_alloc();
        const std::size_t count = rows * width;
        auto* values = static_cast<T*>(allocate(count * sizeof(T)));
        std::uninitialized_fill_n(values, count, value);
        return values;
    }
    double* zeros(std::size_t rows, int cols) { return filled(rows, cols, 0.0); }

private:
    static constexpr std::size_t alignment = Vesk::Kernels::lanes * sizeof(double);
    /// Enough for a pass over a gesture model of 16 states and symbols.
    static constexpr std::size_t roomSize = 8192;
    /// A table of its own each, so that a step out of one is seen.
#ifdef __SANITIZE_ADDRESS__
    static constexpr bool sanitized = true;
#else
    static constexpr bool sanitized = false;
#endif

    void* allocate(std::size_t size) {
        if (void* place = std::align(alignment, size, next, left)) {
            next = static_cast<std::byte*>(place) + size;
            left -= size;
            return place;
        }
        std::size_t space = size + alignment;
        std::unique_ptr<std::byte[]> owned(new std::byte[space]);
        void* block = owned.get();
        blocks.push_back(std::move(owned));
        return std::align(alignment, size, block, space);
    }

    alignas(alignment) std::byte room[roomSize];
    void* next = room;
    std::size_t left = sanitized ? 0 : roomSize;
    std::vector<std::unique_ptr<std::byte[]>> blocks;
};

}  // namespace Vesk::ML::internal

#endif
