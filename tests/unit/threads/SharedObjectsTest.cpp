// Const twins on shared objects from eight threads, and objects of their own side by side: the
// answers of one thread, to the bit. scripts/test runs this under a thread sanitizer too.

#include <support/Files.h>
#include <support/RecognitionModels.h>

#include <vesk/leftright/LeftRightHMM.h>
#include <vesk/quantizer/VectorQuantizer2D.h>
#include <vesk/recognition/RecognitionModelHMM.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace Vesk::Test {
namespace {

using Vesk::ML::LeftRightHMM;
using Vesk::ML::RecognitionModelHMM;
using Vesk::ML::VectorQuantizer2D;

constexpr int threadCount = 8;

/// Calls `work` with 0 .. threadCount-1, all at the same time.
void together(const std::function<void(int)>& work) {
    std::atomic<int> waiting{threadCount};
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([&, t] {
            for (--waiting; waiting > 0;) std::this_thread::yield();
            work(t);
        });
    }
    for (std::thread& thread : threads) thread.join();
}

/// Expects the same answers of every thread as of this one.
template <typename Ask>
void expectOneAnswer(Ask ask) {
    const auto expected = ask();
    std::vector<decltype(ask())> found(threadCount);
    together([&](int t) { found[static_cast<std::size_t>(t)] = ask(); });
    for (const auto& answer : found) EXPECT_EQ(answer, expected);
}

std::vector<double> numbersOf(const Vesk::ML::Recognition& recognition) {
    std::vector<double> numbers{recognition.threshold, static_cast<double>(recognition.winner)};
    for (const auto& score : recognition.gestures) {
        numbers.insert(numbers.end(),
                       {score.probability, score.weightedProbability, score.weightedGamma});
    }
    return numbers;
}

std::vector<std::vector<int>> randomSequences(Random& random, int K, int longest) {
    std::vector<std::vector<int>> sequences;
    for (int k = 0; k < K; ++k) sequences.push_back(random.symbols(random.integer(0, longest), 5));
    return sequences;
}

TEST(SharedObjects, ARecognitionModelAnswersEightThreads) {
    Random random(3);
    const GestureSet set = randomGestures(random, 5, 12, 5, Parameters::Stochastic);
    RecognitionModelHMM model(set.pointers(), 0.01);
    ASSERT_TRUE(model.initialize());
    const auto sequences = randomSequences(random, 30, 40);
    const RecognitionModelHMM& shared = model;
    expectOneAnswer([&] {
        std::vector<std::vector<double>> answers;
        for (const auto& sequence : sequences) {
            answers.push_back(numbersOf(shared.evaluate(sequence)));
        }
        return answers;
    });
    const TemporaryFolder folder;
    std::atomic<int> files{0};
    expectOneAnswer([&] {
        const std::string path = folder.path(std::to_string(files++));
        EXPECT_TRUE(shared.save(path));
        std::string text = readFile(path);
        EXPECT_TRUE(shared.saveNode(path));
        return text += readFile(path);
    });
}

TEST(SharedObjects, ALeftRightModelAnswersEightThreads) {
    Random random(4);
    LeftRightHMM model(14, 5, 1);
    fillRandom(model, random, Parameters::Stochastic);
    const LeftRightHMM& shared = model;
    const auto sequences = randomSequences(random, 40, 60);
    expectOneAnswer([&] {
        std::vector<double> answers;
        for (const auto& sequence : sequences) answers.push_back(shared.logLikelihood(sequence));
        return answers;
    });
    expectOneAnswer([&] { return shared.likelihoods(sequences); });
}

std::vector<std::vector<double>> zigzag(int length) {
    std::vector<std::vector<double>> trace;
    for (int i = 0; i < length; ++i) trace.push_back({i * 1.0, (i * i % 7) * 1.5});
    return trace;
}

TEST(SharedObjects, AQuantizerAnswersEightThreads) {
    VectorQuantizer2D quantizer;
    quantizer.initializeCodebook(16);
    const VectorQuantizer2D& shared = quantizer;
    expectOneAnswer([&] {
        std::vector<std::vector<int>> answers;
        for (int i = 0; i < 30; ++i)
            answers.push_back(shared.quantize(zigzag(i), 0.5F, i % 2 == 0));
        return answers;
    });
}

TEST(OwnObjects, TrainedInEightThreadsAreTrainedAsInOne) {
    Random random(6);
    const auto sequences = randomSequences(random, 6, 20);
    expectOneAnswer([&] {
        LeftRightHMM model(6, 5, 1);
        model.estimate(Vesk::ML::HMM::EqualSegments, sequences);
        model.trainMultiple(sequences, 4);
        std::vector<double> parameters = model.a.data;
        parameters.insert(parameters.end(), model.b.data.begin(), model.b.data.end());
        return parameters;
    });
    expectOneAnswer([&] {
        VectorQuantizer2D quantizer;
        quantizer.initializeCodebook(8);
        return quantizer.learnCodebook({zigzag(30), zigzag(40)}, 0.5F);
    });
}

TEST(OwnObjects, ComposedAndReadInEightThreadsStayValid) {
    Random random(7);
    const GestureSet set = randomGestures(random, 3, 4, 5, Parameters::Stochastic);
    const TemporaryFolder folder;
    RecognitionModelHMM stored(set.pointers(), 0.1);
    ASSERT_TRUE(stored.initialize());
    stored.setName("stored");
    ASSERT_TRUE(stored.save(folder.path("model")));
    const auto sequence = random.symbols(12, 5);
    expectOneAnswer([&] {
        std::vector<std::vector<double>> answers;
        for (int i = 0; i < 20; ++i) {
            RecognitionModelHMM composed(set.pointers(), 0.1);
            EXPECT_TRUE(composed.initialize());
            answers.push_back(numbersOf(composed.evaluate(sequence)));
            RecognitionModelHMM loaded;
            EXPECT_TRUE(loaded.read(folder.path("model")));
            answers.push_back(numbersOf(loaded.evaluate(sequence)));
        }
        return answers;
    });
}

}  // namespace
}  // namespace Vesk::Test
