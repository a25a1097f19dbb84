#include <support/HmmShrinking.h>

#include <vesk/math/MatrixT.h>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cstddef>
#include <utility>
#include <vector>

namespace {

using Vesk::Test::bitEqual;
using Vesk::Test::Matrix;

/// A matrix as it is described: a shape and flat values.
struct Plain {
    std::vector<double> values;
    int rows = 0;
    int cols = 0;

    void resize(int r, int c) {
        std::vector<double> next;
        for (int position = 0; position < r * c; ++position) {
            const auto p = static_cast<std::size_t>(position);
            next.push_back(p < values.size() ? values[p] : 0.0);
        }
        values = next;
        rows = r;
        cols = c;
    }
};

bool same(const Plain& plain, const Matrix& matrix) {
    return plain.rows == matrix.rows && plain.cols == matrix.cols &&
           bool(bitEqual(plain.values, matrix.data));
}

std::pair<int, int> anyShape() { return {*rc::gen::inRange(0, 9), *rc::gen::inRange(0, 9)}; }

/// Of the given shape, holding first, first + 1, ...
std::pair<Plain, Matrix> counted(std::pair<int, int> shape, double first) {
    Plain plain;
    Matrix matrix;
    plain.resize(shape.first, shape.second);
    matrix.resize(shape.first, shape.second);
    for (std::size_t i = 0; i < plain.values.size(); ++i) {
        plain.values[i] = matrix.data[i] = first + static_cast<double>(i);
    }
    return {plain, matrix};
}

RC_GTEST_PROP(MatrixShrinking, ResizingKeepsFlatPositionsHoweverOften, ()) {
    auto [plain, matrix] = counted(anyShape(), 1.0);
    const int times = *rc::gen::inRange(1, 8);
    for (int i = 0; i < times; ++i) {
        const auto [rows, cols] = anyShape();
        plain.resize(rows, cols);
        matrix.resize(rows, cols);
        RC_ASSERT(same(plain, matrix));
    }
}

RC_GTEST_PROP(MatrixShrinking, AssignmentGivesTheOthersShapeAndValues, ()) {
    auto [targetPlain, target] = counted(anyShape(), 1.0);
    const auto [sourcePlain, source] = counted(anyShape(), 1000.0);
    RC_ASSERT(same(targetPlain, target));
    target = source;
    RC_ASSERT(same(sourcePlain, target));
    RC_ASSERT(same(sourcePlain, source));
    const Matrix& itself = target;
    target = itself;
    RC_ASSERT(same(sourcePlain, target));
}

RC_GTEST_PROP(MatrixShrinking, ElementsLieRowByRow, ()) {
    const int rows = *rc::gen::inRange(1, 9);
    const int cols = *rc::gen::inRange(1, 9);
    auto [plain, matrix] = counted({rows, cols}, 0.0);
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < cols; ++c) {
            RC_ASSERT(matrix(r, c) == static_cast<double>(cols * r + c));
            matrix(r, c) = -1.0;
            RC_ASSERT(matrix.data[static_cast<std::size_t>(cols * r + c)] == -1.0);
        }
    }
}

}  // namespace
