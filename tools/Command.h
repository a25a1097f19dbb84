#ifndef VESK_TOOLS_COMMAND_H
#define VESK_TOOLS_COMMAND_H

#include "CommandLine.h"

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace Vesk::Tool {

/// How the program ends.
enum ExitStatus {
    done = 0,
    failed = 1,        ///< output could not be written
    usage = 2,         ///< the command line makes no sense
    inputRefused = 3,  ///< a file is missing, unreadable or not what it has to be
    signalled = 128    ///< plus the signal's number: 130 for SIGINT
};

/// An exit status as users are told of it.
struct Ending {
    int status;
    const char* meaning;
};
inline constexpr Ending endings[] = {{done, "done"},
                                     {failed, "output could not be written"},
                                     {usage, "usage"},
                                     {inputRefused, "input refused"},
                                     {signalled + 2, "interrupted"}};

/// A command line that the options' own checks cannot refuse.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A subcommand: its command line, what it does once that is parsed, and a command line that shows
/// its use. It reports by exceptions: UsageError, Kit::InputError and Kit::OutputError.
struct Command {
    CLI::App* line;
    std::function<void()> run;
    std::string example{};
};

// Each adds its subcommand to the program.
Command addCodebook(CLI::App& program);
Command addConvert(CLI::App& program);
Command addDoctor(CLI::App& program);
Command addEvaluate(CLI::App& program);
Command addExport(CLI::App& program);
Command addGenerate(CLI::App& program);
Command addInspect(CLI::App& program);
Command addRecognize(CLI::App& program);
Command addTrain(CLI::App& program);
Command addTune(CLI::App& program);

/// Hidden: writes the manual pages and the completion of what was added before. `commands` has to
/// outlive the run.
Command addPages(CLI::App& program, const std::vector<Command>& commands);

}  // namespace Vesk::Tool

#endif
