#include <support/Capture.h>
#include <support/Files.h>
#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <csignal>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <limits>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::Test::bitEqual;
using Vesk::Test::Matrix;
using Vesk::Test::matrixOf;
using Vesk::Test::modelsEqual;
using Vesk::Test::TemporaryFolder;
using Vesk::Test::writeFile;
namespace Reference = Vesk::Test::Reference;

constexpr double largest = std::numeric_limits<double>::max();

/// The model that a file with these bytes loads as.
std::unique_ptr<HMM> loaded(const std::string& text) {
    const TemporaryFolder folder;
    std::string path = folder.path("model.txt");
    writeFile(path, text);
    return std::unique_ptr<HMM>(Vesk::ML::load(path.data()));
}

/// Loads the text and compares every field with the plain reading of it.
std::unique_ptr<HMM> loadedAsRead(const std::string& text) {
    std::unique_ptr<HMM> model = loaded(text);
    EXPECT_NE(model, nullptr);
    if (model == nullptr) return std::make_unique<HMM>(1, 1);
    EXPECT_TRUE(modelsEqual(Reference::parse(text), *model)) << text;
    EXPECT_TRUE(model->vocabValues.empty());
    EXPECT_TRUE(model->needsSeed);
    return model;
}

TEST(HmmLoader, ReadsTheSixLines) {
    const auto model = loadedAsRead("gesture\n2 2 1\n1 0\n0.7 0.3 0 1\n0.9 0.1 0.2 0.8\n0 1\n");
    EXPECT_EQ(model->name, "gesture");
    EXPECT_EQ(model->numStates, 2U);
    EXPECT_EQ(model->vocabSize, 2U);
    EXPECT_EQ(model->dimension, 1);
    EXPECT_TRUE(bitEqual({1, 0}, model->pi));
    EXPECT_TRUE(bitEqual(matrixOf({{0.7, 0.3}, {0, 1}}), model->a));
    EXPECT_TRUE(bitEqual(matrixOf({{0.9, 0.1}, {0.2, 0.8}}), model->b));
}

TEST(HmmLoader, IgnoresTheVocabularyOfDimensionOne) {
    const auto model = loadedAsRead("gesture\n1 2 1\n1\n1\n0.5 0.5\n7 8\n");
    EXPECT_TRUE(bitEqual(matrixOf({{0}, {0}}), model->vocab));
}

TEST(HmmLoader, MissingFileGivesNull) {
    const TemporaryFolder folder;
    const Vesk::Test::Capture capture;
    std::string path = folder.path("missing.txt");
    EXPECT_EQ(Vesk::ML::load(path.data()), nullptr);
    EXPECT_EQ(Vesk::ML::load(path.c_str()), nullptr);
    EXPECT_EQ(Vesk::ML::load(folder.path("nowhere/model.txt").c_str()), nullptr);
    EXPECT_EQ(Vesk::ML::load(""), nullptr);
    EXPECT_EQ(capture.text(), "");
}

TEST(HmmLoader, PrintsNothing) {
    const Vesk::Test::Capture capture;
    loadedAsRead("gesture\n1 1 1\n1\n1\n1\n1\n");
    loadedAsRead("gesture\nrubbish");
    EXPECT_EQ(capture.text(), "");
}

TEST(HmmLoader, EmptyFileGivesTheSmallestModel) {
    const auto model = loadedAsRead("");
    EXPECT_TRUE(modelsEqual(HMM(1, 1), *model));
    EXPECT_TRUE(modelsEqual(HMM(1, 1), *loadedAsRead(" \n\t\n")));
}

TEST(HmmLoader, DirectoryGivesTheSmallestModel) {
    const TemporaryFolder folder;
    const std::unique_ptr<HMM> model(Vesk::ML::load(folder.path("").c_str()));
    ASSERT_NE(model, nullptr);
    EXPECT_TRUE(modelsEqual(HMM(1, 1), *model));
}

