#include "Gestures.h"

#include <support/Random.h>
#include <veskkit/Error.h>
#include <veskkit/diagnosis/Doctor.h>
#include <veskkit/diagnosis/internal/Examination.h>
#include <veskkit/synthesis/TraceSynthesizer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace Vesk::Kit {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Vesk::Test::textOf;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

const std::vector<std::string> usualGestures{"check", "circle", "zigzag"};

/// Three users, four repetitions of each gesture.
std::vector<Trace> cleanSet(const std::vector<std::string>& gestures = usualGestures) {
    const TraceSynthesizer synthesizer(7);
    std::vector<Trace> traces;
    for (int user = 1; user <= 3; ++user) {
        for (const std::string& gesture : gestures) {
            for (int repetition = 1; repetition <= 4; ++repetition) {
                traces.push_back(synthesizer.draw(gesture, user, repetition));
                traces.back().source = "t.jsonl";
                traces.back().line = traces.size();
            }
        }
    }
    return traces;
}

/// Models small enough to be trained many times.
DoctorOptions quickly() {
    DoctorOptions options;
    options.training.states = 12;
    options.training.iterations = 1;
    return options;
}

using Change = std::function<void(std::vector<Trace>&)>;

std::vector<Finding> findingsAfter(const Change& change) {
    std::vector<Trace> traces = cleanSet();
    change(traces);
    return diagnose(traces, quickly());
}

/// The only finding after a change of the clean set.
Finding onlyFindingAfter(const Change& change) {
    std::vector<Finding> findings = findingsAfter(change);
    std::string others;
    for (const Finding& finding : findings) others += "\n" + finding.text;
    EXPECT_EQ(findings.size(), 1u) << others;
    return findings.empty() ? Finding{} : findings.front();
}

void expectFinding(const Finding& finding, FindingKind kind, Weight weight) {
    EXPECT_STREQ(toString(finding.kind), toString(kind));
    EXPECT_STREQ(toString(finding.weight), toString(weight));
    EXPECT_FALSE(finding.text.empty());
    EXPECT_EQ(finding.advice.back(), '.');
}

/// Expects a finding about the trace at `place` alone.
void expectFindingAbout(const Finding& finding, std::size_t place, FindingKind kind,
                        Weight weight) {
    expectFinding(finding, kind, weight);
    ASSERT_EQ(finding.traces.size(), 1u);
    EXPECT_EQ(finding.traces[0].trace, place);
    EXPECT_EQ(finding.traces[0].source, "t.jsonl");
    EXPECT_EQ(finding.traces[0].line, place + 1);
    EXPECT_THAT(finding.text, testing::StartsWith("t.jsonl:" + std::to_string(place + 1) + ": "));
}

void resize(Trace& trace, double factor) {
    for (std::vector<double>& point : trace.points) {
        for (double& value : point) value *= factor;
    }
}

void keepTraces(std::vector<Trace>& traces, const std::string& gesture, std::size_t count) {
    std::size_t seen = 0;
    const auto surplus = [&](const Trace& it) { return it.gesture == gesture && seen++ >= count; };
    traces.erase(std::remove_if(traces.begin(), traces.end(), surplus), traces.end());
}

TEST(DoctorTest, NothingIsFoundInACleanSet) {
    EXPECT_THAT(findingsAfter([](std::vector<Trace>&) {}), IsEmpty());
    const std::vector<Trace> all = cleanSet(TraceSynthesizer::gestures());
    for (const Finding& finding : diagnose(all, quickly())) ADD_FAILURE() << finding.text;
}

TEST(DoctorTest, NothingIsFoundInNoTraces) { EXPECT_THAT(diagnose({}), IsEmpty()); }

TEST(DoctorTest, MissingLabelsAreOneFinding) {
    const Finding finding = onlyFindingAfter([](std::vector<Trace>& traces) {
        traces[3].gesture.clear();
        traces[7].gesture.clear();
    });
    expectFinding(finding, FindingKind::MissingLabel, Weight::Serious);
    ASSERT_EQ(finding.traces.size(), 2u);
    EXPECT_EQ(finding.traces[1].line, 8u);
    EXPECT_THAT(finding.text, HasSubstr("t.jsonl:4: a trace by u01 and 1 other: found no label"));
}

