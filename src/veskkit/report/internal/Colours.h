#ifndef VESK_VESKKIT_REPORT_INTERNAL_COLOURS_H
#define VESK_VESKKIT_REPORT_INTERNAL_COLOURS_H

#include <cstddef>
#include <string>

namespace Vesk::Kit::internal {

// Each is a CSS colour that follows the page's light or dark.

/// State i of N on a scale of even steps in lightness and hue: ordered for every kind of sight,
/// and three times as light or dark as the page at both ends.
std::string stateColour(int i, int N);

/// The k-th of several things without an order, and how it is dashed, since colour is not enough.
std::string seriesColour(std::size_t k);
std::string seriesDashes(std::size_t k);

/// What amounts are drawn in, by opacity, and the text on an opaque one.
std::string amountColour();
std::string onAmountColour();

/// What is wrong.
std::string errorColour();

/// The number of colours that stateColour has.
inline constexpr int stateColours = 12;

}  // namespace Vesk::Kit::internal

#endif
