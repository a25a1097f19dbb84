#include "OptionText.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>
#include <set>
#include <sstream>

namespace Vesk::Tool {

namespace {

/// "user|fold" are words, "N|none" is one beside a placeholder.
std::vector<std::string> wordsOf(const std::string& typeName) {
    std::vector<std::string> words;
    if (typeName.find('|') == std::string::npos) return words;
    std::istringstream parts(typeName);
    for (std::string part; std::getline(parts, part, '|');) {
        if (std::islower(static_cast<unsigned char>(part.front())) != 0) words.push_back(part);
    }
    return words;
}

/// "Only with --json", in the order of names: the parser keeps its sets by address.
std::string condition(const char* what, const std::set<CLI::Option*>& others) {
    std::set<std::string> names;
    for (const CLI::Option* other : others) names.insert(other->get_name());
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? what : " and ") + name;
    return text.empty() ? "" : " " + text + ".";
}

std::string describe(const CLI::Option& option) {
    std::string text = option.get_description();
    if (!text.empty() && text.back() != '.') text += '.';
    if (!option.get_default_str().empty()) text += " Default: " + option.get_default_str() + ".";
    return text + condition("Only with ", option.get_needs()) +
           condition("Not with ", option.get_excludes());
}

OptionText textOf(const CLI::Option& option) {
    OptionText text;
    text.argument = option.get_positional();
    if (text.argument) {
        text.names.push_back(option.get_name());
    } else {
        for (const std::string& name : option.get_snames()) text.names.push_back("-" + name);
        for (const std::string& name : option.get_lnames()) text.names.push_back("--" + name);
        if (option.get_items_expected_max() > 0) text.value = option.get_type_name();
    }
    text.choices = wordsOf(text.value);
    text.description = describe(option);
    text.required = option.get_required();
    text.repeatable = option.get_expected_max() > 1;
    return text;
}

}  // namespace

std::vector<OptionText> optionsOf(const CLI::App& line) {
    std::vector<OptionText> texts;
    for (const CLI::Option* option : line.get_options()) texts.push_back(textOf(*option));
    std::stable_partition(texts.begin(), texts.end(),
                          [](const OptionText& text) { return text.argument; });
    return texts;
}

}  // namespace Vesk::Tool
