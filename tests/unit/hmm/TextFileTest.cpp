#include <support/Capture.h>
#include <support/Files.h>
#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::Test::matrixOf;
using Vesk::Test::readFile;
using Vesk::Test::TemporaryFolder;
using Vesk::Test::writeFile;

HMM gesture() {
    HMM model(2, 2, 1);
    model.name = "gesture";
    model.pi = {1, 0};
    model.a = matrixOf({{0.7, 0.3}, {0, 1}});
    model.b = matrixOf({{0.9, 0.1}, {0.2, 0.8}});
    model.vocab = matrixOf({{0}, {1}});
    return model;
}

const std::string gestureText =
    "gesture\n"
    "2 2 1\n"
    "1 0\n"
    "0.7 0.3 0 1\n"
    "0.9 0.1 0.2 0.8\n"
    "0 1\n";

/// What `write` makes of the model.
std::string written(HMM& model) {
    const TemporaryFolder folder;
    std::string path = folder.path("model.txt");
    model.write(path.data());
    return readFile(path);
}

TEST(HmmTextFile, HasSixLines) {
    HMM model = gesture();
    EXPECT_EQ(written(model), gestureText);
}

TEST(HmmTextFile, SmallestModelHasOneValueALine) {
    HMM model(1, 1);
    model.name = "name";
    model.pi = {1};
    model.a = matrixOf({{0.5}});
    model.b = matrixOf({{0.25}});
    model.vocab = matrixOf({{3}});
    EXPECT_EQ(written(model), "name\n1 1 1\n1\n0.5\n0.25\n3\n");
}

TEST(HmmTextFile, FreshModelIsWrittenWithZerosAndAnEmptyName) {
    HMM model(2, 3);
    EXPECT_EQ(written(model), "\n2 3 1\n0 0\n0 0 0 0\n0 0 0 0 0 0\n0 0 0\n");
}

TEST(HmmTextFile, MatricesStandRowByRowOnOneLine) {
    HMM model(2, 3);
    model.name = "rows";
    model.pi = {1, 2};
    model.a = matrixOf({{1, 2}, {3, 4}});
    model.b = matrixOf({{1, 2, 3}, {4, 5, 6}});
    model.vocab = matrixOf({{7}, {8}, {9}});
    EXPECT_EQ(written(model), "rows\n2 3 1\n1 2\n1 2 3 4\n1 2 3 4 5 6\n7 8 9\n");
}

TEST(HmmTextFile, OnlyTheFirstColumnOfTheVocabularyIsWritten) {
    HMM model(1, 3, 2);
    model.name = "plane";
    model.vocab = matrixOf({{1, 2}, {3, 4}, {5, 6}});
    EXPECT_EQ(written(model), "plane\n1 3 2\n0\n0\n0 0 0\n1 3 5\n");
}

TEST(HmmTextFile, NumbersHaveSixSignificantDigits) {
    HMM model(1, 14);
    model.name = "digits";
    model.pi = {1.0 / 3};
    model.a = matrixOf({{2.0 / 3}});
    model.b = matrixOf({{0.00001, 0.0001, 0.5, 1.0, 0.1234567, 123456, 1234567, 100000, 1000000,
                         1e100, -0.0, 4.9406564584124654e-324, 0.9999999, -2.5}});
    EXPECT_EQ(written(model),
              "digits\n1 14 1\n0.333333\n0.666667\n"
              "1e-05 0.0001 0.5 1 0.123457 123456 1.23457e+06 100000 1e+06 1e+100 -0 "
              "4.94066e-324 1 -2.5\n"
              "0 0 0 0 0 0 0 0 0 0 0 0 0 0\n");
}

TEST(HmmTextFile, InfinitiesAndNaNAreWords) {
    HMM model(1, 3);
    model.name = "odd";
    const double infinity = std::numeric_limits<double>::infinity();
    model.b = matrixOf({{infinity, -infinity, std::numeric_limits<double>::quiet_NaN()}});
    EXPECT_EQ(written(model), "odd\n1 3 1\n0\n0\ninf -inf nan\n0 0 0\n");
}

TEST(HmmTextFile, NameIsWrittenAsItIsStored) {
    for (const std::string& name :
         {std::string("two words"), std::string("a\nline"), std::string("\ttab "),
          std::string("nul\0inside", 10), std::string("caf\xc3\xa9"), std::string(100000, 'x')}) {
        SCOPED_TRACE(name.substr(0, 20));
        HMM model = gesture();
        model.name = name;
        EXPECT_TRUE(written(model) == name + gestureText.substr(7));
    }
}

