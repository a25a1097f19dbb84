#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/Files.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Vesk::ML::LeftRightHMM;
using Vesk::ML::loadLR;
using namespace Vesk::Test;

std::unique_ptr<LeftRightHMM> loaded(const std::string& text) {
    const TemporaryFolder folder;
    const std::string path = folder.path("model");
    writeFile(path, text);
    return std::unique_ptr<LeftRightHMM>(loadLR(path.c_str()));
}

const std::string wave =
    "wave\n2 3 1 1\n0 1 2\n1 0\n0.7 0.3 0 1\n0.5 0.25 0.25 0.125 0.375 0.5\n0 1 2\n";

TEST(LeftRightLoad, ReadsBackAModelWithASymbolValueForEachSymbol) {
    const auto model = loaded(wave);
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model->name, "wave");
    EXPECT_EQ(model->numStates, 2U);
    EXPECT_EQ(model->vocabSize, 3U);
    EXPECT_EQ(model->dimension, 1);
    EXPECT_EQ(model->delta, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>{0, 1, 2}, model->vocabValues));
    EXPECT_TRUE(bitEqual(std::vector<double>{1, 0}, model->pi));
    EXPECT_TRUE(bitEqual(matrixOf({{0.7, 0.3}, {0, 1}}), model->a));
    EXPECT_TRUE(bitEqual(matrixOf({{0.5, 0.25, 0.25}, {0.125, 0.375, 0.5}}), model->b));
    EXPECT_TRUE(bitEqual(matrixOf({{0}, {1}, {2}}), model->vocab));
    EXPECT_TRUE(model->trainingSequences.empty());
    EXPECT_TRUE(model->stateSymbols.empty());
    EXPECT_TRUE(sameBits(0.001f, model->convergenceThreshold));
    EXPECT_TRUE(model->needsSeed);
}

TEST(LeftRightLoad, WritesBackTheSameBytes) {
    const auto model = loaded(wave);
    const TemporaryFolder folder;
    model->write(folder.path("again").c_str());
    EXPECT_EQ(readFile(folder.path("again")), wave);
}

TEST(LeftRightLoad, TakesSymbolValuesFromTheTablesWhereTheFileHasNone) {
    // The three values after the header are pi and a(0, 0); then pi = 0.3 0, a = 1 0.5 0.25 0.25,
    // b = 0.125 0.375 0.5 0 1 2, the vocabulary's line included.
    const auto model =
        loaded("wave\n2 3 1 1\n1 0\n0.7 0.3 0 1\n0.5 0.25 0.25 0.125 0.375 0.5\n0 1 2\n");
    EXPECT_TRUE(bitEqual(std::vector<double>{1, 0, 0.7}, model->vocabValues));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.3, 0}, model->pi));
    EXPECT_TRUE(bitEqual(matrixOf({{1, 0.5}, {0.25, 0.25}}), model->a));
    EXPECT_TRUE(bitEqual(matrixOf({{0.125, 0.375, 0.5}, {0, 1, 2}}), model->b));
}

TEST(LeftRightLoad, IgnoresTheDimension) {
    for (const char* D : {"5", "0", "-1", "-7", "2147483647"}) {
        SCOPED_TRACE(D);
        const auto model = loaded("g\n1 2 " + std::string(D) + " 1\n4 5\n1\n1\n0.5 0.5\n0 1\n");
        EXPECT_EQ(model->dimension, 1);
        EXPECT_EQ(model->vocab.cols, 1);
        EXPECT_TRUE(bitEqual(std::vector<double>{0, 1}, model->vocab.data));
        EXPECT_EQ(model->delta, 1);
        EXPECT_TRUE(bitEqual(std::vector<double>{0.5, 0.5}, model->b.data));
    }
}

TEST(LeftRightLoad, IgnoresTheVocabularysLine) {
    const auto model = loaded("g\n1 2 1 1\n4 5\n1\n1\n0.5 0.5\n8 9\n");
    EXPECT_TRUE(bitEqual(std::vector<double>{0, 1}, model->vocab.data));
}

