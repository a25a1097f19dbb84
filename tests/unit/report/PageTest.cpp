#include <support/Markup.h>
#include <veskkit/report/Colours.h>
#include <veskkit/report/Page.h>
#include <veskkit/report/StrokePlot.h>

#include <gmock/gmock.h>

#include <cmath>

namespace Vesk::Kit {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Vesk::Test::hostileName;
using Vesk::Test::hostileNameRead;
using Vesk::Test::Markup;

Page example() {
    Page page("All of it");
    page.section("First");
    page.paragraph("Some words.");
    page.table({"Numbers", {{"name"}, {"count", true}}, {{"a", "1"}, {"b", "22"}}});
    page.section("Second");
    page.part("A part");
    page.figure({strokesPlot("one", {}), "A figure"});
    page.gallery({{strokesPlot("two", {}), "left"}, {strokesPlot("three", {}), "right"}});
    return page;
}

TEST(PageTest, HoldsAllInOrderUnderHeadings) {
    const Markup page(example().html("foot"));
    EXPECT_EQ(page.one("/html/head/title").text().get(), std::string("All of it"));
    EXPECT_THAT(page.texts("//h1"), ElementsAre("All of it"));
    EXPECT_THAT(page.texts("//main/h2"), ElementsAre("First", "Second"));
    EXPECT_THAT(page.texts("//main/h3"), ElementsAre("A part"));
    EXPECT_THAT(page.texts("//main/p"), ElementsAre("Some words."));
    EXPECT_THAT(page.texts("//figcaption"), ElementsAre("A figure", "left", "right"));
    EXPECT_THAT(page.texts("//figure//svg/title"), ElementsAre("one", "two", "three"));
    EXPECT_THAT(page.texts("//footer"), ElementsAre("foot"));
}

TEST(PageTest, TablesHaveCaptionsAndHeadersWithScope) {
    const Markup page(example().html(""));
    EXPECT_THAT(page.texts("//table/caption"), ElementsAre("Numbers"));
    EXPECT_THAT(page.texts("//thead//th[@scope='col']"), ElementsAre("name", "count"));
    EXPECT_THAT(page.texts("//tbody//th[@scope='row']"), ElementsAre("a", "b"));
    EXPECT_THAT(page.texts("//tbody//td[@class='n']"), ElementsAre("1", "22"));
}

TEST(PageTest, TheKeyboardReachesEverything) {
    const Markup page(example().html(""));
    EXPECT_STREQ(page.one("/html").attribute("lang").value(), "en");
    EXPECT_STREQ(page.all("/html/body/*")[0].attribute("href").value(), "#main");
    EXPECT_STREQ(page.one("//main").attribute("id").value(), "main");
    // Contents lead to the sections.
    for (const pugi::xml_node& link : page.all("//nav//a")) {
        const std::string target = link.attribute("href").value();
        const std::string path = "//h2[@id='" + target.substr(1) + "']";
        EXPECT_STREQ(page.one(path.c_str()).text().get(), link.text().get());
    }
    EXPECT_EQ(page.count("//nav//a"), 2U);
    const auto scrolling = page.all("//*[@class='scroll']");
    EXPECT_EQ(scrolling.size(), 2U);
    for (const pugi::xml_node& area : scrolling) {
        EXPECT_STREQ(area.attribute("tabindex").value(), "0");
        EXPECT_STREQ(area.attribute("role").value(), "region");
        EXPECT_STRNE(area.attribute("aria-label").value(), "");
    }
}

TEST(PageTest, NeedsAndMayLoadNothing) {
    const std::string html = example().html("");
    const Markup page(html);
    EXPECT_STREQ(
        page.one("//meta[@http-equiv='Content-Security-Policy']").attribute("content").value(),
        "default-src 'none'; style-src 'unsafe-inline'; img-src data:");
    EXPECT_EQ(page.count("//script | //iframe | //object | //img | //@src | //@style"), 0U);
    for (const auto& it : page.document.select_nodes("//@href")) {
        EXPECT_THAT(std::string(it.attribute().value()),
                    testing::AnyOf(testing::StartsWith("#"), "data:,"));
    }
    EXPECT_THAT(html, Not(HasSubstr("url(")));
    EXPECT_THAT(html, Not(HasSubstr("@import")));
    EXPECT_EQ(html.rfind("<!DOCTYPE html>", 0), 0U);
}

TEST(PageTest, TextsAreEscapedEverywhere) {
    Page page(hostileName);
    page.section(hostileName);
    page.part(hostileName);
    page.paragraph(hostileName);
    page.table({hostileName, {{hostileName}}, {{hostileName}}});
    page.figure({strokesPlot(hostileName, {}), hostileName});
    page.gallery({{strokesPlot(hostileName, {}), hostileName}});
    const Markup markup(page.html(hostileName));
    EXPECT_EQ(markup.count("//b"), 0U);
    for (const char* path :
         {"//head/title", "//h1", "//h2", "//h3", "//p", "//caption", "//thead//th", "//tbody//th",
          "//nav//a", "//footer", "//svg/title", "//figcaption"}) {
        const auto texts = markup.texts(path);
        EXPECT_FALSE(texts.empty()) << path;
        for (const std::string& text : texts) EXPECT_EQ(text, hostileNameRead) << path;
    }
}

TEST(PageTest, AnEmptyPageIsOne) {
    const Markup page(Page("").html(""));
    EXPECT_EQ(page.count("//nav"), 0U);
    EXPECT_EQ(page.count("//main/*"), 0U);
}

TEST(PageTest, SameContentSameBytes) { EXPECT_EQ(example().html("x"), example().html("x")); }

/// Relative luminance of "#rrggbb" (WCAG 2).
double luminance(const std::string& colour) {
    double sum = 0.0;
    const double weights[] = {0.2126, 0.7152, 0.0722};
    for (std::size_t k = 0; k < 3; ++k) {
        const double value = std::stoi(colour.substr(1 + 2 * k, 2), nullptr, 16) / 255.0;
        sum += weights[k] *
               (value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4));
    }
    return sum;
}

