#include <vesk/kernels/internal/Kernels.h>

#include <atomic>

namespace Vesk::Kernels {

extern const Set plainKernels;
#ifdef VESK_X86_KERNELS
extern const Set avx2Kernels;
extern const Set avx512Kernels;
#endif

namespace {

const Set& kernelsOf([[maybe_unused]] Level level) {
#ifdef VESK_X86_KERNELS
    if (level == Level::Avx512) return avx512Kernels;
    if (level == Level::Avx2) return avx2Kernels;
#endif
    return plainKernels;
}

const Set& widest() {
    if (available(Level::Avx512)) return kernelsOf(Level::Avx512);
    if (available(Level::Avx2)) return kernelsOf(Level::Avx2);
    return plainKernels;
}

std::atomic<const Set*> chosen = nullptr;

}  // namespace

bool available(Level level) {
    if (level == Level::Plain) return true;
#ifdef VESK_X86_KERNELS
    __builtin_cpu_init();
    if (level == Level::Avx2) {
        return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    }
    return available(Level::Avx2) && __builtin_cpu_supports("avx512f") &&
           __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
#else
    return false;
#endif
}

const Set& kernels() {
    const Set* set = chosen.load(std::memory_order_acquire);
    if (set == nullptr) {
        set = &widest();
        chosen.store(set, std::memory_order_release);
    }
    return *set;
}

void use(Level level) { chosen.store(&kernelsOf(level), std::memory_order_release); }

}  // namespace Vesk::Kernels
