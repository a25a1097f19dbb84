#include "ManualPage.h"

#include "OptionText.h"

#include <vesk/Version.h>

#include <CLI/CLI.hpp>

#include <cctype>

namespace Vesk::Tool {

namespace {

/// Text in which roff finds nothing to interpret. Hyphens stay ones that can be pasted.
std::string plain(const std::string& text) {
    std::string result = text.find_first_of(".'") == 0 ? "\\&" : "";
    for (const char c : text) {
        if (c == '\\') {
            result += "\\e";
        } else if (c == '-') {
            result += "\\-";
        } else {
            result += c;
        }
    }
    return result;
}

std::string bold(const std::string& text) { return "\\fB" + plain(text) + "\\fR"; }
std::string italic(const std::string& text) { return "\\fI" + plain(text) + "\\fR"; }

std::string upperCase(std::string text) {
    for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

std::string section(const std::string& title) { return ".SH " + title + "\n"; }

/// Name and purpose, the purpose as the page's index shows it: without a capital.
std::string head(const std::string& name, std::string purpose) {
    purpose.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(purpose.front())));
    return ".TH " + upperCase(plain(name)) + " 1 \"\" \"vesk " VESK_VERSION "\" \"Vesk HMM\"\n" +
           section("NAME") + plain(name) + " \\- " + plain(purpose) + "\n";
}

std::string withValue(const std::string& name, const OptionText& option) {
    return bold(name) + (option.value.empty() ? "" : " " + italic(option.value));
}

/// "vesk train [option...] -o MODEL TRACES...": what must be there is spelt out.
std::string synopsis(const std::string& command, const std::vector<OptionText>& options) {
    std::string line = bold(command) + " [" + italic("option") + "...]";
    for (const OptionText& option : options) {
        if (!option.argument && option.required) line += " " + withValue(option.names[0], option);
    }
    for (const OptionText& option : options) {
        if (!option.argument) continue;
        const std::string name = italic(option.names[0]) + (option.repeatable ? "..." : "");
        line += option.required ? " " + name : " [" + name + "]";
    }
    return section("SYNOPSIS") + line + "\n";
}

std::string entry(const OptionText& option) {
    std::string names;
    for (const std::string& name : option.names) {
        names += (names.empty() ? "" : ", ") +
                 (option.argument ? italic(name) : withValue(name, option));
    }
    return ".TP\n" + names + "\n" + plain(option.description) + "\n";
}

std::string entries(const char* title, const std::vector<OptionText>& options, bool arguments) {
    std::string text;
    for (const OptionText& option : options) {
        if (option.argument == arguments) text += entry(option);
    }
    return text.empty() ? "" : section(title) + text;
}

std::string exitStatus() {
    std::string text = section("EXIT STATUS");
    for (const Ending& ending : endings) {
        text += ".TP\n" + bold(std::to_string(ending.status)) + "\n" + ending.meaning + "\n";
    }
    return text;
}

}  // namespace

std::string manualPage(const CLI::App& program, const std::vector<Command>& commands) {
    const std::vector<OptionText> options = optionsOf(program);
    std::string text = head("vesk", program.get_description());
    text += section("SYNOPSIS") + bold("vesk") + " " + italic("subcommand") + " [" +
            italic("option") + "...] [" + italic("file") + "...]\n";
    text += section("SUBCOMMANDS");
    for (const Command& command : commands) {
        text += ".TP\n" + bold(command.line->get_name()) + "\n" +
                plain(command.line->get_description()) + ".\n";
    }
    text += entries("OPTIONS", options, false) + exitStatus() + section("EXAMPLES");
    for (const Command& command : commands) {
        text += ".PP\n.EX\n" + plain(command.example) + "\n.EE\n";
    }
    text += section("SEE ALSO");
    for (const Command& command : commands) {
        const bool last = &command == &commands.back();
        text += bold("vesk-" + command.line->get_name()) + "(1)" + (last ? "\n" : ",\n");
    }
    return text;
}

std::string manualPage(const Command& command) {
    const CLI::App& line = *command.line;
    const std::vector<OptionText> options = optionsOf(line);
    return head("vesk-" + line.get_name(), line.get_description()) +
           synopsis("vesk " + line.get_name(), options) + section("DESCRIPTION") +
           plain(line.get_description()) + ".\n" + entries("ARGUMENTS", options, true) +
           entries("OPTIONS", options, false) + exitStatus() + section("EXAMPLES") + ".EX\n" +
           plain(command.example) + "\n.EE\n" + section("SEE ALSO") + bold("vesk") + "(1)\n";
}

}  // namespace Vesk::Tool
