#include <vesk/hmm/HMM.h>

#include <vesk/math/internal/Table.h>

#include <algorithm>
#include <utility>

namespace Vesk::ML {

HMM::HMM(int states, int symbols) : HMM(states, symbols, 1) {}

HMM::HMM(int states, int symbols, int valuesEach)
    : numStates(static_cast<unsigned int>(std::max(states, 1))),
      vocabSize(static_cast<unsigned int>(std::max(symbols, 1))),
      dimension(std::max(valuesEach, 1)),
      needsSeed(true) {
    const auto N = static_cast<int>(numStates);
    const auto M = static_cast<int>(vocabSize);
    pi.resize(numStates);
    a.resize(N, N);
    b.resize(N, M);
    vocab.resize(M, dimension);
}

HMM::~HMM() = default;

void HMM::initialize(std::vector<std::vector<int>> sequences, SegmentationType type) {
    calcInitialProbs(type, std::move(sequences));
}

void HMM::calcInitialProbs(SegmentationType /*type*/, std::vector<std::vector<int>> /*sequences*/) {
    if (pi.size() < numStates) Vesk::Math::internal::throwTableTooSmall();
    const auto transitions = Vesk::Math::internal::table(a, numStates, numStates);
    const auto emissions = Vesk::Math::internal::table(b, numStates, vocabSize);
    // Integer quotients on purpose: 0 for more than one state or symbol.
    const unsigned int u = 1U / numStates;
    const unsigned int v = 1U / vocabSize;
    for (int i = 0; i < transitions.rows; ++i) {
        std::fill_n(transitions.row(i), transitions.cols, u);
        std::fill_n(emissions.row(i), emissions.cols, v);
        pi[static_cast<std::size_t>(i)] = u;
    }
}

void HMM::reset(SegmentationType /*type*/) {}

}  // namespace Vesk::ML
