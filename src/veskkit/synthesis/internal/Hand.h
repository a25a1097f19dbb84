#ifndef VESK_VESKKIT_SYNTHESIS_INTERNAL_HAND_H
#define VESK_VESKKIT_SYNTHESIS_INTERNAL_HAND_H

#include <veskkit/synthesis/internal/Draws.h>

#include <cstdint>

namespace Vesk::Kit::internal {

/// The habits of one user, and of their pen.
struct Hand {
    double size;       ///< pixels of a box of 1 x 1
    double aspect;     ///< width over height
    double slant;      ///< sideways shift per height, as in italics
    double halfTurn;   ///< tan(angle / 2) of the whole gesture's tilt
    double pace;       ///< time for a gesture, 1 is ordinary
    double roundness;  ///< how often corners are smoothed over
    double tremor;     ///< pixels
    double waver;      ///< difference between repetitions, parts of the box
    double sampling;   ///< points per second
};

/// The habits of a user.
Hand handOf(std::uint64_t seed, int user);

/// The same hand on one occasion: a little larger, faster, more tilted.
Hand onOccasion(const Hand& hand, double unsteadiness, Draws& draws);

}  // namespace Vesk::Kit::internal

#endif
