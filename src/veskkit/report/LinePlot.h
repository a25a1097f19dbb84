#ifndef VESK_VESKKIT_REPORT_LINEPLOT_H
#define VESK_VESKKIT_REPORT_LINEPLOT_H

#include <string>
#include <utility>
#include <vector>

namespace Vesk::Kit {

/// What an axis shows: its label, and the range that is shown at least.
struct Axis {
    std::string label;  ///< with the unit, where there is one
    double low;         ///< left or lower end
    double high;        ///< right or upper end
};

/// Points (x, y) in their order; a single one is a dot.
struct Series {
    std::string name;                               ///< below the plot
    std::vector<std::pair<double, double>> points;  ///< x, then y
};

/// Lines over two linear axes with ticks, which reach as far as the points do; every line has its
/// own colour and dashes and its name below. A point that is not finite interrupts its line. What
/// StrokePlot.h says of plots is true of it.
std::string linePlot(const std::string& title, const Axis& x, const Axis& y,
                     const std::vector<Series>& series);

}  // namespace Vesk::Kit

#endif
