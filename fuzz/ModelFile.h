#ifndef VESK_FUZZ_MODELFILE_H
#define VESK_FUZZ_MODELFILE_H

#include "Bounds.h"
#include "MemoryFile.h"
#include "Target.h"

#include <memory>
#include <new>
#include <string>

namespace Vesk::Fuzz {

/// Any bytes as the file of one model, which `load(path)` makes: refused where docs/formats.md says
/// so and nowhere else, read as the literal reader does (`same(model)`), and then used.
template <typename Load, typename Same, typename Use>
void takeModelFile(const std::string& text, const Bounds& bounds, Load load, Same same, Use use) {
    const MemoryFile file(text);
    auto model = decltype(load(""))();
    try {
        model = load(file.path().c_str());
    } catch (const std::bad_alloc&) {
        expect(bounds.exceeded(), "only what is too large is refused");
        return;
    }
    expect(!bounds.exceeded(), "what is too large is refused");
    expect(model != nullptr, "a file that can be opened gives a model");
    if (bounds.small()) expect(same(*model), "read as the literal reader does");
    use(*model, bounds.small());
}

}  // namespace Vesk::Fuzz

#endif
