#ifndef VESK_TESTS_SUPPORT_LEFTRIGHTMODELS_H
#define VESK_TESTS_SUPPORT_LEFTRIGHTMODELS_H

#include <vesk/leftright/LeftRightHMM.h>

#include <support/BitEqual.h>
#include <support/LeftRightReference.h>
#include <support/Random.h>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace Vesk::Test {

using Sequences = std::vector<std::vector<int>>;

/// rows x cols values, row after row.
inline Vesk::Math::MatrixT<double> matrixOf(const Reference::Table& table, int rows, int cols) {
    Vesk::Math::MatrixT<double> matrix;
    matrix.resize(rows, cols);
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < cols; ++c) {
            matrix.data[static_cast<std::size_t>(cols * r + c)] =
                table[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)];
        }
    }
    return matrix;
}

/// The shape is taken from the table, which must have a row.
inline Vesk::Math::MatrixT<double> matrixOf(const Reference::Table& table) {
    return matrixOf(table, static_cast<int>(table.size()), static_cast<int>(table[0].size()));
}

inline Reference::Table tableOf(const Vesk::Math::MatrixT<double>& matrix) {
    Reference::Table table = Reference::zeros(matrix.rows, matrix.cols);
    for (int r = 0; r < matrix.rows; ++r) {
        for (int c = 0; c < matrix.cols; ++c) {
            table[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)] =
                matrix.data[static_cast<std::size_t>(matrix.cols * r + c)];
        }
    }
    return table;
}

inline Vesk::ML::LeftRightHMM libraryModel(const Reference::LeftRightModel& reference) {
    Vesk::ML::LeftRightHMM model(reference.N, reference.M, reference.delta);
    model.name = reference.name;
    model.dimension = reference.D;
    model.vocab = matrixOf(reference.vocab);
    model.pi = reference.pi;
    model.a = matrixOf(reference.a);
    model.b = matrixOf(reference.b);
    model.vocabValues = reference.vocabValues;
    model.stateSymbols = reference.stateSymbols;
    model.convergenceThreshold = reference.convergenceThreshold;
    return model;
}

/// Every field that an algorithm or a file could have touched, bit for bit.
inline testing::AssertionResult sameModel(const Reference::LeftRightModel& expected,
                                          const Vesk::ML::LeftRightHMM& actual) {
    const auto fail = [](const char* field) {
        return testing::AssertionFailure() << field << ": ";
    };
    if (expected.name != actual.name) {
        return fail("name") << "expected '" << expected.name << "', got '" << actual.name << "'";
    }
    if (static_cast<unsigned int>(expected.N) != actual.numStates) {
        return fail("numStates") << "expected " << expected.N << ", got " << actual.numStates;
    }
    if (static_cast<unsigned int>(expected.M) != actual.vocabSize) {
        return fail("vocabSize") << "expected " << expected.M << ", got " << actual.vocabSize;
    }
    if (expected.D != actual.dimension) {
        return fail("dimension") << "expected " << expected.D << ", got " << actual.dimension;
    }
    if (expected.delta != actual.delta) {
        return fail("delta") << "expected " << expected.delta << ", got " << actual.delta;
    }
    if (!sameBits(expected.convergenceThreshold, actual.convergenceThreshold)) {
        return fail("convergenceThreshold") << actual.convergenceThreshold;
    }
    if (expected.stateSymbols != actual.stateSymbols) return fail("stateSymbols") << "differ";
    if (auto r = bitEqual(matrixOf(expected.vocab), actual.vocab); !r) {
        return fail("vocab") << r.message();
    }
    if (auto r = bitEqual(expected.pi, actual.pi); !r) return fail("pi") << r.message();
    if (auto r = bitEqual(matrixOf(expected.a), actual.a); !r) return fail("a") << r.message();
    if (auto r = bitEqual(matrixOf(expected.b), actual.b); !r) return fail("b") << r.message();
    if (auto r = bitEqual(expected.vocabValues, actual.vocabValues); !r) {
        return fail("vocabValues") << r.message();
    }
    return testing::AssertionSuccess();
}

