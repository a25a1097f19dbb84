#ifndef VESK_HMM_INTERNAL_EMISSIONS_H
#define VESK_HMM_INTERNAL_EMISSIONS_H

#include <vesk/hmm/internal/Columns.h>
#include <vesk/math/internal/Table.h>

#include <cstdint>
#include <unordered_map>

namespace Vesk::ML::internal {

/// A model's emissions by symbol: columns of b, laid out for the kernels, of the symbols that
/// occur.
class Emissions {
public:
    /// Borrows b. To be used for symbols 0 .. alphabet-1 of sequences that have `length` symbols in
    /// all.
    Emissions(Scratch& scratch, Vesk::Math::internal::Table<const double> b, int alphabet,
              std::int64_t length, int margin);

    /// Makes room for the symbols o[0..T-1].
    void add(const int* o, int T);

    /// e[i] = b(i, symbol), of a symbol that was added.
    const double* operator[](int symbol) const {
        return columns[slots == nullptr ? sparseSlots.find(symbol)->second : slots[symbol]];
    }

    /// Replaces the values of the symbols added by their natural logarithms.
    void takeLogarithms();

    /// Whether all values of the symbols added are.
    bool finite() const { return allFinite; }

private:
    bool isNew(int symbol);

    Vesk::Math::internal::Table<const double> b;
    Columns columns;
    int* symbols;                              ///< which symbol each column is of
    int* slots = nullptr;                      ///< the column of each symbol; -1: none
    std::unordered_map<int, int> sparseSlots;  ///< instead, where few of many symbols occur
    int used = 0;
    bool allFinite = true;
};

}  // namespace Vesk::ML::internal

#endif
