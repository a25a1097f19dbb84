#ifndef VESK_VESKKIT_REPORT_STROKEPLOT_H
#define VESK_VESKKIT_REPORT_STROKEPLOT_H

#include <veskkit/traces/Trace.h>

#include <string>
#include <vector>

namespace Vesk::Kit {

// Plots are one <svg> element each, as text: self-contained, the same bytes for the same data, with
// the title for those who cannot see it. Names are escaped. Nothing to draw (no positions, or none
// that are finite) is said in the picture. Their time and size grow with what they draw.

/// Which way the y of traces and directions grows on the page.
enum class YAxis {
    Down,  ///< as on a screen
    Up     ///< as in a textbook
};

/// How strokes are drawn.
struct StrokeStyle {
    YAxis y = YAxis::Down;  ///< of the positions
    double size = 220.0;    ///< of the square that the strokes fill, in pixels
};

/// A polyline with a name.
struct NamedStroke {
    std::string name;  ///< below the plot
    Points points;     ///< x at index 0, y at index 1
};

/// Strokes over one another, all at one scale and where they are, each with its own colour and
/// dashes, a ring where it begins, and its name below where there are several. Positions that are
/// not finite are left out.
std::string strokesPlot(const std::string& title, const std::vector<NamedStroke>& strokes,
                        const StrokeStyle& style = {});

/// One stroke whose step t, from position t to position t + 1, is coloured by states[t] of N. Steps
/// without a state in 0 .. N-1 are grey. States read from left to right below it.
std::string stateStrokePlot(const std::string& title, const Points& points,
                            const std::vector<int>& states, int N, const StrokeStyle& style = {});

}  // namespace Vesk::Kit

#endif
