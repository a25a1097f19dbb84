// One host's whole life in one process, through the public interface of the shared objects: what
// it prints, writes and finds, byte for byte.

#include <support/Capture.h>
#include <support/Files.h>
#include <support/Random.h>
#include <support/RecognitionHostReference.h>
#include <support/RecognitionModels.h>

#include <vesk/leftright/LeftRightHMM.h>
#include <vesk/quantizer/VectorQuantizer2D.h>
#include <vesk/recognition/RecognitionModelHMM.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <list>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace Vesk::Test {
namespace {

namespace Ref = Reference::Recognition;
using Ref::Trace;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;
using Vesk::ML::VectorQuantizer2D;

constexpr int symbols = 8;
constexpr float proximity = 3.0f;

/// Straight strokes in the given directions (degrees), 6 steps each of about 4 units, with tremor,
/// a repeated position now and then and one that lies close to its predecessor.
Trace strokes(Random& random, const std::vector<double>& directions) {
    double x = 100.0 * random.unit();
    double y = 100.0 * random.unit();
    Trace trace{{x, y}};
    for (const double direction : directions) {
        for (int step = 0; step < 6; ++step) {
            const double angle = (direction + 24.0 * (random.unit() - 0.5)) * 0.017453292519943295;
            const double length = 3.5 + random.unit();
            x += length * std::cos(angle);
            y += length * std::sin(angle);
            trace.push_back({x, y});
            if (random.chance(0.2)) trace.push_back({x, y});
            if (random.chance(0.2)) trace.push_back({x + 0.5, y});
        }
    }
    return trace;
}

struct Gesture {
    std::string name;
    std::vector<double> directions;
    int states;
    int delta;
};

const std::vector<Gesture> gestures{
    {"square", {0, 90, 180, 270}, 4, 1}, {"zigzag", {45, 315, 45}, 3, 2}, {"line", {0}, 2, 1}};

/// The library's text and flushes against the reference's, step by step.
class Transcript {
public:
    std::ostringstream expected;

