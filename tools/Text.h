#ifndef VESK_TOOLS_TEXT_H
#define VESK_TOOLS_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace Vesk::Tool {

/// The text with control characters as question marks: one line that leaves a terminal alone.
std::string printable(std::string_view text);

/// "1 trace", "2 traces".
std::string counted(std::size_t count, std::string_view noun);

/// A line of more than 100 bytes as several, where its blanks allow that; what goes over stands
/// behind `indent` blanks.
std::string wrapped(std::string line, std::size_t indent);

}  // namespace Vesk::Tool

#endif
