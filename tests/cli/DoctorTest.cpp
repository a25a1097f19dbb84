#include "Program.h"

#include <support/Markup.h>

#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Test;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class Doctor : public WithTraces {
protected:
    Outcome examine(const std::vector<std::string>& options) {
        return run(joined({"doctor", traces}, joined(smallTraining(), options)));
    }

    /// `smallModel` without the ratio.
    static std::vector<std::string> smallTraining() {
        return {smallModel().begin(), smallModel().begin() + 6};
    }

    /// Changes one trace, counted from 1.
    template <typename Change>
    void change(std::size_t line, const Change& change) {
        std::vector<std::string> all = lines(readFile(traces));
        json trace = json::parse(all.at(line - 1));
        change(trace);
        all[line - 1] = trace.dump();
        std::string text;
        for (const std::string& one : all) text += one + "\n";
        writeFile(traces, text);
    }

    /// The 5th trace, a circle, moves nowhere; the 9th, a zigzag, is labelled as a circle.
    void plantTwo() {
        change(5, [](json& trace) { trace["points"] = {{1, 1}, {1, 1}}; });
        change(9, [](json& trace) {
            ASSERT_EQ(trace["gesture"], "zigzag");
            trace["gesture"] = "circle";
        });
    }

    /// All circles but those of one user once more, a little aside and labelled as rings.
    void addRings() {
        std::string text;
        for (const std::string& line : lines(readFile(traces))) {
            json trace = json::parse(line);
            if (trace["gesture"] == "circle" && trace["user"] != "u01") {
                for (json& point : trace["points"]) point[0] = point[0].get<double>() + 1;
                trace["gesture"] = "ring";
                text += trace.dump() + "\n";
            }
            text += line + "\n";
        }
        writeFile(traces, text);
    }

    std::string page = path("page.html");
};

/// A run that found something serious: results on standard output, one line on the other.
testing::AssertionResult foundSerious(const Outcome& outcome, const std::string& count) {
    const std::string line = "vesk: found " + count + "\n";
    if (outcome.status == 3 && outcome.err == line && !outcome.out.empty())
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "status " << outcome.status << "\n"
                                       << outcome.out << outcome.err;
}

TEST_F(Doctor, FindsNothingInACleanSetAndItsModel) {
    Outcome outcome = examine({});
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, "nothing found in 36 traces\n");
    const std::string file = model();
    outcome = run({"doctor", "-m", file});
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, "nothing found in the model\n");
    outcome = examine({"--model", file});
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, "nothing found in 36 traces and the model\n");
}

TEST_F(Doctor, TellsEachFindingAndWhatToDoTheMostSeriousFirst) {
    plantTwo();
    const Outcome outcome = examine({});
    EXPECT_TRUE(foundSerious(outcome, "1 serious problem"));
    const std::vector<std::string> text = lines(outcome.out);
    ASSERT_EQ(text.size(), 4U);
    EXPECT_THAT(text[0], StartsWith("serious: " + traces + ":5: \"circle\" by "));
    EXPECT_THAT(text[0], HasSubstr("found 2 points and no movement"));
    EXPECT_THAT(text[2], StartsWith("warning: " + traces + ":9: \"circle\" by "));
    EXPECT_THAT(text[2], HasSubstr("found a drawing of \"zigzag\""));
    for (const std::size_t advice : {1U, 3U}) {
        EXPECT_THAT(text[advice], testing::ContainsRegex("^    [A-Z].*[.]$"));
    }
}

TEST_F(Doctor, TellsTheSameRemedyOnceBelowAllThatItIsFor) {
    change(1, [](json& trace) { trace["points"] = {{1, 1}, {1, 1}}; });
    change(5, [](json& trace) { trace["gesture"] = "corner"; });
    change(9, [](json& trace) { trace["points"] = {{2, 2}, {2, 2}}; });
    const Outcome outcome = examine({"--no-cross-validation"});
    EXPECT_TRUE(foundSerious(outcome, "3 serious problems"));
    const std::vector<std::string> text = lines(outcome.out);
    ASSERT_GE(text.size(), 5U);
    EXPECT_THAT(text[0], HasSubstr("traces.jsonl:1: "));
    EXPECT_THAT(text[1], HasSubstr("traces.jsonl:9: "));
    EXPECT_THAT(text[2], StartsWith("    Leave the trace out"));
    // A check, a corner, a zigzag: in their order it would come between the two.
    EXPECT_THAT(text[3], StartsWith("serious: gesture \"corner\": found 1 trace"));
    EXPECT_THAT(text[4], StartsWith("    Record more"));
    const json object = json::parse(examine({"--no-cross-validation", "--json"}).out);
    EXPECT_EQ(object["findings"][0]["advice"], object["findings"][2]["advice"]);
}

