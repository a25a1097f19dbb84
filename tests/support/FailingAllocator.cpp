#include <support/FailingAllocator.h>

#include <atomic>
#include <cstdlib>

namespace {

std::atomic<long> held{0};
std::atomic<long> untilFailure{-1};
std::atomic<bool> once{false};

void* allocate(std::size_t size) {
    if (untilFailure == 0) {
        if (once) untilFailure = -1;
        return nullptr;
    }
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

namespace Vesk::Test {

long blocksHeld() { return held; }

void failAllocationsAfter(long allowed) {
    once = false;
    untilFailure = allowed;
}

void failAllocationOnceAfter(long allowed) {
    once = true;
    untilFailure = allowed;
}

}  // namespace Vesk::Test

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
