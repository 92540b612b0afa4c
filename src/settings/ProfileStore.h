// The profile file on the disk, shared with other processes, and its copy in memory.
#pragma once

#include "src/os/System.h"
#include "src/settings/ProfileFile.h"
#include "src/settings/ProfileLock.h"
#include "src/settings/ProfileNotices.h"
#include "vnbytstr/Profile.h"

#include <functional>
#include <mutex>
#include <string>
#include <utility>

namespace vnbytstr::detail {

/// One per process. Every member may be called from every thread.
class ProfileStore {
public:
    static ProfileStore& Get();

    /// Calls `read` with the current file; the file is checked for changes at most once per tick.
    template <typename Read>
    auto Look(Read read) {
        ProfileNotices notices;
        const std::lock_guard lock(m_mutex);
        Refresh(notices);
        return read(std::as_const(m_file));
    }

    /// Reads the file again, lets `change` alter it (it returns whether it did) and writes it back,
    /// while no other process does the same. False when that fails; the file is then unchanged.
    bool Change(const std::function<bool(ProfileFile&)>& change);

    /// As VNGetProfileStatus, the text in UTF-8.
    EProfileStatus GetStatus(std::string& text);

private:
    /// What tells one state of the file from another.
    struct Stamp {
        std::string path; ///< empty: there is no place for a profile
        int error = 0;    ///< why its status cannot be read; ENOENT: there is none
        FileIdentity identity;
        std::uint64_t length = 0;
        std::int64_t seconds = 0;
        std::int32_t nanoseconds = 0;
        UINT codePage = 0;
        bool operator==(const Stamp&) const = default;
    };
    struct Loaded {
        int error = 0;
        std::string text;
    };

    ProfileStore();
    void Refresh(ProfileNotices& notices);
    static std::string Path();
    static Stamp StampOf(const std::string& path);
    static Loaded Load(const std::string& path);
    static int KeepAside(const std::string& path, const std::string& text, const FileStatus& owner,
                         std::string& name);
    static int WriteNew(const std::string& name, const std::string& text, const FileStatus& owner);
    static int Replace(const std::string& path, const std::string& text, const FileStatus& owner);
    static int Rewrite(const std::string& path, const FileStatus& profile,
                       const std::function<bool(ProfileFile&)>& change, ProfileNotices& notices);
    static int Save(std::string& path, ProfileLock::Deadline deadline,
                    const std::function<bool(ProfileFile&)>& change, ProfileNotices& notices,
                    std::string& reason);

    std::timed_mutex m_writing; // held over a whole change
    std::mutex m_mutex;         // guards what follows
    ProfileFile m_file;
    Stamp m_stamp;
    bool m_isLoaded = false;   ///< m_file is the content of m_stamp.path, if an older one
    bool m_isOutOfDate = true; ///< it is to be read again whatever its stamp says
    int m_readError = 0;       ///< why the last look at it failed
    std::string m_readTrouble, m_saveTrouble; ///< what was said about that, and about the last save
    std::string m_savePath;                   ///< of the last save
    DWORD m_tick = 0;
    unsigned m_installs = 0;
};

} // namespace vnbytstr::detail
