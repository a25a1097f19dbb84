#include <veskkit/Error.h>
#include <veskkit/evaluation/Folds.h>
#include <veskkit/internal/Text.h>

#include <algorithm>
#include <map>
#include <random>
#include <utility>

namespace Vesk::Kit {

using internal::joined;
using internal::quoted;

namespace {

/// Per value of a trace's label or user, which must not be empty, the places of its traces.
std::map<std::string, std::vector<std::size_t>> groupBy(const std::vector<Trace>& traces,
                                                        std::string Trace::*field,
                                                        const char* name) {
    std::map<std::string, std::vector<std::size_t>> groups;
    for (std::size_t i = 0; i < traces.size(); ++i) {
        const std::string& value = traces[i].*field;
        if (value.empty()) {
            throw InputError(
                joined(placeOf(traces[i]), ": found no ", name, ", expected one of every trace"));
        }
        groups[value].push_back(i);
    }
    return groups;
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

}  // namespace

std::vector<Fold> leaveUsersOut(const std::vector<Trace>& traces, std::size_t parts) {
    const auto users = groupBy(traces, &Trace::user, "user");
    if (users.size() < 2 || parts < 2) {
        throw InputError(joined("found ", users.size(), users.size() == 1 ? " user" : " users",
                                " in ", parts, parts == 1 ? " part" : " parts",
                                ", expected at least 2 of both"));
    }
    const std::size_t count = std::min(parts, users.size());
    std::vector<std::size_t> foldOfTrace(traces.size());
    std::vector<std::string> names(count);
    std::size_t fold = 0;
    for (const auto& [user, places] : users) {
        names[fold] += (names[fold].empty() ? "without " : ", ") + user;
        for (const std::size_t i : places) foldOfTrace[i] = fold;
        fold = (fold + 1) % count;
    }
    return foldsOf(foldOfTrace, std::move(names));
}

std::vector<Fold> leaveOneUserOut(const std::vector<Trace>& traces) {
    return leaveUsersOut(traces, std::max<std::size_t>(traces.size(), 2));
}

std::vector<Fold> stratifiedFolds(const std::vector<Trace>& traces, std::size_t parts,
                                  std::uint64_t seed) {
    if (parts < 2) throw InputError(joined("found ", parts, " folds, expected at least 2"));
    auto gestures = groupBy(traces, &Trace::gesture, "label");
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

}  // namespace Vesk::Kit
