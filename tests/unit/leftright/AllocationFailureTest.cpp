#include <vesk/leftright/LeftRightHMM.h>

#include <support/Files.h>
#include <support/LeftRightModels.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <new>
#include <streambuf>
#include <vector>

// This program's allocation functions count what is held and fail on request.

namespace {

long held = 0;           // allocations that are not yet freed
long untilFailure = -1;  // allocations that still succeed; negative: all do

void* allocate(std::size_t size) {
    if (untilFailure == 0) return nullptr;
    if (untilFailure > 0) --untilFailure;
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (memory != nullptr) ++held;
    return memory;
}

void release(void* memory) {
    if (memory == nullptr) return;
    --held;
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) {
    if (void* const memory = allocate(size)) return memory;
    throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { release(memory); }

namespace {

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using namespace Vesk::Test;

/// Swallows standard output without allocating.
class Silence : public std::streambuf {
public:
    Silence() : previous(std::cout.rdbuf(this)) {}
    ~Silence() override { std::cout.rdbuf(previous); }

protected:
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }

private:
    std::streambuf* previous;
};

/// Runs `work` with its first, second, ... allocation failing until it needs no more: each failure
/// must come out as std::bad_alloc and leave nothing behind. Returns how many failed.
template <typename Work, typename Check>
long failEachAllocation(Work work, Check unchangedAfterFailure) {
    for (long successes = 0; successes < 100000; ++successes) {
        bool failed = false;
        bool other = false;
        const long before = held;
        untilFailure = successes;
        try {
            work();
        } catch (const std::bad_alloc&) {
            failed = true;
        } catch (...) {
            other = true;
        }
        untilFailure = -1;
        EXPECT_FALSE(other) << "after " << successes << " allocations";
        if (!failed) return successes;
        EXPECT_EQ(held, before) << "after " << successes << " allocations";
        EXPECT_TRUE(unchangedAfterFailure()) << "after " << successes << " allocations";
        if (testing::Test::HasFailure()) return successes;
    }
    ADD_FAILURE() << "never succeeds";
    return -1;
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
    EXPECT_GE(failEachAllocation([] { const LeftRightHMM model(3, 4, 1); }, nothing), 4);
    EXPECT_GE(failEachAllocation([&] { const LeftRightHMM model(3, 4, sequences, 1); }, nothing),
              8);
}

TEST(LeftRightAllocationFailure, EstimateFreesItsTables) {
    const Example example = threeStates();
    const Silence silence;
    for (const auto type : {HMM::StateSymbols, HMM::EqualSegments}) {
        LeftRightHMM model = libraryModel(example.start);
        // What the arguments' copies allocate is the caller's affair; all of it must come back.
        const long failures = failEachAllocation(
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
    EXPECT_GE(failEachAllocation([&] { model.forwardProcWithScale(O, T, scale); }, unchanged), 1);
    EXPECT_GE(failEachAllocation([&] { model.backwardProcWithScale(O, T, scale); }, unchanged), 1);
    EXPECT_GE(
        failEachAllocation([&] { model.forwardProbabilityWithScale(O, T, scale); }, unchanged), 1);
}

TEST(LeftRightAllocationFailure, TrainingFreesItsTablesAndLeavesTheModel) {
    const Example example = threeStates();
    const Silence silence;
    const std::vector<int>& O = example.sequences[0];
    LeftRightHMM model = libraryModel(example.start);
    const auto unchanged = [&] { return sameModel(example.start, model); };

    EXPECT_GE(
        failEachAllocation([&] { model.baumWelch(O, static_cast<int>(O.size()), 1); }, unchanged),
        1);
    Reference::LeftRightModel single = example.start;
    ASSERT_EQ(Reference::baumWelch(single, O, static_cast<int>(O.size()), 1), 1);
    EXPECT_TRUE(sameModel(single, model));

    model = libraryModel(example.start);
    EXPECT_GE(failEachAllocation([&] { model.baumWelchMultiple(example.sequences, 1); }, unchanged),
              1);
    Reference::LeftRightModel multiple = example.start;
    ASSERT_TRUE(Reference::baumWelchMultiple(multiple, example.sequences, 1).back().accepted);
    EXPECT_TRUE(sameModel(multiple, model));
}

TEST(LeftRightAllocationFailure, LoadingLeavesNothingBehind) {
    const TemporaryFolder folder;
    Example example = threeStates();
    example.start.name = "a name that is too long to be held inside of the string itself";
    example.start.vocabValues = {0, 1, 2, 3};
    const std::string path = folder.path("model");
    writeFile(path, Reference::fileText(example.start));
    // A stream swallows a failure inside its own reading, so not every one comes out.
    int failures = 0;
    int models = 0;
    for (long successes = 0; successes < 60; ++successes) {
        LeftRightHMM* model = nullptr;
        const long before = held;
        untilFailure = successes;
        try {
            model = Vesk::ML::loadLR(path.c_str());
        } catch (const std::bad_alloc&) {
            ++failures;
        }
        untilFailure = -1;
        if (model != nullptr) ++models;
        delete model;
        ASSERT_EQ(held, before) << "after " << successes << " allocations";
    }
    EXPECT_GE(failures, 5);
    EXPECT_GE(models, 1);
}

}  // namespace
