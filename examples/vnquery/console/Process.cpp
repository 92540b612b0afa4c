#include "vnquery/console/Process.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include <sys/resource.h>
#include <unistd.h>

namespace vnquery {

void PrepareProcess() {
    AwaitSignals();
    for (const int number : {SIGPIPE, SIGXFSZ})
        std::signal(number, SIG_IGN);
    setenv("VNBYTSTR_CODEPAGE", "65001", 1);
    rlimit files = {};
    if (getrlimit(RLIMIT_NOFILE, &files) == 0 && files.rlim_cur < files.rlim_max) {
        files.rlim_cur = files.rlim_max;
        setrlimit(RLIMIT_NOFILE, &files);
    }
}

bool IsOutputTerminal() { return isatty(STDOUT_FILENO) == 1; }
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
