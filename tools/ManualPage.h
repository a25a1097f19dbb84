#ifndef VESK_TOOLS_MANUALPAGE_H
#define VESK_TOOLS_MANUALPAGE_H

#include "Command.h"

#include <string>
#include <vector>

namespace Vesk::Tool {

/// The manual page of the program, in the man macros of roff.
std::string manualPage(const CLI::App& program, const std::vector<Command>& commands);

/// The manual page of one of its subcommands.
std::string manualPage(const Command& command);

}  // namespace Vesk::Tool

#endif
