#include "Program.h"

#include <gmock/gmock.h>

namespace {

using namespace Vesk::Test;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

using Codebook = WithTraces;

TEST_F(Codebook, ShowsHowDirectionsAreUsedAndWritesThemForTraining) {
    const std::string file = path("directions.txt");
    const Outcome outcome = run({"codebook", traces, "--symbols", "12", "-o", file});

    ASSERT_TRUE(succeeded(outcome));
    const std::vector<std::string> text = lines(outcome.out);
    ASSERT_EQ(text.size(), 15U);
    EXPECT_EQ(text[0], "symbol  direction    steps");
    EXPECT_THAT(text[13], testing::ContainsRegex("^1728 steps, [0-9.]+ degrees from their "
                                                 "directions in the mean [(][0-9.]+ from evenly"));
    EXPECT_EQ(text[14], "codebook written to " + file);
    EXPECT_EQ(lines(readFile(file)).size(), 12U);

    const std::string model = path("m.txt");
    EXPECT_TRUE(succeeded(run({"train", traces, "--states", "10", "--iterations", "1", "--codebook",
                               file, "-o", model})));
    EXPECT_TRUE(succeeded(run({"recognize", "-m", model, traces})));
}

TEST_F(Codebook, JsonHoldsDirectionsAndTheirSteps) {
    const Outcome learnt = run({"codebook", traces, "--symbols", "8", "--json"});
    const Outcome even = run({"codebook", traces, "--symbols", "8", "--json", "--even"});
    ASSERT_TRUE(succeeded(learnt));
    ASSERT_TRUE(succeeded(even));
    const json of = json::parse(even.out);
    EXPECT_EQ(of["directions"], (json{0.0, 45.0, 90.0, 135.0, 180.0, 225.0, 270.0, 315.0}));
    EXPECT_EQ(of["meanDistance"], of["meanDistanceOfEven"]);
    const json object = json::parse(learnt.out);
    EXPECT_EQ(object["meanDistanceOfEven"], of["meanDistance"]);
    EXPECT_LT(object["meanDistance"], of["meanDistance"]);
    std::size_t steps = 0;
    for (const json& count : object["steps"]) steps += count.get<std::size_t>();
    EXPECT_EQ(steps, 1728U);
}

TEST_F(Codebook, TheCodebookIsTheResultWhereItGoesToStandardOutput) {
    const std::string file = path("directions.txt");
    ASSERT_TRUE(succeeded(run({"codebook", traces, "-o", file})));
    const Outcome outcome = run({"codebook", traces, "-o", "-"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, readFile(file));
    EXPECT_THAT(outcome.err, HasSubstr("symbol  direction"));
    EXPECT_TRUE(succeeded(run({"codebook", traces, "-o", "-", "-q"})));
}

TEST_F(Codebook, RefusesWhatMakesNoSense) {
    EXPECT_TRUE(refused(run({"codebook", traces, "--symbols", "1"}), 2, "--symbols"));
    EXPECT_TRUE(refused(run({"codebook", path("none.jsonl")}), 3, "none.jsonl"));
    EXPECT_TRUE(refused(run({"codebook", traces, "-o", path("no/such")}), 1, "no/such"));
    EXPECT_THAT(namesIn(path("")), ElementsAre("traces.jsonl"));

    writeFile(path("bad"), "0\nninety\n");
    EXPECT_TRUE(refused(run({"train", traces, "-o", path("m"), "--codebook", path("bad")}), 3,
                        "bad:2: found \"ninety\", expected a direction"));
    EXPECT_TRUE(refused(
        run({"train", traces, "-o", path("m"), "--codebook", path("bad"), "--symbols", "8"}), 2,
        "--symbols"));
    EXPECT_THAT(namesIn(path("")), ElementsAre("bad", "traces.jsonl"));
}

}  // namespace
