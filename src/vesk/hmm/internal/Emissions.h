#ifndef VESK_HMM_INTERNAL_EMISSIONS_H
#define VESK_HMM_INTERNAL_EMISSIONS_H

#include <vesk/hmm/internal/Columns.h>
#include <vesk/hmm/internal/Symbols.h>
#include <vesk/math/internal/Table.h>

namespace Vesk::ML::internal {

/// A model's emissions by symbol: columns of b, laid out for the kernels, of all symbols that
/// occur.
class Emissions {
public:
    /// Borrows the symbols; b is copied.
    Emissions(Scratch& scratch, Vesk::Math::internal::Table<const double> b, const Symbols& symbols,
              int margin);

    /// e[i] = b(i, symbol), of a symbol that occurs.
    const double* operator[](int symbol) const { return columns[symbols.numberOf(symbol)]; }

    /// Replaces the values by their natural logarithms.
    void takeLogarithms();

private:
    const Symbols& symbols;
    Columns columns;
    int N;
};

}  // namespace Vesk::ML::internal

#endif
