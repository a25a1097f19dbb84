// The library against the literal version, bit for bit: the first byte chooses the subject, the
// others are models, sequences and traces.

#include "Differential.h"

#include "Target.h"

using namespace Vesk::Fuzz;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Mute mute;
    Bytes bytes(data, size);
    switch (bytes.integer(0, 3)) {
        case 0: compareGeneral(bytes); break;
        case 1: compareLeftRight(bytes); break;
        case 2: compareRecognition(bytes); break;
        default: compareQuantizer(bytes); break;
    }
    return 0;
}
