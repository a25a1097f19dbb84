#ifndef VESK_VESKKIT_EVALUATION_FOLDS_H
#define VESK_VESKKIT_EVALUATION_FOLDS_H

#include <veskkit/traces/Trace.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Vesk::Kit {

/// A training on some traces and its test on others, by their places in a list, ascending. Making
/// F folds of n traces takes O(F n log n) time and O(F n) memory at most.
struct Fold {
    std::string name;  ///< "without s02", "without 19 users from w001 on", "fold 3 of 5"
    std::vector<std::size_t> training;  ///< places of the traces to train on
    std::vector<std::size_t> test;      ///< places of the traces to test
};

/// One fold a user, in the order of the users' names, whose test is all of that user's traces.
/// InputError for a trace without a user, named, and for fewer than two users.
std::vector<Fold> leaveOneUserOut(const std::vector<Trace>& traces);

/// The same with users in `parts` groups, each left out together: users in the order of their names
/// go to the groups in turns. InputError as above, and for fewer than two parts; more parts than
/// users are one a user.
std::vector<Fold> leaveUsersOut(const std::vector<Trace>& traces, std::size_t parts);

/// `parts` folds, each testing an equal part of every gesture's traces (up to one trace), drawn at
/// random: the same seed draws the same folds on every machine. InputError for a trace without a
/// label, named, for fewer than two parts and for more parts than traces of any gesture.
std::vector<Fold> stratifiedFolds(const std::vector<Trace>& traces, std::size_t parts,
                                  std::uint64_t seed);

/// One fold a user, in the order of the users' names, that trains on `examples` of the user's own
/// traces of each gesture, drawn at random, and tests the user's others. Users of whom nothing is
/// left to test have no fold. InputError for a trace without a label or a user, named, for no
/// examples, and where no fold is left.
std::vector<Fold> ownExamples(const std::vector<Trace>& traces, std::size_t examples,
                              std::uint64_t seed);

/// The folds with `examples` training traces a gesture (all, of a gesture that has fewer), drawn
/// at random. InputError for a trace without a label, named, and for no examples.
std::vector<Fold> withFewExamples(std::vector<Fold> folds, const std::vector<Trace>& traces,
                                  std::size_t examples, std::uint64_t seed);

}  // namespace Vesk::Kit

#endif
