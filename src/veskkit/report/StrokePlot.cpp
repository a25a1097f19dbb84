#include <veskkit/report/StrokePlot.h>

#include <veskkit/report/internal/Colours.h>
#include <veskkit/report/internal/Svg.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace Vesk::Kit {

using internal::coordinate;
using internal::Svg;

namespace {

constexpr double margin = 10.0;
constexpr double lineHeight = 18.0;
constexpr double width = 2.5;  // of a line
constexpr std::size_t longestName = 28;

bool isFinite(const std::vector<double>& point) {
    return point.size() >= 2 && std::isfinite(point[0]) && std::isfinite(point[1]);
}

/// Puts positions into the square, in its middle and as large as it allows.
class Frame {
public:
    explicit Frame(const StrokeStyle& wanted) : style(wanted) {}

    void include(const Points& points) {
        for (const std::vector<double>& point : points) {
            if (!isFinite(point)) continue;
            for (std::size_t axis = 0; axis < 2; ++axis) {
                low[axis] = std::min(low[axis], point[axis] / 2);
                high[axis] = std::max(high[axis], point[axis] / 2);
            }
            any = true;
        }
    }

    bool empty() const { return !any; }

    /// "x,y" on the page.
    std::string operator()(const std::vector<double>& point) const {
        return coordinate(x(point)) + ',' + coordinate(y(point));
    }
    double x(const std::vector<double>& point) const { return placed(point, 0); }
    double y(const std::vector<double>& point) const {
        const double down = placed(point, 1);
        return style.y == YAxis::Up ? style.size - down : down;
    }

private:
    double placed(const std::vector<double>& point, std::size_t axis) const {
        // Halves, since differences of finite numbers may be infinite.
        const double extent = std::max(high[0] - low[0], high[1] - low[1]);
        const double middle = low[axis] / 2 + high[axis] / 2;
        const double place = extent > 0.0 ? (point[axis] / 2 - middle) / extent : 0.0;
        return style.size / 2 + place * (style.size - 2 * margin);
    }