TEST(HmmLoader, DimensionMinusOneMeansOne) {
    const auto model = loadedAsRead("x\n3 4 -1\n1 2 3\n1 2 3 4 5 6 7 8 9\n");
    EXPECT_EQ(model->numStates, 3U);
    EXPECT_EQ(model->vocabSize, 4U);
    EXPECT_EQ(model->dimension, 1);
    EXPECT_EQ(model->vocab.rows, 4);
    EXPECT_EQ(model->vocab.cols, 1);
    EXPECT_TRUE(bitEqual({1, 2, 3}, model->pi));
    EXPECT_TRUE(bitEqual(matrixOf({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}}), model->a));
}

TEST(HmmLoader, DimensionBelowOneIsRaised) {
    for (const char* dimension : {"0", "-2", "-2147483648"}) {
        SCOPED_TRACE(dimension);
        const auto model =
            loadedAsRead("x\n1 2 " + std::string(dimension) + "\n1\n1\n0.5 0.25\n7 8\n");
        EXPECT_EQ(model->dimension, 1);
        EXPECT_TRUE(bitEqual(matrixOf({{0.5, 0.25}}), model->b));
        EXPECT_TRUE(bitEqual(matrixOf({{0}, {0}}), model->vocab));
    }
}

TEST(HmmLoader, MissingDimensionLeavesOne) {
    const auto model = loadedAsRead("x\n2 3\n");
    EXPECT_EQ(model->numStates, 2U);
    EXPECT_EQ(model->vocabSize, 3U);
    EXPECT_EQ(model->dimension, 1);
    const auto onlyStates = loadedAsRead("x 2");
    EXPECT_EQ(onlyStates->numStates, 2U);
    EXPECT_EQ(onlyStates->vocabSize, 1U);
    const auto onlyName = loadedAsRead("x");
    EXPECT_EQ(onlyName->name, "x");
    EXPECT_EQ(onlyName->numStates, 1U);
}

TEST(HmmLoader, LargerDimensionsReadTheVocabularyRowByRow) {
    const auto model = loadedAsRead("x\n1 3 2\n1\n1\n1 2 3\n1 2 3 4 5 6\n");
    EXPECT_TRUE(bitEqual(matrixOf({{1, 2}, {3, 4}, {5, 6}}), model->vocab));
}

TEST(HmmLoader, WrittenVocabularyOfTwoColumnsComesBackSpreadRowByRow) {
    const TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    HMM model(1, 4, 2);
    model.name = "plane";
    model.vocab = matrixOf({{1, 10}, {2, 20}, {3, 30}, {4, 40}});
    model.write(path.c_str());
    const std::unique_ptr<HMM> back(Vesk::ML::load(path.c_str()));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->dimension, 2);
    EXPECT_TRUE(bitEqual(matrixOf({{1, 2}, {3, 4}, {0, 0}, {0, 0}}), back->vocab));
}

TEST(HmmLoader, NameWithBlanksShiftsWhatFollows) {
    // The name is "two"; "words" is no number, so the sizes stay 1 and nothing else is read.
    const auto model = loadedAsRead("two words\n2 2 1\n1 0\n");
    EXPECT_EQ(model->name, "two");
    EXPECT_EQ(model->numStates, 1U);
    EXPECT_TRUE(bitEqual({0}, model->pi));
    // Here the second word is a number.
    const auto numbered = loadedAsRead("circle 3\n2 1 1\n1 0 0\n");
    EXPECT_EQ(numbered->numStates, 3U);
    EXPECT_EQ(numbered->vocabSize, 2U);
    EXPECT_EQ(numbered->dimension, 1);
    EXPECT_TRUE(bitEqual({1, 1, 0}, numbered->pi));
}

