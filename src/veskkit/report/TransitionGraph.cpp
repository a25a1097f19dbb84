#include <veskkit/report/ModelPlots.h>

#include <veskkit/report/internal/Colours.h>
#include <veskkit/report/internal/Svg.h>
#include <veskkit/report/internal/TableView.h>

#include <algorithm>
#include <cmath>

namespace Vesk::Kit {

using internal::coordinate;
using internal::Svg;
using internal::TableView;

namespace {

constexpr double pitch = 34.0;   // from state to state
constexpr double radius = 10.0;  // of a state
constexpr double above = 66.0;   // from the top to the states' middles
constexpr double least = 0.005;  // probability worth an arrow
constexpr double head = 5.0;     // length of an arrow's head

/// Where something is on the page.
struct Place {
    double x;
    double y;
};

double middleOf(int state) { return pitch * (state + 0.5); }

/// How far the arc of a jump of so many states reaches up or down.
double reachOf(int jump) { return std::min(12.0 + 8.0 * std::abs(jump), 120.0); }

double widthOf(double probability) { return 0.5 + 4.0 * probability; }

/// A triangle that points from `from` to `tip`.
void addHead(Svg& svg, Place from, Place tip, double width) {
    const double length = std::hypot(tip.x - from.x, tip.y - from.y);
    const double ux = (tip.x - from.x) / length;
    const double uy = (tip.y - from.y) / length;
    const double half = 2.0 + width / 2;
    const Place base{tip.x - head * ux, tip.y - head * uy};
    svg.add(R"(<polygon points="{},{} {},{} {},{}"/>)", coordinate(tip.x), coordinate(tip.y),
            coordinate(base.x - half * uy), coordinate(base.y + half * ux),
            coordinate(base.x + half * uy), coordinate(base.y - half * ux));
}

void addLine(Svg& svg, const std::string& path, double width) {
    svg.add(R"(<path d="{}" fill="none" stroke="currentColor" stroke-width="{}"/>)", path,
            coordinate(width));
}

void addLoop(Svg& svg, int i, double width) {
    const double x = middleOf(i);
    const double y = above - radius;
    addLine(svg,
            fmt::format("M{} {}C{} {} {} {} {} {}", coordinate(x - 5), coordinate(y + 1),
                        coordinate(x - 15), coordinate(y - 22), coordinate(x + 15),
                        coordinate(y - 22), coordinate(x + 5), coordinate(y + 1)),
            width);
}

void addNext(Svg& svg, int i, double width) {
    const double from = middleOf(i) + radius;
    const double to = middleOf(i + 1) - radius;
    addLine(svg,
            fmt::format("M{} {}H{}", coordinate(from), coordinate(above), coordinate(to - head)),
            width);
    addHead(svg, {from, above}, {to, above}, width);
}

/// A jump forward below the states, a step back above them.
void addArc(Svg& svg, int i, int j, double width) {
    const double side = j > i ? 1.0 : -1.0;
    const Place from{middleOf(i) + 4 * side, above + radius * side};
    const Place tip{middleOf(j) - 4 * side, above + radius * side};
    const Place bend{(from.x + tip.x) / 2, above + (radius + 2 * reachOf(j - i)) * side};
    addLine(
        svg,
        fmt::format("M{} {}Q{} {} {} {}", coordinate(from.x), coordinate(from.y),
                    coordinate(bend.x), coordinate(bend.y), coordinate(tip.x), coordinate(tip.y)),
        width);
    addHead(svg, bend, tip, width);
}

void addTransition(Svg& svg, int i, int j, double probability) {
    const double width = widthOf(std::min(probability, 1.0));
    svg.add("<g><title>{} → {}: {:.3g}</title>", i, j, probability);
    if (i == j) {
        addLoop(svg, i, width);
        svg.label(middleOf(i), above - radius - 22, fmt::format("{:.2f}", probability),
                  "text-anchor=\"middle\" font-size=\"10\"");
    } else if (j == i + 1) {
        addNext(svg, i, width);
        svg.label(middleOf(i) + pitch / 2, above + radius + 10, fmt::format("{:.2f}", probability),
                  "text-anchor=\"middle\" font-size=\"10\"");
    } else {
        addArc(svg, i, j, width);
    }
    svg.add("</g>");
}

template <typename Use>
void forTransitions(const TableView& a, int N, const Use& use) {
    for (int i = 0; i < N; ++i) {
        for (int j = 0; j < N; ++j) {
            const double probability = a(i, j);
            if (std::isfinite(probability) && probability >= least) use(i, j, probability);
        }
    }
}

}  // namespace

std::string transitionGraph(const std::string& title, const Vesk::Math::MatrixT<double>& table) {
    const TableView a(table);
    const int N = std::min(a.rows, a.cols);
    double below = radius + 16.0;
    double over = 0.0;
    forTransitions(a, N, [&](int i, int j, double) {
        if (j > i + 1) below = std::max(below, radius + reachOf(j - i) + 8.0);
        if (j < i) over = std::max(over, radius + reachOf(j - i) + 8.0 - above);
    });
    Svg svg(std::max(N, 3) * pitch, over + above + below, title);
    if (N == 0) svg.label(8, above, "no states");
    svg.add(R"-(<g transform="translate(0 {})">)-", coordinate(over));
    forTransitions(a, N, [&](int i, int j, double p) { addTransition(svg, i, j, p); });
    for (int i = 0; i < N; ++i) {
        svg.add(R"(<circle cx="{}" cy="{}" r="{}" fill="none" stroke="{}" stroke-width="3"/>)",
                coordinate(middleOf(i)), coordinate(above), coordinate(radius),
                internal::stateColour(i, N));
        svg.label(middleOf(i), above + 4, std::to_string(i), "text-anchor=\"middle\"");
    }
    svg.add("</g>");
    return svg.take();
}

}  // namespace Vesk::Kit
