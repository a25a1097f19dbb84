#include <support/Files.h>
#include <support/Random.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <string>

namespace Vesk::Test {
namespace {

using Vesk::ML::RecognitionModelHMM;

TEST(RecognitionSceneNode, MatchesTheReferenceByteForByte) {
    const TemporaryFolder folder;
    const std::string path = folder.path("scene");
    for (std::uint64_t seed = 50000; seed < 50700; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const Parameters kind = allParameterKinds[seed % 5];
        GestureSet set =
            randomGestures(random, random.integer(0, 4), 6, random.integer(1, 8), kind);
        RecognitionModelHMM model(set.pointers(), random.unit());
        if (random.chance(0.8)) model.initialize();
        if (random.chance(0.1)) model.name = std::string("a\0b", 3);
        if (random.chance(0.1)) model.name = "two words";
        if (random.chance(0.3) && model.numStates > 0) {
            --model.numStates;
            --model.vocabSize;
        }
        model.codebook = randomRow(random, random.integer(0, 9), Parameters::Unnormalised);
        model.proxFilterThreshold = static_cast<float>(random.unit() * 100.0);
        model.rotationAllowed = random.chance(0.5);
        const std::string expected =
            Reference::Recognition::withoutNanSigns(recogniserOf(model).sceneText());
        model.exportNode(path.c_str());
        EXPECT_EQ(expected, Reference::Recognition::withoutNanSigns(readFile(path)));
        EXPECT_TRUE(model.saveNode(path));
        EXPECT_EQ(expected, Reference::Recognition::withoutNanSigns(readFile(path)));
        if (testing::Test::HasFailure()) return;
    }
}

}  // namespace
}  // namespace Vesk::Test
