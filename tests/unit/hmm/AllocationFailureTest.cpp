// Every operation of the general model that allocates, with each of its allocations failing.

#include <support/FailingAllocator.h>
#include <support/Files.h>
#include <support/HmmModels.h>
#include <support/Silence.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::Math::MatrixT;
using Vesk::Math::VectorT;
using Vesk::ML::HMM;

HMM large() {
    HMM model(40, 40);
    model.name = "a name that is too long to be held inside a string";
    for (std::size_t i = 0; i < 40; ++i) model.pi[i] = 1.0 / static_cast<double>(i + 2);
    for (std::size_t i = 0; i < 1600; ++i) {
        model.a.data[i] = 1.0 / static_cast<double>(i % 7 + 30);
        model.b.data[i] = 1.0 / static_cast<double>(i % 11 + 30);
    }
    model.needsSeed = false;
    return model;
}

/// A model that three iterations over `weather` improve.
HMM weatherModel() {
    HMM model(2, 2);
    model.pi = {0.5, 0.5};
    model.a = matrixOf({{0.5, 0.5}, {0.25, 0.75}});
    model.b = matrixOf({{0.5, 0.5}, {0.25, 0.75}});
    return model;
}
const VectorT<int> weather = {0, 1, 1, 0, 1};

const VectorT<int> o = {0, 1, 39, 0, 1, 17};
constexpr int T = 6;

/// Of an operation that leaves the model as it was, whatever happens.
template <typename Operation>
long failOn(const HMM& model, Operation operation) {
    const Silence silence;
    return failEachAllocationOn(model, operation,
                                [&](const HMM& left) { EXPECT_TRUE(modelsEqual(model, left)); });
}

TEST(HmmAllocationFailure, ConstructionReleasesWhatItHolds) {
    // pi, a, b and vocab.
    EXPECT_GE(failEachAllocation([] { const HMM model(5, 6, 2); }), 8);
    EXPECT_GE(failEachAllocation([] { const HMM model(5, 6); }), 8);
}

TEST(HmmAllocationFailure, CopiesReleaseWhatTheyHold) {
    const HMM model = large();
    // The name as well.
    EXPECT_GE(failEachAllocation([&] { const HMM copy(model); }), 10);
    EXPECT_GE(failEachAllocation([&] {
                  HMM copy(1, 1);
                  copy = model;
              }),
              18);
    static_assert(std::is_nothrow_move_constructible_v<HMM>);
    static_assert(std::is_nothrow_move_assignable_v<HMM>);
}

TEST(HmmAllocationFailure, PassesLeaveTheModel) {
    const HMM model = large();
    EXPECT_GE(failOn(model, [](HMM& m) { m.forwardProc(o, T); }), 4);
    EXPECT_GE(failOn(model, [](HMM& m) { m.backwardProc(o, T); }), 4);
    EXPECT_GE(failOn(model, [](HMM& m) { m.forwardProbability(o, T); }), 2);
    EXPECT_GE(failOn(model, [](HMM& m) { m.backwardProbability(o, T); }), 2);
    EXPECT_GE(failOn(model, [](HMM& m) { m.likelihoods({o, {}, o}); }), 4);
    EXPECT_GE(failOn(model, [](HMM& m) { m.viterbi(o, T); }), 4);
    EXPECT_GE(failOn(model, [](HMM& m) { m.genSeq(T); }), 2);
}

TEST(HmmAllocationFailure, PassesOverParametersPassedInLeaveThem) {
    const HMM given = large();
    const HMM model(1, 1);
    const auto& [pi, a, b] = std::tie(given.pi, given.a, given.b);
    // The copies, and the result.
    EXPECT_GE(failOn(model, [&](HMM& m) { m.forwardProcHMM(o, T, 40, pi, a, b); }), 10);
    EXPECT_GE(failOn(model, [&](HMM& m) { m.forwardProbabilityHMM(o, T, 40, pi, a, b); }), 8);
    EXPECT_GE(failOn(model, [&](HMM& m) { m.backwardProcHMM(o, T, 40, a, b); }), 8);
    EXPECT_GE(failOn(model, [&](HMM& m) { m.backwardProbabilityHMM(o, T, 40, pi, a, b); }), 8);
    EXPECT_TRUE(modelsEqual(large(), given));
}

