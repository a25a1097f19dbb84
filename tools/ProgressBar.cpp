#include "ProgressBar.h"

#include "Interruption.h"
#include "StandardStreams.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace Vesk::Tool {

namespace {

constexpr std::size_t width = 30;
constexpr double leastSeconds = 0.2;
constexpr std::chrono::milliseconds redrawAfter(50);

bool colourWanted() {
    const char* refused = std::getenv("NO_COLOR");
    return refused == nullptr || *refused == '\0';
}

void redraw(const std::string& line) {
    // Back to the line's start; what is left of a longer line is erased.
    static_cast<void>(std::fprintf(stderr, "\r%s\033[K", line.c_str()));
    static_cast<void>(std::fflush(stderr));
}

/// "0:07", "12:34", "3:00:00".
std::string duration(double seconds) {
    const auto whole = std::lround(seconds);
    const long hours = whole / 3600;
    const long minutes = whole / 60 % 60;
    return hours > 0 ? fmt::format("{}:{:02}:{:02}", hours, minutes, whole % 60)
                     : fmt::format("{}:{:02}", minutes, whole % 60);
}

}  // namespace

ProgressBar::ProgressBar(std::string title_, std::string noun_)
    : title(std::move(title_)),
      noun(std::move(noun_)),
      drawn(begin - redrawAfter),
      visible(canRedraw()),
      coloured(colourWanted()) {}

ProgressBar::~ProgressBar() {
    if (shown.empty()) return;
    redraw("");
    setLineUnfinished(false);
}

void ProgressBar::show(std::size_t done, std::size_t total) {
    if (!visible || total == 0) return;
    done = std::min(done, total);
    const std::size_t filled = width * done / total;
    const std::string bar(filled, '#');
    const std::string rest(width - filled, '.');
    std::string line = fmt::format("{} {}{}{}{} {:3} %{}", title, coloured ? "\033[36m" : "", bar,
                                   coloured ? "\033[0m" : "", rest, 100 * done / total, rate(done));
    if (done > 0 && done < total && elapsed() > 0.0) {
        line += fmt::format("  {} left", duration(elapsed() * static_cast<double>(total - done) /
                                                  static_cast<double>(done)));
    }
    draw(line, done == total);
}

void ProgressBar::count(std::size_t done) {
    if (!visible || resultsMayBeSeen()) return;
    draw(fmt::format("{} {} {}{}", title, done, noun, rate(done)), false);
}

double ProgressBar::elapsed() const {
    const double seconds = std::chrono::duration<double>(Clock::now() - begin).count();
    return seconds < leastSeconds ? 0.0 : seconds;
}

std::string ProgressBar::rate(std::size_t done) const {
    if (noun.empty() || done == 0 || elapsed() <= 0.0) return {};
    return fmt::format("  {:.3g} {}/s", static_cast<double>(done) / elapsed(), noun);
}

void ProgressBar::draw(const std::string& line, bool last) {
    const Clock::time_point now = Clock::now();
    if (line == shown || (!last && now - drawn < redrawAfter)) return;
    shown = line;
    drawn = now;
    setLineUnfinished(true);
    redraw(line);
}

}  // namespace Vesk::Tool
