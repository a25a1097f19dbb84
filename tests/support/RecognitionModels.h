#ifndef VESK_TESTS_SUPPORT_RECOGNITIONMODELS_H
#define VESK_TESTS_SUPPORT_RECOGNITIONMODELS_H

#include <support/BitEqual.h>
#include <support/Random.h>
#include <support/RecognitionReference.h>

#include <vesk/leftright/LeftRightHMM.h>
#include <vesk/recognition/RecognitionModelHMM.h>

#include <memory>
#include <string>
#include <vector>

namespace Vesk::Test {

/// Gesture models that outlive the recognition models which borrow them.
class GestureSet {
public:
    /// Adds a left-right model with all tables zero and returns it.
    Vesk::ML::LeftRightHMM& add(const std::string& name, int N, int M, int delta = 1) {
        auto model = std::make_unique<Vesk::ML::LeftRightHMM>(N, M, delta);
        model->name = name;
        Vesk::ML::LeftRightHMM& result = *model;
        models.push_back(std::move(model));
        return result;
    }
    /// Adds a general model, which no writer takes.
    Vesk::ML::HMM& addGeneral(const std::string& name, int N, int M) {
        auto model = std::make_unique<Vesk::ML::HMM>(N, M);
        model->name = name;
        Vesk::ML::HMM& result = *model;
        models.push_back(std::move(model));
        return result;
    }
    std::vector<Vesk::ML::HMM*> pointers() const {
        std::vector<Vesk::ML::HMM*> result;
        for (const auto& model : models) result.push_back(model.get());
        return result;
    }

private:
    std::vector<std::unique_ptr<Vesk::ML::HMM>> models;
};

/// Sets pi, row by row a, row by row b; the lists' lengths are those of the model's tables.
inline void fill(Vesk::ML::HMM& model, const std::vector<double>& pi, const std::vector<double>& a,
                 const std::vector<double>& b) {
    ASSERT_EQ(model.pi.size(), pi.size());
    ASSERT_EQ(model.a.data.size(), a.size());
    ASSERT_EQ(model.b.data.size(), b.size());
    model.pi = pi;
    model.a.data = a;
    model.b.data = b;
}

inline void fillRandom(Vesk::ML::HMM& model, Random& random, Parameters kind) {
    const int N = static_cast<int>(model.numStates);
    const int M = static_cast<int>(model.vocabSize);
    model.pi = randomRow(random, N, kind);
    model.a = randomMatrix(random, N, N, kind);
    model.b = randomMatrix(random, N, M, kind);
}

/// `count` left-right models over M symbols with 1 .. maxStates states each and names g0, g1, ...
inline GestureSet randomGestures(Random& random, int count, int maxStates, int M, Parameters kind) {
    GestureSet set;
    for (int g = 0; g < count; ++g) {
        const int N = random.integer(1, maxStates);
        Vesk::ML::LeftRightHMM& model =
            set.add("g" + std::to_string(g), N, M, random.integer(-1, N));
        fillRandom(model, random, kind);
    }
    return set;
}

inline Reference::Recognition::Table tableOf(const Vesk::Math::MatrixT<double>& matrix) {
    Reference::Recognition::Table table;
    table.flat = matrix.data;
    table.rows = matrix.rows;
    table.cols = matrix.cols;
    return table;
}

inline Reference::Recognition::Model modelOf(const Vesk::ML::HMM& model) {
    Reference::Recognition::Model copy;
    copy.name = model.name;
    copy.numStates = model.numStates;
    copy.vocabSize = model.vocabSize;
    copy.dimension = model.dimension;
    copy.vocab = tableOf(model.vocab);
    copy.pi = model.pi;
    copy.a = tableOf(model.a);
    copy.b = tableOf(model.b);
    const auto* leftRight = dynamic_cast<const Vesk::ML::LeftRightHMM*>(&model);
    if (leftRight != nullptr) copy.delta = leftRight->delta;
    return copy;
}

/// The model's state, combined model and gestures included.
inline Reference::Recognition::Recogniser recogniserOf(const Vesk::ML::RecognitionModelHMM& model) {
    Reference::Recognition::Recogniser copy;
    copy.fromParameters = model.fromParameters;
    copy.gestureTransitionProb = model.gestureTransitionProb;
    copy.modelTransitionProb = model.modelTransitionProb;
    copy.name = model.name;
    copy.numStates = model.numStates;
    copy.vocabSize = model.vocabSize;
    copy.vocab = tableOf(model.vocab);
    copy.pi = model.pi;
    copy.a = tableOf(model.a);
    copy.b = tableOf(model.b);
    for (const Vesk::ML::HMM* gesture : model.gestures) copy.gestures.push_back(modelOf(*gesture));
    copy.codebook = model.codebook;
    copy.proxFilterThreshold = model.proxFilterThreshold;
    copy.rotationAllowed = model.rotationAllowed;
    if (model.recognitionHMM != nullptr) copy.combined = modelOf(*model.recognitionHMM);
    return copy;
}

inline testing::AssertionResult sameTable(const Reference::Recognition::Table& expected,
                                          const Reference::Recognition::Table& actual) {
    if (expected.rows != actual.rows || expected.cols != actual.cols) {
        return testing::AssertionFailure() << "expected " << expected.rows << " x " << expected.cols
                                           << ", got " << actual.rows << " x " << actual.cols;
    }
    return bitEqual(expected.flat, actual.flat);
}

inline void expectSameModel(const Reference::Recognition::Model& expected,
                            const Reference::Recognition::Model& actual) {
    EXPECT_EQ(expected.name, actual.name);
    EXPECT_EQ(expected.numStates, actual.numStates);
    EXPECT_EQ(expected.vocabSize, actual.vocabSize);
    EXPECT_EQ(expected.dimension, actual.dimension);
    EXPECT_EQ(expected.delta, actual.delta);
    EXPECT_TRUE(sameTable(expected.vocab, actual.vocab)) << "vocab";
    EXPECT_TRUE(bitEqual(expected.pi, actual.pi)) << "pi";
    EXPECT_TRUE(sameTable(expected.a, actual.a)) << "a";
    EXPECT_TRUE(sameTable(expected.b, actual.b)) << "b";
}

/// Bit for bit, field by field, gestures and combined model included.
inline void expectSameRecogniser(const Reference::Recognition::Recogniser& expected,
                                 const Reference::Recognition::Recogniser& actual) {
    EXPECT_EQ(expected.fromParameters, actual.fromParameters);
    EXPECT_TRUE(bitEqual(expected.gestureTransitionProb, actual.gestureTransitionProb));
    EXPECT_TRUE(bitEqual(expected.modelTransitionProb, actual.modelTransitionProb));
    EXPECT_EQ(expected.name, actual.name);
    EXPECT_EQ(expected.numStates, actual.numStates);
    EXPECT_EQ(expected.vocabSize, actual.vocabSize);
    EXPECT_TRUE(sameTable(expected.vocab, actual.vocab)) << "vocab";
    EXPECT_TRUE(bitEqual(expected.pi, actual.pi)) << "pi";
    EXPECT_TRUE(sameTable(expected.a, actual.a)) << "a";
    EXPECT_TRUE(sameTable(expected.b, actual.b)) << "b";
    EXPECT_TRUE(bitEqual(expected.codebook, actual.codebook)) << "codebook";
    EXPECT_TRUE(bitEqual(static_cast<double>(expected.proxFilterThreshold),
                         static_cast<double>(actual.proxFilterThreshold)));
    EXPECT_EQ(expected.rotationAllowed, actual.rotationAllowed);
    ASSERT_EQ(expected.gestures.size(), actual.gestures.size());
    for (std::size_t g = 0; g < expected.gestures.size(); ++g) {
        SCOPED_TRACE("gesture " + std::to_string(g));
        expectSameModel(expected.gestures[g], actual.gestures[g]);
    }
    ASSERT_EQ(expected.combined.has_value(), actual.combined.has_value());
    if (expected.combined) {
        SCOPED_TRACE("combined model");
        expectSameModel(*expected.combined, *actual.combined);
    }
}

}  // namespace Vesk::Test

#endif
