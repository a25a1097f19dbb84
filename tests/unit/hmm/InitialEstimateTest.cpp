#include <support/Capture.h>
#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::Test::bitEqual;
using Vesk::Test::matrixOf;

/// Every parameter 0.5, which no estimate leaves standing.
HMM halves(int N, int M) {
    HMM model(N, M);
    for (double& value : model.pi) value = 0.5;
    for (double& value : model.a.data) value = 0.5;
    for (double& value : model.b.data) value = 0.5;
    for (double& value : model.vocab.data) value = 0.5;
    return model;
}

void expectAll(double expected, const std::vector<double>& values, std::size_t count) {
    EXPECT_TRUE(bitEqual(std::vector<double>(count, expected), values));
}

/// Notes what `calcInitialProbs` is told.
class Listening : public HMM {
public:
    Listening() : HMM(2, 2) {}
    void calcInitialProbs(SegmentationType toldType,
                          std::vector<std::vector<int>> toldSequences) override {
        ++calls;
        type = toldType;
        sequences = std::move(toldSequences);
    }

    int calls = 0;
    SegmentationType type = NoSegmentation;
    std::vector<std::vector<int>> sequences;
};

TEST(HmmInitialEstimate, SeveralStatesAndSymbolsGetZeros) {
    // 1 / 3 and 1 / 5 are 0 in integers.
    HMM model = halves(3, 5);
    model.calcInitialProbs(HMM::EqualSegments, {{0, 1, 2}});
    expectAll(0.0, model.pi, 3);
    expectAll(0.0, model.a.data, 9);
    expectAll(0.0, model.b.data, 15);
}

TEST(HmmInitialEstimate, OneStateAndOneSymbolGetOnes) {
    HMM model(1, 1);
    model.calcInitialProbs(HMM::EqualSegments, {});
    expectAll(1.0, model.pi, 1);
    expectAll(1.0, model.a.data, 1);
    expectAll(1.0, model.b.data, 1);
}

TEST(HmmInitialEstimate, OneStateWithSeveralSymbolsIsCertainOfTheStateOnly) {
    HMM model = halves(1, 4);
    model.calcInitialProbs(HMM::StateSymbols, {});
    expectAll(1.0, model.pi, 1);
    expectAll(1.0, model.a.data, 1);
    expectAll(0.0, model.b.data, 4);
}

TEST(HmmInitialEstimate, OneSymbolWithSeveralStatesIsCertainOfTheSymbolOnly) {
    HMM model = halves(4, 1);
    model.calcInitialProbs(HMM::StateSymbols, {});
    expectAll(0.0, model.pi, 4);
    expectAll(0.0, model.a.data, 16);
    expectAll(1.0, model.b.data, 4);
}

TEST(HmmInitialEstimate, IgnoresItsArguments) {
    for (int type : {0, 1, 2, 7, -1}) {
        SCOPED_TRACE(type);
        HMM model = halves(1, 1);
        model.calcInitialProbs(static_cast<HMM::SegmentationType>(type), {{}, {5, -9}, {100}});
        expectAll(1.0, model.pi, 1);
        expectAll(1.0, model.a.data, 1);
        expectAll(1.0, model.b.data, 1);
    }
}

TEST(HmmInitialEstimate, LeavesAllButTheProbabilities) {
    HMM model = halves(2, 3);
    model.name = "wave";
    model.vocabValues = {1, 2};
    model.calcInitialProbs(HMM::EqualSegments, {{0, 1}});
    EXPECT_EQ(model.name, "wave");
    EXPECT_EQ(model.numStates, 2U);
    EXPECT_EQ(model.vocabSize, 3U);
    EXPECT_EQ(model.dimension, 1);
    expectAll(0.5, model.vocab.data, 3);
    EXPECT_TRUE(bitEqual({1, 2}, model.vocabValues));
    EXPECT_TRUE(model.needsSeed);
    EXPECT_EQ(model.a.rows, 2);
    EXPECT_EQ(model.a.cols, 2);
    EXPECT_EQ(model.b.rows, 2);
    EXPECT_EQ(model.b.cols, 3);
}

TEST(HmmInitialEstimate, PrintsNothing) {
    const Vesk::Test::Capture capture;
    HMM model = halves(1, 2);
    model.calcInitialProbs(HMM::EqualSegments, {{0, 1}});
    model.initialize({{0, 1}}, HMM::EqualSegments);
    EXPECT_EQ(capture.text(), "");
    expectAll(1.0, model.pi, 1);
}

TEST(HmmInitialEstimate, InitializeEstimates) {
    HMM model = halves(1, 2);
    model.initialize({{0, 1}}, HMM::StateSymbols);
    expectAll(1.0, model.pi, 1);
    expectAll(1.0, model.a.data, 1);
    expectAll(0.0, model.b.data, 2);
}

TEST(HmmInitialEstimate, InitializePassesBothOnToTheDerivedModel) {
    const std::vector<std::vector<int>> sequences = {{0, 1, 1}, {}, {1}};
    Listening model;
    HMM& base = model;
    base.initialize(sequences, HMM::EqualSegments);
    EXPECT_EQ(model.calls, 1);
    EXPECT_EQ(model.type, HMM::EqualSegments);
    EXPECT_EQ(model.sequences, sequences);
    base.initialize({}, HMM::StateSymbols);
    EXPECT_EQ(model.calls, 2);
    EXPECT_EQ(model.type, HMM::StateSymbols);
    EXPECT_TRUE(model.sequences.empty());
}

TEST(HmmInitialEstimate, InitializeDoesNothingElse) {
    Listening model;
    model.pi = {0.25, 0.75};
    model.a = matrixOf({{1, 2}, {3, 4}});
    model.b = matrixOf({{5, 6}, {7, 8}});
    const HMM before = model;
    model.initialize({{0}}, HMM::StateSymbols);
    EXPECT_TRUE(Vesk::Test::modelsEqual(before, model));
}

}  // namespace
