#ifndef VESK_BENCH_PAIR_H
#define VESK_BENCH_PAIR_H

#ifdef VESK_BENCH_PEERS
#include "peer/Peer.h"
#endif

#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>

/// A row of the table of ratios is a number of benchmarks, "<row>/ours", "<row>/plain" and
/// "<row>/peer", each of which does the same work and returns a number that stands for its result.
/// "<row>/limit" does only what nobody can do sooner.
namespace Vesk::Bench {

template <typename Work>
void run(const std::string& name, Work work) {
    benchmark::RegisterBenchmark(name.c_str(), [work](benchmark::State& state) {
        for (auto _ : state) benchmark::DoNotOptimize(work());
    });
}

template <typename Work>
void ours(const std::string& row, Work work) {
    run(row + "/ours", work);
}

template <typename Work>
void plain(const std::string& row, Work work) {
    run(row + "/plain", work);
}

template <typename Work>
void limit(const std::string& row, Work work) {
    run(row + "/limit", work);
}

#ifdef VESK_BENCH_PEERS
/// Only after the peer's result was seen to be `expected`, up to rounding; NaN where there is
/// nothing to compare.
template <typename Work>
void peer(const std::string& row, const ML::HMM& model, Work work, double expected = NAN) {
    const auto shared = std::make_shared<Peer>(model);
    const double found = work(*shared);
    if (std::fabs(found - expected) > 1e-6 * std::fabs(expected)) {
        throw std::runtime_error(row + ": the peer finds " + std::to_string(found) +
                                 " where we find " + std::to_string(expected));
    }
    run(row + "/peer", [=] { return work(*shared); });
}
#else
class Peer;
template <typename Work>
void peer(const std::string&, const ML::HMM&, Work, double = NAN) {}
#endif

void registerEvaluation();
void registerTraining();
void registerRecognition();
void registerQuantizer();
void registerFiles();
void registerHost();
void registerCurves();

}  // namespace Vesk::Bench

#endif
