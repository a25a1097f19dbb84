#include "Peer.h"

extern "C" {
#include <ghmm/foba.h>
#include <ghmm/ghmm.h>
#include <ghmm/model.h>
#include <ghmm/reestimate.h>
#include <ghmm/sequence.h>
#include <ghmm/viterbi.h>
}

#include <cstdlib>
#include <stdexcept>

// The peer's library asks for these at its start, whichever package of linear algebra is installed;
// its discrete models call none of them.
extern "C" {
int clapack_dgetrf() { std::abort(); }
int clapack_dgetri() { std::abort(); }
int clapack_dpotrf() { std::abort(); }
}

namespace Vesk::Bench {

struct Peer::Implementation {
    ghmm_dmodel* model = nullptr;
};

Peer::Peer(const ML::HMM& model) : impl(std::make_unique<Implementation>()) {
    const int N = static_cast<int>(model.numStates);
    const int M = static_cast<int>(model.vocabSize);
    std::vector<int> in(model.numStates);
    std::vector<int> out(model.numStates);
    for (int i = 0; i < N; ++i) {
        for (int j = 0; j < N; ++j) {
            if (model.a(i, j) == 0.0) continue;
            ++out[i];
            ++in[j];
        }
    }
    ghmm_dmodel* peer = ghmm_dmodel_calloc(M, N, GHMM_kDiscreteHMM, in.data(), out.data());
    if (peer == nullptr) throw std::runtime_error("the peer makes no model");
    impl->model = peer;
    peer->N = N;
    peer->M = M;
    peer->prior = -1.0;
    std::vector<int> filled(model.numStates);
    for (int i = 0; i < N; ++i) {
        ghmm_dstate& state = peer->s[i];
        state.pi = model.pi[i];
        state.in_states = in[i];
        state.out_states = out[i];
        for (int k = 0; k < M; ++k) state.b[k] = model.b(i, k);
        int edge = 0;
        for (int j = 0; j < N; ++j) {
            if (model.a(i, j) == 0.0) continue;
            state.out_id[edge] = j;
            state.out_a[edge++] = model.a(i, j);
            peer->s[j].in_id[filled[j]] = i;
            peer->s[j].in_a[filled[j]++] = model.a(i, j);
        }
    }
}

Peer::~Peer() { ghmm_dmodel_free(&impl->model); }

double Peer::logLikelihood(const std::vector<int>& o) const {
    double result = 0.0;
    ghmm_dmodel_logp(impl->model, o.data(), static_cast<int>(o.size()), &result);
    return result;
}

std::vector<int> Peer::viterbi(const std::vector<int>& o) const {
    int length = 0;
    double result = 0.0;
    int* path = ghmm_dmodel_viterbi(impl->model, const_cast<int*>(o.data()),
                                    static_cast<int>(o.size()), &length, &result);
    std::vector<int> states(path, path + length);
    std::free(path);
    return states;
}

double Peer::trainOnce(const std::vector<std::vector<int>>& sequences) const {
    ghmm_dmodel* model = ghmm_dmodel_copy(impl->model);
    std::vector<int*> symbols;
    std::vector<int> lengths;
    std::vector<double> weights(sequences.size(), 1.0);
    for (const std::vector<int>& sequence : sequences) {
        symbols.push_back(const_cast<int*>(sequence.data()));
        lengths.push_back(static_cast<int>(sequence.size()));
    }
    ghmm_dseq set{};
    set.seq = symbols.data();
    set.seq_len = lengths.data();
    set.seq_w = weights.data();
    set.seq_number = static_cast<long>(sequences.size());
    set.total_w = static_cast<double>(sequences.size());
    ghmm_dmodel_baum_welch_nstep(model, &set, 1, 0.0);
    const double result = model->s[0].out_a[0];
    ghmm_dmodel_free(&model);
    return result;
}

}  // namespace Vesk::Bench