TEST(LeftRightLoad, ReadsNoTablesWithoutStates) {
    for (const char* N : {"0", "-1", "-2147483648"}) {
        SCOPED_TRACE(N);
        const auto model = loaded("g\n" + std::string(N) + " 2 1 3\n4 5\n1\n1\n0.5 0.5\n0 1\n");
        EXPECT_EQ(model->numStates, 1U);
        EXPECT_EQ(model->vocabSize, 2U);
        EXPECT_EQ(model->delta, 3);
        EXPECT_TRUE(bitEqual(std::vector<double>{4, 5}, model->vocabValues));
        EXPECT_TRUE(bitEqual(std::vector<double>{0}, model->pi));
        EXPECT_TRUE(bitEqual(std::vector<double>{0}, model->a.data));
        EXPECT_TRUE(bitEqual(std::vector<double>{0, 0}, model->b.data));
    }
}

TEST(LeftRightLoad, ReadsNoSymbolValuesAndNoEmissionsWithoutSymbols) {
    for (const char* M : {"0", "-1", "-2147483648"}) {
        SCOPED_TRACE(M);
        const auto model = loaded("g\n2 " + std::string(M) + " 1 1\n1 0\n0.5 0.5 0 1\n3 4\n");
        EXPECT_EQ(model->numStates, 2U);
        EXPECT_EQ(model->vocabSize, 1U);
        EXPECT_TRUE(model->vocabValues.empty());
        EXPECT_TRUE(bitEqual(std::vector<double>{1, 0}, model->pi));
        EXPECT_TRUE(bitEqual(std::vector<double>{0.5, 0.5, 0, 1}, model->a.data));
        EXPECT_TRUE(bitEqual(std::vector<double>{0, 0}, model->b.data));
        EXPECT_TRUE(bitEqual(std::vector<double>{0}, model->vocab.data));
    }
}

TEST(LeftRightLoad, KeepsANegativeDelta) {
    EXPECT_EQ(loaded("g\n1 1 1 -3\n0\n1\n1\n1\n0\n")->delta, -3);
}

TEST(LeftRightLoad, NameIsOneWord) {
    const auto model = loaded("two words\n1 1 1 1\n0\n1\n1\n1\n0\n");
    // "words" is no number: the header stays unread.
    EXPECT_EQ(model->name, "two");
    EXPECT_EQ(model->numStates, 1U);
    EXPECT_EQ(model->vocabSize, 1U);
    EXPECT_EQ(model->delta, 0);
    EXPECT_TRUE(model->vocabValues.empty());
    EXPECT_TRUE(bitEqual(std::vector<double>{0}, model->pi));
}

TEST(LeftRightLoad, AnEmptyNameShiftsTheHeader) {
    // name "2", N 1, M 1, D 1, delta 9, then one symbol value.
    const auto model = loaded("\n2 1 1 1\n9 5 1\n1\n1\n");
    EXPECT_EQ(model->name, "2");
    EXPECT_EQ(model->numStates, 1U);
    EXPECT_EQ(model->delta, 9);
    EXPECT_TRUE(bitEqual(std::vector<double>{5}, model->vocabValues));
    EXPECT_TRUE(bitEqual(std::vector<double>{1}, model->pi));
}

TEST(LeftRightLoad, LineStructureAndLeadingBlanksDoNotMatter) {
    const auto model = loaded(
        "\n \t wave 2\n3 1\n\n1 0 1 2 1 0 0.7 0.3 0\r\n1\t0.5 0.25 0.25\v"
        "0.125 0.375\f0.5 0 1 2");
    const auto plain = loaded(wave);
    EXPECT_TRUE(sameModel(*plain, *model));
}

TEST(LeftRightLoad, AnEmptyFileIsTheSmallestModel) {
    for (const char* text : {"", "\n", "  \n\n"}) {
        const auto model = loaded(text);
        ASSERT_NE(model, nullptr);
        EXPECT_TRUE(sameModel(LeftRightHMM(1, 1, 0), *model));
        EXPECT_TRUE(model->vocabValues.empty());
    }
}

