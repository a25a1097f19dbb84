#include "Program.h"

#include <support/Markup.h>

#include <gmock/gmock.h>

#include <cmath>

namespace {

using namespace Vesk::Test;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

class Inspect : public WithTraces {
protected:
    Inspect() : file(model()) {}

    std::string file;
    std::string page = path("page.html");
};

TEST_F(Inspect, PrintsWhatTheModelConsistsOf) {
    const Outcome outcome = run({"inspect", file});
    ASSERT_TRUE(succeeded(outcome));
    const std::vector<std::string> text = lines(outcome.out);
    ASSERT_EQ(text.size(), 16U);
    EXPECT_THAT(text[1], testing::MatchesRegex("name +model"));
    EXPECT_THAT(text[2], testing::MatchesRegex("gestures +3 in 3 models"));
    EXPECT_THAT(text[3], testing::MatchesRegex("threshold model +12 states"));
    EXPECT_THAT(text[4], testing::MatchesRegex("transition probability +0\\.9708.*"));
    EXPECT_THAT(text[5], testing::ContainsRegex("acceptance ratio +100"));
    EXPECT_THAT(text[8], testing::MatchesRegex("symbols +16"));
    EXPECT_EQ(
        text[9],
        "codebook                0 22.5 45 67.5 90 112.5 135 157.5 180 202.5 225 247.5 270 292.5 "
        "315 337.5");
    EXPECT_EQ(text[10], "                        degrees");
    EXPECT_THAT(text[12],
                testing::ContainsRegex("^gesture +model +states +delta +ratio +transitions"));
    EXPECT_THAT(text[13], testing::ContainsRegex("^check +1 +10 +1 +100 +0\\.[0-9]+ to 1 +0\\."));
    EXPECT_THAT(text[15], testing::StartsWith("zigzag "));
}

TEST_F(Inspect, JsonHasTheSameFigures) {
    const Outcome outcome = run({"inspect", "--json", file});
    ASSERT_TRUE(succeeded(outcome));
    const json object = json::parse(outcome.out);
    EXPECT_EQ(object["name"], "model");
    EXPECT_EQ(object["codebook"].size(), 16U);
    EXPECT_EQ(object["codebook"][1], 22.5);
    EXPECT_EQ(object["rotationAllowed"], false);
    // Three gestures: p = R / (R + K).
    EXPECT_NEAR(object["transitionProbability"].get<double>(), 100.0 / 103.0, 1e-6);
    EXPECT_NEAR(object["acceptanceRatio"].get<double>(), 100.0, 1e-2);
    ASSERT_EQ(object["gestures"].size(), 3U);
    EXPECT_EQ(object["gestures"][1]["gesture"], "circle");
    const json& own = object["gestures"][1]["models"][0];
    EXPECT_EQ(own["states"], 10);
    EXPECT_EQ(own["delta"], 1);
    EXPECT_EQ(own["prior"], 1.0);
    EXPECT_GT(own["transitions"]["smallest"], 0.0);
    EXPECT_EQ(own["transitions"]["largest"], 1.0);
    EXPECT_GT(own["emissions"]["smallest"], 0.0);
    EXPECT_LT(own["emissions"]["largest"], 1.0);
}

TEST_F(Inspect, ThePageShowsCodebookAndEveryModel) {
    const Outcome outcome = run({"inspect", file, "--report", page});
    ASSERT_TRUE(succeeded(outcome));
    EXPECT_THAT(outcome.out, HasSubstr("\nreport written to " + page + "\n"));
    const Markup markup(readFile(page));
    EXPECT_THAT(markup.texts("//h2"),
                ElementsAre("Overview", "Codebook", "check", "circle", "zigzag"));
    EXPECT_THAT(markup.texts("//svg/title"),
                ElementsAre("Directions of the symbols", "Transitions of check",
                            "Emissions of check", "Transitions of circle", "Emissions of circle",
                            "Transitions of zigzag", "Emissions of zigzag"));
    EXPECT_EQ(markup.count("//svg[title='Directions of the symbols']//line"), 16U);
    EXPECT_EQ(markup.count("//svg[title='Transitions of circle']//circle"), 10U);
}

TEST_F(Inspect, TracesAreShownWithTheStatesOfTheirModels) {
    const Outcome outcome = run({"inspect", "--report", page, "--traces", traces, file, "--json"});
    ASSERT_TRUE(succeeded(outcome));
    EXPECT_EQ(json::parse(outcome.out)["name"], "model") << "nothing but the object";
    const Markup markup(readFile(page));
    const pugi::xml_node stroke =
        markup.one("//svg[starts-with(title, 'Stroke of circle, coloured by the states')]");
    // 41 positions and a ring at the beginning.
    std::size_t dots = 0;
    for (const pugi::xml_node& unused : stroke.children("circle")) dots += unused ? 1 : 0;
    EXPECT_EQ(dots, 42U);
    EXPECT_THAT(markup.texts("//figcaption")[1],
                testing::MatchesRegex("check \\(u0[1-3], traces.jsonl:[0-9]+\\)"));
}

TEST_F(Inspect, ReadsAModelFromStandardInput) {
    const Outcome outcome = run({"inspect", "-"}, readFile(file));
    ASSERT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, run({"inspect", file}).out);
}

