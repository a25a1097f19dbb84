#include <support/Capture.h>
#include <support/Files.h>
#include <support/Random.h>
#include <support/RecognitionModels.h>

#include <gtest/gtest.h>

#include <new>
#include <sstream>
#include <string>
#include <vector>

namespace Vesk::Test {
namespace {

using Reference::Recognition::Recogniser;
using Reference::Recognition::withoutNanSigns;
using Vesk::ML::RecognitionModelHMM;

/// Loads `text` with library and reference into models in the same state and compares everything.
/// Says whether both refused it.
bool compareLoading(RecognitionModelHMM& model, const std::string& text, const std::string& path) {
    Recogniser expected = recogniserOf(model);
    std::ostringstream expectedOutput;
    bool refused = false;
    try {
        EXPECT_TRUE(expected.load(text, expectedOutput));
    } catch (const std::bad_alloc&) {
        refused = true;
    }
    writeFile(path, text);
    const Capture capture;
    if (refused) {
        EXPECT_THROW(model.load(path.c_str()), std::bad_alloc);
    } else {
        EXPECT_TRUE(model.load(path.c_str()));
        expectSameRecogniser(expected, recogniserOf(model));
    }
    EXPECT_EQ(expectedOutput.str(), capture.text());
    EXPECT_EQ(expected.codebook, model.codebook);
    EXPECT_EQ(expected.gestures.size(), model.gestures.size());
    return refused;
}

void compareWriting(RecognitionModelHMM& model, const std::string& path) {
    const Recogniser reference = recogniserOf(model);
    const std::string expected = withoutNanSigns(reference.fileText());
    model.write(path.c_str());
    EXPECT_EQ(expected, withoutNanSigns(readFile(path)));
    EXPECT_TRUE(model.save(path));
    EXPECT_EQ(expected, withoutNanSigns(readFile(path)));

    std::ostringstream header;
    reference.headerBlock(header);
    std::stringstream foundHeader;
    model.writeToStream(foundHeader, nullptr);
    EXPECT_EQ(withoutNanSigns(header.str()), withoutNanSigns(foundHeader.str()));
    for (std::size_t g = 0; g < model.gestures.size(); ++g) {
        std::ostringstream block;
        Recogniser::gestureBlock(block, reference.gestures[g]);
        std::stringstream foundBlock;
        model.writeToStream(foundBlock, model.gestures[g]);
        EXPECT_EQ(withoutNanSigns(block.str()), withoutNanSigns(foundBlock.str()));
    }
}

/// A model with gestures, settings and codebook, and its combined model.
struct RandomModel {
    GestureSet set;
    RecognitionModelHMM model;

