#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <new>
#include <utility>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::Test::bitEqual;

TEST(LeftRightScaledPasses, TheLogLikelihoodOfNoSymbolsLooksAtNoGivenParameter) {
    LeftRightHMM model(1, 1, 0);
    std::vector<double> scale = {7.0};
    EXPECT_TRUE(bitEqual(0.0, model.forwardProbabilityWithScaleHMM({}, 0, scale, -1, {}, {}, {})));
    EXPECT_TRUE(bitEqual(std::vector<double>{7.0}, scale));
}

/// Three states that keep to themselves, for two symbols: the candidate's emissions are 1, and its
/// likelihood is, like the present one, the sum of pi.
LeftRightHMM withInitial(std::vector<double> pi) {
    LeftRightHMM model(3, 2, 0);
    model.pi = std::move(pi);
    for (int i = 0; i < 3; ++i) {
        model.a(i, i) = 1.0;
        model.b(i, 0) = 2.0;
        model.b(i, 1) = 0.5;
    }
    return model;
}

TEST(LeftRightBaumWelch, AddsThePresentLikelihoodInTheOrderOfTheStates) {
    // In order the quarters add up and the tie goes to 1; the other way each is rounded away.
    const std::vector<double> pi = {0x1p-55, 0x1p-55, 1.0 - 0x1p-53};
    LeftRightHMM model = withInitial(pi);
    model.baumWelch({0, 1}, 2, 1);
    EXPECT_TRUE(bitEqual(withInitial(pi).b, model.b));
    // A little less than the candidate's, and it is adopted.
    LeftRightHMM adopting = withInitial(pi);
    for (int i = 0; i < 3; ++i) adopting.b(i, 0) = 1.9375;
    adopting.baumWelch({0, 1}, 2, 1);
    EXPECT_TRUE(bitEqual(std::vector<double>(6, 1.0), adopting.b.data));
}

TEST(LeftRightEqualSegments, SymbolsPastTheLastStatesSegmentAreLost) {
    // Single precision rounds the length down by three, which one state can't take up: its segment
    // ends after 2^26 + 1 symbols, and the other two belong to no state.
    std::vector<std::vector<int>> sequences(1);
    sequences[0].resize((1U << 26) + 3U);
    sequences[0][1U << 26] = 1;
    sequences[0][(1U << 26) + 1U] = 2;
    LeftRightHMM model(1, 3, 0);
    model.estimate(HMM::EqualSegments, sequences);
    EXPECT_TRUE(bitEqual(std::vector<double>{67108864.0 / 67108865.0, 1.0 / 67108865.0, 0.0},
                         model.b.data));
}

TEST(LeftRightMultipleTraining, AnAlphabetBeyond31BitsIsBadAlloc) {
    LeftRightHMM model(1, 2, 1);
    for (const unsigned int M : {4294967295U, 2147483648U}) {
        model.vocabSize = M;
        EXPECT_THROW(model.trainMultiple({}, 1), std::bad_alloc);
    }
}

}  // namespace
