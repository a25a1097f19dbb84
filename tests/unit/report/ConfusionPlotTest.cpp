#include <support/Markup.h>
#include <veskkit/report/ConfusionPlot.h>

#include <gmock/gmock.h>

namespace Vesk::Kit {
namespace {

using testing::ElementsAre;
using Vesk::Test::hostileName;
using Vesk::Test::hostileNameRead;
using Vesk::Test::Markup;
using Vesk::Test::plotOf;

TEST(ConfusionPlotTest, CellsStandInOrderAndHoldTheCounts) {
    const Markup plot = plotOf(confusionPlot("a", {{"v", "x"}, {{6, 2, 0}, {0, 3, 1}}}), "a");
    EXPECT_THAT(
        plot.texts("//g/title"),
        ElementsAre("v, answer v: 6 of 8", "v, answer x: 2 of 8", "v, answer rejected: 0 of 8",
                    "x, answer v: 0 of 4", "x, answer x: 3 of 4", "x, answer rejected: 1 of 4"));
    EXPECT_THAT(plot.texts("//g/text"), ElementsAre("6", "2", "3", "1"));
    const auto cells = plot.all("//rect");
    ASSERT_EQ(cells.size(), 6U);
    EXPECT_LT(cells[0].attribute("x").as_double(), cells[1].attribute("x").as_double());
    EXPECT_EQ(cells[0].attribute("x").as_double(), cells[3].attribute("x").as_double());
    EXPECT_LT(cells[0].attribute("y").as_double(), cells[3].attribute("y").as_double());
    EXPECT_EQ(cells[0].attribute("fill-opacity").as_double(), 0.75);
    EXPECT_EQ(cells[2].attribute("fill-opacity").as_double(), 0.0);
    EXPECT_EQ(cells[5].attribute("fill-opacity").as_double(), 0.25);
    EXPECT_STRNE(cells[0].attribute("fill").value(), cells[1].attribute("fill").value());
    EXPECT_STREQ(cells[0].attribute("fill").value(), cells[4].attribute("fill").value());
    EXPECT_STREQ(cells[1].attribute("fill").value(), cells[5].attribute("fill").value());
}

TEST(ConfusionPlotTest, RareMistakesCanBeSeen) {
    const Markup plot = plotOf(confusionPlot("a", {{"v", "x"}, {{999, 1, 0}, {0, 1, 0}}}), "a");
    EXPECT_GE(plot.all("//rect")[1].attribute("fill-opacity").as_double(), 0.1);
}

TEST(ConfusionPlotTest, NamesAreEscapedAndNothingIsSaid) {
    const Markup plot =
        plotOf(confusionPlot(hostileName, {{hostileName}, {{1, 0}}}), hostileNameRead);
    EXPECT_THAT(plot.texts("/svg/text"),
                ElementsAre(hostileNameRead, "rejected", hostileNameRead, "answer"));
    EXPECT_THAT(plotOf(confusionPlot("a", {}), "a").texts("//text"), ElementsAre("no gestures"));
}

TEST(ConfusionPlotTest, RowsThatAreTooShortOrMissingAreDrawnAsFarAsTheyGo) {
    EXPECT_EQ(plotOf(confusionPlot("a", {{"v", "x"}, {{1}, {1, 2, 3, 4, 5}}}), "a").count("//rect"),
              4U);
    EXPECT_EQ(plotOf(confusionPlot("a", {{"v", "x"}, {{1, 0, 0}}}), "a").count("//rect"), 2U);
}

}  // namespace
}  // namespace Vesk::Kit
