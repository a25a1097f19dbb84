#include <support/Capture.h>
#include <support/Files.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <limits>
#include <locale>
#include <string>
#include <typeinfo>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;

constexpr const char* header =
    "2.5 1 3\n0 120.5 240\n\nhands\n2 2 1 0.5\n0.25 0.75\n0.1 0.2 0.3 0.4\n"
    "0.5 0.6 0.7 0.8\n3 4\n\n";
constexpr const char* gestureUp = "up\n1 2 1 3\n1\n0.125\n0.875 0.0625\n\n";
constexpr const char* gestureDown = "down\n2 2 1 -1\n0.5 0.25\n1 2 3 4\n0.5 0.25 0.125 0.0625\n\n";

/// Loads `text` and gives what was printed.
struct Loading {
    bool result = false;
    std::string output;
    int flushes = 0;

    Loading(RecognitionModelHMM& model, const std::string& text) {
        const TemporaryFolder folder;
        writeFile(folder.path("model"), text);
        const Capture capture;
        result = model.load(folder.path("model").c_str());
        output = capture.text();
        flushes = capture.flushes();
    }
};

TEST(LoadModelFile, ReadsTheHeaderIntoTheStagingFields) {
    RecognitionModelHMM model;
    const Loading loading(model, header);
    EXPECT_TRUE(loading.result);
    EXPECT_EQ(loading.output, "");
    EXPECT_EQ(model.proxFilterThreshold, 2.5f);
    EXPECT_TRUE(model.rotationAllowed);
    EXPECT_EQ(model.codebook, (std::vector<double>{0, 120.5, 240}));
    EXPECT_EQ(model.name, "hands");
    EXPECT_EQ(model.numStates, 2U);
    EXPECT_EQ(model.vocabSize, 2U);
    EXPECT_EQ(model.modelTransitionProb, 0.5);
    EXPECT_EQ(model.pi, (std::vector<double>{0.25, 0.75}));
    EXPECT_EQ(model.a.rows, 2);
    EXPECT_EQ(model.a.cols, 2);
    EXPECT_EQ(model.a.data, (std::vector<double>{0.1, 0.2, 0.3, 0.4}));
    EXPECT_EQ(model.b.rows, 2);
    EXPECT_EQ(model.b.cols, 2);
    EXPECT_EQ(model.b.data, (std::vector<double>{0.5, 0.6, 0.7, 0.8}));
    EXPECT_EQ(model.vocab.rows, 2);
    EXPECT_EQ(model.vocab.cols, 1);
    EXPECT_EQ(model.vocab.data, (std::vector<double>{3, 4}));
    EXPECT_TRUE(model.gestures.empty());
    EXPECT_TRUE(model.fromParameters);
    // 0.5 shared by no gestures.
    EXPECT_EQ(model.gestureTransitionProb, std::numeric_limits<double>::infinity());
}

TEST(LoadModelFile, BuildsTheCombinedModelFromWhatIsStored) {
    RecognitionModelHMM model;
    const Loading loading(model, header + std::string(gestureUp) + gestureDown);
    ASSERT_NE(model.recognitionHMM, nullptr);
    const HMM& combined = *model.recognitionHMM;
    EXPECT_EQ(typeid(combined), typeid(HMM));
    EXPECT_EQ(combined.name, "hands");
    EXPECT_EQ(combined.numStates, 2U);
    EXPECT_EQ(combined.vocabSize, 2U);
    EXPECT_EQ(combined.dimension, 1);
    // Nothing of it follows from the gestures, which have three states together.
    EXPECT_EQ(combined.pi, (std::vector<double>{0.25, 0.75}));
    EXPECT_EQ(combined.a.data, (std::vector<double>{0.1, 0.2, 0.3, 0.4}));
    EXPECT_EQ(combined.b.data, (std::vector<double>{0.5, 0.6, 0.7, 0.8}));
    EXPECT_EQ(combined.vocab.data, (std::vector<double>{3, 4}));
}

