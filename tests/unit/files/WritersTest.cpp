// Writers where a file cannot be had or not be held: `save` tells, the fixed writers stay silent.

#include "Subjects.h"

#include <support/Capture.h>

#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace Vesk::Test {
namespace {

class Writers : public testing::TestWithParam<Kind> {
protected:
    /// `save` says no, and the fixed writer nothing.
    void expectFailure(const std::string& path) {
        EXPECT_FALSE(save(subjects, GetParam(), path)) << path;
        const Capture capture;
        write(subjects, GetParam(), path);
        EXPECT_EQ(capture.text(), "") << path;
    }

    Subjects subjects;
    TemporaryFolder folder;
};

INSTANTIATE_TEST_SUITE_P(OfEveryKind, Writers, testing::ValuesIn(allKinds));

TEST_P(Writers, TellOfWhatCannotBeOpened) {
    expectFailure(folder.path(""));
    expectFailure(folder.path("none/file"));
    expectFailure("");
    writeFile(folder.path("file"), "old");
    const int descriptor = ::open(folder.path("file").c_str(), O_WRONLY | O_APPEND);
    ASSERT_GE(descriptor, 0);
    const std::string path = "/dev/fd/" + std::to_string(descriptor);
    EXPECT_TRUE(save(subjects, GetParam(), path));
    ::close(descriptor);
    expectFailure(path);
}

TEST_P(Writers, TellOfAFullDevice) { expectFailure("/dev/full"); }

TEST_P(Writers, TellOfALimitThatShowsOnClosing) {
    const std::string path = folder.path("file");
    ASSERT_TRUE(save(subjects, GetParam(), path));
    const auto whole = static_cast<rlim_t>(readFile(path).size());
    struct rlimit limit = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    auto* const handler = std::signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = limit;
    for (const rlim_t missing : {1, 5}) {
        small.rlim_cur = whole - missing;
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
        expectFailure(path);
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
        EXPECT_EQ(readFile(path).size(), small.rlim_cur);
    }
    small.rlim_cur = whole;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_TRUE(save(subjects, GetParam(), path));
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    std::signal(SIGXFSZ, handler);
}

}  // namespace
}  // namespace Vesk::Test
