#include <support/Capture.h>
#include <support/Files.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::RecognitionModelHMM;

/// Loads `text` without showing what is printed.
bool loadText(RecognitionModelHMM& model, const std::string& text) {
    const TemporaryFolder folder;
    writeFile(folder.path("model"), text);
    const Capture silence;
    return model.load(folder.path("model").c_str());
}

void expectNothingRead(const RecognitionModelHMM& model) {
    EXPECT_FALSE(model.rotationAllowed);  // no 1 was read
    EXPECT_TRUE(model.codebook.empty());
    EXPECT_EQ(model.name, "");
    EXPECT_EQ(model.numStates, 0U);
    EXPECT_EQ(model.vocabSize, 0U);
    EXPECT_EQ(model.modelTransitionProb, 1.0);
    EXPECT_EQ(model.gestureTransitionProb, 1.0);
    EXPECT_TRUE(model.pi.empty());
    EXPECT_TRUE(model.a.data.empty());
    EXPECT_TRUE(model.b.data.empty());
    EXPECT_EQ(model.vocab.rows, 0);
    EXPECT_EQ(model.vocab.cols, 1);
    EXPECT_TRUE(model.gestures.empty());
    EXPECT_TRUE(model.fromParameters);
    ASSERT_NE(model.recognitionHMM, nullptr);
    EXPECT_EQ(model.recognitionHMM->numStates, 1U);
    EXPECT_EQ(model.recognitionHMM->vocabSize, 1U);
    EXPECT_TRUE(model.recognitionHMM->pi.empty());
    EXPECT_TRUE(model.recognitionHMM->a.data.empty());
    EXPECT_TRUE(model.recognitionHMM->b.data.empty());
}

TEST(HostileModelFile, AnEmptyFileLoadsAsAnEmptyModel) {
    RecognitionModelHMM model;
    EXPECT_TRUE(loadText(model, ""));
    expectNothingRead(model);
    EXPECT_FALSE(model.initialize());
}

TEST(HostileModelFile, AFolderLoadsAsAnEmptyFileDoes) {
    const TemporaryFolder folder;
    RecognitionModelHMM model;
    EXPECT_TRUE(model.load(folder.path("").c_str()));
    expectNothingRead(model);
}

TEST(HostileModelFile, WordsInsteadOfNumbersLoadAsAnEmptyModel) {
    RecognitionModelHMM model;
    EXPECT_TRUE(loadText(model, "not a model file at all"));
    EXPECT_EQ(model.proxFilterThreshold, 0.0f);  // what a failed conversion stores
    model.proxFilterThreshold = 1.0f;
    expectNothingRead(model);
}

TEST(HostileModelFile, AnEmptyModelRefusesRecognitionAndWritingAndTakesExport) {
    RecognitionModelHMM model;
    ASSERT_TRUE(loadText(model, ""));
    const TemporaryFolder folder;
    const Capture silence;
    EXPECT_THROW(model.forwardProb({0, 0}), std::out_of_range);
    EXPECT_THROW(model.check({0, 0}), std::out_of_range);
    EXPECT_EQ(model.check({0}), "");
    EXPECT_THROW(model.print(), std::out_of_range);
    EXPECT_THROW(model.write(folder.path("model").c_str()), std::out_of_range);
    // The scene node shows the staging fields, which hold what they promise.
    model.exportNode(folder.path("scene").c_str());
    EXPECT_EQ(readFile(folder.path("scene")), recogniserOf(model).sceneText());
}

TEST(HostileModelFile, ATruncatedCodebookStillGetsTheDeclaredNumberOfEntries) {
    RecognitionModelHMM model;
    EXPECT_TRUE(loadText(model, "1 1 1000 5 x"));
    ASSERT_EQ(model.codebook.size(), 1000U);
    EXPECT_EQ(model.codebook[0], 5.0);
    EXPECT_EQ(model.codebook[1], 0.0);
    EXPECT_EQ(model.codebook[999], 0.0);
    EXPECT_EQ(model.name, "");
}