double contrast(double x, double y) { return (std::max(x, y) + 0.05) / (std::min(x, y) + 0.05); }

TEST(PlotColoursTest, ContrastWithThePageAndStatesInOrderOfLightness) {
    const std::string css = plotColours();
    const std::size_t darkBegins = css.find("@media");
    ASSERT_NE(darkBegins, std::string::npos);
    EXPECT_THAT(css, HasSubstr("screen and (prefers-color-scheme:dark)"));
    const struct {
        std::string css;
        double page;
    } schemes[] = {{css.substr(0, darkBegins), 1.0},
                   {css.substr(darkBegins), luminance("#14181d")}};
    for (const auto& scheme : schemes) {
        double last = -1.0;
        int states = 0;
        const std::string prefix = "--vesk-";
        for (std::size_t at = 0; (at = scheme.css.find(prefix, at)) != std::string::npos;) {
            at += prefix.size();
            const std::size_t colon = scheme.css.find_first_of(":;)", at);
            ASSERT_NE(colon, std::string::npos);
            // Used, not defined; or no colour.
            if (scheme.css.compare(colon, 2, ":#") != 0) continue;
            const std::string name = scheme.css.substr(at, colon - at);
            const double own = luminance(scheme.css.substr(colon + 1, 7));
            if (name == "on-amount") continue;
            EXPECT_GE(contrast(own, scheme.page), 3.0) << name;
            if (name.find_last_not_of("0123456789") != 0 || name[0] != 's') continue;
            EXPECT_GT(own, last) << name;
            last = own;
            ++states;
        }
        EXPECT_EQ(states, 12);
    }
}

}  // namespace
}  // namespace Vesk::Kit
