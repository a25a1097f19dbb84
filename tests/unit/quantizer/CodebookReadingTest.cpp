#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/Files.h>
#include <support/QuantizerReference.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cfloat>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <locale>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace Vesk::Test;
using Vesk::ML::VectorQuantizer2D;

/// The quantiser after it loaded a file of these bytes.
VectorQuantizer2D loaded(const std::string& text) {
    const TemporaryFolder folder;
    writeFile(folder.path("codebook"), text);
    VectorQuantizer2D quantizer;
    EXPECT_TRUE(quantizer.loadCodebook(folder.path("codebook").c_str()));
    EXPECT_TRUE(quantizer.codebookReady);
    EXPECT_EQ(quantizer.codebookSize, static_cast<int>(quantizer.codebook.size()));
    return quantizer;
}

testing::AssertionResult reads(const std::string& text, const std::vector<double>& expected) {
    return bitEqual(expected, loaded(text).codebook);
}

TEST(CodebookReadingTest, FourAxesComeBack) {
    const VectorQuantizer2D quantizer = loaded("0\n90\n180\n270");
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0, 90.0, 180.0, 270.0}, quantizer.codebook));
    EXPECT_EQ(quantizer.codebookSize, 4);
    EXPECT_TRUE(quantizer.codebookReady);
}

TEST(CodebookReadingTest, LastLineEndRepeatsTheLastEntry) {
    EXPECT_TRUE(reads("0\n90\n180\n270\n", {0.0, 90.0, 180.0, 270.0, 270.0}));
    EXPECT_TRUE(reads("5\n\n\n", {5.0, 5.0, 5.0, 5.0}));
}

TEST(CodebookReadingTest, LineWithoutANumberIsZero) {
    EXPECT_TRUE(reads("10\nabc\n20", {10.0, 0.0, 20.0}));
    EXPECT_TRUE(reads("10\n-\n+\n.\n#5\n,5\n\"5\"", {10.0, 0.0, 0.0, 0.0, 0.0, 0.0, 0.0}));
}

TEST(CodebookReadingTest, BlankLineRepeatsTheLineBefore) {
    EXPECT_TRUE(reads("10\n\n20", {10.0, 10.0, 20.0}));
    EXPECT_TRUE(reads("10\n \t\v\f\r \n20", {10.0, 10.0, 20.0}));
}

TEST(CodebookReadingTest, BlankLineAfterAFailedOneIsZero) {
    EXPECT_TRUE(reads("10\nabc\n\n20", {10.0, 0.0, 0.0, 20.0}));
}

TEST(CodebookReadingTest, EmptyFileIsOneZero) { EXPECT_TRUE(reads("", {0.0})); }

TEST(CodebookReadingTest, BlankFirstLineIsZero) {
    EXPECT_TRUE(reads("\n10", {0.0, 10.0}));
    EXPECT_TRUE(reads("   \n10", {0.0, 10.0}));
    EXPECT_TRUE(reads("\n", {0.0, 0.0}));
    EXPECT_TRUE(reads("  ", {0.0}));
}

TEST(CodebookReadingTest, WhiteSpaceBeforeTheNumberIsSkipped) {
    EXPECT_TRUE(reads(" 10\n\t20\n \t 30", {10.0, 20.0, 30.0}));
}

TEST(CodebookReadingTest, WhateverFollowsTheNumberIsIgnored) {
    EXPECT_TRUE(reads("10 20 30\n40 degrees\n50deg\n60,5\n70;", {10.0, 40.0, 50.0, 60.0, 70.0}));
    EXPECT_TRUE(reads("1.5.5\n2-3\n4+5", {1.5, 2.0, 4.0}));
}

TEST(CodebookReadingTest, CarriageReturnsAreWhiteSpace) {
    EXPECT_TRUE(reads("10\r\n20\r\n\r\n30", {10.0, 20.0, 20.0, 30.0}));
}

TEST(CodebookReadingTest, NumbersOfAllFormsAreRead) {
    EXPECT_TRUE(reads("-5\n+5\n.5\n5.\n1e2\n1E-2\n-0\n0005\n1e-07\n51.4286",
                      {-5.0, 5.0, 0.5, 5.0, 100.0, 0.01, -0.0, 5.0, 1e-07, 51.4286}));
}

TEST(CodebookReadingTest, NumberTooLargeIsTheLargest) {
    EXPECT_TRUE(reads("1e999\n-1e999\n5", {DBL_MAX, -DBL_MAX, 5.0}));
}

TEST(CodebookReadingTest, NumberTooSmallIsWhatTheStreamGives) {
    // Read by the stream itself, so that the expectation is the platform's.
    double tiny = 7.0;
    std::istringstream("1e-400") >> tiny;
    EXPECT_TRUE(reads("1e-400\n5", {tiny, 5.0}));
    double subnormal = 7.0;
    std::istringstream("4.94066e-324") >> subnormal;
    EXPECT_TRUE(reads("4.94066e-324\n5", {subnormal, 5.0}));
}