    RandomModel(Random& random, Parameters kind) {
        set = randomGestures(random, random.integer(1, 4), 5, random.integer(1, 6), kind);
        model = RecognitionModelHMM(set.pointers(), random.chance(0.2) ? 1.0 : random.unit());
        model.setName("model" + std::to_string(random.integer(0, 99)));
        model.initialize();
        model.codebook = randomRow(random, random.integer(0, 5), Parameters::Unnormalised);
        model.proxFilterThreshold = static_cast<float>(random.unit() * 50.0);
        model.rotationAllowed = random.chance(0.5);
    }
};

void compareWritingAndLoading(Parameters kind, std::uint64_t firstSeed) {
    const TemporaryFolder folder;
    for (std::uint64_t seed = firstSeed; seed < firstSeed + 500; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        RandomModel source(random, kind);
        compareWriting(source.model, folder.path("written"));
        RecognitionModelHMM fresh;
        EXPECT_FALSE(compareLoading(fresh, readFile(folder.path("written")), folder.path("read")));
        if (testing::Test::HasFailure()) return;
    }
}

TEST(RecognitionFile, MatchesTheReferenceOnStochasticModels) {
    compareWritingAndLoading(Parameters::Stochastic, 60000);
}
TEST(RecognitionFile, MatchesTheReferenceOnSparseModels) {
    compareWritingAndLoading(Parameters::Sparse, 61000);
}
TEST(RecognitionFile, MatchesTheReferenceOnUnnormalisedModels) {
    compareWritingAndLoading(Parameters::Unnormalised, 62000);
}
TEST(RecognitionFile, MatchesTheReferenceOnTinyModels) {
    compareWritingAndLoading(Parameters::Tiny, 63000);
}
TEST(RecognitionFile, MatchesTheReferenceOnOddModels) {
    compareWritingAndLoading(Parameters::Odd, 64000);
}

TEST(RecognitionFile, WritingMatchesTheReferenceWhereStagingAndCombinedModelDiffer) {
    const TemporaryFolder folder;
    for (std::uint64_t seed = 65000; seed < 65500; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        RandomModel source(random, Parameters::Stochastic);
        source.model.name = "other";
        source.model.numStates = static_cast<unsigned>(random.integer(0, 20));
        source.model.vocabSize = static_cast<unsigned>(random.integer(0, 20));
        source.model.pi.assign(1, 0.5);
        source.model.a.resize(1, 1);
        source.model.b.resize(0, 3);
        source.model.vocab.resize(0, 0);
        Vesk::ML::HMM combined(random.integer(1, 6), random.integer(1, 6), random.integer(1, 3));
        fillRandom(combined, random, Parameters::Sparse);
        for (double& value : combined.vocab.data) value = random.unit();
        source.model.recognitionHMM = &combined;
        compareWriting(source.model, folder.path("written"));
        if (testing::Test::HasFailure()) return;
    }
}

std::vector<std::string> tokensOf(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> tokens;
    for (std::string token; in >> token;) tokens.push_back(token);
    return tokens;
}

std::string joined(const std::vector<std::string>& tokens) {
    std::string text;
    for (const std::string& token : tokens) text += token + "\n";
    return text;
}

TEST(RecognitionFile, LoadingMatchesTheReferenceOnDamagedFiles) {
    static const std::string odd[] = {
        "0",          "1",           "2",           "3",
        "-1",         "-5",          "inf",         "nan",
        "-nan",       "1e999",       "-1e999",      "0x1F",
        "4294967295", "99999999999", "word",        "1.5",
        ".5",         "1e-400",      "5e-324",      "+",
        "-",          "1e",          "1e+",         "0.5.5",
        "1,5",        "007",         "1-2",         std::string("1\0", 2),
        "--1",        "2147483648",  "-2147483649", "e5"};
    const TemporaryFolder folder;
    int refused = 0;
    int loaded = 0;
    for (std::uint64_t seed = 70000; seed < 72500; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        RandomModel source(random, Parameters::Stochastic);
        std::vector<std::string> tokens = tokensOf(recogniserOf(source.model).fileText());
        const int damages = random.integer(1, 2);
        for (int d = 0; d < damages && !tokens.empty(); ++d) {
            // Half of the damage strikes the counts, which come early.
            const int last = static_cast<int>(tokens.size()) - 1;
            const int most = random.chance(0.5) ? std::min(last, 14) : last;
            const auto at = random.integer(0, most);
            switch (random.integer(0, 3)) {
                case 0: tokens.erase(tokens.begin() + at); break;
                case 1: tokens.insert(tokens.begin() + at, odd[random.integer(0, 31)]); break;
                default: tokens[static_cast<std::size_t>(at)] = odd[random.integer(0, 31)]; break;
            }
        }
        std::string text = joined(tokens);
        RecognitionModelHMM model;
        ++(compareLoading(model, text, folder.path("model")) ? refused : loaded);
        if (testing::Test::HasFailure()) {
            FAIL() << text;
        }
    }
    EXPECT_GT(refused, 40);
    EXPECT_GT(loaded, 1000);
}

TEST(RecognitionFile, LoadingMatchesTheReferenceOnFilesCutAnywhere) {
    const TemporaryFolder folder;
    for (std::uint64_t seed = 75000; seed < 76000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        RandomModel source(random, Parameters::Stochastic);
        std::string text = recogniserOf(source.model).fileText();
        text.resize(static_cast<std::size_t>(random.integer(0, static_cast<int>(text.size()))));
        RecognitionModelHMM model;
        EXPECT_FALSE(compareLoading(model, text, folder.path("model")));
        if (testing::Test::HasFailure()) {
            FAIL() << text;
        }
    }
}

TEST(RecognitionFile, LoadingMatchesTheReferenceIntoModelsThatHoldSomething) {
    const TemporaryFolder folder;
    for (std::uint64_t seed = 77000; seed < 77600; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        RandomModel target(random, Parameters::Stochastic);
        for (int round = 0; round < 3; ++round) {
            RandomModel source(random, Parameters::Sparse);
            std::vector<std::string> tokens = tokensOf(recogniserOf(source.model).fileText());
            if (random.chance(0.3)) {
                tokens[static_cast<std::size_t>(
                    random.integer(8, static_cast<int>(tokens.size()) - 1))] = "word";
            }
            compareLoading(target.model, joined(tokens), folder.path("model"));
        }
        if (testing::Test::HasFailure()) return;
    }
}

}  // namespace
}  // namespace Vesk::Test
