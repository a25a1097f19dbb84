#include <veskkit/report/ModelPlots.h>

#include <veskkit/report/internal/Colours.h>
#include <veskkit/report/internal/Direction.h>
#include <veskkit/report/internal/Svg.h>

#include <cmath>
#include <cstddef>

namespace Vesk::Kit {

using internal::coordinate;
using internal::Direction;
using internal::Svg;

std::string codebookRose(const std::string& title, const std::vector<double>& directions, YAxis y) {
    constexpr double size = 260.0;
    constexpr double middle = size / 2;
    constexpr double radius = 100.0;
    constexpr double hub = 25.0;  // where spokes would run together
    constexpr double labelRadius = 115.0;
    constexpr std::size_t mostLabels = 36;
    const std::size_t every = directions.size() / (mostLabels + 1) + 1;

    Svg svg(size, size, title);
    svg.add(R"(<circle cx="{0}" cy="{0}" r="{1}" fill="none" stroke="currentColor" )"
            R"(stroke-opacity="0.25"/>)",
            coordinate(middle), coordinate(radius));
    svg.add(R"(<g stroke="{}" stroke-width="2">)", internal::amountColour());
    for (std::size_t k = 0; k < directions.size(); ++k) {
        if (!std::isfinite(directions[k])) continue;
        const Direction to(directions[k], y);
        svg.add(R"(<line x1="{}" y1="{}" x2="{}" y2="{}"><title>symbol {}: {:.4g}°</title>)"
                "</line>",
                coordinate(middle + hub * to.x), coordinate(middle + hub * to.y),
                coordinate(middle + radius * to.x), coordinate(middle + radius * to.y), k,
                directions[k]);
    }
    svg.add("</g>");
    for (std::size_t k = 0; k < directions.size(); k += every) {
        if (!std::isfinite(directions[k])) continue;
        const Direction to(directions[k], y);
        svg.label(middle + labelRadius * to.x, middle + labelRadius * to.y + 4, std::to_string(k),
                  "text-anchor=\"middle\"");
    }
    if (directions.empty()) svg.label(middle, middle, "no symbols", "text-anchor=\"middle\"");
    return svg.take();
}

}  // namespace Vesk::Kit
