#include <support/BitEqual.h>
#include <support/QuantizerReference.h>
#include <support/QuantizerTraces.h>

#include <vesk/quantizer/VectorQuantizer2D.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Test;
using Reference::Trace;
using Vesk::ML::VectorQuantizer2D;

class QuantizerDirectionPropertyTest : public testing::TestWithParam<Traces> {};

TEST_P(QuantizerDirectionPropertyTest, ConversionIsTheReferencesBitForBit) {
    VectorQuantizer2D quantizer;
    for (std::uint64_t seed = 0; seed < 5000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Trace trace = randomTrace(random, random.integer(0, 40), GetParam());
        ASSERT_TRUE(bitEqual(Reference::convertSequence(trace), quantizer.convertSequence(trace)));
    }
}

INSTANTIATE_TEST_SUITE_P(AllKinds, QuantizerDirectionPropertyTest,
                         testing::ValuesIn(allTraceKinds));

TEST(QuantizerDirectionIdentityTest, DirectionsAgreeWithTheTwoArgumentArctangent) {
    VectorQuantizer2D quantizer;
    for (std::uint64_t seed = 0; seed < 5000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        Trace trace = randomTrace(random, 20, Traces::Smooth);
        const std::vector<double> angles = quantizer.convertSequence(trace);
        ASSERT_EQ(angles.size(), 19u);
        for (std::size_t i = 0; i < angles.size(); ++i) {
            const double dx = trace[i + 1][0] - trace[i][0];
            const double dy = trace[i + 1][1] - trace[i][1];
            if (dx == 0.0 && dy == 0.0) {
                ASSERT_EQ(angles[i], 270.0);
                continue;
            }
            const double expected = std::atan2(dy, dx) * 180.0 / 3.141592653589793;
            ASSERT_GE(angles[i], 0.0);
            ASSERT_LE(angles[i], 360.0);
            ASSERT_LE(Reference::circularDistance(expected, angles[i]), 1e-11);
        }
    }
}

TEST(QuantizerDirectionIdentityTest, RadiansAreMultipliedByTheConstant) {
    VectorQuantizer2D quantizer;
    Random random(1);
    for (int i = 0; i < 100000; ++i) {
        const double rad = (random.unit() - 0.5) * 20.0;
        ASSERT_TRUE(bitEqual(Reference::radToDeg(rad), quantizer.radToDeg(rad)));
    }
}

}  // namespace
