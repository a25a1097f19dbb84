#include <vesk/leftright/LeftRightHMM.h>

#include <vesk/math/internal/Divide.h>
#include <vesk/math/internal/Table.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iostream>
#include <stdexcept>
#include <vector>

namespace Vesk::ML {
namespace {

using Sequence = std::vector<int>;
using Table = Vesk::Math::internal::Table<double>;

/// The least probability of a symbol that a state is not said to emit.
constexpr double emissionFloor = 0.001;

/// State 0 is the start; state i goes to i .. i + delta with equal probability. All comparisons are
/// unsigned, so a negative delta wraps around.
void estimateStructure(std::vector<double>& pi, const Table& a, int delta) {
    const auto N = static_cast<unsigned int>(a.rows);
    for (unsigned int i = 0; i < N; ++i) {
        pi[i] = i == 0 ? 1.0 : 0.0;
        const unsigned int last = i + static_cast<unsigned int>(delta);
        const double share = last < N ? 1.0 / (delta + 1.0) : 1.0 / (N - i);
        double* row = a.row(static_cast<int>(i));
        for (unsigned int j = 0; j < N; ++j) row[j] = j >= i && j <= last ? share : 0.0;
    }
}

/// A state's row of b: the floor for every symbol not in its list, the rest in equal shares.
void estimateFromList(const std::vector<int>& list,
                      const Vesk::Math::internal::Table<const double>& vocab, double* row, int M) {
    double floorSum = 0.0;
    int allowed = 0;
    for (int k = 0; k < M; ++k) {
        const double value = vocab(k, 0);
        const bool listed = std::any_of(list.begin(), list.end(), [value](int symbol) {
            return static_cast<double>(symbol) == value;
        });
        row[k] = listed ? 0.0 : emissionFloor;
        if (listed) {
            ++allowed;
        } else {
            floorSum += emissionFloor;
        }
    }
    const double share = (1.0 - floorSum) / allowed;
    std::replace(row, row + M, 0.0, share);
}

/// How often each state's segments showed each symbol.
class SegmentCounts {
public:
    SegmentCounts(int numStates, int vocabSize)
        : N(numStates),
          M(vocabSize),
          ofState(static_cast<std::size_t>(N)),
          ofSymbol(static_cast<std::size_t>(N) * static_cast<std::size_t>(M)) {}

    /// Cuts the sequence into N segments of nearly equal length, state by state. The symbols left
    /// over lengthen the first and the last segments by one, the first getting the smaller half.
    void add(const Sequence& s) {
        const auto L = static_cast<int>(s.size());
        // Lengths are computed in single precision: part of the result for very long sequences.
        const double segLen = std::floor(static_cast<float>(L) / static_cast<float>(N));
        const int rem = static_cast<int>(static_cast<double>(L) - static_cast<double>(N) * segLen);
        const int head = rem > 1 ? static_cast<int>(std::floor(static_cast<float>(rem) * 0.5F)) : 0;
        int closed = 0;
        int headClosed = 0;
        int normalClosed = 0;
        int begin = 0;
        for (int t = 0; t < L; ++t) {
            const bool isHead = head > headClosed;
            const bool isTail = !isHead && normalClosed >= N - rem;
            const double limit = isHead || isTail ? segLen + 1 : segLen;
            if (t - begin < limit) {
                if (t == L - 1) count(s, begin, L, closed);
                continue;
            }
            // A segment that would begin at the last symbol is never closed: the symbol is lost.
            count(s, begin, t, closed++);
            begin = t;
            if (isHead) ++headClosed;
            if (!isHead && !isTail) ++normalClosed;
        }
    }

    void estimate(const Table& b) const {
        for (int i = 0; i < N; ++i) {
            const std::size_t state = static_cast<std::size_t>(i);
            const std::size_t first = state * static_cast<std::size_t>(M);
            for (int k = 0; k < M; ++k) {
                b(i, k) = Vesk::Math::internal::divide(
                    ofSymbol[first + static_cast<std::size_t>(k)], ofState[state]);
            }
        }
    }

private:
    void count(const Sequence& s, int begin, int end, int state) {
        if (state >= N) return;  // single precision, from 2^25 symbols a state on
        const std::size_t first = static_cast<std::size_t>(state) * static_cast<std::size_t>(M);
        for (int t = begin; t < end; ++t) {
            ++ofSymbol[first + static_cast<std::size_t>(s[static_cast<std::size_t>(t)])];
        }
        ofState[static_cast<std::size_t>(state)] += end - begin;
    }

    int N;
    int M;
    std::vector<int> ofState;
    std::vector<int> ofSymbol;
};

void requireSymbols(const std::vector<Sequence>& sequences, int M) {
    for (const Sequence& s : sequences) {
        for (const int symbol : s) {
            if (symbol < 0 || symbol >= M) {
                throw std::out_of_range("a training sequence holds a symbol outside the alphabet");
            }
        }
    }
}

}  // namespace

void LeftRightHMM::calcInitialProbs(HMM::SegmentationType type,
                                    std::vector<std::vector<int>> sequences) {
    std::cout << "LeftRightHMM::calcInitialProbs: " << static_cast<int>(type) << std::endl;
    std::cout << std::endl;
    estimate(type, sequences);
}

void LeftRightHMM::estimate(HMM::SegmentationType type,
                            const std::vector<std::vector<int>>& sequences) {
    const bool fromLists = type == StateSymbols && stateSymbols.size() == numStates;
    const bool fromSegments = type == EqualSegments;
    if (!fromLists && !fromSegments) return;

    if (pi.size() < numStates) Vesk::Math::internal::throwTableTooSmall();
    const Table transitions = Vesk::Math::internal::table(a, numStates, numStates);
    const Table emissions = Vesk::Math::internal::table(b, numStates, vocabSize);
    const auto M = static_cast<int>(vocabSize);

    if (fromLists) {
        const auto symbols =
            Vesk::Math::internal::table(static_cast<const HMM&>(*this).vocab, vocabSize, 1);
        estimateStructure(pi, transitions, delta);
        for (std::size_t i = 0; i < stateSymbols.size(); ++i) {
            estimateFromList(stateSymbols[i], symbols, emissions.row(static_cast<int>(i)), M);
        }
        return;
    }
    requireSymbols(sequences, M);
    SegmentCounts counts(static_cast<int>(numStates), M);
    for (const Sequence& s : sequences) counts.add(s);
    estimateStructure(pi, transitions, delta);
    counts.estimate(emissions);
}

}  // namespace Vesk::ML