TEST(HmmTextFile, DimensionIsWrittenSigned) {
    HMM model = gesture();
    model.dimension = -3;
    EXPECT_EQ(written(model), "gesture\n2 2 -3\n" + gestureText.substr(14));
}

TEST(HmmTextFile, TablesAreReadByTheirOwnColumnCounts) {
    HMM model = gesture();
    model.pi = {1, 0, 99};
    model.a = matrixOf({{0.7, 0.3, 99}, {0, 1, 99}});
    model.b = matrixOf({{0.9, 0.1, 99, 99}, {0.2, 0.8, 99, 99}});
    model.vocab = matrixOf({{0, 99}, {1, 99}, {99, 99}});
    EXPECT_EQ(written(model), gestureText);
}

TEST(HmmTextFile, ReplacesAnExistingFile) {
    const TemporaryFolder folder;
    std::string path = folder.path("model.txt");
    writeFile(path, std::string(10000, '#'));
    HMM model = gesture();
    model.write(path.data());
    EXPECT_EQ(readFile(path), gestureText);
}

TEST(HmmTextFile, FileThatCannotBeOpenedIsSilent) {
    const TemporaryFolder folder;
    HMM model = gesture();
    const Vesk::Test::Capture capture;
    std::string missing = folder.path("nowhere/model.txt");
    model.write(missing.data());
    EXPECT_FALSE(std::filesystem::exists(folder.path("nowhere")));
    std::string directory = folder.path("");
    model.write(directory.data());
    EXPECT_TRUE(std::filesystem::is_empty(directory));
    std::string empty;
    model.write(empty.data());
    EXPECT_EQ(capture.text(), "");
    EXPECT_TRUE(Vesk::Test::modelsEqual(gesture(), model));
}

TEST(HmmTextFile, StringLiteralsNameFilesToo) {
    const TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    HMM model = gesture();
    model.write(path.c_str());
    EXPECT_EQ(readFile(path), gestureText);
    const std::unique_ptr<HMM> loaded(Vesk::ML::load(path.c_str()));
    ASSERT_NE(loaded, nullptr);
    EXPECT_EQ(loaded->name, "gesture");
}

TEST(HmmTextFile, StringLiteralsReachTheDerivedWriter) {
    class Counting : public HMM {
    public:
        Counting() : HMM(1, 1) {}
        using HMM::write;
        void write(char*) override { ++calls; }
        int calls = 0;
    };
    Counting model;
    HMM& base = model;
    base.write("nowhere");
    EXPECT_EQ(model.calls, 1);
}

TEST(HmmTextFile, WritingPrintsNothingAndChangesNothing) {
    HMM model = gesture();
    const Vesk::Test::Capture capture;
    written(model);
    EXPECT_EQ(capture.text(), "");
    EXPECT_TRUE(Vesk::Test::modelsEqual(gesture(), model));
}

TEST(HmmSave, WritesTheSameFileAndReportsIt) {
    const TemporaryFolder folder;
    const HMM model = gesture();
    EXPECT_TRUE(model.save(folder.path("model.txt")));
    EXPECT_EQ(readFile(folder.path("model.txt")), gestureText);
}

TEST(HmmSave, ReplacesAnExistingFile) {
    const TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    writeFile(path, std::string(10000, '#'));
    EXPECT_TRUE(gesture().save(path));
    EXPECT_EQ(readFile(path), gestureText);
}

TEST(HmmSave, IsFalseWhereTheFileCannotBeOpened) {
    const TemporaryFolder folder;
    EXPECT_FALSE(gesture().save(folder.path("nowhere/model.txt")));
    EXPECT_FALSE(gesture().save(folder.path("")));
    EXPECT_FALSE(gesture().save(""));
    EXPECT_TRUE(std::filesystem::is_empty(folder.path("")));
}

TEST(HmmSave, IsFalseWhereTheDeviceIsFull) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    EXPECT_FALSE(gesture().save("/dev/full"));
    HMM model = gesture();
    const Vesk::Test::Capture capture;
    model.write("/dev/full");
    EXPECT_EQ(capture.text(), "");
}

TEST(HmmSave, PrintsNothing) {
    const TemporaryFolder folder;
    const Vesk::Test::Capture capture;
    EXPECT_TRUE(gesture().save(folder.path("model.txt")));
    EXPECT_FALSE(gesture().save(folder.path("nowhere/model.txt")));
    EXPECT_EQ(capture.text(), "");
}

}  // namespace
