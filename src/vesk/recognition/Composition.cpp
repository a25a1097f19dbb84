#include <vesk/recognition/RecognitionModelHMM.h>

#include <vesk/base/internal/KeptForever.h>
#include <vesk/math/internal/Divide.h>
#include <vesk/math/internal/Table.h>

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <utility>

namespace Vesk::ML {
namespace {

using Vesk::Math::MatrixT;
using Vesk::Math::internal::covers;
using Vesk::Math::internal::divide;
using Vesk::Math::internal::Extent;
using Vesk::Math::internal::extentOf;
using Vesk::Math::internal::throwTableTooSmall;

/// A gesture's share of what the combined model leaves; exactly 1.0 where that model takes all.
double gestureShare(double modelTransitionProb, std::size_t gestures) {
    if (modelTransitionProb == 1.0) return 1.0;
    return divide(1.0 - modelTransitionProb, static_cast<double>(gestures));
}

/// The staging fields as they are, or as `initialize` is about to make them.
struct Staging {
    unsigned int N;
    unsigned int M;
    std::size_t pi;
    Extent a;
    Extent b;
    std::size_t vocab;
};

Staging stagingOf(const RecognitionModelHMM& model) {
    return {model.numStates,   model.vocabSize,   model.pi.size(),
            extentOf(model.a), extentOf(model.b), model.vocab.data.size()};
}

/// What `resize` makes of a matrix; std::bad_alloc where it would throw that for a negative
/// product.
Extent extentAfterResize(const MatrixT<double>& matrix, unsigned int rows, unsigned int cols) {
    const auto r = static_cast<int>(rows);
    const auto c = static_cast<int>(cols);
    if (matrix.rows == r && matrix.cols == c) return extentOf(matrix);
    const auto count = static_cast<std::int32_t>(rows * cols);
    if (count < 0) throw std::bad_alloc();
    return {c, count};
}

/// Gestures whose tables disagree with their sizes spill into the rows of the next: refused only
/// where that would leave the staging tables.
void requireRoom(const std::vector<HMM*>& gestures, const Staging& staging) {
    std::int64_t transitionRows = 0;
    std::int64_t emissionRows = 0;
    for (const HMM* gesture : gestures) {
        assert(gesture != nullptr);
        const std::int64_t rows = std::max(gesture->a.rows, 0);
        if (!covers(gesture->a, rows, rows)) throwTableTooSmall();
        transitionRows += rows;

        const std::int64_t emissions = std::max(gesture->b.rows, 0);
        const std::int64_t columns = std::max(gesture->b.cols, 0);
        if (!covers(gesture->b, emissions, columns)) throwTableTooSmall();
        emissionRows += emissions;
        if (emissions > 0 && !covers(staging.b, emissionRows, columns)) throwTableTooSmall();
    }
    if (staging.N > staging.pi) throwTableTooSmall();
    const std::int64_t width = std::max(std::int64_t{staging.N}, transitionRows);
    if (!covers(staging.a, transitionRows, width)) throwTableTooSmall();
}

/// The self-transition of each gesture state, the rest of its probability spread evenly.
void composeTransitions(RecognitionModelHMM& model) {
    const unsigned int N = model.numStates;
    std::ptrdiff_t s = 0;
    for (const HMM* gesture : model.gestures) {
        for (int k = 0; k < gesture->a.rows; ++k, ++s) {
            const double self = gesture->a(k, k);
            double* row = model.a.data.data() + model.a.cols * s;
            std::fill_n(row, N, divide(1.0 - self, N - 1));
            row[s] = self;
        }
    }
}

/// The gestures' emission rows, one below the other.
void composeEmissions(RecognitionModelHMM& model) {
    std::ptrdiff_t r = 0;
    for (const HMM* gesture : model.gestures) {
        const MatrixT<double>& from = gesture->b;
        for (std::ptrdiff_t i = 0; i < from.rows; ++i, ++r) {
            if (from.cols < 1) continue;
            std::copy_n(from.data.data() + from.cols * i, from.cols,
                        model.b.data.data() + model.b.cols * r);
        }
    }
}

/// A model of the staging fields' sizes, with room for copies of them. std::bad_alloc for sizes
/// whose tables no `resize` makes, whatever the fields hold.
HMM* newCombinedModel(const std::string& name, const Staging& staging) {
    const auto N = static_cast<unsigned int>(std::max(static_cast<int>(staging.N), 1));
    const auto M = static_cast<unsigned int>(std::max(static_cast<int>(staging.M), 1));
    extentAfterResize({}, N, N);
    extentAfterResize({}, N, M);
    auto combined = std::make_unique<HMM>(1, 1);
    combined->numStates = N;
    combined->vocabSize = M;
    combined->name.reserve(name.size());
    combined->a.data.reserve(static_cast<std::size_t>(staging.a.length));
    combined->b.data.reserve(static_cast<std::size_t>(staging.b.length));
    combined->vocab.data.reserve(staging.vocab);
    combined->pi.reserve(staging.pi);
    return internal::keepForever(std::move(combined));
}

/// Writes each value once: the tables are neither cleared before nor grown.
void copyTable(const MatrixT<double>& from, MatrixT<double>& to) {
    to.data = from.data;
    to.rows = from.rows;
    to.cols = from.cols;
}

// What follows has the room it needs: nothing fails any more.

/// Fills a new combined model from the staging fields, and makes it the model's.
void adopt(RecognitionModelHMM& model, HMM* combined) {
    combined->name = model.name;
    combined->pi = model.pi;
    copyTable(model.vocab, combined->vocab);
    copyTable(model.a, combined->a);
    copyTable(model.b, combined->b);
    model.recognitionHMM = combined;
}

void compose(RecognitionModelHMM& model, HMM* combined) {
    std::fill_n(model.pi.begin(), model.numStates, divide(1.0, model.numStates));
    composeTransitions(model);
    composeEmissions(model);
    adopt(model, combined);
}

}  // namespace

RecognitionModelHMM::RecognitionModelHMM()
    : fromParameters(false),
      gestureTransitionProb(1.0),
      modelTransitionProb(1.0),
      numStates(0),
      vocabSize(0),
      proxFilterThreshold(1.0F),
      rotationAllowed(true),
      recognitionHMM(nullptr) {}

RecognitionModelHMM::RecognitionModelHMM(std::vector<HMM*> models, double p)
    : RecognitionModelHMM() {
    gestures = std::move(models);
    setModelTransitionProb(p);
}

void RecognitionModelHMM::setModelTransitionProb(double p) {
    modelTransitionProb = p;
    gestureTransitionProb = gestureShare(p, gestures.size());
}

void RecognitionModelHMM::setName(std::string n) {
    if (recognitionHMM != nullptr) recognitionHMM->name = n;
    name = std::move(n);
}

bool RecognitionModelHMM::initialize() {
    if (fromParameters || gestures.empty()) return false;
    unsigned int N = 0;
    for (const HMM* gesture : gestures) N += gesture->numStates;
    const unsigned int M = gestures[0]->vocabSize;
    const Staging staging{N,
                          M,
                          N,
                          extentAfterResize(a, N, N),
                          extentAfterResize(b, N, M),
                          gestures[0]->vocab.data.size()};
    requireRoom(gestures, staging);
    MatrixT<double> symbols = gestures[0]->vocab;
    pi.reserve(staging.pi);
    a.data.reserve(static_cast<std::size_t>(staging.a.length));
    b.data.reserve(static_cast<std::size_t>(staging.b.length));
    HMM* const combined = newCombinedModel(name, staging);

    numStates = N;
    vocabSize = M;
    vocab.swap(symbols);
    pi.resize(numStates);
    a.resize(static_cast<int>(numStates), static_cast<int>(numStates));
    b.resize(static_cast<int>(numStates), static_cast<int>(vocabSize));
    compose(*this, combined);
    return true;
}

bool RecognitionModelHMM::setParameters() {
    const Staging staging = stagingOf(*this);
    requireRoom(gestures, staging);
    compose(*this, newCombinedModel(name, staging));
    return true;
}

bool RecognitionModelHMM::createRecognitionHMMfromParameters() {
    adopt(*this, newCombinedModel(name, stagingOf(*this)));
    fromParameters = true;
    return true;
}

void RecognitionModelHMM::print() {
    if (recognitionHMM != nullptr) recognitionHMM->print();
}

}  // namespace Vesk::ML
