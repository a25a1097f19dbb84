#include <vesk/quantizer/KMeansMotionVec.h>

#include <support/BitEqual.h>
#include <support/Capture.h>

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>
#include <vector>

namespace {

using namespace Vesk::Test;
using Vesk::ML::KMeansMotionVec;
using Rows = std::vector<std::vector<double>>;

static_assert(std::is_same_v<decltype(KMeansMotionVec::centres), std::vector<double>>);
static_assert(std::is_constructible_v<KMeansMotionVec, std::vector<double>, Rows&>);
static_assert(!std::is_polymorphic_v<KMeansMotionVec>);
static_assert(
    std::is_same_v<decltype(&KMeansMotionVec::learn), void (KMeansMotionVec::*)(int, double)>);
static_assert(std::is_same_v<decltype(&KMeansMotionVec::classify),
                             std::vector<std::vector<int>> (KMeansMotionVec::*)()>);

TEST(ClustererInterfaceTest, CentresAreTakenAsGiven) {
    Rows data;
    const std::vector<double> centres = {370.0, -5.0, 90.0,
                                         90.0,  -0.0, std::numeric_limits<double>::quiet_NaN()};
    const KMeansMotionVec clusterer(centres, data);
    EXPECT_TRUE(bitEqual(centres, clusterer.centres));
}

TEST(ClustererInterfaceTest, DataIsReferredTo) {
    Rows data = {{0.0}};
    KMeansMotionVec clusterer({0.0, 90.0}, data);
    EXPECT_EQ(clusterer.classify(), (std::vector<std::vector<int>>{{0}}));
    data = {{90.0, 1.0}, {}, {80.0}};
    EXPECT_EQ(clusterer.classify(), (std::vector<std::vector<int>>{{1, 0}, {}, {1}}));
}

TEST(ClustererInterfaceTest, CentresOfTheMemberCount) {
    Rows data = {{0.0, 100.0}};
    KMeansMotionVec clusterer({0.0, 90.0}, data);
    EXPECT_EQ(clusterer.classify(), (std::vector<std::vector<int>>{{0, 1}}));
    clusterer.centres = {100.0, 10.0, 350.0};
    EXPECT_EQ(clusterer.classify(), (std::vector<std::vector<int>>{{1, 0}}));
}

TEST(ClustererInterfaceTest, DataIsNotModified) {
    const Rows before = {{-10.0, 725.0, 5.0}, {}, {1e300}};
    Rows data = before;
    KMeansMotionVec clusterer({0.0, 90.0}, data);
    clusterer.classify();
    clusterer.learn(-1, 1.0);
    EXPECT_EQ(data, before);
}

TEST(ClustererInterfaceTest, NothingIsWritten) {
    Rows data = {{-10.0, 725.0, 5.0}};
    KMeansMotionVec clusterer({0.0, 90.0}, data);
    Capture capture;
    clusterer.classify();
    clusterer.learn(-1, 1.0);
    EXPECT_EQ(capture.text(), "");
    EXPECT_EQ(capture.flushes(), 0);
}

}  // namespace
