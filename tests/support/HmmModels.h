#ifndef VESK_TESTS_SUPPORT_HMMMODELS_H
#define VESK_TESTS_SUPPORT_HMMMODELS_H

#include <support/BitEqual.h>
#include <support/HmmReference.h>
#include <support/Random.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <string>
#include <vector>

/// The same general model for the library and for the reference, and comparisons between the two.
namespace Vesk::Test {

using Matrix = Vesk::Math::MatrixT<double>;

inline Matrix toMatrix(const Reference::Table& table, int cols) {
    Matrix matrix;
    matrix.resize(static_cast<int>(table.size()), cols);
    std::size_t position = 0;
    for (const Reference::Vector& row : table) {
        for (double value : row) matrix.data[position++] = value;
    }
    return matrix;
}

inline Matrix toMatrix(const Reference::Table& table) {
    return toMatrix(table, table.empty() ? 0 : static_cast<int>(table[0].size()));
}

/// A matrix from the values of its rows.
inline Matrix matrixOf(const Reference::Table& rows) { return toMatrix(rows); }

/// Does not seed at its first draw: the test has the generator to itself.
inline Vesk::ML::HMM modelOf(const Reference::Model& model) {
    Vesk::ML::HMM result(model.N, model.M, model.D);
    result.name = model.name;
    result.vocab = toMatrix(model.vocab, model.D);
    result.pi = model.pi;
    result.a = toMatrix(model.a, model.N);
    result.b = toMatrix(model.b, model.M);
    result.needsSeed = false;
    return result;
}

inline testing::AssertionResult bitEqual(const Reference::Table& expected, int cols,
                                         const Matrix& actual) {
    return bitEqual(toMatrix(expected, cols), actual);
}

/// Every field of the general model, parameters bit for bit.
inline testing::AssertionResult modelsEqual(const Reference::Model& expected,
                                            const Vesk::ML::HMM& actual) {
    if (expected.name != actual.name) {
        return testing::AssertionFailure() << "name: " << actual.name;
    }
    if (static_cast<unsigned int>(expected.N) != actual.numStates) {
        return testing::AssertionFailure() << "numStates: " << actual.numStates;
    }
    if (static_cast<unsigned int>(expected.M) != actual.vocabSize) {
        return testing::AssertionFailure() << "vocabSize: " << actual.vocabSize;
    }
    if (expected.D != actual.dimension) {
        return testing::AssertionFailure() << "dimension: " << actual.dimension;
    }
    if (auto same = bitEqual(toMatrix(expected.vocab, expected.D), actual.vocab); !same) {
        return same << " in vocab";
    }
    if (auto same = bitEqual(expected.pi, actual.pi); !same) return same << " in pi";
    if (auto same = bitEqual(toMatrix(expected.a, expected.N), actual.a); !same) {
        return same << " in a";
    }
    if (auto same = bitEqual(toMatrix(expected.b, expected.M), actual.b); !same) {
        return same << " in b";
    }
    return testing::AssertionSuccess();
}

/// Every field of two models, the seed's state and the values a symbol included.
inline testing::AssertionResult modelsEqual(const Vesk::ML::HMM& expected,
                                            const Vesk::ML::HMM& actual) {
    if (expected.name != actual.name || expected.numStates != actual.numStates ||
        expected.vocabSize != actual.vocabSize || expected.dimension != actual.dimension ||
        expected.needsSeed != actual.needsSeed) {
        return testing::AssertionFailure() << "name, sizes or needsSeed differ";
    }
    if (auto same = bitEqual(expected.vocab, actual.vocab); !same) return same << " in vocab";
    if (auto same = bitEqual(expected.pi, actual.pi); !same) return same << " in pi";
    if (auto same = bitEqual(expected.a, actual.a); !same) return same << " in a";
    if (auto same = bitEqual(expected.b, actual.b); !same) return same << " in b";
    if (auto same = bitEqual(expected.vocabValues, actual.vocabValues); !same) {
        return same << " in vocabValues";
    }
    return testing::AssertionSuccess();
}

inline Parameters randomKind(Random& random) {
    return allParameterKinds[random.integer(0, static_cast<int>(std::size(allParameterKinds)) - 1)];
}

inline Reference::Table randomTable(Random& random, int rows, int cols, Parameters kind) {
    Reference::Table table;
    for (int r = 0; r < rows; ++r) table.push_back(randomRow(random, cols, kind));
    return table;
}

/// An N x M model whose `pi`, `a` and `b` are all of the kind.
inline Reference::Model randomModel(Random& random, int N, int M, Parameters kind) {
    Reference::Model model = Reference::makeModel(N, M);
    model.pi = randomRow(random, N, kind);
    model.a = randomTable(random, N, N, kind);
    model.b = randomTable(random, N, M, kind);
    return model;
}

/// As above, each table of a kind of its own every other time.
inline Reference::Model randomModel(Random& random, int N, int M) {
    Reference::Model model = randomModel(random, N, M, randomKind(random));
    if (random.chance(0.5)) {
        model.pi = randomRow(random, N, randomKind(random));
        model.a = randomTable(random, N, N, randomKind(random));
        model.b = randomTable(random, N, M, randomKind(random));
    }
    return model;
}

}  // namespace Vesk::Test

#endif
