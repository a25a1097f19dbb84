#include "RecordedData.h"

#include <support/Capture.h>
#include <support/Files.h>
#include <veskkit/io/ModelFile.h>
#include <veskkit/io/TraceFiles.h>
#include <veskkit/recognition/GestureRecognizer.h>
#include <veskkit/training/GestureTrainer.h>

#include <vesk/quantizer/VectorQuantizer2D.h>
#include <vesk/recognition/RecognitionModelHMM.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::dataFile;

struct Split {
    std::vector<Trace> training;
    std::vector<Trace> test;
};

Split leaveOut(const std::vector<Trace>& traces, const std::string& user) {
    Split split;
    for (const Trace& trace : traces) {
        (trace.user == user ? split.test : split.training).push_back(trace);
    }
    return split;
}

struct Tally {
    std::size_t traces = 0;
    std::size_t likeliest = 0;
    std::size_t correct = 0;
    std::size_t wrong = 0;

    double percent(std::size_t count) const {
        return 100.0 * static_cast<double>(count) / static_cast<double>(traces);
    }
};

void recognizeAll(const GestureRecognizer& recognizer, const std::vector<Trace>& test,
                  Tally& tally) {
    for (const Trace& trace : test) {
        const Result result = recognizer.recognize(trace);
        ++tally.traces;
        tally.likeliest += !result.scores.empty() && result.scores[0].gesture == trace.gesture;
        tally.correct += result.gesture == trace.gesture;
        tally.wrong += result.recognized() && result.gesture != trace.gesture;
    }
}

TEST(RecordedTracesTest, PeopleTheModelHasNotSeenAreRecognised) {
    const std::string path = dataFile("unistroke16.jsonl");
    if (path.empty()) GTEST_SKIP() << "no recorded traces";
    const std::vector<Trace> traces = readTraces(path);
    TrainingOptions options;
    options.calibrate = false;
    Tally tally;
    for (const char* user : {"s02", "s04", "s07", "s08", "s09", "s11"}) {
        const Split split = leaveOut(traces, user);
        TrainingResult result = GestureTrainer(options).train(split.training);
        const GestureRecognizer recognizer(std::move(result.model));
        recognizeAll(recognizer, split.test, tally);
    }
    EXPECT_EQ(tally.traces, 2880u);
    EXPECT_GE(tally.percent(tally.likeliest), 99.3);
    EXPECT_GE(tally.percent(tally.correct), 96.0);
    EXPECT_LE(tally.percent(tally.wrong), 0.6);
}

TEST(RecordedTracesTest, CalibrationMeetsItsTargetOnPeopleItHasNotSeen) {
    const std::string path = dataFile("unistroke16.jsonl");
    if (path.empty()) GTEST_SKIP() << "no recorded traces";
    const Split split = leaveOut(readTraces(path), "s07");
    TrainingResult result = GestureTrainer().train(split.training);
    EXPECT_EQ(result.report.calibrationRuns, 5u);
    EXPECT_GT(result.report.acceptanceRatio, 1e3);
    EXPECT_LT(result.report.acceptanceRatio, 1e10);
    EXPECT_EQ(result.report.turns, 2);
    const GestureRecognizer recognizer(std::move(result.model));
    Tally tally;
    recognizeAll(recognizer, split.test, tally);
    EXPECT_GE(tally.percent(tally.correct), 98.0);
}

TEST(RecordedTracesTest, TheVerdictIsTheLibrarysOnTheSavedFile) {
    const std::string path = dataFile("unistroke16_pilot.jsonl");
    if (path.empty()) GTEST_SKIP() << "no recorded traces";
    Split split;
    for (const Trace& trace : readTraces(path)) {
        (trace.line % 3 == 0 ? split.training : split.test).push_back(trace);
    }
    // Other people's other shapes, most of which are no gesture of the model.
    const std::string shapes = dataFile("sketch_shapes.jsonl");
    ASSERT_NE(shapes, "");
    for (const Trace& trace : readTraces(shapes)) split.test.push_back(trace);

    const Vesk::Test::TemporaryFolder folder;
    const std::string file = folder.path("model");
    TrainingOptions options;
    options.turns = 2;
    saveModel(GestureTrainer(options).train(split.training).model, file);
    const GestureRecognizer recognizer(loadModel(file), {}, file);

    const Vesk::Test::Capture capture;
    Vesk::ML::RecognitionModelHMM loaded;
    ASSERT_TRUE(loaded.load(file.c_str()));
    Vesk::ML::VectorQuantizer2D quantizer;
    quantizer.setCodebook(loaded.codebook);
    std::set<std::string> verdicts;
    for (const Trace& trace : split.test) {
        Points points = Resampler().resample(trace);
        const std::vector<int> symbols =
            quantizer.classify(points, loaded.proxFilterThreshold, loaded.rotationAllowed);
        const std::string gesture = recognizer.recognize(trace).gesture;
        ASSERT_EQ(gesture, loaded.check(symbols)) << placeOf(trace);
        verdicts.insert(gesture);
    }
    EXPECT_EQ(verdicts.size(), 17u) << "not every gesture and a rejection occurred";
    for (Vesk::ML::HMM* gesture : loaded.gestures) delete gesture;
    delete loaded.recognitionHMM;
}

TEST(RecordedTracesTest, EveryRecordedLineIsRead) {
    struct File {
        const char* name;
        std::size_t traces;
    };
    for (const File& file : {File{"pen_digits.jsonl", 2942}, File{"pen_letters.jsonl", 3134},
                             File{"sketch_shapes.jsonl", 308}, File{"unistroke16.jsonl", 2880}}) {
        SCOPED_TRACE(file.name);
        const std::string path = dataFile(file.name);
        if (path.empty()) GTEST_SKIP() << "no recorded traces";
        EXPECT_EQ(readTraces(path).size(), file.traces);
    }
}

}  // namespace
}  // namespace Vesk::Kit
