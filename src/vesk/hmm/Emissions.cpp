#include <vesk/hmm/internal/Emissions.h>

#include <cmath>
#include <cstddef>

namespace Vesk::ML::internal {

Emissions::Emissions(Scratch& scratch, Vesk::Math::internal::Table<const double> b,
                     const Symbols& symbols, int margin)
    : symbols(symbols),
      columns(scratch, static_cast<std::size_t>(symbols.count()), b.rows, margin),
      N(b.rows) {
    const std::ptrdiff_t pitch = columns[1] - columns[0];
    for (int i = 0; i < N; ++i) {
        const double* row = b.row(i);
        double* to = columns[0] + i;
        for (int k = 0; k < symbols.count(); ++k, to += pitch) *to = row[symbols.at(k)];
    }
}

void Emissions::takeLogarithms() {
    for (int k = 0; k < symbols.count(); ++k) {
        double* column = columns[k];
        for (int i = 0; i < N; ++i) column[i] = std::log(column[i]);
    }
}

}  // namespace Vesk::ML::internal
