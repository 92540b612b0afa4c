#include "src/os/StartProgram.h"

#include "src/os/System.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <mutex>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace vnbytstr::detail {

namespace {

constexpr const char* kOpener = "xdg-open";

bool IsExecutable(const std::string& name) {
    struct stat info;
    return ::stat(name.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
           ::access(name.c_str(), X_OK) == 0;
}

/// The file of a program named without a folder, from the PATH; empty when there is none.
std::string FindInPath(const std::string& name) {
    std::string path = System::Current().GetEnvironment("PATH");
    if (path.empty())
        path = "/usr/local/bin:/usr/bin:/bin";
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find(':', begin), path.size());
        // An empty entry would be the working folder: nothing there is meant to be run.
        if (end > begin) {
            std::string candidate = path.substr(begin, end - begin) + "/" + name;
            if (IsExecutable(candidate))
                return candidate;
        }
        begin = end + 1;
    }
    return {};
}

/// Whether `file` is an address: letters, digits, '+', '-' or '.', then "://".
bool IsAddress(const std::string& file) {
    const std::size_t end = file.find("://");
    if (end == std::string::npos || end == 0)
        return false;
    return std::all_of(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(end), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '+' || c == '-' || c == '.';
    });
}

int ShellErrorOf(int error) {
    switch (error) {
    case ENOENT:
        return kShellFileNotFound;
    case ENOTDIR:
        return kShellPathNotFound;
    case EACCES:
    case EPERM:
        return kShellAccessDenied;
    case ENOEXEC:
        return kShellBadFormat;
    default:
        return kShellNoMemory;
    }
}

/// Children that were started and may have ended since. Nobody waits for them, so they are
/// collected whenever the next one is started.
class Children {
public:
    void Add(pid_t child) {
        const std::lock_guard lock(m_mutex);
        std::erase_if(m_running, [](pid_t each) { return ::waitpid(each, nullptr, WNOHANG) != 0; });
        m_running.push_back(child);
    }

private:
    std::mutex m_mutex;
    std::vector<pid_t> m_running;
};

/// What posix_spawn is told: folder and untouched signals.
class SpawnSettings {
public:
    SpawnSettings() {
        ::posix_spawn_file_actions_init(&m_actions);
        ::posix_spawnattr_init(&m_attributes);
        sigset_t none, all;
        ::sigemptyset(&none);
        ::sigfillset(&all);
        ::posix_spawnattr_setsigmask(&m_attributes, &none);
        ::posix_spawnattr_setsigdefault(&m_attributes, &all);
        ::posix_spawnattr_setflags(&m_attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnSettings() {
        ::posix_spawn_file_actions_destroy(&m_actions);
        ::posix_spawnattr_destroy(&m_attributes);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    int SetFolder(const char* folder) {
        return ::posix_spawn_file_actions_addchdir_np(&m_actions, folder);
    }
    int Spawn(const std::string& program, char* const* arguments, pid_t& child) const {
        return ::posix_spawn(&child, program.c_str(), &m_actions, &m_attributes, arguments,
                             environ);
    }

private:
    posix_spawn_file_actions_t m_actions;
    posix_spawnattr_t m_attributes;
};

int Spawn(const std::string& program, std::vector<std::string> arguments, const char* folder) {
    SpawnSettings settings;
    if (folder != nullptr && *folder != '\0') {
        struct stat info;
        if (::stat(folder, &info) != 0 || !S_ISDIR(info.st_mode))
            return kShellPathNotFound;
        if (const int error = settings.SetFolder(folder))
            return ShellErrorOf(error);
    }
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    pid_t child = 0;
    if (const int error = settings.Spawn(program, pointers.data(), child))
        return ShellErrorOf(error);
    // Never destroyed: a message at the end of the process may still start something.
    static Children* const children = new Children; // NOLINT(bugprone-unhandled-exception-at-new)
    children->Add(child);
    return kShellStarted;
}

/// Opens a document, folder or address with the desktop's own choice.
int OpenWithDesktop(const std::string& file, const char* folder, std::string& program) {
    program = kOpener;
    const std::string opener = FindInPath(kOpener);
    if (opener.empty())
        return kShellNoAssociation;
    return Spawn(opener, {kOpener, DesktopArgument(file)}, folder);
}

} // namespace

std::string DesktopArgument(const std::string& argument) {
    const std::size_t anchor = argument.find('#');
    if (argument[0] == '-')
        return "./" + argument;
    if (argument[0] != '/' || anchor == std::string::npos)
        return argument;
    constexpr std::string_view kHex = "0123456789ABCDEF";
    std::string address = "file://";
    for (const char c : std::string_view(argument).substr(0, anchor)) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte > ' ' && byte < 0x7F && c != '%' && c != '?' && c != '"') {
            address += c;
            continue;
        }
        address += '%';
        address += kHex[byte >> 4];
        address += kHex[byte & 15];
    }
    return address + argument.substr(anchor);
}

int StartProgram(const char* verb, const char* file, const char* parameters, const char* folder,
                 std::string& program) {
    program = file != nullptr ? file : "";
    if (program.empty())
        return kShellFileNotFound;
    if (verb != nullptr && *verb != '\0' && std::string_view(verb) != "open")
        return kShellNoAssociation;
    const std::string name = program;
    if (IsAddress(name))
        return OpenWithDesktop(name, folder, program);

    std::vector<std::string> arguments = SplitParameters(parameters != nullptr ? parameters : "");
    arguments.insert(arguments.begin(), name);
    const bool isBare = name.find('/') == std::string::npos;
    std::string found = name;
    if (isBare)
        found = FindInPath(name);
    else if (!IsExecutable(name))
        found.clear();
    if (found.ends_with(std::string("/") + kOpener))
        std::transform(arguments.begin() + 1, arguments.end(), arguments.begin() + 1,
                       DesktopArgument);
    if (!found.empty())
        return Spawn(found, std::move(arguments), folder);
    struct stat info;
    if (::stat(name.c_str(), &info) != 0)
        return ShellErrorOf(errno);
    return OpenWithDesktop(name, folder, program);
}

} // namespace vnbytstr::detail
