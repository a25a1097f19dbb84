// Any bytes as the file of a left-right model, as General.cpp does for general ones.

#include "ModelFile.h"

#include <support/LeftRightModels.h>
#include <vesk/leftright/LeftRightHMM.h>

#include <memory>
#include <sstream>
#include <string>

using namespace Vesk::Fuzz;
using Vesk::ML::LeftRightHMM;

namespace {

Bounds boundsOf(const std::string& text) {
    std::istringstream in(text);
    std::string name;
    int N = 0;
    int M = 0;
    in >> name >> N >> M;
    Bounds bounds(text.size());
    const auto states = static_cast<std::uint64_t>(N < 1 ? 1 : N);
    const auto symbols = static_cast<std::uint64_t>(M < 1 ? 1 : M);
    bounds.table(symbols, 1, 2);
    bounds.table(states, 1);
    bounds.table(states, states);
    bounds.table(states, symbols);
    return bounds;
}

/// To the full where that takes no time; else, so that the fuzzer gets on, once.
void use(LeftRightHMM& model, bool small) {
    const int last = static_cast<int>(model.vocabSize) - 1;
    const std::vector<int> symbols{0, last, last / 2, last};
    const int T = static_cast<int>(symbols.size());
    model.logLikelihood(symbols);
    if (!small) return;
    std::vector<double> scale(symbols.size());
    model.forwardProcWithScale(symbols, T, scale);
    model.backwardProcWithScale(symbols, T, scale);
    expect(model.save("/dev/null"), "every model that was read can be written");
    if (model.numStates > 64) return;
    model.trainMultiple({symbols, symbols}, 2);
    model.baumWelch(symbols, T, 2);
    model.estimate(Vesk::ML::HMM::EqualSegments, {symbols});
}

}  // namespace

void Vesk::Fuzz::take(const std::string& text) {
    takeModelFile(
        text, boundsOf(text),
        [](const char* path) { return std::unique_ptr<LeftRightHMM>(Vesk::ML::loadLR(path)); },
        [&](const LeftRightHMM& model) {
            return Vesk::Test::sameModel(Vesk::Test::Reference::parseLeftRight(text), model);
        },
        use);
}
