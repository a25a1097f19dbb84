// Any bytes as an XML gesture log: traces or messages.

#include "Traces.h"

#include <veskkit/io/XmlReader.h>

#include <sstream>

using namespace Vesk::Fuzz;

void Vesk::Fuzz::take(const std::string& text) {
    std::istringstream in(text);
    try {
        Vesk::Kit::XmlReader reader(in, "traces");
        readAll(reader, text.size());
    } catch (const Vesk::Kit::InputError&) {
        // no XML
    }
}
