#ifndef VESK_TESTS_UNIT_KERNELS_ONEVERYLEVEL_H
#define VESK_TESTS_UNIT_KERNELS_ONEVERYLEVEL_H

#include <vesk/kernels/internal/Kernels.h>

#include <gtest/gtest.h>

#include <string>

namespace Vesk::Test {

/// A test of kernels, run with those of each level that the processor has.
class OnEveryLevel : public testing::TestWithParam<Vesk::Kernels::Level> {
protected:
    void SetUp() override {
        if (!Vesk::Kernels::available(GetParam())) GTEST_SKIP() << "not on this processor";
        Vesk::Kernels::use(GetParam());
    }
};

inline std::string nameOfLevel(const testing::TestParamInfo<Vesk::Kernels::Level>& info) {
    constexpr const char* names[] = {"Plain", "Avx2", "Avx512"};
    return names[static_cast<int>(info.param)];
}

}  // namespace Vesk::Test

#define VESK_ON_EVERY_LEVEL(Fixture)                                             \
    INSTANTIATE_TEST_SUITE_P(                                                    \
        Levels, Fixture,                                                         \
        testing::Values(Vesk::Kernels::Level::Plain, Vesk::Kernels::Level::Avx2, \
                        Vesk::Kernels::Level::Avx512),                           \
        Vesk::Test::nameOfLevel)

#endif
