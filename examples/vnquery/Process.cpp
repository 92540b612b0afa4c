#include "Process.h"

#include "Failure.h"
#include "Messages.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <utility>

#include <sys/resource.h>
#include <unistd.h>

namespace vnquery {

namespace {

volatile std::sig_atomic_t interruptingSignal = 0;
thread_local std::stop_token currentStop;

extern "C" void RememberSignal(int number) { interruptingSignal = number; }

void Handle(int number, void (*handler)(int), int flags) {
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = flags;
    sigemptyset(&action.sa_mask);
    sigaction(number, &action, nullptr);
}

} // namespace

void AwaitSignals() {
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        Handle(number, RememberSignal, static_cast<int>(SA_RESETHAND));
}

void PrepareProcess() {
    AwaitSignals();
    for (const int number : {SIGPIPE, SIGXFSZ})
        Handle(number, SIG_IGN, 0);
    setenv("VNBYTSTR_CODEPAGE", "65001", 1);
    rlimit files = {};
    if (getrlimit(RLIMIT_NOFILE, &files) == 0 && files.rlim_cur < files.rlim_max) {
        files.rlim_cur = files.rlim_max;
        setrlimit(RLIMIT_NOFILE, &files);
    }
}

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

bool IsErrorOutputTerminal() { return isatty(STDERR_FILENO) == 1; }

std::uint64_t GetPeakMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        std::uint64_t kilobytes = 0;
        if (word == "VmHWM:" && status >> kilobytes)
            return kilobytes * 1024;
    }
    rusage usage = {};
    return getrusage(RUSAGE_SELF, &usage) == 0 ? static_cast<std::uint64_t>(usage.ru_maxrss) * 1024
                                               : 0;
}

void WriteOutput(const std::string& text) {
    for (std::size_t done = 0; done < text.size();) {
        CheckInterrupted();
        const ssize_t count = write(STDOUT_FILENO, text.data() + done, text.size() - done);
        if (count >= 0)
            done += static_cast<std::size_t>(count);
        else if (errno != EINTR)
            throw Failure(kFileFailed, Text(IDS_VQ_CANNOT_WRITE_OUTPUT, {std::strerror(errno)}));
    }
}

} // namespace vnquery
