#include "Entry.h"

#include "Target.h"

#include <ctime>
#include <iostream>
#include <streambuf>
#include <string>

namespace {

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

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Mute mute;
    const std::clock_t start = std::clock();
    Vesk::Fuzz::take({reinterpret_cast<const char*>(data), size});
    Vesk::Fuzz::expect(std::clock() - start < 2 * CLOCKS_PER_SEC, "two seconds an input");
    return 0;
}
