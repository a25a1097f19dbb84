#include "Pair.h"
#include "Workload.h"
#include "plain/Recognition.h"

#include <string>

namespace Vesk::Bench {
namespace {

/// Gestures with the combined model that they make.
struct Gestures {
    std::vector<std::unique_ptr<ML::LeftRightHMM>> models;
    ML::RecognitionModelHMM recognition;

    Gestures(Workload& random, int count, int N, int M) {
        for (int i = 0; i < count; ++i) {
            models.push_back(std::make_unique<ML::LeftRightHMM>(random.leftRight(N, M, 2)));
            models.back()->name = "gesture" + std::to_string(i);
            recognition.gestures.push_back(models.back().get());
        }
        recognition.setModelTransitionProb(0.01);
        recognition.initialize();
    }
};

void checkRow(const std::string& row, std::shared_ptr<Gestures> set, const Sequence& o) {
    ours(row, [=] { return set->recognition.evaluate(o).winner; });
    plain(row, [=] { return Plain::check(set->recognition, o); });
}

/// What `initialize` writes, written twice.
void fillTwice(ML::RecognitionModelHMM& model) {
    for (int turn = 0; turn < 2; ++turn) {
        Vesk::Math::MatrixT<double> a(model.a.rows, model.a.cols);
        Vesk::Math::MatrixT<double> b(model.b.rows, model.b.cols);
        for (std::size_t i = 0; i < a.data.size(); ++i) a.data[i] = 0.5;
        for (std::size_t i = 0; i < b.data.size(); ++i) b.data[i] = 0.5;
        benchmark::DoNotOptimize(a.data.data());
        benchmark::DoNotOptimize(b.data.data());
    }
}

}  // namespace

void registerRecognition() {
    Workload random(3);
    checkRow("check 16 gestures N=12 T=40", std::make_shared<Gestures>(random, 16, 12, 16),
             random.sequence(16, 40));

    const auto many = std::make_shared<Gestures>(random, 62, 32, 32);
    const Gestures combined(random, 5, 32, 32);
    *many->recognition.recognitionHMM = *combined.recognition.recognitionHMM;
    checkRow("check 62 gestures N=32 T=40, 160 combined", many, random.sequence(32, 40));

    const auto large = std::make_shared<Gestures>(random, 200, 8, 16);
    checkRow("check 200 gestures N=8 T=60", large, random.sequence(16, 60));

    // The combined models of `setParameters` stay for the life of the process: a few runs only.
    const std::string row = "initialize 200 gestures N=8";
    benchmark::RegisterBenchmark((row + "/ours").c_str(), [=](benchmark::State& state) {
        for (auto _ : state) {
            ML::HMM* before = large->recognition.recognitionHMM;
            benchmark::DoNotOptimize(large->recognition.setParameters());
            before->a = {};  // nobody uses it any more
        }
    })->Iterations(20);
    benchmark::RegisterBenchmark((row + "/plain").c_str(), [=](benchmark::State& state) {
        for (auto _ : state) fillTwice(large->recognition);
    })->Iterations(20);
}

}  // namespace Vesk::Bench