TEST(HmmLoader, EmptyNameLineMakesTheStatesTheName) {
    const auto model = loadedAsRead("\n2 3 1\n0.5 0.5\n1 2 3 4\n1 2 3 4 5 6\n0 0 0\n");
    // N = 3, M = 1; 0.5 as D reads 0 and leaves ".5", the first value of pi.
    EXPECT_EQ(model->name, "2");
    EXPECT_EQ(model->numStates, 3U);
    EXPECT_EQ(model->vocabSize, 1U);
    EXPECT_EQ(model->dimension, 1);
    EXPECT_TRUE(bitEqual({0.5, 0.5, 1}, model->pi));
    EXPECT_TRUE(bitEqual(matrixOf({{2, 3, 4}, {1, 2, 3}, {4, 5, 6}}), model->a));
}

TEST(HmmLoader, LineStructureIsIgnored) {
    const auto model = loadedAsRead("  x 2\n\n2\t1 1\r\n0 0.7 0.3 0\n1 0.9\v0.1\f0.2 0.8");
    EXPECT_EQ(model->name, "x");
    EXPECT_TRUE(bitEqual({1, 0}, model->pi));
    EXPECT_TRUE(bitEqual(matrixOf({{0.7, 0.3}, {0, 1}}), model->a));
    EXPECT_TRUE(bitEqual(matrixOf({{0.9, 0.1}, {0.2, 0.8}}), model->b));
}

TEST(HmmLoader, TruncatedFilesLeaveZeros) {
    const std::string text = "x\n2 2 2\n0.1 0.2\n1 2 3 4\n5 6 7 8\n9 10 11 12\n";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        SCOPED_TRACE(length);
        loadedAsRead(text.substr(0, length));
    }
    const auto cut = loadedAsRead("x\n2 2 1\n0.1 0.2\n1 2 3");
    EXPECT_TRUE(bitEqual(matrixOf({{1, 2}, {3, 0}}), cut->a));
    EXPECT_TRUE(bitEqual(matrixOf({{0, 0}, {0, 0}}), cut->b));
}

TEST(HmmLoader, WordAmongTheNumbersEndsTheReading) {
    const auto model = loadedAsRead("x\n2 1 1\n0.5 half\n1 2 3 4\n5 6\n");
    EXPECT_TRUE(bitEqual({0.5, 0}, model->pi));
    EXPECT_TRUE(bitEqual(Matrix(2, 2), model->a));
    EXPECT_TRUE(bitEqual(Matrix(2, 1), model->b));
}

TEST(HmmLoader, InfinitiesAndNaNAreNotRead) {
    for (const char* word : {"inf", "-inf", "nan", "infinity", "NAN"}) {
        SCOPED_TRACE(word);
        const auto model = loadedAsRead("x\n1 3 1\n1\n1\n0.5 " + std::string(word) + " 0.25\n");
        EXPECT_TRUE(bitEqual(matrixOf({{0.5, 0, 0}}), model->b));
    }
}

TEST(HmmLoader, NumberBeyondTheRangeIsTheLargestAndEndsTheReading) {
    const auto model = loadedAsRead("x\n1 3 1\n1\n1\n0.5 1e999 0.25\n");
    EXPECT_TRUE(bitEqual(matrixOf({{0.5, largest, 0}}), model->b));
    const auto negative = loadedAsRead("x\n1 3 1\n1\n1\n0.5 -1e999 0.25\n");
    EXPECT_TRUE(bitEqual(matrixOf({{0.5, -largest, 0}}), negative->b));
}

TEST(HmmLoader, OddSpellingsOfNumbersAreReadAsTheStreamReadsThem) {
    for (const char* number : {"+1",    "-0",    ".5",  "5.",  "1e3", "1E-3",   "1e",       "1e+",
                               "0x1F",  "1.5.5", "1,5", "1-2", "--1", "1e-999", "4.9e-324", "0001",
                               "1_000", "0b1",   "1d",  "1f",  "e5",  "+",      "-",        "."}) {
        SCOPED_TRACE(number);
        loadedAsRead("x\n1 3 1\n1\n1\n0.5 " + std::string(number) + " 0.25\n");
    }
}

