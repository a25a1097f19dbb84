#ifndef VESK_HMM_INTERNAL_PARAMETERS_H
#define VESK_HMM_INTERNAL_PARAMETERS_H

#include <vesk/hmm/HMM.h>
#include <vesk/math/internal/Divide.h>
#include <vesk/math/internal/Table.h>

#include <cassert>
#include <cstdint>
#include <new>
#include <vector>

namespace Vesk::ML::internal {

using Vesk::Math::MatrixT;
using Vesk::Math::VectorT;
using Vesk::Math::internal::covers;
using Vesk::Math::internal::divide;
using Vesk::Math::internal::Table;

/// A model's parameters as the algorithms see them: borrowed, and known to lie inside the model's
/// tables.
struct Parameters {
    int N;
    const double* pi;       ///< N
    Table<const double> a;  ///< N x N
    Table<const double> b;  ///< N x (at least the symbols that occur)
};

/// Which tables a forward or backward pass over T symbols reads: one symbol needs no transitions,
/// none needs nothing, and the backward table no initial probabilities.
enum class Direction { Forward, Backward };

/// What a pass over T symbols of an alphabet reads of a model's tables.
struct PassNeeds {
    PassNeeds(const HMM& model, std::int64_t alphabet, int T,
              Direction direction = Direction::Forward)
        : N(model.numStates),
          symbols(alphabet),
          pi(direction == Direction::Forward && T >= 1),
          a(T >= 2),
          b(pi || a) {}

    bool coveredBy(const HMM& model) const {
        return (!pi || N <= static_cast<std::int64_t>(model.pi.size())) &&
               (!a || covers(model.a, N, N)) && (!b || covers(model.b, N, symbols));
    }

    std::int64_t N;
    std::int64_t symbols;
    bool pi;
    bool a;
    bool b;
};

/// Of a model for such a pass; what it does not read is left out. std::out_of_range where a table
/// that it reads is too small.
inline Parameters parametersFor(const HMM& model, std::int64_t symbols, int T,
                                Direction direction = Direction::Forward) {
    const PassNeeds needs(model, symbols, T, direction);
    if (!needs.coveredBy(model)) Vesk::Math::internal::throwTableTooSmall();
    Parameters p{static_cast<int>(needs.N), nullptr, {}, {}};
    if (needs.pi) p.pi = model.pi.data();
    if (needs.a) p.a = Vesk::Math::internal::table(model.a, needs.N, needs.N);
    if (needs.b) p.b = Vesk::Math::internal::table(model.b, needs.N, symbols);
    return p;
}

/// Of a model, all of them. std::out_of_range where its tables are too small.
inline Parameters parametersOf(const HMM& model) {
    return parametersFor(model, model.vocabSize, 2);
}

/// Of parameters that the library's caller passed in, whose shapes are the caller's duty; without
/// initial probabilities. std::bad_alloc for a negative N, whose tables no allocator can make.
inline Parameters givenParameters(int N, const MatrixT<double>& a, const MatrixT<double>& b) {
    if (N < 0) throw std::bad_alloc();
    return {N, nullptr, Vesk::Math::internal::givenTable(a, N, N),
            Vesk::Math::internal::givenTable(b, N, b.cols)};
}

/// The same with initial probabilities.
inline Parameters givenParameters(int N, const std::vector<double>& pi, const MatrixT<double>& a,
                                  const MatrixT<double>& b) {
    Parameters parameters = givenParameters(N, a, b);
    assert(static_cast<std::size_t>(N) <= pi.size());
    parameters.pi = pi.data();
    return parameters;
}

/// Of a model in training that has not been adopted: a is N x N, b is N x M.
inline Parameters candidate(const double* pi, const MatrixT<double>& a, const MatrixT<double>& b) {
    return {a.rows, pi, Vesk::Math::internal::givenTable(a, a.rows, a.cols),
            Vesk::Math::internal::givenTable(b, b.rows, b.cols)};
}

/// The first T symbols of a sequence, which the caller has to keep within the sequence and the
/// alphabet.
inline const int* observed([[maybe_unused]] const std::vector<int>& observation,
                           [[maybe_unused]] int T, [[maybe_unused]] std::int64_t M) {
#ifndef NDEBUG
    assert(T <= static_cast<std::int64_t>(observation.size()));
    for (int t = 0; t < T; ++t) {
        const int symbol = observation[static_cast<std::size_t>(t)];
        assert(symbol >= 0 && symbol < M);
    }
#endif
    return observation.data();
}

}  // namespace Vesk::ML::internal

#endif
