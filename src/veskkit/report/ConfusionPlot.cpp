#include <veskkit/report/ConfusionPlot.h>

#include <veskkit/report/internal/Colours.h>
#include <veskkit/report/internal/Svg.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

namespace Vesk::Kit {

using internal::coordinate;
using internal::Svg;

namespace {

constexpr double cell = 30.0;
constexpr double gap = 8.0;  // before the column of rejections
constexpr double characterWidth = 7.0;
constexpr std::size_t longestName = 20;
constexpr double faintest = 0.12;  // of what is not 0, to be seen
constexpr double opaque = 0.65;    // from where on text needs the colour for it

double roomFor(const std::vector<std::string>& names) {
    std::size_t longest = 8;  // "rejected"
    for (const std::string& name : names) longest = std::max(longest, internal::lengthOf(name));
    return 12.0 + characterWidth * static_cast<double>(std::min(longest, longestName));
}

struct Cell {
    double x;
    double y;
    std::size_t count;
    double share;  ///< of the row
    bool right;
};

void addCell(Svg& svg, const Cell& it, const std::string& meaning) {
    svg.add("<g><title>{}</title>", internal::escaped(meaning));
    svg.add(R"(<rect x="{}" y="{}" width="{}" height="{}" fill="{}" fill-opacity="{}" )"
            R"(stroke="currentColor" stroke-opacity="0.15"/>)",
            coordinate(it.x), coordinate(it.y), coordinate(cell), coordinate(cell),
            it.right ? internal::amountColour() : internal::errorColour(),
            coordinate(it.count > 0 ? std::max(it.share, faintest) : 0.0));
    if (it.count > 0) {
        const std::string colour =
            it.share > opaque ? fmt::format(R"( fill="{}")", internal::onAmountColour()) : "";
        svg.label(it.x + cell / 2, it.y + cell / 2 + 4, std::to_string(it.count),
                  fmt::format(R"(text-anchor="middle" font-size="{}"{})", it.count < 1000 ? 12 : 9,
                              colour));
    }
    svg.add("</g>");
}

}  // namespace

std::string confusionPlot(const std::string& title, const Confusion& confusion) {
    const std::vector<std::string>& names = confusion.gestures;
    const std::size_t n = std::min(names.size(), confusion.counts.size());
    const double side = roomFor(names);
    const double extent = cell * static_cast<double>(n);
    const auto nameOf = [&](std::size_t k) { return k < n ? names[k] : "rejected"; };
    const auto columnAt = [&](std::size_t k) {
        return side + cell * static_cast<double>(k) + (k < n ? 0.0 : gap);
    };
    Svg svg(side + extent + gap + cell + 40, side + std::max(extent, cell) + 24, title);
    if (n == 0) {
        svg.label(8, side, "no gestures");
        return svg.take();
    }
    for (std::size_t k = 0; k <= n; ++k) {
        svg.turnedLabel(columnAt(k) + cell / 2 + 2, side - 6, 60,
                        internal::shortened(nameOf(k), longestName));
    }
    for (std::size_t i = 0; i < n; ++i) {
        const double y = side + cell * static_cast<double>(i);
        const std::vector<std::size_t>& row = confusion.counts[i];
        const std::size_t sum = std::accumulate(row.begin(), row.end(), std::size_t{0});
        svg.label(side - 6, y + cell / 2 + 4, internal::shortened(names[i], longestName),
                  "text-anchor=\"end\"");
        for (std::size_t k = 0; k < std::min(row.size(), n + 1); ++k) {
            const double share =
                sum > 0 ? static_cast<double>(row[k]) / static_cast<double>(sum) : 0.0;
            addCell(svg, {columnAt(k), y, row[k], share, i == k},
                    fmt::format("{}, answer {}: {} of {}", names[i], nameOf(k), row[k], sum));
        }
    }
    svg.label(side + extent / 2, side + extent + 18, "answer", "text-anchor=\"middle\"");
    return svg.take();
}

}  // namespace Vesk::Kit
