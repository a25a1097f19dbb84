#include <support/Capture.h>
#include <support/Files.h>
#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// The library's texts against plainly composed and plainly read ones.

namespace {

using Vesk::ML::HMM;
using Vesk::Test::modelOf;
using Vesk::Test::modelsEqual;
using Vesk::Test::Parameters;
using Vesk::Test::Random;
using Vesk::Test::randomKind;
using Vesk::Test::randomModel;
using Vesk::Test::randomTable;
namespace Reference = Vesk::Test::Reference;

Reference::Model namedModel(Random& random, Parameters kind) {
    const int M = random.integer(1, 20);
    Reference::Model model = randomModel(random, random.integer(1, 12), M, kind);
    model.name = "gesture" + std::to_string(random.integer(0, 999));
    model.D = random.integer(1, 3);
    model.vocab = randomTable(random, M, model.D, kind);
    return model;
}

TEST(HmmTextFileProperty, FilesAreThePlainOnes) {
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    for (std::uint64_t seed = 1; seed <= 700; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const Reference::Model plain = namedModel(random, randomKind(random));
        HMM model = modelOf(plain);
        model.write(path.c_str());
        const std::string text = Vesk::Test::readFile(path);
        ASSERT_EQ(text, Reference::fileText(plain));
        ASSERT_TRUE(model.save(path));
        ASSERT_EQ(Vesk::Test::readFile(path), text);
    }
}

TEST(HmmTextFileProperty, DumpsAreThePlainOnes) {
    for (std::uint64_t seed = 10001; seed <= 12000; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const Reference::Model plain = namedModel(random, randomKind(random));
        HMM model = modelOf(plain);
        std::string text;
        {
            const Vesk::Test::Capture capture;
            model.print();
            text = capture.text();
        }
        ASSERT_EQ(text, Reference::dumpText(plain));
    }
}

TEST(HmmTextFileProperty, WrittenModelsAreReadBackToSixDigits) {
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    const Parameters finite[] = {Parameters::Stochastic, Parameters::Sparse,
                                 Parameters::Unnormalised};
    for (std::uint64_t seed = 20001; seed <= 20500; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const Reference::Model plain = namedModel(random, finite[random.integer(0, 2)]);
        HMM model = modelOf(plain);
        model.write(path.c_str());
        const std::unique_ptr<HMM> back(Vesk::ML::load(path.c_str()));
        ASSERT_NE(back, nullptr);
        ASSERT_TRUE(modelsEqual(Reference::parse(Reference::fileText(plain)), *back));
        ASSERT_EQ(back->name, plain.name);
        for (std::size_t i = 0; i < plain.pi.size(); ++i) {
            ASSERT_NEAR(back->pi[i], plain.pi[i], 5e-6 * plain.pi[i]);
        }
        for (std::size_t i = 0; i < model.b.data.size(); ++i) {
            ASSERT_NEAR(back->b.data[i], model.b.data[i], 5e-6 * model.b.data[i]);
        }
        // Six digits once, six digits ever after.
        HMM again = *back;
        again.write(path.c_str());
        const std::unique_ptr<HMM> twice(Vesk::ML::load(path.c_str()));
        ASSERT_NE(twice, nullptr);
        if (plain.D == 1) {
            ASSERT_TRUE(modelsEqual(*back, *twice));
        }
    }
}

TEST(HmmTextFileProperty, TokensOfAllKindsAreReadAsPlainly) {
    const std::vector<std::string> tokens = {
        "0",     "1",     "2",    "3",    "0.5",  "-1",     "-5",     "1e999", "-1e999",
        "0x1F",  "inf",   "-inf", "nan",  "word", "1e-5",   ".5",     "5.",    "1.5.5",
        "+2",    "--1",   "1e",   "1,5",  "2abc", "4e-324", "1E2",    "007",   "1e+",
        "\"2\"", "1 2 3", "",     "\n\n", "\r",   "\t",     "1e-999", "2e308"};
    const std::vector<std::string> sizes = {"1", "2", "3", "2.5", "-0", "00", "0", "+2", "x", "4,"};
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    for (std::uint64_t seed = 30001; seed <= 31500; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        const auto any = [&random](const std::vector<std::string>& from) {
            return from[static_cast<std::size_t>(
                random.integer(0, static_cast<int>(from.size()) - 1))];
        };
        std::string text = random.chance(0.9) ? "name" : "";
        for (int i = 0; i < 3; ++i) {
            text += random.chance(0.5) ? " " : "\n";
            text += random.chance(0.8) ? std::to_string(random.integer(1, 4)) : any(sizes);
        }
        const double oddity = random.chance(0.5) ? 0.02 : 0.2;
        const int count = random.integer(0, 50);
        for (int i = 0; i < count; ++i) {
            text += random.chance(0.8) ? " " : "\n";
            text += random.chance(oddity) ? any(tokens) : std::to_string(random.unit());
        }
        Vesk::Test::writeFile(path, text);
        const std::unique_ptr<HMM> model(Vesk::ML::load(path.c_str()));
        ASSERT_NE(model, nullptr);
        ASSERT_TRUE(modelsEqual(Reference::parse(text), *model)) << text;
        ASSERT_TRUE(model->vocabValues.empty());
    }
}

TEST(HmmTextFileProperty, BytesOfAnyKindAreReadAsPlainly) {
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    const std::string likely = "0123456789 \n.-+e";
    for (std::uint64_t seed = 40001; seed <= 41000; ++seed) {
        SCOPED_TRACE(seed);
        Random random(seed);
        // A sound beginning keeps the sizes small.
        std::string text = "n " + std::to_string(random.integer(1, 3)) + " " +
                           std::to_string(random.integer(1, 3)) + " " +
                           std::to_string(random.integer(1, 2)) + "\n";
        const int length = random.integer(0, 120);
        for (int i = 0; i < length; ++i) {
            text += random.chance(0.97) ? likely[static_cast<std::size_t>(random.integer(0, 15))]
                                        : static_cast<char>(random.integer(-128, 127));
        }
        Vesk::Test::writeFile(path, text);
        const std::unique_ptr<HMM> model(Vesk::ML::load(path.c_str()));
        ASSERT_NE(model, nullptr);
        ASSERT_TRUE(modelsEqual(Reference::parse(text), *model)) << text;
    }
}

}  // namespace
