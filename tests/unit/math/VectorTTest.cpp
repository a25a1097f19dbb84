#include <vesk/math/VectorT.h>

#include <gtest/gtest.h>

#include <cstring>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using Vesk::Math::VectorT;

int sumByValue(VectorT<int> values) {
    int sum = 0;
    for (int& value : values) {
        sum += value;
        value = -1;
    }
    return sum;
}

double lastOf(std::vector<double> values) { return values.back(); }

TEST(VectorT, HasTheLayoutOfAStandardVector) {
    static_assert(sizeof(VectorT<int>) == sizeof(std::vector<int>));
    static_assert(sizeof(VectorT<double>) == 3 * sizeof(void*));
    static_assert(alignof(VectorT<double>) == alignof(std::vector<double>));

    VectorT<int> values;
    values.reserve(7);
    values.push_back(4);
    values.push_back(5);
    const int* pointers[3];
    std::memcpy(pointers, static_cast<const void*>(&values), sizeof pointers);
    EXPECT_EQ(pointers[0], values.data());
    EXPECT_EQ(pointers[1], values.data() + 2);
    EXPECT_EQ(pointers[2], values.data() + values.capacity());
    EXPECT_GE(values.capacity(), 7U);
}

TEST(VectorT, IsEmptyWhenDefaultConstructed) {
    const VectorT<double> values;
    EXPECT_EQ(values.size(), 0U);
    EXPECT_TRUE(values.empty());
}

TEST(VectorT, TakesTheValuesOfAStandardVector) {
    const std::vector<int> standard = {3, 1, 2};
    const VectorT<int> values = standard;
    ASSERT_EQ(values.size(), 3U);
    EXPECT_EQ(values[0], 3);
    EXPECT_EQ(values[1], 1);
    EXPECT_EQ(values[2], 2);
}

TEST(VectorT, ConvertsImplicitlyBothWays) {
    static_assert(std::is_convertible_v<std::vector<int>, VectorT<int>>);
    static_assert(std::is_convertible_v<VectorT<int>, std::vector<int>>);
    static_assert(std::is_convertible_v<std::vector<double>, VectorT<double>>);
    static_assert(std::is_convertible_v<VectorT<double>, std::vector<double>>);

    const std::vector<int> standard = {1, 2, 4};
    EXPECT_EQ(sumByValue(standard), 7);
    const VectorT<double> values = {0.5, 0.25};
    EXPECT_EQ(lastOf(values), 0.25);
    std::vector<double> back;
    back = values;
    EXPECT_EQ(back, (std::vector<double>{0.5, 0.25}));
}

TEST(VectorT, CanBeAssignedAStandardVector) {
    VectorT<double> values = {9.0};
    const std::vector<double> standard = {1.0, 2.0};
    values = standard;
    EXPECT_EQ(static_cast<const std::vector<double>&>(values), standard);
}

TEST(VectorT, PassedByValueLeavesTheCallersElements) {
    const VectorT<int> values = {1, 2, 3};
    EXPECT_EQ(sumByValue(values), 6);
    EXPECT_EQ(values, (VectorT<int>{1, 2, 3}));
}

TEST(VectorT, CopiesShareNothing) {
    VectorT<int> original = {1, 2};
    VectorT<int> copy = original;
    copy[0] = 7;
    EXPECT_EQ(original[0], 1);
    original[1] = 8;
    EXPECT_EQ(copy[1], 2);
}

TEST(VectorT, IndexesFromZeroWithAnInt) {
    VectorT<double> values(3);
    const int index = 2;
    values[index] = 1.5;
    EXPECT_EQ(values[0], 0.0);
    EXPECT_EQ(values[1], 0.0);
    EXPECT_EQ(*(values.data() + 2), 1.5);
}

TEST(VectorT, TakesTheStorageOfAMovedVector) {
    std::vector<int> standard = {5, 6};
    const int* storage = standard.data();
    const VectorT<int> values = std::move(standard);
    EXPECT_EQ(values.data(), storage);
    EXPECT_EQ(values.size(), 2U);
}

}  // namespace