TEST_F(Doctor, WarningsAloneAreNoFailure) {
    change(9, [](json& trace) { trace["gesture"] = "circle"; });
    const Outcome outcome = examine({});
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_THAT(outcome.out, StartsWith("warning: "));
}

TEST_F(Doctor, JsonHoldsTheSameFindings) {
    plantTwo();
    const Outcome outcome = examine({"--json"});
    EXPECT_TRUE(foundSerious(outcome, "1 serious problem"));
    const json object = json::parse(outcome.out);
    EXPECT_EQ(object["traces"], 36);
    ASSERT_EQ(object["findings"].size(), 2U);
    const json& first = object["findings"][0];
    EXPECT_EQ(first["kind"], "no-direction");
    EXPECT_EQ(first["weight"], "serious");
    EXPECT_EQ(first["gestures"], json({"circle"}));
    EXPECT_EQ(first["traces"][0]["source"], traces);
    EXPECT_EQ(first["traces"][0]["line"], 5);
    EXPECT_EQ(first["found"], 0);
    EXPECT_TRUE(first["sureness"].is_null());
    const json& second = object["findings"][1];
    EXPECT_EQ(second["kind"], "mislabelled-trace");
    EXPECT_EQ(second["gestures"], json({"circle", "zigzag"}));
    EXPECT_GT(second["sureness"], 0.5);
    EXPECT_THAT(second["text"].get<std::string>(), StartsWith(traces + ":9: "));
}

TEST_F(Doctor, AConfusablePairComesWithTheMeansOfBoth) {
    addRings();
    const Outcome outcome = examine({"--json"});
    EXPECT_TRUE(foundSerious(outcome, "1 serious problem"));
    const json finding = json::parse(outcome.out)["findings"][0];
    EXPECT_EQ(finding["kind"], "confusable-gestures");
    ASSERT_EQ(finding["means"].size(), 2U);
    EXPECT_EQ(finding["means"][1]["gesture"], "ring");
    EXPECT_EQ(finding["means"][1]["points"].size(), 32U);
    EXPECT_EQ(examine({"--no-cross-validation"}).out.find("confus"), std::string::npos);
}

TEST_F(Doctor, TheReportHasEveryFindingAndTheStrokesThatItIsAbout) {
    plantTwo();
    const Outcome outcome = examine({"--report", page});
    EXPECT_TRUE(foundSerious(outcome, "1 serious problem"));
    const std::vector<std::string> text = lines(outcome.out);
    ASSERT_EQ(text.size(), 6U);
    EXPECT_EQ(text[5], "report written to " + page);
    const Markup markup(readFile(page));
    EXPECT_THAT(markup.texts("//h2"), ElementsAre("Overview", "Serious", "Warnings"));
    EXPECT_THAT(markup.texts("//h3"), ElementsAre("no direction", "mislabelled trace"));
    EXPECT_THAT(markup.texts("//tbody/tr/*"), ElementsAre(text[0].substr(9), text[1].substr(4),
                                                          text[2].substr(9), text[3].substr(4)));
    EXPECT_THAT(markup.texts("//svg/title"),
                ElementsAre(StartsWith("no direction: circle ("),
                            StartsWith("mislabelled trace: circle (")));
    EXPECT_THAT(markup.texts("//p"), testing::Contains("2 findings in 36 traces."));
}

TEST_F(Doctor, TheReportLaysTheMeansOfConfusableGesturesOverOneAnother) {
    addRings();
    EXPECT_TRUE(foundSerious(examine({"--json", "--report", page}), "1 serious problem"));
    const Markup markup(readFile(page));
    EXPECT_THAT(markup.texts("//svg/title"),
                testing::Contains("How circle and ring are drawn on average"));
    EXPECT_EQ(markup.count("//svg[starts-with(title, 'How circle and ring')]//polyline"), 2U);
}

TEST_F(Doctor, TheReportOfACleanModelSaysSo) {
    const Outcome outcome = run({"doctor", "-m", model(), "--report", page});
    EXPECT_TRUE(succeeded(outcome));
    const Markup markup(readFile(page));
    EXPECT_THAT(markup.texts("//p"), testing::Contains("0 findings in the model."));
    EXPECT_EQ(markup.count("//table"), 0U);
}

TEST_F(Doctor, TheReportDrawsNoMoreThanCanBeLookedAt) {
    std::string text = readFile(traces);
    for (int i = 0; i < 70; ++i) {
        text += json{{"gesture", "circle"}, {"points", {{i, 1}, {i, 1}}}, {"user", "u01"}}.dump();
        text += "\n";
    }
    writeFile(traces, text);
    EXPECT_TRUE(
        foundSerious(examine({"--no-cross-validation", "--report", page}), "70 serious problems"));
    const Markup markup(readFile(page));
    EXPECT_EQ(markup.count("//svg"), 60U);
    EXPECT_EQ(markup.count("//tbody/tr"), 70U);
    EXPECT_THAT(markup.texts("//p"), testing::Contains("The first 60 of 70 are drawn."));
}

