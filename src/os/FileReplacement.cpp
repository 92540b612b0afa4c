// Invariants:
//  1. m_handle is open from Open to Commit or Abandon, and is the caller's while m_adopted is set.
//  2. m_scratch names the file that m_handle has open, except when the way is Direct: then it is
//     empty.
//  3. The target is untouched until Commit, unless the way is Direct.
#include "src/os/FileReplacement.h"

#include "src/os/InPlaceWrite.h"
#include "src/os/LeftoverSweep.h"
#include "src/os/Paths.h"
#include "src/os/ScratchFile.h"

#include <cerrno>
#include <utility>

namespace vnbytstr {

namespace {

/// Whether a folder refuses new names while its files may be written all the same.
bool TakesNoNames(int error) {
    return error == EACCES || error == EPERM || error == EROFS || error == ENAMETOOLONG;
}

/// Some file systems have no permissions; the file needs none there.
bool IsModeRefusal(int error) {
    return error == EPERM || error == ENOTSUP || error == ENOSYS || error == EINVAL;
}

/// The full name, free of links, of what `name` leads to or would lead to.
int ResolveTarget(const char* name, bool exists, std::string& target) {
    System& system = System::Current();
    if (exists)
        return system.ResolveName(name, target);
    const std::string_view base = FileNameOf(name);
    if (base.empty() || base == "." || base == "..")
        return base.empty() ? EISDIR : ENOENT;
    if (const int error = system.ResolveName(FolderOf(name).c_str(), target))
        return error;
    target = AsFolderPrefix(target);
    target += base;
    return 0;
}

} // namespace

int FileReplacement::Open(const char* name, bool plainOnly) {
    Abandon();
    if (!name)
        return EINVAL;
    System& system = System::Current();
    m_process = system.GetProcessId();
    m_committed = {};
    FileStatus named;
    const int missing = system.GetFileStatus(name, named);
    if (missing != 0 && missing != ENOENT)
        return missing;
    if (missing == 0 && named.isLink && !plainOnly) {
        if (const int error = system.OpenOwnStream(name, m_handle); error != ENOENT) {
            m_way = Way::Direct;
            return error;
        }
    }
    if (const int error = ResolveTarget(name, missing == 0, m_target))
        return error;
    m_old = {};
    const int absent = system.GetFileStatus(m_target.c_str(), m_old);
    if (absent != 0 && (absent != ENOENT || missing == 0))
        return absent;
    if (absent == 0 && m_old.isFolder)
        return EISDIR;
    if (absent == 0 && (m_old.isLink || !m_old.isRegular))
        return plainOnly ? EINVAL : OpenDirectly(name);
    // A file that may not be written is refused, although replacing it would not need that.
    if (absent == 0 && m_old.isReadOnly)
        return EACCES;
    return OpenGathering();
}

int FileReplacement::OpenDirectly(const char* name) {
    m_way = Way::Direct;
    return System::Current().OpenFile(name, kOpenWrite, m_handle);
}

int FileReplacement::OpenGathering() {
    m_folder = FolderOf(m_target);
    SweepLeftoversOnce(m_folder);
    m_way = Way::Beside;
    int error = MakeScratch(ScratchUse::New, m_folder, m_scratch, m_handle);
    if (TakesNoNames(error) && (m_old.identity.IsKnown() || error == ENAMETOOLONG)) {
        const std::string folder = System::Current().GetTemporaryFolder();
        SweepLeftoversOnce(folder);
        m_way = Way::InPlace;
        if (MakeScratch(ScratchUse::New, folder, m_scratch, m_handle) == 0)
            error = 0; // otherwise the target's folder is the obstacle
    }
    if (error != 0)
        Reset();
    return error;
}

int FileReplacement::Adopt(FileHandle handle, const char* name) {
    System& system = System::Current();
    FileStatus status;
    if (m_way != Way::Beside)
        return EXDEV;
    if (const int error = system.GetFileStatus(handle, status))
        return error;
    if (status.names != 1 || !LeadsTo(name, status.identity) ||
        IdentityOf(m_handle).device != status.identity.device)
        return EXDEV;
    std::string adopted = name;
    if (const int error = system.RenameFile(name, m_scratch.c_str(), true))
        return error;
    m_adopted = std::move(adopted);
    m_before = status;
    system.CloseFile(std::exchange(m_handle, handle)); // nothing was written to it
    return 0;
}

// --- putting it in place -------------------------------------------------------------------------

int FileReplacement::Commit(FileHandle* kept) {
    if (kept)
        *kept = kNoFile;
    int error;
    switch (m_way) {
    case Way::Beside:
        error = CommitBeside(kept);
        break;
    case Way::InPlace:
        error = CommitInPlace();
        break;
    default:
        error = CommitDirectly();
        break;
    }
    Abandon(); // what is in place is not touched by it
    return error;
}

/// Gives the scratch file what the target has. EXDEV when it cannot have all of it. From private to
/// wide: at no moment may the file be read by more users than the target.
int FileReplacement::GiveAttributes() {
    System& system = System::Current();
    const bool isNew = !m_old.identity.IsKnown();
    if (!isNew) {
        FileStatus own;
        if (const int error = system.GetFileStatus(m_handle, own))
            return error;
        if (m_old.names > 1)
            return EXDEV;
        if ((own.owner != m_old.owner || own.group != m_old.group) &&
            system.SetFileOwner(m_handle, m_old.owner, m_old.group) != 0)
            return EXDEV;
        const int error = system.CopyFileAttributes(m_target.c_str(), m_handle);
        if (error != 0 && error != ENOENT) // it may have been removed since
            return EXDEV;
    }
    const DWORD newMode = m_isPrivate ? 0600 : system.GetNewFileMode();
    // As any write does, this clears the bits that give a program its owner's or group's
    // rights.
    const int error = system.SetFileMode(m_handle, isNew ? newMode : m_old.mode & 01777);
    return IsModeRefusal(error) ? 0 : error;
}

int FileReplacement::CommitBeside(FileHandle* kept) {
    System& system = System::Current();
    if (const int error = GiveAttributes())
        return error == EXDEV ? CommitInPlace() : error;
    if (const int error = system.SyncFile(m_handle))
        return error;
    m_committed = IdentityOf(m_handle);
    // The handle stays open until then: its lock keeps the sweep away.
    if (const int error = system.RenameFile(m_scratch.c_str(), m_target.c_str(), true))
        return error;
    if (kept)
        *kept = m_handle;
    else if (m_adopted.empty())
        system.CloseFile(m_handle); // all is on the disk, so an error does not matter
    Reset();
    system.SyncFolder(m_folder.c_str()); // the file is there; nothing to undo
    return 0;
}

int FileReplacement::CommitInPlace() {
    std::uint64_t length = 0;
    if (const int error = System::Current().GetFileLength(m_handle, length))
        return error;
    if (const int error = WriteInPlace(m_handle, length, m_target, m_old.identity))
        return error;
    FileStatus status;
    if (System::Current().GetFileStatus(m_target.c_str(), status) == 0)
        m_committed = status.identity;
    return 0;
}

int FileReplacement::CommitDirectly() {
    int error = System::Current().SyncFile(m_handle);
    if (error == EINVAL || error == EROFS || error == ENOTSUP)
        error = 0; // a pipe has nothing to sync
    m_committed = IdentityOf(m_handle);
    const int closed = System::Current().CloseFile(std::exchange(m_handle, kNoFile));
    return error != 0 ? error : closed;
}

void FileReplacement::Abandon() noexcept {
    System& system = System::Current();
    const bool isOurs = !m_scratch.empty() && system.GetProcessId() == m_process;
    if (isOurs && !m_adopted.empty()) {
        system.SetFileMode(m_handle, m_before.mode & 0700); // nobody else's before it is ours again
        system.SetFileOwner(m_handle, m_before.owner, m_before.group);
        system.SetFileMode(m_handle, m_before.mode);
        // A file that cannot get its name back exists only in the caller's open handle.
        if (system.RenameFile(m_scratch.c_str(), m_adopted.c_str(), false) != 0)
            system.RemoveFile(m_scratch.c_str());
    } else if (isOurs)
        system.RemoveFile(m_scratch.c_str()); // while it is locked
    if (m_handle != kNoFile && m_adopted.empty())
        system.CloseFile(m_handle);
    Reset();
}

void FileReplacement::Reset() noexcept {
    m_handle = kNoFile;
    m_scratch.clear();
    m_adopted.clear();
}

} // namespace vnbytstr
