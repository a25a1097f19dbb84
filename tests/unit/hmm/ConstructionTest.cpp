#include <support/Capture.h>
#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <utility>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::Test::bitEqual;
using Vesk::Test::matrixOf;
using Vesk::Test::modelsEqual;

void expectZeros(const Vesk::Test::Matrix& matrix, int rows, int cols) {
    EXPECT_EQ(matrix.rows, rows);
    EXPECT_EQ(matrix.cols, cols);
    const std::vector<double> zeros(static_cast<std::size_t>(rows * cols), 0.0);
    EXPECT_TRUE(bitEqual(zeros, matrix.data));
}

void expectFresh(const HMM& model, unsigned int N, unsigned int M, int D) {
    EXPECT_EQ(model.name, "");
    EXPECT_EQ(model.numStates, N);
    EXPECT_EQ(model.vocabSize, M);
    EXPECT_EQ(model.dimension, D);
    const int states = static_cast<int>(N);
    const int symbols = static_cast<int>(M);
    expectZeros(model.vocab, symbols, D);
    EXPECT_TRUE(bitEqual(std::vector<double>(N, 0.0), model.pi));
    expectZeros(model.a, states, states);
    expectZeros(model.b, states, symbols);
    EXPECT_TRUE(model.vocabValues.empty());
    EXPECT_TRUE(model.needsSeed);
}

/// A model with something in every field.
HMM filled() {
    HMM model(2, 3, 2);
    model.name = "circle";
    model.vocab = matrixOf({{1, 2}, {3, 4}, {5, 6}});
    model.pi = {0.25, 0.75};
    model.a = matrixOf({{0.5, 0.5}, {0.125, 0.875}});
    model.b = matrixOf({{0.1, 0.2, 0.7}, {0.3, 0.3, 0.4}});
    model.vocabValues = {7, 8, 9};
    model.needsSeed = false;
    return model;
}

TEST(HmmConstruction, TwoArgumentsGiveDimensionOne) { expectFresh(HMM(3, 4), 3, 4, 1); }

TEST(HmmConstruction, ThirdArgumentIsTheDimension) { expectFresh(HMM(3, 4, 2), 3, 4, 2); }

TEST(HmmConstruction, RaisesSizesBelowOneToOne) {
    expectFresh(HMM(0, -5), 1, 1, 1);
    expectFresh(HMM(-1, 2), 1, 2, 1);
    expectFresh(HMM(2, 0), 2, 1, 1);
    expectFresh(HMM(std::numeric_limits<int>::min(), std::numeric_limits<int>::min(),
                    std::numeric_limits<int>::min()),
                1, 1, 1);
}

TEST(HmmConstruction, RaisesDimensionBelowOneToOne) {
    expectFresh(HMM(3, 4, 0), 3, 4, 1);
    expectFresh(HMM(3, 4, -1), 3, 4, 1);
    expectFresh(HMM(-3, -4, 5), 1, 1, 5);
}

TEST(HmmConstruction, SizesOfOneStay) { expectFresh(HMM(1, 1, 1), 1, 1, 1); }

TEST(HmmConstruction, PrintsNothing) {
    const Vesk::Test::Capture capture;
    const HMM model(0, 0, 0);
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(model.numStates, 1U);
}

TEST(HmmConstruction, ShapesWithANegative32BitProductAreBadAlloc) {
    // 46341^2 = 2^31 + 4633.
    EXPECT_THROW(HMM(46341, 1), std::bad_alloc);
    EXPECT_THROW(HMM(46341, 1, 1), std::bad_alloc);
    // b: 1024 * 2097152 = 2^31.
    EXPECT_THROW(HMM(1024, 2097152), std::bad_alloc);
    // vocab: 46341 x 46341.
    EXPECT_THROW(HMM(1, 46341, 46341), std::bad_alloc);
}

TEST(HmmConstruction, ShapesWhose32BitProductWrapsToZeroGetNoElements) {
    // a: 65536^2 = 2^32.
    const HMM model(65536, 1);
    EXPECT_EQ(model.pi.size(), 65536U);
    EXPECT_EQ(model.a.rows, 65536);
    EXPECT_EQ(model.a.cols, 65536);
    EXPECT_TRUE(model.a.data.empty());
    EXPECT_EQ(model.b.data.size(), 65536U);
}

TEST(HmmConstruction, CopiesShareNothing) {
    const HMM original = filled();
    HMM copy(original);
    EXPECT_TRUE(modelsEqual(original, copy));
    copy.name = "other";
    copy.pi[0] = 1.0;
    copy.a(0, 0) = 1.0;
    copy.b(0, 0) = 1.0;
    copy.vocab(0, 0) = 9.0;
    copy.vocabValues.clear();
    EXPECT_TRUE(modelsEqual(filled(), original));

    HMM assigned(5, 6);
    assigned = original;
    EXPECT_TRUE(modelsEqual(original, assigned));
    EXPECT_NE(assigned.a.data.data(), original.a.data.data());
}

TEST(HmmConstruction, MovesTakeEveryField) {
    HMM source = filled();
    const HMM moved(std::move(source));
    EXPECT_TRUE(modelsEqual(filled(), moved));
    HMM again = filled();
    HMM target(1, 1);
    target = std::move(again);
    EXPECT_TRUE(modelsEqual(filled(), target));
}

TEST(HmmConstruction, ResetChangesNothing) {
    HMM model = filled();
    const Vesk::Test::Capture capture;
    for (int type : {0, 1, 2, 3, -1}) model.reset(static_cast<HMM::SegmentationType>(type));
    EXPECT_TRUE(modelsEqual(filled(), model));
    EXPECT_EQ(capture.text(), "");
}

}  // namespace
