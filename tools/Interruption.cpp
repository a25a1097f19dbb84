#include "Interruption.h"

#include "Command.h"

#include <unistd.h>

#include <csignal>
#include <cstring>

namespace Vesk::Tool {

namespace {

volatile std::sig_atomic_t delays = 0;
volatile std::sig_atomic_t waiting = 0;
volatile std::sig_atomic_t lineUnfinished = 0;

[[noreturn]] void leave(int signal) {
    const char* text = lineUnfinished != 0 ? "\nvesk: interrupted\n" : "vesk: interrupted\n";
    // Only what is safe inside a signal handler: no streams, no destructors.
    static_cast<void>(!write(STDERR_FILENO, text, std::strlen(text)));
    _exit(signalled + signal);
}

extern "C" void onSignal(int signal) {
    if (delays == 0) leave(signal);
    waiting = signal;
}

}  // namespace

void watchForInterruption() {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction action {};
        sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN) continue;
        action.sa_handler = onSignal;
        action.sa_flags = SA_RESTART;
        sigemptyset(&action.sa_mask);
        sigaction(signal, &action, nullptr);
    }
}

DelayedInterruption::DelayedInterruption() { delays = delays + 1; }

DelayedInterruption::~DelayedInterruption() {
    delays = delays - 1;
    if (delays == 0 && waiting != 0) leave(waiting);
}

void DelayedInterruption::check() const {
    if (waiting != 0) throw Interrupted{};
}

void leaveInterrupted() { leave(waiting); }

void setLineUnfinished(bool unfinished) { lineUnfinished = unfinished ? 1 : 0; }

}  // namespace Vesk::Tool
