#include <veskkit/Error.h>
#include <veskkit/evaluation/Folds.h>
#include <veskkit/internal/Text.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <numeric>
#include <random>
#include <utility>

namespace Vesk::Kit {

using internal::joined;
using internal::quoted;

namespace {

using Places = std::vector<std::size_t>;

/// Per value of a trace's label or user, which must not be empty, the places of its traces among
/// those given.
std::map<std::string, Places> groupBy(const std::vector<Trace>& traces, const Places& among,
                                      std::string Trace::*field, const char* name) {
    std::map<std::string, Places> groups;
    for (const std::size_t i : among) {
        const std::string& value = traces[i].*field;
        if (value.empty()) {
            throw InputError(
                joined(placeOf(traces[i]), ": found no ", name, ", expected one of every trace"));
        }
        groups[value].push_back(i);
    }
    return groups;
}

Places allOf(const std::vector<Trace>& traces) {
    Places all(traces.size());
    std::iota(all.begin(), all.end(), std::size_t{0});
    return all;
}

/// "without s02, s04"; "without 19 users from w001 on" of more than three.
std::string withoutUsers(const std::vector<std::string>& users) {
    if (users.size() > 3) {
        return joined("without ", users.size(), " users from ", users.front(), " on");
    }
    std::string name = "without ";
    for (const std::string& user : users) name += (&user == &users.front() ? "" : ", ") + user;
    return name;
}

/// Folds from the fold that tests each trace.
std::vector<Fold> foldsOf(const std::vector<std::size_t>& foldOfTrace,
                          std::vector<std::string> names) {
    std::vector<Fold> folds;
    for (std::string& name : names) folds.push_back({std::move(name), {}, {}});
    for (std::size_t i = 0; i < foldOfTrace.size(); ++i) {
        for (std::size_t f = 0; f < folds.size(); ++f) {
            (foldOfTrace[i] == f ? folds[f].test : folds[f].training).push_back(i);
        }
    }
    return folds;
}

/// In 0 .. count-1, the same on every standard library.
std::size_t drawBelow(std::mt19937_64& random, std::size_t count) {
    const std::uint64_t range = count;
    const std::uint64_t even = std::mt19937_64::max() - std::mt19937_64::max() % range;
    std::uint64_t drawn = random();
    while (drawn >= even) drawn = random();
    return static_cast<std::size_t>(drawn % range);
}

void shuffle(std::vector<std::size_t>& items, std::mt19937_64& random) {
    for (std::size_t i = items.size(); i > 1; --i)
        std::swap(items[i - 1], items[drawBelow(random, i)]);
}

/// Draws `examples` of each gesture's places; the others follow in `rest`. Both ascending.
Places drawExamples(const std::vector<Trace>& traces, const Places& among, std::size_t examples,
                    std::mt19937_64& random, Places& rest) {
    if (examples == 0) throw InputError("found 0 examples a gesture, expected at least 1");
    Places drawn;
    auto gestures = groupBy(traces, among, &Trace::gesture, "label");
    for (auto& [gesture, places] : gestures) {
        shuffle(places, random);
        const auto end =
            places.begin() + static_cast<std::ptrdiff_t>(std::min(examples, places.size()));
        drawn.insert(drawn.end(), places.begin(), end);
        rest.insert(rest.end(), end, places.end());
    }
    std::sort(drawn.begin(), drawn.end());
    std::sort(rest.begin(), rest.end());
    return drawn;
}

}  // namespace

std::vector<Fold> leaveUsersOut(const std::vector<Trace>& traces, std::size_t parts) {
    const auto users = groupBy(traces, allOf(traces), &Trace::user, "user");
    if (users.size() < 2) {
        throw InputError(joined("found ", users.size(), users.size() == 1 ? " user" : " users",
                                ", expected at least 2 to leave out in turn"));
    }
    if (parts < 2)
        throw InputError(
            joined("found ", parts, parts == 1 ? " part" : " parts", ", expected at least 2"));
    const std::size_t count = std::min(parts, users.size());
    std::vector<std::size_t> foldOfTrace(traces.size());
    std::vector<std::vector<std::string>> leftOut(count);
    std::size_t fold = 0;
    for (const auto& [user, places] : users) {
        leftOut[fold].push_back(user);
        for (const std::size_t i : places) foldOfTrace[i] = fold;
        fold = (fold + 1) % count;
    }
    std::vector<std::string> names;
    for (const std::vector<std::string>& some : leftOut) names.push_back(withoutUsers(some));
    return foldsOf(foldOfTrace, std::move(names));
}

std::vector<Fold> leaveOneUserOut(const std::vector<Trace>& traces) {
    return leaveUsersOut(traces, std::max<std::size_t>(traces.size(), 2));
}

std::vector<Fold> stratifiedFolds(const std::vector<Trace>& traces, std::size_t parts,
                                  std::uint64_t seed) {
    if (parts < 2) throw InputError(joined("found ", parts, " folds, expected at least 2"));
    auto gestures = groupBy(traces, allOf(traces), &Trace::gesture, "label");
    std::mt19937_64 random(seed);
    std::vector<std::size_t> foldOfTrace(traces.size());
    std::size_t fold = 0;
    for (auto& [gesture, places] : gestures) {
        if (places.size() < parts) {
            throw InputError(joined(
                "found ", places.size(), places.size() == 1 ? " trace" : " traces", " of gesture ",
                quoted(gesture), ", expected at least ", parts, " for as many folds"));
        }
        shuffle(places, random);
        // Where one gesture ends the next goes on: folds are equally large in all.
        for (const std::size_t i : places) foldOfTrace[i] = fold++ % parts;
    }
    std::vector<std::string> names;
    for (std::size_t f = 1; f <= parts; ++f) names.push_back(joined("fold ", f, " of ", parts));
    return foldsOf(foldOfTrace, std::move(names));
}

std::vector<Fold> ownExamples(const std::vector<Trace>& traces, std::size_t examples,
                              std::uint64_t seed) {
    std::mt19937_64 random(seed);
    std::vector<Fold> folds;
    for (const auto& [user, places] : groupBy(traces, allOf(traces), &Trace::user, "user")) {
        Fold fold{joined(user, " alone"), {}, {}};
        fold.training = drawExamples(traces, places, examples, random, fold.test);
        if (!fold.test.empty()) folds.push_back(std::move(fold));
    }
    if (folds.empty()) {
        throw InputError(joined("found no user with more than ", examples,
                                examples == 1 ? " trace" : " traces",
                                " of a gesture, expected one to be tested"));
    }
    return folds;
}

std::vector<Fold> withFewExamples(std::vector<Fold> folds, const std::vector<Trace>& traces,
                                  std::size_t examples, std::uint64_t seed) {
    std::mt19937_64 random(seed);
    for (Fold& fold : folds) {
        Places unused;
        fold.training = drawExamples(traces, fold.training, examples, random, unused);
    }
    return folds;
}

}  // namespace Vesk::Kit