TEST(HostileModelFile, TruncatedTablesKeepZerosAndTheDeclaredShapes) {
    RecognitionModelHMM model;
    EXPECT_TRUE(loadText(model, "1 1 0 n 2 3 1 0.5 0.25 0.75 0.125"));
    EXPECT_EQ(model.pi, (std::vector<double>{0.25, 0.75}));
    EXPECT_EQ(model.a.data, (std::vector<double>{0.125, 0, 0, 0}));
    EXPECT_EQ(model.b.data, std::vector<double>(6, 0.0));
    EXPECT_EQ(model.b.rows, 2);
    EXPECT_EQ(model.b.cols, 3);
    EXPECT_EQ(model.vocab.data, std::vector<double>(3, 0.0));
    EXPECT_EQ(model.recognitionHMM->a(0, 0), 0.125);
}

TEST(HostileModelFile, ATruncatedFileIntoAModelOfThatShapeKeepsItsOldValues) {
    GestureSet set;
    fill(set.add("g", 1, 2), {1}, {0.5}, {0.25, 0.75});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    EXPECT_TRUE(loadText(model, "1 1 0 n 1 2 1 0.5 0.125"));
    EXPECT_EQ(model.pi, std::vector<double>{0.125});
    EXPECT_EQ(model.a.data, std::vector<double>{0.5});
    EXPECT_EQ(model.b.data, (std::vector<double>{0.25, 0.75}));
    EXPECT_EQ(model.vocab.data, (std::vector<double>{0, 1}));
}

TEST(HostileModelFile, AGestureCutOffAfterItsNameHasNoTables) {
    RecognitionModelHMM model;
    EXPECT_TRUE(loadText(model, "1 1 0 n 1 1 1 1 1 1 1 7 cut"));
    ASSERT_EQ(model.gestures.size(), 1U);
    const HMM& cut = *model.gestures[0];
    EXPECT_EQ(cut.name, "cut");
    EXPECT_EQ(cut.numStates, 1U);
    EXPECT_EQ(cut.vocabSize, 1U);
    EXPECT_TRUE(cut.pi.empty());
    EXPECT_TRUE(cut.a.data.empty());
    EXPECT_TRUE(cut.b.data.empty());
    EXPECT_EQ(cut.vocab.data, std::vector<double>{7});
    EXPECT_EQ(dynamic_cast<const Vesk::ML::LeftRightHMM&>(cut).delta, 0);
    const Capture silence;
    const TemporaryFolder folder;
    EXPECT_THROW(model.check({0, 0}), std::out_of_range);
    EXPECT_THROW(model.evaluate({0, 0}), std::out_of_range);
    EXPECT_THROW(model.write(folder.path("model").c_str()), std::out_of_range);
    EXPECT_THROW(model.save(folder.path("model")), std::out_of_range);
    EXPECT_THROW(model.exportNode(folder.path("scene").c_str()), std::out_of_range);
    EXPECT_THROW(model.saveNode(folder.path("scene")), std::out_of_range);
    EXPECT_EQ(model.forwardProb({0, 0}), 1.0);
}

TEST(HostileModelFile, AGestureWithoutSymbolsHasNoEmissions) {
    RecognitionModelHMM model;
    EXPECT_TRUE(loadText(model,
                         "1 1 0 n 1 1 1 1 1 1 1 7 mute 2 0 1 1 0.5 0.5 1 2 3 4 "
                         "next 1 1 1 1 1 1 1"));
    ASSERT_EQ(model.gestures.size(), 2U);
    EXPECT_EQ(model.gestures[0]->numStates, 2U);
    EXPECT_EQ(model.gestures[0]->vocabSize, 1U);
    EXPECT_EQ(model.gestures[0]->b.rows, 2);
    EXPECT_EQ(model.gestures[0]->b.cols, 0);
    EXPECT_EQ(model.gestures[0]->a.data, (std::vector<double>{1, 2, 3, 4}));
    EXPECT_EQ(model.gestures[1]->name, "next");
    const Capture silence;
    EXPECT_THROW(model.check({0, 0}), std::out_of_range);
}

