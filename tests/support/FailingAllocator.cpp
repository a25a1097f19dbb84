#include <support/FailingAllocator.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr long unlimited = std::numeric_limits<long>::max();

std::atomic<long> held{0};
std::atomic<long> left{unlimited};  ///< below zero: what was asked for since they ran out
std::atomic<bool> lasting{false};

void* allocate(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) {
    const long before = left--;
    if (before == 0 || (before < 0 && lasting)) return nullptr;
    // Whole multiples of the alignment, at least one.
    const std::size_t units = size == 0 ? 1 : (size - 1) / alignment + 1;
    void* const memory = std::aligned_alloc(alignment, units * alignment);
    if (memory != nullptr) ++held;
    return memory;
}

void* allocateOrThrow(std::size_t size, std::size_t alignment = alignof(std::max_align_t)) {
    if (void* const memory = allocate(size, alignment)) return memory;
    throw std::bad_alloc();
}

void release(void* memory) {
    if (memory == nullptr) return;
    --held;
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size) { return allocateOrThrow(size); }
void* operator new[](std::size_t size) { return allocateOrThrow(size); }
void* operator new(std::size_t size, std::align_val_t alignment) {
    return allocateOrThrow(size, static_cast<std::size_t>(alignment));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { release(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { release(memory); }

namespace Vesk::Test {
namespace {

void lookAt(Outcome outcome, long left, const Afterwards& afterwards) {
    if (outcome == Outcome::BadAlloc) {
        EXPECT_LE(left, afterwards.mayKeep) << "blocks are left";
        if (afterwards.badAlloc) afterwards.badAlloc();
    } else if (outcome == Outcome::Survived) {
        EXPECT_TRUE(afterwards.survived) << "an allocation failed and nothing came out";
        if (afterwards.survived) afterwards.survived();
    }
}

}  // namespace

long blocksHeld() { return held; }

Outcome runShort(Shortage shortage, const std::function<void()>& work) {
    Outcome outcome = Outcome::Untouched;
    lasting = shortage.lasting;
    left = shortage.allowed;
    try {
        work();
    } catch (const std::bad_alloc&) {
        outcome = Outcome::BadAlloc;
    } catch (...) {
        outcome = Outcome::Wrong;
    }
    const bool refused = left.exchange(unlimited) < 0;
    EXPECT_NE(outcome, Outcome::Wrong);
    EXPECT_TRUE(refused || outcome == Outcome::Untouched) << "there was memory enough";
    return refused && outcome == Outcome::Untouched ? Outcome::Survived : outcome;
}

long forEachShortage(const std::function<Outcome(Shortage)>& attempt) {
    constexpr long all = 250;
    constexpr long most = 1000000;
    long failures = 0;
    for (const bool lasting : {true, false}) {
        for (long allowed = 0;; allowed += 1 + allowed / all) {
            const Outcome outcome = attempt({allowed, lasting});
            if (testing::Test::HasFailure() || allowed > most) {
                ADD_FAILURE() << "after " << allowed << " allocations"
                              << (lasting ? ", with all others failing" : ", with one failing");
                return failures;
            }
            if (outcome == Outcome::Untouched) break;
            if (outcome == Outcome::BadAlloc) ++failures;
        }
    }
    return failures;
}

long failEachAllocation(const std::function<void()>& work, const Afterwards& afterwards) {
    return forEachShortage([&](Shortage shortage) {
        const long before = blocksHeld();
        const Outcome outcome = runShort(shortage, work);
        lookAt(outcome, blocksHeld() - before, afterwards);
        return outcome;
    });
}

}  // namespace Vesk::Test
