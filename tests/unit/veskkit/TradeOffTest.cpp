#include "Gestures.h"

#include <support/Random.h>
#include <veskkit/evaluation/TradeOff.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::Random;

constexpr double infinity = std::numeric_limits<double>::infinity();

Outcome outcomeOf(const std::string& expected, std::vector<Answer> answers,
                  std::vector<Answer> asUnknown) {
    Outcome outcome{0, 0, expected, {}, {}, Rejection::None, 0.0, {}, {}};
    outcome.answers = std::move(answers);
    outcome.answersAsUnknown = std::move(asUnknown);
    outcome.models.asUnknown = "";
    return outcome;
}

std::vector<Answer> randomAnswers(Random& random) {
    std::vector<Answer> answers;
    for (int n = random.integer(0, 3); n > 0; --n) {
        // Few different ratios: some are equal.
        answers.push_back({random.integer(-20, 16) * 0.7, random.integer(0, 1) == 0 ? "a" : "b"});
    }
    std::sort(answers.begin(), answers.end(),
              [](const Answer& x, const Answer& y) { return x.logRatio > y.logRatio; });
    return answers;
}

std::vector<Outcome> randomOutcomes(Random& random, int count) {
    std::vector<Outcome> outcomes;
    for (int n = 0; n < count; ++n) {
        outcomes.push_back(outcomeOf(random.integer(0, 1) == 0 ? "a" : "b", randomAnswers(random),
                                     randomAnswers(random)));
    }
    return outcomes;
}

TEST(TradeOffTest, TheLastAnswerAboveTheRatioHolds) {
    const std::vector<Answer> answers{{2.0, "a"}, {1.0, "b"}, {-1.0, "c"}};
    EXPECT_EQ(answerAt(answers, 2.0), "");
    EXPECT_EQ(answerAt(answers, 1.5), "a");
    EXPECT_EQ(answerAt(answers, 1.0), "a");
    EXPECT_EQ(answerAt(answers, 0.0), "b");
    EXPECT_EQ(answerAt(answers, -1.5), "c");
    EXPECT_EQ(answerAt({}, -infinity), "");
}

TEST(TradeOffTest, CountsWhatWouldBeAnswered) {
    const std::vector<Outcome> outcomes{
        outcomeOf("a", {{3.0, "a"}}, {}),                        // right below e^3
        outcomeOf("a", {{3.0, "b"}, {1.0, "a"}}, {{0.5, "b"}}),  // wrong from e to e^3
        outcomeOf("b", {}, {{4.0, "a"}, {2.0, "c"}}),            // never recognised
        outcomeOf("b", {{-infinity, "b"}}, {{-1.0, "a"}}),
    };
    const TradeOffPoint low = tradeOffAt(outcomes, 1.0);
    EXPECT_EQ(low.correct.count, 2U);
    EXPECT_EQ(low.wrong.count, 0U);
    EXPECT_EQ(low.rejected.count, 2U);
    EXPECT_EQ(low.unknownAccepted.count, 2U);
    EXPECT_EQ(low.unknownAccepted.total, 4U);
    const TradeOffPoint high = tradeOffAt(outcomes, std::exp(2.5));
    EXPECT_EQ(high.correct.count, 1U);
    EXPECT_EQ(high.wrong.count, 1U);
    EXPECT_EQ(high.rejected.count, 2U);
    EXPECT_EQ(high.unknownAccepted.count, 1U);
    EXPECT_EQ(high.ratio, std::exp(2.5));
}

TEST(TradeOffTest, TracesNotTakenForUnknownDoNotCount) {
    Outcome outcome = outcomeOf("a", {{3.0, "a"}}, {{3.0, "b"}});
    outcome.models.asUnknown.reset();
    EXPECT_EQ(tradeOffAt({outcome}, 1.0).unknownAccepted.total, 0U);
    EXPECT_EQ(ratioFor({outcome}, 0.0), 1e-6);
}

TEST(TradeOffTest, TheCurveGoesThroughAllRatiosOfAModel) {
    Random random(1);
    const std::vector<Outcome> outcomes = randomOutcomes(random, 50);
    const std::vector<TradeOffPoint> curve = tradeOffOf(outcomes);
    ASSERT_EQ(curve.size(), 73U);
    EXPECT_NEAR(curve.front().ratio, 1e-6, 1e-18);
    EXPECT_NEAR(curve.back().ratio, 1e12, 1.0);
    for (std::size_t i = 1; i < curve.size(); ++i) {
        EXPECT_GT(curve[i].ratio, curve[i - 1].ratio);
        EXPECT_GE(curve[i].rejected.count, curve[i - 1].rejected.count);
        EXPECT_LE(curve[i].unknownAccepted.count, curve[i - 1].unknownAccepted.count);
        EXPECT_EQ(curve[i].correct.count + curve[i].wrong.count + curve[i].rejected.count, 50U);
    }
}

TEST(TradeOffTest, TheRatioIsTheLeastThatKeepsTheShare) {
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const std::vector<Outcome> outcomes = randomOutcomes(random, random.integer(1, 40));
        const double share = random.integer(0, 10) / 10.0;
        const double ratio = ratioFor(outcomes, share);
        EXPECT_LE(tradeOffAt(outcomes, ratio).unknownAccepted.value(), ratio < 1e12 ? share : 1.0);
        if (ratio > 1e-6) {
            const double below = ratio * (1.0 - 1e-6);
            EXPECT_GT(tradeOffAt(outcomes, below).unknownAccepted.value(), share);
        }
    }
}

TEST(TradeOffTest, NoRatioIsBeyondWhatAModelCanBeGiven) {
    EXPECT_EQ(ratioFor({outcomeOf("a", {}, {{100.0, "b"}})}, 0.0), 1e12);
    EXPECT_EQ(ratioFor({outcomeOf("a", {}, {{infinity, "b"}})}, 0.0), 1e12);
    EXPECT_EQ(ratioFor({outcomeOf("a", {}, {{-100.0, "b"}})}, 0.0), 1e-6);
    EXPECT_EQ(ratioFor({outcomeOf("a", {}, {{1.0, "b"}})}, 1.0), 1e-6);
    EXPECT_EQ(ratioFor({}, 0.0), 1e-6);
}

}  // namespace
}  // namespace Vesk::Kit
