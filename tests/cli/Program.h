#ifndef VESK_TESTS_CLI_PROGRAM_H
#define VESK_TESTS_CLI_PROGRAM_H

#include <support/Files.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sys/types.h>

#include <string>
#include <vector>

namespace Vesk::Test {

/// How a run of the program ended, and what it said.
struct Outcome {
    int status;  ///< exit status; minus the signal's number where a signal ended it
    std::string out;
    std::string err;
};

/// Where a started program's streams lead: descriptors, or -1 for /dev/null.
struct Streams {
    int in = -1;
    int out = -1;
    int err = -1;
};

/// Starts the program. `environment` holds settings NAME=value besides the ones of the test.
pid_t start(const std::vector<std::string>& arguments, const Streams& streams,
            const std::vector<std::string>& environment = {});

/// Starts a line of sh as `shell` runs it.
pid_t startShell(const std::string& line, const std::string& folder);

/// Waits for a started program and gives its status as in Outcome.
int await(pid_t program);

/// Runs the program to its end with `input` on standard input. Where `out` is not empty, standard
/// output goes to that path.
Outcome run(const std::vector<std::string>& arguments, const std::string& input = "",
            const std::string& out = "");

/// Runs a line of sh in which $VESK is the program, in the folder given.
Outcome shell(const std::string& line, const std::string& folder);

/// The run succeeded and said nothing on standard error.
testing::AssertionResult succeeded(const Outcome& outcome);

/// The run ended with `status`, printed no result, and told one line that begins with "vesk: " and
/// contains `text`.
testing::AssertionResult refused(const Outcome& outcome, int status, const std::string& text);

std::vector<std::string> lines(const std::string& text);

/// The names in a folder, sorted.
std::vector<std::string> namesIn(const std::string& folder);

/// A folder with traces of three gestures by three users, four repetitions each.
class WithTraces : public testing::Test {
protected:
    WithTraces();

    std::string path(const std::string& name) const { return folder.path(name); }

    /// Trains a small model on the traces, with further options, and expects that to work.
    std::string model(const std::vector<std::string>& options = {});

    TemporaryFolder folder;
    std::string traces = folder.path("traces.jsonl");
};

/// Options that make a small model, quickly.
const std::vector<std::string>& smallModel();

std::vector<std::string> joined(std::vector<std::string> first,
                                const std::vector<std::string>& second);

}  // namespace Vesk::Test

#endif
