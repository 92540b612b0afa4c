#include "src/settings/ProfileLock.h"

#include "src/os/ScratchFile.h"

#include <cerrno>
#include <thread>

namespace vnbytstr::detail {

namespace {

/// Short, so that one process that saves again and again does not keep the others out.
constexpr std::chrono::milliseconds kPause{1};

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
    const std::string holder = System::Current().GetLockHolder(m_handle);
    return holder.empty() ? "a process that cannot be seen from here" : holder;
}

} // namespace vnbytstr::detail
