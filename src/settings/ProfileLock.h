// The lock that one writer of a profile file has at a time.
#pragma once

#include "src/os/System.h"

#include <chrono>
#include <string>

namespace vnbytstr::detail {

/// An advisory lock on a file beside the profile ("profile.ini.lock"), which the system takes away
/// from a process that dies. Where the folder takes no new file the profile is overwritten in
/// place, so that it can be locked itself.
class ProfileLock {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    ProfileLock() = default;
    ~ProfileLock();
    ProfileLock(const ProfileLock&) = delete;
    ProfileLock& operator=(const ProfileLock&) = delete;

    /// Waits for the lock of the profile `path` until `deadline`. 0, EWOULDBLOCK when another
    /// process still has it then, or another error number. A file system without locks gives 0.
    /// `profile` is the profile's status (its identity unknown when there is none yet): who may
    /// write the profile may lock it, too.
    int Take(const std::string& path, const FileStatus& profile, Deadline deadline);
    /// After EWOULDBLOCK: who has the lock, such as "process 1234 (vnquery)".
    std::string Holder() const;

private:
    int Open(const std::string& path, bool hasProfile);
    void Share(const FileStatus& profile) const;

    FileHandle m_handle = kNoFile;
    bool m_isBeside = false; ///< it is the file beside, not the profile itself
};

} // namespace vnbytstr::detail
