#include "TraceInput.h"

#include "Checks.h"
#include "Command.h"
#include "OutputFile.h"
#include "StandardStreams.h"
#include "Suggestion.h"

#include <veskkit/Error.h>

#include <fmt/format.h>
#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <map>
#include <memory>

namespace Vesk::Tool {

namespace {

constexpr int mostPoints = 100000;
constexpr int mostBearings = 1000;

int resampledPoints(const std::string& text) {
    if (text == "none") return Kit::Preparation::asDrawn;
    int points = 0;
    if (!readNumber(text, points) || points < 2 || points > mostPoints) {
        throw CLI::ValidationError(
            "--resample",
            fmt::format("found {}, expected none or a number from 2 to {}", text, mostPoints));
    }
    return points;
}

bool contains(const std::vector<std::string>& list, const std::string& item) {
    return std::find(list.begin(), list.end(), item) != list.end();
}

const std::map<std::string, Kit::TraceFormat> formats{{"jsonl", Kit::TraceFormat::JsonLines},
                                                      {"csv", Kit::TraceFormat::Csv},
                                                      {"xml", Kit::TraceFormat::Xml}};
const std::map<std::string, Kit::LabelSource> labelSources{{"record", Kit::LabelSource::Record},
                                                           {"file", Kit::LabelSource::FileName},
                                                           {"folder", Kit::LabelSource::Folder}};

/// An option whose value is one of a few words.
template <typename Value>
void addChoice(CLI::App& line, const char* name, Value& value,
               const std::map<std::string, Value>& words, const char* help) {
    std::vector<std::string> known;
    std::string typeName;
    for (const auto& [word, unused] : words) {
        typeName += (known.empty() ? "" : "|") + word;
        known.push_back(word);
    }
    line.add_option_function<std::string>(
            name, [&value, &words](const std::string& word) { value = words.at(word); }, help)
        ->check(oneOf(known))
        ->type_name(typeName);
}

}  // namespace

void TraceInput::addReadingTo(CLI::App& line, const std::string& description) {
    line.add_option("TRACES", paths, description)->required()->type_name("");
    addSelectionTo(line);
}

CLI::Option* TraceInput::addOptionTo(CLI::App& line, const std::string& description) {
    CLI::Option* option =
        line.add_option("--traces", paths, description)->type_name("FILE")->allow_extra_args(false);
    addSelectionTo(line);
    addPreparationTo(line);
    return option;
}

void TraceInput::addSelectionTo(CLI::App& line) {
    addChoice(line, "--format", reading.format, formats,
              "How the traces are written [by the file's name or its first character]");
    addChoice(line, "--label-from", reading.label, labelSources,
              "Where a trace's label comes from [record]");
    line.add_option("--user", onlyUsers, "Only the traces of this user; repeatable")
        ->type_name("U")
        ->allow_extra_args(false);
    line.add_option("--without-user", withoutUsers, "Leave out the traces of this user; repeatable")
        ->type_name("U")
        ->allow_extra_args(false);
}

void TraceInput::addTo(CLI::App& line) {
    addReadingTo(line,
                 "Files of traces, or folders of them: JSON Lines, CSV, XML gesture logs; - is "
                 "standard input");
    addPreparationTo(line);
}

void TraceInput::addPreparationTo(CLI::App& line) {
    line.add_flag("--flip-y", prepared.flipY,
                  "The traces' y axis points the other way than the model's");
    line.add_option_function<std::string>(
            "--resample",
            [this](const std::string& text) { prepared.points = resampledPoints(text); },
            "Points that every trace is resampled to, in recognition as in training, or none: as "
            "drawn [41]")
        ->type_name("N|none");
    line.add_option("--bearings", prepared.bearings,
                    "Further steps that tell where the resampled points lie, seen from their mean; "
                    "to recognise with as many as in training")
        ->check(numberIn(0, mostBearings))
        ->type_name("B")
        ->capture_default_str();
}

std::string TraceInput::takeLastPath() {
    if (paths.size() < 2) {
        throw UsageError("found " + paths.back() + " alone, expected TRACES and the file to write");
    }
    std::string last = paths.back();
    paths.pop_back();
    return last;
}

bool TraceInput::readsStandardInput() const {
    return std::any_of(paths.begin(), paths.end(), isStandard);
}

bool TraceInput::wanted(const std::string& user) {
    seen.insert(user);
    if (contains(withoutUsers, user)) return false;
    return onlyUsers.empty() || contains(onlyUsers, user);
}

void TraceInput::forEach(const std::function<void(const Kit::Trace&)>& use) {
    for (const std::string& path : paths) {
        if (isStandard(path)) {
            readAll(*Kit::readerOf(std::cin, "standard input", reading.format), path, use);
        } else {
            Kit::TraceFiles files({path}, reading);
            readAll(files, "", use);
            if (withoutLabels.empty()) withoutLabels = files.firstWithoutLabels();
        }
    }
}

/// Hands over what is wanted of a reader; with a source other than its own where one is given.
void TraceInput::readAll(Kit::TraceReader& reader, const std::string& source,
                         const std::function<void(const Kit::Trace&)>& use) {
    Kit::Trace trace;
    while (reader.next(trace)) {
        if (!source.empty()) trace.source = source;
        if (wanted(trace.user)) use(trace);
    }
}

void TraceInput::finish() const {
    refuseUnseenUsers();
    if (withoutLabels.empty()) return;
    note(
        fmt::format("warning: {}: found no column \"gesture\", \"label\" or \"class\": labels come "
                    "from the names of files",
                    withoutLabels));
}

void TraceInput::refuseUnseenUsers() const {
    const auto refuse = [this](const std::vector<std::string>& users, const char* option) {
        for (const std::string& user : users) {
            if (seen.count(user) > 0) continue;
            throw Kit::InputError(fmt::format("{}: found no trace of user \"{}\"{}", option, user,
                                              suggestion(user, {seen.begin(), seen.end()})));
        }
    };
    refuse(onlyUsers, "--user");
    refuse(withoutUsers, "--without-user");
}

}  // namespace Vesk::Tool
