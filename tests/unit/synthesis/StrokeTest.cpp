#include <veskkit/synthesis/internal/Stroke.h>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

using Vesk::Kit::internal::curveThrough;
using Vesk::Kit::internal::Knot;
using Vesk::Kit::internal::Motion;
using Vesk::Kit::internal::Position;
using Vesk::Kit::internal::setInMotion;
using Vesk::Kit::internal::smooth;

TEST(Stroke, CurvePassesThroughEveryKnot) {
    const std::vector<Knot> knots{{{0.0, 1.0}}, {{0.5, 0.0}}, {{1.0, 1.0}, true}, {{2.0, 0.0}}};

    const std::vector<Position> path = curveThrough(knots);

    ASSERT_EQ(path.size(), 1U + 3U * 16U);
    for (std::size_t k = 0; k < knots.size(); ++k) {
        SCOPED_TRACE(k);
        EXPECT_DOUBLE_EQ(path[k * 16].x, knots[k].at.x);
        EXPECT_DOUBLE_EQ(path[k * 16].y, knots[k].at.y);
    }
}

TEST(Stroke, PieceBetweenTwoCornersIsAStraightLineEvenlyWalked) {
    const std::vector<Position> path = curveThrough({{{0.0, 0.0}}, {{1.6, 3.2}}});

    ASSERT_EQ(path.size(), 17U);
    for (int i = 0; i <= 16; ++i) {
        SCOPED_TRACE(i);
        EXPECT_DOUBLE_EQ(path[static_cast<std::size_t>(i)].x, 0.1 * i);
        EXPECT_DOUBLE_EQ(path[static_cast<std::size_t>(i)].y, 0.2 * i);
    }
}

TEST(Stroke, CurveIsSmoothAtAKnotThatIsNoCorner) {
    const std::vector<Position> path = curveThrough({{{0.0, 0.0}}, {{1.0, 1.0}}, {{2.0, 0.0}}});

    // The tangent at the middle knot is parallel to the line between its neighbours.
    EXPECT_NEAR(path[17].y, path[15].y, 1e-12);
    EXPECT_GT(path[17].x, path[15].x);
}

TEST(Stroke, SmoothingMovesAPositionHalfWayToTheMiddleOfItsNeighbours) {
    std::vector<Position> path{{0.0, 0.0}, {1.0, 4.0}, {2.0, 0.0}, {3.0, 0.0}};

    smooth(path, 1);

    // y: (0 + 2 * 4 + 0) / 4 = 2 and (4 + 2 * 0 + 0) / 4 = 1, from the heights before.
    EXPECT_DOUBLE_EQ(path[1].y, 2.0);
    EXPECT_DOUBLE_EQ(path[2].y, 1.0);
    EXPECT_DOUBLE_EQ(path[1].x, 1.0);
    EXPECT_DOUBLE_EQ(path[0].y, 0.0);
    EXPECT_DOUBLE_EQ(path[3].y, 0.0);
}

TEST(Stroke, PositionAtATimeIsBetweenItsNeighbours) {
    const Motion motion{{{0.0, 0.0}, {10.0, 0.0}, {10.0, 20.0}}, {0.0, 1.0, 3.0}};

    EXPECT_DOUBLE_EQ(motion.at(0.25).x, 2.5);
    EXPECT_DOUBLE_EQ(motion.at(1.0).x, 10.0);
    EXPECT_DOUBLE_EQ(motion.at(2.0).y, 10.0);
    EXPECT_DOUBLE_EQ(motion.at(-1.0).x, 0.0);
    EXPECT_DOUBLE_EQ(motion.at(9.0).y, 20.0);
    EXPECT_DOUBLE_EQ(motion.duration(), 3.0);
}

TEST(Stroke, PenSlowsDownAtBothEndsAndAtACorner) {
    const Motion motion =
        setInMotion(curveThrough({{{0.0, 0.0}}, {{1.0, 0.0}, true}, {{1.0, 1.0}}}), 1.0);

    // Even steps: the time of each is the inverse of its speed.
    const auto timeOf = [&](std::size_t i) { return motion.times[i] - motion.times[i - 1]; };
    const double inTheMiddle = timeOf(8);
    EXPECT_GT(timeOf(1), 2.0 * inTheMiddle);
    EXPECT_GT(timeOf(32), 2.0 * inTheMiddle);
    EXPECT_GT(timeOf(16), 2.0 * inTheMiddle);
    EXPECT_NEAR(timeOf(24), inTheMiddle, 1e-9);
}

TEST(Stroke, TimeGrowsWithTheSquareRootOfTheLength) {
    const Motion once = setInMotion(curveThrough({{{0.0, 0.0}}, {{1.0, 0.0}}}), 0.5);
    const Motion fourTimes = setInMotion(curveThrough({{{0.0, 0.0}}, {{4.0, 0.0}}}), 0.5);

    EXPECT_NEAR(once.duration(), 0.5, 1e-12);
    EXPECT_NEAR(fourTimes.duration(), 1.0, 1e-12);
}

}  // namespace