inline testing::AssertionResult sameModel(const Vesk::ML::LeftRightHMM& expected,
                                          const Vesk::ML::LeftRightHMM& actual) {
    Reference::LeftRightModel reference = Reference::makeLeftRight(
        static_cast<int>(expected.numStates), static_cast<int>(expected.vocabSize), expected.delta);
    reference.name = expected.name;
    reference.D = expected.dimension;
    reference.vocab = tableOf(expected.vocab);
    reference.pi = expected.pi;
    reference.a = tableOf(expected.a);
    reference.b = tableOf(expected.b);
    reference.vocabValues = expected.vocabValues;
    reference.stateSymbols = expected.stateSymbols;
    reference.convergenceThreshold = expected.convergenceThreshold;
    return sameModel(reference, actual);
}

inline Reference::Table randomTable(Random& random, int rows, int cols, Parameters kind) {
    Reference::Table table;
    for (int r = 0; r < rows; ++r) table.push_back(randomRow(random, cols, kind));
    return table;
}

/// How the transitions of a random model are shaped.
enum class Shape {
    LeftRight,  ///< starts in state 0, exact zeros outside i .. i + delta, as the estimate makes it
    Full        ///< any start, any transition
};

struct ModelKind {
    Shape shape;
    Parameters parameters;
};

/// Every shape with every kind of numbers.
inline std::vector<ModelKind> allModelKinds() {
    std::vector<ModelKind> kinds;
    for (const Shape shape : {Shape::LeftRight, Shape::Full}) {
        for (const Parameters parameters : allParameterKinds) kinds.push_back({shape, parameters});
    }
    return kinds;
}

inline std::ostream& operator<<(std::ostream& out, const ModelKind& kind) {
    const char* const parameters[] = {"Stochastic", "Sparse", "Unnormalised", "Tiny", "Odd"};
    return out << (kind.shape == Shape::LeftRight ? "LeftRight" : "Full")
               << parameters[static_cast<int>(kind.parameters)];
}

inline Reference::LeftRightModel randomModel(Random& random, int N, int M, Shape shape,
                                             Parameters kind) {
    Reference::LeftRightModel model =
        Reference::makeLeftRight(N, M, random.integer(shape == Shape::LeftRight ? 0 : -1, N));
    model.a = randomTable(random, N, N, kind);
    model.b = randomTable(random, N, M, kind);
    model.pi = randomRow(random, N, kind);
    if (shape == Shape::LeftRight) {
        for (int i = 0; i < N; ++i) {
            Reference::Vector& row = model.a[static_cast<std::size_t>(i)];
            double sum = 0.0;
            for (int j = 0; j < N; ++j) {
                double& entry = row[static_cast<std::size_t>(j)];
                if (j < i || j > i + model.delta) entry = 0.0;
                sum += entry;
            }
            if (kind != Parameters::Stochastic && kind != Parameters::Sparse) continue;
            if (sum == 0.0) {
                row[static_cast<std::size_t>(i)] = 1.0;
            } else {
                for (double& entry : row) entry /= sum;
            }
        }
        for (int i = 0; i < N; ++i) model.pi[static_cast<std::size_t>(i)] = i == 0 ? 1.0 : 0.0;
    }
    return model;
}

/// K sequences of minLength .. maxLength symbols in 0 .. M-1.
inline Sequences randomSequences(Random& random, int K, int minLength, int maxLength, int M) {
    Sequences sequences;
    for (int s = 0; s < K; ++s) {
        sequences.push_back(random.symbols(random.integer(minLength, maxLength), M));
    }
    return sequences;
}

/// A NaN's sign is free, in text too.
inline std::string withoutNanSigns(std::string text) {
    for (std::size_t at = text.find("-nan"); at != std::string::npos; at = text.find("-nan")) {
        text.erase(at, 1);
    }
    return text;
}

}  // namespace Vesk::Test

#endif
