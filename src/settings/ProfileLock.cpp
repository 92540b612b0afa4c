#include "src/settings/ProfileLock.h"

#include "src/os/ScratchFile.h"

#include <cerrno>
#include <sstream>
#include <thread>

namespace vnbytstr::detail {

namespace {

/// Short, so that one process that saves again and again does not keep the others out.
constexpr std::chrono::milliseconds kPause{1};

/// All of a small file that says something about the system.
std::string ReadWhole(const std::string& name) {
    System& system = System::Current();
    std::string text;
    FileHandle handle = kNoFile;
    if (system.OpenFile(name.c_str(), kOpenRead, handle) != 0)
        return text;
    char piece[4096];
    std::size_t done = 0;
    while (system.ReadFile(handle, piece, sizeof piece, done) == 0 && done > 0)
        text.append(piece, done);
    system.CloseFile(handle);
    return text;
}

/// The number of the process that has the file locked, as the kernel's list of locks tells; empty
/// when it does not. Lines such as "3: FLOCK  ADVISORY  WRITE 1234 08:01:5678 0 EOF".
std::string FindHolder(const FileIdentity& identity) {
    std::istringstream lines(ReadWhole("/proc/locks"));
    const std::string file = ":" + std::to_string(identity.file);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string number, kind, mode, access, process, place;
        if (words >> number >> kind >> mode >> access >> process >> place && kind == "FLOCK" &&
            place.ends_with(file))
            return process;
    }
    return {};
}

} // namespace

ProfileLock::~ProfileLock() {
    if (m_handle == kNoFile)
        return;
    // A child of this process may share the open file, so closing alone may not unlock it.
    System::Current().UnlockFile(m_handle);
    System::Current().CloseFile(m_handle);
}

int ProfileLock::Open(const std::string& path, bool hasProfile) {
    System& system = System::Current();
    const std::string beside = path + ".lock";
    m_isBeside = true;
    int error = system.OpenFile(beside.c_str(), kOpenRead | kOpenWrite | kOpenCreate | kOpenPrivate,
                                m_handle);
    if (error != EACCES && error != EPERM && error != EROFS)
        return error;
    // Reading is enough for a lock.
    error = system.OpenFile(beside.c_str(), kOpenRead | kOpenPrivate, m_handle);
    if (error == ENOENT && hasProfile) {
        m_isBeside = false;
        error = system.OpenFile(path.c_str(), kOpenRead | kOpenPrivate, m_handle);
    }
    return error;
}

/// A lock file that root or another user of a shared profile made must not keep the rest out.
void ProfileLock::Share(const FileStatus& profile) const {
    System& system = System::Current();
    FileStatus own;
    if (!m_isBeside || system.GetFileStatus(m_handle, own) != 0 ||
        (!own.isOwn && !system.IsPrivileged()))
        return;
    const DWORD owner = system.IsPrivileged() ? profile.owner : own.owner;
    const bool isGroups = (own.owner == owner && own.group == profile.group) ||
                          system.SetFileOwner(m_handle, owner, profile.group) == 0;
    const DWORD mode = 0600 | (profile.mode & (isGroups ? 0066u : 0006u));
    if (own.mode != mode)
        system.SetFileMode(m_handle, mode);
}

int ProfileLock::Take(const std::string& path, const FileStatus& profile, Deadline deadline) {
    if (const int error = Open(path, profile.identity.IsKnown()))
        return error;
    int error = System::Current().LockFile(m_handle, true, false);
    while (error == EWOULDBLOCK && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(kPause);
        error = System::Current().LockFile(m_handle, true, false);
    }
    if (LocksAreMissing(error))
        error = 0;
    if (error == 0)
        Share(profile);
    return error;
}

std::string ProfileLock::Holder() const {
    FileStatus status;
    std::string process;
    if (System::Current().GetFileStatus(m_handle, status) == 0)
        process = FindHolder(status.identity);
    if (process.empty() || process == "0" || process == "-1")
        return "a process that cannot be seen from here";
    std::string name = ReadWhole("/proc/" + process + "/comm");
    if (name.ends_with('\n'))
        name.pop_back();
    return "process " + process + (name.empty() ? "" : " (" + name + ")");
}

} // namespace vnbytstr::detail
