#include <support/Capture.h>
#include <support/Files.h>
#include <support/GlobalLocale.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <iomanip>
#include <locale>
#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;

/// One state, two symbols; combined model and one gesture.
struct Small {
    GestureSet set;
    RecognitionModelHMM model;

    Small() {
        fill(set.add("wave", 1, 2, 3), {1}, {0.5}, {0.25, 0.75});
        model.gestures = set.pointers();
        model.setModelTransitionProb(0.5);
        model.setName("hands");
        EXPECT_TRUE(model.initialize());
        model.codebook = {0, 90};
    }
};

std::string written(RecognitionModelHMM& model) {
    const TemporaryFolder folder;
    model.write(folder.path("model").c_str());
    return readFile(folder.path("model"));
}

TEST(WriteModelFile, OneStateAndOneGestureByteForByte) {
    Small small;
    EXPECT_EQ(written(small.model),
              "1 1 2\n"
              "0 90\n"
              "\n"
              "hands\n"
              "1 2 1 0.5\n"
              "1\n"
              "0.5\n"
              "0.25 0.75\n"
              "0 1\n"
              "\n"
              "wave\n"
              "1 2 1 3\n"
              "1\n"
              "0.5\n"
              "0.25 0.75\n"
              "\n");
}

TEST(WriteModelFile, SeveralStatesAndGesturesByteForByte) {
    GestureSet set;
    fill(set.add("up", 2, 2, 1), {1, 0}, {0.5, 0.5, 0, 1}, {0.125, 0.875, 1, 0});
    fill(set.add("down", 1, 2, -2), {1}, {0.75}, {1.0 / 3.0, 1e-7});
    RecognitionModelHMM model(set.pointers(), 0.25);
    model.setName("both");
    ASSERT_TRUE(model.initialize());
    model.codebook = {0, 51.428569793701171875, 270};
    model.proxFilterThreshold = 0.1f;
    model.rotationAllowed = false;
    EXPECT_EQ(written(model),
              "0.1 0 3\n"
              "0 51.4286 270\n"
              "\n"
              "both\n"
              "3 2 1 0.25\n"
              "0.333333 0.333333 0.333333\n"
              "0.5 0.25 0.25 0 1 0 0.125 0.125 0.75\n"
              "0.125 0.875 1 0 0.333333 1e-07\n"
              "0 1\n"
              "\n"
              "up\n"
              "2 2 1 1\n"
              "1 0\n"
              "0.5 0.5 0 1\n"
              "0.125 0.875 1 0\n"
              "\n"
              "down\n"
              "1 2 1 -2\n"
              "1\n"
              "0.75\n"
              "0.333333 1e-07\n"
              "\n");
}

TEST(WriteModelFile, OneCodebookEntryHasNoBlankBehindIt) {
    Small small;
    small.model.codebook = {45};
    EXPECT_EQ(written(small.model).substr(0, 20), "1 1 1\n45\n\nhands\n1 2 ");
}

TEST(WriteModelFile, AnEmptyCodebookIsAnEmptyLine) {
    Small small;
    small.model.codebook.clear();
    EXPECT_EQ(written(small.model).substr(0, 18), "1 1 0\n\n\nhands\n1 2 ");
}

TEST(WriteModelFile, OneCombinedStateIsOneNumberOnThePiAndTransitionLines) {
    Small small;
    const std::string text = written(small.model);
    EXPECT_NE(text.find("\n1 2 1 0.5\n1\n0.5\n"), std::string::npos);
}

TEST(WriteModelFile, WithoutGesturesEndsAfterTheBlankLine) {
    Small small;
    small.model.gestures.clear();
    EXPECT_EQ(written(small.model), "1 1 2\n0 90\n\nhands\n1 2 1 0.5\n1\n0.5\n0.25 0.75\n0 1\n\n");
}

TEST(WriteModelFile, NumbersHaveSixSignificantDigitsInGeneralNotation) {
    Small small;
    small.model.codebook = {1234567, 123456, 0.00001, 0.0001234567, -0.0, 1e300, 359.99999};
    EXPECT_EQ(written(small.model).substr(0, 61),
              "1 1 7\n1.23457e+06 123456 1e-05 0.000123457 -0 1e+300 360\n\nhan");
}

TEST(WriteModelFile, TheThresholdIsWrittenAsADouble) {
    Small small;
    small.model.proxFilterThreshold = 16777216.0f;
    EXPECT_EQ(written(small.model).substr(0, 12), "1.67772e+07 ");
    small.model.proxFilterThreshold = 0.0f;
    EXPECT_EQ(written(small.model).substr(0, 6), "0 1 2\n");
}

