#include <support/BitEqual.h>
#include <support/Files.h>
#include <support/QuantizerReference.h>
#include <support/QuantizerTraces.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Test;
using Vesk::ML::VectorQuantizer2D;

double anyNumber(Random& random) {
    switch (random.integer(0, 3)) {
        case 0: return random.unit() * 360.0;
        case 1: return random.integer(-1000, 1000) / 8.0;
        case 2: return std::ldexp(random.unit() - 0.5, random.integer(-1080, 1020));
        default: {
            const double odd = oddNumber(random);
            return std::isnan(odd) ? 0.5 : odd;  // a NaN's sign is nobody's promise
        }
    }
}

TEST(QuantizerCodebookFilePropertyTest, BytesOfBothWritersAreTheReferences) {
    const TemporaryFolder folder;
    for (std::uint64_t seed = 0; seed < 2000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        // A file of its own each time: to truncate one costs a wait for the disk.
        const std::string path = folder.path(std::to_string(seed));
        std::vector<double> codebook;
        for (int i = random.integer(0, 30); i > 0; --i) codebook.push_back(anyNumber(random));
        VectorQuantizer2D quantizer;
        quantizer.setCodebook(codebook);
        ASSERT_TRUE(quantizer.printCodebook(path.c_str()));
        ASSERT_EQ(readFile(path), Reference::codebookText(codebook));
        ASSERT_TRUE(quantizer.save(path + "s"));
        ASSERT_EQ(readFile(path + "s"), Reference::codebookText(codebook));
        std::filesystem::remove(path);
        std::filesystem::remove(path + "s");
    }
}

TEST(QuantizerCodebookFilePropertyTest, WritingAndReadingReachesAFixedPoint) {
    const TemporaryFolder folder;
    for (std::uint64_t seed = 0; seed < 1000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        // A file of its own each time: to truncate one costs a wait for the disk.
        const std::string path = folder.path(std::to_string(seed));
        VectorQuantizer2D quantizer;
        quantizer.setCodebook(randomCentres(random, random.integer(1, 30), Centres::Scattered));
        const int size = quantizer.codebookSize;
        ASSERT_TRUE(quantizer.printCodebook(path.c_str()));
        const std::string text = readFile(path);
        ASSERT_TRUE(quantizer.loadCodebook(path.c_str()));
        ASSERT_EQ(quantizer.codebookSize, size);
        ASSERT_TRUE(quantizer.printCodebook((path + "b").c_str()));
        ASSERT_EQ(readFile(path + "b"), text);
        std::filesystem::remove(path);
        std::filesystem::remove(path + "b");
    }
}

/// Lines of numbers in all forms, words, blanks and odd bytes.
std::string randomText(Random& random) {
    const char* const pieces[] = {"0",
                                  "90",
                                  "-5",
                                  "+5",
                                  "51.4286",
                                  "1e-07",
                                  "1e999",
                                  "-1e999",
                                  "0x1F",
                                  "inf",
                                  "nan",
                                  "abc",
                                  "",
                                  " ",
                                  "\t",
                                  "\r",
                                  ".",
                                  "-",
                                  "+",
                                  "1e",
                                  "e5",
                                  "1e+",
                                  "5.",
                                  ".5",
                                  "1.2.3",
                                  "1,5",
                                  "12abc",
                                  "--5",
                                  "+-5",
                                  "1 2",
                                  "00",
                                  "-0",
                                  "1e-400",
                                  "\v\f",
                                  "1e308",
                                  "2e308",
                                  "\357\273\2775",
                                  "5e",
                                  "1E5",
                                  "1d5",
                                  "infinity",
                                  "0x",
                                  "0b1",
                                  "1_0",
                                  "1'0",
                                  "99999999999999999999"};
    std::string text;
    for (int line = random.integer(0, 12); line > 0; --line) {
        for (int piece = random.integer(0, 2); piece > 0; --piece) {
            text += pieces[random.integer(0, static_cast<int>(std::size(pieces)) - 1)];
            if (random.chance(0.1)) text += static_cast<char>(random.integer(0, 255));
            if (random.chance(0.3)) text += ' ';
        }
        text += '\n';
    }
    if (random.chance(0.5) && !text.empty()) text.pop_back();
    return text;
}

TEST(QuantizerCodebookFilePropertyTest, AnyTextIsReadAsTheReferenceReadsIt) {
    const TemporaryFolder folder;
    for (std::uint64_t seed = 0; seed < 5000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        // A file of its own each time: to truncate one costs a wait for the disk.
        const std::string path = folder.path(std::to_string(seed));
        const std::string text = randomText(random);
        writeFile(path, text);
        Reference::Quantizer reference;
        reference.codebookReady = random.chance(0.5);
        reference.codebook = {1.0, 2.0};
        reference.codebookSize = 2;
        VectorQuantizer2D quantizer = libraryQuantizer(reference);
        ASSERT_EQ(Reference::loadCodebook(reference, path), quantizer.loadCodebook(path.c_str()));
        ASSERT_TRUE(bitEqual(reference.codebook, quantizer.codebook))
            << testing::PrintToString(text);
        ASSERT_EQ(reference.codebookSize, quantizer.codebookSize);
        ASSERT_EQ(reference.codebookReady, quantizer.codebookReady);
        std::filesystem::remove(path);
    }
}

TEST(QuantizerCodebookFilePropertyTest, RandomBytesAreReadAsTheReferenceReadsThem) {
    const TemporaryFolder folder;
    const std::string alphabet = std::string("0123456789+-.eE \t\r\n\n\nxinfa", 27) + '\0';
    for (std::uint64_t seed = 0; seed < 3000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        // A file of its own each time: to truncate one costs a wait for the disk.
        const std::string path = folder.path(std::to_string(seed));
        std::string text;
        for (int i = random.integer(0, 120); i > 0; --i) {
            text += alphabet[static_cast<std::size_t>(
                random.integer(0, static_cast<int>(alphabet.size()) - 1))];
        }
        writeFile(path, text);
        Reference::Quantizer reference;
        Reference::loadCodebook(reference, path);
        VectorQuantizer2D quantizer;
        ASSERT_TRUE(quantizer.loadCodebook(path.c_str()));
        ASSERT_TRUE(bitEqual(reference.codebook, quantizer.codebook))
            << testing::PrintToString(text);
        std::filesystem::remove(path);
    }
}

}  // namespace