    /// After every step of the host: the same text so far, each line flushed, the same precision.
    void compare(const std::string& step) const {
        SCOPED_TRACE("after " + step);
        const std::string wanted = expected.str();
        EXPECT_EQ(wanted, capture.text());
        EXPECT_EQ(std::count(wanted.begin(), wanted.end(), '\n'), capture.flushes());
        EXPECT_EQ(expected.precision(), std::cout.precision());
        EXPECT_EQ(expected.flags(), std::cout.flags());
    }

private:
    Capture capture;
};

TEST(HostLife, FromTracesToRecognitionAsTheTranscriptSays) {
    constexpr std::uint64_t seed = 20240229;
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    const TemporaryFolder folder;
    Transcript transcript;

    // 1. A codebook, saved and loaded.
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(symbols);
    const std::vector<double> codebook = Ref::evenCodebook(symbols);
    ASSERT_EQ(codebook, quantizer.codebook);
    ASSERT_TRUE(quantizer.printCodebook(folder.path("codebook").c_str()));
    EXPECT_EQ(readFile(folder.path("codebook")), Ref::codebookText(codebook));
    EXPECT_EQ(readFile(folder.path("codebook")), "0\n45\n90\n135\n180\n225\n270\n315");
    VectorQuantizer2D loadedQuantizer;
    ASSERT_TRUE(loadedQuantizer.loadCodebook(folder.path("codebook").c_str()));
    EXPECT_EQ(loadedQuantizer.codebook, codebook);
    EXPECT_EQ(loadedQuantizer.codebookSize, symbols);

    // 2. A second quantiser learns its codebook from traces, which writes their counts.
    std::list<Trace> codebookTraces;
    for (const Gesture& gesture : gestures) {
        codebookTraces.push_back(strokes(random, gesture.directions));
        Ref::announceTrace(transcript.expected, codebookTraces.back(), proximity);
    }
    VectorQuantizer2D learner;
    learner.initializeCodebook(symbols);
    const std::vector<double> learnt = learner.trainCodebook(codebookTraces, proximity);
    EXPECT_EQ(learnt.size(), 8U);
    EXPECT_EQ(learnt, learner.codebook);
    transcript.compare("codebook training");

    // 3. Example traces become symbols, symbols become trained gesture models.
    std::vector<std::unique_ptr<LeftRightHMM>> models;
    std::vector<Ref::Model> references;
    for (const Gesture& gesture : gestures) {
        SCOPED_TRACE(gesture.name);
        std::vector<std::vector<int>> sequences;
        for (int example = 0; example < 12; ++example) {
            Trace trace = strokes(random, gesture.directions);
            sequences.push_back(quantizer.classify(trace, proximity, false));
            ASSERT_EQ(Ref::classify(trace, codebook, proximity, false), sequences.back());
            ASSERT_GT(sequences.back().size(), 4U);
        }
        auto model =
            std::make_unique<LeftRightHMM>(gesture.states, symbols, sequences, gesture.delta);
        model->name = gesture.name;
        Ref::Model reference = Ref::leftRightModel(gesture.states, symbols, gesture.delta);
        reference.name = gesture.name;
        EXPECT_EQ(model->trainingSequences, sequences);

        model->initialize(sequences, HMM::EqualSegments);
        Ref::estimateEqualSegments(reference, sequences, transcript.expected);
        expectSameModel(reference, modelOf(*model));
        transcript.compare("the initial estimate");

        model->baumWelchMultiple(sequences, 4);
        Ref::train(reference, sequences, 4, 0.001f, transcript.expected);
        expectSameModel(reference, modelOf(*model));
        transcript.compare("training");
        EXPECT_EQ(std::cout.precision(), 5);

        // Its own file, which only per-symbol values make readable.
        model->vocabValues = codebook;
        const std::string path = folder.path(gesture.name);
        model->write(path.c_str());
        EXPECT_EQ(readFile(path), Ref::leftRightText(reference, codebook));
        const std::unique_ptr<LeftRightHMM> back(Vesk::ML::loadLR(path.c_str()));
        ASSERT_NE(back, nullptr);
        back->write(folder.path("again").c_str());
        EXPECT_EQ(readFile(folder.path("again")), readFile(path));

        models.push_back(std::move(model));
        references.push_back(reference);
    }

    // 4. Composition. A check before it has the threshold 0.
    std::vector<HMM*> pointers;
    for (const auto& model : models) pointers.push_back(model.get());
    RecognitionModelHMM recogniser(pointers, 0.01);
    Ref::Recogniser reference(references, 0.01);
    Trace probe = strokes(random, gestures[1].directions);
    const std::vector<int> probeSymbols = loadedQuantizer.classify(probe, proximity, false);
    EXPECT_EQ(reference.check(probeSymbols, transcript.expected).name,
              recogniser.check(probeSymbols));
    transcript.compare("a check without combined model");
    recogniser.setName("hands");
    reference.setName("hands");
    ASSERT_TRUE(recogniser.initialize());
    ASSERT_TRUE(reference.initialize());
    recogniser.codebook = quantizer.codebook;
    reference.codebook = codebook;
    recogniser.proxFilterThreshold = proximity;
    reference.proxFilterThreshold = proximity;
    recogniser.rotationAllowed = false;
    reference.rotationAllowed = false;
    expectSameRecogniser(reference, recogniserOf(recogniser));

    // 5. Recognition with five digits, which training left, then with three, which print leaves.
    std::vector<std::vector<int>> newSequences;
    for (const Gesture& gesture : gestures) {
        for (int example = 0; example < 4; ++example) {
            Trace trace = strokes(random, gesture.directions);
            newSequences.push_back(quantizer.classify(trace, recogniser.proxFilterThreshold,
                                                      recogniser.rotationAllowed));
        }
    }
    newSequences.push_back({});
    newSequences.push_back({3});
    newSequences.push_back({0, 3, 6, 1, 4, 7});
    const auto checkAll = [&](RecognitionModelHMM& model, const Ref::Recogniser& expected) {
        std::vector<std::string> names;
        for (const std::vector<int>& sequence : newSequences) {
            names.push_back(model.check(sequence));
            EXPECT_EQ(expected.check(sequence, transcript.expected).name, names.back());
        }
        return names;
    };
    const std::vector<std::string> names = checkAll(recogniser, reference);
    transcript.compare("checks at precision 5");
    recogniser.print();
    reference.print(transcript.expected);
    transcript.compare("print");
    EXPECT_EQ(std::cout.precision(), 3);
    EXPECT_EQ(checkAll(recogniser, reference), names);
    transcript.compare("checks at precision 3");

    // The host's own reading of them goes unheard.
    for (std::size_t s = 0; s < newSequences.size(); ++s) {
        const int winner = recogniser.evaluate(newSequences[s]).winner;
        EXPECT_EQ(winner < 0 ? "" : gestures[static_cast<std::size_t>(winner)].name, names[s]);
    }
    transcript.compare("evaluations");

    // 6. The whole set into one file and back, on top of nothing.
    recogniser.write(folder.path("model").c_str());
    EXPECT_EQ(readFile(folder.path("model")), reference.fileText());
    recogniser.exportNode(folder.path("scene").c_str());
    EXPECT_EQ(readFile(folder.path("scene")), reference.sceneText());
    RecognitionModelHMM restored;
    Ref::Recogniser restoredReference;
    ASSERT_TRUE(restored.load(folder.path("model").c_str()));
    ASSERT_TRUE(restoredReference.load(reference.fileText(), transcript.expected));
    expectSameRecogniser(restoredReference, recogniserOf(restored));
    transcript.compare("load");
    checkAll(restored, restoredReference);
    transcript.compare("checks of the loaded model");
    EXPECT_FALSE(restored.initialize());
    restored.setModelTransitionProb(0.5);
    restoredReference.setModelTransitionProb(0.5);
    restored.setName("restored");
    restoredReference.setName("restored");
    checkAll(restored, restoredReference);
    restored.print();
    restoredReference.print(transcript.expected);
    transcript.compare("a renamed model");
    restored.write(folder.path("second").c_str());
    EXPECT_EQ(readFile(folder.path("second")), restoredReference.fileText());
    restored.exportNode(folder.path("scene").c_str());
    EXPECT_EQ(readFile(folder.path("scene")), restoredReference.sceneText());

    // 7. More training afterwards: precision 5 again, and the combined model goes stale until the
    // host composes anew.
    const std::vector<std::vector<int>> more{newSequences[0], newSequences[1]};
    models[0]->baumWelchMultiple(more, 2);
    Ref::train(reference.gestures[0], more, 2, 0.001f, transcript.expected);
    transcript.compare("training again");
    EXPECT_EQ(std::cout.precision(), 5);
    checkAll(recogniser, reference);
    ASSERT_TRUE(recogniser.initialize());
    ASSERT_TRUE(reference.initialize());
    checkAll(recogniser, reference);
    transcript.compare("checks of the recomposed model");
}

TEST(HostLife, ThePiecesComeFromTheSharedObject) {
    // Through virtual calls, exported data and inline overloads alike.
    LeftRightHMM gesture(1, 2, 1);
    gesture.name = "g";
    HMM& base = gesture;
    {
        Capture capture;
        base.calcInitialProbs(HMM::EqualSegments, {{0, 1}});
        EXPECT_EQ(capture.text(), "LeftRightHMM::calcInitialProbs: 2\n\n");
    }
    EXPECT_EQ(gesture.b.data, (std::vector<double>{0.5, 0.5}));
    RecognitionModelHMM model({&gesture}, 0.5);
    model.setName("n");
    ASSERT_TRUE(model.initialize());
    const TemporaryFolder folder;
    EXPECT_TRUE(model.save(folder.path("model")));
    EXPECT_TRUE(model.saveNode(folder.path("scene")));
    RecognitionModelHMM back;
    EXPECT_TRUE(back.read(folder.path("model")));
    EXPECT_EQ(back.evaluate({0, 1}).gestures.size(), 1U);
    for (HMM* owned : back.gestures) delete owned;
    delete back.recognitionHMM;
}

}  // namespace
}  // namespace Vesk::Test
