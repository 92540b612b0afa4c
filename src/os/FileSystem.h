// The part of the system seam that is about files: open files, names and folders.
//
// Functions that return an int return 0 or an error number. Error numbers are errno values on every
// system; those that callers tell apart are ENOENT, EEXIST, EACCES, EPERM, EROFS, EISDIR, ENOTDIR,
// ENAMETOOLONG, ELOOP, EXDEV, ENOSPC, EDQUOT, EFBIG, EMFILE, ENFILE, EWOULDBLOCK, EINVAL, EBADF,
// ENOLCK, ENOSYS and EOPNOTSUPP. After an error the output arguments are undefined, unless a
// function says otherwise. None of these functions throws, but those that fill a string or a vector
// throw std::bad_alloc when memory runs out.
//
// Names are byte strings, with a NUL at their end; Paths.h says which encoding they have. A `name`
// that leads to a folder gives EISDIR where a file is meant.
//
// Threads: different handles may be used at the same time; calls with one handle come one at a
// time.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/FileHandle.h"
#include "vnbytstr/framework/Types.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vnbytstr {

/// How OpenFile opens. Combine with |.
enum OpenFlags : unsigned {
    kOpenRead = 1u << 0,
    kOpenWrite = 1u << 1,
    /// Make the file when it is missing.
    kOpenCreate = 1u << 2,
    /// Cut an existing file to length 0.
    kOpenTruncate = 1u << 3,
    /// With kOpenCreate: fail with EEXIST when the name is taken, be it by a link that points
    /// nowhere.
    kOpenExclusive = 1u << 4,
    /// A new file is for this user alone and has the scratch mark from its first moment (see
    /// FileStatus::isScratch). Never opens through a symbolic link.
    kOpenScratch = 1u << 5,
    /// Child processes inherit the handle; by default they do not.
    kOpenInherit = 1u << 6,
    /// A new file is for this user alone. Never opens through a symbolic link.
    kOpenPrivate = 1u << 7,
};

enum class SeekOrigin { Begin, Current, End };

struct FileStatus {
    bool isFolder = false;
    bool isRegular = false;
    /// The name itself is a symbolic link. The other fields describe its target, when there is one.
    bool isLink = false;
    bool isReadOnly = false;
    /// The file has the scratch mark: it was made with kOpenScratch and not released since. The
    /// mark says that the sweep of dead processes' files may remove it. How a system keeps the mark
    /// is its own matter; it must survive the process, and must not be found on other files by
    /// chance.
    bool isScratch = false;
    bool isOwn = false;               ///< belongs to the user this process runs as
    std::uint64_t length = 0;         ///< bytes
    std::int64_t modifiedSeconds = 0; ///< since 1970-01-01 UTC
    std::int32_t modifiedNanoseconds = 0;
    FileIdentity identity;   ///< unknown for a link that points nowhere
    std::uint64_t names = 0; ///< how many names (hard links) the file has
    /// Permission bits, numbered as on POSIX systems, at most 07777. To be passed on to
    /// SetFileMode; on a system without such bits they are made up from isReadOnly.
    DWORD mode = 0;
    DWORD owner = 0, group = 0; ///< the system's numbers of them, for SetFileOwner
};

/// Removing and renaming open files
///
/// A file may be removed, renamed, or replaced by a rename while it is open, by this process or
/// another. The call succeeds; the name is free, or leads to the other file, at once. Open handles
/// go on with the file they were opened on: its bytes, its length, its lock and its identity stay,
/// GetFileStatus(handle) has names == 0 when no name is left, and the space is freed when the last
/// handle is closed. Opening a file must never keep others from doing so. A system that cannot do
/// this must come as close as it can in RemoveFile and RenameFile (see WindowsSystem.cpp), and must
/// not fail.
class VNBYTSTR_API FileSystem {
public:
    virtual ~FileSystem() = default;

    // --- open files ------------------------------------------------------------------------------
    // REQUIRES, for every function with a `handle`: it came from OpenFile, ReopenFile or
    // OpenOwnStream and has not been closed. Otherwise EBADF, or another file is meant.

