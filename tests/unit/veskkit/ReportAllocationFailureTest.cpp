// Pages and plots, with each allocation failing.

#include <support/FailingAllocator.h>
#include <veskkit/report/Colours.h>
#include <veskkit/report/ConfusionPlot.h>
#include <veskkit/report/LinePlot.h>
#include <veskkit/report/ModelPlots.h>
#include <veskkit/report/Page.h>
#include <veskkit/report/StrokePlot.h>
#include <veskkit/report/TradeOffPlot.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

const std::string title = "a title of more than a few letters";

using Vesk::Test::failEachAllocationOf;

TEST(ReportAllocationFailure, PlotsAreWhole) {
    Vesk::Math::MatrixT<double> matrix(2, 2);
    matrix.data = {0.5, 0.5, 0.25, 0.75};
    const std::vector<double> directions = {0.0, 180.0};
    const Points points = {{0, 0}, {1, 1}, {2, 0}};
    EXPECT_GE(failEachAllocationOf(plotColours), 2);
    EXPECT_GE(failEachAllocationOf([&] { return codebookRose(title, directions); }), 10);
    EXPECT_GE(failEachAllocationOf([&] { return transitionGraph(title, matrix); }), 10);
    EXPECT_GE(failEachAllocationOf([&] { return emissionHeatMap(title, matrix, directions); }), 10);
    EXPECT_GE(failEachAllocationOf([&] { return strokesPlot(title, {{title, points}}); }), 10);
    EXPECT_GE(failEachAllocationOf([&] { return stateStrokePlot(title, points, {0, 1}, 2); }), 10);
    EXPECT_GE(failEachAllocationOf([&] {
                  return linePlot(title, {"x", 0, 10}, {"y", 0, 100}, {{title, {{0, 0}, {5, 50}}}});
              }),
              10);
    const Confusion confusion{{title, "x"}, {{6, 2, 0}, {0, 3, 1}}};
    EXPECT_GE(failEachAllocationOf([&] { return confusionPlot(title, confusion); }), 10);
    Outcome outcome{0, 0, title, {title, title, title}, {}, Rejection::None, 1.0};
    outcome.answers = {{1.0, title}};
    outcome.answersAsUnknown = {{1.0, title}};
    ASSERT_NE(tradeOffPlot(title, {outcome}), "");
    EXPECT_GE(failEachAllocationOf([&] { return tradeOffPlot(title, {outcome}); }), 10);
}

TEST(ReportAllocationFailure, PagesAreWhole) {
    EXPECT_GE(failEachAllocationOf([] {
                  Page page(title);
                  page.section(title);
                  page.part(title);
                  page.paragraph(title);
                  page.table({title, {{title, false}, {"n", true}}, {{title, "1"}}});
                  page.figure({"<svg/>", title});
                  page.gallery({{"<svg/>", title}});
                  return page.html(title);
              }),
              40);
}

}  // namespace
}  // namespace Vesk::Kit