TEST_F(Doctor, ReportsThatCannotBeWrittenAreRefusedBeforeAnything) {
    EXPECT_TRUE(refused(examine({"--report", path("missing/page.html")}), 1, path("missing")));
    EXPECT_TRUE(refused(examine({"--report", "-"}), 2, "--report"));
    EXPECT_TRUE(refused(run({"doctor", path("missing.jsonl"), "--report", page}), 3, "missing"));
    EXPECT_FALSE(std::filesystem::exists(page));
}

TEST_F(Doctor, TheNumberOfThreadsChangesNothing) {
    plantTwo();
    EXPECT_EQ(examine({"--json", "--threads", "1"}).out, examine({"--json", "--threads", "4"}).out);
}

TEST_F(Doctor, ReadsTracesOrAModelFromStandardInput) {
    Outcome outcome = run({"doctor", "-", "--no-cross-validation"}, readFile(traces));
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, "nothing found in 36 traces\n");
    outcome = run({"doctor", "-m", "-"}, readFile(model()));
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, "nothing found in the model\n");
}

TEST_F(Doctor, TheLengthOfSequencesIsThatOfTheResampling) {
    const std::string file = model();
    EXPECT_EQ(
        run({"doctor", "-m", file, "--resample", "11", "--bearings", "0"}).out.find("sequences of"),
        std::string::npos);
    const Outcome outcome = run({"doctor", "-m", file, "--resample", "10", "--bearings", "0"});
    EXPECT_TRUE(foundSerious(outcome, "3 serious problems"));
    EXPECT_THAT(outcome.out, HasSubstr("found sequences of 9 symbols, expected at least 10"));
}

TEST_F(Doctor, ADamagedModelFileIsAFinding) {
    const std::string file = model();
    const std::string text = readFile(file);
    // The last number, an emission.
    std::string broken = text;
    const std::size_t last = broken.find_last_of("0123456789");
    broken.replace(broken.find_last_of(' ', last) + 1, std::string::npos, "inf\n");
    writeFile(file, broken);
    const Outcome outcome = run({"doctor", "-m", file});
    EXPECT_TRUE(foundSerious(outcome, "1 serious problem"));
    EXPECT_THAT(outcome.out, StartsWith("serious: " + file + ":"));
    EXPECT_THAT(outcome.out, HasSubstr("found \"inf\""));
    // Cut anywhere, the file is refused without harm.
    for (std::size_t length = 0; length < text.size() - 20; length += text.size() / 23) {
        writeFile(file, text.substr(0, length));
        const int status = run({"doctor", "-m", file}).status;
        EXPECT_TRUE(status == 3 || status == 0) << length << ": " << status;
    }
    writeFile(file, std::string("\0\xff\x1b[2J 1 2 3", 12));
    EXPECT_EQ(run({"doctor", "-m", file}).out.find('\x1b'), std::string::npos);
}

TEST_F(Doctor, ControlCharactersStayAwayFromTheTerminal) {
    change(1, [](json& trace) { trace["gesture"] = "\x1b[2Jcheck\n"; });
    const Outcome outcome = examine({"--no-cross-validation"});
    EXPECT_TRUE(foundSerious(outcome, "1 serious problem"));
    EXPECT_EQ(outcome.out.find('\x1b'), std::string::npos);
    EXPECT_THAT(outcome.out, HasSubstr("\"?[2Jcheck?\""));
    EXPECT_EQ(lines(outcome.out).size(), 2U);
}

TEST_F(Doctor, RefusesWhatItCannotExamine) {
    EXPECT_TRUE(refused(run({"doctor"}), 2, "expected TRACES, --model or both"));
    EXPECT_TRUE(
        refused(run({"doctor", "-", "-m", "-"}), 2, "cannot both come from standard input"));
    EXPECT_TRUE(refused(run({"doctor", "-m", path("missing")}), 3, path("missing")));
    EXPECT_TRUE(refused(run({"doctor", path("missing.jsonl")}), 3, path("missing.jsonl")));
    EXPECT_TRUE(refused(examine({"--delta", "10"}), 2, "delta"));
    EXPECT_TRUE(refused(examine({"--user", "nobody"}), 3, "found no trace of user"));
    writeFile(path("empty.jsonl"), "");
    EXPECT_TRUE(refused(run({"doctor", path("empty.jsonl")}), 3, "found no traces"));
    writeFile(path("bad.jsonl"), "{\"gesture\": \"a\"}\n");
    EXPECT_TRUE(refused(run({"doctor", path("bad.jsonl")}), 3, path("bad.jsonl") + ":1: "));
}

}  // namespace
