#include "../veskkit/Gestures.h"

#include <veskkit/recognition/GestureRecognizer.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace Vesk::Kit {
namespace {

std::vector<std::string> answersOf(const GestureRecognizer& recognizer,
                                   const std::vector<Trace>& traces) {
    std::vector<std::string> answers;
    for (const Trace& trace : traces) {
        const Result result = recognizer.recognize(trace);
        answers.push_back(result.gesture + toString(result.rejection));
        for (const Score& score : result.scores) {
            answers.back() += ' ' + score.gesture + std::to_string(score.logProbability);
        }
    }
    return answers;
}

TEST(SharedRecognizer, AnswersEightThreadsAsOne) {
    const GestureRecognizer recognizer(Vesk::Test::smallModel());
    const std::vector<Trace> traces = Vesk::Test::drawnTraces(1, 2, 2);
    const std::vector<std::string> expected = answersOf(recognizer, traces);
    std::vector<std::vector<std::string>> found(8);
    std::vector<std::thread> threads;
    for (auto& answers : found) {
        threads.emplace_back([&] { answers = answersOf(recognizer, traces); });
    }
    for (std::thread& thread : threads) thread.join();
    for (const auto& answers : found) EXPECT_EQ(answers, expected);
}

}  // namespace
}  // namespace Vesk::Kit
