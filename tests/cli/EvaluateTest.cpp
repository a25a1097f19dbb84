#include "Program.h"

#include <gmock/gmock.h>

#include <cmath>
#include <map>

namespace {

using namespace Vesk::Test;
using nlohmann::json;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class Evaluate : public WithTraces {
protected:
    Outcome evaluate(const std::vector<std::string>& options) {
        return run(joined({"evaluate", traces}, joined(smallModel(), options)));
    }

    /// The object that --json prints.
    json evaluated(const std::vector<std::string>& options) {
        const Outcome outcome = evaluate(joined(options, {"--json"}));
        EXPECT_TRUE(succeeded(outcome));
        return json::parse(outcome.out);
    }

    void writeTraces(const std::string& content) { writeFile(path("bad.jsonl"), content); }
};

TEST_F(Evaluate, PrintsTheRatesOfBothMethodsAndATableAGestureAndAFold) {
    const Outcome outcome = evaluate({});

    ASSERT_TRUE(succeeded(outcome));
    const std::vector<std::string> text = lines(outcome.out);
    ASSERT_GE(text.size(), 18U);
    EXPECT_EQ(text[0],
              "36 traces of 3 gestures by 3 users: each user left out of training in turn");
    EXPECT_EQ(text[1], "36 traces tested");
    EXPECT_THAT(text[3], HasSubstr("hidden Markov models      template matcher"));
    std::size_t next = 4;
    for (const char* row : {"arg-max", "correct", "wrong", "rejected", "unknown accepted"}) {
        EXPECT_THAT(text[next++], ContainsRegex(std::string("^") + row + " .* % [(].* to "));
    }
    EXPECT_THAT(text[10], StartsWith("gesture "));
    EXPECT_THAT(text[15], StartsWith("fold "));
    EXPECT_EQ(text.size(), 19U);
}

TEST_F(Evaluate, JsonHoldsEveryTraceAndSumsThatAgreeWithThem) {
    const json object = evaluated({"--examples", "2,3"});

    std::map<std::string, std::size_t> counts;
    for (const json& trace : object["traces"]) {
        const json& verdict = trace["models"];
        const bool right = verdict["gesture"] == trace["expected"];
        ++counts[right ? "correct" : verdict["gesture"] == "" ? "rejected" : "wrong"];
        counts["argMax"] += verdict["likeliest"] == trace["expected"] ? 1 : 0;
        counts["unknownAccepted"] += verdict["asUnknown"] == "" ? 0 : 1;
        EXPECT_EQ(trace["source"], traces);
        EXPECT_NE(trace["templates"]["asUnknown"], trace["expected"]);
        EXPECT_EQ(trace["rejection"] == "", verdict["gesture"] != "");
    }
    ASSERT_EQ(object["traces"].size(), 36U);
    for (const char* rate : {"argMax", "correct", "wrong", "rejected", "unknownAccepted"}) {
        const json& share = object["models"][rate];
        EXPECT_EQ(share["count"], counts[rate]) << rate;
        EXPECT_EQ(share["total"], 36) << rate;
        EXPECT_LE(share["low"], share["share"]) << rate;
        EXPECT_GE(share["high"], share["share"]) << rate;
    }
    std::size_t cells = 0;
    for (const json& row : object["models"]["confusion"]) {
        EXPECT_EQ(row.size(), object["models"]["gestures"].size() + 1);
        for (const json& count : row) cells += count.get<std::size_t>();
    }
    EXPECT_EQ(cells, 36U);
    ASSERT_EQ(object["folds"].size(), 3U);
    EXPECT_EQ(object["folds"][0]["training"], 24);
    EXPECT_EQ(object["folds"][0]["test"], 12);
    ASSERT_EQ(object["fewExamples"].size(), 2U);
    EXPECT_EQ(object["fewExamples"][1]["examples"], 3);
    EXPECT_EQ(object["fewExamples"][1]["models"]["correct"]["total"], 5 * 36);
}

TEST_F(Evaluate, SplitsByPartsOrByOwnExamples) {
    const json byParts = evaluated({"--by", "fold"});
    EXPECT_EQ(byParts["folds"].size(), 5U);
    EXPECT_EQ(byParts["traces"].size(), 36U);
    EXPECT_EQ(evaluated({"--by", "fold", "--folds", "4"})["folds"].size(), 4U);

    const json groups = evaluated({"--by", "user", "--folds", "2"});
    EXPECT_EQ(groups["split"], "each of 2 groups of users left out of training in turn");
    ASSERT_EQ(groups["folds"].size(), 2U);
    EXPECT_EQ(groups["folds"][0]["test"], 24);

    const json own = evaluated({"--by", "own", "--own-examples", "1", "--draws", "1"});
    ASSERT_EQ(own["folds"].size(), 3U);
    EXPECT_EQ(own["folds"][0]["training"], 3);
    EXPECT_EQ(own["traces"].size(), 27U);
}

TEST_F(Evaluate, ExamplesAreDrawnSeveralTimes) {
    const std::vector<std::string> options{"--by", "own", "--own-examples", "1"};
    const json five = evaluated(options);
    ASSERT_EQ(five["folds"].size(), 15U);
    EXPECT_EQ(five["folds"][3]["name"], five["folds"][0]["name"]);
    EXPECT_EQ(five["split"], "each user's own models from 1 example a gesture (5 draws, seed 1)");
    ASSERT_EQ(five["traces"].size(), 5 * 27U);

    // The second draw is the first one of the next seed.
    const json next = evaluated(joined(options, {"--draws", "1", "--seed", "2"}));
    for (std::size_t i = 0; i < 27; ++i) {
        EXPECT_EQ(five["traces"][27 + i]["line"], next["traces"][i]["line"]) << i;
        EXPECT_EQ(five["traces"][27 + i]["margin"], next["traces"][i]["margin"]) << i;
    }

    // Tests of the same traces again make no interval narrower, of 27, as Wilson has it.
    const json share = five["models"]["rejected"];
    EXPECT_EQ(share["total"], 135);
    const double n = 27.0;
    const double z = 1.959963984540054;
    const double p = share["share"];
    const double spread = 2.0 * z * std::sqrt(p * (1.0 - p) / n + z * z / (4.0 * n * n));
    EXPECT_NEAR(share["high"].get<double>() - share["low"].get<double>(),
                spread / (1.0 + z * z / n), 1e-9);

    const std::string text = evaluate(options).out;
    EXPECT_THAT(text, HasSubstr("\n135 traces tested\n"));
    EXPECT_THAT(text, ContainsRegex("u03 alone +45 "));
}

TEST_F(Evaluate, OneUserIsSplitIntoAsManyPartsAsTheRarestGestureHasTraces) {
    const std::string user = json::parse(lines(readFile(traces))[0])["user"];
    const json object = evaluated({"--user", user});
    EXPECT_EQ(object["folds"].size(), 4U);
    EXPECT_EQ(object["split"], "each of 4 parts left out of training in turn (seed 1)");
}

TEST_F(Evaluate, TheSeedDrawsAndNothingElseDoes) {
    const std::vector<std::string> options{"--by", "fold", "--json"};
    const std::string first = evaluate(options).out;
    EXPECT_EQ(evaluate(joined(options, {"--threads", "1"})).out, first);
    EXPECT_NE(evaluate(joined(options, {"--seed", "2"})).out, first);
}

TEST_F(Evaluate, UnknownGesturesAndTablesThatWereNotAskedForAreNotThere) {
    const Outcome outcome = evaluate({"--no-unknown"});
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_THAT(outcome.out, Not(HasSubstr("unknown")));
    EXPECT_THAT(outcome.out, Not(HasSubstr("examples")));
    EXPECT_THAT(evaluate({"--examples", "3"}).out, HasSubstr("\nexamples "));
}

TEST_F(Evaluate, RefusesWhatItCannotSplit) {
    EXPECT_TRUE(refused(evaluate({"--by", "fold", "--folds", "13"}), 3, "expected at least 13"));
    EXPECT_TRUE(refused(evaluate({"--by", "own", "--own-examples", "4"}), 3,
                        "found no user with more than 4 traces of a gesture"));
    const std::string user = json::parse(lines(readFile(traces))[0])["user"];
    EXPECT_TRUE(refused(evaluate({"--by", "user", "--user", user}), 3,
                        "found 1 user, expected at least 2 to leave out in turn"));
    writeTraces("");
    EXPECT_TRUE(refused(run({"evaluate", path("bad.jsonl")}), 3, "found no traces"));
    writeTraces("{\"points\": [[0, 0], [1, 1], [2, 0]], \"user\": \"u\"}\n");
    EXPECT_TRUE(
        refused(run({"evaluate", path("bad.jsonl")}), 3, path("bad.jsonl") + ":1: found no"));
}

TEST_F(Evaluate, RefusesOptionsThatMakeNoSense) {
    EXPECT_TRUE(refused(evaluate({"--by", "usr"}), 2,
                        "found usr, expected one of user|fold|own, did you mean user?"));
    EXPECT_TRUE(refused(evaluate({"--examples", "3,0"}), 2, "--examples: found 0"));
    EXPECT_TRUE(refused(evaluate({"--delta", "10"}), 2, "delta"));
}

}  // namespace
