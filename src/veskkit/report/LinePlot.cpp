#include <veskkit/report/LinePlot.h>

#include <veskkit/report/internal/Colours.h>
#include <veskkit/report/internal/Svg.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Vesk::Kit {

using internal::coordinate;
using internal::Svg;

namespace {

constexpr double left = 62.0;
constexpr double top = 12.0;
constexpr double plotWidth = 420.0;
constexpr double plotHeight = 260.0;
constexpr double lineHeight = 18.0;
constexpr std::size_t longestName = 60;

/// A number on an axis and where that is on the page.
class Scale {
public:
    /// `from` and `to` are the page's places of the axis' ends.
    Scale(const Axis& axis, double from, double to)
        : low(axis.low), high(axis.high), first(from), last(to) {}

    void include(double value) {
        // Beyond this nothing could be told apart, and differences could be infinite.
        constexpr double largest = 1e100;
        if (std::abs(value) > largest) return;
        low = std::min(low, value);
        high = std::max(high, value);
    }

    double operator()(double value) const {
        const double share = high > low ? (value - low) / (high - low) : 0.5;
        return first + std::clamp(share, 0.0, 1.0) * (last - first);
    }

    /// Round numbers, three to seven of them.
    std::vector<double> ticks() const {
        if (!(high > low)) return {low};
        const double rough = (high - low) / 5;
        const double power = std::pow(10.0, std::floor(std::log10(rough)));
        const double digit = rough / power;
        const double step = power * (digit < 1.5 ? 1 : digit < 3.5 ? 2 : digit < 7.5 ? 5 : 10);
        std::vector<double> values;
        double multiple = std::ceil(low / step - 1e-9);
        while (multiple * step <= high + 1e-9 * step && values.size() < 20) {
            values.push_back(multiple * step + 0.0);  // no -0
            ++multiple;
        }
        return values;
    }

private:
    double low;
    double high;
    double first;
    double last;
};

bool isFinite(const std::pair<double, double>& point) {
    return std::isfinite(point.first) && std::isfinite(point.second);
}

void addAxes(Svg& svg, const Scale& x, const Scale& y, const Axis& xAxis, const Axis& yAxis) {
    const double bottom = top + plotHeight;
    svg.add(R"(<g stroke="currentColor" stroke-opacity="0.18">)");
    for (const double tick : x.ticks()) {
        svg.add(R"(<path d="M{} {}V{}"/>)", coordinate(x(tick)), coordinate(bottom),
                coordinate(top));
    }
    for (const double tick : y.ticks()) {
        svg.add(R"(<path d="M{} {}H{}"/>)", coordinate(left), coordinate(y(tick)),
                coordinate(left + plotWidth));
    }
    svg.add("</g>");
    svg.add(R"(<path d="M{} {}V{}H{}" fill="none" stroke="currentColor"/>)", coordinate(left),
            coordinate(top), coordinate(bottom), coordinate(left + plotWidth));
    for (const double tick : x.ticks()) {
        svg.label(x(tick), bottom + 16, fmt::format("{:.4g}", tick), "text-anchor=\"middle\"");
    }
    for (const double tick : y.ticks()) {
        svg.label(left - 6, y(tick) + 4, fmt::format("{:.4g}", tick), "text-anchor=\"end\"");
    }
    svg.label(left + plotWidth / 2, bottom + 36, xAxis.label, "text-anchor=\"middle\"");
    svg.turnedLabel(14, top + plotHeight / 2, 90, yAxis.label, "text-anchor=\"middle\"");
}

void addSeries(Svg& svg, const Scale& x, const Scale& y, const Series& series, std::size_t k) {
    const std::string colour = internal::seriesColour(k);
    std::string path;
    bool drawing = false;
    for (const auto& point : series.points) {
        if (isFinite(point)) {
            path += (drawing ? 'L' : 'M') + coordinate(x(point.first)) + ' ' +
                    coordinate(y(point.second));
        }
        drawing = isFinite(point);
    }
    if (path.empty()) return;
    svg.add("<g><title>{}</title>", internal::escaped(series.name));
    if (series.points.size() > 1) {
        svg.add(
            R"(<path d="{}" fill="none" stroke="{}" stroke-width="2.5" stroke-linejoin="round" )"
            R"(stroke-dasharray="{}"/>)",
            path, colour, internal::seriesDashes(k));
    } else {
        svg.add(R"(<circle cx="{}" cy="{}" r="5" fill="{}"/>)",
                coordinate(x(series.points[0].first)), coordinate(y(series.points[0].second)),
                colour);
    }
    svg.add("</g>");
}

void addName(Svg& svg, const Series& series, std::size_t k, double y) {
    if (series.points.size() == 1) {
        svg.add(R"(<circle cx="{}" cy="{}" r="5" fill="{}"/>)", coordinate(left + 15),
                coordinate(y), internal::seriesColour(k));
    } else {
        svg.add(R"(<line x1="{}" y1="{}" x2="{}" y2="{}" stroke="{}" stroke-width="2.5" )"
                R"(stroke-dasharray="{}"/>)",
                coordinate(left), coordinate(y), coordinate(left + 30), coordinate(y),
                internal::seriesColour(k), internal::seriesDashes(k));
    }
    svg.label(left + 38, y + 4, internal::shortened(series.name, longestName));
}

}  // namespace

std::string linePlot(const std::string& title, const Axis& xAxis, const Axis& yAxis,
                     const std::vector<Series>& series) {
    Scale x(xAxis, left, left + plotWidth);
    Scale y(yAxis, top + plotHeight, top);
    for (const Series& line : series) {
        for (const auto& point : line.points) {
            if (!isFinite(point)) continue;
            x.include(point.first);
            y.include(point.second);
        }
    }
    const double names = top + plotHeight + 48;
    Svg svg(left + plotWidth + 24, names + lineHeight * static_cast<double>(series.size()) + 4,
            title);
    addAxes(svg, x, y, xAxis, yAxis);
    for (std::size_t k = 0; k < series.size(); ++k) {
        addSeries(svg, x, y, series[k], k);
        addName(svg, series[k], k, names + lineHeight * (static_cast<double>(k) + 0.5));
    }
    return svg.take();
}

}  // namespace Vesk::Kit
