#include <support/Capture.h>
#include <support/Files.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <locale>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;

std::string exported(RecognitionModelHMM& model) {
    const TemporaryFolder folder;
    model.exportNode(folder.path("scene.wrl").c_str());
    return readFile(folder.path("scene.wrl"));
}

/// The line that begins with `start`, without its end.
std::string line(const std::string& text, const std::string& start) {
    const std::size_t at = text.find("\n" + start);
    if (at == std::string::npos) return "no line " + start;
    const std::size_t end = text.find('\n', at + 1);
    return text.substr(at + 1, end - at - 1);
}

TEST(ExportNode, AFreshModelByteForByte) {
    RecognitionModelHMM model;
    EXPECT_EQ(exported(model),
              "#VRML V2.0 utf8\n"
              "\n"
              "RecognitionModel {\n"
              "\tname \"\"\n"
              "\tnumStates 0\n"
              "\tvocabSize 0\n"
              "\tdimension 1 \n"
              "\tdelta -1 \n"
              "\tmodelTransitionProb 1\n"
              "\tinitialStateProbs [ ]\n"
              "\ttransitionProbs [ ]\n"
              "\temissionProbs [ ]\n"
              "\tvocab [ ]\n"
              "\tcodebook [ ]\n"
              "\tproxFilterThreshold 1\n"
              "\trotationAllowed TRUE\n"
              "\tgestures [ \n"
              "\t]\n"
              "}\n");
}

TEST(ExportNode, TwoGesturesByteForByte) {
    GestureSet set;
    LeftRightHMM& up = set.add("up", 2, 2, 1);
    fill(up, {1, 0}, {0.5, 0.5, 0, 1}, {0.125, 0.875, 1, 0});
    up.dimension = 3;
    fill(set.add("down", 1, 2, -2), {1}, {0.75}, {1.0 / 3.0, 1e-7});
    RecognitionModelHMM model(set.pointers(), 0.25);
    model.setName("both hands");
    ASSERT_TRUE(model.initialize());
    model.codebook = {0, 51.428569793701171875, 270};
    model.proxFilterThreshold = 0.1f;
    model.rotationAllowed = false;
    EXPECT_EQ(exported(model),
              "#VRML V2.0 utf8\n"
              "\n"
              "RecognitionModel {\n"
              "\tname \"both hands\"\n"
              "\tnumStates 3\n"
              "\tvocabSize 2\n"
              "\tdimension 1 \n"
              "\tdelta -1 \n"
              "\tmodelTransitionProb 0.25\n"
              "\tinitialStateProbs [ 0.333333 0.333333 0.333333 ]\n"
              "\ttransitionProbs [ 0.5 0.25 0.25 0 1 0 0.125 0.125 0.75 ]\n"
              "\temissionProbs [ 0.125 0.875 1 0 0.333333 1e-07 ]\n"
              "\tvocab [ 0 1 ]\n"
              "\tcodebook [ 0 51.4286 270 ]\n"
              "\tproxFilterThreshold 0.1\n"
              "\trotationAllowed FALSE\n"
              "\tgestures [ \n"
              "\t\tGesture {\n"
              "\t\t\tmodelname \"up\"\n"
              "\t\t\tnumStates 2\n"
              "\t\t\tvocabSize 2\n"
              "\t\t\tdimension 3\n"
              "\t\t\tdelta 1\n"
              "\t\t\tinitialStateProbs [ 1 0 ]\n"
              "\t\t\ttransitionProbs [ 0.5 0.5 0 1 ]\n"
              "\t\t\temissionProbs [ 0.125 0.875 1 0 ]\n"
              "\t\t}\n"
              "\t\tGesture {\n"
              "\t\t\tmodelname \"down\"\n"
              "\t\t\tnumStates 1\n"
              "\t\t\tvocabSize 2\n"
              "\t\t\tdimension 1\n"
              "\t\t\tdelta -2\n"
              "\t\t\tinitialStateProbs [ 1 ]\n"
              "\t\t\ttransitionProbs [ 0.75 ]\n"
              "\t\t\temissionProbs [ 0.333333 1e-07 ]\n"
              "\t\t}\n"
              "\t]\n"
              "}\n");
}

TEST(ExportNode, WithoutGesturesTheListIsClosedAtOnce) {
    RecognitionModelHMM model;
    const std::string text = exported(model);
    EXPECT_EQ(text.substr(text.size() - 19), "\n\tgestures [ \n\t]\n}\n");
}

TEST(ExportNode, AnEmptyCodebookIsClosedAtOnce) {
    RecognitionModelHMM model;
    EXPECT_EQ(line(exported(model), "\tcodebook"), "\tcodebook [ ]");
}