TEST(HostileModelFile, LoadedGesturesThatDoNotFitTheCountsRefuseSetParameters) {
    RecognitionModelHMM model;
    ASSERT_TRUE(loadText(model, "1 1 0 n 1 1 1 1 1 1 1 7 two 2 1 1 1 1 0 1 0 0 1 1 1"));
    HMM* const combined = model.recognitionHMM;
    const auto before = recogniserOf(model);
    EXPECT_THROW(model.setParameters(), std::out_of_range);
    EXPECT_EQ(model.recognitionHMM, combined);
    expectSameRecogniser(before, recogniserOf(model));
}

TEST(HostileModelFile, HugeCodebookCountsAreRefused) {
    for (const std::string count : {"4294967295", "-5", "1048577", "99999999999"}) {
        SCOPED_TRACE(count);
        RecognitionModelHMM model;
        EXPECT_THROW(loadText(model, "2.5 1 " + count + " 1 2 3"), std::bad_alloc);
        EXPECT_EQ(model.proxFilterThreshold, 2.5f);
        EXPECT_EQ(model.recognitionHMM, nullptr);
        EXPECT_FALSE(model.fromParameters);
    }
}

TEST(HostileModelFile, AMillionCodebookEntriesAreTaken) {
    RecognitionModelHMM model;
    EXPECT_TRUE(loadText(model, "2.5 1 1048576 x"));
    EXPECT_EQ(model.codebook.size(), 1048576U);
}

TEST(HostileModelFile, HugeCountsOfTheCombinedModelAreRefused) {
    for (const std::string counts :
         {"1025 1", "1 1048577", "1024 1025", "1025 1024", "65536 1", "65536 65536", "2147483647 1",
          "2147483648 1", "4294967295 1", "1 4294967295", "-5 1", "1 -5", "4294967295 4294967295",
          "99999999999 1", "46341 1", "92682 1", "0 1048577", "0 4294967295"}) {
        SCOPED_TRACE(counts);
        RecognitionModelHMM model;
        EXPECT_THROW(loadText(model, "2.5 1 2 10 20 name " + counts + " 1 0.5 1 1 1 1"),
                     std::bad_alloc);
        // What was read is kept.
        EXPECT_EQ(model.proxFilterThreshold, 2.5f);
        EXPECT_TRUE(model.rotationAllowed);
        EXPECT_EQ(model.codebook, (std::vector<double>{10, 20}));
        EXPECT_EQ(model.name, "name");
        EXPECT_TRUE(model.gestures.empty());
        EXPECT_EQ(model.recognitionHMM, nullptr);
        EXPECT_FALSE(model.fromParameters);
    }
}

TEST(HostileModelFile, CountsUpToTheLimitAreTaken) {
    RecognitionModelHMM square;
    EXPECT_TRUE(loadText(square, "1 1 0 n 1024 1 1 0.5 0.25"));
    EXPECT_EQ(square.recognitionHMM->a.rows, 1024);
    EXPECT_EQ(square.recognitionHMM->a.data.size(), 1048576U);
    EXPECT_EQ(square.pi[0], 0.25);
    RecognitionModelHMM wide;
    EXPECT_TRUE(loadText(wide, "1 1 0 n 1 1048576 1 0.5 0.25"));
    EXPECT_EQ(wide.recognitionHMM->b.cols, 1048576);
    EXPECT_EQ(wide.recognitionHMM->vocab.rows, 1048576);
}

