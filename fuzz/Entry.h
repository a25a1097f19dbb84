#ifndef VESK_FUZZ_ENTRY_H
#define VESK_FUZZ_ENTRY_H

#include <cstddef>
#include <cstdint>

/// What libFuzzer calls: one target's `take` on the bytes. Always 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

#endif
