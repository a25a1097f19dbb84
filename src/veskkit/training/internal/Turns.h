#ifndef VESK_VESKKIT_TRAINING_INTERNAL_TURNS_H
#define VESK_VESKKIT_TRAINING_INTERNAL_TURNS_H

#include <vector>

namespace Vesk::Kit::internal {

enum class Turn { Forwards, Backwards };

/// Per symbol the one that a trace shows there when it is turned to the next direction of the
/// codebook (degrees), or to the one before; the same where that is more than 22 degrees away.
std::vector<int> turnedSymbols(const std::vector<double>& codebook, Turn turn);

/// The symbols with each replaced by what `table` has for it.
std::vector<int> replaced(std::vector<int> symbols, const std::vector<int>& table);

}  // namespace Vesk::Kit::internal

#endif