TEST(LoadModelFile, MakesEveryGestureALeftRightModel) {
    RecognitionModelHMM model;
    const Loading loading(model, header + std::string(gestureUp) + gestureDown);
    EXPECT_TRUE(loading.result);
    EXPECT_EQ(loading.output, "loading gesture 'up'\nloading gesture 'down'\n");
    ASSERT_EQ(model.gestures.size(), 2U);
    for (const HMM* gesture : model.gestures) {
        const HMM& loaded = *gesture;
        EXPECT_EQ(typeid(loaded), typeid(LeftRightHMM));
    }
    const auto& up = dynamic_cast<LeftRightHMM&>(*model.gestures[0]);
    EXPECT_EQ(up.name, "up");
    EXPECT_EQ(up.numStates, 1U);
    EXPECT_EQ(up.vocabSize, 2U);
    EXPECT_EQ(up.dimension, 1);
    EXPECT_EQ(up.delta, 3);
    EXPECT_EQ(up.pi, std::vector<double>{1});
    EXPECT_EQ(up.a.data, std::vector<double>{0.125});
    EXPECT_EQ(up.b.data, (std::vector<double>{0.875, 0.0625}));
    EXPECT_EQ(up.vocab.data, (std::vector<double>{3, 4}));
    EXPECT_TRUE(up.vocabValues.empty());
    EXPECT_TRUE(up.trainingSequences.empty());
    EXPECT_TRUE(up.stateSymbols.empty());
    EXPECT_EQ(up.convergenceThreshold, 0.001f);
    EXPECT_TRUE(up.needsSeed);
    const auto& down = dynamic_cast<LeftRightHMM&>(*model.gestures[1]);
    EXPECT_EQ(down.name, "down");
    EXPECT_EQ(down.delta, -1);
    EXPECT_EQ(down.pi, (std::vector<double>{0.5, 0.25}));
    EXPECT_EQ(down.a.data, (std::vector<double>{1, 2, 3, 4}));
    EXPECT_EQ(down.a.rows, 2);
    EXPECT_EQ(down.b.data, (std::vector<double>{0.5, 0.25, 0.125, 0.0625}));
    EXPECT_EQ(down.b.cols, 2);
    EXPECT_EQ(model.gestureTransitionProb, 0.25);
}

TEST(LoadModelFile, FlushesEveryAnnouncement) {
    RecognitionModelHMM model;
    const Loading loading(model, header + std::string(gestureUp) + gestureDown);
    EXPECT_EQ(loading.flushes, 2);
}

TEST(LoadModelFile, DimensionsAreReadAndDropped) {
    RecognitionModelHMM model;
    const Loading loading(model, "1 1 0 n 1 1 7 1 1 1 1 0 g 1 1 9 2 1 1 1");
    EXPECT_TRUE(loading.result);
    EXPECT_EQ(model.recognitionHMM->dimension, 1);
    ASSERT_EQ(model.gestures.size(), 1U);
    EXPECT_EQ(model.gestures[0]->dimension, 1);
    EXPECT_EQ(dynamic_cast<LeftRightHMM&>(*model.gestures[0]).delta, 2);
}

TEST(LoadModelFile, EveryGestureReceivesTheModelsVocabularyWhateverItsOwnAlphabet) {
    RecognitionModelHMM model;
    const Loading loading(model,
                          "1 1 0 n 1 2 1 1  1  1  0.5 0.5  8 9  "
                          "wide 1 3 1 1 1 1 0.1 0.2 0.3  narrow 1 1 1 1 1 1 0.4");
    ASSERT_EQ(model.gestures.size(), 2U);
    for (const HMM* gesture : model.gestures) {
        EXPECT_EQ(gesture->vocab.data, (std::vector<double>{8, 9}));
        EXPECT_EQ(gesture->vocab.rows, 2);
        EXPECT_EQ(gesture->vocab.cols, 1);
    }
    EXPECT_EQ(model.gestures[0]->vocabSize, 3U);
    EXPECT_EQ(model.gestures[0]->b.data, (std::vector<double>{0.1, 0.2, 0.3}));
    EXPECT_EQ(model.gestures[1]->vocabSize, 1U);
}

