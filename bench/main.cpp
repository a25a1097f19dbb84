#include "Pair.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv) {
    try {
        Vesk::Bench::registerEvaluation();
        Vesk::Bench::registerTraining();
        Vesk::Bench::registerRecognition();
        Vesk::Bench::registerQuantizer();
        Vesk::Bench::registerFiles();
    } catch (const std::exception& failure) {
        std::cerr << "vesk_bench: " << failure.what() << '\n';
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