TEST(DoctorTest, ALabelThatNoModelHoldsIsFound) {
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

TEST(DoctorTest, LabelsThatCollideOrDifferLittleAreFound) {
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

TEST(DoctorTest, LettersOfBothCasesAreDifferentGestures) {
    EXPECT_THAT(findingsAfter([](std::vector<Trace>& traces) {
                    for (Trace& trace : traces) {
                        if (trace.gesture == "check") trace.gesture = "A";
                        if (trace.gesture == "circle") trace.gesture = "a";
                    }
                }),
                IsEmpty());
}

TEST(DoctorTest, BlanksInALabelAreAdvice) {
    const Finding finding = onlyFindingAfter([](std::vector<Trace>& traces) {
        for (Trace& trace : traces) {
            if (trace.gesture == "check") trace.gesture = "check mark";
        }
    });
    expectFinding(finding, FindingKind::RenamedLabel, Weight::Advice);
    EXPECT_THAT(finding.advice, HasSubstr("\"check_mark\""));
}

TEST(DoctorTest, FewExamplesAreSeriousBelowThreeAndAdviceBelowTen) {
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

TEST(DoctorTest, AGestureWithAQuarterOfTheOthersTracesIsFound) {
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

TEST(DoctorTest, OneUserAloneIsFoundForTheSetOrForAGesture) {
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

TEST(DoctorTest, UnusablePointsAreFound) {
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

TEST(DoctorTest, HugeCoordinatesAreFoundAndSeriousWherePathsOverflow) {
    Finding finding =
        onlyFindingAfter([](std::vector<Trace>& traces) { traces[0].points[3][0] = 1.6e12; });
    expectFindingAbout(finding, 0, FindingKind::HugeCoordinates, Weight::Warning);
    EXPECT_EQ(finding.found, 1.6e12);
    finding = onlyFindingAfter([](std::vector<Trace>& traces) { traces[0].points[3][0] = 1e300; });
    expectFindingAbout(finding, 0, FindingKind::HugeCoordinates, Weight::Serious);
}

TEST(DoctorTest, TracesWithoutMovementAreFound) {
    for (const Points& points : {Points{}, Points{{3, 4}}, Points(20, {3, 4})}) {
        expectFindingAbout(
            onlyFindingAfter([&](std::vector<Trace>& traces) { traces[11].points = points; }), 11,
            FindingKind::NoDirection, Weight::Serious);
    }
}

TEST(DoctorTest, TooFewPositionsAreFound) {
    const Finding finding = onlyFindingAfter([](std::vector<Trace>& traces) {
        Points& points = traces[2].points;
        points = {points.front(), points.front(), points[points.size() / 2], points.back()};
    });
    expectFindingAbout(finding, 2, FindingKind::FewPoints, Weight::Warning);
    EXPECT_EQ(finding.found, 3.0);
    EXPECT_EQ(finding.expected, 5.0);
}

TEST(DoctorTest, DotsAndShortPathsAreFound) {
    expectFindingAbout(
        onlyFindingAfter([](std::vector<Trace>& traces) { resize(traces[6], 0.05); }), 6,
        FindingKind::Dot, Weight::Warning);
    expectFindingAbout(
        onlyFindingAfter([](std::vector<Trace>& traces) { resize(traces[6], 0.15); }), 6,
        FindingKind::ShortPath, Weight::Warning);
}

TEST(DoctorTest, AUsersOwnSizeIsNoDefect) {
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

TEST(DoctorTest, OneDirectionIsFoundUnlessTheGestureIsALine) {
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

TEST(DoctorTest, CopiesAreFoundAndSeriousWithTwoLabels) {
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

TEST(DoctorTest, AWrongLabelIsFoundWithWhatTheTraceShows) {
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

TEST(DoctorTest, ATraceFarFromAllOthersOfItsGestureIsFound) {
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

TEST(DoctorTest, GesturesThatCannotBeToldApartAreFoundWithTheirMeans) {
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

TEST(DoctorTest, WhatTheRecogniserDoesNotSeeIsNamed) {
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

TEST(DoctorTest, TheOtherWayRoundIsAnotherGesture) {
    EXPECT_THAT(findingsAfter(circlesAs(
                    "back", [](Points& points) { std::reverse(points.begin(), points.end()); })),
                IsEmpty());
}

TEST(DoctorTest, TheMostSeriousComeFirstThenByGesture) {
    const std::vector<Finding> findings = findingsAfter([](std::vector<Trace>& traces) {
        traces[9].points = {};        // zigzag
        traces[5].points = {{1, 1}};  // circle
        resize(traces[0], 0.05);      // check
        for (Trace& trace : traces) trace.user = "ann";
    });
    ASSERT_EQ(findings.size(), 4u);
    EXPECT_EQ(findings[0].traces[0].trace, 5u);
    EXPECT_EQ(findings[1].traces[0].trace, 9u);
    EXPECT_EQ(findings[2].kind, FindingKind::Dot);
    EXPECT_EQ(findings[3].kind, FindingKind::SingleUser);
    EXPECT_TRUE(anySerious(findings));
    EXPECT_FALSE(anySerious({findings[2], findings[3]}));
}

TEST(DoctorTest, EverythingAtOnceIsFindingsAndNoError) {
    const std::vector<Finding> findings = findingsAfter([](std::vector<Trace>& traces) {
        for (std::size_t i = 0; i < traces.size(); ++i) {
            switch (i % 6) {
                case 0: traces[i].gesture.clear(); break;
                case 1: traces[i].gesture = "\n"; break;
                case 2: traces[i].gesture = "x\x02"; break;
                case 3: traces[i].points = {{nan, 0}, {1}, {}}; break;
                case 4: resize(traces[i], 1e300); break;
                default: traces[i].points = {{0, 0}, {1e-320, 0}}; break;
            }
        }
    });
    EXPECT_GE(findings.size(), 20u);
    EXPECT_EQ(findings[0].weight, Weight::Serious);
}

TEST(DoctorTest, TheSameAtAnyNumberOfThreads) {
    std::vector<Trace> traces = cleanSet(TraceSynthesizer::gestures());
    for (std::size_t i = 0; i < traces.size(); i += 17) traces[i].gesture = "circle";
    DoctorOptions options = quickly();
    options.training.threads = 1;
    const std::vector<Finding> one = diagnose(traces, options);
    options.training.threads = 5;
    const std::vector<Finding> five = diagnose(traces, options);
    ASSERT_EQ(one.size(), five.size());
    EXPECT_GT(one.size(), 3u);
    for (std::size_t i = 0; i < one.size(); ++i) {
        EXPECT_EQ(one[i].text, five[i].text);
        EXPECT_EQ(one[i].sureness, five[i].sureness);
    }
}

TEST(DoctorTest, ProgressRunsToTheEnd) {
    std::vector<double> shares;
    diagnose(cleanSet(), quickly(), [&](double share) { shares.push_back(share); });
    ASSERT_FALSE(shares.empty());
    EXPECT_TRUE(std::is_sorted(shares.begin(), shares.end()));
    EXPECT_EQ(shares.back(), 1.0);
}

TEST(DoctorTest, OptionsOutOfRangeAreRefused) {
    DoctorOptions options;
    options.training.symbols = 1;
    EXPECT_THAT(textOf<InputError>([&] { diagnose(cleanSet(), options); }), HasSubstr("symbols"));
}

// Shapes of two positions: medoid (-1, 0) - (1, 0); the second is it doubled and fits at half its
// size, the third one runs backwards.
TEST(DoctorTest, TheMeanTakesShapesScaledToTheMedoid) {
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
