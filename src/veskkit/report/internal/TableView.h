#ifndef VESK_VESKKIT_REPORT_INTERNAL_TABLEVIEW_H
#define VESK_VESKKIT_REPORT_INTERNAL_TABLEVIEW_H

#include <vesk/math/MatrixT.h>

#include <algorithm>
#include <cstddef>
#include <limits>

namespace Vesk::Kit::internal {

/// A table whose storage may be smaller than its counts promise.
struct TableView {
    explicit TableView(const Vesk::Math::MatrixT<double>& table)
        : values(table), rows(std::max(table.rows, 0)), cols(std::max(table.cols, 0)) {}

    /// NaN outside the storage.
    double operator()(int r, int c) const {
        const std::size_t place = static_cast<std::size_t>(cols) * static_cast<std::size_t>(r) +
                                  static_cast<std::size_t>(c);
        return place < values.data.size() ? values.data[place]
                                          : std::numeric_limits<double>::quiet_NaN();
    }

    const Vesk::Math::MatrixT<double>& values;
    int rows;
    int cols;
};

}  // namespace Vesk::Kit::internal

#endif