TEST(LoadModelFile, LineBreaksAndBlankLinesMeanNothing) {
    RecognitionModelHMM spread;
    RecognitionModelHMM plain;
    const std::string text = header + std::string(gestureUp) + gestureDown;
    std::string odd;
    for (const char c : text) {
        if (c == '\n')
            odd += " \t\r\n\v\f\n";
        else if (c == ' ')
            odd += "\n\n";
        else
            odd += c;
    }
    const Loading first(plain, text);
    const Loading second(spread, odd);
    expectSameRecogniser(recogniserOf(plain), recogniserOf(spread));
    EXPECT_EQ(first.output, second.output);
}

TEST(LoadModelFile, ModelTransitionProbOfExactlyOneGivesTheGesturesOne) {
    RecognitionModelHMM model;
    model.setModelTransitionProb(0.5);
    const Loading loading(model, "1 1 0 n 1 1 1 1 1 1 1 0 g 1 1 1 1 1 1 1 h 1 1 1 1 1 1 1");
    EXPECT_EQ(model.modelTransitionProb, 1.0);
    EXPECT_EQ(model.gestureTransitionProb, 1.0);
}

TEST(LoadModelFile, RotationIsAllowedByAStoredOneOnly) {
    for (const auto& [token, expected] : std::vector<std::pair<std::string, bool>>{
             {"1", true}, {"0", false}, {"2", false}, {"-1", false}, {"+1", true}, {"01", true}}) {
        SCOPED_TRACE(token);
        RecognitionModelHMM model;
        const Loading loading(model, "1 " + token + " 0 n 1 1 1 0.5 1 1 1 0");
        EXPECT_EQ(model.rotationAllowed, expected);
        EXPECT_EQ(model.name, "n");
    }
}

TEST(LoadModelFile, AppendsToGesturesAndCodebookThatAreThere) {
    GestureSet set;
    fill(set.add("present", 1, 2), {1}, {0.5}, {0.25, 0.75});
    RecognitionModelHMM model(set.pointers(), 0.75);
    ASSERT_TRUE(model.initialize());
    model.codebook = {7};
    HMM* const present = model.gestures[0];
    const HMM* const combined = model.recognitionHMM;
    const Loading loading(model, header + std::string(gestureUp) + gestureDown);
    EXPECT_TRUE(loading.result);
    ASSERT_EQ(model.gestures.size(), 3U);
    EXPECT_EQ(model.gestures[0], present);
    EXPECT_EQ(model.gestures[1]->name, "up");
    EXPECT_EQ(model.gestures[2]->name, "down");
    EXPECT_EQ(model.codebook, (std::vector<double>{7, 0, 120.5, 240}));
    EXPECT_EQ(model.gestureTransitionProb, 0.5 / 3.0);
    EXPECT_NE(model.recognitionHMM, combined);
    EXPECT_EQ(combined->b.data, (std::vector<double>{0.25, 0.75}));
}

TEST(LoadModelFile, TwiceGivesEveryGestureTwice) {
    RecognitionModelHMM model;
    const std::string text = header + std::string(gestureUp);
    const Loading first(model, text);
    const Loading second(model, text);
    ASSERT_EQ(model.gestures.size(), 2U);
    EXPECT_NE(model.gestures[0], model.gestures[1]);
    EXPECT_EQ(model.codebook.size(), 6U);
    EXPECT_EQ(model.gestureTransitionProb, 0.25);
}

