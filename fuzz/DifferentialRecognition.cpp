#include "Differential.h"
#include "LoadedModel.h"
#include "Target.h"

#include <support/RecognitionModels.h>

#include <memory>
#include <sstream>
#include <string>

namespace Vesk::Fuzz {

using Vesk::Test::bitEqual;

namespace {

std::unique_ptr<Vesk::ML::LeftRightHMM> gestureOf(Bytes& bytes, int M) {
    const int N = bytes.integer(1, 8);
    auto gesture = std::make_unique<Vesk::ML::LeftRightHMM>(N, M, bytes.integer(-1, 3));
    for (double& value : gesture->pi) value = bytes.parameter();
    for (double& value : gesture->a.data) value = bytes.parameter();
    for (double& value : gesture->b.data) value = bytes.parameter();
    return gesture;
}

}  // namespace

void compareRecognition(Bytes& bytes) {
    const int M = bytes.integer(1, 8);
    const int K = bytes.integer(0, 4);
    LoadedModel model;
    for (int g = 0; g < K; ++g) {
        auto gesture = gestureOf(bytes, M);
        gesture->name = "g" + std::to_string(g);
        model.gestures.push_back(gesture.release());
    }
    model.setModelTransitionProb(bytes.parameter());
    auto literal = Vesk::Test::recogniserOf(model);
    expect(model.initialize() == literal.initialize(), "whether it composes");

    const std::vector<int> sequence = bytes.symbols(bytes.integer(0, 16), M);
    std::ostringstream lines;
    const auto expected = literal.check(sequence, lines);
    const Vesk::ML::Recognition found = model.evaluate(sequence);
    expect(model.check(sequence) == expected.name, "the winner's name");
    expect(expected.longEnough == found.longEnough, "whether it is long enough");
    expect(expected.winner == found.winner, "winner");
    expect(bitEqual(expected.threshold, found.threshold), "threshold");
    expect(bitEqual(literal.forwardProb(sequence), model.forwardProb(sequence)), "probability");
    expect(expected.scores.size() == found.gestures.size(), "a score a gesture");
    for (std::size_t g = 0; g < found.gestures.size(); ++g) {
        const auto& one = expected.scores[g];
        const auto& other = found.gestures[g];
        expect(bitEqual(one.probability, other.probability), "probability of a gesture");
        expect(bitEqual(one.weightedProbability, other.weightedProbability), "weighted one");
        expect(bitEqual(one.weightedGamma, other.weightedGamma), "weighted gamma");
        expect(one.accepted == other.accepted, "acceptance");
    }
}

}  // namespace Vesk::Fuzz
