// A host outside the project: one exact answer from each part of the installed library.

#include <vesk/Version.h>
#include <vesk/hmm/HMM.h>
#include <vesk/leftright/LeftRightHMM.h>
#include <vesk/quantizer/KMeansMotionVec.h>
#include <vesk/quantizer/ProximityFilter.h>
#include <vesk/quantizer/VectorQuantizer2D.h>
#include <vesk/recognition/RecognitionModelHMM.h>

#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

int failures = 0;

void expect(bool holds, const char* what) {
    if (holds) return;
    std::cerr << "does not hold: " << what << '\n';
    ++failures;
}

void models() {
    Vesk::ML::HMM model(2, 2);
    model.pi = {0.5, 0.5};
    for (int i = 0; i < 2; ++i) {
        for (int j = 0; j < 2; ++j) model.a(i, j) = 0.5;
        model.b(i, i) = 1.0;
    }
    expect(model.forwardProbability({0, 1}, 2) == 0.25, "two states that show themselves");

    Vesk::ML::LeftRightHMM gesture(3, 2, 1);
    gesture.estimate(Vesk::ML::HMM::EqualSegments, {{0, 0, 1, 1, 0, 0}});
    expect(gesture.a(0, 1) == 0.5 && gesture.a(2, 2) == 1.0, "initial transitions");
    Vesk::ML::HMM& general = gesture;
    expect(dynamic_cast<Vesk::ML::LeftRightHMM*>(&general) != nullptr, "one type on both sides");

    bool refused = false;
    try {
        gesture.estimate(Vesk::ML::HMM::EqualSegments, {{0, 2, 0, 0, 0, 0}});
    } catch (const std::out_of_range&) {
        refused = true;
    }
    expect(refused, "an exception reaches the host");

    const std::unique_ptr<Vesk::ML::HMM> none(Vesk::ML::load("/no/such/model"));
    const std::unique_ptr<Vesk::ML::LeftRightHMM> noneLR(Vesk::ML::loadLR("/no/such/model"));
    expect(none == nullptr && noneLR == nullptr, "no model without a file");
}

void recognition() {
    const Vesk::ML::RecognitionModelHMM recognition;
    const Vesk::ML::Recognition found = recognition.evaluate({0});
    expect(!found.longEnough && found.winner == -1, "one symbol is no gesture");
}

void quantiser() {
    Vesk::ML::VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(4);
    const std::vector<std::vector<double>> trace{{0.0, 0.0}, {10.0, 0.0}, {10.0, 10.0}};
    expect(quantizer.quantize(trace, 1.0F, false) == std::vector<int>{0, 1}, "right, then up");

    std::vector<std::vector<double>> positions = trace;
    std::vector<std::vector<double>> kept;
    Vesk::ML::ProximityFilter<double>::run(positions, kept, 12.0);
    expect(kept.size() == 2, "the near position is dropped");

    std::vector<std::vector<double>> angles{{1.0, 91.0}};
    Vesk::ML::KMeansMotionVec clusterer({0.0, 90.0}, angles);
    expect(clusterer.classify() == std::vector<std::vector<int>>{{0, 1}}, "nearest centres");
}

}  // namespace

int main(int argc, char** argv) {
    models();
    recognition();
    quantiser();
    expect(argc < 2 || std::string(argv[1]) == VESK_VERSION, "the package's version");
    return failures == 0 ? 0 : 1;
}
