#include <veskkit/evaluation/Share.h>

#include <gtest/gtest.h>

namespace Vesk::Kit {
namespace {

TEST(ShareTest, CountsTrials) {
    Share share;
    EXPECT_EQ(share.value(), 0.0);
    for (const bool counted : {true, false, true, true}) share.add(counted);
    EXPECT_EQ(share.count, 3u);
    EXPECT_EQ(share.total, 4u);
    EXPECT_EQ(share.value(), 0.75);
}

TEST(ShareTest, IntervalIsWilsons) {
    // Worked by hand: (p + z^2 / 2n -+ z sqrt(p (1 - p) / n + z^2 / 4n^2)) / (1 + z^2 / n).
    const Interval half = Share{5, 10}.interval();
    EXPECT_NEAR(half.low, 0.236593, 1e-6);
    EXPECT_NEAR(half.high, 0.763407, 1e-6);
    const Interval most = Share{2863, 2880}.interval();
    EXPECT_NEAR(most.low, 0.990569, 1e-5);
    EXPECT_NEAR(most.high, 0.996311, 1e-5);
}

TEST(ShareTest, DrawsOnTheSameTracesCountAsOne) {
    EXPECT_EQ((Share{25, 50}.interval(5).low), (Share{5, 10}.interval().low));
    EXPECT_EQ((Share{25, 50}.interval(5).high), (Share{5, 10}.interval().high));
}

TEST(ShareTest, IntervalReachesTheEndsOfTheRangeWhereTheShareDoes) {
    const Interval none = Share{0, 10}.interval();
    EXPECT_EQ(none.low, 0.0);
    EXPECT_NEAR(none.high, 0.277533, 1e-6);
    const Interval all = Share{10, 10}.interval();
    EXPECT_NEAR(all.low, 0.722467, 1e-6);
    EXPECT_EQ(all.high, 1.0);
    EXPECT_EQ(Share{}.interval().low, 0.0);
    EXPECT_EQ(Share{}.interval().high, 1.0);
}

}  // namespace
}  // namespace Vesk::Kit
