#include "Program.h"

#include <gmock/gmock.h>

namespace {

using namespace Vesk::Test;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

class Tune : public WithTraces {
protected:
    Outcome tune(const std::vector<std::string>& options) {
        return run(joined({"tune", traces, "--symbols", "16", "--states", "10", "--iterations", "1",
                           "--rounds", "1", "--target-false-accept", "0.3"},
                          options));
    }
};

TEST_F(Tune, ShowsWhatItTriedTheTradeOffAndTheBestAndWritesTheModel) {
    const std::string file = path("tuned.hmm");
    const Outcome outcome = tune({"-o", file});

    ASSERT_TRUE(succeeded(outcome));
    const std::vector<std::string> text = lines(outcome.out);
    ASSERT_GE(text.size(), 20U);
    EXPECT_EQ(text[0], "36 traces of 3 gestures: each user left out of training in turn");
    EXPECT_EQ(text[1], "no more than 30 % of unknown gestures to be accepted");
    EXPECT_THAT(text[3], StartsWith("tried "));
    EXPECT_THAT(text[4], StartsWith("start "));
    EXPECT_THAT(text[5], StartsWith("symbols 24 ")) << "16 are those of the start";
    EXPECT_THAT(outcome.out, HasSubstr("  chosen\n"));
    EXPECT_THAT(text[text.size() - 2], StartsWith("best: --symbols "));
    EXPECT_EQ(text.back(), "model written to " + file);

    const Outcome recognized = run({"recognize", "-m", file, traces});
    EXPECT_TRUE(succeeded(recognized));
}

TEST_F(Tune, TheBestLineTrainsTheSameModel) {
    const std::string tuned = path("tuned.hmm");
    const std::string trained = path("trained.hmm");
    const Outcome outcome = tune({"-o", tuned, "--name", "same"});
    ASSERT_TRUE(succeeded(outcome));
    const std::vector<std::string> text = lines(outcome.out);
    const std::string options = text[text.size() - 2].substr(std::string("best:").size());

    const Outcome again = shell(
        "$VESK train " + traces + " --iterations 1 --name same -o " + trained + options, path(""));
    ASSERT_EQ(again.status, 0) << again.err;
    EXPECT_EQ(readFile(tuned), readFile(trained));
}

TEST_F(Tune, JsonHoldsEveryTrialAndTheWholeCurve) {
    const Outcome outcome = tune({"--json"});
    ASSERT_TRUE(succeeded(outcome));
    const json object = json::parse(outcome.out);
    EXPECT_EQ(object["falseAccept"], 0.3);
    EXPECT_EQ(object["tradeOff"].size(), 73U);
    ASSERT_GE(object["trials"].size(), 10U);
    EXPECT_EQ(object["trials"][0]["change"], "start");
    json best = object["trials"][0];
    for (const json& trial : object["trials"]) {
        EXPECT_EQ(trial["result"]["correct"]["total"], 36);
        EXPECT_EQ(trial["result"]["unknownAccepted"]["total"], 36);
        if (trial["adopted"]) best = trial;
    }
    EXPECT_EQ(object["best"]["ratio"], best["result"]["ratio"]);
    EXPECT_EQ(object["best"]["symbols"], best["settings"]["symbols"]);
    EXPECT_EQ(object["best"]["states"], best["settings"]["states"]);
    EXPECT_LE(best["result"]["unknownAccepted"]["share"], 0.3);
}

TEST_F(Tune, TheModelIsTheResultWhereItGoesToStandardOutput) {
    const std::string file = path("tuned.hmm");
    ASSERT_TRUE(succeeded(tune({"-o", file, "--name", "n"})));
    const Outcome outcome = tune({"-o", "-", "--name", "n"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, readFile(file));
    EXPECT_THAT(outcome.err, HasSubstr("best: --symbols"));
}

TEST_F(Tune, WarnsWhereNoSettingKeepsUnknownGesturesOut) {
    // The same drawings under two names: one of them unknown is always taken for the other.
    std::string content;
    for (const std::string& line : lines(readFile(traces))) {
        json trace = json::parse(line);
        content += trace.dump() + "\n";
        trace["gesture"] = trace["gesture"].get<std::string>() + "2";
        content += trace.dump() + "\n";
    }
    writeFile(path("twice.jsonl"), content);
    const Outcome outcome =
        run({"tune", path("twice.jsonl"), "--symbols", "16", "--states", "10", "--iterations", "1",
             "--discrimination", "1", "--rounds", "1", "--target-false-accept", "0"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, testing::ContainsRegex("^vesk: warning: .* of unknown gestures are "
                                                    "accepted even at the largest ratio, expected "
                                                    "no more than 0 %: most often .* as .*2?"));
    EXPECT_EQ(lines(outcome.err).size(), 1U);
}

TEST_F(Tune, PartsAreDrawnFromTheSeed) {
    const Outcome first = tune({"--by", "fold", "--folds", "2", "--seed", "3"});
    const Outcome again = tune({"--by", "fold", "--folds", "2", "--seed", "3", "--threads", "1"});
    ASSERT_TRUE(succeeded(first));
    EXPECT_EQ(first.out, again.out);
    EXPECT_EQ(lines(first.out)[0],
              "36 traces of 3 gestures: each of 2 parts left out of training in turn (seed 3)");
}

TEST_F(Tune, RefusesWhatMakesNoSenseBeforeAnyWork) {
    EXPECT_TRUE(refused(tune({"--target-false-accept", "2"}), 2, "--target-false-accept"));
    EXPECT_TRUE(refused(tune({"--by", "own"}), 2, "--by"));
    EXPECT_TRUE(refused(tune({"--rounds", "0"}), 2, "--rounds"));
    EXPECT_TRUE(refused(tune({"--name", "two words", "-o", path("m")}), 2, "--name"));
    EXPECT_TRUE(refused(tune({"-o", path("no/such/folder")}), 1, "no/such"));
    EXPECT_TRUE(refused(run({"tune", path("missing.jsonl")}), 3, "missing.jsonl"));
    EXPECT_TRUE(refused(tune({"--user", "nobody"}), 3, "nobody"));
    EXPECT_THAT(namesIn(path("")), ElementsAre("traces.jsonl"));
}

}  // namespace
