#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/Files.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using namespace Vesk::Test;

Reference::LeftRightModel wave() {
    Reference::LeftRightModel model = Reference::makeLeftRight(2, 3, 1);
    model.name = "wave";
    model.pi = {1.0, 0.0};
    model.a = {{0.7, 0.3}, {0.0, 1.0}};
    model.b = {{0.5, 0.25, 0.25}, {0.125, 0.375, 0.5}};
    model.vocabValues = {0.0, 1.0, 2.0};
    return model;
}

std::string written(LeftRightHMM& model) {
    const TemporaryFolder folder;
    const std::string path = folder.path("model");
    model.write(path.c_str());
    return readFile(path);
}

std::string written(const Reference::LeftRightModel& reference) {
    LeftRightHMM model = libraryModel(reference);
    return written(model);
}

TEST(LeftRightWrite, AModelWithSymbolValuesHasSevenLines) {
    EXPECT_EQ(written(wave()),
              "wave\n"
              "2 3 1 1\n"
              "0 1 2\n"
              "1 0\n"
              "0.7 0.3 0 1\n"
              "0.5 0.25 0.25 0.125 0.375 0.5\n"
              "0 1 2\n");
}

TEST(LeftRightWrite, AModelWithoutSymbolValuesHasSixLines) {
    Reference::LeftRightModel model = wave();
    model.vocabValues.clear();
    EXPECT_EQ(written(model),
              "wave\n"
              "2 3 1 1\n"
              "1 0\n"
              "0.7 0.3 0 1\n"
              "0.5 0.25 0.25 0.125 0.375 0.5\n"
              "0 1 2\n");
}

TEST(LeftRightWrite, AFreshModelIsWrittenWithItsZeros) {
    LeftRightHMM model(1, 1, -3);
    EXPECT_EQ(written(model), "\n1 1 1 -3\n0\n0\n0\n0\n");
}

TEST(LeftRightWrite, WritesAllSymbolValuesWhateverTheirNumber) {
    Reference::LeftRightModel model = wave();
    model.vocabValues = {7.5};
    EXPECT_EQ(written(model).substr(0, 17), "wave\n2 3 1 1\n7.5\n");
    model.vocabValues = {9, 8, 7, 6, 5};
    EXPECT_EQ(written(model).substr(0, 23), "wave\n2 3 1 1\n9 8 7 6 5\n");
}

TEST(LeftRightWrite, NumbersHaveSixSignificantDigitsInGeneralNotation) {
    Reference::LeftRightModel model = wave();
    const double inf = std::numeric_limits<double>::infinity();
    model.pi = {1.0 / 3.0, 0.00001};
    model.a = {{1234567.0, 123456.0}, {-0.0, 100000.0}};
    model.b = {{inf, -inf, 0.1234567}, {1e-310, 2.0 / 3.0, 1e300}};
    model.vocabValues = {-2.5, 0.0001, 1e6};
    EXPECT_EQ(written(model),
              "wave\n2 3 1 1\n-2.5 0.0001 1e+06\n0.333333 1e-05\n1.23457e+06 123456 -0 100000\n"
              "inf -inf 0.123457 1e-310 0.666667 1e+300\n0 1 2\n");
}

TEST(LeftRightWrite, DoesNotFollowTheFormattingOfStandardOutput) {
    const Capture capture;
    std::cout.precision(2);
    std::cout.setf(std::ios::fixed, std::ios::floatfield);
    std::cout.setf(std::ios::showpos);
    EXPECT_EQ(written(wave()), Reference::fileText(wave()));
    EXPECT_EQ(std::cout.precision(), 2);
}

TEST(LeftRightWrite, SizesAreWrittenAsTheyAreStored) {
    LeftRightHMM model(2, 2, 2147483647);
    EXPECT_EQ(written(model).substr(0, 18), "\n2 2 1 2147483647\n");
    model.delta = -2147483647 - 1;
    EXPECT_EQ(written(model).substr(0, 19), "\n2 2 1 -2147483648\n");
    model.dimension = -4;
    EXPECT_EQ(written(model).substr(0, 20), "\n2 2 -4 -2147483648\n");
}

TEST(LeftRightWrite, LastLineIsTheFirstColumnOfTheVocabulary) {
    Reference::LeftRightModel model = wave();
    model.D = 2;
    model.vocab = {{5, -1}, {6, -2}, {7.5, -3}};
    const std::string text = written(model);
    EXPECT_EQ(text.substr(text.size() - 9), "\n5 6 7.5\n");
    EXPECT_EQ(text, Reference::fileText(model));
}

