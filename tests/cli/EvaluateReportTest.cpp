#include "Program.h"

#include <support/Markup.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <map>

namespace {

using namespace Vesk::Test;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

class EvaluateReport : public WithTraces {
protected:
    Outcome evaluate(const std::vector<std::string>& options) {
        return run(joined({"evaluate", traces, "--report", page}, joined(smallModel(), options)));
    }

    std::string page = path("page.html");
};

TEST_F(EvaluateReport, HoldsTheTablesThatAreWrittenAndThePlots) {
    const Outcome outcome = evaluate({"--examples", "2,3"});
    ASSERT_TRUE(succeeded(outcome));
    EXPECT_THAT(outcome.out, HasSubstr("\nreport written to " + page + "\n"));
    const Markup markup(readFile(page));
    EXPECT_THAT(markup.texts("//h2"), ElementsAre("Rates", "Gestures", "Known or unknown",
                                                  "Few examples", "Strokes", "Mistakes"));
    EXPECT_THAT(markup.texts("//caption"),
                ElementsAre("Shares of the traces", "Fold by fold", "Gesture by gesture",
                            "What another acceptance ratio would do",
                            "With few training examples a gesture"));
    // Cell for cell what is written as text.
    for (const pugi::xml_node& row : markup.all("//table[caption='Gesture by gesture']/tbody/tr")) {
        std::string line = "\n" + std::string(row.child("th").text().get()) + " +";
        for (const pugi::xml_node& cell : row.children("td")) {
            line += std::string(cell.text().get()) + " *";
        }
        EXPECT_THAT(outcome.out, testing::ContainsRegex(line));
    }
    EXPECT_EQ(markup.count("//svg[starts-with(title, 'Stroke of ')]"), 3U);
}

TEST_F(EvaluateReport, TheConfusionMatrixHasTheCounts) {
    const Outcome outcome = evaluate({"--json"});
    ASSERT_TRUE(succeeded(outcome));
    const json object = json::parse(outcome.out);
    const Markup markup(readFile(page));
    std::vector<std::string> expected;
    for (const json& row : object["models"]["confusion"]) {
        for (const json& count : row) {
            if (count > 0) expected.push_back(std::to_string(count.get<std::size_t>()));
        }
    }
    EXPECT_EQ(markup.texts("//svg[starts-with(title, 'Confusion')]/g/text"), expected);
}

TEST_F(EvaluateReport, EveryMistakeIsAStroke) {
    // A circle that is labelled as a zigzag, and a mere dot.
    const std::string user = json::parse(lines(readFile(traces))[0])["user"];
    std::string content = readFile(traces);
    const std::size_t circle = content.find("\"circle\"");
    content.replace(circle, 8, "\"zigzag\"");
    content += R"({"gesture": "check", "points": [[1,1],[1,1]], "user": ")" + user + "\"}\n";
    writeFile(traces, content);
    const Outcome outcome = evaluate({"--json", "--no-unknown", "--skip-bad"});
    ASSERT_EQ(outcome.status, 0) << outcome.err;
    std::map<bool, std::size_t> counts;
    const json object = json::parse(outcome.out);
    for (const json& trace : object["traces"]) {
        if (trace["models"]["gesture"] != trace["expected"])
            ++counts[trace["models"]["gesture"] == ""];
    }
    const Markup markup(readFile(page));
    ASSERT_GT(counts[true], 0U);
    ASSERT_GT(counts[false], 0U);
    EXPECT_EQ(markup.count("//svg[contains(title, ' rejected (')]"),
              std::min<std::size_t>(counts[true], 12));
    EXPECT_EQ(markup.count("//svg[contains(title, ' taken for ')]"),
              std::min<std::size_t>(counts[false], 12));
    EXPECT_EQ(markup.count("//svg[title='check rejected (too short)'][text='nothing to draw']"),
              1U);
    EXPECT_EQ(markup.count("//h2[.='Known or unknown']"), 0U);
}

TEST_F(EvaluateReport, IsTheSameAtAnyNumberOfThreadsAndChangesNoResult) {
    const Outcome without = run(joined({"evaluate", traces, "--json"}, smallModel()));
    EXPECT_EQ(evaluate({"--json", "--threads", "1"}).out, without.out);
    const std::string first = readFile(page);
    EXPECT_EQ(evaluate({"--json", "--threads", "3"}).out, without.out);
    EXPECT_EQ(readFile(page), first);
}

TEST_F(EvaluateReport, APlaceThatCannotBeWrittenIsRefusedBeforeTheWork) {
    EXPECT_TRUE(refused(run({"evaluate", path("absent"), "--report", path("no/page.html")}), 1,
                        path("no/page.html")));
    EXPECT_TRUE(refused(run({"evaluate", traces, "--report", "-"}), 2, "--report: found -"));
    writeFile(page, "old");
    EXPECT_TRUE(refused(run({"evaluate", path("absent"), "--report", page}), 3, path("absent")));
    EXPECT_EQ(readFile(page), "old");
}

}  // namespace
