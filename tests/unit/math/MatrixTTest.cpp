#include <support/BitEqual.h>

#include <vesk/math/MatrixT.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using Vesk::Math::MatrixDynamicAccessor;
using Vesk::Math::MatrixT;
using Vesk::Test::bitEqual;

/// rows x cols holding 1, 2, 3, ... in flat order.
MatrixT<double> counted(int rows, int cols) {
    MatrixT<double> matrix;
    matrix.resize(rows, cols);
    double value = 0.0;
    for (double& element : matrix.data) element = ++value;
    return matrix;
}

double overwritten(MatrixT<double> matrix) {
    const double first = matrix(0, 0);
    for (double& value : matrix.data) value = -1.0;
    matrix.resize(1, 1);
    return first;
}

TEST(MatrixT, HoldsDataThenRowsThenCols) {
    static_assert(std::is_base_of_v<MatrixDynamicAccessor<double>, MatrixT<double>>);
    static_assert(std::is_same_v<decltype(MatrixT<double>::data), std::vector<double>>);
    static_assert(std::is_same_v<decltype(MatrixT<int>::data), std::vector<int>>);
    static_assert(std::is_same_v<decltype(MatrixT<double>::rows), int>);
    static_assert(std::is_same_v<decltype(MatrixT<double>::cols), int>);
    static_assert(sizeof(int) == 4);
    static_assert(sizeof(MatrixT<double>) == sizeof(std::vector<double>) + 2 * sizeof(int));
    static_assert(!std::is_polymorphic_v<MatrixT<double>>);

    const MatrixT<double> matrix;
    const auto offset = [&matrix](const void* member) {
        return static_cast<const char*>(member) - reinterpret_cast<const char*>(&matrix);
    };
    const auto vectorSize = static_cast<std::ptrdiff_t>(sizeof(std::vector<double>));
    EXPECT_EQ(offset(&matrix.data), 0);
    EXPECT_EQ(offset(&matrix.rows), vectorSize);
    EXPECT_EQ(offset(&matrix.cols), vectorSize + 4);
}

TEST(MatrixT, IsZeroByZeroWhenDefaultConstructed) {
    const MatrixT<double> matrix;
    EXPECT_EQ(matrix.rows, 0);
    EXPECT_EQ(matrix.cols, 0);
    EXPECT_TRUE(matrix.data.empty());
    const MatrixT<int> integers;
    EXPECT_EQ(integers.rows, 0);
    EXPECT_EQ(integers.cols, 0);
    EXPECT_TRUE(integers.data.empty());
}

TEST(MatrixT, IsRowMajor) {
    MatrixT<double> matrix = counted(2, 3);
    // (r, c) at 3 r + c.
    EXPECT_EQ(matrix(0, 0), 1.0);
    EXPECT_EQ(matrix(0, 2), 3.0);
    EXPECT_EQ(matrix(1, 0), 4.0);
    EXPECT_EQ(matrix(1, 2), 6.0);
    matrix(1, 1) = 50.0;
    EXPECT_EQ(matrix.data, (std::vector<double>{1, 2, 3, 4, 50, 6}));
    const MatrixT<double>& constant = matrix;
    EXPECT_EQ(constant(1, 1), 50.0);
}

TEST(MatrixT, FindsElementsByItsPresentColumnCount) {
    MatrixT<double> matrix = counted(2, 3);
    matrix.cols = 2;
    // (1, 1) at 2 * 1 + 1 = 3, the fourth value.
    EXPECT_EQ(matrix(1, 1), 4.0);
}

TEST(MatrixT, ResizeFillsWithZeros) {
    MatrixT<double> matrix;
    matrix.resize(2, 3);
    EXPECT_EQ(matrix.rows, 2);
    EXPECT_EQ(matrix.cols, 3);
    EXPECT_TRUE(bitEqual(std::vector<double>(6, 0.0), matrix.data));
    MatrixT<int> integers;
    integers.resize(3, 1);
    EXPECT_EQ(integers.data, (std::vector<int>{0, 0, 0}));
}

TEST(MatrixT, ResizeToTheCurrentShapeKeepsEveryValue) {
    MatrixT<double> matrix = counted(2, 3);
    const double* storage = matrix.data.data();
    matrix.resize(2, 3);
    EXPECT_TRUE(bitEqual({1, 2, 3, 4, 5, 6}, matrix.data));
    EXPECT_EQ(matrix.data.data(), storage);
}

