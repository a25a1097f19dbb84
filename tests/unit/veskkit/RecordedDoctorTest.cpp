#include "RecordedData.h"

#include <support/Random.h>
#include <veskkit/diagnosis/Doctor.h>
#include <veskkit/io/TraceFiles.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::dataFile;

/// Every finding counts for its weight.
std::map<Weight, std::size_t> weightsOf(const std::vector<Finding>& findings) {
    std::map<Weight, std::size_t> counts;
    for (const Finding& finding : findings) ++counts[finding.weight];
    return counts;
}

std::set<std::size_t> tracesOf(const std::vector<Finding>& findings, FindingKind kind) {
    std::set<std::size_t> traces;
    for (const Finding& finding : findings) {
        if (finding.kind == kind) traces.insert(finding.traces.front().trace);
    }
    return traces;
}

TEST(RecordedDoctorTest, CleanSetsDoNotDrownInFindings) {
    struct Expectation {
        const char* file;
        std::size_t serious;
        std::size_t mostWarnings;
        std::size_t mostAdvice;
    };
    // The shapes sketched by many hands are recognised to three quarters: one pair is hopeless
    // there.
    for (const Expectation& it :
         {Expectation{"unistroke16.jsonl", 0, 1, 15}, Expectation{"pen_digits.jsonl", 0, 10, 25},
          Expectation{"pen_letters.jsonl", 0, 30, 30},
          Expectation{"sketch_shapes.jsonl", 1, 20, 10}}) {
        SCOPED_TRACE(it.file);
        const std::string path = dataFile(it.file);
        if (path.empty()) GTEST_SKIP() << "no recorded traces";
        std::map<Weight, std::size_t> counts = weightsOf(diagnose(readTraces(path)));
        EXPECT_EQ(counts[Weight::Serious], it.serious);
        EXPECT_LE(counts[Weight::Warning], it.mostWarnings);
        EXPECT_LE(counts[Weight::Advice], it.mostAdvice);
    }
}

TEST(RecordedDoctorTest, AQuestionMarkThatBrokeOffIsFound) {
    const std::string path = dataFile("unistroke16_pilot.jsonl");
    const std::string others = dataFile("unistroke16.jsonl");
    if (path.empty() || others.empty()) GTEST_SKIP() << "no recorded traces";
    std::vector<Trace> traces = readTraces(path);
    const std::size_t place = traces.size();
    traces.push_back(readTraces(others).at(889));
    ASSERT_EQ(traces[place].gesture, "question_mark");
    EXPECT_THAT(tracesOf(diagnose(traces), FindingKind::MislabelledTrace),
                testing::ElementsAre(place))
        << "what is left of it is a check mark";
}

/// What a change of labels at random, of one trace in fifty, does to the findings.
struct Swapped {
    std::size_t swapped = 0;
    std::size_t found = 0;
    std::size_t falseAlarms = 0;
    std::size_t traces = 0;
};

Swapped swapLabels(const std::string& path, std::uint64_t seed) {
    std::vector<Trace> traces = readTraces(path);
    std::set<std::string> names;
    for (const Trace& trace : traces) names.insert(trace.gesture);
    const std::vector<std::string> gestures(names.begin(), names.end());
    Vesk::Test::Random random(seed);
    std::set<std::size_t> swapped;
    for (std::size_t i = 0; i < traces.size(); ++i) {
        if (random.unit() >= 0.02) continue;
        const auto count = static_cast<double>(gestures.size());
        const std::string& other = gestures[static_cast<std::size_t>(random.unit() * count)];
        if (other == traces[i].gesture) continue;
        traces[i].gesture = other;
        swapped.insert(i);
    }
    const std::set<std::size_t> found = tracesOf(diagnose(traces), FindingKind::MislabelledTrace);
    Swapped result{swapped.size(), 0, 0, traces.size()};
    for (const std::size_t i : found) ++(swapped.count(i) > 0 ? result.found : result.falseAlarms);
    return result;
}

TEST(RecordedDoctorTest, MostSwappedLabelsAreFoundAndFewOthersDoubted) {
    struct Expectation {
        const char* file;
        double leastFound;
        double mostFalseAlarms;
    };
    for (const Expectation& it : {Expectation{"unistroke16.jsonl", 0.85, 0.001},
                                  Expectation{"pen_digits.jsonl", 0.85, 0.003},
                                  Expectation{"pen_letters.jsonl", 0.65, 0.006}}) {
        SCOPED_TRACE(it.file);
        const std::string path = dataFile(it.file);
        if (path.empty()) GTEST_SKIP() << "no recorded traces";
        const Swapped result = swapLabels(path, 3);
        RecordProperty(it.file, std::to_string(result.found) + " of " +
                                    std::to_string(result.swapped) + ", false alarms " +
                                    std::to_string(result.falseAlarms));
        EXPECT_GE(result.swapped, 40u);
        EXPECT_GE(static_cast<double>(result.found),
                  it.leastFound * static_cast<double>(result.swapped));
        EXPECT_LE(static_cast<double>(result.falseAlarms),
                  it.mostFalseAlarms * static_cast<double>(result.traces));
    }
}

}  // namespace
}  // namespace Vesk::Kit
