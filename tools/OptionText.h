#ifndef VESK_TOOLS_OPTIONTEXT_H
#define VESK_TOOLS_OPTIONTEXT_H

#include "CommandLine.h"

#include <string>
#include <vector>

namespace Vesk::Tool {

/// What manual pages and completion need to know of an option: read off the parser, so that both
/// say what --help says.
struct OptionText {
    std::vector<std::string> names;    ///< "-o", "--output"; of an argument its name: "TRACES"
    std::string value;                 ///< what the value is called; "" for flags and arguments
    std::vector<std::string> choices;  ///< words that the value can be
    std::string description;           ///< with default and conditions, ending in a full stop
    bool argument = false;             ///< an argument rather than an option
    bool required = false;
    bool repeatable = false;
};

/// Arguments and options of a command line, in the order of its help.
std::vector<OptionText> optionsOf(const CLI::App& line);

}  // namespace Vesk::Tool

#endif
