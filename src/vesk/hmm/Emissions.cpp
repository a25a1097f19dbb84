#include <vesk/hmm/internal/Emissions.h>

#include <cmath>
#include <cstddef>

namespace Vesk::ML::internal {

Emissions::Emissions(Scratch& scratch, Vesk::Math::internal::Table<const double> b,
                     const Symbols& occurring, int margin)
    : symbols(occurring),
      columns(scratch, static_cast<std::size_t>(symbols.count()), b.rows, margin),
      N(b.rows) {
    if (N == 0) return;  // a pass that reads none was given none
    const Vesk::Kernels::Set& kernels = Vesk::Kernels::kernels();
    if (symbols.inOrder()) {
        kernels.transposeTable(b.data, b.stride, N, symbols.count(), columns[0], columns.pitch());
        return;
    }
    for (int k = 0; k < symbols.count(); ++k) {
        kernels.gather(b.data + symbols.at(k), b.stride, N, columns[k]);
    }
}

void Emissions::takeLogarithms() {
    for (int k = 0; k < symbols.count(); ++k) {
        double* column = columns[k];
        for (int i = 0; i < N; ++i) column[i] = std::log(column[i]);
    }
}

}  // namespace Vesk::ML::internal
