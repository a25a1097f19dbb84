#include <support/Capture.h>
#include <support/Files.h>
#include <support/HmmModels.h>

#include <vesk/hmm/HMM.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// A damaged file can make a model whose tables are smaller than its counts promise.

namespace {

using Vesk::Math::VectorT;
using Vesk::ML::HMM;
using Vesk::Test::bitEqual;
using Vesk::Test::Matrix;
using Vesk::Test::matrixOf;
using Vesk::Test::modelsEqual;

HMM sound() {
    HMM model(3, 2);
    model.name = "sound";
    model.pi = {0.5, 0.25, 0.25};
    model.a = matrixOf({{0.5, 0.25, 0.25}, {0.25, 0.5, 0.25}, {0.25, 0.25, 0.5}});
    model.b = matrixOf({{0.5, 0.5}, {0.25, 0.75}, {0.75, 0.25}});
    model.needsSeed = false;
    return model;
}

struct Damage {
    const char* what;
    HMM model;
};

Damage damaged(const char* what, const std::function<void(HMM&)>& damage) {
    Damage result{what, sound()};
    damage(result.model);
    return result;
}

std::vector<Damage> withSmallPi() {
    return {damaged("pi one short", [](HMM& m) { m.pi.pop_back(); }),
            damaged("pi empty", [](HMM& m) { m.pi.clear(); })};
}

std::vector<Damage> withSmallA() {
    return {damaged("a empty", [](HMM& m) { m.a = Matrix(); }),
            damaged("a one row short", [](HMM& m) { m.a.resize(2, 3); }),
            damaged("a one value short", [](HMM& m) { m.a.data.pop_back(); }),
            damaged("a with more columns than values", [](HMM& m) { m.a.cols = 4; }),
            damaged("a with huge columns", [](HMM& m) { m.a.cols = 2147483647; }),
            damaged("a with negative columns", [](HMM& m) { m.a.cols = -1; })};
}

std::vector<Damage> withSmallB() {
    return {damaged("b empty", [](HMM& m) { m.b = Matrix(); }),
            damaged("b one row short", [](HMM& m) { m.b.resize(2, 2); }),
            damaged("b one value short", [](HMM& m) { m.b.data.pop_back(); }),
            damaged("b with more columns than values", [](HMM& m) { m.b.cols = 3; }),
            damaged("b with negative columns", [](HMM& m) { m.b.cols = -2; })};
}

std::vector<Damage> withLargeCounts() {
    return {damaged("one state more", [](HMM& m) { m.numStates = 4; }),
            damaged("as many states as wrap around", [](HMM& m) { m.numStates = 65536; }),
            damaged("half of all numbers", [](HMM& m) { m.numStates = 2147483648U; }),
            damaged("as many states as can be", [](HMM& m) { m.numStates = 4294967295U; })};
}

std::vector<Damage> operator+(std::vector<Damage> some, const std::vector<Damage>& more) {
    some.insert(some.end(), more.begin(), more.end());
    return some;
}

void expectOutOfRange(const std::vector<Damage>& damages,
                      const std::function<void(HMM&)>& operation) {
    for (const Damage& damage : damages) {
        SCOPED_TRACE(damage.what);
        HMM model = damage.model;
        const Vesk::Test::Capture capture;
        EXPECT_THROW(operation(model), std::out_of_range);
        EXPECT_TRUE(modelsEqual(damage.model, model));
        EXPECT_EQ(capture.text(), "");
        EXPECT_EQ(std::cout.precision(), 6);
    }
}

const VectorT<int> observed = {0, 1, 1};

TEST(DamagedHmm, ForwardPassesThrowOutOfRange) {
    const auto damages = withSmallPi() + withSmallA() + withSmallB() + withLargeCounts();
    expectOutOfRange(damages, [](HMM& m) { m.forwardProc(observed, 3); });
    expectOutOfRange(damages, [](HMM& m) { m.forwardProbability(observed, 3); });
}

TEST(DamagedHmm, BackwardPassesThrowOutOfRange) {
    const auto damages = withSmallA() + withSmallB() + withLargeCounts();
    expectOutOfRange(damages, [](HMM& m) { m.backwardProc(observed, 3); });
    expectOutOfRange(withSmallPi() + damages, [](HMM& m) { m.backwardProbability(observed, 3); });
}

TEST(DamagedHmm, BackwardTableNeedsNoInitialProbabilities) {
    HMM whole = sound();
    for (const Damage& damage : withSmallPi()) {
        SCOPED_TRACE(damage.what);
        HMM model = damage.model;
        EXPECT_TRUE(bitEqual(whole.backwardProc(observed, 3), model.backwardProc(observed, 3)));
    }
}

TEST(DamagedHmm, ViterbiThrowsOutOfRange) {
    expectOutOfRange(withSmallPi() + withSmallA() + withSmallB() + withLargeCounts(),
                     [](HMM& m) { m.viterbi(observed, 3); });
}

TEST(DamagedHmm, TrainingThrowsOutOfRange) {
    expectOutOfRange(withSmallPi() + withSmallA() + withSmallB() + withLargeCounts(),
                     [](HMM& m) { m.baumWelch(observed, 3, 2); });
}

TEST(DamagedHmm, SamplingThrowsOutOfRange) {
    expectOutOfRange(withSmallPi() + withSmallA() + withSmallB() + withLargeCounts(),
                     [](HMM& m) { m.genSeq(3); });
}

TEST(DamagedHmm, XiThrowsOutOfRange) {
    const Matrix alpha = matrixOf({{1, 1, 1}, {1, 1, 1}, {1, 1, 1}});
    expectOutOfRange(withSmallA() + withSmallB(),
                     [&alpha](HMM& m) { m.xi(0, 0, 0, observed, alpha, alpha); });
}

TEST(DamagedHmm, GammaNeedsNoParameters) {
    HMM model = sound();
    model.pi.clear();
    model.a = Matrix();
    model.b = Matrix();
    EXPECT_TRUE(
        bitEqual(0.25, model.gamma(1, 0, matrixOf({{1}, {1}, {2}}), matrixOf({{1}, {1}, {1}}))));
}

TEST(DamagedHmm, DumpThrowsOutOfRangeBeforeItPrints) {
    const auto wide = damaged("one symbol more", [](HMM& m) { m.vocabSize = 3; });
    const auto widest =
        damaged("as many symbols as can be", [](HMM& m) { m.vocabSize = 4294967295U; });
    expectOutOfRange(withSmallPi() + withSmallA() + withSmallB() + withLargeCounts() +
                         std::vector<Damage>{wide, widest},
                     [](HMM& m) { m.print(); });
}

TEST(DamagedHmm, WritingThrowsOutOfRangeAndLeavesTheFile) {
    const Vesk::Test::TemporaryFolder folder;
    const std::string path = folder.path("model.txt");
    Vesk::Test::writeFile(path, "kept");
    const std::vector<Damage> more = {
        damaged("one symbol more", [](HMM& m) { m.vocabSize = 3; }),
        damaged("as many symbols as can be", [](HMM& m) { m.vocabSize = 4294967295U; }),
        damaged("vocab empty", [](HMM& m) { m.vocab = Matrix(); }),
        damaged("vocab one value short", [](HMM& m) { m.vocab.data.pop_back(); }),
        damaged("vocab with more columns than values", [](HMM& m) { m.vocab.cols = 2; })};
    const auto damages = withSmallPi() + withSmallA() + withSmallB() + withLargeCounts() + more;
    expectOutOfRange(damages, [&path](HMM& m) { m.write(path.c_str()); });
    EXPECT_EQ(Vesk::Test::readFile(path), "kept");
    expectOutOfRange(damages, [&path](HMM& m) { m.save(path); });
    EXPECT_EQ(Vesk::Test::readFile(path), "kept");
}

TEST(DamagedHmm, OneSymbolNeedsNoTransitions) {
    HMM whole = sound();
    for (const Damage& damage : withSmallA()) {
        SCOPED_TRACE(damage.what);
        HMM model = damage.model;
        EXPECT_TRUE(bitEqual(whole.forwardProc({1}, 1), model.forwardProc({1}, 1)));
        EXPECT_TRUE(bitEqual(whole.backwardProc({1}, 1), model.backwardProc({1}, 1)));
        EXPECT_TRUE(bitEqual(whole.forwardProbability({1}, 1), model.forwardProbability({1}, 1)));
        EXPECT_TRUE(bitEqual(whole.backwardProbability({1}, 1), model.backwardProbability({1}, 1)));
        EXPECT_TRUE(bitEqual(whole.viterbi({1}, 1), model.viterbi({1}, 1)));
    }
}

TEST(DamagedHmm, NoSymbolsNeedNothing) {
    for (const Damage& damage : withSmallPi() + withSmallA() + withSmallB()) {
        SCOPED_TRACE(damage.what);
        HMM model = damage.model;
        EXPECT_TRUE(bitEqual(Matrix(3, 0), model.forwardProc({}, 0)));
        EXPECT_TRUE(bitEqual(Matrix(3, 0), model.backwardProc({}, 0)));
        EXPECT_TRUE(bitEqual(Matrix(2, 0), model.viterbi({}, 0)));
        EXPECT_TRUE(bitEqual(0.0, model.forwardProbability({}, 0)));
        EXPECT_TRUE(bitEqual(0.0, model.backwardProbability({}, 0)));
        EXPECT_TRUE(model.genSeq(0).empty());
        model.baumWelch({}, 0, 5);
        model.baumWelch(observed, 3, 0);
        EXPECT_TRUE(modelsEqual(damage.model, model));
    }
}

TEST(DamagedHmm, OverlappingRowsInsideTheStorageAreReadAsTheyLie) {
    // One column a row: (0, 0), (0, 1) = (1, 0) and (1, 1) are the three values.
    HMM model(2, 1);
    model.pi = {1.0, 0.5};
    model.a = matrixOf({{0.5}, {0.25}, {0.75}});
    model.b = matrixOf({{1.0}, {1.0}});
    // alpha(0, 1) = 1 * 1/2 + 1/2 * 1/4, alpha(1, 1) = 1 * 1/4 + 1/2 * 3/4.
    EXPECT_TRUE(bitEqual(matrixOf({{1.0, 0.625}, {0.5, 0.625}}), model.forwardProc({0, 0}, 2)));
    // beta(0, 0) = 1/2 + 1/4, beta(1, 0) = 1/4 + 3/4.
    EXPECT_TRUE(bitEqual(matrixOf({{0.75, 1.0}, {1.0, 1.0}}), model.backwardProc({0, 0}, 2)));
}

TEST(DamagedHmm, ModelWhoseProductWrappedToZeroHasNoTransitions) {
    HMM model(65536, 1);
    EXPECT_TRUE(bitEqual(0.0, model.forwardProbability({0}, 1)));
    EXPECT_THROW(model.forwardProbability({0, 0}, 2), std::out_of_range);
    EXPECT_THROW(model.viterbi({0, 0}, 2), std::out_of_range);
}

}  // namespace