TEST(WriteModelFile, CombinedTablesComeFromTheCombinedModelAndCountsAndNameFromTheFields) {
    Small small;
    small.model.name = "field";
    small.model.numStates = 7;
    small.model.vocabSize = 9;
    small.model.pi = {0.125};
    small.model.a.data = {0.0625};
    small.model.b.data = {0.03125, 0.03125};
    small.model.vocab.data = {5, 6};
    small.model.recognitionHMM->dimension = 4;
    EXPECT_EQ(written(small.model).substr(0, 59),
              "1 1 2\n0 90\n\nfield\n7 9 4 0.5\n1\n0.5\n0.25 0.75\n0 1\n\nwave\n1 2 1");
}

TEST(WriteModelFile, BoundsAreTheCombinedModelsOwnCounts) {
    Small small;
    HMM combined(2, 1, 2);
    fill(combined, {0.25, 0.5}, {1, 2, 3, 4}, {5, 6});
    combined.vocab.data = {7, 8};
    small.model.recognitionHMM = &combined;
    EXPECT_EQ(written(small.model).substr(0, 57),
              "1 1 2\n0 90\n\nhands\n1 2 2 0.5\n0.25 0.5\n1 2 3 4\n5 6\n7\n\nwave\n");
}

TEST(WriteModelFile, TheVocabularyLineIsColumnZero) {
    GestureSet set;
    LeftRightHMM& gesture = set.add("g", 1, 2);
    fill(gesture, {1}, {1}, {0.5, 0.5});
    gesture.vocab.resize(2, 3);
    gesture.vocab.data = {1, 2, 3, 4, 5, 6};
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    model.name = "n";
    EXPECT_NE(written(model).find("\n0.5 0.5\n1 4\n\ng\n"), std::string::npos);
}

TEST(WriteModelFile, AGesturesOwnDimensionIsWritten) {
    Small small;
    small.model.gestures[0]->dimension = 3;
    EXPECT_NE(written(small.model).find("\nwave\n1 2 3 3\n"), std::string::npos);
}

TEST(WriteModelFile, InfinityIsWrittenAsInf) {
    Small small;
    small.model.gestures[0]->b.data = {std::numeric_limits<double>::infinity(), 0};
    EXPECT_NE(written(small.model).find("\n0.5\ninf 0\n\n"), std::string::npos);
}

TEST(WriteModelFile, AnyNameIsWrittenWhole) {
    Small small;
    small.model.setName("two words\tand \"more\"");
    small.model.gestures[0]->name = "";
    const std::string text = written(small.model);
    EXPECT_NE(text.find("\n\ntwo words\tand \"more\"\n1 2 1 0.5\n"), std::string::npos);
    EXPECT_NE(text.find("\n0 1\n\n\n1 2 1 3\n"), std::string::npos);
}

TEST(WriteModelFile, EndsAtTheFirstNulOfAName) {
    Small small;
    small.model.name = std::string("ha\0nds", 6);
    EXPECT_EQ(written(small.model), "1 1 2\n0 90\n\nha");
    small.model.name = "hands";
    small.model.gestures[0]->name = std::string("\0wave", 5);
    EXPECT_EQ(written(small.model), "1 1 2\n0 90\n\nhands\n1 2 1 0.5\n1\n0.5\n0.25 0.75\n0 1\n\n");
}

TEST(WriteModelFile, ReplacesAnExistingLongerFile) {
    Small small;
    const TemporaryFolder folder;
    writeFile(folder.path("model"), std::string(100000, 'x'));
    small.model.write(folder.path("model").c_str());
    EXPECT_EQ(readFile(folder.path("model")), written(small.model));
}

TEST(WriteModelFile, APathThatCannotBeOpenedIsSilent) {
    Small small;
    const TemporaryFolder folder;
    Capture capture;
    small.model.write(folder.path("missing/model").c_str());
    small.model.write(folder.path("").c_str());
    EXPECT_EQ(capture.text(), "");
    EXPECT_FALSE(std::filesystem::exists(folder.path("missing")));
}

TEST(WriteModelFile, WithoutACombinedModelDoesNothing) {
    const TemporaryFolder folder;
    RecognitionModelHMM model;
    model.codebook = {1};
    model.write(folder.path("model").c_str());
    EXPECT_FALSE(std::filesystem::exists(folder.path("model")));
    writeFile(folder.path("old"), "old");
    model.write(folder.path("old").c_str());
    EXPECT_EQ(readFile(folder.path("old")), "old");
    EXPECT_FALSE(model.save(folder.path("model")));
    EXPECT_FALSE(std::filesystem::exists(folder.path("model")));
}

