#include "Gestures.h"

#include <veskkit/Error.h>
#include <veskkit/recognition/ModelCheck.h>

#include <gtest/gtest.h>

#include <functional>
#include <limits>

namespace Vesk::Kit {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;
using Vesk::Test::smallModel;
using Vesk::Test::textOf;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// The problem of a sound model after a change. Staging fields and combined model change together
/// where the change is to the combined model alone.
std::string problemAfter(const std::function<void(RecognitionModelHMM&)>& change) {
    const RecognitionModel owner = smallModel();
    RecognitionModelHMM model = owner.get();
    change(model);
    return problemOf(model);
}

std::string problemAfterBoth(const std::function<void(RecognitionModelHMM&, HMM&)>& change) {
    return problemAfter([&](RecognitionModelHMM& model) { change(model, *model.recognitionHMM); });
}

TEST(ModelCheckTest, ASoundModelHasNoProblem) {
    EXPECT_EQ(problemAfter([](RecognitionModelHMM&) {}), "");
    EXPECT_NO_THROW(requireSoundModel(smallModel().get(), "m"));
}

TEST(ModelCheckTest, EmissionsMayBeOdds) {
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.gestures[0]->b(0, 0) = 1e300; }), "");
}

TEST(ModelCheckTest, EveryPartHasAProblemOfItsOwn) {
    const RecognitionModel owner = smallModel();
    RecognitionModelHMM model = owner.get();
    EXPECT_TRUE(problemsOf(model).empty());
    model.codebook.clear();
    model.name = "";
    model.modelTransitionProb = 2.0;
    model.gestures = {nullptr, nullptr};
    const std::vector<std::string> problems = problemsOf(model);
    ASSERT_EQ(problems.size(), 5u);
    EXPECT_EQ(problems[0], problemOf(model));
    EXPECT_EQ(problems[2], "found the transition probability 2, expected 0 to 1");
    EXPECT_EQ(problems[4], "found no model for gesture 1, expected one");
}

TEST(ModelCheckTest, TheMessageNamesTheSource) {
    const RecognitionModel owner = smallModel();
    RecognitionModelHMM model = owner.get();
    model.codebook.clear();
    EXPECT_EQ(textOf<InputError>([&] { requireSoundModel(model, "m.txt"); }),
              "m.txt: found no codebook, expected one direction a symbol");
}

TEST(ModelCheckTest, FindsProblemsOfTheQuantizer) {
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.codebook.push_back(1); }),
              "found 5 directions in the codebook, expected 4, one a symbol");
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.codebook[2] = nan; }),
              "found nan as direction 2 of the codebook, expected a finite number");
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) {
                  m.proxFilterThreshold = std::numeric_limits<float>::infinity();
              }),
              "found the proximity threshold inf, expected a finite number");
}

TEST(ModelCheckTest, FindsProblemsOfNames) {
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.name = ""; }),
              "found the name \"\" of the model, expected one word without blanks");
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.gestures[1]->name = "two words"; }),
              "found the name \"two words\" of gesture 1, expected one word without blanks");
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.gestures[1]->name = "a\nb"; }),
              "found the name \"a?b\" of gesture 1, expected one word without blanks");
}

