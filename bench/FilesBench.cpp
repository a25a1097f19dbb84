#include "Pair.h"
#include "Workload.h"

#include <vesk/recognition/RecognitionModelHMM.h>

#include <unistd.h>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace Vesk::Bench {
namespace {

/// A model file of 40 gestures, kept while the benchmarks run.
struct StoredModel {
    std::vector<std::unique_ptr<ML::LeftRightHMM>> models;
    ML::RecognitionModelHMM recognition;
    std::string path;
    std::vector<double> numbers;

    explicit StoredModel(Workload& random) {
        for (int i = 0; i < 40; ++i) {
            models.push_back(std::make_unique<ML::LeftRightHMM>(random.leftRight(16, 16, 2)));
            models.back()->name = "gesture" + std::to_string(i);
            models.back()->vocabValues.assign(16, 1.0);
            recognition.gestures.push_back(models.back().get());
        }
        recognition.name = "gestures";
        recognition.setModelTransitionProb(0.01);
        recognition.initialize();
        path = std::filesystem::temp_directory_path() /
               ("vesk-bench-" + std::to_string(getpid()) + ".model");
        if (!recognition.save(path)) throw std::runtime_error(path + " cannot be written");
        std::ifstream in(path);
        std::string word;
        while (in >> word) {
            std::istringstream text(word);
            double number = 0.0;
            if (text >> number) numbers.push_back(number);
        }
    }
    ~StoredModel() { std::remove(path.c_str()); }
};

}  // namespace

void registerFiles() {
    Workload random(5);
    static const StoredModel stored(random);
    // Loaded gestures stay for the life of the process: a few runs only.
    benchmark::RegisterBenchmark("load 40 gestures N=16/ours", [](benchmark::State& state) {
        for (auto _ : state) {
            ML::RecognitionModelHMM model;
            benchmark::DoNotOptimize(model.read(stored.path));
            for (ML::HMM* gesture : model.gestures) gesture->a = {};
            model.recognitionHMM->a = {};
        }
    })->Iterations(10);
    benchmark::RegisterBenchmark("load 40 gestures N=16/plain", [](benchmark::State& state) {
        for (auto _ : state) {
            std::ifstream in(stored.path);
            double number = 0.0;
            std::string word;
            while (in) {
                if (in >> number) continue;
                if (in.eof()) break;
                in.clear();
                in >> word;
            }
            benchmark::DoNotOptimize(number);
        }
    })->Iterations(10);
    ours("save 40 gestures N=16", [] { return stored.recognition.save(stored.path); });
    plain("save 40 gestures N=16", [] {
        std::ostringstream out;
        for (const double number : stored.numbers) out << number << ' ';
        std::ofstream file(stored.path + ".plain");
        file << out.str();
        file.close();
        std::remove((stored.path + ".plain").c_str());
        return file.good();
    });
}

}  // namespace Vesk::Bench