TEST(HmmLoader, NegativeSizesAreUnsignedOnesBeyondAllTables) {
    // The stream reads -5 as 4294967291.
    EXPECT_THROW(loaded("x\n-5 3 1\n0.5\n"), std::bad_alloc);
    EXPECT_THROW(loaded("x\n3 -5 1\n0.5\n"), std::bad_alloc);
    EXPECT_THROW(loaded("x\n4294967295 1 1\n0.5\n"), std::bad_alloc);
    EXPECT_THROW(loaded("x\n1 2147483648 1\n0.5\n"), std::bad_alloc);
}

TEST(HmmLoader, SizesOfZeroMakeOneOfEachAndReadNone) {
    // The containers hold one value each, but the file promises none.
    const auto none = loadedAsRead("x\n0 0 0\n0.5\n0.25\n0.125\n");
    EXPECT_EQ(none->numStates, 1U);
    EXPECT_EQ(none->vocabSize, 1U);
    EXPECT_EQ(none->dimension, 1);
    EXPECT_TRUE(bitEqual({0.0}, none->pi));
    EXPECT_TRUE(bitEqual(Matrix(1, 1), none->a));
    EXPECT_TRUE(bitEqual(Matrix(1, 1), none->b));
    const auto states = loadedAsRead("x\n2 0 2\n0.5 0.25\n1 2 3 4\n5 6 7 8\n");
    EXPECT_TRUE(bitEqual({0.5, 0.25}, states->pi));
    EXPECT_TRUE(bitEqual(matrixOf({{1, 2}, {3, 4}}), states->a));
    EXPECT_TRUE(bitEqual(Matrix(2, 1), states->b));
    EXPECT_TRUE(bitEqual(Matrix(1, 2), states->vocab));
    const auto symbols = loadedAsRead("x\n0 2 2\n1 2 3 4\n");
    EXPECT_TRUE(bitEqual({0.0}, symbols->pi));
    EXPECT_TRUE(bitEqual(Matrix(1, 2), symbols->b));
    EXPECT_TRUE(bitEqual(matrixOf({{1, 2}, {3, 4}}), symbols->vocab));
}

TEST(HmmLoader, SizesBeyondTheRangeAreBeyondAllTables) {
    // The stream gives the largest unsigned number.
    EXPECT_THROW(loaded("x\n99999999999 2 1\n0.5\n"), std::bad_alloc);
    EXPECT_THROW(loaded("x\n2 99999999999 1\n0.5\n"), std::bad_alloc);
}

TEST(HmmLoader, DimensionBelowTheRangeIsRaisedAndEndsTheReading) {
    const auto model = loadedAsRead("x\n2 2 -99999999999\n0.5\n");
    EXPECT_EQ(model->dimension, 1);
    EXPECT_TRUE(bitEqual({0, 0}, model->pi));
}

TEST(HmmLoader, FractionsAndWordsAmongTheSizes) {
    // 2.5 reads 2 and leaves ".5", which is no unsigned number.
    const auto fraction = loadedAsRead("x\n2.5 2 1\n0.5\n");
    EXPECT_EQ(fraction->numStates, 2U);
    EXPECT_EQ(fraction->vocabSize, 1U);
    EXPECT_TRUE(bitEqual({0, 0}, fraction->pi));
    loadedAsRead("x\ntwo 2 1\n0.5\n");
    loadedAsRead("x\n2 two 1\n0.5\n");
    loadedAsRead("x\n2 2 one\n0.5\n");
    loadedAsRead("x\n0x2 2 1\n0.5\n");
    loadedAsRead("x\n+2 2 1\n0.5 0.5\n");
    loadedAsRead("x\n2,2 2 1\n0.5\n");
}