TEST(HmmAllocationFailure, PosteriorsLeaveTheModel) {
    const HMM model = large();
    const MatrixT<double> alpha = HMM(model).forwardProc(o, T);
    const MatrixT<double> beta = HMM(model).backwardProc(o, T);
    EXPECT_GE(failOn(model, [&](HMM& m) { m.gamma(1, 2, alpha, beta); }), 4);
    EXPECT_GE(failOn(model, [&](HMM& m) { m.xi(1, 2, 3, o, alpha, beta); }), 6);
}

TEST(HmmAllocationFailure, TrainingKeepsTheLastAdoptedParameters) {
    std::vector<HMM> adopted = {weatherModel()};
    for (int iterations = 1; iterations <= 3; ++iterations) {
        adopted.push_back(adopted.back());
        adopted.back().baumWelch(weather, 5, 1);
        ASSERT_FALSE(modelsEqual(adopted[adopted.size() - 2], adopted.back()));
    }
    std::vector<int> keeping(4, 0);
    failEachAllocationOn(
        weatherModel(), [](HMM& model) { model.baumWelch(weather, 5, 3); },
        [&](const HMM& left) {
            int found = -1;
            for (int i = 0; i < 4; ++i) {
                if (modelsEqual(adopted[static_cast<std::size_t>(i)], left)) found = i;
            }
            ASSERT_GE(found, 0);
            ++keeping[static_cast<std::size_t>(found)];
        });
    // Failures of every iteration; none after the last adoption.
    EXPECT_GE(keeping[0], 4);
    EXPECT_GE(keeping[1], 2);
    EXPECT_GE(keeping[2], 2);
    EXPECT_EQ(keeping[3], 0);
}

TEST(HmmAllocationFailure, EstimateLeavesTheModel) {
    const std::vector<std::vector<int>> sequences = {{0, 1}, {1}};
    const HMM model = large();
    EXPECT_GE(failOn(model, [&](HMM& m) { m.initialize(sequences, HMM::EqualSegments); }), 6);
    EXPECT_GE(failOn(model, [&](HMM& m) { m.calcInitialProbs(HMM::EqualSegments, sequences); }), 6);
}

TEST(HmmAllocationFailure, PrintingLeavesTheModel) {
    failOn(large(), [](HMM& m) { m.print(); });
}

class HmmFileAllocationFailure : public testing::Test {
protected:
    HmmFileAllocationFailure() {
        model.name = "long-names-are-read-in-pieces-and-held-outside-the-string";
        EXPECT_TRUE(model.save(path));
        whole = readFile(path);
    }

    const TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    HMM model = large();
    std::string whole;
};

TEST_F(HmmFileAllocationFailure, SaveNeverReportsAnIncompleteFile) {
    bool saved = false;
    EXPECT_GE(failEachAllocation(
                  [&] {
                      saved = false;
                      saved = model.save(path);
                  },
                  {.badAlloc = [&] { EXPECT_FALSE(saved); },
                   .survived = [&] { EXPECT_TRUE(!saved || readFile(path) == whole); }}),
              6);
    EXPECT_TRUE(saved);
    EXPECT_EQ(readFile(path), whole);
}

TEST_F(HmmFileAllocationFailure, WriteComesToItsEndOrToBadAlloc) {
    EXPECT_GE(failEachAllocation([&] { model.write(path.c_str()); }), 6);
    EXPECT_EQ(readFile(path), whole);
}

TEST_F(HmmFileAllocationFailure, LoadHoldsNothing) {
    EXPECT_GE(failEachAllocation([&] {
                  const std::unique_ptr<HMM> back(Vesk::ML::load(path.c_str()));
                  ASSERT_TRUE(back != nullptr && back->name == model.name);
              }),
              12);
}

}  // namespace
}  // namespace Vesk::Test
