#ifndef VESK_TESTS_SUPPORT_RANDOM_H
#define VESK_TESTS_SUPPORT_RANDOM_H

#include <vesk/math/MatrixT.h>

#include <cstdint>
#include <limits>
#include <random>
#include <vector>

namespace Vesk::Test {

/// Seeded random values, the same on every standard library: a standard engine and our own
/// mapping from its bits.
class Random {
public:
    explicit Random(std::uint64_t seed) : engine(seed) {}

    /// In [0, 1).
    double unit() { return static_cast<double>(engine() >> 11) * 0x1p-53; }

    /// In low .. high, both included.
    int integer(int low, int high) {
        const auto span = static_cast<std::uint64_t>(static_cast<std::int64_t>(high) - low + 1);
        return static_cast<int>(low + static_cast<std::int64_t>(engine() % span));
    }

    bool chance(double probability) { return unit() < probability; }

    /// `length` symbols in 0 .. M-1.
    std::vector<int> symbols(int length, int M) {
        std::vector<int> result(static_cast<std::size_t>(length));
        for (int& symbol : result) symbol = integer(0, M - 1);
        return result;
    }

private:
    std::mt19937_64 engine;
};

/// What kind of numbers a random parameter table holds.
enum class Parameters {
    Stochastic,    ///< rows sum to 1 up to rounding
    Sparse,        ///< rows sum to 1, about half of the entries exactly 0
    Unnormalised,  ///< any size from 1e-3 to 1e3, some zeros
    Tiny,          ///< down to subnormal numbers: products underflow
    Odd  ///< zeros of both signs, infinities, NaN and negative numbers among ordinary ones
};

inline constexpr Parameters allParameterKinds[] = {Parameters::Stochastic, Parameters::Sparse,
                                                   Parameters::Unnormalised, Parameters::Tiny,
                                                   Parameters::Odd};

/// One row of `count` parameters of the kind.
inline std::vector<double> randomRow(Random& random, int count, Parameters kind) {
    std::vector<double> row(static_cast<std::size_t>(count));
    double sum = 0.0;
    for (double& value : row) {
        value = random.unit();
        switch (kind) {
            case Parameters::Stochastic: break;
            case Parameters::Sparse:
                if (random.chance(0.5)) value = 0.0;
                break;
            case Parameters::Unnormalised:
                value *= random.chance(0.5) ? 1e3 : 1e-3;
                if (random.chance(0.1)) value = 0.0;
                break;
            case Parameters::Tiny: value *= random.chance(0.5) ? 1e-150 : 5e-310; break;
            case Parameters::Odd:
                switch (random.integer(0, 11)) {
                    case 0: value = 0.0; break;
                    case 1: value = -0.0; break;
                    case 2: value = std::numeric_limits<double>::infinity(); break;
                    case 3: value = std::numeric_limits<double>::quiet_NaN(); break;
                    case 4: value = -value; break;
                    default: break;
                }
                break;
        }
        sum += value;
    }
    if (kind == Parameters::Stochastic || kind == Parameters::Sparse) {
        if (sum == 0.0 && count > 0) {
            row[0] = 1.0;
            sum = 1.0;
        }
        for (double& value : row) value /= sum;
    }
    return row;
}

/// rows x cols parameters of the kind.
inline Vesk::Math::MatrixT<double> randomMatrix(Random& random, int rows, int cols,
                                                Parameters kind) {
    Vesk::Math::MatrixT<double> matrix;
    matrix.resize(rows, cols);
    for (int r = 0; r < rows; ++r) {
        const std::vector<double> row = randomRow(random, cols, kind);
        for (int c = 0; c < cols; ++c) matrix(r, c) = row[static_cast<std::size_t>(c)];
    }
    return matrix;
}

}  // namespace Vesk::Test

#endif
