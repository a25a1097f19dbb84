#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/Files.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using Vesk::ML::LeftRightHMM;
using Vesk::ML::loadLR;
using namespace Vesk::Test;

Reference::LeftRightModel randomFileModel(Random& random, Parameters kind) {
    const int N = random.integer(1, 10);
    const int M = random.integer(1, 12);
    Reference::LeftRightModel model =
        randomModel(random, N, M, random.chance(0.5) ? Shape::LeftRight : Shape::Full, kind);
    model.name = "g" + std::to_string(random.integer(0, 1000));
    switch (random.integer(0, 2)) {
        case 0: break;
        case 1: model.vocabValues = randomRow(random, M, kind); break;
        default: model.vocabValues = randomRow(random, random.integer(1, 15), kind); break;
    }
    return model;
}

TEST(LeftRightFileProperty, WritesTheBytesOfTheLiteralWriter) {
    const TemporaryFolder folder;
    for (std::uint64_t seed = 1; seed <= 1000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const std::string path = folder.path(std::to_string(seed));
        Reference::LeftRightModel reference = randomFileModel(random, allParameterKinds[seed % 5]);
        if (random.chance(0.3)) {
            reference.D = random.integer(2, 3);
            reference.vocab =
                randomTable(random, reference.M, reference.D, Parameters::Unnormalised);
        }
        LeftRightHMM model = libraryModel(reference);
        model.write(path.c_str());
        ASSERT_EQ(withoutNanSigns(readFile(path)), withoutNanSigns(Reference::fileText(reference)));
    }
}

TEST(LeftRightFileProperty, ReadsWhatTheLiteralReaderReads) {
    const TemporaryFolder folder;
    for (std::uint64_t seed = 1; seed <= 1000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const std::string path = folder.path(std::to_string(seed));
        const std::string text =
            Reference::fileText(randomFileModel(random, allParameterKinds[seed % 5]));
        writeFile(path, text);
        const std::unique_ptr<LeftRightHMM> model(loadLR(path.c_str()));
        ASSERT_TRUE(sameModel(Reference::parseLeftRight(text), *model)) << text;
    }
}

TEST(LeftRightFileProperty, WritingWhatWasReadGivesTheSameBytes) {
    const TemporaryFolder folder;
    for (std::uint64_t seed = 1; seed <= 500; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const std::string path = folder.path(std::to_string(seed));
        Reference::LeftRightModel reference = randomFileModel(random, Parameters::Unnormalised);
        reference.vocabValues = randomRow(random, reference.M, Parameters::Unnormalised);
        const std::string text = Reference::fileText(reference);
        writeFile(path, text);
        const std::unique_ptr<LeftRightHMM> model(loadLR(path.c_str()));
        ASSERT_TRUE(model->save(path + "-again"));
        ASSERT_EQ(readFile(path + "-again"), text);
    }
}

TEST(LeftRightFileProperty, AnyTextLoadsAsTheLiteralReaderLoadsIt) {
    const TemporaryFolder folder;
    const std::vector<std::string> words = {
        "0",   "1",    "2",     "3",  "-1", "0.5", "1e-3", "1e999", "-1e999", "0x1F", "inf",
        "nan", "word", "1.5.2", "+4", "-0", "1e5", "7",    "0.25",  "1",      "2",    "3",
        "1",   "2",    "1,5",   ".5", "5.", "1e",  "-",    "00",    "1e-400", "4"};
    const std::vector<std::string> gaps = {" ", "\n", "\t", "  ", "\r\n", "\n\n"};
    for (std::uint64_t seed = 1; seed <= 3000; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        Random random(seed);
        const std::string path = folder.path(std::to_string(seed));
        const auto pick = [&random](const std::vector<std::string>& from) {
            return from[static_cast<std::size_t>(
                random.integer(0, static_cast<int>(from.size()) - 1))];
        };
        std::string text = random.chance(0.9) ? "g " : "";
        if (random.chance(0.8)) {
            for (int n = 0; n < 4; ++n) text += std::to_string(random.integer(-1, 4)) + " ";
        }
        const int count = random.integer(0, 40);
        const double odd = random.chance(0.5) ? 0.05 : 0.5;
        for (int n = 0; n < count; ++n) {
            text += random.chance(odd) ? pick(words) : std::to_string(random.integer(0, 9));
            text += pick(gaps);
        }
        writeFile(path, text);
        const std::unique_ptr<LeftRightHMM> model(loadLR(path.c_str()));
        ASSERT_TRUE(sameModel(Reference::parseLeftRight(text), *model)) << text;
    }
}

}  // namespace