TEST(HmmLoader, NamesMayHoldAnyByteButWhiteSpace) {
    for (const std::string& name :
         {std::string("nul\0inside", 10), std::string("caf\xc3\xa9"), std::string("\xff\xfe"),
          std::string("#;\"'\\"), std::string(100000, 'n')}) {
        SCOPED_TRACE(name.substr(0, 20));
        const auto model = loadedAsRead(name + "\n1 1 1\n1\n1\n1\n0\n");
        EXPECT_TRUE(model->name == name);
        EXPECT_TRUE(bitEqual({1}, model->pi));
    }
}

TEST(HmmLoader, IgnoresWhatFollows) {
    const auto model = loadedAsRead("x\n1 1 1\n0.5\n0.25\n0.125\n0\nmore 1 2 3\n");
    EXPECT_TRUE(bitEqual(matrixOf({{0.125}}), model->b));
}

TEST(HmmLoader, ReadsFromAPipe) {
    const TemporaryFolder folder;
    const std::string path = folder.path("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::thread writer([&path] { writeFile(path, "x\n1 2 1\n0.5\n0.25\n0.125 1\n0 0\n"); });
    const std::unique_ptr<HMM> model(Vesk::ML::load(path.c_str()));
    writer.join();
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model->name, "x");
    EXPECT_TRUE(bitEqual(matrixOf({{0.125, 1}}), model->b));
}

/// The model that a pipe with these bytes loads as.
std::unique_ptr<HMM> loadedFromPipe(const std::string& text) {
    const TemporaryFolder folder;
    const std::string path = folder.path("pipe");
    EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
    std::signal(SIGPIPE, SIG_IGN);
    std::thread writer([&] { std::ofstream(path, std::ios::binary) << text; });
    std::unique_ptr<HMM> model;
    std::exception_ptr thrown;
    try {
        model.reset(Vesk::ML::load(path.c_str()));
    } catch (...) {
        thrown = std::current_exception();
    }
    writer.join();
    std::signal(SIGPIPE, SIG_DFL);
    if (thrown) std::rethrow_exception(thrown);
    return model;
}

TEST(HmmLoader, NamesFromAPipeHaveAMillionLettersAtMost) {
    const std::string longest(1 << 20, 'n');
    const auto model = loadedFromPipe(longest + "\n1 1 1\n0.5\n");
    ASSERT_NE(model, nullptr);
    EXPECT_TRUE(model->name == longest);
    EXPECT_TRUE(bitEqual({0.5}, model->pi));
    EXPECT_THROW(loadedFromPipe(longest + "n\n1 1 1\n0.5\n"), std::bad_alloc);
    EXPECT_THROW(loadedFromPipe(longest + longest + "\n1 1 1\n0.5\n"), std::bad_alloc);
}

TEST(HmmLoader, AMillionValuesATableNeedNoFileOfThatSize) {
    // 1024 * 1024 = 2^20.
    const auto states = loaded("x\n1024 1 1\n0.5\n");
    ASSERT_NE(states, nullptr);
    EXPECT_EQ(states->a.data.size(), 1048576U);
    EXPECT_TRUE(bitEqual(0.5, states->pi[0]));
    const auto symbols = loaded("x\n1 1048576 1\n0.5\n");
    ASSERT_NE(symbols, nullptr);
    EXPECT_EQ(symbols->b.data.size(), 1048576U);
    const auto dimension = loaded("x\n1 1 1048576\n0.5\n");
    ASSERT_NE(dimension, nullptr);
    EXPECT_EQ(dimension->vocab.data.size(), 1048576U);
}

