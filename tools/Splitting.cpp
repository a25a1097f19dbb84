#include "Splitting.h"

#include <veskkit/Error.h>

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>
#include <utility>

namespace Vesk::Tool {

namespace {

std::set<std::string> usersOf(const std::vector<Kit::Trace>& traces) {
    std::set<std::string> users;
    for (const Kit::Trace& trace : traces) users.insert(trace.user);
    return users;
}

/// At least two: stratifiedFolds refuses fewer, and more than a gesture has traces.
std::size_t partsOf(const std::vector<Kit::Trace>& traces, std::size_t usual) {
    std::map<std::string, std::size_t> counts;
    for (const Kit::Trace& trace : traces) ++counts[trace.gesture];
    std::size_t parts = usual;
    for (const auto& [gesture, count] : counts) parts = std::min(parts, count);
    return std::max<std::size_t>(parts, 2);
}

}  // namespace

std::vector<Kit::Trace> readTraces(TraceInput& input) {
    std::vector<Kit::Trace> traces;
    input.forEach([&](const Kit::Trace& trace) { traces.push_back(trace); });
    input.finish();
    if (traces.empty()) throw Kit::InputError("found no traces, expected at least 1");
    return traces;
}

bool hasSeveralUsers(const std::vector<Kit::Trace>& traces) {
    const std::set<std::string> users = usersOf(traces);
    return users.size() > 1 && users.count("") == 0;
}

Split leavingUsersOut(const std::vector<Kit::Trace>& traces, std::size_t groups) {
    std::vector<Kit::Fold> folds = Kit::leaveUsersOut(traces, groups);
    const bool alone = folds.size() == usersOf(traces).size();
    std::string description =
        alone
            ? "each user left out of training in turn"
            : fmt::format("each of {} groups of users left out of training in turn", folds.size());
    return {std::move(folds), std::move(description)};
}

Split leavingPartsOut(const std::vector<Kit::Trace>& traces, std::optional<std::size_t> parts,
                      std::size_t usual, std::uint64_t seed) {
    const std::size_t count = parts.value_or(partsOf(traces, usual));
    return {Kit::stratifiedFolds(traces, count, seed),
            fmt::format("each of {} parts left out of training in turn (seed {})", count, seed)};
}

}  // namespace Vesk::Tool
