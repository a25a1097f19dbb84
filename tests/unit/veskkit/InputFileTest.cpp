#include "Gestures.h"

#include <support/Files.h>
#include <veskkit/Error.h>
#include <veskkit/io/InputFile.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace Vesk::Kit {
namespace {

using Vesk::Test::textOf;

TEST(InputFileTest, OpensFilesAndDevices) {
    const Vesk::Test::TemporaryFolder folder;
    Vesk::Test::writeFile(folder.path("f"), "content");
    std::ifstream file = openInput(folder.path("f"));
    std::string word;
    EXPECT_TRUE(file >> word);
    EXPECT_EQ(word, "content");
    std::ifstream device = openInput("/dev/null");
    EXPECT_EQ(device.get(), std::ifstream::traits_type::eof());
}

TEST(InputFileTest, SaysWhyAFileCannotBeOpened) {
    const Vesk::Test::TemporaryFolder folder;
    EXPECT_EQ(textOf<InputError>([&] { openInput(folder.path("none")); }),
              folder.path("none") + ": found no such file, expected a file that can be read");
    EXPECT_EQ(textOf<InputError>([] { openInput(""); }),
              ": found no such file, expected a file that can be read");
    std::filesystem::create_symlink(folder.path("loop"), folder.path("loop"));
    EXPECT_EQ(textOf<InputError>([&] { openInput(folder.path("loop")); }),
              folder.path("loop") + ": cannot be opened: Too many levels of symbolic links");
    EXPECT_EQ(textOf<InputError>([&] { openInput(folder.path(".")); }),
              folder.path(".") + ": found a directory, expected a file");
}

TEST(InputFileTest, SaysThatAFileMayNotBeRead) {
    if (::geteuid() == 0) GTEST_SKIP() << "root may read everything";
    const Vesk::Test::TemporaryFolder folder;
    Vesk::Test::writeFile(folder.path("f"), "content");
    ASSERT_EQ(::chmod(folder.path("f").c_str(), 0), 0);
    EXPECT_EQ(textOf<InputError>([&] { openInput(folder.path("f")); }),
              folder.path("f") + ": cannot be opened: Permission denied");
}

}  // namespace
}  // namespace Vesk::Kit
