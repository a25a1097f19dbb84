#ifndef VESK_FUZZ_BYTES_H
#define VESK_FUZZ_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace Vesk::Fuzz {

/// Values made of the fuzzer's bytes, one after the other; zeros once these are used up.
class Bytes {
public:
    explicit Bytes(const std::string& text) : source(text) {}

    std::uint8_t byte() {
        return next < source.size() ? static_cast<std::uint8_t>(source[next++]) : 0;
    }

    /// In low .. high, both included, at most 256 apart.
    int integer(int low, int high) { return low + byte() % (high - low + 1); }

    bool flag() { return (byte() & 1) != 0; }

    /// A parameter: most often a share, sometimes what no estimate would give, any bits at all.
    double parameter() {
        using limits = std::numeric_limits<double>;
        static constexpr double special[] = {0.0,
                                             -0.0,
                                             1.0,
                                             -0.5,
                                             1e-150,
                                             5e-310,
                                             1e150,
                                             limits::min(),
                                             limits::infinity(),
                                             limits::quiet_NaN()};
        constexpr int specials = sizeof special / sizeof special[0];
        const int chosen = byte();
        if (chosen < specials) return special[chosen];
        if (chosen == specials) return bits();
        return chosen / 255.0;
    }

    /// A parameter that a file can hold.
    double finiteParameter() {
        const double value = parameter();
        return value - value == 0.0 ? value : 0.25;
    }

    std::vector<double> parameters(std::size_t count) {
        std::vector<double> values(count);
        for (double& value : values) value = parameter();
        return values;
    }

    std::vector<int> symbols(int length, int M) {
        std::vector<int> values(static_cast<std::size_t>(length));
        for (int& value : values) value = integer(0, M - 1);
        return values;
    }

private:
    double bits() {
        std::uint64_t pattern = 0;
        for (int i = 0; i < 8; ++i) pattern = pattern << 8 | byte();
        double value = 0.0;
        std::memcpy(&value, &pattern, sizeof value);
        return value;
    }

    const std::string& source;
    std::size_t next = 0;
};

}  // namespace Vesk::Fuzz

#endif
