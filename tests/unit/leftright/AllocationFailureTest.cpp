// Every operation of the left-right model that allocates, with each of its allocations failing.

#include <support/FailingAllocator.h>
#include <support/Files.h>
#include <support/LeftRightModels.h>
#include <support/Silence.h>

#include <vesk/leftright/LeftRightHMM.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace Vesk::Test {
namespace {

using testing::ElementsAre;
using testing::Ge;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;

class LeftRightAllocationFailure : public testing::Test {
protected:
    LeftRightAllocationFailure() {
        Random random(3);  // a model that three iterations of each training improve
        start = randomModel(random, 3, 4, Shape::LeftRight, Parameters::Stochastic);
        start.name = "a-name-that-is-too-long-to-be-held-inside-of-the-string-itself";
        start.stateSymbols = {{0}, {1, 2}, {3}};
        start.vocabValues = {0, 1, 2, 3};
        sequences = randomSequences(random, 3, 5, 9, 4);
        O = sequences[0];
        T = static_cast<int>(O.size());
        scale.resize(O.size());
    }

    /// Of an operation that leaves the model as it was where it fails.
    template <typename Operation>
    long failOn(Operation operation) const {
        return failEachAllocationOn(libraryModel(start), operation, [&](const LeftRightHMM& left) {
            EXPECT_TRUE(sameModel(start, left));
        });
    }

    /// Of a training that adopts three iterations: how many failures left the model as it was after
    /// none, one, two and three of them.
    template <typename Training>
    std::vector<int> keptBy(Training train) const {
        std::vector<LeftRightHMM> adopted = {libraryModel(start)};
        for (int iterations = 1; iterations <= 3; ++iterations) {
            adopted.push_back(adopted[0]);
            train(adopted.back(), iterations);
            EXPECT_FALSE(sameModel(adopted[adopted.size() - 2], adopted.back()));
        }
        std::vector<int> kept(4, 0);
        failEachAllocationOn(
            adopted[0], [&](LeftRightHMM& model) { train(model, 3); },
            [&](const LeftRightHMM& left) {
                const auto found =
                    std::find_if(adopted.begin(), adopted.end(), [&](const LeftRightHMM& one) {
                        return static_cast<bool>(sameModel(one, left));
                    });
                ASSERT_NE(found, adopted.end());
                ++kept[static_cast<std::size_t>(found - adopted.begin())];
            });
        return kept;
    }

    Reference::LeftRightModel start;
    Sequences sequences;
    std::vector<int> O;
    int T = 0;
    std::vector<double> scale;
    const Silence silence;
};

TEST_F(LeftRightAllocationFailure, ConstructionReleasesWhatItBuilt) {
    EXPECT_GE(failEachAllocation([] { const LeftRightHMM model(3, 4, 1); }), 8);
    EXPECT_GE(failEachAllocation([&] { const LeftRightHMM model(3, 4, sequences, 1); }), 16);
}

TEST_F(LeftRightAllocationFailure, CopiesReleaseWhatTheyHold) {
    const LeftRightHMM model = libraryModel(start);
    EXPECT_GE(failEachAllocation([&] { const LeftRightHMM copy(model); }), 20);
    EXPECT_GE(failEachAllocation([&] {
                  LeftRightHMM copy(1, 1, 1);
                  copy = model;
              }),
              28);
    static_assert(std::is_nothrow_move_constructible_v<LeftRightHMM>);
    static_assert(std::is_nothrow_move_assignable_v<LeftRightHMM>);
}

TEST_F(LeftRightAllocationFailure, EstimateLeavesTheModel) {
    for (const auto type : {HMM::StateSymbols, HMM::EqualSegments}) {
        // Copies of the sequences; equal segments are counted as well.
        EXPECT_GE(failOn([&](auto& m) { m.calcInitialProbs(type, sequences); }), 8);
        EXPECT_GE(failOn([&](auto& m) { m.initialize(sequences, type); }), 8);
        EXPECT_GE(failOn([&](auto& m) { m.estimate(type, sequences); }),
                  type == HMM::EqualSegments ? 4 : 0);
    }
}

TEST_F(LeftRightAllocationFailure, ScaledPassesLeaveTheModel) {
    EXPECT_GE(failOn([&](auto& m) { m.forwardProcWithScale(O, T, scale); }), 4);
    EXPECT_GE(failOn([&](auto& m) { m.backwardProcWithScale(O, T, scale); }), 4);
    EXPECT_GE(failOn([&](auto& m) { m.forwardProbabilityWithScale(O, T, scale); }), 2);
    EXPECT_GE(failOn([&](auto& m) { m.logLikelihood(std::vector<int>(2000, 1)); }), 2);
}

TEST_F(LeftRightAllocationFailure, ScaledPassesOverParametersPassedInLeaveThem) {
    const LeftRightHMM given = libraryModel(start);
    const auto& [pi, a, b] = std::tie(given.pi, given.a, given.b);
    LeftRightHMM model(1, 1, 1);
    EXPECT_GE(failEachAllocation([&] { model.forwardProcWithScaleHMM(O, T, scale, 3, pi, a, b); }),
              10);
    EXPECT_GE(failEachAllocation([&] { model.backwardProcWithScaleHMM(O, T, scale, 3, pi, a, b); }),
              10);
    EXPECT_GE(
        failEachAllocation([&] { model.forwardProbabilityWithScaleHMM(O, T, scale, 3, pi, a, b); }),
        8);
    EXPECT_TRUE(sameModel(start, given));
}

TEST_F(LeftRightAllocationFailure, TrainingKeepsTheLastAdoptedParameters) {
    // Failures of every iteration; none after the last adoption.
    const auto each = ElementsAre(Ge(4), Ge(2), Ge(2), 0);
    EXPECT_THAT(keptBy([&](auto& m, int iterations) { m.baumWelch(O, T, iterations); }), each);
    EXPECT_THAT(
        keptBy([&](auto& m, int iterations) { m.baumWelchMultiple(sequences, iterations); }), each);
    EXPECT_THAT(keptBy([&](auto& m, int iterations) { m.trainMultiple(sequences, iterations); }),
                each);
}

TEST_F(LeftRightAllocationFailure, PrintingLeavesTheModel) {
    failOn([](auto& m) { m.print(); });
}

TEST_F(LeftRightAllocationFailure, FilesAreReadAndWrittenOrNot) {
    const TemporaryFolder folder;
    const std::string path = folder.path("model");
    const std::string whole = Reference::fileText(start);
    LeftRightHMM model = libraryModel(start);
    EXPECT_GE(failEachAllocation([&] { model.write(path.c_str()); }), 6);
    EXPECT_EQ(readFile(path), whole);
    bool saved = false;
    EXPECT_GE(
        failEachAllocation([&] { saved = model.save(path); },
                           {.survived = [&] { EXPECT_TRUE(!saved || readFile(path) == whole); }}),
        6);
    EXPECT_TRUE(saved);
    EXPECT_EQ(readFile(path), whole);
    EXPECT_GE(failEachAllocation([&] {
                  const std::unique_ptr<LeftRightHMM> back(Vesk::ML::loadLR(path.c_str()));
                  ASSERT_TRUE(back != nullptr && back->vocabValues.size() == 4);
              }),
              20);
}

}  // namespace
}  // namespace Vesk::Test