TEST(ExportNode, RotationAndThresholdOfTheDefaults) {
    RecognitionModelHMM model;
    EXPECT_EQ(line(exported(model), "\trotationAllowed"), "\trotationAllowed TRUE");
    EXPECT_EQ(line(exported(model), "\tproxFilterThreshold"), "\tproxFilterThreshold 1");
    model.rotationAllowed = false;
    EXPECT_EQ(line(exported(model), "\trotationAllowed"), "\trotationAllowed FALSE");
}

TEST(ExportNode, OneStateAndTwoSymbolsListOneTransitionAndTwoEmissions) {
    GestureSet set;
    fill(set.add("g", 1, 2), {1}, {0.5}, {0.25, 0.75});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    const std::string text = exported(model);
    EXPECT_EQ(line(text, "\ttransitionProbs"), "\ttransitionProbs [ 0.5 ]");
    EXPECT_EQ(line(text, "\temissionProbs"), "\temissionProbs [ 0.25 0.75 ]");
}

TEST(ExportNode, ABuiltModelListsTheUniformPi) {
    GestureSet set;
    Random random(3);
    fillRandom(set.add("g", 7, 2), random, Parameters::Stochastic);
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_EQ(line(exported(model), "\tinitialStateProbs"),
              "\tinitialStateProbs [ 0.142857 0.142857 0.142857 0.142857 0.142857 0.142857 "
              "0.142857 ]");
}

TEST(ExportNode, TheTopLevelShowsTheStagingFieldsAndNotTheCombinedModel) {
    GestureSet set;
    fill(set.add("g", 1, 2), {1}, {0.5}, {0.25, 0.75});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    model.name = "field";
    model.pi = {0.125};
    model.a.data = {0.0625};
    model.b.data = {5, 6};
    model.vocab.data = {7, 8};
    model.recognitionHMM->dimension = 9;
    const std::string text = exported(model);
    EXPECT_EQ(line(text, "\tname"), "\tname \"field\"");
    EXPECT_EQ(line(text, "\tdimension"), "\tdimension 1 ");
    EXPECT_EQ(line(text, "\tinitialStateProbs"), "\tinitialStateProbs [ 0.125 ]");
    EXPECT_EQ(line(text, "\ttransitionProbs"), "\ttransitionProbs [ 0.0625 ]");
    EXPECT_EQ(line(text, "\temissionProbs"), "\temissionProbs [ 5 6 ]");
    EXPECT_EQ(line(text, "\tvocabSize"), "\tvocabSize 2");
    EXPECT_EQ(line(text, "\tvocab ["), "\tvocab [ 7 8 ]");
}

TEST(ExportNode, TheModelFileAndTheSceneNodeDisagreeWhereStagingAndCombinedModelDo) {
    GestureSet set;
    fill(set.add("g", 1, 2), {1}, {0.5}, {0.25, 0.75});
    RecognitionModelHMM model(set.pointers(), 0.5);
    model.setName("n");
    ASSERT_TRUE(model.initialize());
    model.a.data = {0.0625};
    const TemporaryFolder folder;
    model.write(folder.path("model").c_str());
    EXPECT_NE(readFile(folder.path("model")).find("\n1\n0.5\n0.25 0.75\n"), std::string::npos);
    EXPECT_EQ(line(exported(model), "\ttransitionProbs"), "\ttransitionProbs [ 0.0625 ]");
}

TEST(ExportNode, NeedsNoCombinedModel) {
    GestureSet set;
    fill(set.add("g", 1, 1), {1}, {0.5}, {0.25});
    RecognitionModelHMM model(set.pointers(), 0.5);
    const std::string text = exported(model);
    EXPECT_EQ(line(text, "\tinitialStateProbs"), "\tinitialStateProbs [ ]");
    EXPECT_EQ(line(text, "\t\t\temissionProbs"), "\t\t\temissionProbs [ 0.25 ]");
}

TEST(ExportNode, CountsBoundTheListsAndColumnsGiveTheStep) {
    RecognitionModelHMM model;
    model.numStates = 2;
    model.vocabSize = 1;
    model.pi = {1, 2, 3};
    model.a.resize(3, 3);
    model.a.data = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    model.b.resize(2, 2);
    model.b.data = {1, 2, 3, 4};
    model.vocab.resize(2, 2);
    model.vocab.data = {5, 6, 7, 8};
    const std::string text = exported(model);
    EXPECT_EQ(line(text, "\tinitialStateProbs"), "\tinitialStateProbs [ 1 2 ]");
    EXPECT_EQ(line(text, "\ttransitionProbs"), "\ttransitionProbs [ 1 2 4 5 ]");
    EXPECT_EQ(line(text, "\temissionProbs"), "\temissionProbs [ 1 3 ]");
    EXPECT_EQ(line(text, "\tvocab ["), "\tvocab [ 5 ]");
    model.vocabSize = 2;
    EXPECT_EQ(line(exported(model), "\tvocab ["), "\tvocab [ 5 7 ]");
}

