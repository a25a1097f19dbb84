#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/Capture.h>
#include <support/Files.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <vector>

namespace {

using Vesk::Math::MatrixT;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using namespace Vesk::Test;

/// Three states, four symbols, all tables whole.
LeftRightHMM whole() {
    Random random(4);
    LeftRightHMM model =
        libraryModel(randomModel(random, 3, 4, Shape::LeftRight, Parameters::Stochastic));
    model.vocabValues = {0, 1, 2, 3};
    return model;
}

const std::vector<int> O = {0, 1, 3, 2, 3, 3};
constexpr int T = 6;

void shrink(MatrixT<double>& matrix, int rows, int cols) {
    matrix = MatrixT<double>(rows, cols);
    matrix.data.assign(matrix.data.size(), 0.5);
}

/// One table of the three that evaluation reads is smaller than the counts promise.
std::vector<LeftRightHMM> damagedModels() {
    std::vector<LeftRightHMM> models(7, whole());
    models[0].pi.resize(2);
    models[1].pi.clear();
    shrink(models[2].a, 2, 2);
    shrink(models[3].a, 0, 0);
    shrink(models[4].b, 2, 4);
    shrink(models[5].b, 0, 0);
    models[6].numStates = 4;
    return models;
}

void expectUnchanged(const LeftRightHMM& before, const LeftRightHMM& after) {
    EXPECT_TRUE(bitEqual(before.pi, after.pi));
    EXPECT_TRUE(bitEqual(before.a, after.a));
    EXPECT_TRUE(bitEqual(before.b, after.b));
}

TEST(LeftRightDamagedTables, ForwardPassThrowsBeforeItWritesAScale) {
    for (LeftRightHMM& model : damagedModels()) {
        std::vector<double> scale(6, 9.0);
        EXPECT_THROW(model.forwardProcWithScale(O, T, scale), std::out_of_range);
        EXPECT_THROW(model.forwardProbabilityWithScale(O, T, scale), std::out_of_range);
        EXPECT_THROW(model.logLikelihood(O), std::out_of_range);
        EXPECT_THROW(model.likelihoods({O}), std::out_of_range);
        EXPECT_TRUE(bitEqual(std::vector<double>{0.0, 0.0}, model.likelihoods({{}, {}})));
        EXPECT_TRUE(bitEqual(std::vector<double>(6, 9.0), scale));
    }
}

TEST(LeftRightDamagedTables, BackwardPassThrowsForTransitionsAndEmissions) {
    const std::vector<LeftRightHMM> models = damagedModels();
    for (std::size_t n = 2; n < models.size(); ++n) {
        SCOPED_TRACE(n);
        LeftRightHMM model = models[n];
        std::vector<double> scale(6, 0.5);
        EXPECT_THROW(model.backwardProcWithScale(O, T, scale), std::out_of_range);
    }
}

TEST(LeftRightDamagedTables, BackwardPassDoesNotMissPi) {
    LeftRightHMM model = whole();
    std::vector<double> scale(6, 0.5);
    const auto expected = model.backwardProcWithScale(O, T, scale);
    model.pi.clear();
    EXPECT_TRUE(bitEqual(expected, model.backwardProcWithScale(O, T, scale)));
}

TEST(LeftRightDamagedTables, TrainersThrowAndLeaveTheModelAlone) {
    for (LeftRightHMM& model : damagedModels()) {
        const LeftRightHMM before = model;
        const Capture capture;
        EXPECT_THROW(model.baumWelch(O, T, 2), std::out_of_range);
        EXPECT_THROW(model.baumWelchMultiple({O, O}, 2), std::out_of_range);
        EXPECT_THROW(model.trainMultiple({O, O}, 2), std::out_of_range);
        EXPECT_EQ(capture.text(), "");
        expectUnchanged(before, model);
    }
}

TEST(LeftRightDamagedTables, SequencesOfOneSymbolAreTrainedOnWithoutTransitions) {
    const std::vector<std::vector<int>> sequences = {{0}, {1}, {0}};
    LeftRightHMM expected = whole();
    expected.b.data.assign(expected.b.data.size(), 0.25);
    LeftRightHMM model = expected;
    shrink(model.a, 0, 0);
    const LeftRightHMM before = model;
    expected.trainMultiple(sequences, 1);
    model.trainMultiple(sequences, 1);
    EXPECT_FALSE(bitEqual(before.b, model.b));
    expectUnchanged(expected, model);
}

TEST(LeftRightDamagedTables, EstimateThrowsAndLeavesTheModelAlone) {
    for (LeftRightHMM& model : damagedModels()) {
        model.stateSymbols.assign(model.numStates, {0});
        const LeftRightHMM before = model;
        const Capture capture;
        EXPECT_THROW(model.calcInitialProbs(HMM::EqualSegments, {O}), std::out_of_range);
        EXPECT_THROW(model.calcInitialProbs(HMM::StateSymbols, {O}), std::out_of_range);
        EXPECT_THROW(model.estimate(HMM::EqualSegments, {O}), std::out_of_range);
        expectUnchanged(before, model);
    }
}

TEST(LeftRightDamagedTables, EstimateThrowsWhereTheVocabularyIsLargerThanTheEmissions) {
    LeftRightHMM model = whole();
    model.vocabSize = 5;
    const LeftRightHMM before = model;
    EXPECT_THROW(model.estimate(HMM::EqualSegments, {O}), std::out_of_range);
    expectUnchanged(before, model);
}

TEST(LeftRightDamagedTables, WritersThrow) {
    std::vector<LeftRightHMM> models = damagedModels();
    models.push_back(whole());
    shrink(models.back().vocab, 3, 1);
    const TemporaryFolder folder;
    for (LeftRightHMM& model : models) {
        EXPECT_THROW(model.write(folder.path("model").c_str()), std::out_of_range);
        EXPECT_THROW(model.save(folder.path("model")), std::out_of_range);
    }
}

}  // namespace
