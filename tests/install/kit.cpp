// A host outside the project that uses the kit.

#include <vesk/Version.h>
#include <veskkit/traces/Resampler.h>

#include <iostream>
#include <stdexcept>
#include <string>

int main(int argc, char** argv) {
    Vesk::Kit::Preparation preparation;
    preparation.points = 3;
    preparation.bearings = 1;
    const Vesk::Kit::Resampler resampler(preparation);
    const Vesk::Kit::Points line{{0.0, 0.0}, {8.0, 0.0}};
    const Vesk::Kit::Points expected{{0.0, 0.0}, {4.0, 0.0}, {8.0, 0.0}, {12.0, 0.0}};
    if (resampler.resample(line) != expected) {
        std::cerr << "three positions along a line and the bearing of its end expected\n";
        return 1;
    }

    preparation.points = 1;
    try {
        const Vesk::Kit::Resampler refused(preparation);
        std::cerr << "one position cannot show a direction\n";
        return 1;
    } catch (const std::runtime_error&) {
    }
    return argc < 2 || std::string(argv[1]) == VESK_VERSION ? 0 : 1;
}
