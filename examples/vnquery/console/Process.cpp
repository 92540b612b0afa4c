#include "vnquery/console/Process.h"

#include "vnquery/messages/Messages.h"
#include "vnquery/tasks/Failure.h"
#include "vnquery/tasks/Interruption.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace vnquery {

void TakeArguments(int& /*argc*/, char**& /*argv*/) {}

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

bool IsInputTerminal() { return isatty(STDIN_FILENO) == 1; }
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

std::string ReadInput(const std::string& file) {
    const int handle = file == "-" ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC);
    std::string content;
    char block[65536];
    ssize_t count = handle < 0 ? -1 : 1;
    while (count > 0) {
        CheckInterrupted();
        count = read(handle, block, sizeof block);
        if (count > 0)
            content.append(block, static_cast<std::size_t>(count));
        else if (count < 0 && errno == EINTR)
            count = 1;
    }
    const int error = errno;
    if (handle > STDIN_FILENO)
        close(handle);
    if (count < 0)
        throw Failure(kFileFailed,
                      Text(IDS_VQ_CANNOT_READ_FILE, {file}) + ": " + std::strerror(error) + ".");
    return content;
}

} // namespace vnquery
