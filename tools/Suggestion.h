#ifndef VESK_TOOLS_SUGGESTION_H
#define VESK_TOOLS_SUGGESTION_H

#include <string>
#include <vector>

namespace Vesk::Tool {

/// The word that was probably meant: the one that the fewest insertions, deletions, replacements
/// and swaps of neighbours make of it (the first of several), where these are a third of its length
/// at most. "" where no word is that near.
std::string nearestWord(const std::string& mistyped, const std::vector<std::string>& words);

/// ", did you mean train?"; "" where no word is near.
std::string suggestion(const std::string& mistyped, const std::vector<std::string>& words);

/// "found usr, expected one of fold|own|user, did you mean user?"
std::string notOneOf(const std::string& found, const std::vector<std::string>& words);

}  // namespace Vesk::Tool

#endif
