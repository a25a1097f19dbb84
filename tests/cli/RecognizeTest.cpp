#include "Program.h"

#include <gmock/gmock.h>

#include <cmath>
#include <set>

namespace {

using namespace Vesk::Test;
using nlohmann::json;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

class Recognize : public WithTraces {
protected:
    Outcome recognize(const std::vector<std::string>& options, const std::string& input = "") {
        return run(joined({"recognize", "-m", trained}, options), input);
    }

    std::string trained = model();
    std::string circle = lines(readFile(traces))[4];
};

constexpr const char* standstill = "{\"points\":[[3,3],[3,3]]}\n";

// One gesture of one state that only knows the direction 0, and a combined model that takes 0 and
// 180 for equally likely, with weights of 0.5 each. Two steps to the right have P = 1 * 1, weighted
// 0.5, against a threshold of 0.5 * 0.5 * 0.5: the margin is ln(0.5 / 0.125) = ln 4 = 1.386. Two
// steps to the left are impossible.
constexpr const char* rightwards =
    "0 0 2\n0 180\n\ntiny\n1 2 1 0.5\n1\n1\n0.5 0.5\n0 1\n\nright\n1 2 1 1\n1\n1\n1 0\n\n";
constexpr const char* rightAndLeft =
    "{\"gesture\":\"right\",\"points\":[[0,0],[1,0],[2,0]]}\n"
    "{\"gesture\":\"right\",\"points\":[[2,0],[1,0],[0,0]]}\n";

class RecognizeByHand : public testing::Test {
protected:
    RecognizeByHand() { writeFile(folder.path("model"), rightwards); }

    std::string recognize(const std::string& option) {
        const Outcome outcome =
            run({"recognize", "-m", folder.path("model"), "-", "--resample", "none", option},
                rightAndLeft);
        EXPECT_TRUE(succeeded(outcome));
        return outcome.out;
    }

    TemporaryFolder folder;
};

TEST_F(RecognizeByHand, LinesGiveTheMarginInNaturalLogarithms) {
    EXPECT_EQ(recognize("--flip-y"),
              "-:1: right recognised as right, margin 1.39\n"
              "-:2: right rejected (zero probability), likeliest right, margin -inf\n");
}

TEST_F(RecognizeByHand, JsonHasNoMoreThanItsKeys) {
    EXPECT_EQ(recognize("--json"),
              "{\"gesture\":\"right\",\"expected\":\"right\",\"source\":\"-\",\"line\":1}\n"
              "{\"gesture\":\"\",\"expected\":\"right\",\"source\":\"-\",\"line\":2}\n");
}

TEST_F(RecognizeByHand, ProbabilityZeroIsNullInJson) {
    const std::vector<std::string> all = lines(run({"recognize", "-m", folder.path("model"), "-",
                                                    "--resample", "none", "--json", "--scores"},
                                                   rightAndLeft)
                                                   .out);

    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(json::parse(all[0]).at("scores"),
              json::parse("[{\"gesture\":\"right\",\"logProbability\":0.0}]"));
    EXPECT_EQ(json::parse(all[1]).at("scores"),
              json::parse("[{\"gesture\":\"right\",\"logProbability\":null}]"));
}

TEST_F(RecognizeByHand, ImpossibleGestureIsNobodysArgMax) {
    EXPECT_EQ(lines(recognize("--table")).at(1),
              "right           2        1        0        1         1");
}

TEST_F(Recognize, OneLineATraceSaysWhatWasRecognised) {
    const Outcome outcome = recognize({traces});

    ASSERT_TRUE(succeeded(outcome));
    const std::vector<std::string> all = lines(outcome.out);
    ASSERT_EQ(all.size(), 36U);
    EXPECT_THAT(all[0], MatchesRegex(".*/traces\\.jsonl:1: check by u01 recognised as check, "
                                     "margin [0-9]+\\.[0-9][0-9]"));
    EXPECT_THAT(all[4], HasSubstr("traces.jsonl:5: circle by u01 recognised as circle, margin "));
}

TEST_F(Recognize, RejectedTraceSaysWhy) {
    const Outcome outcome = recognize({"-"}, standstill);

    ASSERT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, "-:1: rejected (too short)\n");
}

TEST_F(Recognize, RejectedTraceNamesTheLikeliestGesture) {
    const std::string straight = "{\"gesture\":\"line\",\"points\":[[0,0],[100,0]]}\n";
    const Outcome outcome = recognize({"-"}, straight);

    ASSERT_TRUE(succeeded(outcome));
    EXPECT_THAT(outcome.out,
                MatchesRegex("-:1: line rejected \\((threshold|last state)\\), likeliest "
                             "(check|circle|zigzag), margin -[0-9.]+\n"));
}

