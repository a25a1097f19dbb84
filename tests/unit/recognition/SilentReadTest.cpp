#include <support/Capture.h>
#include <support/Files.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::RecognitionModelHMM;

constexpr const char* twoGestures =
    "2.5 0 1\n45\n\nhands\n1 2 1 0.5\n1\n0.5\n0.25 0.75\n0 1\n\n"
    "up\n1 2 1 3\n1\n0.125\n0.875 0.0625\n\ndown\n1 2 1 1\n1\n1\n0.5 0.5\n\n";

TEST(ReadModelFile, IsLoadWithoutAWord) {
    const TemporaryFolder folder;
    writeFile(folder.path("model"), twoGestures);
    RecognitionModelHMM loaded;
    RecognitionModelHMM model;
    {
        const Capture silence;
        ASSERT_TRUE(loaded.load(folder.path("model").c_str()));
    }
    Capture capture;
    EXPECT_TRUE(model.read(folder.path("model")));
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(capture.flushes(), 0);
    expectSameRecogniser(recogniserOf(loaded), recogniserOf(model));
}

TEST(ReadModelFile, TellsEveryNameBeforeItsGestureIsThere) {
    const TemporaryFolder folder;
    writeFile(folder.path("model"), twoGestures);
    RecognitionModelHMM model;
    std::vector<std::string> told;
    Capture capture;
    EXPECT_TRUE(model.read(folder.path("model"), [&](const std::string& name) {
        EXPECT_EQ(model.gestures.size(), told.size());
        EXPECT_EQ(model.name, "hands");
        told.push_back(name);
    }));
    EXPECT_EQ(told, (std::vector<std::string>{"up", "down"}));
    EXPECT_EQ(capture.text(), "");
}

TEST(ReadModelFile, TellsTheNameAlsoOfAGestureThatIsRefused) {
    const TemporaryFolder folder;
    writeFile(folder.path("model"), "1 1 0 n 1 1 1 1 1 1 1 0 huge 100000 1 1 1 ");
    RecognitionModelHMM model;
    std::vector<std::string> told;
    EXPECT_THROW(
        model.read(folder.path("model"), [&](const std::string& name) { told.push_back(name); }),
        std::bad_alloc);
    EXPECT_EQ(told, std::vector<std::string>{"huge"});
}

TEST(ReadModelFile, AMissingFileReturnsFalseAndChangesNothing) {
    const TemporaryFolder folder;
    RecognitionModelHMM model;
    const auto before = recogniserOf(model);
    EXPECT_FALSE(model.read(folder.path("missing")));
    EXPECT_FALSE(model.read(""));
    expectSameRecogniser(before, recogniserOf(model));
}

}  // namespace
}  // namespace Vesk::Test
