// What holds for the program as a whole.

#include "Program.h"

#include <gmock/gmock.h>

namespace {

using namespace Vesk::Test;
using testing::HasSubstr;
using testing::StartsWith;

TEST(Program, HelpNamesEverySubcommandAndTheExitStatus) {
    const Outcome outcome = run({"--help"});

    EXPECT_TRUE(succeeded(outcome));
    for (const char* text : {"train", "tune", "recognize", "codebook", "evaluate", "export",
                             "convert", "generate", "--version", "130 interrupted"}) {
        EXPECT_THAT(outcome.out, HasSubstr(text));
    }
}

TEST(Program, EverySubcommandHasHelpThatNamesItsOptions) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> expected{
        {"generate",
         {"-o,--output", "--users", "--repetitions", "--seed", "--gesture", "--unsteadiness"}},
        {"train",
         {"TRACES", "-o,--output", "--name", "--user", "--without-user", "--flip-y", "--resample",
          "--bearings", "--skip-bad", "--symbols", "--states", "--delta", "--sub-models",
          "--iterations", "--smoothing", "--ratio", "--false-rejection", "--no-calibration",
          "--codebook"}},
        {"tune",
         {"TRACES", "-o,--output", "--name", "--target-false-accept", "--by", "--folds", "--rounds",
          "--seed", "--json", "--user", "--states", "--threads"}},
        {"codebook", {"TRACES", "-o,--output", "--symbols", "--even", "--json", "--flip-y"}},
        {"convert", {"TRACES", "--to", "--format", "--label-from", "--user", "--flip-y"}},
        {"export", {"MODEL", "-o,--output"}},
        {"evaluate",
         {"TRACES", "--by", "--folds", "--own-examples", "--examples", "--seed", "--no-unknown",
          "--json", "--user", "--states", "--threads"}},
        {"recognize",
         {"TRACES", "-m,--model", "--user", "--without-user", "--flip-y", "--resample",
          "--bearings", "--json", "--scores", "--table"}}};
    for (const auto& [subcommand, options] : expected) {
        const Outcome outcome = run({subcommand, "--help"});
        EXPECT_TRUE(succeeded(outcome));
        for (const std::string& option : options) {
            EXPECT_THAT(outcome.out, HasSubstr(option)) << subcommand;
        }
        EXPECT_THAT(outcome.out, HasSubstr("-q,--quiet"));
        EXPECT_THAT(outcome.out, HasSubstr("\nExample: vesk " + subcommand + " "));
        EXPECT_THAT(outcome.out, HasSubstr("130 interrupted"));
    }
}

TEST(Program, HelpFitsIntoAHundredColumns) {
    std::size_t continued = 0;
    for (const char* subcommand : {"train", "tune", "recognize", "evaluate", "doctor", "inspect",
                                   "export", "convert", "codebook", "generate", ""}) {
        std::vector<std::string> arguments{subcommand, "--help"};
        if (arguments.front().empty()) arguments.erase(arguments.begin());
        for (const std::string& line : lines(run(arguments).out)) {
            EXPECT_LE(line.size(), 100U) << line;
            if (testing::Matches(StartsWith(std::string(30, ' ')))(line)) ++continued;
        }
    }
    EXPECT_GT(continued, 20U);
    EXPECT_THAT(run({"codebook", "--help"}).out,
                HasSubstr("XML gesture\n" + std::string(30, ' ') + "logs; - is standard input\n"));
}

TEST(Program, HelpTellsWhatItsWordsMean) {
    EXPECT_THAT(run({"recognize", "--help"}).out, HasSubstr("rejected: taken for no gesture"));
    EXPECT_THAT(run({"train", "--help"}).out, HasSubstr("below 1"));
}

