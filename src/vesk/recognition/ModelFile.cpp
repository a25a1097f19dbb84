#include <vesk/recognition/RecognitionModelHMM.h>

#include <vesk/base/internal/InputFile.h>
#include <vesk/base/internal/KeptForever.h>
#include <vesk/base/internal/OutputFile.h>
#include <vesk/hmm/internal/ModelText.h>
#include <vesk/leftright/LeftRightHMM.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <memory>
#include <utility>
#include <vector>

namespace Vesk::ML {
namespace {

using internal::InputFile;

/// What a gesture without a single value takes, in values.
constexpr std::uint64_t gestureOverhead = 32;

/// Quantiser settings, codebook and combined model. The sizes that are written are the recognition
/// model's own, the tables are the combined model's.
void writeHeader(std::ostream& out, const RecognitionModelHMM& model) {
    const HMM& combined = *model.recognitionHMM;
    out << static_cast<double>(model.proxFilterThreshold) << ' ' << (model.rotationAllowed ? 1 : 0)
        << ' ' << model.codebook.size() << '\n';
    internal::writeLine(out, internal::rowOf(model.codebook));
    out << '\n';
    out << model.name << '\n';
    out << model.numStates << ' ' << model.vocabSize << ' ' << combined.dimension << ' '
        << model.modelTransitionProb << '\n';
    internal::writeParameters(out, combined);
    internal::writeVocabulary(out, combined);
}

void writeGesture(std::ostream& out, const HMM& gesture) {
    const int delta = dynamic_cast<const LeftRightHMM&>(gesture).delta;
    out << gesture.name << '\n';
    out << gesture.numStates << ' ' << gesture.vocabSize << ' ' << gesture.dimension << ' ' << delta
        << '\n';
    internal::writeParameters(out, gesture);
}

std::string composeFile(const RecognitionModelHMM& model) {
    return internal::composeText([&](std::ostream& out) {
        writeHeader(out, model);
        out << '\n';
        for (const HMM* gesture : model.gestures) {
            writeGesture(out, *gesture);
            out << '\n';
        }
    });
}

void readHeader(InputFile& in, RecognitionModelHMM& model) {
    int rotation = 0;
    unsigned int Nc = 0;
    int dimension = 0;
    in.read(model.proxFilterThreshold);
    in.read(rotation);
    model.rotationAllowed = rotation == 1;
    in.read(Nc);
    in.claimTable(Nc, 1);
    double entry = 0.0;
    for (unsigned int i = 0; i < Nc; ++i) {
        in.read(entry);
        model.codebook.push_back(entry);
    }
    in.readWord(model.name);
    in.read(model.numStates);
    in.read(model.vocabSize);
    in.read(dimension);
    in.read(model.modelTransitionProb);
}

/// Reads the staging fields, which the combined model is going to copy.
void readCombined(InputFile& in, RecognitionModelHMM& model) {
    const std::uint64_t N = model.numStates;
    const std::uint64_t M = model.vocabSize;
    in.claimTable(M, 1, 2);
    in.claimTable(N, 1, 2);
    in.claimTable(N, N, 2);
    in.claimTable(N, M, 2);
    const auto rows = static_cast<int>(N);
    model.vocab.resize(static_cast<int>(M), 1);
    model.pi.resize(N);
    model.a.resize(rows, rows);
    model.b.resize(rows, static_cast<int>(M));
    in.readValues(model.pi.data(), N);
    internal::readTable(in, model.a, N, N);
    internal::readTable(in, model.b, N, M);
    internal::readTable(in, model.vocab, M, 1);
}

std::unique_ptr<LeftRightHMM> readGesture(InputFile& in, const std::string& name,
                                          const Vesk::Math::MatrixT<double>& vocab) {
    unsigned int N = 0;
    unsigned int M = 0;
    int dimension = 0;
    int delta = 0;
    in.read(N);
    in.read(M);
    in.read(dimension);
    in.read(delta);
    in.claimTable(gestureOverhead, 1);
    in.claimTable(N, 1, 2);
    in.claimTable(N, N, 2);
    in.claimTable(N, M, 2);
    in.claimTable(M, 1);
    in.claimTable(vocab.data.size(), 1);

    const auto rows = static_cast<int>(N);
    std::vector<double> pi(N);
    Vesk::Math::MatrixT<double> a(rows, rows);
    Vesk::Math::MatrixT<double> b(rows, static_cast<int>(M));
    in.readValues(pi.data(), N);
    internal::readTable(in, a, N, N);
    internal::readTable(in, b, N, M);

    auto gesture = std::make_unique<LeftRightHMM>(rows, static_cast<int>(M), delta);
    gesture->name = name;
    gesture->vocab = vocab;
    gesture->pi = std::move(pi);
    gesture->a = std::move(a);
    gesture->b = std::move(b);
    return gesture;
}

/// Appends a gesture that is to stay valid for ever. std::bad_alloc deletes it.
void append(std::unique_ptr<LeftRightHMM> gesture, std::vector<HMM*>& gestures) {
    gestures.push_back(nullptr);
    try {
        gestures.back() = internal::keepForever(std::move(gesture));
    } catch (...) {
        gestures.pop_back();
        throw;
    }
}

bool readModel(RecognitionModelHMM& model, const char* path,
               const std::function<void(const std::string&)>& observer) {
    InputFile in(path);
    if (!in.isOpen()) return false;
    readHeader(in, model);
    readCombined(in, model);
    std::string gestureName;
    while (in.readWord(gestureName)) {
        if (observer) observer(gestureName);
        append(readGesture(in, gestureName, model.vocab), model.gestures);
    }
    model.setModelTransitionProb(model.modelTransitionProb);
    return model.createRecognitionHMMfromParameters() && model.recognitionHMM != nullptr;
}

}  // namespace

void RecognitionModelHMM::write(char* path) {
    if (recognitionHMM == nullptr) return;
    internal::writeFile(path, internal::upToNul(composeFile(*this)));
}

bool RecognitionModelHMM::save(const std::string& path) const {
    if (recognitionHMM == nullptr) return false;
    return internal::saveFile(path, internal::upToNul(composeFile(*this)));
}

void RecognitionModelHMM::writeToStream(std::stringstream& out, HMM* model) {
    const internal::ClassicLocale classic(out);
    if (model != nullptr) {
        writeGesture(out, *model);
    } else if (recognitionHMM != nullptr) {
        writeHeader(out, *this);
    }
}

bool RecognitionModelHMM::load(char* path) {
    return readModel(*this, path, [](const std::string& gestureName) {
        std::cout << "loading gesture '" << gestureName << "'" << std::endl;
    });
}

bool RecognitionModelHMM::read(const std::string& path,
                               const std::function<void(const std::string&)>& observer) {
    return readModel(*this, path.c_str(), observer);
}

}  // namespace Vesk::ML
