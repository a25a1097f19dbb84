#include "Pair.h"

#include <cstring>
#include <exception>
#include <iostream>

// Measures the rows of the table of ratios, or with --curves first the points of the curves.
int main(int argc, char** argv) {
    const bool curves = argc > 1 && std::strcmp(argv[1], "--curves") == 0;
    if (curves) {
        argv[1] = argv[0];
        ++argv;
        --argc;
    }
    try {
        if (curves) {
            Vesk::Bench::registerCurves();
        } else {
            Vesk::Bench::registerEvaluation();
            Vesk::Bench::registerTraining();
            Vesk::Bench::registerRecognition();
            Vesk::Bench::registerQuantizer();
            Vesk::Bench::registerFiles();
            Vesk::Bench::registerHost();
        }
    } catch (const std::exception& failure) {
        std::cerr << "vesk_bench: " << failure.what() << '\n';
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
