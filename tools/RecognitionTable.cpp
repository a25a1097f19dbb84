#include "RecognitionTable.h"

#include "Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace Vesk::Tool {

namespace {

constexpr double impossible = -std::numeric_limits<double>::infinity();

}  // namespace

void RecognitionTable::add(const std::string& expected, const Kit::Result& result) {
    Row& row = rows[expected];
    ++row.traces;
    if (!result.recognized()) {
        ++row.rejected;
    } else if (result.gesture == expected) {
        ++row.correct;
    } else {
        ++row.wrong;
    }
    const bool possible =
        !result.scores.empty() && result.scores.front().logProbability > impossible;
    if (possible && result.scores.front().gesture == expected) ++row.likeliest;
}

std::string RecognitionTable::text() const {
    std::size_t width = 8;
    for (const auto& [gesture, row] : rows) width = std::max(width, gesture.size());

    std::string text = fmt::format("{:<{}} {:>8} {:>8} {:>8} {:>8} {:>9}\n", "gesture", width,
                                   "traces", "correct", "wrong", "rejected", "arg-max");
    Row all;
    const auto append = [&](const std::string& title, const Row& row) {
        text += fmt::format("{:<{}} {:>8} {:>8} {:>8} {:>8} {:>9}\n", printable(title), width,
                            row.traces, row.correct, row.wrong, row.rejected, row.likeliest);
    };
    for (const auto& [gesture, row] : rows) {
        append(gesture, row);
        all.traces += row.traces;
        all.correct += row.correct;
        all.wrong += row.wrong;
        all.rejected += row.rejected;
        all.likeliest += row.likeliest;
    }
    append("in all", all);
    if (all.traces > 0) {
        const auto share = [&](std::size_t count) {
            return 100.0 * static_cast<double>(count) / static_cast<double>(all.traces);
        };
        text += fmt::format("{:<{}} {:>8} {:>7.2f}% {:>7.2f}% {:>7.2f}% {:>8.2f}%\n", "", width, "",
                            share(all.correct), share(all.wrong), share(all.rejected),
                            share(all.likeliest));
    }
    return text;
}

}  // namespace Vesk::Tool
