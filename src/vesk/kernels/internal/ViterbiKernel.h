// Steps of the Viterbi algorithm.
#ifndef VESK_KERNELS_INTERNAL_VITERBIKERNEL_H
#define VESK_KERNELS_INTERNAL_VITERBIKERNEL_H

#include <vesk/kernels/internal/Vector.h>

namespace Vesk::Kernels {
namespace {

void viterbi(const double* score, const double* logA, const double* logE, int lo, int hi,
             double* next, int* from, int N, int P) {
    inBlocks(P, [=](auto vectors, int j) {
        constexpr int B = vectors.count;
        V least[B];
        Index state[B] = {};
        unrolled<B>([&](int v) { least[v] = splat(score[0]) - load(logA + j + v * L); });
        const int last = j + B * L - 1 - lo < N ? j + B * L - lo : N;
        for (int i = j - hi > 1 ? j - hi : 1; i < last; ++i) {
            const V x = splat(score[i]);
            const Index index = splatIndex(i);
            const double* row = logA + static_cast<std::ptrdiff_t>(P) * i + j;
            unrolled<B>([&](int v) {
                const V cost = x - load(row + v * L);
                const auto less = least[v] > cost;
                least[v] = less ? cost : least[v];
                state[v] = less ? index : state[v];
            });
        }
        unrolled<B>([&](int v) {
            store(next + j + v * L, least[v] - load(logE + j + v * L));
            storeIndices(from + j + v * L, state[v]);
        });
    });
}

}  // namespace
}  // namespace Vesk::Kernels

#endif