TEST(HostileModelFile, ALongFileMayDeclareAsManyValuesAsItHasBytes) {
    const std::string text = "1 1 0 n 1025 1 1 0.5 0.25";
    const std::size_t values = 1025U * 1025U;
    RecognitionModelHMM enough;
    EXPECT_TRUE(loadText(enough, text + std::string(values - text.size(), '\n')));
    EXPECT_EQ(enough.a.data.size(), values);
    RecognitionModelHMM oneShort;
    EXPECT_THROW(loadText(oneShort, text + std::string(values - text.size() - 1, '\n')),
                 std::bad_alloc);
}

TEST(HostileModelFile, HugeCountsOfAGestureAreRefusedAndEarlierGesturesKept) {
    for (const std::string counts :
         {"1025 1", "1 1048577", "1024 1025", "65536 1", "4294967295 1", "1 4294967295", "-5 1",
          "1 -5", "99999999999 1", "0 1048577", "0 4294967295"}) {
        SCOPED_TRACE(counts);
        RecognitionModelHMM model;
        EXPECT_THROW(loadText(model, "1 1 0 n 1 1 1 0.5 1 1 1 7 first 1 1 1 1 1 1 1 second " +
                                         counts + " 1 1 1 1 1"),
                     std::bad_alloc);
        ASSERT_EQ(model.gestures.size(), 1U);
        EXPECT_EQ(model.gestures[0]->name, "first");
        EXPECT_EQ(model.name, "n");
        EXPECT_EQ(model.pi, std::vector<double>{1});
        EXPECT_EQ(model.recognitionHMM, nullptr);
        EXPECT_FALSE(model.fromParameters);
    }
}

TEST(HostileModelFile, TheGesturesVocabularyCopiesCountAgainstWhatAFileMayMake) {
    // A vocabulary of 2^20 symbols that every one of 1000 tiny gestures would copy: 8 GB.
    std::string text = "1 1 0 n 1 1048576 1 0.5 1 1\n";
    for (int k = 0; k < 2 * 1048576; ++k) text += "0 ";
    for (int g = 0; g < 1000; ++g) text += "\ng 1 1 1 1 1 1 1";
    RecognitionModelHMM model;
    EXPECT_THROW(loadText(model, text), std::bad_alloc);
    EXPECT_LT(model.gestures.size(), 20U);
    EXPECT_EQ(model.recognitionHMM, nullptr);
}

TEST(HostileModelFile, AShortFileMayMakeSixteenMillionValuesInAll) {
    // The combined model's vocabulary and emissions of 2^18 values each, with their copies, and
    // the vocabulary once more for every gesture: the 60th would pass 2^24.
    std::string text = "1 1 0 n 1 262144 1 0.5 1 1\n";
    for (int k = 0; k < 2 * 262144; ++k) text += "0 ";
    for (int g = 0; g < 60; ++g) text += "\ng 1 1 1 1 1 1 1";
    RecognitionModelHMM model;
    EXPECT_THROW(loadText(model, text), std::bad_alloc);
    EXPECT_EQ(model.gestures.size(), 59U);
    for (HMM* gesture : model.gestures) delete gesture;
}

TEST(HostileModelFile, GesturesCountAsWhatTheyAreBesidesTheirTables) {
    // Their copies of the vocabulary alone would stay below 2^24 values.
    constexpr std::size_t gestures = 16500;
    constexpr std::size_t symbols = 1000;
    constexpr std::size_t object = sizeof(Vesk::ML::LeftRightHMM) / sizeof(double);
    static_assert(gestures * (symbols + 8) < (1U << 24));
    static_assert(gestures * (symbols + object) > (1U << 24));
    std::string text = "1 1 0 n 1 1000 1 0.5 1 1\n";
    for (std::size_t k = 0; k < 2 * symbols; ++k) text += "0 ";
    for (std::size_t g = 0; g < gestures; ++g) text += "g 0 0 1 1\n";
    RecognitionModelHMM model;
    EXPECT_THROW(loadText(model, text), std::bad_alloc);
    for (HMM* gesture : model.gestures) delete gesture;
}

