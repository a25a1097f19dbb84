#include <support/QuantizerReference.h>
#include <support/QuantizerTraces.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

namespace {

using namespace Vesk::Test;
using Reference::Trace;
using Vesk::ML::VectorQuantizer2D;

class QuantizerClassificationPropertyTest
    : public testing::TestWithParam<std::tuple<Traces, Centres>> {};

TEST_P(QuantizerClassificationPropertyTest, SymbolsAreTheReferences) {
    const auto [traceKind, centreKind] = GetParam();
    for (std::uint64_t seed = 0; seed < 400; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Reference::Quantizer reference;
        if (centreKind == Centres::Even && random.chance(0.5)) {
            Reference::initializeCodebook(reference, random.integer(0, 33));
            if (random.chance(0.2)) Reference::initializeCodebook(reference, random.integer(0, 8));
        } else {
            Reference::setCodebook(reference,
                                   randomCentres(random, random.integer(0, 20), centreKind));
        }
        // The stated size is the host's to change.
        if (random.chance(0.1)) reference.codebookSize = random.integer(-1, 40);
        Trace trace = randomTrace(random, random.integer(0, 30), traceKind);
        const float threshold = randomThreshold(random, traceKind);
        const bool rotation = random.chance(0.5);
        VectorQuantizer2D quantizer = libraryQuantizer(reference);

        const Outcome expected =
            outcomeOf([&] { return Reference::classify(reference, trace, threshold, rotation); });
        ASSERT_EQ(expected,
                  outcomeOf([&] { return quantizer.classify(trace, threshold, rotation); }));
        const VectorQuantizer2D& constant = quantizer;
        ASSERT_EQ(expected,
                  outcomeOf([&] { return constant.quantize(trace, threshold, rotation); }));
        ASSERT_EQ(
            outcomeOf([&] { return Reference::classifyAndFilter(reference, trace, threshold); }),
            outcomeOf([&] { return quantizer.classifyAndFilter(trace, threshold); }));
    }
}

INSTANTIATE_TEST_SUITE_P(AllKinds, QuantizerClassificationPropertyTest,
                         testing::Combine(testing::ValuesIn(allTraceKinds),
                                          testing::ValuesIn(allCentreKinds)));

TEST(QuantizerClassificationIdentityTest, RandomRunsCoverEveryOutcome) {
    // What the random traces above are worth: all kinds of results are among them.
    bool empty = false;
    bool symbols = false;
    bool outOfRange = false;
    bool noCodebook = false;
    for (std::uint64_t seed = 0; seed < 400; ++seed) {
        Random random(seed);
        Reference::Quantizer reference;
        Reference::setCodebook(reference,
                               randomCentres(random, random.integer(0, 3), Centres::Odd));
        if (random.chance(0.1)) reference.codebookSize = 3;
        const Trace trace = randomTrace(random, random.integer(0, 30), Traces::Ragged);
        const float threshold = randomThreshold(random, Traces::Ragged);
        const Outcome outcome =
            outcomeOf([&] { return Reference::classify(reference, trace, threshold, true); });
        empty |= outcome.failure.empty() && outcome.symbols.empty();
        symbols |= outcome.symbols.size() > 5;
        outOfRange |= outcome.failure == "std::out_of_range vector::_M_range_check";
        noCodebook |= outcome.failure == "std::invalid_argument";
    }
    EXPECT_TRUE(empty);
    EXPECT_TRUE(symbols);
    EXPECT_TRUE(outOfRange);
    EXPECT_TRUE(noCodebook);
}

TEST(QuantizerClassificationIdentityTest, RelabellingTheCodebookRelabelsTheSymbols) {
    for (std::uint64_t seed = 0; seed < 2000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const int size = random.integer(1, 24);
        const std::vector<double> codebook = randomCentres(random, size, Centres::Scattered);
        std::vector<int> newLabel;
        for (int i = 0; i < size; ++i) newLabel.push_back(i);
        for (int i = size - 1; i > 0; --i) {
            std::swap(newLabel[static_cast<std::size_t>(i)],
                      newLabel[static_cast<std::size_t>(random.integer(0, i))]);
        }
        std::vector<double> relabelled(codebook.size());
        for (std::size_t i = 0; i < codebook.size(); ++i) {
            relabelled[static_cast<std::size_t>(newLabel[i])] = codebook[i];
        }
        const Trace trace = randomTrace(random, 30, Traces::Smooth);
        VectorQuantizer2D quantizer;
        quantizer.setCodebook(codebook);
        std::vector<int> expected = quantizer.quantize(trace, 0.5f, false);
        for (int& symbol : expected) symbol = newLabel[static_cast<std::size_t>(symbol)];
        quantizer.setCodebook(relabelled);
        ASSERT_EQ(expected, quantizer.quantize(trace, 0.5f, false));
    }
}

TEST(QuantizerClassificationIdentityTest, NoSymbolHasACloserEntry) {
    for (std::uint64_t seed = 0; seed < 1000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const std::vector<double> codebook =
            randomCentres(random, random.integer(1, 40), Centres::Scattered);
        Trace trace = randomTrace(random, 40, Traces::Smooth);
        VectorQuantizer2D quantizer;
        quantizer.setCodebook(codebook);
        // Without repeats and with threshold 0 every step is classified.
        trace.erase(std::unique(trace.begin(), trace.end()), trace.end());
        const std::vector<double> angles = quantizer.convertSequence(trace);
        const std::vector<int> symbols = quantizer.classify(trace, 0.0f, false);
        if (trace.size() < 2) continue;
        ASSERT_EQ(angles.size(), symbols.size());
        for (std::size_t i = 0; i < angles.size(); ++i) {
            const auto symbol = static_cast<std::size_t>(symbols[i]);
            ASSERT_LT(symbol, codebook.size());
            for (const double entry : codebook) {
                ASSERT_LE(Reference::circularDistance(angles[i], codebook[symbol]),
                          Reference::circularDistance(angles[i], entry));
            }
        }
    }
}

}  // namespace
