#ifndef VESK_VESKKIT_SYNTHESIS_INTERNAL_DRAWS_H
#define VESK_VESKKIT_SYNTHESIS_INTERNAL_DRAWS_H

#include <cstdint>
#include <initializer_list>
#include <random>

namespace Vesk::Kit::internal {

/// Random values from a standard engine with a mapping of our own, since the standard
/// distributions differ between libraries.
class Draws {
public:
    /// A stream of its own for every combination of keys.
    explicit Draws(std::initializer_list<std::uint64_t> keys) : engine(mix(keys)) {}

    /// In [0, 1).
    double unit() { return static_cast<double>(engine() >> 11) * 0x1p-53; }

    /// In [low, high).
    double between(double low, double high) { return low + (high - low) * unit(); }

    /// Nearly normal, mean 0, standard deviation 1, within 6: the sum of twelve uniform values
    /// has variance 12 / 12 and needs no logarithm (Irwin and Hall 1927).
    double normal() {
        double sum = 0.0;
        for (int i = 0; i < 12; ++i) sum += unit();
        return sum - 6.0;
    }

private:
    /// Folds the keys by the finaliser of splitmix64 (Steele, Lea and Flood 2014).
    static std::uint64_t mix(std::initializer_list<std::uint64_t> keys) {
        std::uint64_t state = 0;
        for (const std::uint64_t key : keys) {
            state += key + 0x9e3779b97f4a7c15U;
            state = (state ^ (state >> 30)) * 0xbf58476d1ce4e5b9U;
            state = (state ^ (state >> 27)) * 0x94d049bb133111ebU;
            state ^= state >> 31;
        }
        return state;
    }

    std::mt19937_64 engine;
};

}  // namespace Vesk::Kit::internal

#endif
