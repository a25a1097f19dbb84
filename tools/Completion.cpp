#include "Completion.h"

#include "OptionText.h"

#include <vesk/Version.h>

#include <CLI/CLI.hpp>

#include <algorithm>

namespace Vesk::Tool {

namespace {

const char* const beginning = R"(_vesk() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} words= files=
    # bash takes --option=value apart.
    if [[ $word == = ]]; then word=; fi
    if [[ $before == = ]]; then before=${COMP_WORDS[COMP_CWORD - 2]}; fi
    COMPREPLY=()
    local command=${COMP_WORDS[1]}
    if ((COMP_CWORD == 1)); then command=; before=; fi
    case $command,$before in
)";

const char* const end = R"(    esac
    if [[ $files ]]; then
        compopt -o filenames 2>/dev/null || true
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    fi
}
complete -F _vesk vesk
)";

bool isFile(const std::string& value) {
    static const std::vector<std::string> files{"FILE", "HTML", "MODEL", "SCENE", "TRACES"};
    return std::find(files.begin(), files.end(), value) != files.end();
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

std::string longNames(const std::vector<OptionText>& options) {
    std::vector<std::string> names;
    for (const OptionText& option : options) {
        if (!option.argument) names.push_back(option.names.back());
    }
    return joined(names);
}

std::string branch(const std::string& patterns, const std::string& action) {
    return "        " + patterns + ") " + action + " ;;\n";
}

/// "train,-o | train,--output"
std::string pattern(const std::string& command, const OptionText& option) {
    std::string text;
    for (const std::string& name : option.names) {
        if (!text.empty()) text += " | ";
        text.append(command).append(",").append(name);
    }
    return text;
}

/// A branch for every kind of value that options take, then one for all else.
std::string branches(const std::string& command, const std::vector<OptionText>& options) {
    std::string text;
    std::string anything;
    for (const OptionText& option : options) {
        if (option.value.empty()) continue;
        const std::string here = pattern(command, option);
        if (isFile(option.value)) {
            text += branch(here, "files=yes");
        } else if (!option.choices.empty()) {
            text += branch(here, "words='" + joined(option.choices) + "'");
        } else {
            anything += (anything.empty() ? "" : " | ") + here;
        }
    }
    if (!anything.empty()) text += branch(anything, ":");
    const bool takesFiles = std::any_of(options.begin(), options.end(),
                                        [](const OptionText& option) { return option.argument; });
    const std::string rest = takesFiles ? "else files=yes; " : "";
    return text + branch(command + ",*", "if [[ $word == -* ]]; then words='" + longNames(options) +
                                             "'; " + rest + "fi");
}

}  // namespace

std::string bashCompletion(const CLI::App& program, const std::vector<Command>& commands) {
    std::string text = "# bash completion for vesk " VESK_VERSION
                       ", made by the program from its own command line\n";
    text += beginning;
    std::vector<std::string> names;
    for (const Command& command : commands) names.push_back(command.line->get_name());
    text += branch(",", "words='" + joined(names) + " " + longNames(optionsOf(program)) + "'");
    for (const Command& command : commands) {
        text += branches(command.line->get_name(), optionsOf(*command.line));
    }
    return text + end;
}

}  // namespace Vesk::Tool
