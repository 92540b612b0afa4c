// NativeSystem: who has a file locked, from the kernel's list of locks.
#include "src/os/NativeSystem.h"

#include <fstream>
#include <sstream>

namespace vnbytstr {

namespace {

/// The number of the process that has the file locked; empty when the list does not tell. Lines
/// such as "3: FLOCK  ADVISORY  WRITE 1234 08:01:5678 0 EOF".
std::string FindHolder(const FileIdentity& identity) {
    std::ifstream lines("/proc/locks");
    const std::string file = ":" + std::to_string(identity.file);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string number, kind, mode, access, process, place;
        words >> number >> kind >> mode >> access >> process >> place;
        if (kind == "FLOCK" && place.ends_with(file))
            return process;
    }
    return {};
}

} // namespace

std::string NativeSystem::GetLockHolder(FileHandle handle) {
    FileStatus status;
    if (GetFileStatus(handle, status) != 0)
        return {};
    const std::string process = FindHolder(status.identity);
    if (process.empty() || process == "0" || process == "-1") // of another process namespace
        return {};
    std::string name;
    std::ifstream command("/proc/" + process + "/comm");
    std::getline(command, name);
    std::string holder = "process " + process;
    if (!name.empty())
        holder += " (" + name + ")";
    return holder;
}

} // namespace vnbytstr
