#include "vnquery/tasks/Interruption.h"

#include <atomic>
#include <utility>

namespace vnquery {

namespace {

/// Set by a signal's handler, on whatever thread that runs, and read by those that work.
std::atomic<int> interruptingSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free);
thread_local std::stop_token currentStop;

} // namespace

void RememberSignal(int number) noexcept { interruptingSignal = number; }

int InterruptingSignal() noexcept { return interruptingSignal; }

int TakeInterruptingSignal() noexcept { return interruptingSignal.exchange(0); }

bool IsInterrupted() noexcept { return interruptingSignal != 0 || currentStop.stop_requested(); }

void CheckInterrupted() {
    if (IsInterrupted())
        throw Interrupted();
}

StopScope::StopScope(std::stop_token stop) : m_outer(std::exchange(currentStop, std::move(stop))) {}

StopScope::~StopScope() { currentStop = std::move(m_outer); }

std::stop_token CurrentStop() { return currentStop; }

} // namespace vnquery
