#include "Gestures.h"

#include <veskkit/Error.h>
#include <veskkit/evaluation/Folds.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Vesk::Kit {
namespace {

using Vesk::Test::textOf;

Trace traceOf(const std::string& gesture, const std::string& user) {
    Trace trace;
    trace.gesture = gesture;
    trace.user = user;
    return trace;
}

/// Every trace is tested once, and trained on by all other folds.
void expectPartition(const std::vector<Fold>& folds, std::size_t traces) {
    std::vector<int> tests(traces);
    for (const Fold& fold : folds) {
        EXPECT_TRUE(std::is_sorted(fold.training.begin(), fold.training.end()));
        EXPECT_TRUE(std::is_sorted(fold.test.begin(), fold.test.end()));
        EXPECT_EQ(fold.training.size() + fold.test.size(), traces);
        std::set<std::size_t> all(fold.training.begin(), fold.training.end());
        all.insert(fold.test.begin(), fold.test.end());
        EXPECT_EQ(all.size(), traces);
        for (const std::size_t i : fold.test) ++tests[i];
    }
    EXPECT_EQ(tests, std::vector<int>(traces, 1));
}

TEST(FoldsTest, EachUserIsLeftOutOnce) {
    const std::vector<Trace> traces = {traceOf("a", "v"), traceOf("a", "u"), traceOf("b", "v"),
                                       traceOf("b", "w")};
    const std::vector<Fold> folds = leaveOneUserOut(traces);
    expectPartition(folds, 4);
    ASSERT_EQ(folds.size(), 3u);
    EXPECT_EQ(folds[0].name, "without u");
    EXPECT_EQ(folds[1].name, "without v");
    EXPECT_EQ(folds[0].test, std::vector<std::size_t>{1});
    EXPECT_EQ(folds[1].test, (std::vector<std::size_t>{0, 2}));
}

TEST(FoldsTest, UsersAreLeftOutInGroups) {
    std::vector<Trace> traces;
    for (const char* user : {"a", "b", "c", "d", "e"}) traces.push_back(traceOf("g", user));
    const std::vector<Fold> folds = leaveUsersOut(traces, 2);
    expectPartition(folds, 5);
    ASSERT_EQ(folds.size(), 2u);
    EXPECT_EQ(folds[0].name, "without a, c, e");
    EXPECT_EQ(folds[0].test, (std::vector<std::size_t>{0, 2, 4}));
    EXPECT_EQ(leaveUsersOut(traces, 99).size(), 5u);
    for (const char* user : {"f", "g"}) traces.push_back(traceOf("g", user));
    EXPECT_EQ(leaveUsersOut(traces, 2)[0].name, "without 4 users from a on");
    EXPECT_EQ(leaveUsersOut(traces, 2)[1].name, "without b, d, f");
}

TEST(FoldsTest, UsersHaveToBeKnownAndSeveral) {
    EXPECT_EQ(textOf<InputError>([] {
                  leaveOneUserOut({traceOf("a", "u"), traceOf("a", "u")});
              }),
              "found 1 user, expected at least 2 to leave out in turn");
    EXPECT_EQ(textOf<InputError>([] {
                  leaveUsersOut({traceOf("a", "u"), traceOf("a", "v")}, 1);
              }),
              "found 1 part, expected at least 2");
    Trace unknown = traceOf("a", "");
    unknown.source = "t.jsonl";
    unknown.line = 7;
    EXPECT_EQ(textOf<InputError>([&] {
                  leaveOneUserOut({traceOf("a", "u"), unknown});
              }),
              "t.jsonl:7: found no user, expected one of every trace");
    EXPECT_EQ(textOf<InputError>([] { leaveOneUserOut({}); }),
              "found 0 users, expected at least 2 to leave out in turn");
}

TEST(FoldsTest, StratifiedFoldsTestAnEqualPartOfEveryGesture) {
    std::vector<Trace> traces;
    for (int i = 0; i < 23; ++i) traces.push_back(traceOf(i % 3 == 0 ? "a" : "b", ""));
    const std::vector<Fold> folds = stratifiedFolds(traces, 4, 1);
    expectPartition(folds, traces.size());
    ASSERT_EQ(folds.size(), 4u);
    EXPECT_EQ(folds[2].name, "fold 3 of 4");
    for (const Fold& fold : folds) {
        std::map<std::string, int> tested;
        for (const std::size_t i : fold.test) ++tested[traces[i].gesture];
        EXPECT_EQ(tested["a"], 2);  // of 8
        EXPECT_GE(tested["b"], 3);  // of 15
        EXPECT_LE(tested["b"], 4);
    }
}

TEST(FoldsTest, TheSeedDecides) {
    std::vector<Trace> traces;
    for (int i = 0; i < 40; ++i) traces.push_back(traceOf("a", ""));
    const auto first = [&](std::uint64_t seed) { return stratifiedFolds(traces, 5, seed)[0].test; };
    EXPECT_EQ(first(1), first(1));
    EXPECT_NE(first(1), first(2));
}

TEST(FoldsTest, EveryGestureNeedsATraceForEachFold) {
    const std::vector<Trace> traces = {traceOf("a", ""), traceOf("a", ""), traceOf("b", "")};
    EXPECT_EQ(textOf<InputError>([&] { stratifiedFolds(traces, 2, 1); }),
              "found 1 trace of gesture \"b\", expected at least 2 for as many folds");
    EXPECT_EQ(textOf<InputError>([&] { stratifiedFolds(traces, 1, 1); }),
              "found 1 folds, expected at least 2");
    EXPECT_EQ(textOf<InputError>([&] { stratifiedFolds({traceOf("", "")}, 2, 1); }),
              "trace: found no label, expected one of every trace");
}

/// `count` traces of each of two gestures by each of two users.
std::vector<Trace> equallyMany(int count) {
    std::vector<Trace> traces;
    for (int i = 0; i < count; ++i) {
        for (const char* user : {"u", "v"}) {
            for (const char* gesture : {"a", "b"}) traces.push_back(traceOf(gesture, user));
        }
    }
    return traces;
}

/// How many of the places are of each gesture.
std::map<std::string, int> gesturesAt(const std::vector<Trace>& traces,
                                      const std::vector<std::size_t>& places) {
    std::map<std::string, int> counts;
    for (const std::size_t i : places) ++counts[traces[i].gesture];
    return counts;
}

TEST(FoldsTest, OwnExamplesComeFromTheUserWhoIsTested) {
    const std::vector<Trace> traces = equallyMany(5);
    const std::vector<Fold> folds = ownExamples(traces, 2, 1);
    ASSERT_EQ(folds.size(), 2u);
    EXPECT_EQ(folds[0].name, "u alone");
    EXPECT_EQ(folds[1].name, "v alone");
    const std::map<std::string, int> two{{"a", 2}, {"b", 2}};
    const std::map<std::string, int> three{{"a", 3}, {"b", 3}};
    for (const Fold& fold : folds) {
        EXPECT_EQ(gesturesAt(traces, fold.training), two);
        EXPECT_EQ(gesturesAt(traces, fold.test), three);
        std::set<std::size_t> all(fold.training.begin(), fold.training.end());
        all.insert(fold.test.begin(), fold.test.end());
        EXPECT_EQ(all.size(), 10u);
        const std::string user = fold.name.substr(0, 1);
        for (const std::size_t i : all) EXPECT_EQ(traces[i].user, user);
        EXPECT_TRUE(std::is_sorted(fold.training.begin(), fold.training.end()));
        EXPECT_TRUE(std::is_sorted(fold.test.begin(), fold.test.end()));
    }
    EXPECT_EQ(ownExamples(traces, 2, 1)[1].training, folds[1].training);
    EXPECT_NE(ownExamples(traces, 2, 2)[1].training, folds[1].training);
}

TEST(FoldsTest, UsersWithoutATraceToTestHaveNoFold) {
    std::vector<Trace> traces = equallyMany(2);
    traces.push_back(traceOf("a", "v"));
    const std::vector<Fold> folds = ownExamples(traces, 2, 1);
    ASSERT_EQ(folds.size(), 1u);
    EXPECT_EQ(folds[0].name, "v alone");
    EXPECT_EQ(folds[0].test.size(), 1u);
    EXPECT_EQ(textOf<InputError>([&] { ownExamples(traces, 3, 1); }),
              "found no user with more than 3 traces of a gesture, expected one to be tested");
}

TEST(FoldsTest, FewExamplesAreDrawnFromEachFoldsTraining) {
    const std::vector<Trace> traces = equallyMany(6);
    const std::vector<Fold> whole = leaveOneUserOut(traces);
    const std::vector<Fold> few = withFewExamples(whole, traces, 4, 3);
    ASSERT_EQ(few.size(), 2u);
    const std::map<std::string, int> four{{"a", 4}, {"b", 4}};
    for (std::size_t f = 0; f < 2; ++f) {
        EXPECT_EQ(few[f].name, whole[f].name);
        EXPECT_EQ(few[f].test, whole[f].test);
        EXPECT_EQ(gesturesAt(traces, few[f].training), four);
        EXPECT_TRUE(std::includes(whole[f].training.begin(), whole[f].training.end(),
                                  few[f].training.begin(), few[f].training.end()));
    }
    EXPECT_EQ(withFewExamples(whole, traces, 100, 3)[0].training, whole[0].training);
}

TEST(FoldsTest, ExamplesAreAtLeastOne) {
    const std::vector<Trace> traces = equallyMany(2);
    const char* const text = "found 0 examples a gesture, expected at least 1";
    EXPECT_EQ(textOf<InputError>([&] { ownExamples(traces, 0, 1); }), text);
    EXPECT_EQ(textOf<InputError>([&] { withFewExamples(leaveOneUserOut(traces), traces, 0, 1); }),
              text);
}

}  // namespace
}  // namespace Vesk::Kit
