#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/QuantizerReference.h>
#include <support/QuantizerTraces.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <list>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Test;
using Reference::Trace;
using Vesk::ML::CodebookTrainingEvent;
using Vesk::ML::VectorQuantizer2D;

/// Directions that tie exactly could go either way after a rounding of the learnt centres, so the
/// angles are irregular; NaN and infinite positions are strewn in.
Trace trainingTrace(Random& random) {
    Trace trace =
        randomTrace(random, random.integer(random.chance(0.03) ? 0 : 2, 25), Traces::Smooth);
    for (Reference::Position& position : trace) {
        if (random.chance(0.01)) position[0] = std::numeric_limits<double>::quiet_NaN();
        if (random.chance(0.01)) position[1] = std::numeric_limits<double>::infinity();
        if (random.chance(0.005)) position.push_back(1.0);
    }
    return trace;
}

Reference::Quantizer trainingQuantizer(Random& random) {
    Reference::Quantizer quantizer;
    switch (random.integer(0, 3)) {
        case 0: Reference::initializeCodebook(quantizer, random.integer(1, 16)); break;
        case 1:
            Reference::setCodebook(
                quantizer, randomCentres(random, random.integer(0, 12), Centres::Scattered));
            break;
        case 2: quantizer.codebookSize = random.integer(-1, 12); break;
        default:
            Reference::setCodebook(quantizer,
                                   randomCentres(random, random.integer(1, 12), Centres::Wound));
    }
    return quantizer;
}

TEST(QuantizerTrainingPropertyTest, CodebookOutputAndFailuresAreTheReferences) {
    int failures = 0;
    for (std::uint64_t seed = 0; seed < 3000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Reference::Quantizer reference = trainingQuantizer(random);
        std::list<Trace> traces;
        for (int n = random.integer(0, 6); n > 0; --n) traces.push_back(trainingTrace(random));
        const std::list<Trace> before = traces;
        const float threshold = static_cast<float>(random.unit() * 2.0);
        VectorQuantizer2D trained = libraryQuantizer(reference);
        VectorQuantizer2D learnt = trained;

        std::ostringstream expectedText;
        const Outcome expected = outcomeOf([&] {
            Reference::trainCodebook(reference, traces, threshold, expectedText);
            return std::vector<int>();
        });
        Capture capture;
        std::vector<double> returned;
        const Outcome actual = outcomeOf([&] {
            returned = trained.trainCodebook(traces, threshold);
            return std::vector<int>();
        });
        const std::string actualText = capture.text();

        ASSERT_EQ(expected, actual);
        ASSERT_EQ(expectedText.str(), actualText);
        ASSERT_TRUE(sameDirections(reference.codebook, trained.codebook));
        ASSERT_EQ(reference.codebookReady, trained.codebookReady);
        ASSERT_EQ(reference.codebookSize, trained.codebookSize);
        if (expected.failure.empty()) {
            ASSERT_TRUE(bitEqual(trained.codebook, returned));
        } else {
            ++failures;
        }

        std::string told;
        const Outcome silent = outcomeOf([&] {
            learnt.learnCodebook(
                traces, threshold, [&told](CodebookTrainingEvent event, std::size_t count) {
                    switch (event) {
                        case CodebookTrainingEvent::AfterEqFilter:
                            told += std::to_string(count) + " positions after eq filter\n";
                            break;
                        case CodebookTrainingEvent::AfterProxFilter:
                            told += std::to_string(count) + " positions after prox filter\n";
                            break;
                        case CodebookTrainingEvent::EndOfTrace: told += "\n"; break;
                    }
                });
            return std::vector<int>();
        });
        ASSERT_EQ(actual, silent);
        ASSERT_EQ(actualText, told);
        ASSERT_EQ(actualText, capture.text());
        ASSERT_TRUE(bitEqual(trained.codebook, learnt.codebook));
    }
    EXPECT_GT(failures, 50);
    EXPECT_LT(failures, 2500);
}

TEST(QuantizerTrainingPropertyTest, CountsOfAllKindsOfTracesAreTheReferences) {
    for (const Traces kind : allTraceKinds) {
        for (std::uint64_t seed = 0; seed < 500; ++seed) {
            SCOPED_TRACE("kind " + std::to_string(static_cast<int>(kind)) + ", seed " +
                         std::to_string(seed));
            Random random(seed);
            Reference::Quantizer reference;
            Reference::initializeCodebook(reference, random.integer(1, 8));
            std::list<Trace> traces;
            for (int n = random.integer(1, 4); n > 0; --n) {
                traces.push_back(randomTrace(random, random.integer(1, 25), kind));
            }
            const float threshold = randomThreshold(random, kind);
            VectorQuantizer2D quantizer = libraryQuantizer(reference);
            std::ostringstream expectedText;
            const Outcome expected = outcomeOf([&] {
                Reference::trainCodebook(reference, traces, threshold, expectedText);
                return std::vector<int>();
            });
            Capture capture;
            const Outcome actual = outcomeOf([&] {
                quantizer.trainCodebook(traces, threshold);
                return std::vector<int>();
            });
            ASSERT_EQ(expected, actual);
            ASSERT_EQ(expectedText.str(), capture.text());
        }
    }
}

TEST(QuantizerTrainingPropertyTest, OrderOfTheTracesDoesNotMatterBeyondRounding) {
    for (std::uint64_t seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        VectorQuantizer2D forwards;
        forwards.initializeCodebook(random.integer(1, 12));
        VectorQuantizer2D backwards = forwards;
        std::list<Trace> traces;
        for (int n = 0; n < 5; ++n) {
            traces.push_back(randomTrace(random, 20, Traces::Smooth));
            traces.back().push_back({100.0, 100.0 + n});
        }
        const std::vector<double> expected = forwards.learnCodebook(traces, 0.1f);
        traces.reverse();
        ASSERT_TRUE(sameDirections(expected, backwards.learnCodebook(traces, 0.1f)));
    }
}

}  // namespace
