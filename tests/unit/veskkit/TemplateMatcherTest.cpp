#include "Gestures.h"

#include <veskkit/evaluation/TemplateMatcher.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

Trace traceOf(const std::string& gesture, const std::string& user, const Points& points) {
    Trace trace;
    trace.gesture = gesture;
    trace.user = user;
    trace.points = points;
    return trace;
}

std::vector<const Trace*> pointersTo(const std::vector<Trace>& traces) {
    std::vector<const Trace*> pointers;
    for (const Trace& trace : traces) pointers.push_back(&trace);
    return pointers;
}

TEST(TemplateMatcherTest, FindsTheNearestShapeAtAnySizeAndPlace) {
    const std::vector<Trace> traces = {
        traceOf("right", "u", {{0, 0}, {1, 0}}),
        traceOf("up and back", "u", {{0, 0}, {0, 1}, {0, 0}}),
        traceOf("corner", "u", {{0, 0}, {1, 0}, {1, 1}}),
    };
    const TemplateMatcher matcher(pointersTo(traces));
    const TemplateMatcher::Match same =
        matcher.nearest(traceOf("", "", {{700, -3}, {900, -3}, {900, 197}}));
    EXPECT_EQ(same.gesture, "corner");
    EXPECT_NEAR(same.distance, 0.0, 1e-20);
    EXPECT_EQ(matcher.nearest(traceOf("", "", {{0, 0}, {9, 1}})).gesture, "right");
    EXPECT_EQ(matcher.nearest(traceOf("", "", {{0, 0}, {0, 5}, {0, 1}})).gesture, "up_and_back");
}

TEST(TemplateMatcherTest, WhatHasNoDirectionMatchesNothing) {
    const std::vector<Trace> traces = {traceOf("right", "u", {{0, 0}, {1, 0}}),
                                       traceOf("dot", "u", {{0, 0}, {0, 0}})};
    const TemplateMatcher matcher(pointersTo(traces));
    const TemplateMatcher::Match match = matcher.nearest(traceOf("", "", {{3, 3}, {3, 3}}));
    EXPECT_EQ(match.gesture, "");
    EXPECT_FALSE(matcher.accepts(match));
}

TEST(TemplateMatcherTest, AcceptsWhatIsAsNearAsTrainingTracesOfOthersAre) {
    // Three users' strokes to the right, rising by 0, 1 and 3 on 10: the middle one is near both.
    const std::vector<Trace> traces = {traceOf("right", "a", {{0, 0}, {10, 0}}),
                                       traceOf("right", "b", {{0, 0}, {10, 1}}),
                                       traceOf("right", "c", {{0, 0}, {10, 3}})};
    const TemplateMatcher matcher(pointersTo(traces), 0.0);
    const TemplateMatcher::Match near = matcher.nearest(traceOf("", "", {{0, 0}, {10, 4}}));
    EXPECT_TRUE(matcher.accepts(near));
    EXPECT_FALSE(matcher.accepts(matcher.nearest(traceOf("", "", {{0, 0}, {10, 9}}))));
    // Giving up a third of them lowers the limit to the next nearest, from c to b's neighbour.
    const TemplateMatcher stricter(pointersTo(traces), 0.34);
    EXPECT_LT(stricter.threshold(), matcher.threshold());
    EXPECT_FALSE(stricter.accepts(stricter.nearest(traceOf("", "", {{0, 0}, {10, 6}}))));
}

TEST(TemplateMatcherTest, WithNothingToGoByEverythingIsAccepted) {
    const std::vector<Trace> traces = {traceOf("right", "a", {{0, 0}, {10, 0}})};
    const TemplateMatcher matcher(pointersTo(traces));
    EXPECT_TRUE(matcher.accepts(matcher.nearest(traceOf("", "", {{0, 0}, {0, 1}}))));
}

}  // namespace
}  // namespace Vesk::Kit
