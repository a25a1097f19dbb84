#include "Diagnosis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
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
using Vesk::Test::findingsAfter;
using Vesk::Test::onlyFindingAfter;
using Vesk::Test::quickly;

TEST(DoctorLabelsTest, MissingLabelsAreOneFinding) {
    const Finding finding = onlyFindingAfter([](std::vector<Trace>& traces) {
        traces[3].gesture.clear();
        traces[7].gesture.clear();
    });
    expectFinding(finding, FindingKind::MissingLabel, Weight::Serious);
    ASSERT_EQ(finding.traces.size(), 2u);
    EXPECT_EQ(finding.traces[1].line, 8u);
    EXPECT_THAT(finding.text, HasSubstr("t.jsonl:4: a trace by u01 and 1 other: found no label"));
}

TEST(DoctorLabelsTest, ALabelThatNoModelHoldsIsFound) {
    const Finding finding = onlyFindingAfter([](std::vector<Trace>& traces) {
        for (Trace& trace : traces) {
            if (trace.gesture == "check")
                trace.gesture =
                    "ch\x01"
                    "eck";
        }
    });
    expectFinding(finding, FindingKind::UnstorableLabel, Weight::Serious);
}

/// Adds the checks once more, moved, with another label.
Change checksAs(const std::string& label) {
    return [label](std::vector<Trace>& traces) {
        std::vector<Trace> more = cleanSet({"check"});
        for (Trace& trace : more) {
            trace.gesture = label;
            for (std::vector<double>& point : trace.points) point[0] += 0.25;
        }
        traces.insert(traces.end(), more.begin(), more.end());
    };
}

TEST(DoctorLabelsTest, LabelsThatCollideOrDifferLittleAreFound) {
    std::vector<Finding> findings = findingsAfter([](std::vector<Trace>& traces) {
        checksAs("a b")(traces);
        for (Trace& trace : traces) {
            if (trace.gesture == "check") trace.gesture = "a_b";
        }
    });
    ASSERT_EQ(findings.size(), 1u);
    expectFinding(findings[0], FindingKind::CollidingLabels, Weight::Serious);
    EXPECT_THAT(findings[0].gestures, ElementsAre("a b", "a_b"));

    // The two are also the same drawings.
    findings = findingsAfter(checksAs("Check"));
    ASSERT_EQ(findings.size(), 2u);
    expectFinding(findings[0], FindingKind::ConfusableGestures, Weight::Serious);
    expectFinding(findings[1], FindingKind::SimilarLabels, Weight::Warning);
    EXPECT_THAT(findings[1].gestures, ElementsAre("Check", "check"));
}

TEST(DoctorLabelsTest, LettersOfBothCasesAreDifferentGestures) {
    EXPECT_THAT(findingsAfter([](std::vector<Trace>& traces) {
                    for (Trace& trace : traces) {
                        if (trace.gesture == "check") trace.gesture = "A";
                        if (trace.gesture == "circle") trace.gesture = "a";
                    }
                }),
                IsEmpty());
}

TEST(DoctorLabelsTest, BlanksInALabelAreAdvice) {
    const Finding finding = onlyFindingAfter([](std::vector<Trace>& traces) {
        for (Trace& trace : traces) {
            if (trace.gesture == "check") trace.gesture = "check mark";
        }
    });
    expectFinding(finding, FindingKind::RenamedLabel, Weight::Advice);
    EXPECT_THAT(finding.advice, HasSubstr("\"check_mark\""));
}

void keepTraces(std::vector<Trace>& traces, const std::string& gesture, std::size_t count) {
    std::size_t seen = 0;
    const auto surplus = [&](const Trace& it) { return it.gesture == gesture && seen++ >= count; };
    traces.erase(std::remove_if(traces.begin(), traces.end(), surplus), traces.end());
}

TEST(DoctorLabelsTest, FewExamplesAreSeriousBelowThreeAndAdviceBelowTen) {
    for (const std::size_t count : {1u, 2u, 3u, 9u}) {
        SCOPED_TRACE(count);
        const Finding finding = onlyFindingAfter([&](std::vector<Trace>& traces) {
            // Of every user, so that nothing else is wrong.
            std::stable_sort(traces.begin(), traces.end(), [](const Trace& x, const Trace& y) {
                return x.line % 4 < y.line % 4;
            });
            keepTraces(traces, "circle", count);
        });
        expectFinding(finding, FindingKind::FewExamples,
                      count < 3 ? Weight::Serious : Weight::Advice);
        EXPECT_THAT(finding.gestures, ElementsAre("circle"));
        EXPECT_EQ(finding.found, static_cast<double>(count));
        EXPECT_EQ(finding.expected, count < 3 ? 3.0 : 10.0);
    }
    EXPECT_THAT(findingsAfter([](std::vector<Trace>& traces) { keepTraces(traces, "circle", 10); }),
                IsEmpty());
}

TEST(DoctorLabelsTest, AGestureWithAQuarterOfTheOthersTracesIsFound) {
    const TraceSynthesizer synthesizer(8);
    std::vector<Trace> traces;
    for (int user = 1; user <= 3; ++user) {
        for (const char* gesture : {"check", "circle", "zigzag"}) {
            const int repetitions = std::string(gesture) == "circle" ? 4 : 17;
            for (int repetition = 1; repetition <= repetitions; ++repetition)
                traces.push_back(synthesizer.draw(gesture, user, repetition));
        }
    }
    const std::vector<Finding> findings = diagnose(traces, quickly());
    ASSERT_EQ(findings.size(), 1u);
    expectFinding(findings[0], FindingKind::UnevenExamples, Weight::Advice);
    EXPECT_EQ(findings[0].found, 12.0);
    EXPECT_EQ(findings[0].expected, 51.0 / 4.0);
}

TEST(DoctorLabelsTest, OneUserAloneIsFoundForTheSetOrForAGesture) {
    Finding finding = onlyFindingAfter([](std::vector<Trace>& traces) {
        for (Trace& trace : traces) trace.user = "ann";
    });
    expectFinding(finding, FindingKind::SingleUser, Weight::Advice);
    EXPECT_THAT(finding.gestures, IsEmpty());
    finding = onlyFindingAfter([](std::vector<Trace>& traces) {
        for (Trace& trace : traces) {
            if (trace.gesture == "zigzag") trace.user = "ann";
        }
    });
    expectFinding(finding, FindingKind::SingleUser, Weight::Advice);
    EXPECT_THAT(finding.gestures, ElementsAre("zigzag"));
    EXPECT_THAT(findingsAfter([](std::vector<Trace>& traces) {
                    for (Trace& trace : traces) trace.user.clear();
                }),
                IsEmpty());
}

}  // namespace
}  // namespace Vesk::Kit
