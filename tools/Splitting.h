#ifndef VESK_TOOLS_SPLITTING_H
#define VESK_TOOLS_SPLITTING_H

#include "TraceInput.h"

#include <veskkit/evaluation/Folds.h>
#include <veskkit/traces/Trace.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Vesk::Tool {

/// All traces of the command line. InputError for none, and for a user who did not turn up.
std::vector<Kit::Trace> readTraces(TraceInput& input);

/// Folds and what they are, in words.
struct Split {
    std::vector<Kit::Fold> folds;
    std::string description;
    std::size_t draws = 1;  ///< of which the folds are
};

/// Whether the usual split leaves out users: every trace has one and there are several, as somebody
/// new will use the model.
bool hasSeveralUsers(const std::vector<Kit::Trace>& traces);

/// Users left out, in so many groups at the most, each alone where they are no more.
Split leavingUsersOut(const std::vector<Kit::Trace>& traces, std::size_t groups);

/// Parts left out: `parts` where given, else `usual` or as many as the rarest gesture has traces.
Split leavingPartsOut(const std::vector<Kit::Trace>& traces, std::optional<std::size_t> parts,
                      std::size_t usual, std::uint64_t seed);

}  // namespace Vesk::Tool

#endif
