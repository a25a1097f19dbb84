#ifndef VESK_FUZZ_BOUNDS_H
#define VESK_FUZZ_BOUNDS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace Vesk::Fuzz {

/// What docs/formats.md lets a file declare, added up literally.
class Bounds {
public:
    explicit Bounds(std::size_t bytes)
        : tableLimit(std::max(std::uint64_t{1} << 20, std::uint64_t{bytes})),
          totalLimit(std::max(std::uint64_t{1} << 24, 4 * std::uint64_t{bytes})) {}

    /// `copies` tables of rows x cols values, both below 2^32.
    void table(std::uint64_t rows, std::uint64_t cols, std::uint64_t copies = 1) {
        const std::uint64_t values = rows * cols;
        refused = refused || values > tableLimit || values > 0x7FFFFFFF;
        if (!refused) total += values * copies;
        refused = refused || total > totalLimit;
    }

    bool exceeded() const { return refused; }

    /// Whether a literal reader would be done in no time.
    bool small() const { return total <= std::uint64_t{1} << 14; }

private:
    std::uint64_t tableLimit;
    std::uint64_t totalLimit;
    std::uint64_t total = 0;
    bool refused = false;
};

}  // namespace Vesk::Fuzz

#endif