TEST(LeftRightWrite, TakesTheLeadingStatesAndSymbolsOfLargerTables) {
    LeftRightHMM model(2, 1, 1);
    model.pi = {1, 2, 3};
    model.a = matrixOf({{1, 2, 3}, {4, 5, 6}, {7, 8, 9}});
    model.b = matrixOf({{10, 11}, {12, 13}});
    model.vocab = matrixOf({{20}, {21}});
    EXPECT_EQ(written(model), "\n2 1 1 1\n1 2\n1 2 4 5\n10 12\n20\n");
}

TEST(LeftRightWrite, NameIsWrittenWholeAsStored) {
    for (const std::string& name : {std::string(), std::string("two words"), std::string("a\nb"),
                                    std::string("nul\0inside", 10), std::string("\xc3\xa9\xff")}) {
        Reference::LeftRightModel model = wave();
        model.name = name;
        EXPECT_EQ(written(model), Reference::fileText(model));
        EXPECT_EQ(written(model).substr(0, name.size() + 1), name + "\n");
    }
}

TEST(LeftRightWrite, ReplacesALongerFile) {
    const TemporaryFolder folder;
    const std::string path = folder.path("model");
    writeFile(path, std::string(5000, 'x'));
    LeftRightHMM model = libraryModel(wave());
    model.write(path.c_str());
    EXPECT_EQ(readFile(path), Reference::fileText(wave()));
}

TEST(LeftRightWrite, DoesNothingWhereItCannotOpen) {
    const TemporaryFolder folder;
    LeftRightHMM model = libraryModel(wave());
    const LeftRightHMM before = model;
    const Capture capture;
    EXPECT_NO_THROW(model.write(folder.path("no/such/folder").c_str()));
    EXPECT_NO_THROW(model.write(folder.path("").c_str()));  // a folder
    EXPECT_NO_THROW(model.write(""));
    EXPECT_EQ(capture.text(), "");
    EXPECT_TRUE(sameModel(before, model));
    EXPECT_TRUE(std::filesystem::is_empty(folder.path("")));
}

TEST(LeftRightWrite, PrintsNothingAndLeavesTheModelAlone) {
    LeftRightHMM model = libraryModel(wave());
    const Capture capture;
    written(model);
    EXPECT_EQ(capture.text(), "");
    EXPECT_TRUE(sameModel(wave(), model));
}

TEST(LeftRightWrite, TheBaseSeenThroughAPointerWritesTheLeftRightFile) {
    const TemporaryFolder folder;
    LeftRightHMM model = libraryModel(wave());
    HMM& base = model;
    std::string path = folder.path("model");
    base.write(path.data());
    EXPECT_EQ(readFile(path), Reference::fileText(wave()));
    const std::string other = folder.path("other");
    base.write(other.c_str());
    EXPECT_EQ(readFile(other), Reference::fileText(wave()));
}

TEST(LeftRightWrite, DoesNotStoreTrainingDataOrThreshold) {
    LeftRightHMM model = libraryModel(wave());
    model.trainingSequences = {{0, 1}};
    model.stateSymbols = {{0}, {1}};
    model.convergenceThreshold = 5.0f;
    EXPECT_EQ(written(model), Reference::fileText(wave()));
}

// The twin that tells

TEST(LeftRightSave, WritesTheSameBytes) {
    const TemporaryFolder folder;
    LeftRightHMM model = libraryModel(wave());
    EXPECT_TRUE(static_cast<const LeftRightHMM&>(model).save(folder.path("saved")));
    model.write(folder.path("written").c_str());
    EXPECT_EQ(readFile(folder.path("saved")), readFile(folder.path("written")));
}

TEST(LeftRightSave, IsFalseWhereItCannotOpenOrWriteEverything) {
    const TemporaryFolder folder;
    const LeftRightHMM model = libraryModel(wave());
    EXPECT_FALSE(model.save(folder.path("no/such/folder")));
    EXPECT_FALSE(model.save(folder.path("")));
    EXPECT_FALSE(model.save(""));
    ASSERT_TRUE(std::filesystem::exists("/dev/full"));
    EXPECT_FALSE(model.save("/dev/full"));
}

TEST(LeftRightSave, OfTheBaseStoresAGeneralModel) {
    const TemporaryFolder folder;
    const LeftRightHMM model = libraryModel(wave());
    EXPECT_TRUE(static_cast<const HMM&>(model).save(folder.path("general")));
    EXPECT_EQ(readFile(folder.path("general")),
              Reference::fileText(static_cast<const Reference::Model&>(wave())));
}

}  // namespace
