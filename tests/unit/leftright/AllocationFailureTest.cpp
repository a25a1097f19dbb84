#include <vesk/leftright/LeftRightHMM.h>

#include <support/FailingAllocator.h>
#include <support/Files.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <new>
#include <vector>

namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using namespace Vesk::Test;

/// Each failure has to leave nothing behind and the objects as they were.
template <typename Work, typename Check>
long failEachAllocationOf(Work work, Check unchanged) {
    const long before = blocksHeld();
    return failEachAllocation(work, [&] {
        EXPECT_EQ(blocksHeld(), before);
        EXPECT_TRUE(unchanged());
    });
}

struct Example {
    Reference::LeftRightModel start;
    Sequences sequences;
};

Example threeStates() {
    Random random(12);
    Example example;
    example.start = randomModel(random, 3, 4, Shape::LeftRight, Parameters::Stochastic);
    example.start.stateSymbols = {{0}, {1, 2}, {3}};
    example.sequences = randomSequences(random, 3, 5, 9, 4);
    return example;
}

TEST(LeftRightAllocationFailure, ConstructionReleasesWhatItBuilt) {
    const auto nothing = [] { return true; };
    Sequences sequences = {{0, 1, 2, 3}, {1, 2}, {3}};
    EXPECT_GE(failEachAllocationOf([] { const LeftRightHMM model(3, 4, 1); }, nothing), 4);
    EXPECT_GE(failEachAllocationOf([&] { const LeftRightHMM model(3, 4, sequences, 1); }, nothing),
              8);
}

TEST(LeftRightAllocationFailure, EstimateFreesItsTables) {
    const Example example = threeStates();
    const Silence silence;
    for (const auto type : {HMM::StateSymbols, HMM::EqualSegments}) {
        LeftRightHMM model = libraryModel(example.start);
        // What the arguments' copies allocate is the caller's affair; all of it must come back.
        const long failures = failEachAllocationOf(
            [&] { model.calcInitialProbs(type, example.sequences); }, [] { return true; });
        EXPECT_GE(failures, 1);
        Reference::LeftRightModel expected = example.start;
        Reference::calcInitialProbs(expected, type, example.sequences);
        EXPECT_TRUE(sameModel(expected, model));
    }
}

TEST(LeftRightAllocationFailure, ScaledPassesFreeTheirTables) {
    const Example example = threeStates();
    LeftRightHMM model = libraryModel(example.start);
    const std::vector<int>& O = example.sequences[0];
    const int T = static_cast<int>(O.size());
    std::vector<double> scale(O.size());
    const auto unchanged = [&] { return sameModel(example.start, model); };
    EXPECT_GE(failEachAllocationOf([&] { model.forwardProcWithScale(O, T, scale); }, unchanged), 1);
    EXPECT_GE(failEachAllocationOf([&] { model.backwardProcWithScale(O, T, scale); }, unchanged),
              1);
    EXPECT_GE(
        failEachAllocationOf([&] { model.forwardProbabilityWithScale(O, T, scale); }, unchanged),
        1);
}

TEST(LeftRightAllocationFailure, TrainingFreesItsTablesAndLeavesTheModel) {
    const Example example = threeStates();
    const Silence silence;
    const std::vector<int>& O = example.sequences[0];
    LeftRightHMM model = libraryModel(example.start);
    const auto unchanged = [&] { return sameModel(example.start, model); };

    EXPECT_GE(
        failEachAllocationOf([&] { model.baumWelch(O, static_cast<int>(O.size()), 1); }, unchanged),
        1);
    Reference::LeftRightModel single = example.start;
    ASSERT_EQ(Reference::baumWelch(single, O, static_cast<int>(O.size()), 1), 1);
    EXPECT_TRUE(sameModel(single, model));

    model = libraryModel(example.start);
    EXPECT_GE(
        failEachAllocationOf([&] { model.baumWelchMultiple(example.sequences, 1); }, unchanged), 1);
    Reference::LeftRightModel multiple = example.start;
    ASSERT_TRUE(Reference::baumWelchMultiple(multiple, example.sequences, 1).back().accepted);
    EXPECT_TRUE(sameModel(multiple, model));
}

TEST(LeftRightAllocationFailure, LoadingLeavesNothingBehind) {
    const TemporaryFolder folder;
    Example example = threeStates();
    example.start.name = "a name that is too long to be blocksHeld() inside of the string itself";
    example.start.vocabValues = {0, 1, 2, 3};
    const std::string path = folder.path("model");
    writeFile(path, Reference::fileText(example.start));
    // A stream swallows a failure inside its own reading, so not every one comes out.
    int failures = 0;
    int models = 0;
    for (long successes = 0; successes < 60; ++successes) {
        LeftRightHMM* model = nullptr;
        const long before = blocksHeld();
        failAllocationsAfter(successes);
        try {
            model = Vesk::ML::loadLR(path.c_str());
        } catch (const std::bad_alloc&) {
            ++failures;
        }
        failAllocationsAfter(-1);
        if (model != nullptr) ++models;
        delete model;
        ASSERT_EQ(blocksHeld(), before) << "after " << successes << " allocations";
    }
    EXPECT_GE(failures, 5);
    EXPECT_GE(models, 1);
}

}  // namespace