TEST_F(Recognize, JsonHasTheDocumentedKeysInOrder) {
    const Outcome outcome = recognize({"--json", traces});

    ASSERT_TRUE(succeeded(outcome));
    const std::vector<std::string> all = lines(outcome.out);
    ASSERT_EQ(all.size(), 36U);
    EXPECT_EQ(all[4], "{\"gesture\":\"circle\",\"expected\":\"circle\",\"source\":\"" + traces +
                          "\",\"line\":5}");
}

TEST_F(Recognize, JsonOfARejectedTraceHasAnEmptyGesture) {
    EXPECT_EQ(recognize({"--json", "-"}, standstill).out,
              "{\"gesture\":\"\",\"source\":\"-\",\"line\":1}\n");
    EXPECT_EQ(recognize({"--json", "--scores", "-"}, standstill).out,
              "{\"gesture\":\"\",\"source\":\"-\",\"line\":1,\"scores\":[]}\n");
}

TEST_F(Recognize, JsonLineCountsWhereTheTraceBegins) {
    const Outcome outcome = recognize({"--json", "-"}, "\n\r\n" + circle + "\n\n" + circle);

    ASSERT_TRUE(succeeded(outcome));
    ASSERT_EQ(lines(outcome.out).size(), 2U);
    EXPECT_EQ(json::parse(lines(outcome.out)[0]).at("line"), 3);
    EXPECT_EQ(json::parse(lines(outcome.out)[1]).at("line"), 5);
}

TEST_F(Recognize, JsonIsValidWhateverTheFileIsCalled) {
    const std::string file = path("caf\xe9.jsonl");
    writeFile(file, circle);
    const Outcome outcome = recognize({"--json", file});

    ASSERT_TRUE(succeeded(outcome));
    EXPECT_EQ(json::parse(outcome.out).at("gesture"), "circle");
}

TEST_F(Recognize, ScoresNameEveryGestureOnceBestFirst) {
    ASSERT_TRUE(
        succeeded(run({"generate", "-o", traces, "--users", "3", "--repetitions", "8", "--gesture",
                       "check", "--gesture", "circle", "--gesture", "zigzag"})));
    const Outcome training =
        run(joined({"train", traces, "-o", trained, "--sub-models", "3"}, smallModel()));
    ASSERT_THAT(training.out, ContainsRegex(": [4-9] models\n"));
    const Outcome outcome = recognize({"--json", "--scores", traces});

    ASSERT_TRUE(succeeded(outcome));
    for (const std::string& line : lines(outcome.out)) {
        const json object = json::parse(line);
        ASSERT_EQ(object.size(), 5U) << line;
        std::set<std::string> names;
        double last = INFINITY;
        for (const json& score : object.at("scores")) {
            ASSERT_EQ(score.size(), 2U) << line;
            names.insert(score.at("gesture").get<std::string>());
            const double value = score.at("logProbability").is_null()
                                     ? -INFINITY
                                     : score.at("logProbability").get<double>();
            EXPECT_LE(value, last) << line;
            EXPECT_LT(value, 0.0) << line;
            last = value;
        }
        EXPECT_THAT(names, ElementsAre("check", "circle", "zigzag")) << line;
        EXPECT_EQ(object.at("scores").size(), 3U) << line;
        if (object.at("gesture") != "") {
            EXPECT_EQ(object.at("gesture"), object.at("scores")[0].at("gesture")) << line;
        }
    }
}

TEST_F(Recognize, ScoresNeedJsonAndATableHasNone) {
    EXPECT_TRUE(refused(recognize({"--scores", traces}), 2, "--scores requires --json"));
    EXPECT_TRUE(refused(recognize({"--table", "--json", traces}), 2, "--json"));
}

TEST_F(Recognize, TableCountsEveryGesture) {
    // A standing pen under the label circle, and a check that claims to be a circle.
    std::string claimed = lines(readFile(traces))[0];
    claimed.replace(claimed.find("\"check\""), 7, "\"circle\"");
    const std::string more = claimed + "\n{\"gesture\":\"circle\",\"points\":[[3,3],[3,3]]}\n";
    const Outcome before = recognize({"--table", traces});
    const Outcome after = recognize({"--table", traces, "-"}, more);

    ASSERT_TRUE(succeeded(before));
    ASSERT_TRUE(succeeded(after));
    const std::vector<std::string> rows = lines(before.out);
    ASSERT_EQ(rows.size(), 6U);
    EXPECT_EQ(rows[0], "gesture    traces  correct    wrong rejected   arg-max");
    EXPECT_EQ(rows[1], "check          12       12        0        0        12");
    EXPECT_EQ(rows[2], "circle         12       12        0        0        12");
    EXPECT_EQ(rows[3], "zigzag         12       12        0        0        12");
    EXPECT_EQ(rows[4], "in all         36       36        0        0        36");
    EXPECT_EQ(rows[5], "                   100.00%    0.00%    0.00%   100.00%");
    ASSERT_EQ(lines(after.out).size(), 6U);
    EXPECT_EQ(lines(after.out)[2], "circle         14       12        1        1        12");
    EXPECT_EQ(lines(after.out)[4], "in all         38       36        1        1        36");
    EXPECT_EQ(lines(after.out)[5], "                    94.74%    2.63%    2.63%    94.74%");
}

