// Any bytes as a table: traces or messages, and what was read is written and read back.

#include "Traces.h"

#include <veskkit/io/CsvReader.h>
#include <veskkit/io/TraceText.h>

#include <sstream>

using namespace Vesk::Fuzz;

void Vesk::Fuzz::take(const std::string& text) {
    std::istringstream in(text);
    Vesk::Kit::CsvReader reader(in, "traces");
    for (const Vesk::Kit::Trace& trace : readAll(reader, text.size())) {
        std::string rows;
        try {
            rows = Vesk::Kit::tableRows(trace, 1);
        } catch (const Vesk::Kit::InputError&) {
            continue;  // a carriage return in a label
        }
        std::istringstream table(Vesk::Kit::tableHeader() + rows);
        Vesk::Kit::CsvReader again(table, "again");
        const auto traces = readAll(again, table.str().size());
        expect(traces.size() == 1 && same(trace, traces[0], true), "rows come back");
    }
}
