#include "Program.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Vesk::Test;
using nlohmann::json;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class Train : public WithTraces {
protected:
    Outcome train(const std::vector<std::string>& options) {
        return run(joined({"train", traces, "-o", path("m.txt")}, joined(smallModel(), options)));
    }

    /// Trains the small model with one setting changed.
    Outcome trainWith(const std::string& option, const std::string& value) {
        std::vector<std::string> arguments{"train", traces, "-o", path("m.txt"), option, value};
        for (std::size_t i = 0; i < smallModel().size(); i += 2) {
            if (smallModel()[i] == option) continue;
            arguments.push_back(smallModel()[i]);
            arguments.push_back(smallModel()[i + 1]);
        }
        return run(arguments);
    }

    /// Trains from a file of the given lines, which is expected to be refused, and looks whether
    /// anything is left behind.
    void expectInputRefused(const std::string& content, const std::string& message) {
        writeFile(path("bad.jsonl"), content);
        SCOPED_TRACE(content);
        EXPECT_TRUE(refused(run({"train", path("bad.jsonl"), "-o", path("m.txt")}), 3, message));
        EXPECT_THAT(namesIn(path("")), ElementsAre("bad.jsonl", "traces.jsonl"));
    }

    /// The prior of each gesture's first model.
    std::map<std::string, double> priorsOf(const std::string& model) const {
        const json shown = json::parse(run({"inspect", model, "--json"}).out);
        std::map<std::string, double> priors;
        for (const json& gesture : shown["gestures"]) {
            priors[gesture["gesture"].get<std::string>()] =
                gesture["models"][0]["prior"].get<double>();
        }
        return priors;
    }

    /// Those of gestures that are asked for more.
    static int lowered(const std::map<std::string, double>& priors) {
        return static_cast<int>(std::count_if(priors.begin(), priors.end(),
                                              [](const auto& it) { return it.second < 1.0; }));
    }

    /// The word at a position of the model's file, from 0: the header has the proximity threshold,
    /// the rotation and the number of directions, then the directions, the name and the sizes.
    std::string word(std::size_t index) const {
        std::ifstream in(path("m.txt"));
        std::string result;
        for (std::size_t i = 0; i <= index; ++i) in >> result;
        return result;
    }
};

TEST_F(Train, WritesAModelAndAShortReport) {
    const Outcome outcome = train({});

    ASSERT_TRUE(succeeded(outcome));
    const std::vector<std::string> report = lines(outcome.out);
    ASSERT_EQ(report.size(), 3U);
    EXPECT_EQ(report[0], "36 traces of 3 gestures by 3 users: 3 models");
    EXPECT_EQ(report[1], "a gesture has to be 100 times as likely as the threshold model");
    EXPECT_EQ(report[2], "model written to " + path("m.txt"));
    EXPECT_EQ(word(2), "16");
    EXPECT_THAT(namesIn(path("")), ElementsAre("m.txt", "traces.jsonl"));
}

TEST_F(Train, TwoRunsGiveTheSameBytes) {
    ASSERT_TRUE(succeeded(train({})));
    const std::string once = readFile(path("m.txt"));
    ASSERT_TRUE(succeeded(train({})));

    EXPECT_TRUE(readFile(path("m.txt")) == once);
}

TEST_F(Train, CalibratesTheRatioWhereThreeUsersDrew) {
    const Outcome outcome = run({"train", traces, "-o", path("m.txt"), "--states", "10"});

    ASSERT_TRUE(succeeded(outcome));
    EXPECT_THAT(outcome.out, HasSubstr("(calibrated in 3 trainings)"));
}

TEST_F(Train, TheShareOfFalseRejectionsMakesTheRatio) {
    const auto ratioWith = [&](const char* share) {
        const Outcome outcome =
            run({"train", traces, "-o", path("m.txt"), "--symbols", "8", "--states", "6",
                 "--resample", "9", "--bearings", "0", "--false-rejection", share});
        EXPECT_TRUE(succeeded(outcome)) << share;
        const json shown = json::parse(run({"inspect", path("m.txt"), "--json"}).out);
        return shown["acceptanceRatio"].get<double>();
    };
    EXPECT_LT(ratioWith("0"), ratioWith("0.2"));
    EXPECT_TRUE(refused(
        run({"train", traces, "-o", path("m.txt"), "--ratio", "9", "--false-rejection", "0.1"}), 2,
        "excludes"));
}