TEST_F(Recognize, TableLeavesOutTracesWithoutALabelAndSaysSo) {
    const Outcome outcome = recognize({"--table", "-"}, circle + "\n" + standstill);

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "vesk: warning: 1 trace without a label\n");
    EXPECT_THAT(outcome.out, ContainsRegex("in all +1 +1 +0 +0 +1\n"));
}

TEST_F(Recognize, LabelWithBlanksIsComparedAsTheModelHasIt) {
    std::string text = readFile(traces);
    for (std::size_t at; (at = text.find("\"circle\"")) != std::string::npos;) {
        text.replace(at, 8, "\"full circle\"");
    }
    writeFile(traces, text);
    ASSERT_EQ(run(joined({"train", traces, "-o", trained}, smallModel())).status, 0);

    EXPECT_THAT(recognize({"--table", traces}).out, ContainsRegex("full_circle +12 +12 "));
    EXPECT_THAT(lines(recognize({"--json", traces}).out)[4],
                StartsWith("{\"gesture\":\"full_circle\",\"expected\":\"full_circle\","));
}

TEST_F(Recognize, NoTracesAreNoResult) {
    const Outcome outcome = recognize({"-"}, "");

    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(succeeded(recognize({"--json", "-"}, "\n")));
}

TEST_F(Recognize, UserFiltersChooseTraces) {
    EXPECT_EQ(lines(recognize({traces, "--user", "u02"}).out).size(), 12U);
    EXPECT_EQ(lines(recognize({traces, "--without-user", "u02"}).out).size(), 24U);
    EXPECT_THAT(recognize({traces, "--user", "u02"}).out, HasSubstr(":13: check by u02"));

    const Outcome none = recognize({traces, "--user", "u09"});
    EXPECT_EQ(none.status, 3);
    EXPECT_EQ(none.out, "");
    EXPECT_EQ(none.err, "vesk: --user: found no trace of user \"u09\", did you mean u01?\n");
    EXPECT_TRUE(refused(recognize({traces, "--user", "u09", "--table"}), 3, "user \"u09\""));
}

TEST_F(Recognize, FlipYTurnsTheTracesOver) {
    std::string mirrored;
    for (const std::string& line : lines(readFile(traces))) {
        json trace = json::parse(line);
        for (json& point : trace["points"]) point[1] = -point[1].get<double>();
        mirrored += trace.dump() + "\n";
    }

    const std::string upright = recognize({"--table", traces}).out;
    EXPECT_EQ(recognize({"--table", "--flip-y", "-"}, mirrored).out, upright);
    EXPECT_NE(recognize({"--table", "-"}, mirrored).out, upright);
}

TEST_F(Recognize, ThePreparationChangesTheScores) {
    const std::vector<std::string> arguments{"--json", "--scores", traces};
    const std::string standard = recognize(arguments).out;

    EXPECT_EQ(recognize(joined(arguments, {"--resample", "41"})).out, standard);
    EXPECT_NE(recognize(joined(arguments, {"--resample", "30"})).out, standard);
    EXPECT_NE(recognize(joined(arguments, {"--resample", "none"})).out, standard);
    EXPECT_TRUE(refused(recognize(joined(arguments, {"--resample", "1"})), 2, "--resample"));
    EXPECT_EQ(recognize(joined(arguments, {"--bearings", "8"})).out, standard);
    EXPECT_NE(recognize(joined(arguments, {"--bearings", "0"})).out, standard);
    EXPECT_TRUE(refused(recognize(joined(arguments, {"--bearings", "-1"})), 2, "--bearings"));
}

TEST_F(Recognize, TwoRunsGiveTheSameBytes) {
    const std::string once = recognize({"--json", "--scores", traces}).out;

    EXPECT_FALSE(once.empty());
    EXPECT_EQ(recognize({"--json", "--scores", traces}).out, once);
}

TEST_F(Recognize, BadTraceIsRefusedAfterTheResultsBeforeIt) {
    const Outcome outcome = recognize({"--json", "-"}, circle + "\nnonsense\n" + circle + "\n");

    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(lines(outcome.out).size(), 1U);
    EXPECT_EQ(lines(outcome.err).size(), 1U);
    EXPECT_THAT(outcome.err, StartsWith("vesk: standard input:2: "));
}

