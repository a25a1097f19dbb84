// Every operation of the containers that allocates, with its allocation failing.

#include <support/FailingAllocator.h>

#include <vesk/math/MatrixT.h>
#include <vesk/math/VectorT.h>

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::Math::MatrixT;
using Vesk::Math::VectorT;

MatrixT<double> counted(int rows, int cols) {
    MatrixT<double> matrix(rows, cols);
    for (double& value : matrix.data) value = static_cast<double>(&value - matrix.data.data());
    return matrix;
}

void expectSame(const MatrixT<double>& expected, const MatrixT<double>& found) {
    EXPECT_EQ(expected.rows, found.rows);
    EXPECT_EQ(expected.cols, found.cols);
    EXPECT_EQ(expected.data, found.data);
}

TEST(ContainerAllocationFailure, ConstructionsReleaseWhatTheyHold) {
    const MatrixT<double> matrix = counted(3, 4);
    EXPECT_EQ(failEachAllocation([] { const MatrixT<double> made(3, 4); }), 2);
    EXPECT_EQ(failEachAllocation([&] { const MatrixT<double> copy(matrix); }), 2);
    EXPECT_EQ(failEachAllocation([] { const VectorT<double> made(3); }), 2);
    EXPECT_EQ(failEachAllocation([&] { const VectorT<double> copy(matrix.data); }), 2);
    static_assert(std::is_nothrow_move_constructible_v<MatrixT<double>>);
    static_assert(std::is_nothrow_constructible_v<VectorT<double>, std::vector<double>&&>);
}

TEST(ContainerAllocationFailure, ResizeLeavesTheMatrix) {
    const MatrixT<double> matrix = counted(3, 4);
    EXPECT_EQ(failEachAllocationOn(
                  matrix, [](MatrixT<double>& m) { m.resize(30, 40); },
                  [&](const MatrixT<double>& left) { expectSame(matrix, left); }),
              2);
}

TEST(ContainerAllocationFailure, AssignmentLeavesTheMatrix) {
    const MatrixT<double> matrix = counted(3, 4);
    for (const MatrixT<double>& larger : {counted(30, 40), counted(1, 13)}) {
        EXPECT_EQ(failEachAllocationOn(
                      matrix, [&](MatrixT<double>& m) { m = larger; },
                      [&](const MatrixT<double>& left) { expectSame(matrix, left); }),
                  2);
    }
}

}  // namespace
}  // namespace Vesk::Test
