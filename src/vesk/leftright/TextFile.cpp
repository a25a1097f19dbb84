#include <vesk/leftright/LeftRightHMM.h>

#include <vesk/base/internal/InputFile.h>
#include <vesk/base/internal/OutputFile.h>
#include <vesk/hmm/internal/ModelText.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>

namespace Vesk::ML {
namespace {

std::string composeModel(const LeftRightHMM& model) {
    return internal::composeText([&](std::ostream& out) {
        out << model.name << '\n';
        out << model.numStates << ' ' << model.vocabSize << ' ' << model.dimension << ' '
            << model.delta << '\n';
        if (!model.vocabValues.empty()) {
            internal::writeLine(out, internal::rowOf(model.vocabValues));
        }
        internal::writeParameters(out, model);
        internal::writeVocabulary(out, model);
    });
}

}  // namespace

void LeftRightHMM::write(char* path) { internal::writeFile(path, composeModel(*this)); }

bool LeftRightHMM::save(const std::string& path) const {
    return internal::saveFile(path, composeModel(*this));
}

LeftRightHMM* loadLR(char* path) {
    internal::InputFile in(path);
    if (!in.isOpen()) return nullptr;

    std::string name;
    int N = 0;
    int M = 0;
    int D = 0;
    int delta = 0;
    in.readWord(name);
    in.read(N);
    in.read(M);
    in.read(D);
    in.read(delta);

    // The constructor raises both sizes to 1, and makes the tables of that.
    const auto states = static_cast<std::uint64_t>(std::max(N, 1));
    const auto symbols = static_cast<std::uint64_t>(std::max(M, 1));
    in.claimTable(symbols, 1, 2);
    in.claimTable(states, 1);
    in.claimTable(states, states);
    in.claimTable(states, symbols);

    // Taken whether or not the writer put such a line: without one everything after it shifts.
    std::vector<double> vocabValues;
    double value = 0.0;
    for (int k = 0; k < M; ++k) {
        in.read(value);
        vocabValues.push_back(value);
    }
    auto model = std::make_unique<LeftRightHMM>(N, M, delta);
    model->name = name;
    model->vocabValues = std::move(vocabValues);
    if (N >= 1) {
        in.readValues(model->pi.data(), static_cast<std::uint64_t>(N));
        internal::readTable(in, model->a, states, states);
        internal::readTable(in, model->b, states, static_cast<std::uint64_t>(std::max(M, 0)));
    }
    return model.release();
}

}  // namespace Vesk::ML
