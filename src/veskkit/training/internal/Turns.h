#ifndef VESK_VESKKIT_TRAINING_INTERNAL_TURNS_H
#define VESK_VESKKIT_TRAINING_INTERNAL_TURNS_H

#include <vesk/leftright/LeftRightHMM.h>

#include <vector>

namespace Vesk::Kit::internal {

enum class Turn { Forwards, Backwards };

/// Per symbol the one that a trace shows there when it is turned to the next direction of the
/// codebook (degrees), or to the one before; the same where that is more than 22 degrees away.
std::vector<int> turnedSymbols(const std::vector<double>& codebook, Turn turn);

/// The symbols with each replaced by what `table` has for it.
std::vector<int> replaced(std::vector<int> symbols, const std::vector<int>& table);

/// The model of traces that are turned by so many degrees: a direction of the codebook is as likely
/// as the one nearest to it before the turn, the first of two, and rows are normalised.
Vesk::ML::LeftRightHMM turned(Vesk::ML::LeftRightHMM model, const std::vector<double>& codebook,
                              double degrees);

}  // namespace Vesk::Kit::internal

#endif
