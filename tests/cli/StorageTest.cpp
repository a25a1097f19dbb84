// What becomes of files where storage or time runs out.

#include "Program.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <thread>

namespace {

using namespace Vesk::Test;
using testing::HasSubstr;

const std::vector<std::string> few{"--users", "1", "--repetitions", "2"};

/// Leaves where no file system of one's own can be had.
#define REQUIRE_OWN_FILE_SYSTEM(outcome) \
    if ((outcome).status == 77) GTEST_SKIP() << "no file system of one's own: " << (outcome).err

/// Runs the program in "small", a file system of 64 KiB that holds "traces", and a link to it.
Outcome onSmallDisk(const std::string& command, const TemporaryFolder& folder) {
    return shell(
        "mkdir small && exec unshare -rm sh -c '"
        "mount -t tmpfs -o size=64k none small 2>/dev/null || exit 77; cd small; "
        "printf old >traces; ln -s traces link; " +
            command + "; status=$?; ls -A | tr \"\\n\" \" \"; cat traces; exit $status'",
        folder.path(""));
}

TEST(Storage, AFullDiskLeavesTheOldFileWhole) {
    const TemporaryFolder folder;
    const Outcome outcome =
        onSmallDisk("\"$VESK\" generate -o link --users 9 --repetitions 9", folder);
    REQUIRE_OWN_FILE_SYSTEM(outcome);
    EXPECT_EQ(outcome.status, 1) << outcome.err;
    EXPECT_EQ(outcome.err, "vesk: link: cannot be written: No space left on device\n");
    EXPECT_EQ(outcome.out, "link traces old");
}

TEST(Storage, ALimitOnTheSizeOfFilesIsAMessage) {
    const TemporaryFolder folder;
    writeFile(folder.path("traces"), "old");
    const Outcome outcome =
        shell("ulimit -f 1; exec \"$VESK\" generate -o traces", folder.path(""));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "vesk: traces: cannot be written: File too large\n");
    EXPECT_EQ(readFile(folder.path("traces")), "old");
    EXPECT_EQ(namesIn(folder.path("")), std::vector<std::string>{"traces"});
}

/// Two hundred runs, each ended by a signal at a moment of chance.
class Ended : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(By, Ended, testing::Values(SIGINT, SIGKILL),
                         [](const testing::TestParamInfo<int>& signal) {
                             return signal.param == SIGINT ? "Interruption" : "Kill";
                         });

TEST_P(Ended, LeavesTheOldFileOrTheNewOneWhole) {
    const TemporaryFolder folder;
    const std::string traces = folder.path("traces");
    std::filesystem::create_symlink("traces", folder.path("link"));
    const std::vector<std::string> generate = joined({"generate", "-o", folder.path("link")}, few);
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(run(generate).status, 0);
    const auto duration = std::chrono::steady_clock::now() - start;
    const std::string whole = readFile(traces);

    std::mt19937 random(7);
    int kept = 0;
    int replaced = 0;
    for (int round = 0; round < 100; ++round) {
        writeFile(traces, "old");
        const pid_t program = Vesk::Test::start(generate, {});
        std::this_thread::sleep_for(duration * (random() % 1000) / 500);
        kill(program, GetParam());
        await(program);
        const std::string found = readFile(traces);
        ASSERT_TRUE(found == "old" || found == whole) << round << ": " << found.size();
        ++(found == "old" ? kept : replaced);
        ASSERT_TRUE(std::filesystem::is_symlink(folder.path("link")));
        for (const std::string& name : namesIn(folder.path(""))) {
            if (name == "link" || name == "traces") continue;
            // Nobody can tidy up after a kill.
            ASSERT_EQ(GetParam(), SIGKILL) << name;
            ASSERT_EQ(name.rfind(".vesk-", 0), 0u) << name;
            std::filesystem::remove(folder.path(name));
        }
    }
    EXPECT_GT(kept, 0);
    EXPECT_GT(replaced, 0);
}

}  // namespace
