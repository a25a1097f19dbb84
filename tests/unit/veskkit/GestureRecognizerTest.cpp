#include "Gestures.h"

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/Files.h>
#include <support/Random.h>
#include <veskkit/Error.h>
#include <veskkit/io/ModelFile.h>
#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/training/GestureTrainer.h>

#include <vesk/quantizer/VectorQuantizer2D.h>
#include <vesk/recognition/RecognitionModelHMM.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>
#include <thread>

namespace Vesk::Kit {
namespace {

using Vesk::ML::RecognitionModelHMM;
using Vesk::Test::bitEqual;
using Vesk::Test::Random;
using Vesk::Test::smallModel;
using Vesk::Test::textOf;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr Preparation asDrawn{Preparation::asDrawn, false};

// Directions 0, 90, 180, 270 are the symbols 0, 1, 2, 3.
Points walk(const std::vector<int>& symbols) {
    static const Points steps{{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    Points points{{0, 0}};
    for (const int symbol : symbols) {
        const std::vector<double>& step = steps[static_cast<std::size_t>(symbol)];
        points.push_back({points.back()[0] + step[0], points.back()[1] + step[1]});
    }
    return points;
}

TEST(GestureRecognizerTest, TakesSymbolsWithTheModelsCodebook) {
    const GestureRecognizer recognizer(smallModel(), asDrawn);
    Trace trace;
    trace.points = walk({0, 3, 2, 1});
    EXPECT_EQ(recognizer.symbols(trace), (std::vector<int>{0, 3, 2, 1}));
}

TEST(GestureRecognizerTest, PreparesTraces) {
    Trace trace;
    trace.points = {{0, 0}, {0, 10}, {10, 10}};
    const GestureRecognizer plain(smallModel(), {5, false, 0});
    EXPECT_EQ(plain.symbols(trace), (std::vector<int>{1, 1, 0, 0}));
    const GestureRecognizer flipped(smallModel(), {5, true, 0});
    EXPECT_EQ(flipped.symbols(trace), (std::vector<int>{3, 3, 0, 0}));
    EXPECT_EQ(flipped.preparation().points, 5);
    EXPECT_TRUE(flipped.preparation().flipY);
    // The mean is (3, 7): the start lies below it, the end to its right.
    const GestureRecognizer bearing(smallModel(), {5, false, 2});
    EXPECT_EQ(bearing.symbols(trace), (std::vector<int>{1, 1, 0, 0, 3, 0}));
}

TEST(GestureRecognizerTest, UsesTheModelsQuantizerSettings) {
    const RecognitionModel plain = smallModel();
    RecognitionModelHMM settings = plain.get();
    settings.rotationAllowed = true;
    settings.proxFilterThreshold = 1.5f;
    RecognitionModel changed = plain.clone();
    changed.build(settings);
    const GestureRecognizer recognizer(std::move(changed), asDrawn);
    Trace trace;
    trace.points = walk({1, 1, 2, 2, 2, 2});
    EXPECT_EQ(recognizer.symbols(trace), (std::vector<int>{0, 1, 1}));
}

/// Two states: P of o = first, then second, each with 0.7: 0.7 * 0.5 * (0.1 + 0.7).
TEST(GestureRecognizerTest, ScoresAreNaturalLogarithmsBestFirst) {
    const GestureRecognizer recognizer(smallModel(), asDrawn);
    const Result result = recognizer.recognizeSymbols({0, 1});
    ASSERT_EQ(result.scores.size(), 2u);
    EXPECT_EQ(result.scores[0].gesture, "right");
    EXPECT_EQ(result.scores[1].gesture, "up");
    EXPECT_NEAR(result.scores[0].logProbability, std::log(0.7 * 0.5 * 0.8), 1e-12);
    // "up" emits 0 with 0.1 in state 0, then 1 with 0.7 in state 0 or 0.1 in state 1.
    EXPECT_NEAR(result.scores[1].logProbability, std::log(0.1 * 0.5 * 0.8), 1e-12);
}

TEST(GestureRecognizerTest, AGestureScoresWithItsBestSubModel) {
    const GestureRecognizer recognizer(smallModel(), asDrawn);
    const Result result = recognizer.recognizeSymbols({0, 3});
    ASSERT_EQ(result.scores.size(), 2u);
    EXPECT_EQ(result.scores[0].gesture, "right");
    EXPECT_NEAR(result.scores[0].logProbability, std::log(0.7 * 0.5 * 0.8), 1e-12);
}

TEST(GestureRecognizerTest, EqualScoresKeepTheModelsOrder) {
    RecognitionModel model;
    const std::vector<Vesk::ML::LeftRightHMM> gestures{Vesk::Test::smallGesture("z", 0, 1),
                                                       Vesk::Test::smallGesture("a", 0, 1)};
    for (const auto& gesture : gestures) model.add(gesture);
    model.build(Vesk::Test::smallSettings(0.1, gestures));
    const Result result = GestureRecognizer(std::move(model), asDrawn).recognizeSymbols({0, 1});
    ASSERT_EQ(result.scores.size(), 2u);
    EXPECT_EQ(result.scores[0].gesture, "z");
    EXPECT_EQ(result.scores[0].logProbability, result.scores[1].logProbability);
}

TEST(GestureRecognizerTest, RecognisesAndTellsTheMargin) {
    const GestureRecognizer recognizer(smallModel(0.01), asDrawn);
    const Result result = recognizer.recognize(walk({0, 1, 1}));
    ASSERT_TRUE(result.recognized());
    EXPECT_EQ(result.gesture, "right");
    EXPECT_EQ(result.rejection, Rejection::None);
    const auto verdict = recognizer.model().get().evaluate({0, 1, 1});
    ASSERT_EQ(verdict.winner, 0);
    EXPECT_NEAR(result.margin,
                std::log(verdict.gestures[0].weightedProbability / verdict.threshold), 1e-12);
    EXPECT_GT(result.margin, 0.0);
}

TEST(GestureRecognizerTest, RejectsBelowTheThreshold) {
    const GestureRecognizer recognizer(smallModel(0.999), asDrawn);
    const Result result = recognizer.recognizeSymbols({0, 1, 1});
    EXPECT_EQ(result.rejection, Rejection::Threshold);
    EXPECT_EQ(result.gesture, "");
    EXPECT_FALSE(result.recognized());
    EXPECT_LT(result.margin, 0.0);
    EXPECT_EQ(result.scores[0].gesture, "right");
}

TEST(GestureRecognizerTest, RejectsWhatIsTooShort) {
    const GestureRecognizer recognizer(smallModel(), asDrawn);
    for (const Points& points : {Points{}, Points{{1, 1}}, Points{{1, 1}, {1, 1}}, walk({0})}) {
        const Result result = recognizer.recognize(points);
        EXPECT_EQ(result.rejection, Rejection::TooShort);
        EXPECT_TRUE(result.scores.empty());
        EXPECT_EQ(result.gesture, "");
        EXPECT_EQ(result.margin, -infinity);
    }
}

/// A model of gestures that start with symbol 0 alone and move on at once, to end with 1.
RecognitionModel strictModel() {
    Vesk::ML::LeftRightHMM gesture = Vesk::Test::smallGesture("strict", 0, 1);
    gesture.a.data = {0.5, 0.5, 0.0, 1.0};
    gesture.b.data = {1, 0, 0, 0, 0, 1, 0, 0};
    RecognitionModel model;
    model.add(gesture);
    model.build(Vesk::Test::smallSettings(0.01, {gesture}));
    return model;
}

TEST(GestureRecognizerTest, RejectsWhatNoGestureCanProduce) {
    const GestureRecognizer recognizer(strictModel(), asDrawn);
    const Result result = recognizer.recognizeSymbols({1, 0});
    EXPECT_EQ(result.rejection, Rejection::ZeroProbability);
    EXPECT_EQ(result.margin, -infinity);
    ASSERT_EQ(result.scores.size(), 1u);
    EXPECT_EQ(result.scores[0].logProbability, -infinity);
}

// 0 0 is produced in state 0 alone: likely enough, but it does not end in the last state.
TEST(GestureRecognizerTest, RejectsWhatDoesNotEndInTheLastState) {
    const GestureRecognizer recognizer(strictModel(), asDrawn);
    const Result result = recognizer.recognizeSymbols({0, 0});
    EXPECT_EQ(result.rejection, Rejection::LastState);
    EXPECT_GT(result.margin, 0.0);
    EXPECT_EQ(result.gesture, "");
}

TEST(GestureRecognizerTest, ScoresUnderflowedSequencesWithTheScaledPass) {
    const GestureRecognizer recognizer(smallModel(), asDrawn);
    std::vector<int> symbols(4000, 0);
    const Result result = recognizer.recognizeSymbols(symbols);
    EXPECT_EQ(result.rejection, Rejection::ZeroProbability);
    ASSERT_EQ(result.scores.size(), 2u);
    const auto& gestures = recognizer.model().gestures();
    EXPECT_TRUE(
        bitEqual(std::max(gestures[0]->logLikelihood(symbols), gestures[2]->logLikelihood(symbols)),
                 result.scores[0].logProbability));
    EXPECT_LT(result.scores[0].logProbability, -1000.0);
    EXPECT_TRUE(std::isfinite(result.scores[0].logProbability));
}

TEST(GestureRecognizerTest, AThresholdOfZeroIsClearedBeyondMeasure) {
    const Result result = GestureRecognizer(smallModel(0.0), asDrawn).recognizeSymbols({0, 1});
    EXPECT_EQ(result.gesture, "right");
    EXPECT_EQ(result.margin, infinity);
}

TEST(GestureRecognizerTest, AnswersAtOtherRatiosAreThoseOfModelsThatHaveThem) {
    const GestureRecognizer recognizer(smallModel(0.3), asDrawn);
    Random random(3);
    std::set<std::string> seen;
    for (int n = 0; n < 300; ++n) {
        std::vector<int> symbols;
        for (int t = random.integer(0, 6); t > 0; --t) symbols.push_back(random.integer(0, 3));
        Trace trace;
        trace.points = walk(symbols);
        const std::vector<Answer> answers = recognizer.answers(trace);
        for (const double ratio : {1e-4, 0.3, 1.0, 2.0, 3.5, 6.0, 10.0, 30.0, 1e3, 1e5}) {
            SCOPED_TRACE(::testing::Message() << "sequence " << n << ", ratio " << ratio);
            const double p = ratio / (ratio + 3.0);
            const Result result = GestureRecognizer(smallModel(p), asDrawn).recognize(trace);
            ASSERT_EQ(answerAt(answers, std::log(ratio)), result.gesture);
            seen.insert(toString(result.rejection) + result.gesture);
        }
        for (std::size_t i = 1; i < answers.size(); ++i) {
            ASSERT_GE(answers[i - 1].logRatio, answers[i].logRatio);
        }
    }
    EXPECT_GE(seen.size(), 5U) << "the sequences do not reach every gesture and rejection";
}

TEST(GestureRecognizerTest, OverAThresholdOfZeroAnAnswerHoldsAtEveryRatio) {
    const GestureRecognizer recognizer(smallModel(0.0), asDrawn);
    Trace trace;
    trace.points = walk({0, 1, 1});
    const std::vector<Answer> answers = recognizer.answers(trace);
    ASSERT_FALSE(answers.empty());
    EXPECT_EQ(answers.front().logRatio, infinity);
    EXPECT_EQ(answerAt(answers, 1e300), "right");
}

TEST(GestureRecognizerTest, RefusesUnusableTracesAndSymbols) {
    const GestureRecognizer recognizer(smallModel(), asDrawn);
    Trace trace;
    trace.source = "t";
    trace.line = 2;
    trace.points = {{0, 0}, {1}};
    EXPECT_EQ(textOf<InputError>([&] { recognizer.recognize(trace); }),
              "t:2: found 1 number in points[1], expected at least 2");
    EXPECT_EQ(textOf<InputError>([&] {
                  recognizer.recognizeSymbols({0, 4});
              }),
              "found the symbol 4, expected 0 to 3");
    EXPECT_EQ(textOf<InputError>([&] { recognizer.recognizeSymbols({-1}); }),
              "found the symbol -1, expected 0 to 3");
}

TEST(GestureRecognizerTest, RefusesAModelThatIsNotSound) {
    RecognitionModel model = smallModel();
    model.gestures()[0]->b(0, 0) = infinity;
    EXPECT_EQ(textOf<InputError>([&] { GestureRecognizer(std::move(model), asDrawn, "m.txt"); }),
              "m.txt: gesture \"right\": found b(0, 0) = inf, expected a finite number of at least "
              "0");
}

TEST(GestureRecognizerTest, NamesEveryReason) {
    EXPECT_STREQ(toString(Rejection::None), "");
    EXPECT_STREQ(toString(Rejection::TooShort), "too short");
    EXPECT_STREQ(toString(Rejection::ZeroProbability), "zero probability");
    EXPECT_STREQ(toString(Rejection::Threshold), "threshold");
    EXPECT_STREQ(toString(Rejection::LastState), "last state");
}

/// A model of the drawn gestures with a threshold in the midst of their test traces.
const RecognitionModel& trainedModel() {
    static const RecognitionModel model = [] {
        TrainingOptions options;
        options.states = 12;
        options.symbols = 16;
        options.subModels = 2;
        options.discrimination = 0;
        options.acceptanceRatio = 1e5;
        return GestureTrainer(options).train(Vesk::Test::drawnTraces(1, 2, 6)).model.clone();
    }();
    return model;
}

// Random walks, drawings from neat to shaky, and short pieces: every verdict occurs.
std::vector<Points> mixedTraces() {
    std::vector<Points> traces;
    Random random(11);
    for (const double tremor : {0.05, 0.3, 0.6, 1.5}) {
        for (const Trace& trace : Vesk::Test::drawnTraces(5, 1, 10, tremor)) {
            traces.push_back(trace.points);
            const auto length = static_cast<std::size_t>(random.integer(0, 59));
            traces.push_back(
                {trace.points.begin(), trace.points.begin() + static_cast<std::ptrdiff_t>(length)});
        }
    }
    return traces;
}

TEST(GestureRecognizerTest, TheVerdictIsTheLibrarysOnTheSavedFile) {
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("model");
    saveModel(trainedModel(), path);
    const GestureRecognizer recognizer(loadModel(path), {}, path);
    const Vesk::Test::Capture capture;
    RecognitionModelHMM loaded;
    ASSERT_TRUE(loaded.load(path.c_str()));
    Vesk::ML::VectorQuantizer2D quantizer;
    quantizer.setCodebook(loaded.codebook);
    std::set<std::string> verdicts;
    for (const Points& points : mixedTraces()) {
        Points prepared = Resampler().resample(points);
        const std::vector<int> symbols =
            quantizer.classify(prepared, loaded.proxFilterThreshold, loaded.rotationAllowed);
        const Result result = recognizer.recognize(points);
        ASSERT_EQ(result.gesture, loaded.check(symbols));
        ASSERT_EQ(result.gesture.empty(), !result.recognized());
        verdicts.insert(result.recognized() ? result.gesture : toString(result.rejection));
    }
    EXPECT_GE(verdicts.size(), 7u) << "the traces do not reach every gesture and rejection";
    for (Vesk::ML::HMM* gesture : loaded.gestures) delete gesture;
    delete loaded.recognitionHMM;
}

TEST(GestureRecognizerTest, WritesNothing) {
    const GestureRecognizer recognizer(trainedModel().clone());
    const Vesk::Test::Capture capture;
    recognizer.recognize(mixedTraces().front());
    EXPECT_EQ(capture.text(), "");
}

TEST(GestureRecognizerTest, SeveralThreadsGetTheSameAnswers) {
    const GestureRecognizer recognizer(trainedModel().clone());
    const std::vector<Points> traces = mixedTraces();
    std::vector<Result> alone;
    for (const Points& points : traces) alone.push_back(recognizer.recognize(points));
    std::vector<std::vector<Result>> together(3);
    std::vector<std::thread> threads;
    for (std::vector<Result>& results : together) {
        threads.emplace_back([&] {
            for (const Points& points : traces) results.push_back(recognizer.recognize(points));
        });
    }
    for (std::thread& thread : threads) thread.join();
    for (const std::vector<Result>& results : together) {
        ASSERT_EQ(results.size(), alone.size());
        for (std::size_t i = 0; i < alone.size(); ++i) {
            EXPECT_EQ(results[i].gesture, alone[i].gesture);
            EXPECT_TRUE(bitEqual(alone[i].margin, results[i].margin));
        }
    }
}

}  // namespace
}  // namespace Vesk::Kit
