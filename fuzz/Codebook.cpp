// Any bytes as a codebook file: the literal reader's codebook, and a quantiser that works with it.

#include "MemoryFile.h"
#include "Target.h"

#include <support/BitEqual.h>
#include <support/QuantizerReference.h>
#include <vesk/quantizer/VectorQuantizer2D.h>

#include <string>

using namespace Vesk::Fuzz;

void Vesk::Fuzz::take(const std::string& text) {
    const MemoryFile file(text);
    Vesk::ML::VectorQuantizer2D quantizer;
    expect(quantizer.loadCodebook(file.path().c_str()), "a file that can be opened is read");
    Vesk::Test::Reference::Quantizer literal;
    Vesk::Test::Reference::loadCodebook(literal, file.path());
    expect(Vesk::Test::bitEqual(literal.codebook, quantizer.codebook),
           "read as the literal reader does");
    expect(quantizer.codebookReady, "ready once read");
    expect(quantizer.codebookSize == static_cast<int>(quantizer.codebook.size()), "size kept");

    const std::vector<std::vector<double>> trace{{0, 0}, {1, 0}, {1, 1}, {0, 1}, {-3, -7}};
    for (const int symbol : quantizer.quantize(trace, 0.5F, false)) {
        expect(symbol >= 0 && symbol < quantizer.codebookSize, "symbols of the codebook");
    }
    expect(quantizer.save("/dev/null"), "every codebook can be written");
}
