#include <vesk/hmm/HMM.h>

#include <vesk/hmm/internal/Parameters.h>

#include <iostream>

namespace Vesk::ML {
namespace {

/// Every value is followed by a blank, the last one too.
void printRow(const double* values, int count) {
    for (int i = 0; i < count; ++i) std::cout << values[i] << ' ';
    std::cout << std::endl;
}

}  // namespace

void HMM::print() {
    const internal::Parameters p = internal::parametersOf(*this);
    std::cout << "name: " << name << std::endl;
    std::cout << "numStates: " << numStates << std::endl;
    std::cout << "vocabSize: " << vocabSize << std::endl;
    std::cout.precision(3);  // stays, as hosts expect
    std::cout << "Initial probs pi:" << std::endl;
    printRow(p.pi, p.N);
    std::cout << std::endl;
    std::cout << "Transition probs a:" << std::endl;
    for (int i = 0; i < p.N; ++i) printRow(p.a.row(i), p.a.cols);
    std::cout << std::endl;
    std::cout << "Emission probs b:" << std::endl;
    for (int i = 0; i < p.N; ++i) {
        printRow(p.b.row(i), p.b.cols);
        std::cout << std::endl;
    }
}

}  // namespace Vesk::ML