TEST(WriteModelFile, AGestureThatIsNoLeftRightModelIsABadCast) {
    Small small;
    fill(small.set.addGeneral("general", 1, 2), {1}, {1}, {0.5, 0.5});
    small.model.gestures = small.set.pointers();
    const TemporaryFolder folder;
    EXPECT_THROW(small.model.write(folder.path("model").c_str()), std::bad_cast);
    EXPECT_THROW(small.model.save(folder.path("saved")), std::bad_cast);
    std::stringstream out;
    EXPECT_THROW(small.model.writeToStream(out, small.model.gestures[1]), std::bad_cast);
}

TEST(WriteModelFile, TablesSmallerThanTheirCountsAreOutOfRange) {
    const TemporaryFolder folder;
    const std::string path = folder.path("model");
    {
        RecognitionModelHMM model;
        ASSERT_TRUE(model.createRecognitionHMMfromParameters());  // one state, no values
        EXPECT_THROW(model.write(path.c_str()), std::out_of_range);
    }
    {
        Small small;
        small.model.recognitionHMM->vocab.resize(1, 1);
        EXPECT_THROW(small.model.write(path.c_str()), std::out_of_range);
    }
    {
        Small small;
        small.model.gestures[0]->pi.clear();
        EXPECT_THROW(small.model.write(path.c_str()), std::out_of_range);
    }
    {
        Small small;
        small.model.gestures[0]->a.resize(0, 0);
        EXPECT_THROW(small.model.write(path.c_str()), std::out_of_range);
    }
    {
        Small small;
        small.model.gestures[0]->b.resize(1, 1);
        EXPECT_THROW(small.model.write(path.c_str()), std::out_of_range);
    }
}

TEST(WriteModelFile, PrintsNothingAndChangesNothing) {
    Small small;
    const auto before = recogniserOf(small.model);
    Capture capture;
    written(small.model);
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(std::cout.precision(), 6);
    expectSameRecogniser(before, recogniserOf(small.model));
}

TEST(WriteToStream, WritesTheHeaderBlockWithoutTheBlankLineBehindIt) {
    Small small;
    std::stringstream out;
    small.model.writeToStream(out, nullptr);
    EXPECT_EQ(out.str(), "1 1 2\n0 90\n\nhands\n1 2 1 0.5\n1\n0.5\n0.25 0.75\n0 1\n");
}

TEST(WriteToStream, WritesAGestureBlockWithoutTheBlankLineBehindIt) {
    Small small;
    std::stringstream out;
    small.model.writeToStream(out, small.model.gestures[0]);
    EXPECT_EQ(out.str(), "wave\n1 2 1 3\n1\n0.5\n0.25 0.75\n");
}

TEST(WriteToStream, TakesAnyLeftRightModelAlsoOneThatIsNoGesture) {
    RecognitionModelHMM model;
    GestureSet set;
    LeftRightHMM& other = set.add("other", 2, 1, 7);
    fill(other, {1, 0}, {0.5, 0.5, 0, 1}, {1, 0.25});
    std::stringstream out;
    model.writeToStream(out, &other);
    EXPECT_EQ(out.str(), "other\n2 1 1 7\n1 0\n0.5 0.5 0 1\n1 0.25\n");
}

TEST(WriteToStream, AppendsToWhatTheStreamHolds) {
    Small small;
    std::stringstream out;
    out << "before\n";
    small.model.writeToStream(out, small.model.gestures[0]);
    small.model.writeToStream(out, small.model.gestures[0]);
    EXPECT_EQ(out.str(),
              "before\nwave\n1 2 1 3\n1\n0.5\n0.25 0.75\nwave\n1 2 1 3\n1\n0.5\n0.25 0.75\n");
}

TEST(WriteToStream, KeepsNulCharacters) {
    Small small;
    small.model.gestures[0]->name = std::string("w\0e", 3);
    std::stringstream out;
    small.model.writeToStream(out, small.model.gestures[0]);
    EXPECT_EQ(out.str(), std::string("w\0e", 3) + "\n1 2 1 3\n1\n0.5\n0.25 0.75\n");
}

TEST(WriteToStream, NothingSetsAPrecisionSoTheStreamsOwnCounts) {
    Small small;
    small.model.gestures[0]->b.data = {1.0 / 3.0, 2.0 / 3.0};
    std::stringstream out;
    out << std::setprecision(3);
    small.model.writeToStream(out, small.model.gestures[0]);
    EXPECT_EQ(out.str(), "wave\n1 2 1 3\n1\n0.5\n0.333 0.667\n");
    EXPECT_EQ(out.precision(), 3);
}

