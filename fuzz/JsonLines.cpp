// Any bytes as lines of JSON: traces or messages, and what was read is written and read back.

#include "Traces.h"

#include <veskkit/io/JsonLinesReader.h>
#include <veskkit/io/TraceText.h>

#include <sstream>

using namespace Vesk::Fuzz;

void Vesk::Fuzz::take(const std::string& text) {
    std::istringstream in(text);
    Vesk::Kit::JsonLinesReader reader(in, "traces");
    for (const Vesk::Kit::Trace& trace : readAll(reader, text.size())) {
        std::istringstream line(Vesk::Kit::jsonLine(trace));
        Vesk::Kit::JsonLinesReader again(line, "again");
        const auto traces = readAll(again, line.str().size());
        expect(traces.size() == 1 && same(trace, traces[0], false), "a line comes back");
    }
}