TEST(CodebookReadingTest, HexadecimalIsTheZeroBeforeTheX) {
    EXPECT_TRUE(reads("7\n0x1F\n8", {7.0, 0.0, 8.0}));
}

TEST(CodebookReadingTest, InfinityAndNanAreNoNumbers) {
    EXPECT_TRUE(reads("7\ninf\n8\nnan\n9\n-inf\nINFINITY", {7.0, 0.0, 8.0, 0.0, 9.0, 0.0, 0.0}));
}

TEST(CodebookReadingTest, UnfinishedExponentIsZero) {
    EXPECT_TRUE(reads("7\n1e\n8\n1e+\n9", {7.0, 0.0, 8.0, 0.0, 9.0}));
}

TEST(CodebookReadingTest, NulBytesEndANumberAndAreNoBlankLine) {
    using std::string_literals::operator""s;
    EXPECT_TRUE(
        reads("12\0"
              "34\n56"s,
              {12.0, 56.0}));
    EXPECT_TRUE(reads("7\n\0\n8"s, {7.0, 0.0, 8.0}));
}

TEST(CodebookReadingTest, BytesBeyondAsciiAreNoNumbers) {
    EXPECT_TRUE(reads("7\n\xC2\xB0\n8\n\xFF\n90\xC2\xB0", {7.0, 0.0, 8.0, 0.0, 90.0}));
}

TEST(CodebookReadingTest, LongLinesAreReadWhole) {
    const std::string blanks(100000, ' ');
    const std::string digits(5000, '0');
    EXPECT_TRUE(reads(blanks + "10\n" + digits + "20" + blanks + "\n30", {10.0, 20.0, 30.0}));
}

TEST(CodebookReadingTest, EarlierCodebookIsReplaced) {
    const TemporaryFolder folder;
    writeFile(folder.path("codebook"), "1\n2");
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    EXPECT_TRUE(quantizer.loadCodebook(folder.path("codebook").c_str()));
    EXPECT_EQ(quantizer.codebook, (std::vector<double>{1.0, 2.0}));
    EXPECT_EQ(quantizer.codebookSize, 2);
}

TEST(CodebookReadingTest, EveryLoadStartsAgainFromZero) {
    const TemporaryFolder folder;
    writeFile(folder.path("first"), "55");
    writeFile(folder.path("second"), "\n66");
    VectorQuantizer2D quantizer;
    EXPECT_TRUE(quantizer.loadCodebook(folder.path("first").c_str()));
    EXPECT_TRUE(quantizer.loadCodebook(folder.path("second").c_str()));
    EXPECT_EQ(quantizer.codebook, (std::vector<double>{0.0, 66.0}));
}

TEST(CodebookReadingTest, MissingFileIsFalseAndLeavesAnEmptyCodebook) {
    const TemporaryFolder folder;
    VectorQuantizer2D quantizer;
    EXPECT_FALSE(quantizer.loadCodebook(folder.path("missing").c_str()));
    EXPECT_TRUE(quantizer.codebook.empty());
    EXPECT_EQ(quantizer.codebookSize, 0);
    EXPECT_FALSE(quantizer.codebookReady);
}

TEST(CodebookReadingTest, MissingFileEmptiesACodebookAndLeavesItReady) {
    const TemporaryFolder folder;
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(8);
    EXPECT_FALSE(quantizer.loadCodebook(folder.path("missing/codebook").c_str()));
    EXPECT_TRUE(quantizer.codebook.empty());
    EXPECT_EQ(quantizer.codebookSize, 0);
    EXPECT_TRUE(quantizer.codebookReady);
    EXPECT_FALSE(quantizer.loadCodebook(""));
}

TEST(CodebookReadingTest, DirectoryOpensWithoutAnEntry) {
    const TemporaryFolder folder;
    VectorQuantizer2D quantizer;
    quantizer.codebook = {1.0, 2.0};
    quantizer.codebookSize = 2;
    EXPECT_TRUE(quantizer.loadCodebook(folder.path("").c_str()));
    EXPECT_TRUE(quantizer.codebook.empty());
    EXPECT_EQ(quantizer.codebookSize, 0);
    EXPECT_TRUE(quantizer.codebookReady);
}

TEST(CodebookReadingTest, WrittenCodebookComesBackWithAsManyEntries) {
    const TemporaryFolder folder;
    for (int n = 1; n <= 100; ++n) {
        SCOPED_TRACE(n);
        const std::string path = folder.path(std::to_string(n));
        VectorQuantizer2D quantizer;
        quantizer.initializeCodebook(n);
        ASSERT_TRUE(quantizer.printCodebook(path.c_str()));
        VectorQuantizer2D back;
        ASSERT_TRUE(back.loadCodebook(path.c_str()));
        ASSERT_EQ(back.codebookSize, n);
        for (std::size_t i = 0; i < back.codebook.size(); ++i) {
            // Six significant digits of a number below 360: half a unit of the third decimal.
            ASSERT_NEAR(back.codebook[i], quantizer.codebook[i], 0.0005001);
        }
    }
}

