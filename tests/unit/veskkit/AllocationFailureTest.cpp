// Models and recognition, with each allocation failing.

#include "Gestures.h"

#include <support/FailingAllocator.h>
#include <veskkit/diagnosis/ModelDoctor.h>
#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/recognition/ModelCheck.h>
#include <veskkit/recognition/ModelText.h>
#include <veskkit/recognition/Posterior.h>
#include <veskkit/recognition/StatePath.h>
#include <veskkit/traces/Resampler.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::failEachAllocation;
using Vesk::Test::failEachAllocationOf;
using Vesk::Test::forEachShortage;
using Vesk::Test::Outcome;
using Vesk::Test::runShort;
using Vesk::Test::Shortage;
using Vesk::Test::smallGestures;
using Vesk::Test::smallModel;
using Vesk::Test::smallSettings;

/// What composition leaves, of all that the kit makes: an entry in the list of what is kept for
/// ever.
constexpr long entry = 1;

const Trace zigzag{{{0, 0}, {1, 1}, {2, 0}, {3, 1}, {3, -4}},
                   "a label of more than a few letters",
                   "a user of more than a few letters",
                   "a source of more than a few letters",
                   7};

TEST(KitAllocationFailure, ModelsAreMadeOrReleased) {
    const RecognitionModel model = smallModel();
    EXPECT_GE(failEachAllocation([&] { model.clone(); }, {.mayKeep = entry}), 20);
    EXPECT_GE(failEachAllocation([&] { model.gestureNames(); }), 2);
    static_assert(std::is_nothrow_move_constructible_v<RecognitionModel>);
    static_assert(std::is_nothrow_move_assignable_v<RecognitionModel>);
}

TEST(KitAllocationFailure, AModelIsBuiltOrLeftAsItWas) {
    const std::string before = modelText(smallModel(0.5).get());
    const auto others = smallGestures();
    auto settings = smallSettings(0.25, others);
    settings.name = "other";
    RecognitionModel built = smallModel(0.5);
    built.build(settings);
    const std::string after = modelText(built.get());
    int notAdded = 0;
    EXPECT_GE(forEachShortage([&](Shortage shortage) {
                  RecognitionModel model = smallModel(0.5);
                  const Outcome outcome = runShort(shortage, [&] {
                      model.build(settings);
                      model.add(others[0]);
                  });
                  EXPECT_NE(outcome, Outcome::Survived);
                  if (outcome != Outcome::BadAlloc) return outcome;
                  EXPECT_EQ(model.get().gestures.size(), 3U);
                  EXPECT_EQ(model.gestures().size(), 3U);
                  const std::string found = modelText(model.get());
                  EXPECT_TRUE(found == before || found == after) << found;
                  if (found == after) ++notAdded;
                  return outcome;
              }),
              20);
    EXPECT_GE(notAdded, 4);
}

TEST(KitAllocationFailure, AGestureIsAddedOrNot) {
    const auto gestures = smallGestures();
    EXPECT_GE(forEachShortage([&](Shortage shortage) {
                  RecognitionModel model;
                  const Outcome outcome = runShort(shortage, [&] {
                      for (const auto& gesture : gestures) model.add(gesture);
                  });
                  const auto& owned = model.gestures();
                  const auto& borrowed = model.get().gestures;
                  EXPECT_TRUE(std::equal(
                      owned.begin(), owned.end(), borrowed.begin(), borrowed.end(),
                      [](const auto& one, const auto* other) { return one.get() == other; }));
                  return outcome;
              }),
              30);
}