TEST(HmmLoader, MoreValuesThanTheFileCouldHoldAreBadAlloc) {
    EXPECT_THROW(loaded("x\n1025 1 1\n0.5\n"), std::bad_alloc);         // a: 2^20 + 2049
    EXPECT_THROW(loaded("x\n1 1048577 1\n0.5\n"), std::bad_alloc);      // b: 2^20 + 1
    EXPECT_THROW(loaded("x\n1024 1025 1\n0.5\n"), std::bad_alloc);      // b: 2^20 + 1024
    EXPECT_THROW(loaded("x\n1 1 1048577\n0.5\n"), std::bad_alloc);      // vocab: 2^20 + 1
    EXPECT_THROW(loaded("x\n1 1024 1025\n0.5\n"), std::bad_alloc);      // vocab: 2^20 + 1024
    EXPECT_THROW(loaded("x\n2147483647 1 1\n0.5\n"), std::bad_alloc);   // pi: 2^31 - 1
    EXPECT_THROW(loaded("x\n1 2147483647 1\n0.5\n"), std::bad_alloc);   // b: 2^31 - 1
    EXPECT_THROW(loaded("x\n1 1 99999999999\n0.5\n"), std::bad_alloc);  // D: 2^31 - 1
}

TEST(HmmLoader, ProductsBeyond32BitPositionsAreBadAlloc) {
    EXPECT_THROW(loaded("x\n65536 1 1\n0.5\n"), std::bad_alloc);  // a: 2^32
    EXPECT_THROW(loaded("x\n46341 1 1\n0.5\n"), std::bad_alloc);  // a: 2^31 + 4633
    EXPECT_THROW(loaded("x\n65537 1 1\n0.5\n"), std::bad_alloc);  // a: 2^32 + 131073
    EXPECT_THROW(loaded("x\n1024 4194304 1\n"), std::bad_alloc);  // b: 2^32
    EXPECT_THROW(loaded("x\n1 65536 65536\n"), std::bad_alloc);   // vocab: 2^32
    EXPECT_THROW(loaded("x\n1 2 2147483647\n"), std::bad_alloc);  // vocab: 2^32 - 2
}

TEST(HmmLoader, LargerFilesMayDeclareAsManyValuesAsTheyHaveBytes) {
    // a has 1025 * 1025 = 1050625 values.
    std::string text = "x\n1025 1 1\n0.5\n";
    text.resize(1050624, ' ');
    EXPECT_THROW(loaded(text), std::bad_alloc);
    text.resize(1050625, ' ');
    const auto model = loaded(text);
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model->numStates, 1025U);
    EXPECT_EQ(model->a.data.size(), 1050625U);
    EXPECT_TRUE(bitEqual(0.5, model->pi[0]));
}

TEST(HmmLoader, LargerFilesMayMakeFourTimesAsManyValuesAsTheyHaveBytes) {
    // a alone has 4097 * 4097 values, more than 2^24.
    const TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    writeFile(path, "x\n4097 1 1\n0.5 end");
    std::filesystem::resize_file(path, 4097 * 4097);
    const std::unique_ptr<HMM> model(Vesk::ML::load(path.c_str()));
    ASSERT_NE(model, nullptr);
    EXPECT_EQ(model->a.data.size(), 4097U * 4097U);
    EXPECT_TRUE(bitEqual(0.5, model->pi[0]));
}

TEST(HmmLoader, NoFileIsLargeEnoughForTablesBeyond32BitPositions) {
    const TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    writeFile(path, "x\n65536 1 1\n0.5 end");
    std::filesystem::resize_file(path, std::uintmax_t{1} << 32);  // sparse
    EXPECT_THROW(Vesk::ML::load(path.c_str()), std::bad_alloc);   // a: 2^32
}

TEST(HmmLoader, LoadedModelsBelongToTheCaller) {
    const TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    writeFile(path, "x\n1 1 1\n1\n1\n1\n0\n");
    HMM* first = Vesk::ML::load(path.c_str());
    HMM* second = Vesk::ML::load(path.c_str());
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(first, second);
    first->pi[0] = 0.5;
    delete first;
    EXPECT_TRUE(bitEqual({1.0}, second->pi));
    delete second;
}

}  // namespace
