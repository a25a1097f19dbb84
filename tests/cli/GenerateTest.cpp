#include "Program.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

#include <filesystem>
#include <set>

namespace {

using namespace Vesk::Test;
using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

std::set<std::string> valuesOf(const std::string& text, const char* key) {
    std::set<std::string> values;
    for (const std::string& line : lines(text)) values.insert(json::parse(line).at(key).dump());
    return values;
}

TEST(Generate, WritesLabelledTracesInJsonLines) {
    const Outcome outcome = run({"generate", "-o", "-", "--users", "2", "--repetitions", "3"});

    ASSERT_TRUE(succeeded(outcome));
    const std::vector<std::string> all = lines(outcome.out);
    ASSERT_EQ(all.size(), 12U * 2U * 3U);
    for (const std::string& line : all) {
        const json trace = json::parse(line);
        EXPECT_EQ(trace.at("set"), "synthetic");
        EXPECT_TRUE(trace.at("gesture").is_string());
        EXPECT_TRUE(trace.at("user").is_string());
        EXPECT_TRUE(trace.at("rep").is_number_integer());
        ASSERT_GE(trace.at("points").size(), 8U);
        for (const json& point : trace.at("points")) {
            ASSERT_EQ(point.size(), 2U);
            ASSERT_TRUE(point[0].is_number() && point[1].is_number());
        }
    }
    EXPECT_THAT(valuesOf(outcome.out, "user"), ElementsAre("\"u01\"", "\"u02\""));
    EXPECT_THAT(valuesOf(outcome.out, "rep"), ElementsAre("1", "2", "3"));
    EXPECT_EQ(valuesOf(outcome.out, "gesture").size(), 12U);
}

TEST(Generate, SaysWhatItWrote) {
    const TemporaryFolder folder;
    const std::string file = folder.path("traces.jsonl");
    const Outcome outcome = run({"generate", "-o", file, "--users", "2", "--repetitions", "3"});

    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(outcome.out, "72 traces of 12 gestures by 2 users written to " + file + "\n");
    EXPECT_EQ(lines(readFile(file)).size(), 72U);
    EXPECT_THAT(namesIn(folder.path("")), ElementsAre("traces.jsonl"));
}

TEST(Generate, DefaultsToSixUsersAndTenRepetitions) {
    const Outcome outcome = run({"generate", "-o", "-"});

    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(lines(outcome.out).size(), 12U * 6U * 10U);
}

TEST(Generate, TheSameSeedGivesTheSameBytes) {
    const std::vector<std::string> arguments{"generate", "-o", "-", "--users", "1", "--seed"};
    const std::string once = run(joined(arguments, {"7"})).out;

    EXPECT_FALSE(once.empty());
    EXPECT_TRUE(run(joined(arguments, {"7"})).out == once);
    EXPECT_TRUE(run(joined(arguments, {"8"})).out != once);
    EXPECT_TRUE(run({"generate", "-o", "-"}).out ==
                run({"generate", "-o", "-", "--seed", "1"}).out);
}

TEST(Generate, GestureOptionChoosesAndRepeats) {
    const Outcome outcome = run({"generate", "-o", "-", "--gesture", "star", "--gesture", "eight"});

    EXPECT_TRUE(succeeded(outcome));
    EXPECT_THAT(valuesOf(outcome.out, "gesture"), ElementsAre("\"eight\"", "\"star\""));
}

TEST(Generate, UnsteadinessChangesTheTraces) {
    const std::vector<std::string> arguments{"generate", "-o", "-", "--users", "1"};
    const std::string ordinary = run(arguments).out;

    EXPECT_TRUE(run(joined(arguments, {"--unsteadiness", "1"})).out == ordinary);
    EXPECT_TRUE(run(joined(arguments, {"--unsteadiness", "0"})).out != ordinary);
}

TEST(Generate, RefusesSettingsOutOfRange) {
    const TemporaryFolder folder;
    const std::string file = folder.path("traces.jsonl");
    const std::vector<std::pair<std::string, std::string>> settings{
        {"--users", "0"},           {"--users", "10001"},
        {"--users", "two"},         {"--users", "1e3"},
        {"--repetitions", "0"},     {"--repetitions", "-1"},
        {"--seed", "-1"},           {"--seed", "x"},
        {"--gesture", "square"},    {"--unsteadiness", "-1"},
        {"--unsteadiness", "10.5"}, {"--unsteadiness", "nan"}};
    for (const auto& [option, value] : settings) {
        SCOPED_TRACE(option + " " + value);
        EXPECT_TRUE(refused(run({"generate", "-o", file, option, value}), 2, option));
    }
    EXPECT_TRUE(namesIn(folder.path("")).empty());
}

TEST(Generate, NumbersAreDecimalWhateverTheyBeginWith) {
    const Outcome outcome =
        run({"generate", "-o", "-", "--gesture", "star", "--users", "1", "--repetitions", "010"});

    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(lines(outcome.out).size(), 10U);
    EXPECT_TRUE(refused(run({"generate", "-o", "-", "--users", "0x10"}), 2, "--users"));
}

TEST(Generate, ReplacesAnExistingFileAndKeepsItsPermissions) {
    const TemporaryFolder folder;
    const std::string file = folder.path("traces.jsonl");
    writeFile(file, "old");
    std::filesystem::permissions(file, std::filesystem::perms(0640));

    ASSERT_TRUE(succeeded(run({"generate", "-o", file, "--gesture", "star"})));
    EXPECT_EQ(lines(readFile(file)).size(), 60U);
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0640));
    EXPECT_THAT(namesIn(folder.path("")), ElementsAre("traces.jsonl"));
}

TEST(Generate, FollowsALinkAndReplacesItsTarget) {
    const TemporaryFolder folder;
    writeFile(folder.path("target"), "old");
    std::filesystem::create_symlink("target", folder.path("link"));

    ASSERT_TRUE(succeeded(run({"generate", "-o", folder.path("link"), "--gesture", "star"})));
    EXPECT_TRUE(std::filesystem::is_symlink(folder.path("link")));
    EXPECT_EQ(lines(readFile(folder.path("target"))).size(), 60U);
    EXPECT_THAT(namesIn(folder.path("")), ElementsAre("link", "target"));
}

TEST(Generate, RefusesAPathThatCannotBeWritten) {
    const TemporaryFolder folder;
    const std::string missing = folder.path("missing/traces.jsonl");

    EXPECT_TRUE(refused(run({"generate", "-o", missing}), 1, missing));
    EXPECT_TRUE(refused(run({"generate", "-o", folder.path("")}), 1, folder.path("")));
    EXPECT_TRUE(namesIn(folder.path("")).empty());
}

TEST(Generate, WritesDevicesThrough) {
    EXPECT_TRUE(refused(run({"generate", "-o", "/dev/full"}), 1, "/dev/full"));
    EXPECT_TRUE(succeeded(run({"generate", "-o", "/dev/null"})));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST(Generate, WritesAPipeThrough) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    const Outcome outcome = shell(
        "cat pipe > copy & \"$VESK\" generate -o pipe --gesture star && wait", folder.path(""));

    EXPECT_TRUE(succeeded(outcome));
    EXPECT_EQ(lines(readFile(folder.path("copy"))).size(), 60U);
}

}  // namespace
