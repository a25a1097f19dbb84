#include "Diagnosis.h"
#include "Gestures.h"

#include <veskkit/Error.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace Vesk::Kit {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using Vesk::Test::cleanSet;
using Vesk::Test::findingsAfter;
using Vesk::Test::quickly;
using Vesk::Test::resize;
using Vesk::Test::textOf;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(DoctorTest, NothingIsFoundInACleanSet) {
    EXPECT_THAT(findingsAfter([](std::vector<Trace>&) {}), IsEmpty());
    const std::vector<Trace> all = cleanSet(TraceSynthesizer::gestures());
    for (const Finding& finding : diagnose(all, quickly())) ADD_FAILURE() << finding.text;
}

TEST(DoctorTest, NothingIsFoundInNoTraces) { EXPECT_THAT(diagnose({}), IsEmpty()); }

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

}  // namespace
}  // namespace Vesk::Kit