TEST(ExportNode, AGesturesCountsBoundItsListsAndColumnsGiveTheStep) {
    GestureSet set;
    LeftRightHMM& gesture = set.add("g", 3, 3);
    fill(gesture, {1, 2, 3}, {1, 2, 3, 4, 5, 6, 7, 8, 9}, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    gesture.numStates = 2;
    gesture.vocabSize = 1;
    RecognitionModelHMM model(set.pointers(), 0.5);
    const std::string text = exported(model);
    EXPECT_EQ(line(text, "\t\t\tnumStates"), "\t\t\tnumStates 2");
    EXPECT_EQ(line(text, "\t\t\tvocabSize"), "\t\t\tvocabSize 1");
    EXPECT_EQ(line(text, "\t\t\tinitialStateProbs"), "\t\t\tinitialStateProbs [ 1 2 ]");
    EXPECT_EQ(line(text, "\t\t\ttransitionProbs"), "\t\t\ttransitionProbs [ 1 2 4 5 ]");
    EXPECT_EQ(line(text, "\t\t\temissionProbs"), "\t\t\temissionProbs [ 1 4 ]");
}

TEST(ExportNode, CountsWithoutStatesOrSymbolsGiveEmptyLists) {
    RecognitionModelHMM model;
    model.numStates = 1;
    model.pi = {0.5};
    model.a.resize(1, 1);
    const std::string text = exported(model);
    EXPECT_EQ(line(text, "\ttransitionProbs"), "\ttransitionProbs [ 0 ]");
    EXPECT_EQ(line(text, "\temissionProbs"), "\temissionProbs [ ]");
    EXPECT_EQ(line(text, "\tvocab ["), "\tvocab [ ]");
}

TEST(ExportNode, NamesAreNotEscaped) {
    GestureSet set;
    fill(set.add("a\"b\\c", 1, 1), {1}, {0.5}, {0.25});
    RecognitionModelHMM model(set.pointers(), 0.5);
    model.name = "x\"y\tz";
    const std::string text = exported(model);
    EXPECT_EQ(line(text, "\tname"), "\tname \"x\"y\tz\"");
    EXPECT_EQ(line(text, "\t\t\tmodelname"), "\t\t\tmodelname \"a\"b\\c\"");
}

TEST(ExportNode, EndsAtTheFirstNulOfAName) {
    GestureSet set;
    fill(set.add(std::string("g\0h", 3), 1, 1), {1}, {0.5}, {0.25});
    RecognitionModelHMM model(set.pointers(), 0.5);
    const std::string cut = exported(model);
    EXPECT_EQ(cut.substr(cut.size() - 30), "[ \n\t\tGesture {\n\t\t\tmodelname \"g");
    model.name = std::string("\0x", 2);
    EXPECT_EQ(exported(model), "#VRML V2.0 utf8\n\nRecognitionModel {\n\tname \"");
}

TEST(ExportNode, NumbersHaveSixSignificantDigits) {
    RecognitionModelHMM model;
    model.setModelTransitionProb(0.00001234567);
    model.codebook = {1234567, 0.00001, -0.0, 123456.5};
    model.proxFilterThreshold = 1234567.0f;
    const std::string text = exported(model);
    EXPECT_EQ(line(text, "\tmodelTransitionProb"), "\tmodelTransitionProb 1.23457e-05");
    EXPECT_EQ(line(text, "\tcodebook"), "\tcodebook [ 1.23457e+06 1e-05 -0 123456 ]");
    EXPECT_EQ(line(text, "\tproxFilterThreshold"), "\tproxFilterThreshold 1.23457e+06");
}

TEST(ExportNode, ReplacesAnExistingLongerFile) {
    RecognitionModelHMM model;
    const TemporaryFolder folder;
    writeFile(folder.path("scene"), std::string(100000, 'x'));
    model.exportNode(folder.path("scene").c_str());
    EXPECT_EQ(readFile(folder.path("scene")), exported(model));
}

TEST(ExportNode, APathThatCannotBeOpenedIsSilent) {
    RecognitionModelHMM model;
    const TemporaryFolder folder;
    Capture capture;
    model.exportNode(folder.path("missing/scene").c_str());
    model.exportNode(folder.path("").c_str());
    EXPECT_EQ(capture.text(), "");
    EXPECT_FALSE(std::filesystem::exists(folder.path("missing")));
}

TEST(ExportNode, PrintsNothingAndChangesNothing) {
    GestureSet set;
    fill(set.add("g", 1, 1), {1}, {0.5}, {0.25});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    const auto before = recogniserOf(model);
    Capture capture;
    exported(model);
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(std::cout.precision(), 6);
    expectSameRecogniser(before, recogniserOf(model));
}

TEST(ExportNode, AGestureThatIsNoLeftRightModelIsABadCast) {
    GestureSet set;
    fill(set.addGeneral("general", 1, 1), {1}, {0.5}, {0.25});
    RecognitionModelHMM model(set.pointers(), 0.5);
    const TemporaryFolder folder;
    EXPECT_THROW(model.exportNode(folder.path("scene").c_str()), std::bad_cast);
    EXPECT_THROW(model.saveNode(folder.path("scene")), std::bad_cast);
}

TEST(ExportNode, TablesSmallerThanTheirCountsAreOutOfRange) {
    const TemporaryFolder folder;
    const std::string path = folder.path("scene");
    GestureSet set;
    LeftRightHMM& g = set.add("g", 2, 2);
    Random random(9);
    fillRandom(g, random, Parameters::Stochastic);
    const auto expectRefused = [&](auto damage) {
        RecognitionModelHMM model(set.pointers(), 0.5);
        ASSERT_TRUE(model.initialize());
        damage(model);
        EXPECT_THROW(model.exportNode(path.c_str()), std::out_of_range);
        EXPECT_THROW(model.saveNode(path), std::out_of_range);
    };
    expectRefused([](RecognitionModelHMM& model) { model.pi.resize(1); });
    expectRefused([](RecognitionModelHMM& model) { model.a.resize(1, 2); });
    expectRefused([](RecognitionModelHMM& model) { model.b.resize(1, 2); });
    expectRefused([](RecognitionModelHMM& model) { model.vocab.resize(1, 1); });
    expectRefused([](RecognitionModelHMM& model) { model.numStates = 3; });
    expectRefused([](RecognitionModelHMM& model) { model.vocabSize = 3; });
    expectRefused([](RecognitionModelHMM& model) { model.numStates = 4294967295U; });
    expectRefused([](RecognitionModelHMM& model) { model.vocabSize = 4294967295U; });
    const auto whole = modelOf(g);
    g.pi.resize(1);
    expectRefused([](RecognitionModelHMM&) {});
    g.pi = whole.pi;
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    g.a.resize(1, 2);
    EXPECT_THROW(model.exportNode(path.c_str()), std::out_of_range);
    g.a.resize(2, 2);
    g.b.resize(1, 2);
    EXPECT_THROW(model.exportNode(path.c_str()), std::out_of_range);
    g.b.resize(2, 2);
    model.exportNode(path.c_str());
    EXPECT_EQ(readFile(path), recogniserOf(model).sceneText());
}

class Commas : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(ExportNode, TheGlobalLocaleChangesNothing) {
    RecognitionModelHMM model;
    model.codebook = {1234.5, 123456};
    const std::string expected = exported(model);
    ASSERT_EQ(line(expected, "\tcodebook"), "\tcodebook [ 1234.5 123456 ]");
    const std::locale previous =
        std::locale::global(std::locale(std::locale::classic(), new Commas));
    const std::string found = exported(model);
    std::locale::global(previous);
    EXPECT_EQ(found, expected);
}

TEST(SaveNode, WritesTheSameFileAndSaysSo) {
    GestureSet set;
    fill(set.add("g", 1, 1), {1}, {0.5}, {0.25});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    const TemporaryFolder folder;
    EXPECT_TRUE(model.saveNode(folder.path("scene")));
    EXPECT_EQ(readFile(folder.path("scene")), exported(model));
}

TEST(SaveNode, SaysWhereItCouldNot) {
    RecognitionModelHMM model;
    const TemporaryFolder folder;
    EXPECT_FALSE(model.saveNode(folder.path("missing/scene")));
    EXPECT_FALSE(model.saveNode(folder.path("")));
    EXPECT_FALSE(model.saveNode(""));
    if (std::filesystem::exists("/dev/full")) {
        EXPECT_FALSE(model.saveNode("/dev/full"));
    }
}

TEST(ExportNode, TakesCharPaths) {
    RecognitionModelHMM model;
    const TemporaryFolder folder;
    std::string path = folder.path("scene");
    char* const mutablePath = path.data();
    model.exportNode(mutablePath);
    EXPECT_EQ(readFile(path), exported(model));
}

}  // namespace
}  // namespace Vesk::Test
