#ifndef VESK_TOOLS_PROGRESSBAR_H
#define VESK_TOOLS_PROGRESSBAR_H

#include <chrono>
#include <cstddef>
#include <string>

namespace Vesk::Tool {

/// One line on standard error that shows how far the work is, how fast it goes and how long it will
/// take, and goes with the object. Nothing where standard error is no terminal. Without colour
/// where NO_COLOR is set.
class ProgressBar {
public:
    /// `noun` is what is counted, in the plural; empty where it is nothing that tells anybody how
    /// fast it goes.
    explicit ProgressBar(std::string title, std::string noun = {});
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(std::size_t done, std::size_t total);

    /// Where nobody knows how many there will be. Nothing where results may go to the terminal too.
    void count(std::size_t done);

private:
    using Clock = std::chrono::steady_clock;

    /// Seconds since the start; nothing is told of rates before there are some.
    double elapsed() const;
    std::string rate(std::size_t done) const;

    /// Not too often, but for what has to be seen.
    void draw(const std::string& line, bool last);

    std::string title;
    std::string noun;
    std::string shown;
    Clock::time_point begin = Clock::now();
    Clock::time_point drawn;
    bool visible;
    bool coloured;
};

}  // namespace Vesk::Tool

#endif
