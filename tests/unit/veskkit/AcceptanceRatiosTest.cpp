#include <veskkit/training/internal/AcceptanceRatios.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace Vesk::Kit::internal {
namespace {

/// From `first` on, 0.1 apart.
std::vector<double> logsFrom(double first, int count) {
    std::vector<double> logs;
    for (int i = 0; i < count; ++i) logs.push_back(first + 0.1 * i);
    return logs;
}

TEST(AcceptanceRatiosTest, GesturesOfManyTracesHaveTheirOwnRatio) {
    // 10 % of 60 are six traces, in whichever run they were tested; 49 traces are too few.
    const LogRatios one{{"far", logsFrom(20.0, 30)}, {"few", logsFrom(20.0, 49)}};
    const LogRatios other{{"far", logsFrom(23.0, 30)}, {"near", logsFrom(5.0, 50)}};
    const LogRatios ones{{"far", std::vector<double>(30, 1e3)}, {"few", {}}};
    const LogRatios others{{"far", std::vector<double>(30, 1e3)}, {"near", logsFrom(0.0, 50)}};
    const CalibratedRatios found = ratiosOf({{{one}, {ones}}, {{other}, {others}}}, {0}, 0.1);
    ASSERT_EQ(found.own.size(), 2u);
    EXPECT_DOUBLE_EQ(found.own.at("far"), std::exp(20.6));
    EXPECT_DOUBLE_EQ(found.own.at("near"), std::exp(5.5));
    EXPECT_DOUBLE_EQ(found.all, std::exp(5.0 + 0.1 * 15)) << "10 % of 159 traces";
}

// Another gesture, of which no more than R is asked, would be likelier than them.
TEST(AcceptanceRatiosTest, NoGestureIsAskedForMoreThanItsTracesLeadBy) {
    const LogRatios ratios{{"g", std::vector<double>(100, 30.0)},
                           {"h", std::vector<double>(100, 10.0)}};
    const auto ownWith = [&](double lead, int behind) {
        std::vector<double> leads(100, 40.0);
        std::fill_n(leads.begin(), behind, lead);
        const LogRatios all{{"g", leads}, {"h", std::vector<double>(100, 40.0)}};
        return ratiosOf({{{ratios}, {all}}}, {0}, 0.02).own.at("g");
    };
    const double reached = std::exp(30.0);
    EXPECT_DOUBLE_EQ(ownWith(40.0, 0), reached);
    EXPECT_DOUBLE_EQ(ownWith(4.0, 2), reached) << "2 % may be lost";
    EXPECT_DOUBLE_EQ(ownWith(4.0, 3), std::exp(10.0 + 4.0) / 2)
        << "the ratio of all is half of h's";
    EXPECT_DOUBLE_EQ(ownWith(25.0, 3), reached);
}

// With R as large as a file may have it, the bound is of that.
TEST(AcceptanceRatiosTest, TheBoundByLeadsIsOfTheRatioThatIsAskedFor) {
    const LogRatios ratios{{"g", std::vector<double>(100, 50.0)}};
    const LogRatios leads{{"g", std::vector<double>(100, 1.0)}};
    const CalibratedRatios found = ratiosOf({{{ratios}, {leads}}}, {0}, 0.02);
    EXPECT_EQ(found.all, 1e12);
    const Acceptance acceptance = acceptanceFor({}, TrainingOptions(), found, true);
    EXPECT_EQ(acceptance.ratio, 1e12);
    EXPECT_DOUBLE_EQ(acceptance.priors.at("g"), std::exp(-1.0));
}

// One standard error of the difference: the root of all that differ.
TEST(AcceptanceRatiosTest, TurnedCopiesGoWhereClearlyMoreIsLostToThem) {
    const LogRatios plain{{"g", logsFrom(4.0, 10)}};
    const LogRatios turned{{"g", logsFrom(6.0, 10)}};
    const auto found = [&](std::size_t gained, std::size_t lost) {
        const std::vector<LogRatios> leads{plain, turned};
        return ratiosOf(
            {{{plain, turned}, leads, gained, 1}, {{plain, turned}, leads, 0, lost - 1}}, {0, 2},
            0.0);
    };
    EXPECT_EQ(found(0, 1).turns, 2);
    EXPECT_EQ(found(6, 10).turns, 2) << "4 more, the root of 16";
    EXPECT_EQ(found(30, 20).turns, 2);
    EXPECT_EQ(found(5, 10).turns, 0) << "5 more, the root of 15";
    EXPECT_EQ(found(0, 2).turns, 0);
    // The ratios are those of what is chosen.
    EXPECT_DOUBLE_EQ(found(6, 10).all, std::exp(6.5) / 2);
    EXPECT_DOUBLE_EQ(found(5, 10).all, std::exp(4.5) / 2);
}

TEST(AcceptanceRatiosTest, PriorsAskForMoreWhereUsersWereLeftOut) {
    const CalibratedRatios found{100.0, {{"far", 1e9}, {"near", 99.0}, {"strict", 250.0}}};
    const std::map<std::string, double> priors{{"far", 1.0 / 2000}, {"strict", 0.4}};
    TrainingOptions options;
    const Acceptance users = acceptanceFor({}, options, found, true);
    EXPECT_EQ(users.ratio, 100.0);
    EXPECT_EQ(users.priors, priors);
    EXPECT_TRUE(acceptanceFor({}, options, found, false).priors.empty());
    EXPECT_TRUE(acceptanceFor({}, options, {0.0, {{"far", 1e9}}}, true).priors.empty());
    // They are of R, whatever that is.
    options.acceptanceRatio = 3.0;
    const Acceptance given = acceptanceFor({}, options, found, true);
    EXPECT_EQ(given.ratio, 3.0);
    EXPECT_EQ(given.priors, priors);
}

TEST(AcceptanceRatiosTest, ARatioBeyondTheFileTakesManyTraces) {
    const double infinity = std::numeric_limits<double>::infinity();
    const TrainingOptions options;
    EXPECT_EQ(acceptanceFor({}, options, {1e7, {}}, true).ratio, 1e5);
    const Acceptance many = acceptanceFor({}, options, {1e7, {{"far", 2e7}, {"near", 1.0}}}, true);
    EXPECT_EQ(many.ratio, 1e7);
    EXPECT_EQ(many.priors, (std::map<std::string, double>{{"far", 0.5}}));
    const Acceptance endless = acceptanceFor({}, options, {1e12, {{"far", infinity}}}, true);
    EXPECT_EQ(endless.ratio, 1e12);
    EXPECT_DOUBLE_EQ(endless.priors.at("far"), 1.0 / 2000);
    const LogRatios endlessOnes{{"g", std::vector<double>(9, infinity)}};
    EXPECT_EQ(ratiosOf({{{endlessOnes}, {endlessOnes}}}, {0}, 0.02).all, 1e12);
    const LogRatios hopeless{{"g", std::vector<double>(9, -100.0)}};
    EXPECT_EQ(ratiosOf({{{hopeless}, {endlessOnes}}}, {0}, 0.02).all, 1e-6);
}

}  // namespace
}  // namespace Vesk::Kit::internal
