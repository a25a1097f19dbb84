#include "Command.h"
#include "Interruption.h"
#include "StandardStreams.h"
#include "Suggestion.h"
#include "Text.h"

#include <vesk/Version.h>
#include <veskkit/Error.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <cstdint>
#include <exception>
#include <iostream>
#include <iterator>
#include <new>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace Vesk::Tool;

std::vector<std::string> namesOf(const std::vector<const CLI::App*>& subcommands) {
    std::vector<std::string> names;
    for (const CLI::App* subcommand : subcommands) {
        const bool hidden = subcommand->get_group().empty();
        if (!hidden) names.push_back(subcommand->get_name());
    }
    return names;
}

/// What is wrong with an argument that a subcommand does not take.
std::string unexpected(const CLI::App& line, const std::string& argument) {
    if (argument.size() < 2 || argument[0] != '-') {
        return fmt::format("found {}, expected options only", argument);
    }
    std::vector<std::string> options;
    for (const CLI::Option* option : line.get_options()) {
        for (const std::string& name : option->get_lnames()) options.push_back("--" + name);
    }
    const std::string name = argument.substr(0, argument.find('='));
    return fmt::format("found {}, expected an option of vesk {}{}", name, line.get_name(),
                       suggestion(name, options));
}

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
    if (!chosen.empty()) {
        const CLI::App& line = *chosen.front();
        const std::vector<std::string> rest = line.remaining();
        // What is there and should not be says more than what is missing.
        const std::string problem = rest.empty() ? stop.what() : unexpected(line, rest.front());
        tell(fmt::format("{} (see vesk {} --help)", problem, line.get_name()));
    } else if (const auto rest = program.remaining(); !rest.empty()) {
        tell(fmt::format("found {}, expected a subcommand{} (see vesk --help)", rest.front(),
                         suggestion(rest.front(), namesOf(program.get_subcommands({})))));
    } else {
        tell("expected a subcommand (see vesk --help)");
    }
    return usage;
}

/// The parser's help; what is long goes on below the descriptions.
std::string help(const CLI::App* line, std::string name, CLI::AppFormatMode mode) {
    const CLI::Formatter formatter;
    std::istringstream lines(formatter.make_help(line, std::move(name), mode));
    std::string text;
    for (std::string one; std::getline(lines, one);) {
        const bool entry = one.rfind("  ", 0) == 0;
        text += wrapped(one, entry ? formatter.get_column_width() : 0) + '\n';
    }
    return text;
}

/// "Exit status: 0 done, ..."
std::string exitStatuses() {
    std::string text = "Exit status:";
    for (const Ending& ending : endings) {
        const bool first = &ending == std::begin(endings);
        text += fmt::format("{} {} {}", first ? "" : ",", ending.status, ending.meaning);
    }
    return text + ".";
}

void runIfChosen(const Command& command) {
    if (command.line->parsed()) command.run();
}

int run(int argc, char* argv[]) {
    CLI::App program("Gesture recognition with discrete hidden Markov models", "vesk");
    program.formatter_fn(help);
    program.set_version_flag("--version", "vesk " VESK_VERSION);
    program.set_help_flag("-h,--help", "Print this and exit");
    program.require_subcommand(1);
    const std::string statuses = exitStatuses();
    program.footer(statuses);
    const std::vector<Command> commands{
        addTrain(program),    addTune(program),    addRecognize(program), addEvaluate(program),
        addDoctor(program),   addInspect(program), addExport(program),    addConvert(program),
        addCodebook(program), addGenerate(program)};
    for (const Command& command : commands) {
        command.line->add_flag_function(
            "-q,--quiet", [](std::int64_t) { beQuiet(); }, "Neither warnings nor progress");
        command.line->footer("Example: " + command.example + "\n\n" + statuses);
    }
    const Command pages = addPages(program, commands);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& stop) {
        return answer(program, stop);
    }
    for (const Command& command : commands) runIfChosen(command);
    runIfChosen(pages);
    flushResults();
    return done;
}

int fail(const std::string& problem, ExitStatus status) {
    tell(problem);
    return status;
}

}  // namespace

int main(int argc, char* argv[]) {
    outliveFailedWrites();
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
    } catch (const ReaderGone&) {
        return failed;
    } catch (const Vesk::Kit::OutputError& problem) {
        return fail(problem.what(), failed);
    } catch (const std::bad_alloc&) {
        return fail("not enough memory", failed);
    } catch (const std::exception& problem) {
        return fail(problem.what(), failed);
    }
}
