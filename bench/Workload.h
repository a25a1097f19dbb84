#ifndef VESK_BENCH_WORKLOAD_H
#define VESK_BENCH_WORKLOAD_H

#include <vesk/hmm/HMM.h>
#include <vesk/leftright/LeftRightHMM.h>

#include <cstdint>
#include <random>
#include <vector>

namespace Vesk::Bench {

using Sequence = std::vector<int>;

/// Seeded models and sequences, the same in every run.
class Workload {
public:
    explicit Workload(std::uint64_t seed) : engine(seed) {}

    /// In (0, 1).
    double uniform() { return (static_cast<double>(engine() >> 11) + 0.5) * 0x1p-53; }

    Sequence sequence(int M, int T) {
        Sequence symbols(static_cast<std::size_t>(T));
        for (int& symbol : symbols) symbol = static_cast<int>(uniform() * M);
        return symbols;
    }

    std::vector<Sequence> sequences(int count, int M, int T) {
        std::vector<Sequence> all;
        for (int k = 0; k < count; ++k) all.push_back(sequence(M, T));
        return all;
    }

    /// Every transition is possible.
    ML::HMM dense(int N, int M) {
        ML::HMM model(N, M);
        fillWithDistribution(model.pi.data(), N);
        for (int i = 0; i < N; ++i) {
            fillWithDistribution(&model.a(i, 0), N);
            fillWithDistribution(&model.b(i, 0), M);
        }
        return model;
    }

    ML::LeftRightHMM leftRight(int N, int M, int delta) {
        ML::LeftRightHMM model(N, M, delta);
        model.estimate(ML::HMM::EqualSegments, {});
        for (int i = 0; i < N; ++i) {
            fillWithDistribution(&model.a(i, i), std::min(delta + 1, N - i));
            fillWithDistribution(&model.b(i, 0), M);
        }
        return model;
    }

private:
    void fillWithDistribution(double* values, int count) {
        double sum = 0.0;
        for (int i = 0; i < count; ++i) sum += values[i] = 0.1 + uniform();
        for (int i = 0; i < count; ++i) values[i] /= sum;
    }

    std::mt19937_64 engine;
};

}  // namespace Vesk::Bench

#endif
