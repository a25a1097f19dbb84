#include <vesk/hmm/HMM.h>

#include <vesk/base/internal/InputFile.h>
#include <vesk/base/internal/OutputFile.h>
#include <vesk/hmm/internal/ModelText.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

namespace Vesk::ML {
namespace {

std::string composeModel(const HMM& model) {
    return internal::composeText([&](std::ostream& out) {
        out << model.name << '\n';
        out << model.numStates << ' ' << model.vocabSize << ' ' << model.dimension << '\n';
        internal::writeParameters(out, model);
        internal::writeVocabulary(out, model);
    });
}

}  // namespace

void HMM::write(char* path) { internal::writeFile(path, composeModel(*this)); }

bool HMM::save(const std::string& path) const {
    return internal::saveFile(path, composeModel(*this));
}

HMM* load(char* path) {
    internal::InputFile in(path);
    if (!in.isOpen()) return nullptr;

    std::string name;
    unsigned int N = 0;
    unsigned int M = 0;
    int D = 1;
    in.readWord(name);
    in.read(N);
    in.read(M);
    in.read(D);

    // The constructor raises each size to 1, and makes the tables of that.
    const std::uint64_t states = std::max(N, 1U);
    const std::uint64_t symbols = std::max(M, 1U);
    in.claimTable(states, 1);
    in.claimTable(states, states);
    in.claimTable(states, symbols);
    in.claimTable(symbols, static_cast<std::uint64_t>(std::max(D, 1)));

    auto model = D == -1 ? std::make_unique<HMM>(static_cast<int>(N), static_cast<int>(M))
                         : std::make_unique<HMM>(static_cast<int>(N), static_cast<int>(M), D);
    model->name = name;
    in.readValues(model->pi.data(), N);
    internal::readTable(in, model->a, N, N);
    internal::readTable(in, model->b, N, M);
    // The writer leaves out all but the first column of `vocab`: a file of a model with D > 1 is
    // read back with what it holds spread over the first rows.
    if (D > 1) internal::readTable(in, model->vocab, M, static_cast<std::uint64_t>(D));
    return model.release();
}

}  // namespace Vesk::ML