TEST(LoadModelFile, InitializeRefusesAfterwardsAndTheLoadedCombinedModelStays) {
    RecognitionModelHMM model;
    const Loading loading(model, header + std::string(gestureUp) + gestureDown);
    HMM* const combined = model.recognitionHMM;
    const auto before = recogniserOf(model);
    EXPECT_FALSE(model.initialize());
    EXPECT_EQ(model.recognitionHMM, combined);
    expectSameRecogniser(before, recogniserOf(model));
}

TEST(LoadModelFile, TheLoadedThresholdIsTheStoredOneEvenWhereTheGesturesSayOtherwise) {
    RecognitionModelHMM model;
    const Loading loading(model, "1 1 0 n 1 1 1 0.5  1  1  0.25  0  g 1 1 1 1 1 1 1");
    EXPECT_EQ(model.forwardProb({0, 0}), 0.0625);
    const Capture silence;
    EXPECT_EQ(model.check({0, 0}), "g");
}

TEST(LoadModelFile, AMissingFileReturnsFalseAndChangesNothing) {
    const TemporaryFolder folder;
    GestureSet set;
    fill(set.add("present", 1, 2), {1}, {0.5}, {0.25, 0.75});
    RecognitionModelHMM model(set.pointers(), 0.75);
    ASSERT_TRUE(model.initialize());
    model.codebook = {7};
    const auto before = recogniserOf(model);
    HMM* const combined = model.recognitionHMM;
    Capture capture;
    EXPECT_FALSE(model.load(folder.path("missing").c_str()));
    EXPECT_FALSE(model.load(folder.path("no/folder").c_str()));
    EXPECT_FALSE(model.load(""));
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(model.recognitionHMM, combined);
    expectSameRecogniser(before, recogniserOf(model));
}

TEST(LoadModelFile, TheLastGestureMayEndWithoutALineEnd) {
    RecognitionModelHMM model;
    std::string text = header + std::string(gestureUp);
    text.resize(text.size() - 2);
    const Loading loading(model, text);
    ASSERT_EQ(model.gestures.size(), 1U);
    EXPECT_EQ(model.gestures[0]->b.data, (std::vector<double>{0.875, 0.0625}));
}

TEST(LoadModelFile, NamesOfSeveralWordsDesynchroniseTheReader) {
    RecognitionModelHMM model;
    // "b" is no count: no states, no symbols, nothing more is read.
    const Loading loading(model, "1 1 0\n\n\na b\n1 1 1 0.5\n1\n1\n1\n0\n\n");
    EXPECT_TRUE(loading.result);
    EXPECT_EQ(model.name, "a");
    EXPECT_EQ(model.numStates, 0U);
    EXPECT_TRUE(model.gestures.empty());
}

TEST(LoadModelFile, AnEmptyNameTakesTheNextNumber) {
    RecognitionModelHMM model;
    const Loading loading(model, "1 1 0\n\n\n\n2 1 1 0.5\n1\n1\n1\n0\n\n");
    EXPECT_TRUE(loading.result);
    EXPECT_EQ(model.name, "2");
    EXPECT_EQ(model.numStates, 1U);
    EXPECT_EQ(model.vocabSize, 1U);
    // The dimension takes 0, the probability .5.
    EXPECT_EQ(model.modelTransitionProb, 0.5);
}

TEST(LoadModelFile, ReadsNulCharactersAsPartOfAWord) {
    RecognitionModelHMM model;
    const std::string name("g\0h", 3);
    const Loading loading(model, "1 1 0 n 1 1 1 1 1 1 1 0 " + name + " 1 1 1 1 1 1 1");
    ASSERT_EQ(model.gestures.size(), 1U);
    EXPECT_EQ(model.gestures[0]->name, name);
    EXPECT_EQ(loading.output, "loading gesture '" + name + "'\n");
}

