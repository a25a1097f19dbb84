#include "Pair.h"
#include "Workload.h"
#include "plain/Passes.h"
#include "plain/Viterbi.h"

#include <cmath>
#include <string>

namespace Vesk::Bench {
namespace {

void forwardRow(const std::string& row, const ML::HMM& model, const Sequence& o) {
    const auto T = static_cast<int>(o.size());
    const auto shared = std::make_shared<ML::HMM>(model);
    ours(row, [=] { return shared->forwardProbability(o, T); });
    plain(row, [=] { return Plain::lastColumnSum(Plain::forward(*shared, o)); });
    peer(
        row, *shared, [=](const Peer& it) { return it.logLikelihood(o); },
        std::log(shared->forwardProbability(o, T)));
}

void viterbiRow(const std::string& row, const ML::HMM& model, const Sequence& o) {
    const auto T = static_cast<int>(o.size());
    const auto shared = std::make_shared<ML::HMM>(model);
    // The sum of the states stands for the path.
    const auto sumOf = [](const auto& states) {
        double sum = 0.0;
        for (const auto state : states) sum += state;
        return sum;
    };
    const auto path = [=] {
        const Vesk::Math::MatrixT<double> result = shared->viterbi(o, T);
        return std::vector<double>(result.data.begin() + T, result.data.end());
    };
    ours(row, [=] { return sumOf(path()); });
    plain(row, [=] { return sumOf(Plain::viterbi(*shared, o)); });
    peer(
        row, *shared, [=](const Peer& it) { return sumOf(it.viterbi(o)); }, sumOf(path()));
}

/// The operations of a scaled pass of eight states and two steps forward that wait for one another:
/// a sum of eight terms, the quotients, one product, a sum of three, one product.
double chainOfScaledPass(std::size_t T, double a, double e) {
    double alpha = e;
    for (std::size_t t = 0; t < T; ++t) {
        double scale = 0.0;
        for (int i = 0; i < 8; ++i) scale += alpha;
        const double product = alpha / scale * a;
        double sum = 0.0;
        for (int i = 0; i < 3; ++i) sum += product;
        alpha = sum * e;
    }
    return alpha;
}

void scaledRow(const std::string& row, const ML::LeftRightHMM& model, const Sequence& o) {
    const auto T = static_cast<int>(o.size());
    const auto shared = std::make_shared<ML::LeftRightHMM>(model);
    const auto scale = std::make_shared<std::vector<double>>(o.size());
    ours(row, [=] { return shared->forwardProbabilityWithScale(o, T, *scale); });
    plain(row, [=] { return Plain::logLikelihood(*shared, o, *scale); });
    peer(
        row, *shared, [=](const Peer& it) { return it.logLikelihood(o); },
        shared->forwardProbabilityWithScale(o, T, *scale));
    limit(row, [=] { return chainOfScaledPass(o.size(), shared->a(0, 0), shared->b(0, 0)); });
}

}  // namespace

void registerEvaluation() {
    Workload random(1);
    const ML::LeftRightHMM small = random.leftRight(8, 16, 2);
    const Sequence o = random.sequence(16, 60);
    forwardRow("forward left-right N=8", small, o);
    forwardRow("forward dense N=64", random.dense(64, 16), o);
    forwardRow("forward dense N=256", random.dense(256, 16), o);
    viterbiRow("viterbi N=8 T=60", random.dense(8, 16), o);
    viterbiRow("viterbi N=64 T=500", random.dense(64, 16), random.sequence(16, 500));
    for (const int T : {100, 1000, 10000, 100000}) {
        scaledRow("scaled N=8 T=" + std::to_string(T), small, random.sequence(16, T));
    }
}

}  // namespace Vesk::Bench