TEST(LeftRightLoad, ATruncatedFileLeavesZeros) {
    const auto model = loaded("wave\n2 3 1 1\n0 1 2\n1 0\n0.7 0.3");
    EXPECT_TRUE(bitEqual(std::vector<double>{1, 0}, model->pi));
    EXPECT_TRUE(bitEqual(std::vector<double>{0.7, 0.3, 0, 0}, model->a.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{0, 0, 0, 0, 0, 0}, model->b.data));
}

TEST(LeftRightLoad, EveryTruncationLoadsAsTheLiteralReader) {
    for (std::size_t length = 0; length <= wave.size(); ++length) {
        SCOPED_TRACE(length);
        const std::string text = wave.substr(0, length);
        const auto model = loaded(text);
        EXPECT_TRUE(sameModel(Reference::parseLeftRight(text), *model));
    }
}

TEST(LeftRightLoad, AMissingSymbolValueRepeatsTheOneBefore) {
    const auto model = loaded("g\n1 4 1 1\n7 8\n");
    EXPECT_TRUE(bitEqual(std::vector<double>{7, 8, 8, 8}, model->vocabValues));
    EXPECT_TRUE(bitEqual(std::vector<double>{7, 8, 8, 8}, loaded("g 1 4 1 1 7 8")->vocabValues));
}

TEST(LeftRightLoad, AMissingFirstSymbolValueIsZero) {
    const auto model = loaded("g\n1 3 1 1\n");
    EXPECT_TRUE(bitEqual(std::vector<double>{0, 0, 0}, model->vocabValues));
}

TEST(LeftRightLoad, ASymbolValueThatIsNoNumberIsZeroFromThereOn) {
    for (const char* token : {"abc", "inf", "-inf", "nan", "-", "."}) {
        SCOPED_TRACE(token);
        const auto model = loaded("g\n1 3 1 1\n7 " + std::string(token) + " 9\n1\n1\n1 1 1\n");
        EXPECT_TRUE(bitEqual(std::vector<double>{7, 0, 0}, model->vocabValues));
        EXPECT_TRUE(bitEqual(std::vector<double>{0}, model->pi));
    }
}

TEST(LeftRightLoad, NumbersAreThoseThatStreamsTake) {
    const std::string tooLarge = "99999999999999999999";
    const std::string tokens[] = {"1e999", "-1e999", "1e-999", "4e-320", "0x1F", "inf", "-inf",
                                  "nan",   "-5",     "+5",     "1,5",    "5.",   ".5",  "1e",
                                  "1e+",   "--1",    "word",   "1_000",  "1e5x", "007", "1.5.5",
                                  "0b1",   "1d3",    "5f",     tooLarge};
    for (const std::string& token : tokens) {
        for (std::size_t position = 0; position < 13; ++position) {
            SCOPED_TRACE(testing::Message() << token << " at " << position);
            // The name, four header fields, then the values.
            std::vector<std::string> words = {"g", "1", "2",   "1",   "1", "3", "4",
                                              "1", "1", "0.5", "0.5", "0", "1"};
            words[position] = token;
            // Counts that are refused are another matter.
            if ((position == 1 || position == 2) && token == tooLarge) continue;
            std::string text;
            for (const std::string& word : words) text += word + " ";
            const auto model = loaded(text);
            ASSERT_TRUE(sameModel(Reference::parseLeftRight(text), *model)) << text;
        }
    }
}

TEST(LeftRightLoad, AParameterBeyondTheRangeOfDoublesIsTheStreamsLargestNumber) {
    std::istringstream in("1e999");
    double largest = 0.0;
    in >> largest;
    ASSERT_TRUE(in.fail());
    const auto model = loaded("g\n1 1 1 1\n4\n1e999\n1\n1\n");
    EXPECT_TRUE(bitEqual(std::vector<double>{largest}, model->pi));
    EXPECT_TRUE(bitEqual(std::vector<double>{0}, model->a.data));
}

TEST(LeftRightLoad, AnInfiniteParameterCannotBeReadBack) {
    const auto model = loaded("g\n1 2 1 1\n3 4\n1\n1\ninf 0.5\n0 1\n");
    EXPECT_TRUE(bitEqual(std::vector<double>{1}, model->a.data));
    EXPECT_TRUE(bitEqual(std::vector<double>{0, 0}, model->b.data));
}

