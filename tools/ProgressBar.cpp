#include "ProgressBar.h"

#include "Interruption.h"
#include "StandardStreams.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace Vesk::Tool {

namespace {

constexpr std::size_t width = 30;

bool colourWanted() {
    const char* refused = std::getenv("NO_COLOR");
    return refused == nullptr || *refused == '\0';
}

void redraw(const std::string& line) {
    // Back to the line's start; what is left of a longer line is erased.
    std::fprintf(stderr, "\r%s\033[K", line.c_str());
    std::fflush(stderr);
}

}  // namespace

ProgressBar::ProgressBar(std::string title_)
    : title(std::move(title_)), visible(canRedraw()), coloured(colourWanted()) {}

ProgressBar::~ProgressBar() {
    if (shown.empty()) return;
    redraw("");
    setLineUnfinished(false);
}

void ProgressBar::show(std::size_t done, std::size_t total) {
    if (!visible || total == 0) return;
    const std::size_t filled = width * std::min(done, total) / total;
    const std::string bar(filled, '#');
    const std::string rest(width - filled, '.');
    const std::string line =
        fmt::format("{} {}{}{}{} {:3} %", title, coloured ? "\033[36m" : "", bar,
                    coloured ? "\033[0m" : "", rest, 100 * std::min(done, total) / total);
    if (line == shown) return;
    shown = line;
    setLineUnfinished(true);
    redraw(line);
}

}  // namespace Vesk::Tool
