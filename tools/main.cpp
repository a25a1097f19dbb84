#include "Command.h"
#include "Interruption.h"
#include "StandardStreams.h"

#include <vesk/Version.h>
#include <veskkit/Error.h>

#include <fmt/format.h>

#include <exception>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace Vesk::Tool;

/// Help and version are results; what else stops the parser is one line on standard error.
int answer(const CLI::App& program, const CLI::ParseError& stop) {
    if (stop.get_exit_code() == 0) {
        std::ostringstream text;
        program.exit(stop, text, text);
        writeResult(text.str());
        flushResults();
        return done;
    }
    const auto chosen = program.get_subcommands();
    const std::vector<std::string> rest = program.remaining();
    if (!chosen.empty()) {
        tell(fmt::format("{} (see vesk {} --help)", stop.what(), chosen.front()->get_name()));
    } else if (!rest.empty()) {
        tell(fmt::format("found {}, expected a subcommand (see vesk --help)", rest.front()));
    } else {
        tell("expected a subcommand (see vesk --help)");
    }
    return usage;
}

void runChosen(const std::vector<Command>& commands) {
    for (const Command& command : commands) {
        if (command.line->parsed()) command.run();
    }
    flushResults();
}

int run(int argc, char* argv[]) {
    CLI::App program("Gesture recognition with discrete hidden Markov models", "vesk");
    program.set_version_flag("--version", "vesk " VESK_VERSION);
    program.set_help_flag("-h,--help", "Print this and exit");
    program.require_subcommand(1);
    program.footer(
        "Exit status: 0 done, 1 output could not be written, 2 usage, 3 input refused, "
        "130 interrupted.");
    const std::vector<Command> commands{addTrain(program), addRecognize(program),
                                        addEvaluate(program), addGenerate(program)};
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& stop) {
        return answer(program, stop);
    }
    runChosen(commands);
    return done;
}

int fail(const std::string& problem, ExitStatus status) {
    tell(problem);
    return status;
}

}  // namespace

int main(int argc, char* argv[]) {
    outliveClosedPipes();
    watchForInterruption();
    std::ios::sync_with_stdio(false);
    try {
        return run(argc, argv);
    } catch (const Interrupted&) {
        leaveInterrupted();
    } catch (const UsageError& problem) {
        return fail(problem.what(), usage);
    } catch (const Vesk::Kit::InputError& problem) {
        return fail(problem.what(), inputRefused);
    } catch (const Vesk::Kit::OutputError& problem) {
        return fail(problem.what(), failed);
    } catch (const std::bad_alloc&) {
        return fail("not enough memory", failed);
    } catch (const std::exception& problem) {
        return fail(problem.what(), failed);
    }
}
