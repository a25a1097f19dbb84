#include "TableText.h"

#include "Text.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace Vesk::Tool {

namespace {

/// Characters of UTF-8: bytes other than 10xxxxxx.
std::size_t charactersOf(const std::string& text) {
    const auto begins = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins));
}

std::string lineOf(const Kit::Table& table, const std::vector<std::string>& cells,
                   const std::vector<std::size_t>& widths) {
    std::string line;
    std::size_t last = 0;  // where the last column begins
    for (std::size_t c = 0; c < cells.size(); ++c) {
        const std::string room(widths[c] - charactersOf(cells[c]), ' ');
        const std::string cell = printable(cells[c]);
        last = line.size() + (c == 0 ? 0 : 2);
        line += (c == 0 ? "" : "  ") + (table.columns[c].number ? room + cell : cell + room);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    const bool words = !table.columns.empty() && !table.columns.back().number;
    return (words ? wrapped(line, last) : line) + '\n';
}

}  // namespace

std::string tableText(const Kit::Table& table) {
    std::vector<std::vector<std::string>> lines(1);
    for (const Kit::Table::Column& column : table.columns) lines[0].push_back(column.name);
    lines.insert(lines.end(), table.rows.begin(), table.rows.end());
    std::vector<std::size_t> widths(table.columns.size());
    for (const std::vector<std::string>& cells : lines) {
        for (std::size_t c = 0; c < cells.size(); ++c) {
            widths[c] = std::max(widths[c], charactersOf(cells[c]));
        }
    }
    std::string text;
    for (const std::vector<std::string>& cells : lines) text += lineOf(table, cells, widths);
    return text;
}

}  // namespace Vesk::Tool
