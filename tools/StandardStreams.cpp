#include "StandardStreams.h"

#include "Text.h"

#include <veskkit/Error.h>

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace Vesk::Tool {

namespace {

[[noreturn]] void refuseOutput() {
    throw Kit::OutputError(std::string("standard output: ") + std::strerror(errno));
}

}  // namespace

void outliveClosedPipes() { std::signal(SIGPIPE, SIG_IGN); }

void writeResult(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) refuseOutput();
}

void flushResults() {
    if (std::fflush(stdout) != 0) refuseOutput();
}

void tell(std::string_view text) {
    const std::string line = "vesk: " + printable(text) + "\n";
    // Nobody is left to tell where this fails.
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
}

bool canRedraw() {
    const char* terminal = std::getenv("TERM");
    return isatty(STDERR_FILENO) == 1 && terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
}

}  // namespace Vesk::Tool
