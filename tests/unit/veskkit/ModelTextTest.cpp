#include "Gestures.h"

#include <support/BitEqual.h>
#include <support/Files.h>
#include <support/Random.h>
#include <veskkit/Error.h>
#include <veskkit/recognition/ModelText.h>

#include <vesk/recognition/RecognitionModelHMM.h>

#include <gtest/gtest.h>

#include <locale>
#include <sstream>

namespace Vesk::Kit {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;
using Vesk::Test::bitEqual;
using Vesk::Test::Random;
using Vesk::Test::smallModel;
using Vesk::Test::textOf;

RecognitionModel parse(const std::string& text) {
    std::istringstream in(text);
    return parseModel(in, "m");
}

std::string errorOf(const std::string& text) {
    return textOf<InputError>([&] { parse(text); });
}

/// The text of the small model with the first occurrence of something replaced.
std::string smallTextWith(const std::string& from, const std::string& to) {
    std::string text = modelText(smallModel().get());
    const std::size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, from.size(), to);
}

/// A recognition model with random sound parameters of every size.
RecognitionModel randomModel(Random& random) {
    const int M = random.integer(1, 6);
    const int K = random.integer(1, 4);
    std::vector<LeftRightHMM> gestures;
    for (int g = 0; g < K; ++g) {
        const int N = random.integer(1, 4);
        LeftRightHMM gesture(N, M, random.integer(-1, 3));
        gesture.name = std::string("g").append(std::to_string(random.integer(0, 2)));
        gesture.pi = Vesk::Test::randomRow(random, N, Vesk::Test::Parameters::Sparse);
        gesture.a = Vesk::Test::randomMatrix(random, N, N, Vesk::Test::Parameters::Sparse);
        gesture.b = Vesk::Test::randomMatrix(random, N, M, Vesk::Test::Parameters::Unnormalised);
        gestures.push_back(gesture);
    }
    RecognitionModelHMM settings = Vesk::Test::smallSettings(random.unit(), gestures);
    settings.codebook.clear();
    for (int k = 0; k < M; ++k) settings.codebook.push_back(360.0 * random.unit());
    settings.proxFilterThreshold = static_cast<float>(random.unit());
    settings.rotationAllowed = random.chance(0.5);
    for (double& value : settings.vocab.data) value = 10.0 * random.unit();
    RecognitionModel model;
    for (const LeftRightHMM& gesture : gestures) model.add(gesture);
    model.build(settings);
    return model;
}

/// A model that the library's own reader made; owns what it made.
class Loaded {
public:
    explicit Loaded(const std::string& path) { ok = model.read(path); }
    ~Loaded() {
        for (HMM* gesture : model.gestures) delete gesture;
        delete model.recognitionHMM;
    }
    Loaded(const Loaded&) = delete;
    Loaded& operator=(const Loaded&) = delete;

    RecognitionModelHMM model;
    bool ok = false;
};

void expectSameHmm(const HMM& expected, const HMM& actual) {
    EXPECT_EQ(expected.name, actual.name);
    EXPECT_EQ(expected.numStates, actual.numStates);
    EXPECT_EQ(expected.vocabSize, actual.vocabSize);
    EXPECT_EQ(expected.dimension, actual.dimension);
    EXPECT_TRUE(bitEqual(expected.pi, actual.pi));
    EXPECT_TRUE(bitEqual(expected.a, actual.a));
    EXPECT_TRUE(bitEqual(expected.b, actual.b));
    EXPECT_TRUE(bitEqual(expected.vocab, actual.vocab));
}

