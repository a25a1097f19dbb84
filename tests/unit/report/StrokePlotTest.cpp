#include <support/Markup.h>
#include <veskkit/report/StrokePlot.h>

#include <gmock/gmock.h>

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
constexpr double huge = std::numeric_limits<double>::max();

TEST(StrokesPlotTest, FillsTheSquareAndKeepsProportions) {
    // 20 wide and 10 high in a square of 120 with a margin of 10: 5 pixels a unit, centred.
    const Markup plot =
        plotOf(strokesPlot("a", {{"s", {{0, 0}, {20, 10}, {20, 0}}}}, {YAxis::Down, 120.0}), "a");
    EXPECT_THAT(positions(plot.one("//polyline").attribute("points").value()),
                ElementsAre(Pair(10, 35), Pair(110, 85), Pair(110, 35)));
    const pugi::xml_node ring = plot.one("//circle");
    EXPECT_EQ(ring.attribute("cx").as_double(), 10);
    EXPECT_EQ(ring.attribute("cy").as_double(), 35);
    EXPECT_EQ(plot.count("//text"), 0U) << "a single stroke needs no name";
}

TEST(StrokesPlotTest, YGrowsUpwardsWhereAskedFor) {
    const Markup plot =
        plotOf(strokesPlot("a", {{"s", {{0, 0}, {20, 10}}}}, {YAxis::Up, 120.0}), "a");
    EXPECT_THAT(positions(plot.one("//polyline").attribute("points").value()),
                ElementsAre(Pair(10, 85), Pair(110, 35)));
}

TEST(StrokesPlotTest, SeveralStrokesShareTheScaleAndAreTold) {
    const Markup plot =
        plotOf(strokesPlot("two", {{"x", {{0, 0}, {10, 0}}}, {"y", {{0, 10}, {5, 10}}}},
                           {YAxis::Down, 120}),
               "two");
    const auto lines = plot.all("//polyline");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_THAT(positions(lines[0].attribute("points").value()),
                ElementsAre(Pair(10, 10), Pair(110, 10)));
    EXPECT_THAT(positions(lines[1].attribute("points").value()),
                ElementsAre(Pair(10, 110), Pair(60, 110)));
    EXPECT_STRNE(lines[0].attribute("stroke").value(), lines[1].attribute("stroke").value());
    EXPECT_STRNE(lines[0].attribute("stroke-dasharray").value(),
                 lines[1].attribute("stroke-dasharray").value());
    EXPECT_THAT(plot.texts("//text"), ElementsAre("x", "y"));
    EXPECT_GT(plot.one("/svg").attribute("height").as_double(), 120.0) << "room for the names";
}

TEST(StrokesPlotTest, NamesAreEscapedAndLongOnesCut) {
    const Markup plot = plotOf(
        strokesPlot(hostileName, {{hostileName, {{0, 0}, {1, 1}}}, {std::string(99, 'n'), {}}}),
        hostileNameRead);
    EXPECT_EQ(plot.one("//polyline/title").text().get(), std::string(hostileNameRead));
    EXPECT_THAT(plot.texts("//text"),
                ElementsAre(hostileNameRead, std::string(27, 'n') + "\xE2\x80\xA6"));
}

TEST(StrokesPlotTest, WhatIsNotFiniteIsLeftOut) {
    const Markup plot =
        plotOf(strokesPlot("a", {{"s", {{0, 0}, {nan, 1}, {1, infinity}, {5}, {10, 10}}}},
                           {YAxis::Down, 120}),
               "a");
    EXPECT_THAT(positions(plot.one("//polyline").attribute("points").value()),
                ElementsAre(Pair(10, 10), Pair(110, 110)));
}

TEST(StrokesPlotTest, NothingToDrawIsSaid) {
    for (const std::vector<NamedStroke>& strokes :
         {std::vector<NamedStroke>{}, {{"s", {}}}, {{"s", {{nan, nan}}}}}) {
        const Markup plot = plotOf(strokesPlot("a", strokes), "a");
        EXPECT_EQ(plot.count("//polyline"), 0U);
        EXPECT_THAT(plot.texts("//text"), ElementsAre("nothing to draw"));
    }
}

TEST(StrokesPlotTest, HugeTinyAndSingleExtentsStayInTheSquare) {
    const Markup large =
        plotOf(strokesPlot("a", {{"s", {{-huge, -huge}, {huge, huge}}}}, {YAxis::Down, 120}), "a");
    EXPECT_THAT(positions(large.one("//polyline").attribute("points").value()),
                ElementsAre(Pair(10, 10), Pair(110, 110)));
    const Markup point =
        plotOf(strokesPlot("a", {{"s", {{7, 7}, {7, 7}}}}, {YAxis::Down, 120}), "a");
    EXPECT_THAT(positions(point.one("//polyline").attribute("points").value()),
                ElementsAre(Pair(60, 60), Pair(60, 60)));
}

TEST(StateStrokePlotTest, EachRunOfStatesIsAPolylineInItsColour) {
    const Points points{{0, 0}, {1, 0}, {2, 0}, {3, 0}, {4, 0}};
    const Markup plot =
        plotOf(stateStrokePlot("a", points, {0, 0, 1, 3}, 4, {YAxis::Down, 120}), "a");
    EXPECT_THAT(plot.texts("//polyline/title"), ElementsAre("state 0", "state 1", "state 3"));
    const auto lines = plot.all("//polyline");
    EXPECT_THAT(positions(lines[0].attribute("points").value()),
                ElementsAre(Pair(10, 60), Pair(35, 60), Pair(60, 60)));
    EXPECT_THAT(positions(lines[2].attribute("points").value()),
                ElementsAre(Pair(85, 60), Pair(110, 60)));
    // The first and the last state have the ends of the scale.
    EXPECT_NE(std::string(lines[0].attribute("stroke").value()).find("--vesk-s0,"),
              std::string::npos);
    EXPECT_NE(std::string(lines[2].attribute("stroke").value()).find("--vesk-s11,"),
              std::string::npos);
    // A dot a position and a ring; four colours of the scale.
    EXPECT_EQ(plot.count("//circle"), 6U);
    EXPECT_EQ(plot.count("//rect"), 4U);
    EXPECT_THAT(plot.texts("//text"), ElementsAre("state 0", "3"));
}

TEST(StateStrokePlotTest, StepsWithoutAStateAreGrey) {
    const Points points{{0, 0}, {1, 0}, {2, 0}, {3, 0}};
    const Markup plot = plotOf(stateStrokePlot("a", points, {-1, 4}, 4), "a");
    EXPECT_THAT(plot.texts("//polyline/title"), ElementsAre("no state"));
    EXPECT_STREQ(plot.one("//polyline").attribute("stroke").value(), "currentColor");
    EXPECT_THAT(plotOf(stateStrokePlot("a", {}, {0}, 0), "a").texts("//text"),
                ElementsAre("nothing to draw"));
}

TEST(StateStrokePlotTest, SurvivesPositionsThatAreNotFinite) {
    const Markup plot =
        plotOf(stateStrokePlot("a", {{nan, 0}, {0, 0}, {infinity, 1}, {1, 1}}, {0, 1, 1}, 2), "a");
    EXPECT_EQ(plot.count("//circle"), 3U) << "two positions, one of them with a ring";
}

}  // namespace
}  // namespace Vesk::Kit
