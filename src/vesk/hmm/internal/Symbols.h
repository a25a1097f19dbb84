#ifndef VESK_HMM_INTERNAL_SYMBOLS_H
#define VESK_HMM_INTERNAL_SYMBOLS_H

#include <vesk/hmm/internal/Scratch.h>

#include <cstdint>
#include <unordered_map>

namespace Vesk::ML::internal {

/// The symbols that occur in some sequences, numbered in the order in which they first do; or all
/// of a short alphabet, no longer than the sequences, each its own number.
class Symbols {
public:
    /// Of o[0..T-1], T >= 1.
    Symbols(Scratch& scratch, const int* o, int T);

    /// Of sequences still to be added, of symbols 0 .. alphabet-1, `length` symbols in all.
    Symbols(Scratch& scratch, std::int64_t alphabet, std::int64_t length);
    void add(const int* o, int T);

    int count() const { return used; }
    bool inOrder() const { return symbols == nullptr; }

    int at(int number) const { return inOrder() ? number : symbols[number]; }

    /// The number of a symbol that occurs.
    int numberOf(int symbol) const {
        return numbers == nullptr ? sparseNumbers.find(symbol)->second : numbers[symbol];
    }

private:
    bool isNew(int symbol);

    std::int64_t alphabet;
    int* symbols = nullptr;                      ///< by number; null: in order
    int* numbers = nullptr;                      ///< by symbol; -1: none
    std::unordered_map<int, int> sparseNumbers;  ///< instead, where few of many symbols occur
    int used = 0;
};

}  // namespace Vesk::ML::internal

#endif