TEST_F(Train, GesturesOfManyTracesAreAskedForMoreWhereTheyReachIt) {
    const std::string many = path("many.jsonl");
    ASSERT_TRUE(succeeded(
        run({"generate", "-o", many, "--users", "5", "--repetitions", "11", "--gesture", "spiral",
             "--gesture", "eight", "--gesture", "caret", "--gesture", "check"})));
    const Outcome outcome = run({"train", many, "-o", path("m.txt"), "--states", "10"});
    ASSERT_TRUE(succeeded(outcome));

    const std::map<std::string, double> priors = priorsOf(path("m.txt"));
    const int strict = lowered(priors);
    ASSERT_GT(strict, 1);
    const std::string higher = "the ratio is higher for " + std::to_string(strict) + " gestures";
    EXPECT_THAT(outcome.out, HasSubstr("\n" + higher + ": vesk inspect shows them\n"));

    // A ratio that is given moves those of all gestures alike.
    const Outcome given =
        run({"train", many, "-o", path("g.txt"), "--states", "10", "--ratio", "30"});
    ASSERT_TRUE(succeeded(given));
    EXPECT_THAT(given.out, HasSubstr("to be 30 times as likely as the threshold model\n" + higher +
                                     " (calibrated in 5 trainings): vesk inspect shows them\n"));
    EXPECT_EQ(priorsOf(path("g.txt")).size(), priors.size());
    // Six digits each, over those of the largest.
    for (const auto& [gesture, prior] : priorsOf(path("g.txt"))) {
        EXPECT_NEAR(prior / priors.at(gesture), 1.0, 1e-4) << gesture;
    }
}

// inspect counts the copies beside the models that they were made of.
TEST_F(Train, TurnedCopiesAreMadeAndTold) {
    const std::string many = path("many.jsonl");
    ASSERT_TRUE(succeeded(run({"generate", "-o", many, "--users", "4", "--repetitions", "5",
                               "--gesture", "spiral", "--gesture", "eight"})));
    const std::string told = "gestures of 20 traces or more also turned, ";
    const auto trained = [&](std::vector<std::string> options) {
        std::vector<std::string> line{"train", many, "-o", path("m.txt"), "--states", "10"};
        line.insert(line.end(), options.begin(), options.end());
        const Outcome outcome = run(line);
        EXPECT_TRUE(succeeded(outcome));
        return outcome.out;
    };
    const auto copies = [&] {
        const json shown = json::parse(run({"inspect", path("m.txt"), "--json"}).out);
        return shown["gestures"][0]["models"][0]["turnedCopies"].get<int>();
    };
    EXPECT_THAT(trained({}), HasSubstr("\n" + told + "2 times to either side\n"));
    EXPECT_EQ(copies(), 4);
    EXPECT_THAT(run({"inspect", path("m.txt")}).out, HasSubstr(" turned copies\n"));
    EXPECT_THAT(trained({"--turns", "1"}), HasSubstr(told + "1 time to either side\n"));
    EXPECT_EQ(copies(), 2);
    EXPECT_THAT(trained({"--turns", "0"}), Not(HasSubstr("turned")));
    EXPECT_EQ(copies(), 0);
    EXPECT_THAT(trained({"--no-calibration"}), Not(HasSubstr("turned")));
    EXPECT_TRUE(refused(run({"train", many, "-o", path("m.txt"), "--turns", "5"}), 2,
                        "expected a number from 0 to 4"));
}

TEST_F(Train, ARatioThatAFileCannotHoldIsInEveryPrior) {
    const Outcome outcome = run({"train", traces, "-o", path("m.txt"), "--states", "10", "--ratio",
                                 "1e8", "--no-calibration"});
    ASSERT_TRUE(succeeded(outcome));
    EXPECT_THAT(outcome.out, HasSubstr("a gesture has to be 100000000 times as likely"));
    EXPECT_THAT(outcome.out, Not(HasSubstr("is higher for")));
    const json shown = json::parse(run({"inspect", path("m.txt"), "--json"}).out);
    EXPECT_NEAR(shown["acceptanceRatio"].get<double>(), 1e8, 1e5);
    EXPECT_LT(shown["transitionProbability"].get<double>(), 1.0);
    EXPECT_EQ(lowered(priorsOf(path("m.txt"))), 0) << "beside each other";
}

