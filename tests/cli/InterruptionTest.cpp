#include "Program.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

namespace {

using namespace Vesk::Test;
using testing::ElementsAre;

/// Waits until a condition holds, half a minute at most.
template <class Condition>
bool eventually(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

off_t largestFileIn(const std::string& folder) {
    off_t largest = 0;
    for (const std::string& name : namesIn(folder)) {
        struct stat state {};
        if (stat((folder + name).c_str(), &state) == 0) largest = std::max(largest, state.st_size);
    }
    return largest;
}

const std::vector<std::string> endless{"--users", "10000", "--repetitions", "100000"};

TEST(Interruption, RemovesTheTemporaryFileAndKeepsTheOldOne) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        const TemporaryFolder folder;
        writeFile(folder.path("traces"), "old");
        const TemporaryFolder aside;
        const int messages = open(aside.path("err").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        const pid_t program =
            start(joined({"generate", "-o", folder.path("traces")}, endless), {-1, -1, messages});
        // The temporary file is there, and something is in it.
        ASSERT_TRUE(eventually([&] { return largestFileIn(folder.path("")) > 1000; }));

        kill(program, signal);
        EXPECT_EQ(await(program), 128 + signal);
        close(messages);
        EXPECT_THAT(namesIn(folder.path("")), ElementsAre("traces"));
        EXPECT_EQ(readFile(folder.path("traces")), "old");
        EXPECT_EQ(readFile(aside.path("err")), "vesk: interrupted\n");
    }
}

class InterruptionOfRecognition : public WithTraces {};

TEST_F(InterruptionOfRecognition, EndsAProgramThatWaitsForInput) {
    const std::string trained = model();
    int input[2];
    int output[2];
    ASSERT_EQ(pipe2(input, O_CLOEXEC), 0);
    ASSERT_EQ(pipe2(output, O_CLOEXEC), 0);
    const pid_t program = start({"recognize", "-m", trained, "-"}, {input[0], output[1], -1});

    // The answer to the first trace comes although no second one does.
    const std::string trace = lines(readFile(traces))[0] + "\n";
    ASSERT_EQ(write(input[1], trace.data(), trace.size()), static_cast<ssize_t>(trace.size()));
    char answer[200] = {};
    pollfd awaited{output[0], POLLIN, 0};
    EXPECT_EQ(poll(&awaited, 1, 30000), 1);
    if (awaited.revents != 0) {
        EXPECT_GT(read(output[0], answer, sizeof answer - 1), 0);
    }
    EXPECT_THAT(std::string(answer), testing::StartsWith("-:1: check by u01 recognised as check"));

    kill(program, SIGINT);
    EXPECT_EQ(await(program), 130);
    for (const int descriptor : {input[0], input[1], output[0], output[1]}) close(descriptor);
}

TEST(Interruption, IsIgnoredWhereTheProgramWasStartedSo) {
    const TemporaryFolder folder;
    const pid_t program = startShell(
        "trap '' INT; exec \"$VESK\" generate -o traces --users 10000 --repetitions 100000",
        folder.path(""));
    ASSERT_TRUE(eventually([&] { return largestFileIn(folder.path("")) > 1000; }));

    kill(program, SIGINT);
    const off_t before = largestFileIn(folder.path(""));
    // It writes on.
    EXPECT_TRUE(eventually([&] { return largestFileIn(folder.path("")) > before + 1000000; }));
    kill(program, SIGTERM);
    EXPECT_EQ(await(program), 128 + SIGTERM);
    EXPECT_TRUE(namesIn(folder.path("")).empty());
}

TEST(Interruption, EndsAProgramThatWaitsForAPipesReader) {
    const TemporaryFolder folder;
    ASSERT_EQ(mkfifo(folder.path("pipe").c_str(), 0600), 0);
    const pid_t program =
        start(joined({"generate", "-o", folder.path("pipe")}, endless), {-1, -1, -1});
    // The program writes until the pipe is full, and then waits.
    const int reader = open(folder.path("pipe").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(reader, 0);
    int waiting = 0;
    ASSERT_TRUE(eventually([&] {
        const int before = waiting;
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        return ioctl(reader, FIONREAD, &waiting) == 0 && waiting > 4096 && waiting == before;
    }));

    kill(program, SIGINT);
    EXPECT_EQ(await(program), 130);
    close(reader);
    EXPECT_THAT(namesIn(folder.path("")), ElementsAre("pipe"));
}

}  // namespace