TEST(CodebookReadingTest, EmptyCodebookComesBackAsOneZero) {
    const TemporaryFolder folder;
    const std::string path = folder.path("codebook");
    VectorQuantizer2D quantizer;
    ASSERT_TRUE(quantizer.printCodebook(path.c_str()));
    ASSERT_TRUE(quantizer.loadCodebook(path.c_str()));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.0}, quantizer.codebook));
    EXPECT_EQ(quantizer.codebookSize, 1);
}

TEST(CodebookReadingTest, NothingIsWritten) {
    const TemporaryFolder folder;
    writeFile(folder.path("codebook"), "10\nabc\n");
    VectorQuantizer2D quantizer;
    Capture capture;
    quantizer.loadCodebook(folder.path("codebook").c_str());
    quantizer.loadCodebook(folder.path("missing").c_str());
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(capture.flushes(), 0);
}

TEST(CodebookReadingTest, MoreThanAMillionLinesAreReadFromAFile) {
    std::string text;
    for (int i = 0; i < (1 << 20); ++i) text += "1\n";
    text += "2";
    const VectorQuantizer2D quantizer = loaded(text);
    ASSERT_EQ(quantizer.codebookSize, (1 << 20) + 1);
    EXPECT_EQ(quantizer.codebook.front(), 1.0);
    EXPECT_EQ(quantizer.codebook.back(), 2.0);
}

TEST(CodebookReadingTest, AFileOfBlankLinesHoldsAMillionEntriesAtMost) {
    // As many lines as bytes, and one after the last line end.
    EXPECT_EQ(loaded(std::string((1 << 20) - 1, '\n')).codebookSize, 1 << 20);
    EXPECT_THROW(loaded(std::string(1 << 20, '\n')), std::bad_alloc);
}

/// Decimal commas and groups of three digits.
class Commas : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(CodebookReadingTest, TheGlobalLocaleChangesNothing) {
    const std::locale previous =
        std::locale::global(std::locale(std::locale::classic(), new Commas));
    const std::vector<double> codebook = loaded("51.4286\n1,5\n123.456").codebook;
    std::locale::global(previous);
    EXPECT_TRUE(bitEqual(std::vector<double>{51.4286, 1.0, 123.456}, codebook));
}

/// Loads from a pipe into which another thread writes some text, so many times.
class PipeReader {
public:
    explicit PipeReader(int lineEnds)
        : PipeReader(std::string(static_cast<std::size_t>(lineEnds), '\n'), 1) {}
    PipeReader(std::string text, int times) : path(folder.path("pipe")) {
        std::signal(SIGPIPE, SIG_IGN);
        if (mkfifo(path.c_str(), 0600) != 0) throw std::runtime_error("no pipe");
        writer = std::thread([this, block = std::move(text), times] {
            std::ofstream out(path);
            for (int n = 0; n < times && out; ++n) out << block;
        });
    }
    ~PipeReader() {
        writer.join();
        std::signal(SIGPIPE, SIG_DFL);
    }
    PipeReader(const PipeReader&) = delete;
    PipeReader& operator=(const PipeReader&) = delete;

    bool load(VectorQuantizer2D& quantizer) { return quantizer.loadCodebook(path.c_str()); }

private:
    TemporaryFolder folder;
    std::string path;
    std::thread writer;
};

TEST(CodebookReadingTest, PipeIsReadToItsEnd) {
    PipeReader pipe(9);
    VectorQuantizer2D quantizer;
    EXPECT_TRUE(pipe.load(quantizer));
    EXPECT_EQ(quantizer.codebook, std::vector<double>(10, 0.0));
    EXPECT_EQ(quantizer.codebookSize, 10);
}

TEST(CodebookReadingTest, PipeOfAMillionEntriesIsTaken) {
    PipeReader pipe((1 << 20) - 1);
    VectorQuantizer2D quantizer;
    EXPECT_TRUE(pipe.load(quantizer));
    EXPECT_EQ(quantizer.codebookSize, 1 << 20);
}

TEST(CodebookReadingTest, PipeOfMoreEntriesIsBadAlloc) {
    PipeReader pipe((1 << 20) + 100000);
    VectorQuantizer2D quantizer;
    EXPECT_THROW(pipe.load(quantizer), std::bad_alloc);
}

TEST(CodebookReadingTest, PipeEndsAfterAQuarterOfAGigabyte) {
    // 2^19 lines of 1 KiB are 2^29 bytes, and fewer lines than a pipe may have entries.
    const std::string line = std::string(1023, ' ') + '\n';
    std::string block;
    for (int n = 0; n < 256; ++n) block += line;
    PipeReader pipe(block, 1 << 11);
    VectorQuantizer2D quantizer;
    EXPECT_TRUE(pipe.load(quantizer));
    // Up to what was read into a buffer by then.
    EXPECT_GE(quantizer.codebookSize, 1 << 18);
    EXPECT_LE(quantizer.codebookSize, (1 << 18) + 1024);
}

}  // namespace
