#ifndef VESK_FUZZ_DIFFERENTIAL_H
#define VESK_FUZZ_DIFFERENTIAL_H

#include "Bytes.h"

namespace Vesk::Fuzz {

// Each makes a model and symbols of the bytes, and compares the library with the literal version in
// tests/support, bit for bit.

void compareGeneral(Bytes& bytes);
void compareLeftRight(Bytes& bytes);
void compareRecognition(Bytes& bytes);
void compareQuantizer(Bytes& bytes);

}  // namespace Vesk::Fuzz

#endif
