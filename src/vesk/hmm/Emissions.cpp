#include <vesk/hmm/internal/Emissions.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Vesk::ML::internal {
namespace {

/// A table of all symbols is worth its size while it is no longer than this many times a sequence.
constexpr std::int64_t mostSlotsEach = 8;

}  // namespace

Emissions::Emissions(Scratch& scratch, Vesk::Math::internal::Table<const double> b, int alphabet,
                     std::int64_t length, int margin)
    : b(b),
      columns(scratch, static_cast<std::size_t>(std::min<std::int64_t>(alphabet, length)), b.rows,
              margin),
      symbols(scratch.filled(static_cast<std::size_t>(std::min<std::int64_t>(alphabet, length)), 1,
                             0)) {
    if (alphabet <= mostSlotsEach * (length + 8)) slots = scratch.filled(1, alphabet, -1);
}

void Emissions::add(const int* o, int T) {
    const int before = used;
    for (int t = 0; t < T; ++t) {
        if (isNew(o[t])) symbols[used++] = o[t];
    }
    if (used == before) return;
    const std::ptrdiff_t pitch = columns[1] - columns[0];
    bool finite = true;
    for (int i = 0; i < b.rows; ++i) {
        const double* row = b.row(i);
        double* to = columns[before] + i;
        for (int k = before; k < used; ++k, to += pitch) {
            const double value = row[symbols[k]];
            *to = value;
            finite &= std::isfinite(value);
        }
    }
    allFinite = allFinite && finite;
}

void Emissions::takeLogarithms() {
    for (int k = 0; k < used; ++k) {
        for (int i = 0; i < b.rows; ++i) columns[k][i] = std::log(columns[k][i]);
    }
}

/// Whether the symbol had no column yet; it then gets the next one.
bool Emissions::isNew(int symbol) {
    if (slots == nullptr) return sparseSlots.try_emplace(symbol, used).second;
    int& slot = slots[symbol];
    if (slot >= 0) return false;
    slot = used;
    return true;
}

}  // namespace Vesk::ML::internal
