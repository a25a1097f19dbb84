// What no writer wrote, for the readers of the library: devices, long words, other line ends and
// marks. tests/unit/hmm, leftright, recognition and quantizer look at each reader's own rules, and
// fuzz/ at everything else.

#include "Subjects.h"

#include <support/BitEqual.h>

#include <gtest/gtest.h>

#include <ctime>
#include <limits>
#include <memory>
#include <new>
#include <string>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;
using Vesk::ML::VectorQuantizer2D;

std::unique_ptr<HMM> general(const std::string& path) {
    return std::unique_ptr<HMM>(Vesk::ML::load(path.c_str()));
}
std::unique_ptr<LeftRightHMM> leftRight(const std::string& path) {
    return std::unique_ptr<LeftRightHMM>(Vesk::ML::loadLR(path.c_str()));
}
RecognitionModelHMM recognition(const std::string& path) {
    RecognitionModelHMM model;
    EXPECT_TRUE(model.read(path));
    return model;
}
std::vector<double> codebook(const std::string& path) {
    VectorQuantizer2D quantizer;
    EXPECT_TRUE(quantizer.loadCodebook(path.c_str()));
    return quantizer.codebook;
}

TEST(Readers, AnEmptyDeviceIsAnEmptyFile) {
    EXPECT_EQ(general("/dev/null")->numStates, 1u);
    EXPECT_EQ(leftRight("/dev/null")->numStates, 1u);
    EXPECT_EQ(recognition("/dev/null").numStates, 0u);
    EXPECT_EQ(codebook("/dev/null"), std::vector<double>{0.0});
}

TEST(Readers, AnEndlessDeviceIsAWordThatIsTooLong) {
    EXPECT_THROW(general("/dev/zero"), std::bad_alloc);
    EXPECT_THROW(leftRight("/dev/zero"), std::bad_alloc);
    EXPECT_EQ(recognition("/dev/zero").gestures.size(), 0u);  // it begins with numbers
}

TEST(Readers, AWordMayBeAsLongAsItsFile) {
    const TemporaryFolder folder;
    const std::string path = folder.path("file");
    const std::string word(10 << 20, 'w');
    writeFile(path, word + "\n1 1 1 1\n0.5\n0.25\n0.125\n");
    EXPECT_TRUE(general(path)->name == word);
    EXPECT_TRUE(leftRight(path)->name == word);
    writeFile(path,
              "1 0 0\n\n" + word + "\n1 1 1 0.5\n1\n1\n1\n0\n\n" + word + "\n1 1 1 1\n1\n1\n1\n");
    const RecognitionModelHMM model = recognition(path);
    EXPECT_TRUE(model.name == word);
    ASSERT_EQ(model.gestures.size(), 1u);
    EXPECT_TRUE(model.gestures[0]->name == word);
    writeFile(path, word + "\n90");
    EXPECT_EQ(codebook(path), (std::vector<double>{0.0, 90.0}));
}

TEST(Readers, ANumberMayBeAsLongAsItsFile) {
    const TemporaryFolder folder;
    const std::string path = folder.path("file");
    const std::string zeros(10 << 20, '0');
    const std::string ones(10 << 20, '1');
    constexpr double largest = std::numeric_limits<double>::max();
    writeFile(path, "x\n" + zeros + "1 2 1\n0." + zeros + "1\n" + ones + "\n7 7\n");
    const auto model = general(path);
    EXPECT_EQ(model->numStates, 1u);
    EXPECT_EQ(model->pi, std::vector<double>{0.0});
    EXPECT_EQ(model->a.data, std::vector<double>{largest});
    EXPECT_EQ(model->b.data, (std::vector<double>{0.0, 0.0}));  // reading has failed before
    writeFile(path, zeros + "90\n" + ones + "\n180");
    EXPECT_EQ(codebook(path), (std::vector<double>{90.0, largest, 180.0}));
}

TEST(Readers, LineEndsOfOtherSystemsAreWhiteSpace) {
    Subjects subjects;
    const TemporaryFolder folder;
    for (const Kind kind : {Kind::General, Kind::LeftRight, Kind::Recognition, Kind::Codebook}) {
        SCOPED_TRACE(static_cast<int>(kind));
        ASSERT_TRUE(save(subjects, kind, folder.path("unix")));
        std::string text = readFile(folder.path("unix"));
        for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at)) {
            text.replace(at, 1, "\r\n");
            at += 2;
        }
        writeFile(folder.path("dos"), text);
        copyThroughReader(kind, folder.path("dos"), folder.path("copy"));
        EXPECT_EQ(readFile(folder.path("copy")), readFile(folder.path("unix")));
    }
}

TEST(Readers, AByteOrderMarkBelongsToTheFirstWord) {
    const TemporaryFolder folder;
    const std::string path = folder.path("file");
    const std::string mark = "\xEF\xBB\xBF";
    writeFile(path, mark + "x\n1 1 1 1\n0.5\n0.25\n0.125\n");
    EXPECT_EQ(general(path)->name, mark + "x");
    EXPECT_EQ(leftRight(path)->name, mark + "x");
    writeFile(path, mark + "1 0 0\n\nx\n1 1 1 0.5\n");
    EXPECT_EQ(recognition(path).numStates, 0u);
    writeFile(path, mark + "90\n180");
    EXPECT_EQ(codebook(path), (std::vector<double>{0.0, 180.0}));
}

/// Processor time of `read`, the least of three.
template <typename Read>
std::clock_t timeOf(Read read) {
    std::clock_t least = std::numeric_limits<std::clock_t>::max();
    for (int i = 0; i < 3; ++i) {
        const std::clock_t start = std::clock();
        read();
        least = std::min(least, std::clock() - start);
    }
    return least;
}

TEST(Readers, TakeTimeInProportionToTheFile) {
    const TemporaryFolder folder;
    const auto repeated = [&](const std::string& head, const std::string& part, int times) {
        std::string text = head;
        for (int i = 0; i < times; ++i) text += part;
        writeFile(folder.path("file"), text);
        return folder.path("file");
    };
    struct Case {
        const char* head;
        const char* part;
        void (*read)(const std::string&);
    };
    const Case cases[] = {
        {"x\n1 1000000 1\n1\n1\n", "0.5 ", [](const std::string& path) { general(path); }},
        {"x\n1 1000000 1 1\n", "0.5 ", [](const std::string& path) { leftRight(path); }},
        {"1 0 0\n\nx\n1 1 1 0.5\n1\n1\n1\n1\n", "g\n1 1 1 1\n1\n1\n1\n",
         [](const std::string& path) { recognition(path); }},
        {"", "90\n", [](const std::string& path) { codebook(path); }},
        {"", "\n", [](const std::string& path) { codebook(path); }},
        {"x\n1 1 1\n", " \t\n ", [](const std::string& path) { general(path); }}};
    for (const Case& it : cases) {
        const std::string shortFile = repeated(it.head, it.part, 20000);
        const std::clock_t once = timeOf([&] { it.read(shortFile); });
        const std::string longFile = repeated(it.head, it.part, 320000);
        const std::clock_t sixteenfold = timeOf([&] { it.read(longFile); });
        // Time in the square of the size would be 256 times as much.
        EXPECT_LT(sixteenfold, 80 * (once + CLOCKS_PER_SEC / 1000)) << it.part;
    }
}

}  // namespace
}  // namespace Vesk::Test
