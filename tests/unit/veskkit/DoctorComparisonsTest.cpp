#include "Diagnosis.h"

#include <veskkit/diagnosis/internal/Examination.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Vesk::Test::Change;
using Vesk::Test::cleanSet;
using Vesk::Test::expectFinding;
using Vesk::Test::expectFindingAbout;
using Vesk::Test::findingsAfter;
using Vesk::Test::onlyFindingAfter;
using Vesk::Test::quickly;

TEST(DoctorComparisonsTest, CopiesAreFoundAndSeriousWithTwoLabels) {
    Finding finding = onlyFindingAfter([](std::vector<Trace>& traces) {
        traces.push_back(traces[4]);
        traces.back().line = 99;
    });
    expectFinding(finding, FindingKind::DuplicateTrace, Weight::Warning);
    ASSERT_EQ(finding.traces.size(), 2u);
    EXPECT_EQ(finding.traces[0].line, 5u);
    EXPECT_EQ(finding.traces[1].line, 99u);
    finding = onlyFindingAfter([](std::vector<Trace>& traces) {
        traces.push_back(traces[4]);
        traces.back().gesture = "zigzag";
    });
    expectFinding(finding, FindingKind::ContradictoryDuplicates, Weight::Serious);
    EXPECT_THAT(finding.gestures, ElementsAre("circle", "zigzag"));
    EXPECT_EQ(finding.found, 2.0);
}

TEST(DoctorComparisonsTest, AWrongLabelIsFoundWithWhatTheTraceShows) {
    for (const bool crossValidation : {true, false}) {
        std::vector<Trace> traces = cleanSet();
        ASSERT_EQ(traces[9].gesture, "zigzag");
        traces[9].gesture = "circle";
        DoctorOptions options = quickly();
        options.crossValidation = crossValidation;
        const std::vector<Finding> findings = diagnose(traces, options);
        ASSERT_EQ(findings.size(), 1u);
        expectFindingAbout(findings[0], 9, FindingKind::MislabelledTrace, Weight::Warning);
        EXPECT_THAT(findings[0].gestures, ElementsAre("circle", "zigzag"));
        EXPECT_GT(findings[0].sureness, 0.8);
        EXPECT_LT(findings[0].sureness, 1.0);
    }
}

TEST(DoctorComparisonsTest, ATraceFarFromAllOthersOfItsGestureIsFound) {
    const TraceSynthesizer synthesizer(7);
    const Finding finding = onlyFindingAfter([&](std::vector<Trace>& traces) {
        traces[5].points = synthesizer.draw("star", 1, 1).points;
    });
    expectFindingAbout(finding, 5, FindingKind::OutlierTrace, Weight::Advice);
    EXPECT_GT(finding.found, finding.expected);
}

/// Another gesture: circles with some change to their points.
Change circlesAs(const std::string& gesture, const std::function<void(Points&)>& change) {
    return [=](std::vector<Trace>& traces) {
        const TraceSynthesizer synthesizer(7);
        for (int user = 1; user <= 3; ++user) {
            for (int repetition = 5; repetition <= 8; ++repetition) {
                traces.push_back(synthesizer.draw("circle", user, repetition));
                traces.back().gesture = gesture;
                change(traces.back().points);
            }
        }
    };
}

TEST(DoctorComparisonsTest, GesturesThatCannotBeToldApartAreFoundWithTheirMeans) {
    const Finding finding = onlyFindingAfter(circlesAs("ring", [](Points&) {}));
    expectFinding(finding, FindingKind::ConfusableGestures, Weight::Serious);
    EXPECT_THAT(finding.gestures, ElementsAre("circle", "ring"));
    EXPECT_GE(finding.found, 8.0);
    ASSERT_EQ(finding.means.size(), 2u);
    EXPECT_EQ(finding.means[0].gesture, "circle");
    ASSERT_EQ(finding.means[0].points.size(), 32u);
    // Laid one over the other they hardly differ.
    for (std::size_t p = 0; p < 32; ++p) {
        for (const std::size_t axis : {0, 1}) {
            EXPECT_NEAR(finding.means[0].points[p][axis], finding.means[1].points[p][axis], 0.3);
            EXPECT_LT(std::abs(finding.means[0].points[p][axis]), 1.1);
        }
    }
}

TEST(DoctorComparisonsTest, WhatTheRecogniserDoesNotSeeIsNamed) {
    const auto grow = [](Points& points) {
        for (auto& point : points) point = {4.0 * point[0], 4.0 * point[1]};
    };
    std::vector<Finding> findings = findingsAfter(circlesAs("sun", grow));
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_THAT(findings[0].advice, HasSubstr("they differ in size"));
    findings = findingsAfter(circlesAs("sun", [](Points& points) {
        for (auto& point : points) point[1] += 5000.0;
    }));
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_THAT(findings[0].advice, HasSubstr("they differ in position"));
}

TEST(DoctorComparisonsTest, TheOtherWayRoundIsAnotherGesture) {
    EXPECT_THAT(findingsAfter(circlesAs(
                    "back", [](Points& points) { std::reverse(points.begin(), points.end()); })),
                IsEmpty());
}

// Shapes of two positions: medoid (-1, 0) - (1, 0); the second is it doubled and fits at half its
// size, the third one runs backwards.
TEST(DoctorComparisonsTest, TheMeanTakesShapesScaledToTheMedoid) {
    const std::vector<double> medoid{-1, 0, 1, 0};
    const std::vector<double> doubled{-2, 0, 2, 0};
    const std::vector<double> tilted{-1, -1, 1, 1};
    const std::vector<double> backwards{1, 0, -1, 0};
    EXPECT_EQ(internal::meanShape({&medoid, &medoid, &doubled, &backwards}),
              (Points{{-1, 0}, {1, 0}}));
    EXPECT_EQ(internal::meanShape({&medoid, &medoid, &tilted, &tilted}),
              (Points{{-0.75, -0.25}, {0.75, 0.25}}));
    EXPECT_THAT(internal::meanShape({}), IsEmpty());
}

}  // namespace
}  // namespace Vesk::Kit
