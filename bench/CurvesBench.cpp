#include "Pair.h"
#include "Workload.h"

#include <vesk/recognition/RecognitionModelHMM.h>

#include <string>

namespace Vesk::Bench {
namespace {

/// A point of a curve: "curve:<figure>/<line>/<x>".
template <typename Work>
void point(const std::string& figure, const std::string& line, int x, Work work) {
    run("curve:" + figure + "/" + line + "/" + std::to_string(x), work);
}

struct Recogniser {
    std::vector<std::unique_ptr<ML::LeftRightHMM>> models;
    ML::RecognitionModelHMM recognition;

    Recogniser(int count, int N) {
        Workload random(7);
        for (int i = 0; i < count; ++i) {
            models.push_back(std::make_unique<ML::LeftRightHMM>(random.leftRight(N, 16, 2)));
            recognition.gestures.push_back(models.back().get());
        }
        recognition.setModelTransitionProb(0.01);
        recognition.initialize();
    }
};

}  // namespace

void registerCurves() {
    Workload random(6);
    const int T = 40;
    const Sequence o = random.sequence(16, T);
    for (int N = 4; N <= 1024; N *= 2) {
        const auto dense = std::make_shared<ML::HMM>(random.dense(N, 16));
        point("states", "dense", N, [=] { return dense->forwardProbability(o, T); });
        const auto leftRight = std::make_shared<ML::HMM>(random.leftRight(N, 16, 2));
        point("states", "left-right", N, [=] { return leftRight->forwardProbability(o, T); });
    }
    for (int length = 10; length <= 100000; length *= 10) {
        const auto model = std::make_shared<ML::LeftRightHMM>(random.leftRight(8, 16, 2));
        const auto longer = std::make_shared<Sequence>(random.sequence(16, length));
        point("length", "scaled log likelihood, N = 8", length,
              [=] { return model->logLikelihood(*longer); });
        const auto dense = std::make_shared<ML::HMM>(random.dense(8, 16));
        point("length", "Viterbi, N = 8", length,
              [=] { return dense->viterbi(*longer, length)(0, 0); });
    }
    for (const int count : {5, 10, 20, 50, 100, 200, 400}) {
        const auto recogniser = std::make_shared<Recogniser>(count, 8);
        point("gestures", "evaluate, 8 states a gesture", count,
              [=] { return recogniser->recognition.evaluate(o).winner; });
    }
    for (int count = 10; count <= 1000; count *= 10) {
        for (const int N : {8, 16}) {
            const auto model = std::make_shared<ML::LeftRightHMM>(random.leftRight(N, 16, 2));
            const auto set =
                std::make_shared<std::vector<Sequence>>(random.sequences(count, 16, T));
            point("sequences", "one iteration, N = " + std::to_string(N), count, [=] {
                ML::LeftRightHMM copy = *model;
                copy.trainMultiple(*set, 1);
                return copy.a(0, 0);
            });
        }
    }
}

}  // namespace Vesk::Bench
