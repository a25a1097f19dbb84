#ifndef VESK_HMM_INTERNAL_COLUMNS_H
#define VESK_HMM_INTERNAL_COLUMNS_H

#include <vesk/kernels/internal/Kernels.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

namespace Vesk::ML::internal {

/// The next multiple of what the kernels take at once.
inline int padded(int count) {
    return (count + Vesk::Kernels::lanes - 1) / Vesk::Kernels::lanes * Vesk::Kernels::lanes;
}

/// Zeros, aligned for the kernels.
class Values {
public:
    Values() = default;
    explicit Values(std::size_t count)
        : values(static_cast<double*>(::operator new(count * sizeof(double), alignment))) {
        std::memset(values.get(), 0, count * sizeof(double));
    }
    Values(std::size_t rows, int cols) : Values(rows * static_cast<std::size_t>(cols)) {}

    double* get() const { return values.get(); }

private:
    static constexpr std::align_val_t alignment{Vesk::Kernels::lanes * sizeof(double)};
    struct Delete {
        void operator()(double* p) const { ::operator delete(p, alignment); }
    };
    std::unique_ptr<double, Delete> values;
};

/// Columns of N values, one a time step or symbol; padded, with at least `margin` zeros on both
/// sides of each.
class Columns {
public:
    Columns() = default;
    Columns(std::size_t count, int N, int margin)
        : pitch(padded(N) + padded(margin)),
          values(static_cast<std::size_t>(pitch) * count +
                 static_cast<std::size_t>(padded(margin))),
          first(values.get() + padded(margin)) {}

    double* operator[](int index) const { return first + pitch * index; }

    std::ptrdiff_t pitch = 0;  ///< from one column to the next

private:
    Values values;
    double* first = nullptr;
};

}  // namespace Vesk::ML::internal

#endif