TEST(MatrixT, ResizeToTheCurrentShapeLeavesAStorageOfAnotherLengthAlone) {
    MatrixT<double> matrix = counted(2, 3);
    matrix.data.resize(4);
    matrix.resize(2, 3);
    EXPECT_TRUE(bitEqual({1, 2, 3, 4}, matrix.data));
}

TEST(MatrixT, ResizeToAnotherShapeOfTheSameLengthKeepsTheFlatOrder) {
    MatrixT<double> matrix = counted(2, 3);
    matrix.resize(3, 2);
    EXPECT_EQ(matrix.rows, 3);
    EXPECT_EQ(matrix.cols, 2);
    EXPECT_TRUE(bitEqual({1, 2, 3, 4, 5, 6}, matrix.data));
    EXPECT_EQ(matrix(0, 0), 1.0);
    EXPECT_EQ(matrix(0, 1), 2.0);
    EXPECT_EQ(matrix(1, 0), 3.0);
    EXPECT_EQ(matrix(2, 1), 6.0);
}

TEST(MatrixT, ResizeToALargerShapeAppendsZeros) {
    MatrixT<double> matrix = counted(2, 2);
    matrix.resize(3, 3);
    EXPECT_EQ(matrix.rows, 3);
    EXPECT_EQ(matrix.cols, 3);
    EXPECT_TRUE(bitEqual({1, 2, 3, 4, 0, 0, 0, 0, 0}, matrix.data));
}

TEST(MatrixT, ResizeToASmallerShapeCutsTheEnd) {
    MatrixT<double> matrix = counted(3, 3);
    matrix.resize(2, 2);
    EXPECT_TRUE(bitEqual({1, 2, 3, 4}, matrix.data));
    matrix.resize(0, 5);
    EXPECT_EQ(matrix.rows, 0);
    EXPECT_EQ(matrix.cols, 5);
    EXPECT_TRUE(matrix.data.empty());
}

TEST(MatrixT, ValuesCutAwayComeBackAsZeros) {
    MatrixT<double> matrix = counted(2, 2);
    matrix.resize(1, 1);
    matrix.resize(2, 2);
    EXPECT_TRUE(bitEqual({1, 0, 0, 0}, matrix.data));
}

TEST(MatrixT, ResizeTakesTheProductIn32Bits) {
    MatrixT<double> matrix = counted(2, 2);
    // 65536 * 65536 = 2^32, which wraps around to 0.
    matrix.resize(65536, 65536);
    EXPECT_EQ(matrix.rows, 65536);
    EXPECT_EQ(matrix.cols, 65536);
    EXPECT_TRUE(matrix.data.empty());
    // 65537 * 65537 = 2^32 + 131073.
    matrix.resize(65537, 65537);
    EXPECT_EQ(matrix.data.size(), 131073U);
    // -2 * -3 = 6.
    matrix.resize(-2, -3);
    EXPECT_EQ(matrix.rows, -2);
    EXPECT_EQ(matrix.cols, -3);
    EXPECT_EQ(matrix.data.size(), 6U);
}

TEST(MatrixT, ResizeToANegativeProductIsBadAllocAndLeavesTheMatrix) {
    MatrixT<double> matrix = counted(2, 2);
    EXPECT_THROW(matrix.resize(-1, 3), std::bad_alloc);
    EXPECT_THROW(matrix.resize(3, -1), std::bad_alloc);
    // 46341^2 = 2147488281 = 2^31 + 4633, negative in 32 bits.
    EXPECT_THROW(matrix.resize(46341, 46341), std::bad_alloc);
    EXPECT_EQ(matrix.rows, 2);
    EXPECT_EQ(matrix.cols, 2);
    EXPECT_TRUE(bitEqual({1, 2, 3, 4}, matrix.data));
}

TEST(MatrixT, CopyDuplicatesTheStorage) {
    MatrixT<double> original = counted(2, 3);
    MatrixT<double> copy(original);
    EXPECT_TRUE(bitEqual(original, copy));
    EXPECT_NE(copy.data.data(), original.data.data());
    copy(0, 0) = 100.0;
    original(1, 2) = 200.0;
    EXPECT_EQ(original(0, 0), 1.0);
    EXPECT_EQ(copy(1, 2), 6.0);
}