TEST(Program, VersionIsOneLine) {
    const Outcome outcome = run({"--version"});

    EXPECT_TRUE(succeeded(outcome));
    EXPECT_THAT(outcome.out, testing::MatchesRegex("vesk [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(Program, WithoutSubcommandItPointsToItsHelp) {
    EXPECT_TRUE(refused(run({}), 2, "(see vesk --help)"));
}

TEST(Program, UnknownSubcommandIsNamed) {
    EXPECT_EQ(run({"recognise", "-m", "model"}).err,
              "vesk: found recognise, expected a subcommand, did you mean recognize? (see vesk "
              "--help)\n");
    EXPECT_TRUE(refused(run({"recognise"}), 2, "recognise"));
    EXPECT_TRUE(refused(run({"--quiet"}), 2, "--quiet"));
}

TEST(Program, UnknownOptionIsNamedWithTheHelpToRead) {
    const Outcome outcome = run({"generate", "-o", "-", "--uesrs", "3"});

    EXPECT_TRUE(refused(outcome, 2, "--uesrs"));
    EXPECT_THAT(outcome.err, HasSubstr("(see vesk generate --help)"));
}

TEST(Program, WhatWasProbablyMeantIsNamed) {
    EXPECT_EQ(run({"trian"}).err,
              "vesk: found trian, expected a subcommand, did you mean train? (see vesk --help)\n");
    EXPECT_EQ(run({"generate", "--uesrs=3"}).err,
              "vesk: found --uesrs, expected an option of vesk generate, did you mean --users? "
              "(see vesk generate --help)\n");
    EXPECT_EQ(run({"generate", "-o", "-", "--gesture", "sTar"}).err,
              "vesk: --gesture: found sTar, expected one of arrow|caret|check|circle|eight|loop|"
              "question|rectangle|spiral|star|triangle|zigzag, did you mean star? (see "
              "vesk generate --help)\n");
    // Nothing is near.
    EXPECT_EQ(
        run({"train", "--frobnicate"}).err,
        "vesk: found --frobnicate, expected an option of vesk train (see vesk train --help)\n");
    EXPECT_TRUE(
        refused(run({"generate", "-o", "-", "rest"}), 2, "found rest, expected options only"));
}

TEST(Program, MissingRequiredOptionIsNamed) {
    EXPECT_TRUE(refused(run({"generate"}), 2, "--output"));
    EXPECT_TRUE(refused(run({"train", "traces.jsonl"}), 2, "--output"));
    EXPECT_TRUE(refused(run({"train", "-o", "model.txt"}), 2, "TRACES"));
    EXPECT_TRUE(refused(run({"recognize", "traces.jsonl"}), 2, "--model"));
    EXPECT_TRUE(refused(run({"recognize", "-m", "model.txt"}), 2, "TRACES"));
}

TEST(Program, MessageStaysOneLineWhateverTheArgumentsHold) {
    EXPECT_TRUE(refused(run({"generate", "-o", "-", "--users", "3\n4\x1b[31m"}), 2, "3?4?[31m"));
}

TEST(Program, FullDiskBehindStandardOutputIsAFailure) {
    const char* message = "vesk: standard output: No space left on device\n";
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"--help"}, {"--version"}, {"generate", "-o", "-"}}) {
        const Outcome outcome = run(arguments, "", "/dev/full");
        EXPECT_EQ(outcome.status, 1) << arguments.front();
        EXPECT_EQ(outcome.err, message) << arguments.front();
    }
}

TEST(Program, ReaderThatHasSeenEnoughIsNoNewsAndNoSignal) {
    const TemporaryFolder folder;
    const Outcome outcome =
        shell("{ \"$VESK\" generate -o - --users 50; echo $? > status; } | head -n 1 > first",
              folder.path(""));

    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(readFile(folder.path("status")), "1\n");
    EXPECT_THAT(readFile(folder.path("first")), StartsWith("{\"set\":\"synthetic\""));
}

TEST(Program, ClosedStandardOutputIsAFailure) {
    const TemporaryFolder folder;
    const Outcome outcome =
        shell("\"$VESK\" generate -o traces --users 1 --repetitions 1 --gesture star >&-",
              folder.path(""));

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "vesk: standard output: Bad file descriptor\n");
    EXPECT_EQ(lines(readFile(folder.path("traces"))).size(), 1U);
}

}  // namespace
