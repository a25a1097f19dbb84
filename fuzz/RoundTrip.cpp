// Models and codebooks with parameters that a file can hold, written and read: the same sizes, and
// the same text again.

#include "Bytes.h"
#include "LoadedModel.h"
#include "MemoryFile.h"
#include "Target.h"

#include <vesk/leftright/LeftRightHMM.h>
#include <vesk/quantizer/VectorQuantizer2D.h>

#include <memory>
#include <string>
#include <vector>

using namespace Vesk::Fuzz;
using Vesk::ML::HMM;
using Vesk::ML::LeftRightHMM;

namespace {

std::string nameOf(Bytes& bytes) {
    std::string name = "g";
    for (int n = bytes.integer(0, 6); n > 0; --n) {
        name.push_back(static_cast<char>(bytes.integer('!', '~')));
    }
    return name;
}

void fill(Bytes& bytes, HMM& model) {
    model.name = nameOf(bytes);
    for (double& value : model.pi) value = bytes.finiteParameter();
    for (double& value : model.a.data) value = bytes.finiteParameter();
    for (double& value : model.b.data) value = bytes.finiteParameter();
}

/// Writes one and another that is read from its file, and compares the two files.
template <typename Subject, typename Read>
void comesBack(const Subject& subject, Read read) {
    const MemoryFile file;
    expect(subject.save(file.path()), "written");
    const MemoryFile again;
    expect(read(file.path())->save(again.path()), "written once more");
    expect(testing::AssertionResult(file.text() == again.text()) << file.text() << again.text(),
           "a file comes back as it is");
}

void general(Bytes& bytes) {
    HMM model(bytes.integer(1, 8), bytes.integer(1, 6));
    fill(bytes, model);
    comesBack(model, [](const std::string& path) {
        return std::unique_ptr<HMM>(Vesk::ML::load(path.c_str()));
    });
}

void leftRight(Bytes& bytes) {
    const int M = bytes.integer(1, 6);
    LeftRightHMM model(bytes.integer(1, 8), M, bytes.integer(-2, 8));
    fill(bytes, model);
    for (int k = 0; k < M; ++k) model.vocabValues.push_back(bytes.finiteParameter());
    comesBack(model, [](const std::string& path) {
        return std::unique_ptr<LeftRightHMM>(Vesk::ML::loadLR(path.c_str()));
    });
}

void recognition(Bytes& bytes) {
    LoadedModel model;
    const int M = bytes.integer(1, 6);
    for (int g = bytes.integer(1, 4); g > 0; --g) {
        auto gesture = std::make_unique<LeftRightHMM>(bytes.integer(1, 5), M, bytes.integer(-1, 4));
        fill(bytes, *gesture);
        model.gestures.push_back(gesture.release());
    }
    model.setModelTransitionProb(bytes.finiteParameter());
    model.initialize();
    model.setName(nameOf(bytes));
    for (int n = bytes.integer(0, 5); n > 0; --n) model.codebook.push_back(bytes.finiteParameter());
    model.rotationAllowed = bytes.flag();
    for (const double value : model.recognitionHMM->a.data) {
        if (value - value != 0.0) return;  // no file holds such a threshold model
    }
    comesBack(model, [](const std::string& path) {
        auto read = std::make_unique<LoadedModel>();
        expect(read->read(path), "read");
        return read;
    });
}

void codebook(Bytes& bytes) {
    Vesk::ML::VectorQuantizer2D quantizer;
    std::vector<double> entries;
    for (int n = bytes.integer(1, 30); n > 0; --n) entries.push_back(bytes.finiteParameter());
    quantizer.setCodebook(entries);
    comesBack(quantizer, [](const std::string& path) {
        auto read = std::make_unique<Vesk::ML::VectorQuantizer2D>();
        expect(read->loadCodebook(path.c_str()), "read");
        return read;
    });
}

}  // namespace

void Vesk::Fuzz::take(const std::string& text) {
    Bytes bytes(text);
    switch (bytes.integer(0, 3)) {
        case 0: general(bytes); break;
        case 1: leftRight(bytes); break;
        case 2: recognition(bytes); break;
        default: codebook(bytes); break;
    }
}