TEST_F(Recognize, MissingTracesAreRefused) {
    EXPECT_TRUE(refused(recognize({path("missing")}), 3, path("missing")));
    std::filesystem::create_directory(path("empty"));
    EXPECT_TRUE(refused(recognize({path("empty")}), 3, path("empty")));
}

TEST_F(Recognize, TracesOfAFolderAreNamedByTheirFiles) {
    std::filesystem::create_directories(path("set/circle"));
    std::string table = "x,y\n";
    const json trace = json::parse(circle);
    for (const json& point : trace.at("points")) {
        table += point[0].dump() + "," + point[1].dump() + "\n";
    }
    writeFile(path("set/circle/drawn-1.csv"), table);
    const Outcome outcome = recognize({"--json", "--label-from", "folder", path("set")});

    ASSERT_TRUE(succeeded(outcome));
    EXPECT_EQ(json::parse(outcome.out).at("expected"), "circle");
    EXPECT_EQ(json::parse(outcome.out).at("gesture"), "circle");
    EXPECT_EQ(json::parse(outcome.out).at("source"), path("set/circle/drawn-1.csv"));
}

TEST_F(Recognize, NamesOfFilesThatBecomeLabelsAreTold) {
    for (const char* name : {"star_1.csv", "star_2.csv"}) writeFile(path(name), "x,y\n1,2\n3,5\n");
    const std::vector<std::string> both{"--json", path("star_1.csv"), path("star_2.csv")};
    const Outcome outcome = recognize(both);

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "vesk: warning: " + path("star_1.csv") +
                               ": found no column \"gesture\", \"label\" or \"class\": labels "
                               "come from the names of files\n");
    EXPECT_EQ(json::parse(lines(outcome.out).at(1)).at("expected"), "star");
    EXPECT_TRUE(succeeded(recognize(joined(both, {"--quiet"}))));
    EXPECT_TRUE(succeeded(recognize(joined(both, {"--label-from", "file"}))));
    writeFile(path("star_1.csv"), "x,y,class\n1,2,check\n3,5,check\n");
    const Outcome named = recognize({"--json", path("star_1.csv")});
    EXPECT_TRUE(succeeded(named));
    EXPECT_EQ(json::parse(named.out).at("expected"), "check");
}

TEST_F(Recognize, AModelInPlaceOfTracesIsTold) {
    const std::string problem = trained + ":1: found what looks like a model file, expected traces";
    EXPECT_TRUE(refused(recognize({trained}), 3, problem));
    EXPECT_TRUE(refused(run({"evaluate", trained}), 3, problem));
}

TEST_F(Recognize, UnknownFormatIsRefusedWithTheKnownOnes) {
    const Outcome outcome = recognize({"--format", "yaml", "-"});

    EXPECT_EQ(outcome.status, 2);
    EXPECT_THAT(outcome.err, HasSubstr("--format"));
    EXPECT_THAT(outcome.err, HasSubstr("found yaml, expected one of csv|jsonl|xml"));
}

TEST_F(Recognize, BadModelIsRefusedByName) {
    const std::string text = readFile(trained);
    const std::string bad = path("bad.txt");
    const auto expectRefused = [&](const std::string& content) {
        writeFile(bad, content);
        EXPECT_TRUE(refused(run({"recognize", "-m", bad, traces}), 3, bad));
    };

    EXPECT_TRUE(refused(run({"recognize", "-m", path("none"), traces}), 3, path("none")));
    EXPECT_TRUE(refused(run({"recognize", "-m", path(""), traces}), 3, path("")));
    expectRefused("");
    expectRefused("hello\n");
    expectRefused(readFile(traces));
    expectRefused(text.substr(0, text.size() / 2));
    std::string infinite = text;
    infinite.replace(infinite.find("\ncircle\n"), 8, "\ncircle\ninf ");
    expectRefused(infinite);
}

TEST_F(Recognize, ModelComesFromStandardInputToo) {
    const Outcome outcome = run({"recognize", "-m", "-", traces}, readFile(trained));

    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, recognize({traces}).out);
    EXPECT_TRUE(
        refused(run({"recognize", "-m", "-", "-"}, readFile(trained)), 2, "standard input"));
}

TEST_F(Recognize, FullDiskIsAFailure) {
    for (const char* option : {"--json", "--table", "--resample=41"}) {
        const Outcome outcome = run({"recognize", "-m", trained, option, traces}, "", "/dev/full");
        EXPECT_EQ(outcome.status, 1) << option;
        EXPECT_EQ(outcome.err, "vesk: standard output: No space left on device\n") << option;
    }
}

TEST_F(Recognize, LabelsAreKeptOffTheTerminalsControls) {
    const Outcome outcome =
        recognize({"-"}, "{\"gesture\":\"\\u001b[31mred\",\"points\":[[3,3],[3,3]]}\n");

    EXPECT_EQ(outcome.out, "-:1: ?[31mred rejected (too short)\n");
}

}  // namespace