void expectSameModel(const RecognitionModelHMM& expected, const RecognitionModelHMM& actual) {
    EXPECT_EQ(expected.name, actual.name);
    EXPECT_EQ(expected.fromParameters, actual.fromParameters);
    EXPECT_EQ(expected.numStates, actual.numStates);
    EXPECT_EQ(expected.vocabSize, actual.vocabSize);
    EXPECT_EQ(expected.proxFilterThreshold, actual.proxFilterThreshold);
    EXPECT_EQ(expected.rotationAllowed, actual.rotationAllowed);
    EXPECT_TRUE(bitEqual(expected.codebook, actual.codebook));
    EXPECT_TRUE(bitEqual(expected.modelTransitionProb, actual.modelTransitionProb));
    EXPECT_TRUE(bitEqual(expected.gestureTransitionProb, actual.gestureTransitionProb));
    EXPECT_TRUE(bitEqual(expected.pi, actual.pi));
    EXPECT_TRUE(bitEqual(expected.a, actual.a));
    EXPECT_TRUE(bitEqual(expected.b, actual.b));
    EXPECT_TRUE(bitEqual(expected.vocab, actual.vocab));
    expectSameHmm(*expected.recognitionHMM, *actual.recognitionHMM);
    ASSERT_EQ(expected.gestures.size(), actual.gestures.size());
    for (std::size_t i = 0; i < expected.gestures.size(); ++i) {
        expectSameHmm(*expected.gestures[i], *actual.gestures[i]);
        EXPECT_EQ(dynamic_cast<const LeftRightHMM&>(*expected.gestures[i]).delta,
                  dynamic_cast<const LeftRightHMM&>(*actual.gestures[i]).delta);
    }
}

TEST(ModelTextTest, IsWhatTheLibraryWrites) {
    const Vesk::Test::TemporaryFolder folder;
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const RecognitionModel model = randomModel(random);
        RecognitionModelHMM writer = model.get();
        writer.write(folder.path("m").c_str());
        ASSERT_EQ(modelText(model.get()), Vesk::Test::readFile(folder.path("m")));
    }
}

TEST(ModelTextTest, ParsesToTheBitsThatTheLibraryReads) {
    const Vesk::Test::TemporaryFolder folder;
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const std::string text = modelText(randomModel(random).get());
        Vesk::Test::writeFile(folder.path("m"), text);
        const Loaded loaded(folder.path("m"));
        ASSERT_TRUE(loaded.ok);
        expectSameModel(loaded.model, parse(text).get());
    }
}

TEST(ModelTextTest, WhatIsStoredStaysAsItIs) {
    Random random(7);
    const RecognitionModel once = asStored(randomModel(random));
    expectSameModel(once.get(), asStored(once).get());
}

TEST(ModelTextTest, LineBreaksCarryNoMeaning) {
    std::string text = modelText(smallModel().get());
    const RecognitionModel plain = parse(text);
    for (char& c : text) {
        if (c == ' ' || c == '\n') c = '\t';
    }
    expectSameModel(plain.get(), parse(text).get());
}

TEST(ModelTextTest, TheGlobalLocaleDoesNotMatter) {
    class Comma : public std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\1"; }
    };
    const std::string text = modelText(smallModel().get());
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
    std::string again;
    EXPECT_NO_THROW(again = modelText(parse(text).get()));
    std::locale::global(before);
    EXPECT_EQ(again, text);
}

// The header has ten lines, blank ones counted; the first gesture begins on line 11.
TEST(ModelTextTest, SaysWhereWhatIsMissing) {
    EXPECT_EQ(errorOf(""),
              "m:1: found the end of the file, expected a model file, which begins with a "
              "proximity threshold");
    EXPECT_EQ(
        errorOf("hello world"),
        "m:1: found \"hello\", expected a model file, which begins with a proximity threshold");
    EXPECT_EQ(errorOf("0 0 4\n0 90 180"),
              "m:2: found the end of the file, expected direction 3 of the codebook");
    const std::string text = modelText(smallModel().get());
    std::string cut = text.substr(0, text.find("up\n"));
    EXPECT_EQ(parse(cut).gestures().size(), 1u);
    cut = text.substr(0, text.find("up\n") + 3);
    EXPECT_EQ(errorOf(cut),
              "m:18: found the end of the file, expected a number of states of gesture \"up\"");
    cut = text.substr(0, text.rfind(' '));
    EXPECT_EQ(errorOf(cut),
              "m:27: found the end of the file, expected a finite number for b(1, 3) of gesture "
              "\"right\"");
}