TEST(MatrixT, PassedByValueLeavesTheCallersMatrix) {
    const MatrixT<double> matrix = counted(2, 2);
    EXPECT_EQ(overwritten(matrix), 1.0);
    EXPECT_TRUE(bitEqual(counted(2, 2), matrix));
}

TEST(MatrixT, AssignmentTakesShapeAndValues) {
    MatrixT<double> target = counted(4, 1);
    const MatrixT<double> source = counted(2, 3);
    target = source;
    EXPECT_TRUE(bitEqual(source, target));
    EXPECT_NE(target.data.data(), source.data.data());
    const MatrixT<double> smaller = counted(1, 2);
    target = smaller;
    EXPECT_TRUE(bitEqual(smaller, target));
}

TEST(MatrixT, AssignmentReturnsTheTarget) {
    MatrixT<double> target;
    const MatrixT<double> source = counted(1, 2);
    static_assert(std::is_same_v<decltype(target = source), MatrixT<double>&>);
    EXPECT_EQ(&(target = source), &target);
}

TEST(MatrixT, AssignmentToItselfChangesNothing) {
    MatrixT<double> matrix = counted(2, 3);
    const MatrixT<double>& same = matrix;
    matrix = same;
    EXPECT_TRUE(bitEqual(counted(2, 3), matrix));
}

TEST(MatrixT, AssignmentOfAnEmptyMatrixEmptiesTheTarget) {
    MatrixT<double> target = counted(2, 3);
    const MatrixT<double> empty;
    target = empty;
    EXPECT_EQ(target.rows, 0);
    EXPECT_EQ(target.cols, 0);
    EXPECT_TRUE(target.data.empty());
}

TEST(MatrixT, AssignmentReusesStorageThatSuffices) {
    MatrixT<double> target = counted(3, 3);
    const double* storage = target.data.data();
    const MatrixT<double> source = counted(2, 4);
    target = source;
    EXPECT_EQ(target.data.data(), storage);
    EXPECT_TRUE(bitEqual(source, target));
}

TEST(MatrixT, AssignmentCopiesAStorageThatItsShapeDoesNotFit) {
    MatrixT<double> source = counted(2, 2);
    source.data.push_back(9.0);
    MatrixT<double> target = counted(2, 2);
    target = source;
    EXPECT_TRUE(bitEqual({1, 2, 3, 4, 9}, target.data));
    MatrixT<double> other = counted(1, 7);
    other = source;
    EXPECT_EQ(other.rows, 2);
    EXPECT_EQ(other.cols, 2);
    EXPECT_TRUE(bitEqual({1, 2, 3, 4, 9}, other.data));
}

TEST(MatrixT, MovedFromMatrixIsZeroByZero) {
    MatrixT<double> source = counted(2, 3);
    MatrixT<double> taken(std::move(source));
    EXPECT_TRUE(bitEqual(counted(2, 3), taken));
    EXPECT_EQ(source.rows, 0);
    EXPECT_EQ(source.cols, 0);
    EXPECT_TRUE(source.data.empty());

    MatrixT<double> target = counted(1, 1);
    target = std::move(taken);
    EXPECT_TRUE(bitEqual(counted(2, 3), target));
    EXPECT_EQ(taken.rows, 0);
    EXPECT_EQ(taken.cols, 0);
    EXPECT_TRUE(taken.data.empty());
}

TEST(MatrixT, SwapExchangesShapesAndValues) {
    MatrixT<double> one = counted(2, 3);
    MatrixT<double> other = counted(1, 4);
    one.swap(other);
    EXPECT_TRUE(bitEqual(counted(1, 4), one));
    EXPECT_TRUE(bitEqual(counted(2, 3), other));
}

TEST(MatrixT, ConstructionWithAShapeFillsWithZeros) {
    const MatrixT<double> matrix(2, 2);
    EXPECT_EQ(matrix.rows, 2);
    EXPECT_EQ(matrix.cols, 2);
    EXPECT_TRUE(bitEqual({0, 0, 0, 0}, matrix.data));
    EXPECT_THROW(MatrixT<double>(-1, 1), std::bad_alloc);
}

}  // namespace
