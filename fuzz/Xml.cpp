// Any bytes as an XML gesture log: traces or messages.

#include "Traces.h"

#include <veskkit/io/XmlReader.h>

#include <sstream>

using namespace Vesk::Fuzz;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream in(textOf(data, size));
    try {
        Vesk::Kit::XmlReader reader(in, "traces");
        readAll(reader, size);
    } catch (const Vesk::Kit::InputError&) {
        // no XML
    }
    return 0;
}
