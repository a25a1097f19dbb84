#include "Gestures.h"

#include <support/Files.h>
#include <veskkit/Error.h>
#include <veskkit/io/AtomicFile.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Vesk::Kit {
namespace {

namespace fs = std::filesystem;
using Vesk::Test::readFile;
using Vesk::Test::textOf;
using Vesk::Test::writeFile;

/// What stands in a folder.
std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

mode_t modeOf(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

class AtomicFileTest : public testing::Test {
protected:
    std::string path(const std::string& name) const { return folder.path(name); }
    std::vector<std::string> names() const { return namesIn(folder.path("")); }

    Vesk::Test::TemporaryFolder folder;
};

TEST_F(AtomicFileTest, AppearsAtCommitAndNotBefore) {
    AtomicFile file(path("out"));
    file.stream() << "text " << 5;
    EXPECT_FALSE(fs::exists(path("out")));
    file.commit();
    EXPECT_EQ(readFile(path("out")), "text 5");
    EXPECT_EQ(names(), std::vector<std::string>{"out"});
}

TEST_F(AtomicFileTest, TakesMoreThanItsBuffer) {
    const std::string text(300001, 'x');
    writeWhole(path("out"), text);
    EXPECT_EQ(readFile(path("out")), text);
}

TEST_F(AtomicFileTest, WithoutCommitNothingIsLeft) {
    writeFile(path("old"), "before");
    {
        AtomicFile replaced(path("old"));
        replaced.stream() << std::string(100000, 'x') << std::flush;
        AtomicFile fresh(path("new"));
        fresh.stream() << "x";
        EXPECT_EQ(names().size(), 3u);
    }
    EXPECT_EQ(readFile(path("old")), "before");
    EXPECT_EQ(names(), std::vector<std::string>{"old"});
}

TEST_F(AtomicFileTest, TheTemporaryLiesInTheSameFolder) {
    fs::create_directory(path("sub"));
    AtomicFile file(path("sub/out"));
    const std::vector<std::string> inside = namesIn(path("sub"));
    ASSERT_EQ(inside.size(), 1u);
    EXPECT_EQ(inside[0].rfind(".vesk-", 0), 0u) << inside[0];
}

TEST_F(AtomicFileTest, ReplacesAFileAndKeepsItsPermissions) {
    writeFile(path("out"), "a longer text than the new one");
    ASSERT_EQ(::chmod(path("out").c_str(), 0640), 0);
    writeWhole(path("out"), "new");
    EXPECT_EQ(readFile(path("out")), "new");
    EXPECT_EQ(modeOf(path("out")), 0640u);
}

TEST_F(AtomicFileTest, ANewFileHasThePermissionsOfAnyOther) {
    writeFile(path("plain"), "");
    writeWhole(path("out"), "new");
    EXPECT_EQ(modeOf(path("out")), modeOf(path("plain")));
}

TEST_F(AtomicFileTest, FollowsLinksAndReplacesTheirTarget) {
    fs::create_directory(path("sub"));
    writeFile(path("sub/target"), "before");
    fs::create_symlink("sub/target", path("link"));
    fs::create_symlink(path("link"), path("second"));
    writeWhole(path("second"), "after");
    EXPECT_EQ(readFile(path("sub/target")), "after");
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_TRUE(fs::is_symlink(path("second")));
    EXPECT_EQ(namesIn(path("sub")), std::vector<std::string>{"target"});
}

TEST_F(AtomicFileTest, MakesTheTargetOfADanglingLink) {
    fs::create_symlink("target", path("link"));
    writeWhole(path("link"), "new");
    EXPECT_EQ(readFile(path("target")), "new");
    EXPECT_TRUE(fs::is_symlink(path("link")));
}

TEST_F(AtomicFileTest, WritesThroughPipes) {
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    std::string received;
    std::thread reader([&] { received = readFile(path("pipe")); });
    writeWhole(path("pipe"), "through");
    reader.join();
    EXPECT_EQ(received, "through");
    EXPECT_TRUE(fs::is_fifo(path("pipe")));
}

TEST_F(AtomicFileTest, WritesThroughDevices) {
    writeWhole("/dev/null", "gone");
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_EQ(textOf<OutputError>([] { writeWhole("/dev/full", "x"); }),
              "/dev/full: cannot be written: No space left on device");
}

TEST_F(AtomicFileTest, WritesThroughAnOpenDescriptorAfterWhatIsThere) {
    const int descriptor = ::open(path("out").c_str(), O_WRONLY | O_CREAT, 0600);
    ASSERT_GE(descriptor, 0);
    ASSERT_EQ(::write(descriptor, "head ", 5), 5);
    for (const std::string start : {"/dev/fd/", "/proc/self/fd/"}) {
        writeWhole(start + std::to_string(descriptor), "text ");
    }
    struct stat status = {};
    ASSERT_EQ(::fstat(descriptor, &status), 0);
    EXPECT_EQ(status.st_nlink, 1u) << "the file was replaced";
    ::close(descriptor);
    EXPECT_EQ(readFile(path("out")), "head text text ");
}

TEST_F(AtomicFileTest, ALateWriteErrorLeavesTheOldFile) {
    writeFile(path("out"), "before");
    struct rlimit limit = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    struct rlimit small = limit;
    small.rlim_cur = 1000;
    auto* const handler = ::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const std::string text =
        textOf<OutputError>([&] { writeWhole(path("out"), std::string(5000, 'x')); });
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    ::signal(SIGXFSZ, handler);
    EXPECT_EQ(text, path("out") + ": cannot be written: File too large");
    EXPECT_EQ(readFile(path("out")), "before");
    EXPECT_EQ(names(), std::vector<std::string>{"out"});
}

TEST_F(AtomicFileTest, RefusesFoldersMissingFoldersAndLoops) {
    EXPECT_EQ(textOf<OutputError>([&] { AtomicFile(path(".")); }),
              path(".") + ": cannot be written: Is a directory");
    EXPECT_EQ(textOf<OutputError>([&] { AtomicFile(path("none/out")); }),
              path("none/out") + ": cannot be written: No such file or directory");
    EXPECT_EQ(textOf<OutputError>([&] { AtomicFile(path("new/")); }),
              path("new/") + ": cannot be written: No such file or directory");
    EXPECT_EQ(textOf<OutputError>([] { AtomicFile(""); }),
              ": cannot be written: No such file or directory");
    writeFile(path("file"), "");
    EXPECT_EQ(textOf<OutputError>([&] { AtomicFile(path("file/out")); }),
              path("file/out") + ": cannot be written: Not a directory");
    fs::create_symlink("loop", path("loop"));
    EXPECT_EQ(textOf<OutputError>([&] { AtomicFile(path("loop")); }),
              path("loop") + ": cannot be written: Too many levels of symbolic links");
}

TEST_F(AtomicFileTest, RefusesAFileThatMayNotBeWritten) {
    if (::geteuid() == 0) GTEST_SKIP() << "root may write everything";
    writeFile(path("out"), "before");
    ASSERT_EQ(::chmod(path("out").c_str(), 0444), 0);
    EXPECT_EQ(textOf<OutputError>([&] { AtomicFile(path("out")); }),
              path("out") + ": cannot be written: Permission denied");
    EXPECT_EQ(readFile(path("out")), "before");
}

TEST_F(AtomicFileTest, IsWrittenOnce) {
    AtomicFile file(path("out"));
    file.commit();
    EXPECT_EQ(textOf<OutputError>([&] { file.commit(); }), path("out") + ": already written");
    EXPECT_EQ(readFile(path("out")), "");
}

TEST_F(AtomicFileTest, SeveralAtOnceDoNotMeet) {
    std::vector<std::thread> writers;
    for (int i = 0; i < 8; ++i) {
        writers.emplace_back([this, i] {
            writeWhole(path(std::string("out").append(std::to_string(i))),
                       std::string(10000, static_cast<char>('a' + i)));
        });
    }
    for (std::thread& writer : writers) writer.join();
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(readFile(path(std::string("out").append(std::to_string(i)))),
                  std::string(10000, static_cast<char>('a' + i)));
    }
    EXPECT_EQ(names().size(), 8u);
}

}  // namespace
}  // namespace Vesk::Kit