TEST_F(Train, RoundingInTheFileAsksNoGestureForMore) {
    const Outcome outcome = run({"train", traces, "-o", path("m.txt"), "--states", "10", "--ratio",
                                 "70000", "--no-calibration"});
    ASSERT_TRUE(succeeded(outcome));
    EXPECT_THAT(outcome.out, HasSubstr("a gesture has to be 70000 times as likely"));
    EXPECT_THAT(outcome.out, Not(HasSubstr("is higher for")));
}

TEST_F(Train, NoCalibrationTakesTheOrdinaryRatio) {
    const Outcome outcome =
        run({"train", traces, "-o", path("m.txt"), "--states", "10", "--no-calibration"});

    ASSERT_TRUE(succeeded(outcome));
    EXPECT_THAT(outcome.out,
                HasSubstr("a gesture has to be 1000 times as likely as the threshold model\n"));
}

TEST_F(Train, SettingsReachTheModel) {
    ASSERT_TRUE(succeeded(trainWith("--symbols", "24")));
    EXPECT_EQ(word(2), "24");

    // Every setting makes another model.
    ASSERT_TRUE(succeeded(train({})));
    const std::string standard = readFile(path("m.txt"));
    const std::vector<std::pair<std::string, std::string>> settings{
        {"--states", "12"},     {"--delta", "2"},         {"--iterations", "0"},
        {"--smoothing", "40"},  {"--ratio", "50"},        {"--resample", "30"},
        {"--resample", "none"}, {"--bearings", "4"},      {"--name", "another"},
        {"--user", "u02"},      {"--without-user", "u02"}};
    for (const auto& [option, value] : settings) {
        SCOPED_TRACE(option);
        ASSERT_TRUE(succeeded(trainWith(option, value)));
        EXPECT_TRUE(readFile(path("m.txt")) != standard);
    }
    ASSERT_TRUE(succeeded(train({"--flip-y"})));
    EXPECT_TRUE(readFile(path("m.txt")) != standard);
}

TEST_F(Train, SubModelsAreUpToTheNumberGiven) {
    ASSERT_TRUE(succeeded(run(
        {"generate", "-o", traces, "--users", "3", "--repetitions", "10", "--gesture", "caret"})));

    EXPECT_THAT(train({"--sub-models", "1"}).out,
                HasSubstr("30 traces of 1 gesture by 3 users: 1 model\n"));
    EXPECT_THAT(train({"--sub-models", "3"}).out, ContainsRegex(": [23] models\n"));
}

TEST_F(Train, ModelIsNamedAfterItsFile) {
    ASSERT_TRUE(succeeded(train({})));
    EXPECT_EQ(word(3 + 16), "m");

    const std::string blank = path("my model.v2.txt");
    ASSERT_TRUE(succeeded(run(joined({"train", traces, "-o", blank}, smallModel()))));
    EXPECT_THAT(readFile(blank), ContainsRegex("\nmy_model\\.v2\n"));
}

TEST_F(Train, NameOptionNamesTheModel) {
    ASSERT_TRUE(succeeded(train({"--name", "signs"})));
    EXPECT_EQ(word(3 + 16), "signs");

    EXPECT_TRUE(refused(train({"--name", "two words"}), 2, "--name"));
    EXPECT_EQ(word(3 + 16), "signs");
}

TEST_F(Train, UserFiltersChooseTraces) {
    EXPECT_THAT(train({"--user", "u02"}).out, HasSubstr("12 traces of 3 gestures by 1 user:"));
    EXPECT_THAT(train({"--user", "u02", "--user", "u03"}).out, HasSubstr("24 traces"));
    EXPECT_THAT(train({"--without-user", "u02"}).out, HasSubstr("24 traces"));
    EXPECT_THAT(train({"--without-user", "u02", "--without-user", "u01"}).out,
                HasSubstr("12 traces"));
    EXPECT_THAT(train({"--user", "u02", "--user", "u03", "--without-user", "u03"}).out,
                HasSubstr("12 traces"));
}

TEST_F(Train, UserThatDrewNothingIsRefused) {
    EXPECT_TRUE(refused(train({"--user", "u09"}), 3, "--user: found no trace of user \"u09\""));
    EXPECT_TRUE(refused(train({"--without-user", "U02"}), 3,
                        "--without-user: found no trace of user \"U02\""));
    EXPECT_FALSE(std::filesystem::exists(path("m.txt")));
}

TEST_F(Train, FilterDoesNotSwallowTheFileThatFollows) {
    EXPECT_TRUE(succeeded(
        run(joined({"train", "--user", "u01", traces, "-o", path("m.txt")}, smallModel()))));
}

