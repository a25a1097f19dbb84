#include <support/Markup.h>
#include <veskkit/report/LinePlot.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>

namespace Vesk::Kit {
namespace {

using testing::ElementsAre;
using testing::Pair;
using Vesk::Test::hostileName;
using Vesk::Test::hostileNameRead;
using Vesk::Test::Markup;
using Vesk::Test::plotOf;
using Vesk::Test::positions;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

std::vector<pugi::xml_node> linesOf(const Markup& plot) {
    return plot.all("//path[@stroke-width]");
}

TEST(LinePlotTest, PointsLieWhereTheAxesSay) {
    const Markup plot = plotOf(
        linePlot("a", {"x", 0, 10}, {"y", 0, 100}, {{"s", {{0, 0}, {5, 50}, {10, 100}}}}), "a");
    ASSERT_EQ(linesOf(plot).size(), 1U);
    // The plot's area begins at 62, 12 and is 420 by 260.
    EXPECT_THAT(positions(linesOf(plot)[0].attribute("d").value()),
                ElementsAre(Pair(62, 272), Pair(272, 142), Pair(482, 12)));
    EXPECT_THAT(plot.texts("//text"), ElementsAre("0", "2", "4", "6", "8", "10", "0", "20", "40",
                                                  "60", "80", "100", "x", "y", "s"));
}

TEST(LinePlotTest, AxesReachAsFarAsThePointsDo) {
    const Markup plot =
        plotOf(linePlot("a", {"x", 0, 1}, {"y", 0, 1}, {{"s", {{-5, -1}, {20, 4}}}}), "a");
    EXPECT_THAT(positions(linesOf(plot)[0].attribute("d").value()),
                ElementsAre(Pair(62, 272), Pair(482, 12)));
}

TEST(LinePlotTest, ASinglePointIsADotAndEverySeriesHasItsOwnLook) {
    const Markup plot = plotOf(
        linePlot("a", {"x", 0, 1}, {"y", 0, 1},
                 {{"line", {{0, 0}, {1, 1}}}, {"other", {{0, 1}, {1, 0}}}, {"dot", {{0.5, 0.5}}}}),
        "a");
    const auto lines = linesOf(plot);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_STRNE(lines[0].attribute("stroke").value(), lines[1].attribute("stroke").value());
    EXPECT_STRNE(lines[0].attribute("stroke-dasharray").value(),
                 lines[1].attribute("stroke-dasharray").value());
    const auto dots = plot.all("//circle");
    ASSERT_EQ(dots.size(), 2U) << "the dot and its name's";
    EXPECT_EQ(dots[0].attribute("cx").as_double(), 272);
    EXPECT_EQ(dots[0].attribute("cy").as_double(), 142);
}

TEST(LinePlotTest, WhatIsNotFiniteInterruptsItsLine) {
    const Markup plot =
        plotOf(linePlot("a", {"x", 0, 1}, {"y", 0, 1},
                        {{"s", {{0, 0}, {0.5, 0.5}, {nan, 0}, {0.5, infinity}, {1, 1}, {1, 0}}}}),
               "a");
    const std::string path = linesOf(plot)[0].attribute("d").value();
    EXPECT_EQ(std::count(path.begin(), path.end(), 'M'), 2);
    EXPECT_EQ(std::count(path.begin(), path.end(), 'L'), 2);
}

TEST(LinePlotTest, OddDataAndAxesLeaveAPlot) {
    EXPECT_EQ(linesOf(plotOf(linePlot("a", {"x", 0, 1}, {"y", 0, 1}, {}), "a")).size(), 0U);
    EXPECT_EQ(
        linesOf(
            plotOf(linePlot("a", {"x", 3, 3}, {"y", 0, 0}, {{"s", {}}, {"t", {{nan, nan}}}}), "a"))
            .size(),
        0U);
    const double huge = std::numeric_limits<double>::max();
    const Markup plot = plotOf(
        linePlot("a", {"x", 0, 1}, {"y", 0, 1}, {{"s", {{-huge, -huge}, {huge, huge}}}}), "a");
    EXPECT_THAT(positions(linesOf(plot)[0].attribute("d").value()),
                ElementsAre(Pair(62, 272), Pair(482, 12)))
        << "what is beyond the axes ends at them";
}

TEST(LinePlotTest, TextsAreEscaped) {
    const Markup plot = plotOf(linePlot(hostileName, {hostileName, 0, 1}, {hostileName, 0, 1},
                                        {{hostileName, {{0, 0}, {1, 1}}}}),
                               hostileNameRead);
    const auto texts = plot.texts("//text");
    EXPECT_EQ(std::count(texts.begin(), texts.end(), hostileNameRead), 3);
    EXPECT_EQ(plot.one("//g/title").text().get(), std::string(hostileNameRead));
}

}  // namespace
}  // namespace Vesk::Kit