TEST(ModelTextTest, EveryCutIsRefusedOrEndsBetweenGestures) {
    const std::string text = modelText(smallModel().get());
    int accepted = 0;
    for (std::size_t length = 0; length < text.size(); ++length) {
        std::istringstream in(text.substr(0, length));
        try {
            const RecognitionModel model = parseModel(in, "m");
            const std::size_t gestures = model.gestures().size();
            EXPECT_TRUE(gestures >= 1 && gestures <= 3) << length;
            ++accepted;
        } catch (const InputError& error) {
            EXPECT_EQ(std::string(error.what()).rfind("m:", 0), 0u) << error.what();
        }
    }
    // Behind each of three gestures: its last digit (0.1 cut to 0. or 0), line end, blank line.
    EXPECT_EQ(accepted, 14);
}

TEST(ModelTextTest, RefusesNumbersThatNoReaderTakesBack) {
    EXPECT_EQ(errorOf(smallTextWith("0.166667", "inf")),
              "m:6: found \"inf\", expected a finite number for pi(0) of the threshold model");
    EXPECT_EQ(errorOf(smallTextWith("0.166667", "1e999")),
              "m:6: found \"1e999\", expected a finite number for pi(0) of the threshold model");
    EXPECT_EQ(errorOf(smallTextWith("0.166667", "0x1")),
              "m:6: found \"0x1\", expected a finite number for pi(0) of the threshold model");
    EXPECT_EQ(errorOf(smallTextWith("0.166667", "0,5")),
              "m:6: found \"0,5\", expected a finite number for pi(0) of the threshold model");
    EXPECT_EQ(errorOf(smallTextWith("0.166667", "-0.5")),
              "m: threshold model: found pi(0) = -0.5, expected a finite number of at least 0");
}

TEST(ModelTextTest, RefusesCountsOutOfRange) {
    EXPECT_EQ(errorOf(smallTextWith("6 4 1", "-6 4 1")),
              "m:5: found -6, expected a number of states of the threshold model from 1 to 46340");
    EXPECT_EQ(errorOf(smallTextWith("6 4 1", "46341 4 1")),
              "m:5: found 46341, expected a number of states of the threshold model from 1 to "
              "46340");
    EXPECT_EQ(errorOf(smallTextWith("6 4 1", "40000 60000 1")),
              "m:5: found 60000, expected a number of symbols of the threshold model from 1 to "
              "53687");
    EXPECT_EQ(errorOf(smallTextWith("0 0 4", "0 0 0")),
              "m:1: found 0, expected a number of directions from 1 to 1000000");
    EXPECT_EQ(errorOf(smallTextWith("0 0 4", "0 0 4.5")),
              "m:1: found \"4.5\", expected a number of directions");
    EXPECT_EQ(errorOf(smallTextWith("0 0 4", "0 0 99999999999999999999")),
              "m:1: found \"99999999999999999999\", expected a number of directions");
}

TEST(ModelTextTest, RefusesAModelThatIsNotSound) {
    EXPECT_EQ(errorOf(smallTextWith("0 0 4\n0 90", "0 0 3\n90")),
              "m: found 3 directions in the codebook, expected 4, one a symbol");
    EXPECT_EQ(errorOf(smallTextWith("6 4 1 0.5", "6 4 1 1.5")),
              "m: found the transition probability 1.5, expected 0 to 1");
    const std::string text = modelText(smallModel().get());
    EXPECT_EQ(errorOf(text.substr(0, text.find("right"))),
              "m: found no gestures, expected at least 1");
}

TEST(ModelTextTest, RefusesEndlessWords) {
    EXPECT_EQ(errorOf(std::string(5000, '1')),
              "m:1: found a word of more than 4096 characters, expected a model file, which "
              "begins with a proximity threshold");
    EXPECT_EQ(errorOf(smallTextWith("small", std::string(5000, 'x'))),
              "m:4: found a word of more than 4096 characters, expected the model's name");
}

TEST(ModelTextTest, DoesNotWriteWhatIsNotSound) {
    const RecognitionModel owner = smallModel();
    RecognitionModelHMM model = owner.get();
    model.gestures.clear();
    EXPECT_EQ(textOf<InputError>([&] { modelText(model); }),
              "model: found no gestures, expected at least 1");
}

}  // namespace
}  // namespace Vesk::Kit