TEST(ModelCheckTest, FindsProblemsOfTheThresholdModel) {
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.recognitionHMM = nullptr; }),
              "found no threshold model, expected one");
    for (const double p : {-0.1, 1.5, nan}) {
        EXPECT_NE(problemAfter([p](RecognitionModelHMM& m) {
                      m.modelTransitionProb = p;
                  }).find("found the transition probability"),
                  std::string::npos);
    }
    EXPECT_EQ(
        problemAfterBoth([](RecognitionModelHMM& m, HMM& c) { m.numStates = c.numStates = 7; }),
        "threshold model: found 6 values in pi, expected 7");
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.numStates = 5; }),
              "found a threshold model of 6 states and 4 symbols, expected 5 and 4");
    EXPECT_EQ(problemAfterBoth([](RecognitionModelHMM&, HMM& c) { c.pi[3] = -1; }),
              "threshold model: found pi(3) = -1, expected a finite number of at least 0");
    EXPECT_EQ(problemAfterBoth([](RecognitionModelHMM&, HMM& c) { c.a(5, 1) = infinity; }),
              "threshold model: found a(5, 1) = inf, expected a finite number of at least 0");
    EXPECT_EQ(problemAfterBoth([](RecognitionModelHMM&, HMM& c) { c.b(2, 3) = nan; }),
              "threshold model: found b(2, 3) = nan, expected a finite number of at least 0");
    EXPECT_EQ(problemAfterBoth([](RecognitionModelHMM&, HMM& c) { c.vocab.resize(3, 1); }),
              "threshold model: found 3 values in vocab of 3 x 1, expected 4 x 1");
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.b(0, 0) = 0.5; }),
              "found a threshold model that differs from the parameters it was built from, "
              "expected the same");
}

TEST(ModelCheckTest, FindsProblemsOfGestures) {
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.gestures.clear(); }),
              "found no gestures, expected at least 1");
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.gestures[2] = nullptr; }),
              "found no model for gesture 2, expected one");
    HMM general(2, 4);
    general.name = "general";
    EXPECT_EQ(problemAfter([&](RecognitionModelHMM& m) { m.gestures[0] = &general; }),
              "gesture \"general\": found a general model, expected a left-right model");
    LeftRightHMM other(2, 5, 1);
    other.name = "other";
    EXPECT_EQ(problemAfter([&](RecognitionModelHMM& m) { m.gestures[0] = &other; }),
              "gesture \"other\": found 5 symbols, expected 4");
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.gestures[1]->b.data.pop_back(); }),
              "gesture \"up\": found 7 values in b of 2 x 4, expected 2 x 4");
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.gestures[1]->a.resize(1, 4); }),
              "gesture \"up\": found 4 values in a of 1 x 4, expected 2 x 2");
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.gestures[1]->numStates = 0; }),
              "gesture \"up\": found no states, expected at least 1");
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.gestures[1]->b(1, 2) = infinity; }),
              "gesture \"up\": found b(1, 2) = inf, expected a finite number of at least 0");
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.gestures[1]->b(1, 2) = -1e-12; }),
              "gesture \"up\": found b(1, 2) = -1e-12, expected a finite number of at least 0");
}

// A self-transition of 1 + 2e-16 leaves the others (1 - d) / (N - 1), about -1e-17 each.
TEST(ModelCheckTest, TakesRoundingErrorsBelowZeroInTransitions) {
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.gestures[1]->a(1, 0) = -1e-17; }), "");
    EXPECT_EQ(problemAfter([](RecognitionModelHMM& m) { m.gestures[1]->a(1, 0) = -1e-6; }),
              "gesture \"up\": found a(1, 0) = -1e-06, expected a finite number of at least 0");
}

TEST(ModelCheckTest, StorableNamesAreSingleWords) {
    EXPECT_TRUE(isStorableName("left_arrow"));
    EXPECT_TRUE(isStorableName("\xC3\xA9t\xC3\xA9"));
    for (const std::string name : {"", " ", "a b", "a\t", "\nb", "a\vb", "a\fb", "a\rb",
                                   "a\x01"
                                   "b",
                                   "a\x7f"}) {
        EXPECT_FALSE(isStorableName(name)) << '"' << name << '"';
    }
    EXPECT_FALSE(isStorableName(std::string("a\0b", 3)));
}

TEST(ModelCheckTest, StoredNamesHaveUnderscoresForBlanks) {
    EXPECT_EQ(storedName("left arrow"), "left_arrow");
    EXPECT_EQ(storedName(" a\tb\r\n"), "_a_b__");
    EXPECT_EQ(storedName("plain"), "plain");
}

}  // namespace
}  // namespace Vesk::Kit
