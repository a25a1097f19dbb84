#ifndef VESK_TESTS_SUPPORT_FAILINGALLOCATOR_H
#define VESK_TESTS_SUPPORT_FAILINGALLOCATOR_H

#include <gtest/gtest.h>

#include <iostream>
#include <new>
#include <streambuf>

namespace Vesk::Test {

// A program with FailingAllocator.cpp has allocation functions that count and fail on request.

/// Blocks allocated and not yet freed.
long blocksHeld();

/// Lets as many allocations succeed as `allowed` says, and fails all after them; negative: none
/// fails.
void failAllocationsAfter(long allowed);

/// Fails that one allocation alone.
void failAllocationOnceAfter(long allowed);

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

/// Runs `work` with its first, second, ... allocation failing and all that follow, until it needs
/// no more. Each failure has to come out as std::bad_alloc; `afterFailure` is called behind it.
/// Returns how many failed.
template <typename Work, typename Check>
long failEachAllocation(Work work, Check afterFailure) {
    for (long allowed = 0; allowed < 100000; ++allowed) {
        bool failed = false;
        bool other = false;
        failAllocationsAfter(allowed);
        try {
            work();
        } catch (const std::bad_alloc&) {
            failed = true;
        } catch (...) {
            other = true;
        }
        failAllocationsAfter(-1);
        EXPECT_FALSE(other) << "after " << allowed << " allocations";
        if (!failed) return allowed;
        afterFailure();
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << "after " << allowed << " allocations";
            return allowed;
        }
    }
    ADD_FAILURE() << "never succeeds";
    return -1;
}

/// The same for work that leaves nothing allocated where it fails.
template <typename Work>
long failEachAllocation(Work work) {
    const long before = blocksHeld();
    return failEachAllocation(work, [before] { EXPECT_EQ(blocksHeld(), before); });
}

}  // namespace Vesk::Test

#endif
