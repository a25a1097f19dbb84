#include "TraceInput.h"

#include "Checks.h"
#include "OutputFile.h"

#include <veskkit/Error.h>
#include <veskkit/io/JsonLinesReader.h>

#include <fmt/format.h>

#include <algorithm>
#include <iostream>

namespace Vesk::Tool {

namespace {

constexpr int mostPoints = 100000;

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

void handOver(Kit::JsonLinesReader& reader, const std::function<void(Kit::Trace&)>& use) {
    Kit::Trace trace;
    while (reader.next(trace)) use(trace);
}

}  // namespace

void TraceInput::addTo(CLI::App& line) {
    line.add_option("TRACES", paths, "Files of traces in JSON Lines; - is standard input")
        ->required()
        ->type_name("");
    line.add_option("--user", onlyUsers, "Only the traces of this user; repeatable")
        ->type_name("U")
        ->allow_extra_args(false);
    line.add_option("--without-user", withoutUsers, "Leave out the traces of this user; repeatable")
        ->type_name("U")
        ->allow_extra_args(false);
    line.add_flag("--flip-y", prepared.flipY,
                  "The traces' y axis points the other way than the model's");
    line.add_option_function<std::string>(
            "--resample",
            [this](const std::string& text) { prepared.points = resampledPoints(text); },
            "Points that every trace is resampled to, or none: as drawn [41]")
        ->type_name("N|none");
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
            Kit::JsonLinesReader reader(std::cin, "standard input");
            handOver(reader, [&](Kit::Trace& trace) {
                trace.source = path;
                if (wanted(trace.user)) use(trace);
            });
        } else {
            Kit::JsonLinesReader reader(path);
            handOver(reader, [&](Kit::Trace& trace) {
                if (wanted(trace.user)) use(trace);
            });
        }
    }
}

std::vector<std::string> TraceInput::unseenUsers() const {
    std::vector<std::string> lines;
    const auto collect = [&](const std::vector<std::string>& users, const char* option) {
        for (const std::string& user : users) {
            if (seen.count(user) == 0) {
                lines.push_back(fmt::format("{}: found no trace of user \"{}\"", option, user));
            }
        }
    };
    collect(onlyUsers, "--user");
    collect(withoutUsers, "--without-user");
    return lines;
}

}  // namespace Vesk::Tool
