#include <veskkit/recognition/Posterior.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace Vesk::Kit {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

/// Likeliest first; the margin is the first one's.
Result result(std::vector<Score> scores, double margin) {
    Result made;
    made.rejection = margin > 0.0 ? Rejection::None : Rejection::Threshold;
    if (margin > 0.0) made.gesture = scores.front().gesture;
    made.scores = std::move(scores);
    made.margin = margin;
    return made;
}

TEST(PosteriorTest, SharesByWeightedProbability) {
    // Weights 6, 2 and a threshold of 2.
    const Result asked = result({{"a", std::log(0.6)}, {"b", std::log(0.2)}}, std::log(3.0));
    const Posterior found = posteriorOf(asked, {"b", "a", "unknown"});
    EXPECT_NEAR(found.gestures[0], 0.2, 1e-12);
    EXPECT_NEAR(found.gestures[1], 0.6, 1e-12);
    EXPECT_EQ(found.gestures[2], 0.0);
    EXPECT_NEAR(found.threshold, 0.2, 1e-12);
    EXPECT_NEAR(found.margins[0], 0.0, 1e-12);
    EXPECT_NEAR(found.margins[1], std::log(3.0), 1e-12);
    EXPECT_EQ(found.margins[2], -infinity);
}

TEST(PosteriorTest, TheMarginIsTheWinnersWhereTheLikeliestDidNotWin) {
    Result asked = result({{"a", 0.0}, {"b", -1.0}}, 2.0);
    asked.gesture = "b";
    EXPECT_DOUBLE_EQ(posteriorOf(asked, {"a"}).margins[0], 3.0);
}

TEST(PosteriorTest, AllIsTheThresholdsWhereNothingExplainsTheTrace) {
    for (const Result& asked :
         {Result{}, result({{"a", -infinity}}, -infinity), result({{"a", -900.0}}, -infinity)}) {
        const Posterior found = posteriorOf(asked, {"a"});
        EXPECT_EQ(found.gestures[0], 0.0);
        EXPECT_EQ(found.threshold, 1.0);
        EXPECT_EQ(found.margins[0], -infinity);
    }
}

TEST(PosteriorTest, NothingIsTheThresholdsWhereThatIsZero) {
    const Posterior found = posteriorOf(result({{"a", 0.0}, {"b", 0.0}}, infinity), {"a", "b"});
    EXPECT_EQ(found.gestures[0], 0.5);
    EXPECT_EQ(found.gestures[1], 0.5);
    EXPECT_EQ(found.threshold, 0.0);
}

TEST(PosteriorTest, SmallProbabilitiesDoNotUnderflow) {
    const Posterior found = posteriorOf(result({{"a", -5000.0}, {"b", -5001.0}}, -3.0), {"a", "b"});
    EXPECT_NEAR(found.gestures[0] / found.gestures[1], std::exp(1.0), 1e-9);
    EXPECT_NEAR(found.gestures[0] / found.threshold, std::exp(-3.0), 1e-9);
}

}  // namespace
}  // namespace Vesk::Kit
