#ifndef VESK_TESTS_UNIT_VESKKIT_READERS_H
#define VESK_TESTS_UNIT_VESKKIT_READERS_H

#include "Gestures.h"

#include <veskkit/Error.h>
#include <veskkit/traces/Trace.h>

#include <sstream>
#include <string>
#include <vector>

namespace Vesk::Test {

/// All traces of a text, which goes by the name "t".
template <typename Reader>
std::vector<Kit::Trace> tracesOf(const std::string& text) {
    std::istringstream in(text);
    Reader reader(in, "t");
    std::vector<Kit::Trace> traces;
    for (Kit::Trace trace; reader.next(trace);) traces.push_back(trace);
    return traces;
}

/// What the reader says of a text that it refuses.
template <typename Reader>
std::string refusalOf(const std::string& text) {
    return textOf<Kit::InputError>([&] { tracesOf<Reader>(text); });
}

}  // namespace Vesk::Test

#endif
