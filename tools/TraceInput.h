#ifndef VESK_TOOLS_TRACEINPUT_H
#define VESK_TOOLS_TRACEINPUT_H

#include "CommandLine.h"

#include <veskkit/io/TraceFiles.h>
#include <veskkit/traces/Resampler.h>
#include <veskkit/traces/Trace.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace Vesk::Tool {

/// The traces that a subcommand works on, as the command line has them: files, whose traces of
/// them, and how they are prepared.
class TraceInput {
public:
    /// Adds TRACES, --format, --label-from, --user, --without-user, --flip-y, --resample and
    /// --bearings; the object has to stay.
    void addTo(CLI::App& line);

    /// The same without how they are prepared, with a description of TRACES.
    void addReadingTo(CLI::App& line, const std::string& description);

    /// The same as addTo with an option --traces, which may be absent, in place of TRACES; returns
    /// that option.
    CLI::Option* addOptionTo(CLI::App& line, const std::string& description);

    /// Takes the last of several files away, which is not to be read. UsageError for one only.
    std::string takeLastPath();

    const Kit::Preparation& preparation() const { return prepared; }

    /// Whether any file was named.
    bool given() const { return !paths.empty(); }

    /// Whether a trace comes from standard input.
    bool readsStandardInput() const;

    /// Hands over every trace that the user filters let through, one at a time, in order. A trace
    /// of standard input has the source "-".
    void forEach(const std::function<void(const Kit::Trace&)>& use);

    /// After the last trace: InputError for a user that was asked for, or asked to be left out, and
    /// did not turn up; a warning where names of files became labels for want of others.
    void finish() const;

private:
    void addSelectionTo(CLI::App& line);
    void addPreparationTo(CLI::App& line);
    bool wanted(const std::string& user);
    void readAll(Kit::TraceReader& reader, const std::string& source,
                 const std::function<void(const Kit::Trace&)>& use);
    void refuseUnseenUsers() const;

    std::vector<std::string> paths;
    Kit::TraceFilesOptions reading;
    std::vector<std::string> onlyUsers;
    std::vector<std::string> withoutUsers;
    std::set<std::string> seen;
    std::string withoutLabels;  ///< the first file whose name is a label since it has no other
    Kit::Preparation prepared;
};

}  // namespace Vesk::Tool

#endif
