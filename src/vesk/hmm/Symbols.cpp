#include <vesk/hmm/internal/Symbols.h>

#include <algorithm>
#include <cstddef>
#include <numeric>

namespace Vesk::ML::internal {
namespace {

/// A table of all symbols is worth its size while it is no longer than this many times a sequence.
constexpr std::int64_t mostNumbersEach = 8;

/// Longer ones are not laid out whole, lest few symbols of many occur.
constexpr std::int64_t shortAlphabet = 64;

/// As std::max_element would find it, but several at once.
int greatest(const int* o, int T) {
    int symbol = o[0];
    for (int t = 1; t < T; ++t) symbol = std::max(symbol, o[t]);
    return symbol;
}

}  // namespace

Symbols::Symbols(Scratch& scratch, const int* o, int T)
    : Symbols(scratch, std::int64_t{greatest(o, T)} + 1, T) {
    add(o, T);
}

Symbols::Symbols(Scratch& scratch, std::int64_t size, std::int64_t length) : alphabet(size) {
    if (alphabet <= std::min(length, shortAlphabet)) {
        used = static_cast<int>(alphabet);
        numbers = scratch.filled(static_cast<std::size_t>(alphabet), 1, 0);
        std::iota(numbers, numbers + alphabet, 0);
        return;
    }
    symbols = scratch.filled(static_cast<std::size_t>(length), 1, 0);
    if (alphabet > mostNumbersEach * (length + 8)) return;
    numbers = scratch.filled(static_cast<std::size_t>(alphabet), 1, -1);
}

void Symbols::add(const int* o, int T) {
    for (int t = 0; t < T && used < alphabet; ++t) {
        if (isNew(o[t])) symbols[used++] = o[t];
    }
}

/// Whether the symbol had no number yet; it then gets the next one.
bool Symbols::isNew(int symbol) {
    if (numbers == nullptr) return sparseNumbers.try_emplace(symbol, used).second;
    int& number = numbers[symbol];
    if (number >= 0) return false;
    number = used;
    return true;
}

}  // namespace Vesk::ML::internal