/// A file of so many bytes that ends, for its reader, behind `start`.
std::string cutAndPadded(const std::string& start, std::size_t bytes) {
    std::string text = start + " end";
    text.resize(bytes, ' ');
    return text;
}

TEST(HostileModelFile, EveryTableAndCopyCountsAgainstFourTimesTheBytes) {
    // With n = 2048 states and symbols, a, b and their copies have 4 n^2 values, pi and the
    // vocabulary with theirs 4 n: four times the bytes are n too few.
    constexpr std::size_t n = 2048;
    constexpr std::size_t bytes = n * n + 3 * n / 4;
    RecognitionModelHMM combined;
    EXPECT_THROW(loadText(combined, cutAndPadded("1 1 0 n 2048 2048 1 0.5", bytes)),
                 std::bad_alloc);
    EXPECT_EQ(combined.recognitionHMM, nullptr);
    EXPECT_TRUE(combined.a.data.empty());
}

TEST(HostileModelFile, EveryTableOfAGestureCountsAgainstFourTimesTheBytes) {
    // As above, but a gesture's vocabulary of n symbols is replaced by the combined model's of
    // one: 4 n^2 + 3 n values, n / 2 more than four times the bytes.
    constexpr std::size_t n = 2048;
    constexpr std::size_t bytes = n * n + 5 * n / 8;
    RecognitionModelHMM model;
    EXPECT_THROW(loadText(model, cutAndPadded("1 1 0 n 1 1 1 0.5 1 1 1 7 g 2048 2048 1 1", bytes)),
                 std::bad_alloc);
    EXPECT_TRUE(model.gestures.empty());
}

TEST(HostileModelFile, ManyTinyGesturesAreTaken) {
    std::string text = "1 1 0 n 1 1 1 0.5 1 1 1 0\n";
    for (int g = 0; g < 5000; ++g) text += "g 1 1 1 1 1 1 1\n";
    RecognitionModelHMM model;
    EXPECT_TRUE(loadText(model, text));
    EXPECT_EQ(model.gestures.size(), 5000U);
    EXPECT_EQ(model.gestureTransitionProb, 0.0001);
}

TEST(HostileModelFile, ARefusedFileLeavesAnEarlierCombinedModelInPlace) {
    GestureSet set;
    fill(set.add("g", 1, 1), {1}, {0.5}, {0.25});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    HMM* const combined = model.recognitionHMM;
    EXPECT_THROW(loadText(model, "1 1 0 n 4294967295 1 1 0.5"), std::bad_alloc);
    EXPECT_EQ(model.recognitionHMM, combined);
    EXPECT_EQ(combined->forwardProbability({0}, 1), 0.25);
    EXPECT_EQ(model.gestures.size(), 1U);
}

TEST(HostileModelFile, CutAtEveryByteItLoadsAndNothingCrashes) {
    const std::string text =
        "2.5 1 2\n0 90\n\nhands\n2 2 1 0.5\n0.5 0.5\n0.75 0.25 0.5 0.5\n0.5 0.5 0.25 0.75\n0 1\n"
        "\nup\n2 2 1 1\n1 0\n0.5 0.5 0 1\n0.5 0.5 1 0\n\n";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        SCOPED_TRACE("cut at " + std::to_string(length));
        RecognitionModelHMM model;
        EXPECT_TRUE(loadText(model, text.substr(0, length)));
        ASSERT_NE(model.recognitionHMM, nullptr);
        const Capture silence;
        bool refused = false;
        try {
            model.check({0, 0, 0});
        } catch (const std::out_of_range&) {
            refused = true;
        }
        const bool combinedWhole = model.recognitionHMM->pi.size() == 2 && model.vocabSize == 2;
        const bool gestureWhole = model.gestures.empty() || (model.gestures[0]->pi.size() == 2 &&
                                                             model.gestures[0]->b.cols == 2);
        EXPECT_EQ(refused, !combinedWhole || !gestureWhole);
    }
}

}  // namespace
}  // namespace Vesk::Test
