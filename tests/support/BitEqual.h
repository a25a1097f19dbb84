#ifndef VESK_TESTS_SUPPORT_BITEQUAL_H
#define VESK_TESTS_SUPPORT_BITEQUAL_H

#include <vesk/math/MatrixT.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

namespace Vesk::Test {

/// The same bits; any NaN equals any NaN, 0.0 and -0.0 differ.
inline bool sameBits(double x, double y) {
    if (std::isnan(x) || std::isnan(y)) return std::isnan(x) && std::isnan(y);
    std::uint64_t bitsX = 0;
    std::uint64_t bitsY = 0;
    std::memcpy(&bitsX, &x, sizeof x);
    std::memcpy(&bitsY, &y, sizeof y);
    return bitsX == bitsY;
}

inline testing::AssertionResult bitEqual(double expected, double actual) {
    if (sameBits(expected, actual)) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << std::hexfloat << "expected " << expected << ", got " << actual;
}

inline testing::AssertionResult bitEqual(const std::vector<double>& expected,
                                         const std::vector<double>& actual) {
    if (expected.size() != actual.size()) {
        return testing::AssertionFailure()
               << "expected " << expected.size() << " values, got " << actual.size();
    }
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (!sameBits(expected[i], actual[i])) {
            return testing::AssertionFailure() << std::hexfloat << "value " << i << ": expected "
                                               << expected[i] << ", got " << actual[i];
        }
    }
    return testing::AssertionSuccess();
}

inline testing::AssertionResult bitEqual(const Vesk::Math::MatrixT<double>& expected,
                                         const Vesk::Math::MatrixT<double>& actual) {
    if (expected.rows != actual.rows || expected.cols != actual.cols) {
        return testing::AssertionFailure() << "expected " << expected.rows << " x " << expected.cols
                                           << ", got " << actual.rows << " x " << actual.cols;
    }
    return bitEqual(expected.data, actual.data);
}

}  // namespace Vesk::Test

#endif
