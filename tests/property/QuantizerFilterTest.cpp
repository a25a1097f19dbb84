#include <support/BitEqual.h>
#include <support/QuantizerReference.h>
#include <support/QuantizerTraces.h>

#include <vesk/quantizer/ProximityFilter.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Test;
using Reference::Trace;
using Vesk::ML::ProximityFilter;

testing::AssertionResult bitEqualTraces(const Trace& expected, const Trace& actual) {
    if (expected.size() != actual.size()) {
        return testing::AssertionFailure()
               << "expected " << expected.size() << " positions, got " << actual.size();
    }
    for (std::size_t p = 0; p < expected.size(); ++p) {
        const testing::AssertionResult same = bitEqual(expected[p], actual[p]);
        if (!same) {
            return testing::AssertionFailure() << "position " << p << ": " << same.message();
        }
    }
    return testing::AssertionSuccess();
}

class QuantizerFilterPropertyTest : public testing::TestWithParam<Traces> {};

TEST_P(QuantizerFilterPropertyTest, ProximityFilterKeepsWhatTheReferenceKeeps) {
    for (std::uint64_t seed = 0; seed < 5000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Trace in = randomTrace(random, random.integer(0, 40), GetParam());
        const double threshold = static_cast<double>(randomThreshold(random, GetParam()));
        // Something is there already in one of four.
        const Trace start = random.chance(0.25) ? Trace{{1, 2, 3}, {4}} : Trace{};
        Trace expected = start;
        std::string expectedFailure;
        try {
            Reference::proximityFilter(in, expected, threshold);
        } catch (const std::out_of_range& failure) {
            expectedFailure = failure.what();
        }
        Trace actual = start;
        std::string actualFailure;
        try {
            ProximityFilter<double>::run(in, actual, threshold);
        } catch (const std::out_of_range& failure) {
            actualFailure = failure.what();
        }
        ASSERT_EQ(expectedFailure, actualFailure);
        if (!expectedFailure.empty()) continue;
        ASSERT_TRUE(bitEqualTraces(expected, actual));
    }
}

TEST_P(QuantizerFilterPropertyTest, PositionsOfAnyNumberOfCoordinatesAreFiltered) {
    for (std::uint64_t seed = 0; seed < 2000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const int dimensions = random.integer(0, 9);
        Trace in;
        for (int p = random.integer(2, 20); p > 0; --p) {
            Reference::Position position;
            for (int k = 0; k < dimensions; ++k) {
                position.push_back(randomCoordinate(random, GetParam()));
            }
            in.push_back(position);
        }
        const double threshold = static_cast<double>(randomThreshold(random, GetParam()));
        Trace expected;
        Reference::proximityFilter(in, expected, threshold);
        Trace actual;
        ProximityFilter<double>::run(in, actual, threshold);
        ASSERT_TRUE(bitEqualTraces(expected, actual));
    }
}

INSTANTIATE_TEST_SUITE_P(AllKinds, QuantizerFilterPropertyTest, testing::ValuesIn(allTraceKinds));

TEST(QuantizerFilterIdentityTest, FilteringTwiceIsFilteringOnce) {
    for (std::uint64_t seed = 0; seed < 2000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Trace in = randomTrace(random, random.integer(2, 40), Traces::Smooth);
        const double threshold = random.unit() * 2.0;
        Trace once;
        ProximityFilter<double>::run(in, once, threshold);
        if (once.size() < 2) continue;
        Trace twice;
        ProximityFilter<double>::run(once, twice, threshold);
        ASSERT_TRUE(bitEqualTraces(once, twice));
    }
}

TEST(QuantizerFilterIdentityTest, NeighboursAreAtLeastTheThresholdApart) {
    for (std::uint64_t seed = 0; seed < 2000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Trace in = randomTrace(random, random.integer(2, 40), Traces::Smooth);
        const double threshold = random.unit() * 2.0;
        Trace out;
        ProximityFilter<double>::run(in, out, threshold);
        ASSERT_GE(out.size(), 1u);
        ASSERT_TRUE(bitEqual(in[0], out[0]));
        for (std::size_t p = 1; p < out.size(); ++p) {
            const double dx = out[p][0] - out[p - 1][0];
            const double dy = out[p][1] - out[p - 1][1];
            ASSERT_GE(std::hypot(dx, dy), threshold * (1.0 - 1e-12));
        }
    }
}

}  // namespace
