#ifndef VESK_TESTS_UNIT_VESKKIT_DIAGNOSIS_H
#define VESK_TESTS_UNIT_VESKKIT_DIAGNOSIS_H

#include <veskkit/diagnosis/Doctor.h>
#include <veskkit/synthesis/TraceSynthesizer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Vesk::Test {

inline const std::vector<std::string> usualGestures{"check", "circle", "zigzag"};

/// Three users, four repetitions of each gesture.
inline std::vector<Kit::Trace> cleanSet(const std::vector<std::string>& gestures = usualGestures) {
    const Kit::TraceSynthesizer synthesizer(7);
    std::vector<Kit::Trace> traces;
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
inline Kit::DoctorOptions quickly() {
    Kit::DoctorOptions options;
    options.training.states = 12;
    options.training.iterations = 1;
    return options;
}

using Change = std::function<void(std::vector<Kit::Trace>&)>;

inline std::vector<Kit::Finding> findingsAfter(const Change& change) {
    std::vector<Kit::Trace> traces = cleanSet();
    change(traces);
    return Kit::diagnose(traces, quickly());
}

/// The only finding after a change of the clean set.
inline Kit::Finding onlyFindingAfter(const Change& change) {
    std::vector<Kit::Finding> findings = findingsAfter(change);
    std::string others;
    for (const Kit::Finding& finding : findings) others += "\n" + finding.text;
    EXPECT_EQ(findings.size(), 1u) << others;
    return findings.empty() ? Kit::Finding{} : findings.front();
}

inline void expectFinding(const Kit::Finding& finding, Kit::FindingKind kind, Kit::Weight weight) {
    EXPECT_STREQ(toString(finding.kind), toString(kind));
    EXPECT_STREQ(toString(finding.weight), toString(weight));
    EXPECT_FALSE(finding.text.empty());
    EXPECT_EQ(finding.advice.back(), '.');
}

/// Expects a finding about the trace at `place` alone.
inline void expectFindingAbout(const Kit::Finding& finding, std::size_t place,
                               Kit::FindingKind kind, Kit::Weight weight) {
    expectFinding(finding, kind, weight);
    ASSERT_EQ(finding.traces.size(), 1u);
    EXPECT_EQ(finding.traces[0].trace, place);
    EXPECT_EQ(finding.traces[0].source, "t.jsonl");
    EXPECT_EQ(finding.traces[0].line, place + 1);
    EXPECT_THAT(finding.text, testing::StartsWith("t.jsonl:" + std::to_string(place + 1) + ": "));
}

inline void resize(Kit::Trace& trace, double factor) {
    for (std::vector<double>& point : trace.points) {
        for (double& value : point) value *= factor;
    }
}

}  // namespace Vesk::Test

#endif