TEST(KitAllocationFailure, ChecksHoldNothing) {
    RecognitionModel unsound;
    unsound.add(Vesk::Test::smallGesture("a name of more than a few letters", 0, 1));
    unsound.build(smallSettings(0.5, smallGestures()));
    const std::string name = "a name with blanks and more than a few letters";
    EXPECT_GE(failEachAllocationOf([&] { return problemOf(unsound.get()); }), 2);
    EXPECT_GE(failEachAllocationOf([&] { return problemsOf(unsound.get()); }), 4);
    EXPECT_GE(failEachAllocation([&] {
                  try {
                      requireSoundModel(unsound.get(), name);
                  } catch (const std::runtime_error&) {
                  }
              }),
              4);
    EXPECT_EQ(failEachAllocation([&] { storedName(name); }), 2);
    EXPECT_GE(failEachAllocation([&] { diagnoseModel(unsound.get()); }), 10);
    const RecognitionModel model = smallModel();
    EXPECT_GE(failEachAllocation([&] { diagnoseModel(model.get()); }), 10);
    EXPECT_GE(failEachAllocation([&] { unreadableModel(name); }), 2);
}

TEST(KitAllocationFailure, ModelsAreReadAndWrittenInMemory) {
    const RecognitionModel model = smallModel();
    const std::string text = modelText(model.get());
    EXPECT_GE(failEachAllocationOf([&] { return modelText(model.get()); }), 4);
    EXPECT_GE(failEachAllocationOf([&] { return modelText(asStored(model).get()); }, entry), 40);
    EXPECT_GE(failEachAllocationOf(
                  [&] {
                      std::istringstream in(text);
                      return modelText(parseModel(in, "a source of more than a few letters").get());
                  },
                  entry),
              40);
}

/// A result as a list of words.
std::vector<std::string> wordsOf(const Result& result) {
    std::vector<std::string> words = {result.gesture, toString(result.rejection)};
    for (const Score& score : result.scores) {
        words.push_back(score.gesture + std::to_string(score.logProbability));
    }
    return words;
}

TEST(KitAllocationFailure, RecognitionHoldsNothing) {
    const RecognitionModel model = smallModel();
    EXPECT_GE(failEachAllocation([&] { const GestureRecognizer made(model.clone()); },
                                 {.mayKeep = entry}),
              20);
    const GestureRecognizer recognizer(smallModel());
    EXPECT_GE(failEachAllocationOf([&] { return wordsOf(recognizer.recognize(zigzag)); }), 20);
    EXPECT_GE(failEachAllocationOf([&] { return wordsOf(recognizer.recognize(zigzag.points)); }),
              20);
    EXPECT_GE(failEachAllocationOf([&] { return recognizer.symbols(zigzag); }), 10);
    const std::vector<int> symbols = recognizer.symbols(zigzag);
    EXPECT_GE(failEachAllocationOf([&] { return wordsOf(recognizer.recognizeSymbols(symbols)); }),
              4);
    EXPECT_GE(failEachAllocationOf([&] { return answerAt(recognizer.answers(zigzag), 0.0); }), 20);
    const std::vector<Answer> answers = {{1.0, zigzag.gesture}};
    EXPECT_EQ(failEachAllocationOf([&] { return answerAt(answers, 0.0); }), 2);

    const Result result = recognizer.recognize(zigzag);
    const std::vector<std::string> names = recognizer.model().gestureNames();
    EXPECT_GE(failEachAllocationOf([&] { return posteriorOf(result, names).gestures; }), 4);
    EXPECT_GE(failEachAllocationOf([&] { return statePathOf(recognizer, 0, zigzag)->states; }), 10);
    const std::vector<Trace> traces = {zigzag};
    EXPECT_GE(failEachAllocationOf([&] { return bestExamples(recognizer, traces).size(); }), 4);
}

TEST(KitAllocationFailure, PreparationHoldsNothing) {
    EXPECT_GE(failEachAllocation([] { Resampler().resample(zigzag); }), 80);
    EXPECT_GE(failEachAllocation([] { Resampler().resample(zigzag.points); }), 80);
    EXPECT_GE(failEachAllocationOf([] { return placeOf(zigzag); }), 2);
    Trace unusable = zigzag;
    unusable.points[1].pop_back();
    EXPECT_GE(failEachAllocation([&] {
                  try {
                      requireUsablePoints(unusable);
                  } catch (const std::runtime_error&) {
                  }
              }),
              4);
}

}  // namespace
}  // namespace Vesk::Kit
