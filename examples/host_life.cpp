// A host's whole life with the library alone, through its fixed interface: a codebook, models
// trained from strokes, a recognition model, its file, and strokes recognised with what was loaded.
//
// Some of these operations write to standard output while they work. Each has a silent twin:
// classify quantize, initialize estimate, baumWelchMultiple trainMultiple, load read, check
// evaluate; and write has save, which says whether the file is there.
//
// c++ -std=c++17 host_life.cpp -o host_life $(pkg-config --cflags --libs vesk-hmm)

#include <vesk/leftright/LeftRightHMM.h>
#include <vesk/quantizer/VectorQuantizer2D.h>
#include <vesk/recognition/RecognitionModelHMM.h>

#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;
using Vesk::ML::VectorQuantizer2D;

namespace {

using Stroke = std::vector<std::vector<double>>;

constexpr int symbols = 8;         // directions that are told apart
constexpr float proximity = 0.5F;  // steps shorter than this are tremor
constexpr double leastEmission = 1e-3;

/// A stroke along the corners given, 8 steps a side, trembling a little differently each time.
Stroke draw(const std::vector<std::vector<double>>& corners, int repetition) {
    constexpr int steps = 8;
    Stroke stroke;
    for (std::size_t side = 0; side + 1 < corners.size(); ++side) {
        for (int step = 0; step < steps; ++step) {
            const double along = static_cast<double>(step) / steps;
            const double tremor = 0.3 * std::sin(1.7 * repetition + 2.3 * step);
            stroke.push_back(
                {corners[side][0] + along * (corners[side + 1][0] - corners[side][0]) + tremor,
                 corners[side][1] + along * (corners[side + 1][1] - corners[side][1]) - tremor});
        }
    }
    stroke.push_back(corners.back());
    return stroke;
}

/// Training leaves odds p / (1 - p) as emissions, infinite where a state saw one symbol alone.
double probability(double odds) { return std::isinf(odds) ? 1.0 : odds / (1.0 + odds); }

/// No emission stays 0: an unseen direction must not rule a gesture out. Rows sum to 1.
void floorEmissions(LeftRightHMM& model) {
    for (int i = 0; i < static_cast<int>(model.numStates); ++i) {
        double sum = 0.0;
        for (int k = 0; k < symbols; ++k) {
            model.b(i, k) = std::fmax(model.b(i, k), leastEmission);
            sum += model.b(i, k);
        }
        for (int k = 0; k < symbols; ++k) model.b(i, k) /= sum;
    }
}

std::unique_ptr<LeftRightHMM> train(const std::string& name, const Stroke& corners,
                                    VectorQuantizer2D& quantizer) {
    std::vector<std::vector<int>> sequences;
    for (int repetition = 0; repetition < 10; ++repetition) {
        Stroke stroke = draw(corners, repetition);
        sequences.push_back(quantizer.classify(stroke, proximity, false));
    }
    constexpr int states = 6;
    constexpr int largestJump = 1;
    auto model = std::make_unique<LeftRightHMM>(states, symbols, largestJump);
    model->name = name;
    model->initialize(sequences, HMM::EqualSegments);
    floorEmissions(*model);
    // One iteration at a time, so that each starts from probabilities.
    for (int iteration = 0; iteration < 3; ++iteration) {
        const std::vector<double> before = model->b.data;
        model->baumWelchMultiple(sequences, 1);
        const bool adopted = model->b.data != before;
        if (!adopted) break;
        for (double& value : model->b.data) value = probability(value);
        floorEmissions(*model);
    }
    return model;
}

}  // namespace

int main() {
    const Stroke corner{{0, 0}, {40, 0}, {40, 40}};
    const Stroke zigzag{{0, 0}, {30, 30}, {60, 0}, {90, 30}};
    const Stroke back{{40, 0}, {0, 0}, {40, 5}};

    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(symbols);

    // The recognition model borrows its gestures: they have to live as long as it does.
    std::vector<std::unique_ptr<LeftRightHMM>> gestures;
    gestures.push_back(train("corner", corner, quantizer));
    gestures.push_back(train("zigzag", zigzag, quantizer));
    std::vector<HMM*> borrowed;
    for (const auto& gesture : gestures) borrowed.push_back(gesture.get());

    RecognitionModelHMM model(borrowed, 0.9);
    model.codebook = quantizer.codebook;
    model.proxFilterThreshold = proximity;
    model.rotationAllowed = false;
    model.initialize();
    model.setName("strokes");
    const char* path = "host_life.model";
    model.write(path);

    // Another day: what travels in the file is all that recognition needs. The models made here are
    // the library's, which keeps them for ever.
    RecognitionModelHMM loaded;
    if (!loaded.load(path) || loaded.gestures.size() != gestures.size()) {
        std::cerr << path << ": no model of " << gestures.size() << " gestures\n";
        return 1;
    }
    std::remove(path);
    VectorQuantizer2D same;
    same.setCodebook(loaded.codebook);
    std::vector<std::string> answers;
    for (const Stroke& corners : {corner, zigzag, back}) {
        Stroke stroke = draw(corners, 17);
        answers.push_back(loaded.check(
            same.classify(stroke, loaded.proxFilterThreshold, loaded.rotationAllowed)));
    }
    for (const std::string& answer : answers) {
        std::cout << "answer: " << (answer.empty() ? "rejected" : answer) << '\n';
    }
}