    const StrokeStyle& style;
    double low[2] = {std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
    double high[2] = {std::numeric_limits<double>::lowest(), std::numeric_limits<double>::lowest()};
    bool any = false;
};

void addNothing(Svg& svg, const StrokeStyle& style) {
    svg.label(style.size / 2, style.size / 2, "nothing to draw", "text-anchor=\"middle\"");
}

void addBeginning(Svg& svg, const Frame& frame, const std::vector<double>& point,
                  const std::string& colour) {
    svg.add(R"(<circle cx="{}" cy="{}" r="5" fill="none" stroke="{}" stroke-width="2"/>)",
            coordinate(frame.x(point)), coordinate(frame.y(point)), colour);
}

Points finitePoints(const Points& points) {
    Points finite;
    std::copy_if(points.begin(), points.end(), std::back_inserter(finite), isFinite);
    return finite;
}

std::string pathOf(const Frame& frame, const Points& points) {
    std::string path;
    for (const std::vector<double>& point : points) {
        if (!path.empty()) path += ' ';
        path += frame(point);
    }
    return path;
}

/// The state of a step; -1 where it has none.
int stateOf(const std::vector<int>& states, std::size_t step, int N) {
    if (step >= states.size() || states[step] < 0 || states[step] >= N) return -1;
    return states[step];
}

std::string colourOf(int state, int N) {
    return state < 0 ? "currentColor" : internal::stateColour(state, N);
}

/// The steps of one state in a row, from position `from` to position `to`.
void addSteps(Svg& svg, const Frame& frame, const Points& points, std::size_t from, std::size_t to,
              int state, int N) {
    std::string path;
    for (std::size_t i = from; i <= to; ++i) {
        if (!isFinite(points[i])) continue;
        path += (path.empty() ? "" : " ") + frame(points[i]);
    }
    svg.add(R"(<polyline points="{}" stroke="{}" stroke-opacity="{}">)", path, colourOf(state, N),
            state < 0 ? "0.4" : "1");
    svg.add("<title>{}</title></polyline>",
            state < 0 ? "no state" : fmt::format("state {}", state));
}

/// The scale of states: from the first to the last.
void addScale(Svg& svg, int N, double y, double size) {
    const int steps = std::min(N, internal::stateColours);
    const double length = (size - 2 * margin) / steps;
    for (int i = 0; i < steps; ++i) {
        svg.add(R"(<rect x="{}" y="{}" width="{}" height="8" fill="{}"/>)",
                coordinate(margin + i * length), coordinate(y), coordinate(length),
                internal::stateColour(i, steps));
    }
    svg.label(margin, y + 22, "state 0");
    if (N > 1) svg.label(size - margin, y + 22, std::to_string(N - 1), "text-anchor=\"end\"");
}

}  // namespace

std::string strokesPlot(const std::string& title, const std::vector<NamedStroke>& strokes,
                        const StrokeStyle& style) {
    Frame frame(style);
    for (const NamedStroke& stroke : strokes) frame.include(stroke.points);
    const bool named = strokes.size() > 1;
    const double below = named ? lineHeight * static_cast<double>(strokes.size()) : 0.0;
    Svg svg(style.size, style.size + below, title);
    if (frame.empty()) addNothing(svg, style);
    for (std::size_t k = 0; k < strokes.size(); ++k) {
        const Points points = finitePoints(strokes[k].points);
        const std::string colour = internal::seriesColour(k);
        const std::string line =
            fmt::format(R"(fill="none" stroke="{}" stroke-width="{}" stroke-linecap="round" )"
                        R"(stroke-linejoin="round" stroke-dasharray="{}")",
                        colour, coordinate(width), internal::seriesDashes(k));
        if (!points.empty()) {
            svg.add(R"(<polyline points="{}" {}><title>{}</title></polyline>)",
                    pathOf(frame, points), line, internal::escaped(strokes[k].name));
            addBeginning(svg, frame, points.front(), colour);
        }
        if (!named) continue;
        const double y = style.size + lineHeight * (static_cast<double>(k) + 0.5);
        svg.add(R"(<line x1="{}" y1="{}" x2="{}" y2="{}" {}/>)", coordinate(margin), coordinate(y),
                coordinate(margin + 26), coordinate(y), line);
        svg.label(margin + 34, y + 4, internal::shortened(strokes[k].name, longestName));
    }
    return svg.take();
}

std::string stateStrokePlot(const std::string& title, const Points& points,
                            const std::vector<int>& states, int N, const StrokeStyle& style) {
    Frame frame(style);
    frame.include(points);
    Svg svg(style.size, style.size + (N > 0 ? 30.0 : 0.0), title);
    if (frame.empty()) addNothing(svg, style);
    svg.add(R"(<g fill="none" stroke-width="{}" stroke-linecap="round" stroke-linejoin="round">)",
            coordinate(width));
    for (std::size_t from = 0; from + 1 < points.size();) {
        const int state = stateOf(states, from, N);
        std::size_t to = from + 1;
        while (to + 1 < points.size() && stateOf(states, to, N) == state) ++to;
        addSteps(svg, frame, points, from, to, state, N);
        from = to;
    }
    svg.add("</g>");
    bool begun = false;
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (!isFinite(points[i])) continue;
        const std::string colour = colourOf(stateOf(states, i, N), N);
        if (!begun) addBeginning(svg, frame, points[i], colour);
        begun = true;
        // The last position begins no step: it goes with the one before.
        const bool last = i + 1 == points.size() && i > 0;
        svg.add(R"(<circle cx="{}" cy="{}" r="2.2" fill="{}"/>)", coordinate(frame.x(points[i])),
                coordinate(frame.y(points[i])),
                last ? colourOf(stateOf(states, i - 1, N), N) : colour);
    }
    if (N > 0) addScale(svg, N, style.size, style.size);
    return svg.take();
}

}  // namespace Vesk::Kit