TEST_F(Train, SeveralFilesAreOneSet) {
    ASSERT_TRUE(succeeded(run({"generate", "-o", path("more.jsonl"), "--users", "1",
                               "--repetitions", "4", "--gesture", "star"})));
    const Outcome outcome =
        run(joined({"train", traces, path("more.jsonl"), "-o", path("m.txt")}, smallModel()));

    ASSERT_TRUE(succeeded(outcome));
    EXPECT_THAT(outcome.out, HasSubstr("40 traces of 4 gestures by 3 users"));
}

TEST_F(Train, ReadsStandardInput) {
    ASSERT_TRUE(succeeded(train({})));
    const Outcome outcome =
        run(joined({"train", "-", "-o", path("m2.txt"), "--name", "m"}, smallModel()),
            readFile(traces));

    EXPECT_TRUE(succeeded(outcome));
    EXPECT_TRUE(readFile(path("m2.txt")) == readFile(path("m.txt")));
}

TEST_F(Train, WritesStandardOutputWithTheReportAside) {
    ASSERT_TRUE(succeeded(train({"--name", "gestures"})));
    const Outcome outcome = run(joined({"train", traces, "-o", "-"}, smallModel()));

    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(outcome.out == readFile(path("m.txt")));
    EXPECT_THAT(outcome.err, HasSubstr("36 traces of 3 gestures"));
    EXPECT_THAT(outcome.err, Not(HasSubstr("written")));
}

TEST_F(Train, StandsInAPipeline) {
    const Outcome outcome = shell(
        "\"$VESK\" generate -o - --repetitions 3 | \"$VESK\" train - -o - --states 10 --ratio 10 "
        "2> report | \"$VESK\" recognize -m - traces.jsonl --table",
        path(""));

    EXPECT_TRUE(succeeded(outcome));
    EXPECT_THAT(outcome.out, ContainsRegex("in all +36 "));
}

TEST_F(Train, SettingsOutOfRangeAreUsageErrors) {
    const std::vector<std::pair<std::string, std::string>> settings{
        {"--symbols", "1"},          {"--symbols", "361"},     {"--states", "1"},
        {"--states", "201"},         {"--delta", "0"},         {"--sub-models", "0"},
        {"--sub-models", "17"},      {"--iterations", "-1"},   {"--ratio", "0"},
        {"--ratio", "1e13"},         {"--ratio", "nan"},       {"--smoothing", "181"},
        {"--resample", "1"},         {"--resample", "100001"}, {"--resample", "some"},
        {"--false-rejection", "0.6"}};
    for (const auto& [option, value] : settings) {
        SCOPED_TRACE(option + " " + value);
        EXPECT_TRUE(refused(run({"train", traces, "-o", path("m.txt"), option, value}), 2, option));
    }
    EXPECT_TRUE(refused(
        run({"train", traces, "-o", path("m.txt"), "--states", "5", "--delta", "5"}), 2, "delta"));
    EXPECT_THAT(namesIn(path("")), ElementsAre("traces.jsonl"));
}

TEST_F(Train, BadInputIsRefusedWithFileAndLine) {
    const std::string good = "{\"gesture\":\"a\",\"points\":[[0,0],[1,1],[2,0]]}\n";
    const std::string second = path("bad.jsonl") + ":2: ";
    expectInputRefused(good + "not json\n", second);
    expectInputRefused(good + "[1,2]\n", second);
    expectInputRefused(good + "{\"gesture\":\"a\"}\n", second);
    expectInputRefused(good + "{\"gesture\":\"a\",\"points\":[[0,0],[1]]}\n", second);
    expectInputRefused(good + "{\"gesture\":\"a\",\"points\":[[0,0],[1,\"x\"]]}\n", second);
    expectInputRefused(good + "{\"gesture\":5,\"points\":[[0,0],[1,1]]}\n", second);
    expectInputRefused(good + "{\"points\":[[0,0],[1,1]]}\n", second);
    expectInputRefused(good + "{\"gesture\":\"a\",\"points\":[[3,3],[3,3]]}\n", second);
    expectInputRefused(good + "{\"gesture\":\"a\",\"points\":[]}\n", second);
    expectInputRefused("", "no traces");
    expectInputRefused("\n\n", "no traces");
}