TEST(WriteToStream, FollowsEveryFormatOfTheStream) {
    Small small;
    small.model.gestures[0]->b.data = {1.0 / 3.0, 1e-20};
    using Manipulator = std::ios_base& (*)(std::ios_base&);
    const Manipulator formats[] = {std::fixed,     std::scientific, std::hexfloat,
                                   std::showpoint, std::showpos,    std::uppercase};
    for (const Manipulator format : formats) {
        std::stringstream out;
        std::stringstream expected;
        out << format;
        expected << format << "wave\n" << 1U << ' ' << 2U << ' ' << 1 << ' ' << 3 << '\n';
        expected << 1.0 << '\n' << 0.5 << '\n' << 1.0 / 3.0 << ' ' << 1e-20 << '\n';
        small.model.writeToStream(out, small.model.gestures[0]);
        EXPECT_EQ(out.str(), expected.str());
    }
}

/// Decimal commas and groups of three digits.
class Commas : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(WriteModelFile, TheGlobalLocaleChangesNothing) {
    Small small;
    small.model.codebook = {1234.5, 123456};
    const std::string expected = written(small.model);
    ASSERT_EQ(expected.substr(0, 20), "1 1 2\n1234.5 123456\n");
    const GlobalLocale commas(std::locale(std::locale::classic(), new Commas));
    EXPECT_EQ(written(small.model), expected);
    const TemporaryFolder folder;
    ASSERT_TRUE(small.model.save(folder.path("saved")));
    EXPECT_EQ(readFile(folder.path("saved")), expected);
}

TEST(WriteToStream, WritesInTheClassicLocaleWhateverTheStreamsIs) {
    Small small;
    std::stringstream out;
    out.imbue(std::locale(std::locale::classic(), new Commas));
    small.model.writeToStream(out, small.model.gestures[0]);
    EXPECT_EQ(out.str(), "wave\n1 2 1 3\n1\n0.5\n0.25 0.75\n");
}

TEST(WriteToStream, LeavesTheStreamItsLocale) {
    Small small;
    const std::locale commas(std::locale::classic(), new Commas);
    std::stringstream out;
    out.imbue(commas);
    small.model.writeToStream(out, nullptr);
    EXPECT_EQ(out.getloc(), commas);
    small.model.writeToStream(out, small.model.gestures[0]);
    EXPECT_EQ(out.getloc(), commas);
    out.str("");
    out << 1234.5;
    EXPECT_EQ(out.str(), "1.234,5");
}

TEST(WriteToStream, WritesNoHeaderBlockWithoutACombinedModel) {
    RecognitionModelHMM model;
    std::stringstream out;
    model.writeToStream(out, nullptr);
    EXPECT_EQ(out.str(), "");
}

TEST(SaveModel, WritesTheSameFileAndSaysSo) {
    Small small;
    const TemporaryFolder folder;
    EXPECT_TRUE(small.model.save(folder.path("saved")));
    EXPECT_EQ(readFile(folder.path("saved")), written(small.model));
    small.model.name = std::string("ha\0nds", 6);
    EXPECT_TRUE(small.model.save(folder.path("saved")));
    EXPECT_EQ(readFile(folder.path("saved")), written(small.model));
}

TEST(SaveModel, SaysWhereItCouldNot) {
    Small small;
    const TemporaryFolder folder;
    Capture capture;
    EXPECT_FALSE(small.model.save(folder.path("missing/model")));
    EXPECT_FALSE(small.model.save(folder.path("")));
    EXPECT_FALSE(small.model.save(""));
    EXPECT_EQ(capture.text(), "");
}

TEST(SaveModel, AFullDeviceIsAFailure) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no full device here";
    Small small;
    EXPECT_FALSE(small.model.save("/dev/full"));
    small.model.codebook.assign(100000, 123.456);  // more than one buffer of a stream
    EXPECT_FALSE(small.model.save("/dev/full"));
    small.model.write("/dev/full");  // and silence from the one that reports nothing
}

TEST(WriteModelFile, TakesCharAndConstCharPaths) {
    Small small;
    const TemporaryFolder folder;
    std::string path = folder.path("model");
    char* const mutablePath = path.data();
    small.model.write(mutablePath);
    const std::string first = readFile(path);
    const char* const constPath = path.c_str();
    std::filesystem::remove(path);
    small.model.write(constPath);
    EXPECT_EQ(readFile(path), first);
    EXPECT_FALSE(first.empty());
}

}  // namespace
}  // namespace Vesk::Test
