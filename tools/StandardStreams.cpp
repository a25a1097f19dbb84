#include "StandardStreams.h"

#include "Text.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace Vesk::Tool {

namespace {

bool quiet = false;

[[noreturn]] void refuseOutput() {
    if (errno == EPIPE) throw ReaderGone("standard output: nobody reads it any more");
    throw Kit::OutputError(std::string("standard output: ") + std::strerror(errno));
}

}  // namespace

void outliveFailedWrites() {
    for (const int signal : {SIGPIPE, SIGXFSZ}) static_cast<void>(std::signal(signal, SIG_IGN));
}

void writeResult(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) refuseOutput();
}

void flushResults() {
    if (std::fflush(stdout) != 0) refuseOutput();
}

void beQuiet() { quiet = true; }

void tell(std::string_view text) {
    const std::string line = "vesk: " + printable(text) + "\n";
    // Nobody is left to tell where this fails.
    static_cast<void>(std::fwrite(line.data(), 1, line.size(), stderr));
}

void note(std::string_view text) {
    if (!quiet) tell(text);
}

void writeNotes(std::string_view text) {
    if (!quiet) static_cast<void>(std::fwrite(text.data(), 1, text.size(), stderr));
}

bool canRedraw() {
    if (quiet) return false;
    const char* terminal = std::getenv("TERM");
    return isatty(STDERR_FILENO) == 1 && terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
}

bool resultsMayBeSeen() {
    struct stat status = {};
    return isatty(STDOUT_FILENO) == 1 ||
           (fstat(STDOUT_FILENO, &status) == 0 && S_ISFIFO(status.st_mode));
}

}  // namespace Vesk::Tool
