#include "Differential.h"
#include "Target.h"

#include <support/BitEqual.h>
#include <support/QuantizerReference.h>
#include <vesk/quantizer/VectorQuantizer2D.h>

#include <vector>

namespace Vesk::Fuzz {

namespace Literal = Vesk::Test::Reference;

void compareQuantizer(Bytes& bytes) {
    std::vector<double> codebook;
    for (int n = bytes.integer(1, 16); n > 0; --n) {
        codebook.push_back(bytes.flag() ? bytes.parameter() : 360.0 * bytes.byte() / 256.0);
    }
    std::vector<std::vector<double>> trace;
    for (int n = bytes.integer(0, 24); n > 0; --n) {
        const double x = bytes.flag() ? bytes.parameter() : bytes.integer(-8, 8);
        const double y = bytes.flag() ? bytes.parameter() : bytes.integer(-8, 8);
        trace.push_back({x, y});
    }
    const auto threshold = static_cast<float>(bytes.integer(0, 8)) / 4.0F;
    const bool rotation = bytes.flag();

    Vesk::ML::VectorQuantizer2D quantizer;
    quantizer.setCodebook(codebook);
    Literal::Quantizer literal;
    Literal::setCodebook(literal, codebook);
    expect(Literal::classify(literal, trace, threshold, rotation) ==
               quantizer.quantize(trace, threshold, rotation),
           "symbols");
    expect(Vesk::Test::bitEqual(Literal::convertSequence(trace), quantizer.convertSequence(trace)),
           "angles");
}

}  // namespace Vesk::Fuzz
