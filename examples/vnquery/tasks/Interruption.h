// What ends work before it is done: a signal to end, or a Cancel button.
#pragma once

#include <stop_token>

namespace vnquery {

/// Ctrl-C, another signal to end, or a Cancel button. Thrown where the work notices it.
struct Interrupted {};

/// From here on a signal to end (Ctrl-C, SIGTERM, SIGHUP) is remembered; a second one ends the
/// process at once.
void AwaitSignals();
/// What AwaitSignals has the system call.
extern "C" void RememberSignal(int number) noexcept;
/// Number of the signal that asked to end, 0 when none did.
int InterruptingSignal() noexcept;
/// The same, and forgets it: for a window, which asks about unwritten changes and may stay open.
/// The next signal still ends the process at once; AwaitSignals makes it be remembered again.
int TakeInterruptingSignal() noexcept;

/// Whether a signal asked to end, or the scope that the thread works in was asked to stop.
bool IsInterrupted() noexcept;
/// Throws Interrupted when IsInterrupted says so.
void CheckInterrupted();

/// During its life the calling thread also stops when `stop` is asked to: what a Cancel button does
/// to work on another thread.
class StopScope {
public:
    explicit StopScope(std::stop_token stop);
    ~StopScope();
    StopScope(const StopScope&) = delete;
    StopScope& operator=(const StopScope&) = delete;

private:
    std::stop_token m_outer;
};
/// The token of the thread's StopScope, for threads that it starts; without a StopScope, a token
/// that never stops.
std::stop_token CurrentStop();

} // namespace vnquery
