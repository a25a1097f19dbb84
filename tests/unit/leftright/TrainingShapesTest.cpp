#include <support/BitEqual.h>

#include <vesk/leftright/LeftRightHMM.h>
#include <vesk/recognition/RecognitionModelHMM.h>

#include <gtest/gtest.h>

#include <new>
#include <vector>

// Training gives the tables the model's own shape, whatever shape they came in.

namespace {

using Vesk::Math::MatrixT;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::Test::bitEqual;

const std::vector<int> sequence = {0, 0, 1, 0, 1, 1};

/// Two states, two symbols; `rows` and `cols` as large as the caller likes, the rest filled with 9.
MatrixT<double> padded(const MatrixT<double>& matrix, int rows, int cols) {
    MatrixT<double> wide(rows, cols);
    for (double& value : wide.data) value = 9.0;
    for (int r = 0; r < matrix.rows; ++r) {
        for (int c = 0; c < matrix.cols; ++c) wide(r, c) = matrix(r, c);
    }
    return wide;
}

template <typename Model>
void fill(Model& model) {
    model.pi = {1.0, 0.0};
    model.a.data = {0.6, 0.4, 0.0, 1.0};
    model.b.data = {0.7, 0.3, 0.4, 0.6};
}

template <typename Model, typename Train>
void expectOwnShapes(Model model, Train train) {
    fill(model);
    Model wide = model;
    wide.a = padded(model.a, 4, 4);
    wide.b = padded(model.b, 3, 5);
    for (int iterations = 1; iterations <= 4; ++iterations) {
        SCOPED_TRACE(iterations);
        Model expected = model;
        Model actual = wide;
        train(expected, iterations);
        train(actual, iterations);
        EXPECT_FALSE(bitEqual(model.b, expected.b)) << "nothing was adopted";
        EXPECT_TRUE(bitEqual(expected.a, actual.a));
        EXPECT_TRUE(bitEqual(expected.b, actual.b));
        EXPECT_EQ(actual.b.cols, 2);
    }
}

TEST(TrainingShapes, GeneralTrainingEndsWithTheModelsShapes) {
    expectOwnShapes(HMM(2, 2), [](HMM& m, int n) { m.baumWelch(sequence, 6, n); });
}

TEST(TrainingShapes, SingleTrainingEndsWithTheModelsShapes) {
    expectOwnShapes(LeftRightHMM(2, 2, 1),
                    [](LeftRightHMM& m, int n) { m.baumWelch(sequence, 6, n); });
}

TEST(TrainingShapes, TrainingOnSeveralEndsWithTheModelsShapes) {
    expectOwnShapes(LeftRightHMM(2, 2, 1), [](LeftRightHMM& m, int n) {
        m.trainMultiple({sequence, {0, 1, 1}}, n);
    });
}

TEST(TrainingShapes, OneSymbolTrainsAModelWithoutTransitions) {
    LeftRightHMM model(2, 2, 1);
    fill(model);
    model.a = MatrixT<double>();
    for (const int iterations : {1, 2, 3}) {
        LeftRightHMM trained = model;
        trained.baumWelch({0}, 1, iterations);
        EXPECT_TRUE(bitEqual(MatrixT<double>(2, 2), trained.a)) << "one symbol moves nowhere";
        EXPECT_EQ(trained.b.cols, 2);
    }
}

TEST(TrainingShapes, NegativeProductOfStatesIsBadAllocAndChangesNothing) {
    HMM gesture(1, 1);
    gesture.numStates = 50000;  // 50000^2 is negative in 32 bits
    Vesk::ML::RecognitionModelHMM model({&gesture}, 0.5);
    EXPECT_THROW(model.initialize(), std::bad_alloc);
    EXPECT_EQ(model.numStates, 0U);
    EXPECT_EQ(model.recognitionHMM, nullptr);
}

}  // namespace
