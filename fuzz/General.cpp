// Any bytes as the file of a general model: read as the literal reader does, refused where
// docs/formats.md says so and nowhere else; what comes out can be used for everything.

#include "ModelFile.h"

#include <support/HmmModels.h>
#include <vesk/hmm/HMM.h>

#include <memory>
#include <sstream>
#include <string>

using namespace Vesk::Fuzz;
using Vesk::ML::HMM;

namespace {

Bounds boundsOf(const std::string& text) {
    std::istringstream in(text);
    std::string name;
    unsigned int N = 0;
    unsigned int M = 0;
    int D = 1;
    in >> name >> N >> M >> D;
    Bounds bounds(text.size());
    const std::uint64_t states = N < 1 ? 1 : N;
    const std::uint64_t symbols = M < 1 ? 1 : M;
    bounds.table(states, 1);
    bounds.table(states, states);
    bounds.table(states, symbols);
    bounds.table(symbols, D < 1 ? 1 : static_cast<std::uint64_t>(D));
    return bounds;
}

/// To the full where that takes no time; else, so that the fuzzer gets on, once.
void use(HMM& model, bool small) {
    const int last = static_cast<int>(model.vocabSize) - 1;
    const std::vector<int> symbols{0, last, last / 2};
    const int T = static_cast<int>(symbols.size());
    const double forward = model.forwardProbability(symbols, T);
    if (!small) return;
    expect(Vesk::Test::bitEqual(forward, HMM(model).forwardProbability(symbols, T)),
           "a copy answers as its original");
    expect(
        Vesk::Test::bitEqual(std::vector<double>{forward, 0.0}, model.likelihoods({symbols, {}})),
        "several sequences are answered as one");
    model.backwardProbability(symbols, T);
    model.viterbi(symbols, T);
    model.genSeq(T);
    expect(model.save("/dev/null"), "every model that was read can be written");
    if (model.numStates <= 64) model.baumWelch(symbols, T, 2);
}

}  // namespace

void Vesk::Fuzz::take(const std::string& text) {
    takeModelFile(
        text, boundsOf(text),
        [](const char* path) { return std::unique_ptr<HMM>(Vesk::ML::load(path)); },
        [&](const HMM& model) {
            return Vesk::Test::modelsEqual(Vesk::Test::Reference::parse(text), model);
        },
        use);
}
