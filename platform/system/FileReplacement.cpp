#include "platform/system/FileReplacement.h"

#include <atomic>
#include <cerrno>

namespace vnbytstr {

namespace {
std::atomic<unsigned> g_counter{0};
} // namespace

std::string FolderOf(const std::string& name) {
    const std::size_t slash = name.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : name.substr(0, slash);
}

int FileReplacement::Open(const char* name, bool directlyToo) {
    Abandon();
    System& system = System::Current();
    m_target = name;
    FileStatus status;
    const int missing = system.GetFileStatus(name, status);
    if (missing != 0 && missing != ENOENT)
        return missing;
    m_isNew = missing == ENOENT;
    if (!m_isNew && status.isLink && system.ResolveName(name, m_target) != 0)
        return ENOENT; // points nowhere
    const bool isPlain = m_isNew || status.isRegular;
    if (isPlain) {
        // A file that may not be written is refused as it would be without the detour.
        if (!m_isNew && status.isReadOnly)
            return EACCES;
        const int error = OpenBeside();
        if (!directlyToo ||
            (error != EACCES && error != EPERM && error != EROFS && error != ENAMETOOLONG))
            return error;
    } else if (!directlyToo) {
        return EINVAL;
    }
    m_beside.clear();
    const int error = system.OpenFile(
        m_target.c_str(), kOpenRead | kOpenWrite | (isPlain ? kOpenCreate | kOpenTruncate : 0),
        m_handle);
    // A pipe or terminal need not be readable.
    if (error != 0 && !isPlain)
        return system.OpenFile(m_target.c_str(), kOpenWrite, m_handle);
    return error;
}

int FileReplacement::OpenBeside() {
    System& system = System::Current();
    const std::string prefix =
        FolderOf(m_target) + "/.~new-" + std::to_string(system.GetProcessId()) + "-";
    for (;;) {
        m_beside = prefix + std::to_string(g_counter.fetch_add(1)) + ".tmp";
        const int error = system.OpenFile(
            m_beside.c_str(), kOpenRead | kOpenWrite | kOpenCreate | kOpenExclusive, m_handle);
        if (error == EEXIST)
            continue;
        if (error != 0)
            m_beside.clear();
        return error;
    }
}

int FileReplacement::Commit() {
    System& system = System::Current();
    int error = system.SyncFile(m_handle);
    if (m_beside.empty() && (error == EINVAL || error == EROFS))
        error = 0; // a pipe has nothing to sync
    if (error == 0 && !m_beside.empty() && !m_isNew)
        error = system.CopyPermissions(m_target.c_str(), m_handle);
    if (error == 0) {
        const FileHandle handle = m_handle;
        m_handle = kNoFile;
        error = system.CloseFile(handle);
    }
    if (error == 0 && !m_beside.empty())
        error = system.RenameFile(m_beside.c_str(), m_target.c_str(), true);
    if (error != 0) {
        Abandon();
        return error;
    }
    if (!m_beside.empty())
        system.SyncFolder(FolderOf(m_target).c_str()); // the file is there; nothing to undo
    m_beside.clear();
    m_isNew = false;
    return 0;
}

void FileReplacement::Abandon() noexcept {
    System& system = System::Current();
    const bool wasOpen = m_handle != kNoFile;
    if (wasOpen)
        system.CloseFile(m_handle);
    m_handle = kNoFile;
    if (!m_beside.empty())
        system.RemoveFile(m_beside.c_str());
    else if (wasOpen && m_isNew)
        system.RemoveFile(m_target.c_str());
    m_beside.clear();
    m_isNew = false;
}

} // namespace vnbytstr
