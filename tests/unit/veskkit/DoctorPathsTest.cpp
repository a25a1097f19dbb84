#include "Diagnosis.h"

#include <support/Random.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <vector>

namespace Vesk::Kit {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using Vesk::Test::expectFindingAbout;
using Vesk::Test::findingsAfter;
using Vesk::Test::onlyFindingAfter;
using Vesk::Test::resize;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(DoctorPathsTest, UnusablePointsAreFound) {
    for (const double value : {nan, infinity, -infinity}) {
        expectFindingAbout(
            onlyFindingAfter([&](std::vector<Trace>& traces) { traces[5].points[4][1] = value; }),
            5, FindingKind::UnusablePoints, Weight::Serious);
    }
    const Finding finding =
        onlyFindingAfter([](std::vector<Trace>& traces) { traces[5].points[4] = {1.0}; });
    expectFindingAbout(finding, 5, FindingKind::UnusablePoints, Weight::Serious);
    EXPECT_THAT(finding.text, HasSubstr("found 1 number as points[4], expected 2"));
}

TEST(DoctorPathsTest, HugeCoordinatesAreFoundAndSeriousWherePathsOverflow) {
    Finding finding =
        onlyFindingAfter([](std::vector<Trace>& traces) { traces[0].points[3][0] = 1.6e12; });
    expectFindingAbout(finding, 0, FindingKind::HugeCoordinates, Weight::Warning);
    EXPECT_EQ(finding.found, 1.6e12);
    finding = onlyFindingAfter([](std::vector<Trace>& traces) { traces[0].points[3][0] = 1e300; });
    expectFindingAbout(finding, 0, FindingKind::HugeCoordinates, Weight::Serious);
}

TEST(DoctorPathsTest, TracesWithoutMovementAreFound) {
    for (const Points& points : {Points{}, Points{{3, 4}}, Points(20, {3, 4})}) {
        expectFindingAbout(
            onlyFindingAfter([&](std::vector<Trace>& traces) { traces[11].points = points; }), 11,
            FindingKind::NoDirection, Weight::Serious);
    }
}

TEST(DoctorPathsTest, TooFewPositionsAreFound) {
    const Finding finding = onlyFindingAfter([](std::vector<Trace>& traces) {
        Points& points = traces[2].points;
        points = {points.front(), points.front(), points[points.size() / 2], points.back()};
    });
    expectFindingAbout(finding, 2, FindingKind::FewPoints, Weight::Warning);
    EXPECT_EQ(finding.found, 3.0);
    EXPECT_EQ(finding.expected, 5.0);
}

TEST(DoctorPathsTest, DotsAndShortPathsAreFound) {
    expectFindingAbout(
        onlyFindingAfter([](std::vector<Trace>& traces) { resize(traces[6], 0.05); }), 6,
        FindingKind::Dot, Weight::Warning);
    expectFindingAbout(
        onlyFindingAfter([](std::vector<Trace>& traces) { resize(traces[6], 0.15); }), 6,
        FindingKind::ShortPath, Weight::Warning);
}

TEST(DoctorPathsTest, AUsersOwnSizeIsNoDefect) {
    EXPECT_THAT(findingsAfter([](std::vector<Trace>& traces) {
                    for (Trace& trace : traces) {
                        if (trace.user == "u02") resize(trace, 0.01);
                    }
                }),
                IsEmpty());
}

void straighten(Trace& trace) {
    const std::size_t count = trace.points.size();
    for (std::size_t p = 0; p < count; ++p) {
        const auto along = static_cast<double>(p);
        trace.points[p] = {4.0 * along, 3.0 * along};
    }
}

TEST(DoctorPathsTest, OneDirectionIsFoundUnlessTheGestureIsALine) {
    expectFindingAbout(onlyFindingAfter([](std::vector<Trace>& traces) { straighten(traces[6]); }),
                       6, FindingKind::StraightPath, Weight::Warning);
    const std::vector<Finding> findings = findingsAfter([](std::vector<Trace>& traces) {
        Vesk::Test::Random random(3);
        for (Trace& trace : traces) {
            if (trace.gesture != "circle") continue;
            straighten(trace);
            for (std::vector<double>& point : trace.points) point[1] += random.unit();
        }
    });
    EXPECT_THAT(findings, IsEmpty());
}

}  // namespace
}  // namespace Vesk::Kit
