#include <veskkit/report/ModelPlots.h>

#include <veskkit/report/internal/Colours.h>
#include <veskkit/report/internal/Direction.h>
#include <veskkit/report/internal/Svg.h>
#include <veskkit/report/internal/TableView.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Vesk::Kit {

using internal::coordinate;
using internal::Svg;
using internal::TableView;

namespace {

constexpr int levels = 50;
constexpr double left = 44.0;
constexpr double top = 6.0;

struct Layout {
    explicit Layout(const TableView& b)
        : cellWidth(std::clamp(640.0 / std::max(b.cols, 1), 4.0, 20.0)),
          cellHeight(std::clamp(420.0 / std::max(b.rows, 1), 4.0, 13.0)),
          right(left + cellWidth * b.cols),
          bottom(top + cellHeight * b.rows) {}

    double cellWidth;
    double cellHeight;
    double right;
    double bottom;
};

/// Every how many rows or columns have a label, which needs so much room.
int everyOf(double cell, double room) { return static_cast<int>(std::ceil(room / cell)); }

double largestOf(const TableView& b) {
    double largest = 0.0;
    for (int i = 0; i < b.rows; ++i) {
        for (int k = 0; k < b.cols; ++k) {
            if (std::isfinite(b(i, k))) largest = std::max(largest, b(i, k));
        }
    }
    return largest;
}

/// A path a level, in cells: as small as a picture of so many squares gets.
void addCells(Svg& svg, const TableView& b, double largest) {
    std::vector<std::string> paths(levels + 1);
    std::string bad;
    for (int i = 0; i < b.rows; ++i) {
        for (int k = 0; k < b.cols; ++k) {
            const double share = b(i, k) / largest;
            const bool finite = std::isfinite(b(i, k));
            const int level =
                finite && share > 0.0 ? static_cast<int>(std::lround(share * levels)) : 0;
            if (finite && level == 0) continue;
            std::string& path = finite ? paths[static_cast<std::size_t>(level)] : bad;
            path += fmt::format("M{} {}h1v1h-1z", k, i);
        }
    }
    for (int level = 1; level <= levels; ++level) {
        const std::string& path = paths[static_cast<std::size_t>(level)];
        if (path.empty()) continue;
        svg.add(R"(<path fill-opacity="{}" d="{}"/>)",
                coordinate(static_cast<double>(level) / levels), path);
    }
    if (!bad.empty()) svg.add(R"(<path fill="{}" d="{}"/>)", internal::errorColour(), bad);
}

void addStates(Svg& svg, const TableView& b, const Layout& at) {
    const int every = everyOf(at.cellHeight, 12.0);
    for (int i = 0; i < b.rows; i += every) {
        svg.label(left - 5, top + at.cellHeight * (i + 0.5) + 3.5, std::to_string(i),
                  "text-anchor=\"end\" font-size=\"10\"");
    }
    svg.turnedLabel(11, (top + at.bottom) / 2, 90, "state", "text-anchor=\"middle\"");
}

void addSymbols(Svg& svg, const TableView& b, const Layout& at,
                const std::vector<double>& directions, YAxis y) {
    constexpr double half = 6.0;
    const int every = everyOf(at.cellWidth, 20.0);
    for (int k = 0; k < b.cols; k += every) {
        const double x = left + at.cellWidth * (k + 0.5);
        svg.label(x, at.bottom + 12, std::to_string(k), "text-anchor=\"middle\" font-size=\"10\"");
        const auto place = static_cast<std::size_t>(k);
        if (place >= directions.size() || !std::isfinite(directions[place])) continue;
        const internal::Direction to(directions[place], y);
        const double middle = at.bottom + 24;
        svg.add(R"(<path d="M{} {}L{} {}" stroke="currentColor"/><circle cx="{}" cy="{}" r="2"/>)",
                coordinate(x - half * to.x), coordinate(middle - half * to.y),
                coordinate(x + half * to.x), coordinate(middle + half * to.y),
                coordinate(x + half * to.x), coordinate(middle + half * to.y));
    }
    svg.label((left + at.right) / 2, at.bottom + 46, "symbol", "text-anchor=\"middle\"");
}

/// From 0 to the largest value.
void addScale(Svg& svg, double y, double largest) {
    constexpr int steps = 10;
    constexpr double step = 12.0;
    svg.label(left, y + 10, "0");
    for (int i = 1; i <= steps; ++i) {
        svg.add(R"(<rect x="{}" y="{}" width="{}" height="12" fill="{}" fill-opacity="{}"/>)",
                coordinate(left + 12 + step * (i - 1)), coordinate(y), coordinate(step),
                internal::amountColour(), coordinate(static_cast<double>(i) / steps));
    }
    svg.label(left + 18 + step * steps, y + 10, fmt::format("{:.3g}", largest));
}

}  // namespace

std::string emissionHeatMap(const std::string& title, const Vesk::Math::MatrixT<double>& table,
                            const std::vector<double>& directions, YAxis y) {
    const TableView b(table);
    const Layout at(b);
    const double largest = largestOf(b);
    Svg svg(std::max(at.right, left + 190) + 10, at.bottom + 76, title);
    if (b.rows == 0 || b.cols == 0) {
        svg.label(left, top + 12, "no emissions");
        return svg.take();
    }
    svg.add(R"-(<g transform="translate({} {}) scale({} {})" fill="{}" )-"
            R"(shape-rendering="crispEdges">)",
            coordinate(left), coordinate(top), coordinate(at.cellWidth), coordinate(at.cellHeight),
            internal::amountColour());
    addCells(svg, b, largest);
    svg.add("</g>");
    svg.add(R"(<rect x="{}" y="{}" width="{}" height="{}" fill="none" stroke="currentColor" )"
            R"(stroke-opacity="0.4"/>)",
            coordinate(left), coordinate(top), coordinate(at.right - left),
            coordinate(at.bottom - top));
    addStates(svg, b, at);
    addSymbols(svg, b, at, directions, y);
    addScale(svg, at.bottom + 56, largest);
    return svg.take();
}

}  // namespace Vesk::Kit
