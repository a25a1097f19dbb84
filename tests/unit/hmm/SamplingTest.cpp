#include <support/Capture.h>
#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <deque>
#include <limits>
#include <new>
#include <vector>

// This program has a generator of its own in the place of the C library's: it gives the numbers
// that a test has put down and notes the seeds.

namespace {

std::deque<int> prepared;
int draws = 0;
std::vector<unsigned int> seeds;

}  // namespace

extern "C" int rand() noexcept {
    ++draws;
    if (prepared.empty()) return 0;
    const int next = prepared.front();
    prepared.pop_front();
    return next;
}

extern "C" void srand(unsigned int seed) noexcept { seeds.push_back(seed); }

namespace {

using Vesk::Math::VectorT;
using Vesk::ML::HMM;
using Vesk::Test::bitEqual;
using Vesk::Test::matrixOf;
using Vesk::Test::modelsEqual;

constexpr int largest = 2147483647;
constexpr int half = 1 << 30;     // 0.5
constexpr int quarter = 1 << 29;  // 0.25
constexpr int eighth = 1 << 28;   // 0.125

void prepare(std::deque<int> numbers) {
    prepared = std::move(numbers);
    draws = 0;
    seeds.clear();
}

/// The sequence that the numbers make; every one of them must be used and no more.
VectorT<int> sampled(HMM model, int length, std::deque<int> numbers) {
    const int expected = static_cast<int>(numbers.size());
    prepare(std::move(numbers));
    model.needsSeed = false;
    const VectorT<int> result = model.genSeq(length);
    EXPECT_EQ(draws, expected);
    EXPECT_EQ(result.size(), static_cast<std::size_t>(length));
    return result;
}

/// State i shows symbol i for certain, so a sequence shows its path.
HMM showing(int N) {
    HMM model(N, N);
    for (int i = 0; i < N; ++i) model.b(i, i) = 1.0;
    return model;
}

TEST(HmmRandom, MapsTheGeneratorsNumbersToBelowMax) {
    HMM model(1, 1);
    model.needsSeed = false;
    prepare({0, 1, half, largest, half, largest, 3});
    EXPECT_TRUE(bitEqual(0.0, model.randD(1.0)));
    EXPECT_TRUE(bitEqual(0x1p-31, model.randD(1.0)));
    EXPECT_TRUE(bitEqual(0.5, model.randD(1.0)));
    const double highest = model.randD(1.0);
    EXPECT_TRUE(bitEqual(1.0 - 0x1p-31, highest));
    EXPECT_LT(highest, 1.0);
    EXPECT_TRUE(bitEqual(5.0, model.randD(10.0)));
    EXPECT_LT(model.randD(10.0), 10.0);
    EXPECT_TRUE(bitEqual(-3.0 * 0x1p-31, model.randD(-1.0)));
    EXPECT_EQ(draws, 7);
}

TEST(HmmRandom, MultipliesByMaxLast) {
    HMM model(1, 1);
    model.needsSeed = false;
    const double max = 0x1.fffffffffffffp+1023;
    prepare({largest, half, 7});
    // The number is scaled down before it meets max: no overflow.
    EXPECT_TRUE(bitEqual((1.0 - 0x1p-31) * max, model.randD(max)));
    EXPECT_TRUE(bitEqual(0.5 * 0.1, model.randD(0.1)));
    EXPECT_TRUE(bitEqual(std::numeric_limits<double>::infinity(),
                         model.randD(std::numeric_limits<double>::infinity())));
}

TEST(HmmRandom, FirstDrawOfAModelSeedsWithTheTime) {
    HMM model(1, 1);
    prepare({half});
    const auto before = static_cast<unsigned int>(std::time(nullptr));
    EXPECT_TRUE(bitEqual(0.5, model.randD(1.0)));
    const auto after = static_cast<unsigned int>(std::time(nullptr));
    ASSERT_EQ(seeds.size(), 1U);
    EXPECT_GE(seeds[0], before);
    EXPECT_LE(seeds[0], after);
    EXPECT_FALSE(model.needsSeed);
}

TEST(HmmRandom, OnlyTheFirstDrawOfAModelSeeds) {
    HMM model(2, 2);
    prepare({});
    model.randD(1.0);
    model.randD(2.0);
    model.genSeq(5);
    model.randD(1.0);
    EXPECT_EQ(seeds.size(), 1U);
    EXPECT_FALSE(model.needsSeed);
    EXPECT_EQ(draws, 14);
}

TEST(HmmRandom, EveryModelSeedsAtItsOwnFirstDraw) {
    HMM first(1, 1);
    HMM second(1, 1);
    prepare({});
    const auto before = static_cast<unsigned int>(std::time(nullptr));
    first.randD(1.0);
    second.randD(1.0);
    first.randD(1.0);
    second.randD(1.0);
    const auto after = static_cast<unsigned int>(std::time(nullptr));
    ASSERT_EQ(seeds.size(), 2U);
    for (unsigned int seed : seeds) {
        EXPECT_GE(seed, before);
        EXPECT_LE(seed, after);
    }
}

TEST(HmmRandom, ModelMadeToSeedAgainDoes) {
    HMM model(1, 1);
    prepare({});
    model.randD(1.0);
    model.needsSeed = true;
    model.randD(1.0);
    EXPECT_EQ(seeds.size(), 2U);
    EXPECT_FALSE(model.needsSeed);
}

TEST(HmmSampling, SeedsBeforeItsFirstDraw) {
    HMM model(2, 2);
    prepare({});
    model.genSeq(1);
    EXPECT_EQ(seeds.size(), 1U);
    EXPECT_EQ(draws, 3);
    EXPECT_FALSE(model.needsSeed);
}

TEST(HmmSampling, OneSymbolTakesThreeDraws) { sampled(showing(2), 1, {1, 1, 1}); }

TEST(HmmSampling, TakesTwoDrawsASymbolAndOneBefore) {
    for (int length = 1; length <= 20; ++length) {
        SCOPED_TRACE(length);
        sampled(showing(3), length, std::deque<int>(static_cast<std::size_t>(2 * length + 1), 5));
    }
}

TEST(HmmSampling, WorkedExample) {
    // Draws: the state, then symbol and transition by turns.
    HMM model(2, 3);
    model.pi = {0.25, 0.75};
    model.a = matrixOf({{0.5, 0.5}, {0.25, 0.75}});
    model.b = matrixOf({{0.5, 0.25, 0.25}, {0.125, 0.125, 0.75}});
    EXPECT_EQ(sampled(model, 3,
                      {half,                // 0.5 > 0.25: state 1
                       quarter, quarter,    // 0.25: symbol 1 (sum 0.25); 0.25: state 0
                       half + 1, half + 1,  // above 0.5: symbol 1; above 0.5: state 1
                       largest, 0}),        // symbol 2; state 0
              (VectorT<int>{1, 1, 2}));
}

TEST(HmmSampling, SumEqualToTheDrawIsEnough) {
    HMM model = showing(2);
    model.pi = {0.5, 0.5};
    EXPECT_EQ(sampled(model, 1, {half, 1, 1}), (VectorT<int>{0}));
    EXPECT_EQ(sampled(model, 1, {half + 1, 1, 1}), (VectorT<int>{1}));

    HMM symbols(1, 2);
    symbols.b = matrixOf({{0.5, 0.5}});
    EXPECT_EQ(sampled(symbols, 2, {0, half, 0, half + 1, 0}), (VectorT<int>{0, 1}));

    HMM steps = showing(2);
    steps.pi = {1.0, 0.0};
    steps.a = matrixOf({{0.5, 0.5}, {0.0, 1.0}});
    EXPECT_EQ(sampled(steps, 2, {1, 1, half, 1, 1}), (VectorT<int>{0, 0}));
    EXPECT_EQ(sampled(steps, 2, {1, 1, half + 1, 1, 1}), (VectorT<int>{0, 1}));
}

TEST(HmmSampling, InitialStateFallsBackToZero) {
    HMM model = showing(3);
    model.pi = {0.125, 0.125, 0.25};
    EXPECT_EQ(sampled(model, 1, {half, 1, 1}), (VectorT<int>{2}));
    EXPECT_EQ(sampled(model, 1, {half + 1, 1, 1}), (VectorT<int>{0}));
    EXPECT_EQ(sampled(model, 1, {largest, 1, 1}), (VectorT<int>{0}));
}

TEST(HmmSampling, AllZeroInitialProbabilitiesStartInStateZero) {
    for (int draw : {0, 1, half, largest}) {
        SCOPED_TRACE(draw);
        EXPECT_EQ(sampled(showing(3), 1, {draw, 1, 1}), (VectorT<int>{0}));
    }
}

TEST(HmmSampling, SingleStateNeedsNoInitialProbability) {
    HMM model(1, 2);
    model.b = matrixOf({{0.25, 0.75}});
    EXPECT_EQ(sampled(model, 2, {largest, quarter, largest, quarter + 1, largest}),
              (VectorT<int>{0, 1}));
}

TEST(HmmSampling, SymbolFallsBackToZero) {
    HMM model(1, 3);
    model.b = matrixOf({{0.125, 0.125, 0.25}});
    EXPECT_EQ(sampled(model, 3, {0, half, 0, half + 1, 0, largest, 0}), (VectorT<int>{2, 0, 0}));
}

TEST(HmmSampling, SingleSymbolIsAlwaysZero) {
    HMM model(2, 1);
    model.pi = {0.5, 0.5};
    EXPECT_EQ(sampled(model, 3, {largest, largest, 1, 1, half, 0, largest}),
              (VectorT<int>{0, 0, 0}));
}

TEST(HmmSampling, TransitionFallsBackToStaying) {
    HMM model = showing(3);
    model.pi = {0.0, 0.0, 1.0};
    model.a = matrixOf({{0, 0, 0}, {0, 0, 0}, {0.125, 0.125, 0}});
    // From state 2: above 0.25 it stays, up to 0.25 it goes to 1, and 1 has no way out.
    EXPECT_EQ(sampled(model, 5, {1, 1, half, 1, quarter + 1, 1, quarter, 1, half, 1, 1}),
              (VectorT<int>{2, 2, 2, 1, 1}));
}

TEST(HmmSampling, AllZeroTransitionsKeepThePathInStateZero) {
    HMM model = showing(3);
    EXPECT_EQ(sampled(model, 5, {half, 1, 1, 1, half, 1, largest, 1, 1, 1, 1}),
              (VectorT<int>{0, 0, 0, 0, 0}));
}

TEST(HmmSampling, DrawOfZeroChoosesTheFirstEvenWhereItIsImpossible) {
    HMM model = showing(2);
    model.pi = {0.0, 1.0};
    model.a = matrixOf({{0, 1}, {0, 1}});
    // The state: 0 although pi[0] is 0. Then, from state 1, the symbol and the state 0.
    EXPECT_EQ(sampled(model, 1, {0, 1, 1}), (VectorT<int>{0}));
    EXPECT_EQ(sampled(model, 2, {1, 0, 0, 1, 1}), (VectorT<int>{0, 0}));
    EXPECT_EQ(sampled(model, 2, {1, 1, 1, 1, 1}), (VectorT<int>{1, 1}));
}

TEST(HmmSampling, ImpossibleEntriesAreNotChosen) {
    HMM model = showing(4);
    model.pi = {0.25, 0.0, 0.0, 0.75};
    model.a = matrixOf({{0, 0, 0, 1}, {1, 0, 0, 0}, {1, 0, 0, 0}, {0, 0, 1, 0}});
    EXPECT_EQ(sampled(model, 3, {quarter + 1, 1, 1, 1, 1, 1, 1}), (VectorT<int>{3, 2, 0}));
}

TEST(HmmSampling, RowsBeyondOneAreCutAtTheDraw) {
    HMM model = showing(3);
    model.pi = {0.25, 5.0, 7.0};
    EXPECT_EQ(sampled(model, 1, {largest, 1, 1}), (VectorT<int>{1}));
}

TEST(HmmSampling, NegativeEntriesLowerTheSum) {
    // Sums 0.5, 0.125, 0.625: the draw 0.5 + 2^-31 lies above 0.125 and not above 0.625.
    HMM model = showing(3);
    model.pi = {0.5, -0.375, 0.5};
    EXPECT_EQ(sampled(model, 1, {half + 1, 1, 1}), (VectorT<int>{2}));
    // Sums 0.125, -0.25, 0.5.
    model.pi = {0.125, -0.375, 0.75};
    EXPECT_EQ(sampled(model, 1, {eighth + 1, 1, 1}), (VectorT<int>{2}));
    // Sums 0.25, NaN, NaN: nothing qualifies.
    model.pi = {0.25, std::numeric_limits<double>::quiet_NaN(), 0.75};
    EXPECT_EQ(sampled(model, 1, {half, 1, 1}), (VectorT<int>{0}));
}

TEST(HmmSampling, LengthZeroIsEmptyWithoutADraw) {
    HMM model = showing(2);
    prepare({half});
    EXPECT_TRUE(model.genSeq(0).empty());
    EXPECT_EQ(draws, 0);
    EXPECT_TRUE(seeds.empty());
    EXPECT_TRUE(model.needsSeed);
}

TEST(HmmSampling, NegativeLengthIsBadAlloc) {
    for (int length : {-1, -2, std::numeric_limits<int>::min()}) {
        SCOPED_TRACE(length);
        HMM model = showing(2);
        prepare({});
        EXPECT_THROW(model.genSeq(length), std::bad_alloc);
        EXPECT_EQ(draws, 0);
    }
}

TEST(HmmSampling, ChangesNothingButTheSeedMark) {
    HMM model = showing(3);
    model.name = "sampled";
    HMM expected = model;
    expected.needsSeed = false;
    prepare({});
    const Vesk::Test::Capture capture;
    model.genSeq(10);
    EXPECT_TRUE(modelsEqual(expected, model));
    EXPECT_EQ(capture.text(), "");
}

}  // namespace
