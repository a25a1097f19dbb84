#include <support/Markup.h>
#include <veskkit/report/ModelPlots.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <map>

namespace Vesk::Kit {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Vesk::Math::MatrixT;
using Vesk::Test::hostileName;
using Vesk::Test::hostileNameRead;
using Vesk::Test::Markup;
using Vesk::Test::plotOf;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

MatrixT<double> matrix(int rows, int cols, std::vector<double> values) {
    MatrixT<double> result(rows, cols);
    result.data = std::move(values);
    return result;
}

TEST(CodebookRoseTest, EverySymbolIsASpokeInItsDirection) {
    const Markup down = plotOf(codebookRose(hostileName, {0, 90, 180}), hostileNameRead);
    const auto spokes = down.all("//line");
    ASSERT_EQ(spokes.size(), 3U);
    EXPECT_EQ(spokes[0].attribute("x2").as_double(), 230.0);
    EXPECT_EQ(spokes[0].attribute("y2").as_double(), 130.0);
    EXPECT_EQ(spokes[1].attribute("x2").as_double(), 130.0);
    EXPECT_EQ(spokes[1].attribute("y2").as_double(), 230.0);
    EXPECT_EQ(spokes[2].attribute("x2").as_double(), 30.0);
    EXPECT_THAT(down.texts("//line/title"),
                ElementsAre("symbol 0: 0°", "symbol 1: 90°", "symbol 2: 180°"));
    EXPECT_THAT(down.texts("//text"), ElementsAre("0", "1", "2"));

    const Markup up = plotOf(codebookRose("a", {90}, YAxis::Up), "a");
    EXPECT_EQ(up.one("//line").attribute("y2").as_double(), 30.0);
}

TEST(CodebookRoseTest, LabelsOfManyAndWhatIsNotFiniteAreLeftOut) {
    std::vector<double> many(360);
    for (std::size_t k = 0; k < many.size(); ++k) many[k] = static_cast<double>(k);
    many[7] = nan;
    many[0] = infinity;
    const Markup plot = plotOf(codebookRose("a", many), "a");
    EXPECT_EQ(plot.count("//line"), 358U);
    EXPECT_LE(plot.count("//text"), 36U);
    EXPECT_GE(plot.count("//text"), 12U);
    EXPECT_THAT(plotOf(codebookRose("a", {}), "a").texts("//text"), ElementsAre("no symbols"));
}

TEST(TransitionGraphTest, EveryTransitionIsDrawnAsWideAsItsProbability) {
    const Markup plot = plotOf(
        transitionGraph("a", matrix(3, 3, {0.25, 0.5, 0.25, 0, 1, 0, 0, 0.001, 0.999})), "a");
    EXPECT_THAT(plot.texts("//g/title"), ElementsAre("0 → 0: 0.25", "0 → 1: 0.5", "0 → 2: 0.25",
                                                     "1 → 1: 1", "2 → 2: 0.999"));
    const auto paths = plot.all("//path");
    ASSERT_EQ(paths.size(), 5U);
    EXPECT_EQ(paths[0].attribute("stroke-width").as_double(), 1.5);
    EXPECT_EQ(paths[1].attribute("stroke-width").as_double(), 2.5);
    EXPECT_EQ(paths[3].attribute("stroke-width").as_double(), 4.5);
    EXPECT_EQ(plot.count("//polygon"), 2U) << "loops have no heads";
    const auto states = plot.all("//circle");
    ASSERT_EQ(states.size(), 3U);
    EXPECT_LT(states[0].attribute("cx").as_double(), states[1].attribute("cx").as_double());
    EXPECT_LT(states[1].attribute("cx").as_double(), states[2].attribute("cx").as_double());
}

TEST(TransitionGraphTest, JumpsGoBelowAndStepsBackAbove) {
    const Markup plot =
        plotOf(transitionGraph("a", matrix(3, 3, {0, 0, 1, 0, 0, 0, 1, 0, 0})), "a");
    const double middle = plot.all("//circle")[0].attribute("cy").as_double();
    const auto heads = plot.all("//polygon");
    ASSERT_EQ(heads.size(), 2U);
    const auto tip = [](const pugi::xml_node& head) {
        return Vesk::Test::positions(head.attribute("points").value()).front().second;
    };
    EXPECT_GT(tip(heads[0]), middle);
    EXPECT_LT(tip(heads[1]), middle);
}

TEST(TransitionGraphTest, ImpossibleValuesAndDamagedTablesDrawWhatTheyCan) {
    const Markup odd = plotOf(transitionGraph("a", matrix(2, 2, {nan, infinity, -1, 7})), "a");
    EXPECT_THAT(odd.texts("//g/title"), ElementsAre("1 → 1: 7"));
    EXPECT_EQ(odd.one("//path").attribute("stroke-width").as_double(), 4.5);

    const Markup cut = plotOf(transitionGraph("a", matrix(3, 3, {1})), "a");
    EXPECT_EQ(cut.count("//circle"), 3U);
    EXPECT_EQ(cut.count("//path"), 1U);
    const Markup none = plotOf(transitionGraph("a", MatrixT<double>()), "a");
    EXPECT_THAT(none.texts("//text"), ElementsAre("no states"));
}

/// Cells of the heat map, "column row", by the opacity that they are drawn with.
std::map<std::string, double> cellsOf(const Markup& plot) {
    std::map<std::string, double> cells;
    for (const pugi::xml_node& path : plot.all("/svg/g/path")) {
        std::istringstream in(path.attribute("d").value());
        for (std::string cell; std::getline(in, cell, 'z');) {
            const std::string place = cell.substr(1, cell.find('h') - 1);
            EXPECT_TRUE(cells.emplace(place, path.attribute("fill-opacity").as_double(-1)).second);
        }
    }
    return cells;
}

TEST(EmissionHeatMapTest, EveryCellIsAsOpaqueAsItsShareOfTheLargest) {
    const Markup plot = plotOf(
        emissionHeatMap("a", matrix(2, 3, {0.4, 0.2, 0.004, 0.1, 0, 0.003}), {0, 90, 180}), "a");
    // 0.003 of 0.4 is less than half a step of a fiftieth.
    const std::map<std::string, double> expected{
        {"0 0", 1.0}, {"1 0", 0.5}, {"2 0", 0.02}, {"0 1", 0.26}};
    const std::map<std::string, double> cells = cellsOf(plot);
    ASSERT_EQ(cells.size(), expected.size());
    for (const auto& [place, opacity] : expected) {
        ASSERT_EQ(cells.count(place), 1U) << place;
        EXPECT_NEAR(cells.at(place), opacity, 0.0101) << place;
    }
    EXPECT_THAT(plot.texts("/svg/text"),
                testing::IsSupersetOf({"0", "1", "2", "state", "symbol", "0.4"}));
    EXPECT_EQ(plot.count("/svg/path"), 3U) << "a direction a symbol";
}

TEST(EmissionHeatMapTest, InfiniteValuesHaveTheColourOfErrors) {
    const Markup plot = plotOf(emissionHeatMap("a", matrix(1, 3, {infinity, 1, nan})), "a");
    EXPECT_EQ(cellsOf(plot).size(), 3U);
    const pugi::xml_node bad = plot.one("//path[@fill]");
    EXPECT_NE(std::string(bad.attribute("fill").value()).find("--vesk-error"), std::string::npos);
    EXPECT_STREQ(bad.attribute("d").value(), "M0 0h1v1h-1zM2 0h1v1h-1z");
}

TEST(EmissionHeatMapTest, EmptyNegativeAndDamagedTablesDrawWhatTheyCan) {
    EXPECT_THAT(cellsOf(plotOf(emissionHeatMap("a", matrix(2, 2, {0, 0, -1, -2})), "a")),
                IsEmpty());
    EXPECT_THAT(plotOf(emissionHeatMap("a", MatrixT<double>()), "a").texts("//text"),
                ElementsAre("no emissions"));
    const Markup cut = plotOf(emissionHeatMap(hostileName, matrix(2, 2, {1, 1})), hostileNameRead);
    EXPECT_EQ(cellsOf(cut).size(), 4U);
    EXPECT_EQ(cut.count("//path[@fill]"), 1U) << "values that are not there are not finite";
}

TEST(EmissionHeatMapTest, LargeTablesStaySmallerThanTheirCells) {
    const std::string svg = emissionHeatMap("a", matrix(200, 360, std::vector<double>(72000, 0.1)));
    EXPECT_LT(svg.size(), 72000U * 20U);
    EXPECT_EQ(cellsOf(plotOf(svg, "a")).size(), 72000U);
}

}  // namespace
}  // namespace Vesk::Kit
