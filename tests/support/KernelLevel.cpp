#include <vesk/kernels/internal/Kernels.h>

#include <gtest/gtest.h>

// Linked into a test program, makes all of its tests run on the kernels of VESK_KERNEL_LEVEL.

namespace {

using Vesk::Kernels::Level;

class KernelLevel : public testing::Environment {
public:
    void SetUp() override {
        const auto level = Level::VESK_KERNEL_LEVEL;
        if (!Vesk::Kernels::available(level)) GTEST_SKIP() << "not on this processor";
        Vesk::Kernels::use(level);
    }
};

[[maybe_unused]] const auto* const environment = testing::AddGlobalTestEnvironment(new KernelLevel);

}  // namespace
