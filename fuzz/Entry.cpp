#include "Entry.h"

#include "Target.h"

#include <support/Silence.h>

#include <ctime>
#include <string>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Vesk::Test::Silence silence;
    const std::clock_t start = std::clock();
    Vesk::Fuzz::take({reinterpret_cast<const char*>(data), size});
    Vesk::Fuzz::expect(std::clock() - start < 2 * CLOCKS_PER_SEC, "two seconds an input");
    return 0;
}