    /// Opens a file. REQUIRES: kOpenRead or kOpenWrite in `flags`. ENOENT when the file or a folder
    /// of its name is missing, ELOOP for a link with kOpenScratch or kOpenPrivate, EACCES when the
    /// permissions refuse it, EISDIR for a folder.
    virtual int OpenFile(const char* name, unsigned flags, FileHandle& handle) = 0;
    /// Closes the handle, also when it returns an error: do not try again.
    virtual int CloseFile(FileHandle handle) = 0;
    /// Reads up to `size` bytes at the position; `done` is what arrived, 0 at the end of the file.
    /// May deliver less than asked for.
    virtual int ReadFile(FileHandle handle, void* buffer, std::size_t size, std::size_t& done) = 0;
    /// Writes up to `size` bytes at the position; `done` is what was taken. May take less. ENOSPC
    /// or EDQUOT when the disk or the quota is full, EFBIG when the file may not grow so long.
    virtual int WriteFile(FileHandle handle, const void* buffer, std::size_t size,
                          std::size_t& done) = 0;
    /// As WriteFile, from several buffers one after the other. REQUIRES: at most 64 buffers.
    virtual int WriteFileGather(FileHandle handle, std::span<const std::span<const BYTE>> buffers,
                                std::size_t& done) = 0;
    /// Moves the position; `position` is where it landed, counted from the beginning. EINVAL before
    /// the beginning; a position past the end is allowed. ESPIPE for a pipe.
    virtual int SeekFile(FileHandle handle, std::int64_t offset, SeekOrigin origin,
                         std::uint64_t& position) = 0;
    virtual int GetFileLength(FileHandle handle, std::uint64_t& length) = 0;
    /// Cuts the file, or extends it with zeros. The position stays.
    virtual int SetFileLength(FileHandle handle, std::uint64_t length) = 0;
    /// Returns when the file's content and its permissions are on the disk. After an error it is
    /// unknown what the disk has, and another call may succeed without writing it.
    virtual int SyncFile(FileHandle handle) = 0;
    /// Takes the file's advisory lock for this process: exclusive, or shared with other shared
    /// ones. `wait` false gives EWOULDBLOCK at once when another one holds it. Reading and writing
    /// do not look at locks. Closing the handle, or the end of the process, releases the lock.
    virtual int LockFile(FileHandle handle, bool exclusive, bool wait) = 0;
    virtual int UnlockFile(FileHandle handle) = 0;
    /// Which process holds the lock of a file, such as "process 1234 (vnquery)"; empty when the
    /// system does not tell. For messages.
    virtual std::string GetLockHolder(FileHandle handle) = 0;
    /// Status of an open file (isReadOnly is a matter of a name, and false).
    virtual int GetFileStatus(FileHandle handle, FileStatus& status) = 0;
    /// Opens an open file once more, with another position; it need not have a name any more.
    virtual int ReopenFile(FileHandle handle, unsigned flags, FileHandle& reopened) = 0;

    // --- names -----------------------------------------------------------------------------------
    /// Status of a name; ENOENT when there is no such name. A link that points nowhere exists.
    virtual int GetFileStatus(const char* name, FileStatus& status) = 0;
    /// Removes a name, not what a link leads to. ENOENT when there is no such name. An open file is
    /// removed too, see above.
    virtual int RemoveFile(const char* name) = 0;
    /// Gives a file another name, in one step: at no moment is there neither. A file that has that
    /// name already is replaced when `replace` is set, even when it is open; else EEXIST, and
    /// nothing has changed. EXDEV when the two lie on different file systems.
    virtual int RenameFile(const char* from, const char* to, bool replace) = 0;
    /// The full name with every symbolic link in it followed. ENOENT when the file does not exist.
    /// A link in a folder where everyone may put one (a sticky, world-writable folder) is refused
    /// with EACCES unless it is the folder owner's or this user's. A link to one of a process's
    /// open files (/dev/stdout) that comes last is not followed, since it need not lead to a name.
    virtual int ResolveName(const char* name, std::string& resolved) = 0;
    /// Opens for writing what `name` leads to when that is one of this process's own open files
    /// (such as /dev/stdout): a second handle that shares its position, so that what others wrote
    /// there stays. ENOENT when it is not.
    virtual int OpenOwnStream(const char* name, FileHandle& handle) = 0;

    // --- permissions -----------------------------------------------------------------------------
    /// Takes the scratch mark off: the file now has the permissions of any new file. Does nothing
    /// to a file without the mark.
    virtual int ReleaseScratch(FileHandle handle) = 0;
    /// The permission bits of a file that this process makes without saying more.
    virtual DWORD GetNewFileMode() = 0;
    /// Sets an open file's permission bits (at most 07777).
    virtual int SetFileMode(FileHandle handle, DWORD mode) = 0;
    /// Gives an open file another owner and group; EPERM where this process may not.
    virtual int SetFileOwner(FileHandle handle, DWORD owner, DWORD group) = 0;
    /// Gives an open file the access control lists and extended attributes of the file `from`. What
    /// only the system itself may set is left out.
    virtual int CopyFileAttributes(const char* from, FileHandle handle) = 0;

    // --- folders ---------------------------------------------------------------------------------
    /// Returns when a rename, creation or removal in `folder` is on the disk.
    virtual int SyncFolder(const char* folder) = 0;
    /// Makes a folder for this user alone, and the missing ones above it; 0 when it is there
    /// already.
    virtual int MakeFolder(const char* folder) = 0;
    /// The names in a folder, without "." and "..", in no order.
    virtual int ListFolder(const char* folder, std::vector<std::string>& names) = 0;
    /// Folder for temporary files with its trailing separator: TMPDIR, else /var/tmp/ (large files
    /// do not belong in a /tmp that may be memory); on Windows what TMP or TEMP says.
    virtual std::string GetTemporaryFolder() = 0;

    /// What an error number means, for messages, in the language of the process's C locale.
    virtual std::string GetErrorText(int error) = 0;
};

} // namespace vnbytstr
