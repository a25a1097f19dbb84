#ifndef VESK_TOOLS_PROGRESSBAR_H
#define VESK_TOOLS_PROGRESSBAR_H

#include <cstddef>
#include <string>

namespace Vesk::Tool {

/// One line on standard error that shows how far the work is, and goes with the object. Nothing
/// where standard error is no terminal. Without colour where NO_COLOR is set.
class ProgressBar {
public:
    explicit ProgressBar(std::string title);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(std::size_t done, std::size_t total);

private:
    std::string title;
    std::string shown;
    bool visible;
    bool coloured;
};

}  // namespace Vesk::Tool

#endif