TEST_F(Train, MissingFileAndFolderAreRefused) {
    const std::string missing = path("missing.jsonl");
    EXPECT_TRUE(refused(run({"train", missing, "-o", path("m.txt")}), 3, missing));
    std::filesystem::create_directory(path("empty"));
    EXPECT_TRUE(refused(run({"train", path("empty"), "-o", path("m.txt")}), 3, path("empty")));
    EXPECT_THAT(namesIn(path("")), ElementsAre("empty", "traces.jsonl"));
}

TEST_F(Train, FolderAsStandardInputIsRefused) {
    const Outcome outcome = shell("\"$VESK\" train - -o m.txt < .", path(""));

    EXPECT_TRUE(refused(outcome, 3, "standard input"));
}

TEST_F(Train, RefusalLeavesAnExistingModelAsItWas) {
    writeFile(path("m.txt"), "precious");

    EXPECT_TRUE(refused(run({"train", path("missing.jsonl"), "-o", path("m.txt")}), 3, "missing"));
    EXPECT_EQ(readFile(path("m.txt")), "precious");
}

TEST_F(Train, SkipBadLeavesOutWhatHasNoDirection) {
    std::ofstream(traces, std::ios::app)
        << "{\"gesture\":\"circle\",\"user\":\"u01\",\"points\":[[3,3],[3,3]]}\n";
    EXPECT_TRUE(refused(train({}), 3, traces + ":37: "));

    const Outcome outcome = train({"--skip-bad"});
    EXPECT_EQ(outcome.status, 0);
    ASSERT_EQ(lines(outcome.err).size(), 1U);
    EXPECT_THAT(outcome.err, HasSubstr("vesk: left out: " + traces + ":37: "));
    EXPECT_THAT(outcome.out, HasSubstr("36 traces of 3 gestures by 3 users"));
    EXPECT_THAT(outcome.out, HasSubstr("1 trace left out\n"));
}

TEST_F(Train, LabelWithBlanksIsStoredWithUnderscoresAndTold) {
    std::string text = readFile(traces);
    for (std::size_t at; (at = text.find("\"circle\"")) != std::string::npos;) {
        text.replace(at, 8, "\"full circle\"");
    }
    writeFile(traces, text);

    const Outcome outcome = train({});
    EXPECT_EQ(outcome.status, 0);
    ASSERT_EQ(lines(outcome.err).size(), 1U);
    EXPECT_THAT(outcome.err, HasSubstr("vesk: warning: "));
    EXPECT_THAT(outcome.err, HasSubstr("full_circle"));
    EXPECT_THAT(readFile(path("m.txt")), HasSubstr("\nfull_circle\n"));

    const Outcome quiet = train({"--quiet"});
    EXPECT_TRUE(succeeded(quiet));
    EXPECT_EQ(quiet.out, outcome.out);
}

TEST_F(Train, QuietLeavesProblemsAndResults) {
    EXPECT_TRUE(
        refused(run({"train", path("no.jsonl"), "-o", path("m.txt"), "-q"}), 3, "no.jsonl"));
    const Outcome outcome = run(joined({"train", traces, "-o", "-", "-q"}, smallModel()));
    EXPECT_TRUE(succeeded(outcome));
    EXPECT_THAT(outcome.out, HasSubstr("circle"));
}

TEST_F(Train, PathThatCannotBeWrittenIsRefusedBeforeAnythingIsRead) {
    const std::string missing = path("missing/m.txt");

    EXPECT_TRUE(refused(run({"train", path("no.jsonl"), "-o", missing}), 1, missing));
    EXPECT_TRUE(refused(run({"train", path("no.jsonl"), "-o", path("")}), 1, path("")));
}

TEST_F(Train, FullDiskIsAFailure) {
    const std::vector<std::string> arguments = joined({"train", traces, "-o"}, smallModel());
    std::vector<std::string> device = arguments;
    device.insert(device.begin() + 3, "/dev/full");
    EXPECT_TRUE(refused(run(device), 1, "/dev/full: cannot be written: No space left on device"));

    std::vector<std::string> standard = arguments;
    standard.insert(standard.begin() + 3, "-");
    EXPECT_TRUE(refused(run(standard, "", "/dev/full"), 1, "standard output: No space left"));
}

TEST_F(Train, FollowsALinkAndReplacesItsTarget) {
    writeFile(path("target"), "old");
    std::filesystem::create_symlink("target", path("m.txt"));

    ASSERT_TRUE(succeeded(train({})));
    EXPECT_TRUE(std::filesystem::is_symlink(path("m.txt")));
    EXPECT_THAT(readFile(path("target")), HasSubstr("\nzigzag\n"));
}

}  // namespace
