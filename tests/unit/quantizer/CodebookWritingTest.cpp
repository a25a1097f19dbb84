#include <support/Capture.h>
#include <support/Files.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Test;
using Vesk::ML::VectorQuantizer2D;

/// The bytes of the codebook's file, the same from both writers.
std::string written(const std::vector<double>& codebook) {
    const TemporaryFolder folder;
    VectorQuantizer2D quantizer;
    quantizer.setCodebook(codebook);
    EXPECT_TRUE(quantizer.printCodebook(folder.path("printed").c_str()));
    EXPECT_TRUE(quantizer.save(folder.path("saved")));
    EXPECT_EQ(readFile(folder.path("printed")), readFile(folder.path("saved")));
    return readFile(folder.path("printed"));
}

TEST(CodebookWritingTest, FourAxesAreFourLinesWithoutALastLineEnd) {
    const std::string text = written({0.0, 90.0, 180.0, 270.0});
    EXPECT_EQ(text, "0\n90\n180\n270");
    EXPECT_EQ(text.size(), 12u);
}

TEST(CodebookWritingTest, EmptyCodebookIsAnEmptyFile) { EXPECT_EQ(written({}), ""); }

TEST(CodebookWritingTest, SingleEntryHasNoLineEnd) { EXPECT_EQ(written({42.5}), "42.5"); }

TEST(CodebookWritingTest, EntriesHaveSixSignificantDigits) {
    EXPECT_EQ(written({51.428569793701171875}), "51.4286");
    EXPECT_EQ(written({0.0000001}), "1e-07");
    EXPECT_EQ(written({0.0001}), "0.0001");
    EXPECT_EQ(written({0.00001}), "1e-05");
    EXPECT_EQ(written({359.9999999}), "360");
    EXPECT_EQ(written({123456.0}), "123456");
    EXPECT_EQ(written({1234567.0}), "1.23457e+06");
    EXPECT_EQ(written({999999.5}), "1e+06");
    EXPECT_EQ(written({1e300}), "1e+300");
    EXPECT_EQ(written({1.0 / 3.0}), "0.333333");
    EXPECT_EQ(written({5e-324}), "4.94066e-324");
    EXPECT_EQ(written({-45.25}), "-45.25");
}

TEST(CodebookWritingTest, NonFiniteEntriesAreWrittenAsWords) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(written({infinity, -infinity, 1.0}), "inf\n-inf\n1");
}

TEST(CodebookWritingTest, NegativeZeroKeepsItsSign) { EXPECT_EQ(written({-0.0, 0.0}), "-0\n0"); }

TEST(CodebookWritingTest, WholeVectorIsWrittenWhateverTheStatedSize) {
    const TemporaryFolder folder;
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(2);
    quantizer.initializeCodebook(2);
    ASSERT_TRUE(quantizer.printCodebook(folder.path("codebook").c_str()));
    EXPECT_EQ(readFile(folder.path("codebook")), "0\n180\n0\n180");
    quantizer.codebookSize = 100;
    quantizer.codebookReady = false;
    ASSERT_TRUE(quantizer.printCodebook(folder.path("codebook").c_str()));
    EXPECT_EQ(readFile(folder.path("codebook")), "0\n180\n0\n180");
}

TEST(CodebookWritingTest, FreshQuantizerWritesAnEmptyFile) {
    const TemporaryFolder folder;
    VectorQuantizer2D quantizer;
    EXPECT_TRUE(quantizer.printCodebook(folder.path("codebook").c_str()));
    EXPECT_EQ(readFile(folder.path("codebook")), "");
}

TEST(CodebookWritingTest, LongerFileIsTruncated) {
    const TemporaryFolder folder;
    const std::string path = folder.path("codebook");
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({1.0});
    writeFile(path, "a much longer text\nof two lines\n");
    EXPECT_TRUE(quantizer.printCodebook(path.c_str()));
    EXPECT_EQ(readFile(path), "1");
    writeFile(path, "a much longer text\nof two lines\n");
    EXPECT_TRUE(quantizer.save(path));
    EXPECT_EQ(readFile(path), "1");
}

TEST(CodebookWritingTest, MissingDirectoryIsFalseAndCreatesNothing) {
    const TemporaryFolder folder;
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    EXPECT_FALSE(quantizer.printCodebook(folder.path("missing/codebook").c_str()));
    EXPECT_FALSE(quantizer.save(folder.path("missing/codebook")));
    EXPECT_FALSE(std::filesystem::exists(folder.path("missing")));
}

TEST(CodebookWritingTest, DirectoryCannotBeWritten) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path("directory"));
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    EXPECT_FALSE(quantizer.printCodebook(folder.path("directory").c_str()));
    EXPECT_FALSE(quantizer.save(folder.path("directory")));
    EXPECT_TRUE(std::filesystem::is_empty(folder.path("directory")));
}

TEST(CodebookWritingTest, EmptyPathIsFalse) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    EXPECT_FALSE(quantizer.printCodebook(""));
    EXPECT_FALSE(quantizer.save(""));
}

TEST(CodebookWritingTest, FullDiskShowsInSaveAlone) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    EXPECT_TRUE(quantizer.printCodebook("/dev/full"));
    EXPECT_FALSE(quantizer.save("/dev/full"));
    // Nothing to write: nothing that fails.
    quantizer.setCodebook({});
    EXPECT_TRUE(quantizer.printCodebook("/dev/full"));
    EXPECT_TRUE(quantizer.save("/dev/full"));
}

TEST(CodebookWritingTest, MutablePathIsTakenAsWell) {
    const TemporaryFolder folder;
    std::string path = folder.path("codebook");
    char* const mutablePath = path.data();
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({12.0, 34.0});
    EXPECT_TRUE(quantizer.printCodebook(mutablePath));
    EXPECT_EQ(readFile(path), "12\n34");
    VectorQuantizer2D loaded;
    EXPECT_TRUE(loaded.loadCodebook(mutablePath));
    EXPECT_EQ(loaded.codebook, (std::vector<double>{12.0, 34.0}));
}

TEST(CodebookWritingTest, NothingIsWrittenToStandardOutputAndTheQuantizerStays) {
    const TemporaryFolder folder;
    VectorQuantizer2D quantizer;
    quantizer.setCodebook({12.25, 34.0});
    Capture capture;
    quantizer.printCodebook(folder.path("codebook").c_str());
    quantizer.printCodebook(folder.path("missing/codebook").c_str());
    quantizer.save(folder.path("codebook"));
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(quantizer.codebook, (std::vector<double>{12.25, 34.0}));
    EXPECT_EQ(quantizer.codebookSize, 2);
    EXPECT_TRUE(quantizer.codebookReady);
}

}  // namespace
