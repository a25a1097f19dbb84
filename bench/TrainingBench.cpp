#include "Pair.h"
#include "Workload.h"
#include "plain/Training.h"

#include <string>

namespace Vesk::Bench {
namespace {

/// One iteration, whose candidate is dropped: every run trains the same model.
void multipleRow(const std::string& row, const ML::LeftRightHMM& model,
                 const std::vector<Sequence>& sequences) {
    const auto shared = std::make_shared<ML::LeftRightHMM>(model);
    shared->convergenceThreshold = 1e30F;
    const auto set = std::make_shared<std::vector<Sequence>>(sequences);
    ours(row, [=] {
        double gain = 0.0;
        shared->trainMultiple(*set, 1, [&](const ML::TrainingStep& step) {
            gain = step.newLogLikelihood - step.oldLogLikelihood;
            return true;
        });
        return gain;
    });
    plain(row, [=] {
        ML::LeftRightHMM copy = *shared;
        return Plain::trainOnce(copy, *set);
    });
    peer(row, *shared, [=](const Peer& it) { return it.trainOnce(*set); });
}

template <typename Model>
void singleRow(const std::string& row, const Model& model, const Sequence& o) {
    const auto shared = std::make_shared<Model>(model);
    ours(row, [=] {
        Model copy = *shared;
        copy.baumWelch(o, static_cast<int>(o.size()), 1);
        return copy.a(0, 0);
    });
    plain(row, [=] {
        Model copy = *shared;
        return Plain::trainOnce(copy, o);
    });
}

/// A dense model behind the left-right interface, which trains on several sequences.
ML::LeftRightHMM denseModel(Workload& random, int N, int M) {
    ML::LeftRightHMM model(N, M, N - 1);
    const ML::HMM dense = random.dense(N, M);
    model.pi = dense.pi;
    model.a = dense.a;
    model.b = dense.b;
    return model;
}

}  // namespace

void registerTraining() {
    Workload random(2);
    const ML::LeftRightHMM small = random.leftRight(8, 16, 2);
    multipleRow("train left-right N=8 M=16 50x60", small, random.sequences(50, 16, 60));
    multipleRow("train left-right N=16 M=32 200x100", random.leftRight(16, 32, 2),
                random.sequences(200, 32, 100));
    multipleRow("train left-right N=64 M=64 50x500", random.leftRight(64, 64, 2),
                random.sequences(50, 64, 500));
    multipleRow("train dense N=64 M=64 50x500", denseModel(random, 64, 64),
                random.sequences(50, 64, 500));
    const Sequence o = random.sequence(16, 60);
    singleRow("LeftRightHMM::baumWelch N=8 T=60", small, o);
    singleRow("HMM::baumWelch N=8 T=60", random.dense(8, 16), o);
}

}  // namespace Vesk::Bench