TEST(LoadModelFile, AnInfiniteParameterEndsTheReadingAndLoadsWithoutGestures) {
    RecognitionModelHMM model;
    const Loading loading(model, "1 1 0 n 1 2 1 0.5 1 1 inf 0.5 0 1 g 1 2 1 1 1 1 0.5 0.5");
    EXPECT_TRUE(loading.result);
    EXPECT_TRUE(model.gestures.empty());
    EXPECT_EQ(loading.output, "");
    EXPECT_EQ(model.b.data, (std::vector<double>{0, 0}));
    EXPECT_EQ(model.vocab.data, (std::vector<double>{0, 0}));
    EXPECT_EQ(model.pi, std::vector<double>{1});
}

TEST(LoadModelFile, AnInfiniteParameterOfAGestureKeepsThatGestureAndEndsThere) {
    RecognitionModelHMM model;
    const Loading loading(model,
                          "1 1 0 n 1 2 1 0.5 1 1 1 0.5 0 1  "
                          "g 1 2 1 1 1 0.5 0.5 inf  h 1 2 1 1 1 1 0.5 0.5");
    EXPECT_TRUE(loading.result);
    ASSERT_EQ(model.gestures.size(), 1U);
    EXPECT_EQ(model.gestures[0]->name, "g");
    EXPECT_EQ(model.gestures[0]->a.data, std::vector<double>{0.5});
    EXPECT_EQ(model.gestures[0]->b.data, (std::vector<double>{0.5, 0}));
    EXPECT_EQ(model.gestureTransitionProb, 0.5);
}

TEST(LoadModelFile, OverflowingNumbersAreReadAsTheLargestAndEndTheReading) {
    RecognitionModelHMM model;
    const Loading loading(model, "1 1 0 n 1 2 1 0.5 1 1 1e999 0.5 0 1 g 1 1 1 1 1 1 1");
    EXPECT_TRUE(loading.result);
    EXPECT_EQ(model.b.data, (std::vector<double>{std::numeric_limits<double>::max(), 0}));
    EXPECT_TRUE(model.gestures.empty());
}

TEST(LoadModelFile, SubnormalNumbersAreRead) {
    RecognitionModelHMM model;
    const Loading loading(model, "1 1 0 n 1 1 1 0.5 1 4.94066e-324 2.2e-310 0");
    EXPECT_EQ(model.a.data, std::vector<double>{4.94066e-324});
    EXPECT_EQ(model.b.data, std::vector<double>{2.2e-310});
}

TEST(LoadModelFile, TakesEverySpellingThatAStreamTakes) {
    RecognitionModelHMM model;
    const Loading loading(model, "+1.5e0 1 2 -0 +.5 n +1 01 1 5e-1 1. 1E0 .25 -3");
    EXPECT_EQ(model.proxFilterThreshold, 1.5f);
    EXPECT_TRUE(bitEqual(std::vector<double>{-0.0, 0.5}, model.codebook));
    EXPECT_EQ(model.numStates, 1U);
    EXPECT_EQ(model.vocabSize, 1U);
    EXPECT_EQ(model.modelTransitionProb, 0.5);
    EXPECT_EQ(model.pi, std::vector<double>{1});
    EXPECT_EQ(model.a.data, std::vector<double>{1});
    EXPECT_EQ(model.b.data, std::vector<double>{0.25});
    EXPECT_EQ(model.vocab.data, std::vector<double>{-3});
}

class Commas : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(LoadModelFile, TheGlobalLocaleChangesNothing) {
    const std::string text = header + std::string(gestureUp) + gestureDown;
    RecognitionModelHMM expected;
    const Loading plain(expected, text);
    RecognitionModelHMM model;
    const std::locale previous =
        std::locale::global(std::locale(std::locale::classic(), new Commas));
    const Loading loading(model, text);
    std::locale::global(previous);
    expectSameRecogniser(recogniserOf(expected), recogniserOf(model));
    EXPECT_EQ(plain.output, loading.output);
}

