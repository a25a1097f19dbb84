#ifndef VESK_FUZZ_TARGET_H
#define VESK_FUZZ_TARGET_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <string>

namespace Vesk::Fuzz {

/// What every target defines: takes any bytes, and ends the process where the library does not
/// keep what it promises. Standard output is mute, and two seconds of processor time have to do.
void take(const std::string& text);

/// Ends the process, with the reason on standard error, unless the result is a success.
inline void expect(const testing::AssertionResult& result, const char* promise) {
    if (result) return;
    std::cerr << "broken promise: " << promise << ": " << result.message() << std::endl;
    std::abort();
}

inline void expect(bool holds, const char* promise) {
    expect(testing::AssertionResult(holds), promise);
}

}  // namespace Vesk::Fuzz

#endif