TEST_F(Inspect, RefusesWhatIsNoModel) {
    EXPECT_TRUE(refused(run({"inspect", path("absent")}), 3, path("absent")));
    EXPECT_TRUE(refused(run({"inspect", traces}), 3, "expected"));
    EXPECT_TRUE(refused(run({"inspect", path("")}), 3, path("")));
    EXPECT_TRUE(refused(run({"inspect"}), 2, "MODEL"));
}

TEST_F(Inspect, RefusesTracesThatAreNotThereOrNotWanted) {
    EXPECT_TRUE(refused(run({"inspect", file, "--report", page, "--traces", path("absent")}), 3,
                        path("absent")));
    EXPECT_TRUE(refused(run({"inspect", file, "--traces", traces}), 2, "--report"));
    EXPECT_TRUE(refused(run({"inspect", file, "--y-up"}), 2, "--report"));
    EXPECT_TRUE(
        refused(run({"inspect", "-", "--report", page, "--traces", "-"}), 2, "standard input"));
    EXPECT_EQ(namesIn(path("")), (std::vector<std::string>{"model.txt", "traces.jsonl"}));
}

TEST_F(Inspect, APageThatCannotBeWrittenIsRefusedAndLeavesNothing) {
    EXPECT_TRUE(
        refused(run({"inspect", file, "--report", path("no/page.html")}), 1, path("no/page.html")));
    EXPECT_TRUE(refused(run({"inspect", file, "--report", "-"}), 2, "--report: found -"));
    EXPECT_TRUE(refused(run({"inspect", file, "--report", "/dev/full"}), 1, "/dev/full"));
    writeFile(page, "old");
    EXPECT_TRUE(refused(run({"inspect", path("absent"), "--report", page}), 3, path("absent")));
    EXPECT_EQ(readFile(page), "old");
    EXPECT_EQ(namesIn(path("")),
              (std::vector<std::string>{"model.txt", "page.html", "traces.jsonl"}));
}

TEST_F(Inspect, HostileNamesStayText) {
    const std::string name = "<script>alert(1)</script>";
    std::string content = readFile(traces);
    for (std::size_t at; (at = content.find("\"check\"")) != std::string::npos;) {
        content.replace(at, 7, '"' + name + '"');
    }
    writeFile(path("hostile.jsonl"), content);
    const std::string hostile = path("hostile.model");
    ASSERT_TRUE(
        succeeded(run(joined({"train", path("hostile.jsonl"), "-o", hostile}, smallModel()))));
    ASSERT_TRUE(succeeded(run({"inspect", hostile, "--report", page})));
    const Markup markup(readFile(page));
    EXPECT_EQ(markup.count("//script"), 0U);
    EXPECT_EQ(markup.texts("//h2")[2], name);
}

}  // namespace