TEST(LoadModelFile, WhatWasWrittenComesBackToSixDigits) {
    GestureSet set;
    LeftRightHMM& g = set.add("g", 1, 2, 5);
    fill(g, {1}, {1.0 / 3.0}, {0.123456789, 123456789});
    g.dimension = 4;
    g.vocab.data = {10.5, 20.25};
    LeftRightHMM& h = set.add("h", 1, 2, 0);
    fill(h, {1}, {1e-300}, {0.5, 0.25});
    RecognitionModelHMM model(set.pointers(), 0.3);
    model.setName("n");
    ASSERT_TRUE(model.initialize());
    model.codebook = {1.0 / 3.0};
    model.proxFilterThreshold = 3.25f;
    model.rotationAllowed = false;
    const TemporaryFolder folder;
    model.write(folder.path("model").c_str());
    RecognitionModelHMM back;
    const Loading loading(back, readFile(folder.path("model")));
    ASSERT_EQ(back.gestures.size(), 2U);
    EXPECT_EQ(back.gestures[0]->a.data, std::vector<double>{0.333333});
    EXPECT_EQ(back.gestures[0]->b.data, (std::vector<double>{0.123457, 1.23457e8}));
    EXPECT_EQ(back.gestures[0]->dimension, 1);
    EXPECT_EQ(back.gestures[1]->a.data, std::vector<double>{1e-300});
    EXPECT_EQ(back.gestures[1]->vocab.data, (std::vector<double>{10.5, 20.25}));
    EXPECT_EQ(back.a.data, (std::vector<double>{0.333333, 0.666667, 1, 1e-300}));
    EXPECT_EQ(back.pi, (std::vector<double>{0.5, 0.5}));
    EXPECT_EQ(back.codebook, std::vector<double>{0.333333});
    EXPECT_EQ(back.proxFilterThreshold, 3.25f);
    EXPECT_FALSE(back.rotationAllowed);
    EXPECT_EQ(back.modelTransitionProb, 0.3);
    EXPECT_EQ(back.gestureTransitionProb, (1.0 - 0.3) / 2.0);
}

TEST(LoadModelFile, AFileWithoutCodebookEntriesComesBack) {
    GestureSet set;
    fill(set.add("g", 1, 1), {1}, {1}, {0.5});
    RecognitionModelHMM model(set.pointers(), 0.5);
    model.setName("n");
    ASSERT_TRUE(model.initialize());
    const TemporaryFolder folder;
    model.write(folder.path("model").c_str());
    RecognitionModelHMM back;
    const Loading loading(back, readFile(folder.path("model")));
    EXPECT_TRUE(back.codebook.empty());
    EXPECT_EQ(back.name, "n");
    EXPECT_EQ(back.gestures.size(), 1U);
}

TEST(LoadModelFile, TakesCharPaths) {
    const TemporaryFolder folder;
    std::string path = folder.path("model");
    writeFile(path, header);
    char* const mutablePath = path.data();
    RecognitionModelHMM model;
    EXPECT_TRUE(model.load(mutablePath));
    EXPECT_EQ(model.name, "hands");
}

TEST(LoadModelFile, ShapesOfAnEarlierModelAreReplaced) {
    GestureSet set;
    LeftRightHMM& g = set.add("g", 3, 4);
    Random random(5);
    fillRandom(g, random, Parameters::Stochastic);
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    const Loading loading(model, header);
    EXPECT_EQ(model.pi, (std::vector<double>{0.25, 0.75}));
    EXPECT_EQ(model.a.data, (std::vector<double>{0.1, 0.2, 0.3, 0.4}));
    EXPECT_EQ(model.b.data, (std::vector<double>{0.5, 0.6, 0.7, 0.8}));
    EXPECT_EQ(model.vocab.data, (std::vector<double>{3, 4}));
    EXPECT_EQ(model.recognitionHMM->a.rows, 2);
}

}  // namespace
}  // namespace Vesk::Test
