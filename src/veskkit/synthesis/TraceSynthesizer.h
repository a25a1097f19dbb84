#ifndef VESK_VESKKIT_SYNTHESIS_TRACESYNTHESIZER_H
#define VESK_VESKKIT_SYNTHESIS_TRACESYNTHESIZER_H

#include <veskkit/traces/Trace.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// Draws synthetic traces of a dozen gestures, for demonstrations and tests where nothing is
/// recorded.
///
/// Every user has habits of their own (size, slant, proportions, speed, tremor, how corners are
/// rounded, how each gesture is formed), and no two of a user's traces are the same. The pen slows
/// down in curves and corners and at both ends. Positions are in pixels of a screen, y growing
/// downwards, rounded to tenths.
///
/// A trace depends on the seed, the gesture, the user and the repetition alone: more users or
/// repetitions leave the others as they are. Only + - * / and sqrt are used, so a seed gives the
/// same bits on every machine. Const operations may be called from several threads.
class TraceSynthesizer {
public:
    static constexpr double mostUnsteadiness = 10.0;  ///< of the constructor

    /// `unsteadiness` scales tremor and the differences between repetitions: 0 draws every
    /// repetition with the user's habits alone, 1 is an ordinary hand. std::invalid_argument
    /// outside 0 to 10.
    explicit TraceSynthesizer(std::uint64_t seed, double unsteadiness = 1.0);

    /// The names of all gestures, in alphabetical order.
    static const std::vector<std::string>& gestures();

    /// The name of a user, of whom the first is 1: "u01", "u02", ...
    static std::string userName(int user);

    /// One trace of at least 8 points; `gesture` and `user` are set in it. Users and repetitions
    /// count from 1. std::invalid_argument for a gesture that is not known and for counts below 1.
    /// O(points).
    Trace draw(const std::string& gesture, int user, int repetition) const;

private:
    std::uint64_t seed;
    double unsteadiness;
};

}  // namespace Vesk::Kit

#endif
