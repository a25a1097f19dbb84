#include <support/Capture.h>
#include <support/Files.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::HMM;
using Vesk::ML::RecognitionModelHMM;

constexpr const char* fileText =
    "1 1 2\n0 90\n\nmodel\n1 2 1 0.5\n1\n1\n0.25 0.75\n0 1\n\nwave\n1 2 1 3\n1\n1\n0.5 0.5\n\n";

TEST(Ownership, EveryCombinedModelStaysValidAfterItWasReplaced) {
    GestureSet set;
    fill(set.add("g", 1, 2), {1}, {0.5}, {0.25, 0.75});
    RecognitionModelHMM model(set.pointers(), 0.5);
    std::vector<HMM*> handedOut;
    for (int round = 0; round < 20; ++round) {
        model.name = "round" + std::to_string(round);
        ASSERT_TRUE(round == 0 ? model.initialize() : model.setParameters());
        handedOut.push_back(model.recognitionHMM);
        ASSERT_TRUE(model.createRecognitionHMMfromParameters());
        handedOut.push_back(model.recognitionHMM);
    }
    ASSERT_EQ(handedOut.size(), 40U);
    for (std::size_t first = 0; first < handedOut.size(); ++first) {
        for (std::size_t second = 0; second < first; ++second) {
            EXPECT_NE(handedOut[first], handedOut[second]);
        }
    }
    EXPECT_EQ(handedOut[0]->name, "round0");
    EXPECT_EQ(handedOut[1]->name, "round0");
    EXPECT_EQ(handedOut[38]->name, "round19");
    for (HMM* combined : handedOut) {
        EXPECT_TRUE(bitEqual(std::vector<double>{0.25, 0.75}, combined->b.data));
    }
}

TEST(Ownership, CombinedModelAndGesturesOutliveTheRecognitionModel) {
    GestureSet set;
    fill(set.add("g", 1, 2), {1}, {0.5}, {0.25, 0.75});
    auto model = std::make_unique<RecognitionModelHMM>(set.pointers(), 0.5);
    ASSERT_TRUE(model->initialize());
    HMM* const combined = model->recognitionHMM;
    HMM* const gesture = model->gestures[0];
    model.reset();
    // 1 * 0.75 * 0.5 * 0.75
    EXPECT_EQ(combined->forwardProbability({1, 1}, 2), 0.28125);
    EXPECT_EQ(gesture->forwardProbability({1, 1}, 2), 0.28125);
}

TEST(Ownership, LoadedModelsOutliveTheRecognitionModel) {
    const TemporaryFolder folder;
    writeFile(folder.path("model"), fileText);
    auto model = std::make_unique<RecognitionModelHMM>();
    {
        const Capture capture;
        ASSERT_TRUE(model->load(folder.path("model").c_str()));
    }
    ASSERT_EQ(model->gestures.size(), 1U);
    HMM* const combined = model->recognitionHMM;
    HMM* const gesture = model->gestures[0];
    model.reset();
    EXPECT_EQ(combined->name, "model");
    EXPECT_EQ(gesture->name, "wave");
    EXPECT_EQ(gesture->forwardProbability({1, 0, 1}, 3), 0.125);
}

TEST(Ownership, AHostMayDeleteWhatTheLoaderMade) {
    const TemporaryFolder folder;
    writeFile(folder.path("model"), fileText);
    RecognitionModelHMM model;
    {
        const Capture capture;
        ASSERT_TRUE(model.load(folder.path("model").c_str()));
    }
    for (HMM* gesture : model.gestures) delete gesture;
    model.gestures.clear();
    delete model.recognitionHMM;
    model.recognitionHMM = nullptr;
    // And the model goes on.
    EXPECT_EQ(model.forwardProb({0, 1}), 0.0);
    ASSERT_TRUE(model.createRecognitionHMMfromParameters());
    EXPECT_EQ(model.forwardProb({0, 1}), 0.1875);
}

TEST(Ownership, ACopySharesGesturesAndCombinedModelAndKeepsItsOwnFields) {
    GestureSet set;
    fill(set.add("g", 1, 2), {1}, {0.5}, {0.25, 0.75});
    RecognitionModelHMM model(set.pointers(), 0.5);
    ASSERT_TRUE(model.initialize());
    RecognitionModelHMM copy(model);
    EXPECT_EQ(copy.recognitionHMM, model.recognitionHMM);
    EXPECT_EQ(copy.gestures, model.gestures);
    expectSameRecogniser(recogniserOf(model), recogniserOf(copy));
    copy.pi[0] = 0.5;
    copy.codebook.push_back(3.0);
    EXPECT_EQ(model.pi[0], 1.0);
    EXPECT_TRUE(model.codebook.empty());
}

}  // namespace
}  // namespace Vesk::Test
