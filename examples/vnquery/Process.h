// The process around the program: signals, terminal, memory. The one file with POSIX calls.
#pragma once

#include <cstdint>
#include <stop_token>
#include <string>

namespace vnquery {

/// To be called first. From here on a signal to end (Ctrl-C, SIGTERM, SIGHUP) is remembered and a
/// second one ends the process at once; a closed pipe and a file size limit are errors of the
/// write; text is UTF-8, as the databases deliver it; and there may be as many open files as the
/// system allows, since every large value has one.
void PrepareProcess();

/// Number of the signal that asked to end, 0 when none did.
int InterruptingSignal() noexcept;
/// The same, and forgets it: for a window, which asks what is to become of changes and may stay
/// open. The next signal still ends the process at once; AwaitSignals makes it be remembered again.
int TakeInterruptingSignal() noexcept;
void AwaitSignals();
/// Whether a signal asked to end, or the scope that the thread works in was asked to stop.
bool IsInterrupted() noexcept;
/// Throws Interrupted when IsInterrupted says so.
void CheckInterrupted();

/// Until its end the calling thread also stops when `stop` is asked to: what a Cancel button does
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
/// The token of the thread's StopScope, for threads that it starts; one that never stops without.
std::stop_token CurrentStop();

bool IsErrorOutputTerminal();

/// Most memory that the process had, in bytes; 0 when the system does not tell.
std::uint64_t GetPeakMemory();

/// Writes all of `text` to standard output. Throws Failure when that cannot be done.
void WriteOutput(const std::string& text);

} // namespace vnquery
