#include "vnquery/tasks/Interruption.h"

#include <csignal>
#include <utility>

namespace vnquery {

namespace {

volatile std::sig_atomic_t interruptingSignal = 0;
thread_local std::stop_token currentStop;

} // namespace

void RememberSignal(int number) noexcept { interruptingSignal = number; }

int InterruptingSignal() noexcept { return interruptingSignal; }

int TakeInterruptingSignal() noexcept {
    const int number = interruptingSignal;
    if (number != 0)
        interruptingSignal = 0;
    return number;
}

bool IsInterrupted() noexcept { return interruptingSignal != 0 || currentStop.stop_requested(); }

void CheckInterrupted() {
    if (IsInterrupted())
        throw Interrupted();
}

StopScope::StopScope(std::stop_token stop) : m_outer(std::exchange(currentStop, std::move(stop))) {}

StopScope::~StopScope() { currentStop = std::move(m_outer); }

std::stop_token CurrentStop() { return currentStop; }

} // namespace vnquery
