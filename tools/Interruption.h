#ifndef VESK_TOOLS_INTERRUPTION_H
#define VESK_TOOLS_INTERRUPTION_H

namespace Vesk::Tool {

/// Ends the program at once on SIGINT, SIGTERM and SIGHUP, with 128 plus the signal's number,
/// unless the program was started to ignore the signal.
void watchForInterruption();

/// While one lives, such a signal waits: there is a temporary file to be removed.
class DelayedInterruption {
public:
    DelayedInterruption();
    ~DelayedInterruption();
    DelayedInterruption(const DelayedInterruption&) = delete;
    DelayedInterruption& operator=(const DelayedInterruption&) = delete;

    /// Throws Interrupted where a signal waits.
    void check() const;
};

/// Takes everything down on the way to `leave`.
struct Interrupted {};

/// Ends the program as the signal that waits would have.
[[noreturn]] void leaveInterrupted();

/// Whether a line of standard error is being redrawn, and has to be left first.
void setLineUnfinished(bool unfinished);

}  // namespace Vesk::Tool

#endif