TEST(LeftRightLoad, NulBytesBelongToTheWord) {
    const std::string text("a\0b 1 1 1 1 2 1 1 1", 19);
    const auto model = loaded(text);
    EXPECT_EQ(model->name, std::string("a\0b", 3));
    EXPECT_TRUE(bitEqual(std::vector<double>{1}, model->b.data));
}

// Files that cannot be read

TEST(LeftRightLoad, AMissingFileIsNull) {
    const TemporaryFolder folder;
    const Capture capture;
    EXPECT_EQ(loadLR(folder.path("missing").c_str()), nullptr);
    EXPECT_EQ(loadLR(folder.path("no/folder").c_str()), nullptr);
    EXPECT_EQ(loadLR(""), nullptr);
    EXPECT_EQ(capture.text(), "");
}

TEST(LeftRightLoad, ADirectoryIsAModelOfWhichNothingWasRead) {
    const TemporaryFolder folder;
    const std::unique_ptr<LeftRightHMM> model(loadLR(folder.path("").c_str()));
    ASSERT_NE(model, nullptr);
    EXPECT_TRUE(sameModel(LeftRightHMM(1, 1, 0), *model));
}

TEST(LeftRightLoad, PrintsNothing) {
    const Capture capture;
    loaded(wave);
    loaded("nonsense");
    EXPECT_EQ(capture.text(), "");
}

TEST(LeftRightLoad, TakesMutablePathsToo) {
    const TemporaryFolder folder;
    std::string path = folder.path("model");
    writeFile(path, wave);
    const std::unique_ptr<LeftRightHMM> model(loadLR(path.data()));
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model->name, "wave");
}

// Hostile counts

TEST(LeftRightLoad, CountsBeyondWhatTheFileCouldHoldAreBadAlloc) {
    const char* refused[] = {
        "g 2147483647 1 1 1 0",   // a: 2^62 values
        "g 99999999999 1 1 1 0",  // read as 2^31 - 1
        "g 65536 1 1 1 0",        // a: 2^32, zero in 32 bits
        "g 65537 1 1 1 0",        // a: 131073 in 32 bits
        "g 46341 1 1 1 0",        // a: negative in 32 bits
        "g 1025 1 1 1 0",         // a: just beyond 2^20
        "g 2 2147483647 1 1 0",   // per-symbol values
        "g 1 99999999999 1 1 0",  // read as 2^31 - 1
        "g 1 1048577 1 1 0",      // just beyond 2^20
        "g 0 1048577 1 1 0",     "g 1024 1025 1 1 0",
    };
    for (const char* text : refused) {
        SCOPED_TRACE(text);
        EXPECT_THROW(loaded(text), std::bad_alloc);
    }
}

TEST(LeftRightLoad, CountsUpToTheLimitAreTaken) {
    const auto states = loaded("g 1024 1 1 1 5 1 0.25");
    EXPECT_EQ(states->numStates, 1024U);
    EXPECT_EQ(states->a.data.size(), std::size_t{1} << 20);
    EXPECT_TRUE(bitEqual(0.25, states->pi[1]));
    EXPECT_TRUE(bitEqual(5.0, states->vocabValues.at(0)));

    const auto symbols = loaded("g 1 1048576 1 1 0.5 0.25");
    EXPECT_EQ(symbols->vocabSize, 1U << 20);
    ASSERT_EQ(symbols->vocabValues.size(), std::size_t{1} << 20);
    EXPECT_TRUE(bitEqual(0.5, symbols->vocabValues[0]));
    EXPECT_TRUE(bitEqual(0.25, symbols->vocabValues.back()));
    EXPECT_EQ(symbols->b.data.size(), std::size_t{1} << 20);
    EXPECT_TRUE(bitEqual(1048575.0, symbols->vocab.data.back()));
}

TEST(LeftRightLoad, ALargeFileMayHoldAsManyValuesAsItHasBytes) {
    Reference::LeftRightModel large = Reference::makeLeftRight(1100, 2, 1);
    large.name = "large";
    large.vocabValues = {0, 1};
    Reference::calcInitialProbs(large, 2, {});
    const auto model = loaded(Reference::fileText(large));
    EXPECT_TRUE(sameModel(large, *model));
}

}  // namespace
