// The library against the literal version, bit for bit: the first byte chooses the subject, the
// others are models, sequences and traces.

#include "Differential.h"

#include "Target.h"

using namespace Vesk::Fuzz;

void Vesk::Fuzz::take(const std::string& text) {
    Bytes bytes(text);
    switch (bytes.integer(0, 3)) {
        case 0: compareGeneral(bytes); break;
        case 1: compareLeftRight(bytes); break;
        case 2: compareRecognition(bytes); break;
        default: compareQuantizer(bytes); break;
    }
}
