#ifndef VESK_TOOLS_COMPLETION_H
#define VESK_TOOLS_COMPLETION_H

#include "Command.h"

#include <string>
#include <vector>

namespace Vesk::Tool {

/// A script by which bash completes subcommands, options, files and values that are words.
std::string bashCompletion(const CLI::App& program, const std::vector<Command>& commands);

}  // namespace Vesk::Tool

#endif
