#ifndef VESK_TESTS_SUPPORT_FAILINGALLOCATOR_H
#define VESK_TESTS_SUPPORT_FAILINGALLOCATOR_H

#include <gtest/gtest.h>

#include <functional>
#include <optional>

namespace Vesk::Test {

// A program with FailingAllocator.cpp has allocation functions that count and fail on request.

/// Blocks allocated and not yet freed.
long blocksHeld();

/// Memory that runs out behind as many allocations as are allowed.
struct Shortage {
    long allowed;
    bool lasting;  ///< all that follow fail; else that one alone
};

/// What came of work that ran short of memory.
enum class Outcome {
    Untouched,  ///< it came to its end and asked for no more
    BadAlloc,   ///< std::bad_alloc came out
    Survived,   ///< it came to its end although it was refused memory
    Wrong       ///< something else came out: a failure of the test
};

Outcome runShort(Shortage shortage, const std::function<void()>& work);

/// Calls `attempt` with memory running out at the first, second, ... allocation (behind the 250th
/// at ever fewer) until one is untouched or the test has failed: with lasting shortages, then with
/// single ones. How many times std::bad_alloc came out.
long forEachShortage(const std::function<Outcome(Shortage)>& attempt);

/// What is looked at behind a failure.
struct Afterwards {
    std::function<void()> badAlloc = {};
    std::function<void()> survived = {};  ///< empty: nothing may survive one
    long mayKeep = 0;                     ///< blocks that a failure may leave allocated
};

/// Runs `work` with each of its allocations failing in turn, and demands that std::bad_alloc comes
/// out and nothing stays allocated. How many times it came out.
long failEachAllocation(const std::function<void()>& work, const Afterwards& afterwards = {});

/// The same for work that gives a value, and may survive a failure with the same one.
template <typename Make>
long failEachAllocationOf(Make make, long mayKeep = 0) {
    const auto expected = make();
    auto found = expected;
    const auto compare = [&] { EXPECT_EQ(found, expected); };
    const long failures =
        failEachAllocation([&] { found = make(); }, {.survived = compare, .mayKeep = mayKeep});
    compare();
    return failures;
}

/// The same for an operation on an object, a fresh copy of `start` each time, that `check` looks at
/// behind each failure.
template <typename T, typename Operation, typename Check>
long failEachAllocationOn(const T& start, Operation operation, Check check) {
    return forEachShortage([&](Shortage shortage) {
        const long before = blocksHeld();
        std::optional<T> object(start);
        const Outcome outcome = runShort(shortage, [&] { operation(*object); });
        EXPECT_NE(outcome, Outcome::Survived);
        if (outcome != Outcome::BadAlloc) return outcome;
        const long failed = blocksHeld();
        check(*object);
        const long looked = blocksHeld();
        object.reset();
        // What looking at it has left is the test's own.
        EXPECT_EQ(blocksHeld(), before + looked - failed);
        return outcome;
    });
}

}  // namespace Vesk::Test

#endif
