#include "Program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <stdexcept>

namespace Vesk::Test {

namespace {

std::vector<char*> pointers(std::vector<std::string>& strings) {
    std::vector<char*> result;
    result.reserve(strings.size() + 1);
    for (std::string& string : strings) result.push_back(string.data());
    result.push_back(nullptr);
    return result;
}

pid_t spawn(const std::string& program, std::vector<std::string> arguments, const Streams& streams,
            const std::vector<std::string>& environment) {
    arguments.insert(arguments.begin(), program);
    std::vector<std::string> settings = environment;
    for (char** setting = environ; *setting != nullptr; ++setting) settings.emplace_back(*setting);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    int target = 0;
    for (const int descriptor : {streams.in, streams.out, streams.err}) {
        if (descriptor < 0) {
            posix_spawn_file_actions_addopen(&actions, target, "/dev/null",
                                             target == 0 ? O_RDONLY : O_WRONLY, 0);
        } else {
            posix_spawn_file_actions_adddup2(&actions, descriptor, target);
        }
        ++target;
    }
    // A test may have been started with signals ignored, in the background say.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t ordinary;
    sigemptyset(&ordinary);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) sigaddset(&ordinary, signal);
    posix_spawnattr_setsigdefault(&attributes, &ordinary);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);

    pid_t child = -1;
    const int problem = posix_spawn(&child, program.c_str(), &actions, &attributes,
                                    pointers(arguments).data(), pointers(settings).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    if (problem != 0) throw std::runtime_error("cannot start " + program);
    return child;
}

/// An open file that closes with the object, and is not inherited.
class File {
public:
    File(const std::string& path, int flags)
        : descriptor(open(path.c_str(), flags | O_CLOEXEC, 0600)) {
        if (descriptor < 0) throw std::runtime_error("cannot open " + path);
    }
    ~File() { close(descriptor); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    const int descriptor;
};

Outcome runCaptured(const std::string& program, const std::vector<std::string>& arguments,
                    const std::string& input, const std::string& out,
                    const std::vector<std::string>& environment) {
    const TemporaryFolder folder;
    writeFile(folder.path("in"), input);
    Outcome outcome{};
    {
        const File in(folder.path("in"), O_RDONLY);
        const File results(out.empty() ? folder.path("out") : out, O_WRONLY | O_CREAT);
        const File messages(folder.path("err"), O_WRONLY | O_CREAT);
        outcome.status =
            await(spawn(program, arguments,
                        {in.descriptor, results.descriptor, messages.descriptor}, environment));
    }
    if (out.empty()) outcome.out = readFile(folder.path("out"));
    outcome.err = readFile(folder.path("err"));
    return outcome;
}

std::vector<std::string> shellArguments(const std::string& line) {
    return {"-c", "cd \"$FOLDER\" || exit 99\n" + line};
}

std::vector<std::string> shellEnvironment(const std::string& folder) {
    return {"VESK=" VESK_PROGRAM, "FOLDER=" + folder};
}

testing::AssertionResult notAs(const char* expected, const Outcome& outcome) {
    return testing::AssertionFailure() << "expected " << expected << ", got status "
                                       << outcome.status << "\n--- standard output\n"
                                       << outcome.out << "--- standard error\n"
                                       << outcome.err;
}

}  // namespace

pid_t start(const std::vector<std::string>& arguments, const Streams& streams,
            const std::vector<std::string>& environment) {
    return spawn(VESK_PROGRAM, arguments, streams, environment);
}

int await(pid_t program) {
    int state = 0;
    if (waitpid(program, &state, 0) != program) throw std::runtime_error("waitpid");
    return WIFEXITED(state) ? WEXITSTATUS(state) : -WTERMSIG(state);
}

Outcome run(const std::vector<std::string>& arguments, const std::string& input,
            const std::string& out) {
    return runCaptured(VESK_PROGRAM, arguments, input, out, {});
}

Outcome shell(const std::string& line, const std::string& folder) {
    return runCaptured("/bin/sh", shellArguments(line), "", "", shellEnvironment(folder));
}

pid_t startShell(const std::string& line, const std::string& folder) {
    return spawn("/bin/sh", shellArguments(line), {}, shellEnvironment(folder));
}

testing::AssertionResult succeeded(const Outcome& outcome) {
    if (outcome.status == 0 && outcome.err.empty()) return testing::AssertionSuccess();
    return notAs("success without a message", outcome);
}

testing::AssertionResult refused(const Outcome& outcome, int status, const std::string& text) {
    const bool oneLine = outcome.err.rfind("vesk: ", 0) == 0 && lines(outcome.err).size() == 1 &&
                         outcome.err.back() == '\n';
    const bool says = outcome.err.find(text) != std::string::npos;
    if (outcome.status == status && outcome.out.empty() && oneLine && says) {
        return testing::AssertionSuccess();
    }
    return notAs("a refusal", outcome) << "--- expected status " << status << " and one line with\n"
                                       << text;
}

std::vector<std::string> lines(const std::string& text) {
    std::vector<std::string> result;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) result.push_back(line);
    return result;
}

std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

WithTraces::WithTraces() {
    const Outcome outcome =
        run({"generate", "-o", traces, "--users", "3", "--repetitions", "4", "--gesture", "check",
             "--gesture", "circle", "--gesture", "zigzag"});
    if (!succeeded(outcome)) throw std::runtime_error("no traces: " + outcome.err);
}

std::string WithTraces::model(const std::vector<std::string>& options) {
    std::string result = path("model.txt");
    EXPECT_TRUE(
        succeeded(run(joined({"train", traces, "-o", result}, joined(smallModel(), options)))));
    return result;
}

const std::vector<std::string>& smallModel() {
    static const std::vector<std::string> options{"--symbols",    "16", "--states", "10",
                                                  "--iterations", "1",  "--ratio",  "100"};
    return options;
}

std::vector<std::string> joined(std::vector<std::string> first,
                                const std::vector<std::string>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

}  // namespace Vesk::Test
