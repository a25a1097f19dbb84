#ifndef VESK_FUZZ_TARGET_H
#define VESK_FUZZ_TARGET_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

/// What every target defines: takes any bytes, and ends the process where the library does not
/// keep what it promises. Always 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace Vesk::Fuzz {

inline std::string textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

/// Ends the process, with the reason on standard error, unless the result is a success.
inline void expect(const testing::AssertionResult& result, const char* promise) {
    if (result) return;
    std::cerr << "broken promise: " << promise << ": " << result.message() << std::endl;
    std::abort();
}

inline void expect(bool holds, const char* promise) {
    expect(testing::AssertionResult(holds), promise);
}

/// Standard output swallows everything while this lives.
class Mute {
public:
    Mute() : previous(std::cout.rdbuf(nullptr)) {}
    ~Mute() { std::cout.rdbuf(previous); }
    Mute(const Mute&) = delete;
    Mute& operator=(const Mute&) = delete;

private:
    std::streambuf* previous;
};

}  // namespace Vesk::Fuzz

#endif
