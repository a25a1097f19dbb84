#include "Command.h"
#include "Completion.h"
#include "ManualPage.h"
#include "OutputFile.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace Vesk::Tool {

namespace {

void writePage(const std::string& path, const std::string& text) {
    OutputFile output(path);
    output.write(text);
    output.commit();
}

}  // namespace

Command addPages(CLI::App& program, const std::vector<Command>& commands) {
    const auto folder = std::make_shared<std::string>();
    CLI::App* line =
        program.add_subcommand("pages", "Write the manual pages and the completion for bash");
    // The build's, not the user's: not in the help.
    line->group("");
    line->add_option("FOLDER", *folder, "Where to write them")->required()->type_name("");
    const auto write = [&program, &commands, folder] {
        writePage(*folder + "/vesk.1", manualPage(program, commands));
        for (const Command& command : commands) {
            writePage(*folder + "/vesk-" + command.line->get_name() + ".1", manualPage(command));
        }
        writePage(*folder + "/vesk.bash", bashCompletion(program, commands));
    };
    return {line, write};
}

}  // namespace Vesk::Tool
