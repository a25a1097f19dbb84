#ifndef VESK_BENCH_PEER_H
#define VESK_BENCH_PEER_H

#include <vesk/hmm/HMM.h>

#include <memory>
#include <vector>

namespace Vesk::Bench {

/// A model of the General Hidden Markov Model library (libghmm), which visits only the
/// transitions that exist. It computes with scaled tables throughout.
class Peer {
public:
    explicit Peer(const ML::HMM& model);
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer();

    /// ln P(o).
    double logLikelihood(const std::vector<int>& o) const;

    /// The states of the best path.
    std::vector<int> viterbi(const std::vector<int>& o) const;

    /// One iteration of Baum-Welch on a copy of the model; its first transition afterwards.
    double trainOnce(const std::vector<std::vector<int>>& sequences) const;

private:
    struct Implementation;
    std::unique_ptr<Implementation> impl;
};

}  // namespace Vesk::Bench

#endif
