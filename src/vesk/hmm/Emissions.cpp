#include <vesk/hmm/internal/Emissions.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Vesk::ML::internal {
namespace {

/// A table of all symbols is worth its size while it is no longer than this many times a sequence.
constexpr std::int64_t mostSlotsEach = 8;

}  // namespace

Emissions::Emissions(Scratch& scratch, Vesk::Math::internal::Table<const double> b, int symbols,
                     std::int64_t length, int margin)
    : b(b),
      columns(scratch, static_cast<std::size_t>(std::min<std::int64_t>(symbols, length)), b.rows,
              margin) {
    if (symbols <= mostSlotsEach * (length + 8)) slots = scratch.filled(1, symbols, -1);
}

void Emissions::add(const int* o, int T) {
    for (int t = 0; t < T; ++t) {
        if (!isNew(o[t])) continue;
        double* column = columns[used++];
        const double* from = b.data + o[t];
        double odd = 0.0;
        for (int i = 0; i < b.rows; ++i, from += b.stride) {
            column[i] = *from;
            odd += *from - *from;
        }
        allFinite = allFinite && odd == 0.0;
    }
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
