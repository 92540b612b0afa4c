// The seam to the operating system. Every call that leaves this library for the system goes through
// the one System object that is current; PosixSystem is the real one, and a test installs its own
// to set the clock or the memory load, or to make the n-th call fail.
//
// File operations return 0 or a system error number (an errno value); they never throw. Names are
// byte strings in the file system's own encoding.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/FileHandle.h"
#include "vnbytstr/framework/Types.h"

#include <cstddef>
#include <span>
#include <string>
#include <vector>

namespace vnbytstr {

/// How OpenFile opens. Combine with |.
enum OpenFlags : unsigned {
    kOpenRead = 1u << 0,
    kOpenWrite = 1u << 1,
    kOpenCreate = 1u << 2,    ///< make the file when it is missing
    kOpenTruncate = 1u << 3,  ///< cut an existing file to length 0
    kOpenExclusive = 1u << 4, ///< with kOpenCreate: fail with EEXIST when the name is taken,
                              ///< be it by a link that points nowhere
    kOpenScratch = 1u << 5,   ///< for this user alone (mode 0600), never through a symbolic link,
                              ///< and marked as one the sweep of dead processes' files may remove
    kOpenInherit = 1u << 6,   ///< child processes inherit the handle (by default they do not)
    kOpenPrivate = 1u << 7,   ///< a new file is for this user alone (mode 0600); never through a
                              ///< symbolic link
};

enum class SeekOrigin { Begin, Current, End };

struct FileStatus {
    bool isFolder = false;
    bool isRegular = false;
    bool isLink = false; ///< the name itself is a symbolic link (the other fields describe its
                         ///< target when there is one)
    bool isReadOnly = false;
    bool isScratch = false;           ///< made with kOpenScratch and not released since
    bool isOwn = false;               ///< belongs to the user this process runs as
    std::uint64_t length = 0;         ///< bytes
    std::int64_t modifiedSeconds = 0; ///< since 1970-01-01 UTC
    std::int32_t modifiedNanoseconds = 0;
    FileIdentity identity;   ///< unknown for a link that points nowhere
    std::uint64_t names = 0; ///< how many names (hard links) the file has
    DWORD mode = 0; ///< permission bits, with set-user, set-group and sticky (at most 07777)
    DWORD owner = 0, group = 0; ///< the system's numbers of them
};

/// What the system calls itself.
struct SystemVersion {
    enum Platform : DWORD { Win32s = 0, Windows9x = 1, NtFamily = 2 };
    DWORD platform = NtFamily;
    DWORD major = 0;
    DWORD minor = 0;
};

class VNBYTSTR_API System {
public:
    virtual ~System() = default;

    /// The system in use, the POSIX one unless another is installed. Safe from every thread.
    static System& Current() noexcept;
    /// Makes `system` current (null: the POSIX one again) and returns the one before, null for the
    /// POSIX one. The object stays the caller's and must outlive its use.
    static System* Install(System* system) noexcept;
    /// How often Install ran: what was learnt from the system before that may be out of date.
    static unsigned InstallCount() noexcept;

    // --- files -----------------------------------------------------------------------------------
    virtual int OpenFile(const char* name, unsigned flags, FileHandle& handle) = 0;
    virtual int CloseFile(FileHandle handle) = 0;
    /// Reads up to `size` bytes at the position; `done` is what arrived, 0 at the end of the file.
    /// May deliver less than asked for.
    virtual int ReadFile(FileHandle handle, void* buffer, std::size_t size, std::size_t& done) = 0;
    /// Writes up to `size` bytes at the position; `done` is what was taken. May take less.
    virtual int WriteFile(FileHandle handle, const void* buffer, std::size_t size,
                          std::size_t& done) = 0;
    /// As WriteFile, from several buffers one after the other (at most 64).
    virtual int WriteFileGather(FileHandle handle, std::span<const std::span<const BYTE>> buffers,
                                std::size_t& done) = 0;
    /// Moves the position; `position` is where it landed, counted from the beginning.
    virtual int SeekFile(FileHandle handle, std::int64_t offset, SeekOrigin origin,
                         std::uint64_t& position) = 0;
    virtual int GetFileLength(FileHandle handle, std::uint64_t& length) = 0;
    virtual int SetFileLength(FileHandle handle, std::uint64_t length) = 0;
    /// Returns when the file's content and its permissions are on the disk.
    virtual int SyncFile(FileHandle handle) = 0;
    /// Takes the file's advisory lock for this process; `wait` false gives EWOULDBLOCK at once when
    /// another one holds it. Closing the handle, or the end of the process, releases it.
    virtual int LockFile(FileHandle handle, bool exclusive, bool wait) = 0;
    virtual int UnlockFile(FileHandle handle) = 0;
    /// Status of an open file (isReadOnly is a matter of a name, and false).
    virtual int GetFileStatus(FileHandle handle, FileStatus& status) = 0;
    /// Opens an open file once more, with a position of its own; it need not have a name any more.
    virtual int ReopenFile(FileHandle handle, unsigned flags, FileHandle& reopened) = 0;

    /// Status of a name; ENOENT when there is none. A link that points nowhere exists.
    virtual int GetFileStatus(const char* name, FileStatus& status) = 0;
    virtual int RemoveFile(const char* name) = 0;
    /// Gives a file another name, in one step; a file that has that name already is replaced when
    /// `replace` is set, else EEXIST. EXDEV when the two lie on different file systems.
    virtual int RenameFile(const char* from, const char* to, bool replace) = 0;
    /// Takes the scratch mark of kOpenScratch off: the file now has the permissions of any new
    /// file. Does nothing to a file without the mark.
    virtual int ReleaseScratch(FileHandle handle) = 0;
    /// The permission bits of a file that this process makes without saying more (0666 less the
    /// process's mask).
    virtual DWORD GetNewFileMode() = 0;
    /// Sets an open file's permission bits (at most 07777).
    virtual int SetFileMode(FileHandle handle, DWORD mode) = 0;
    /// Gives an open file another owner and group; EPERM where that is not this process's to do.
    virtual int SetFileOwner(FileHandle handle, DWORD owner, DWORD group) = 0;
    /// Gives an open file the access control lists and extended attributes of the file `from`. What
    /// only the system itself may set is left out.
    virtual int CopyFileAttributes(const char* from, FileHandle handle) = 0;
    /// The full name with every symbolic link in it followed; the file must exist. A link in a
    /// folder where everyone may put one (a sticky, world-writable folder) is refused with EACCES
    /// unless it is the folder owner's or one's own. A link to one of a process's open files
    /// (/dev/stdout) that comes last is not followed, since it need not lead to a name.
    virtual int ResolveName(const char* name, std::string& resolved) = 0;
    /// Opens for writing what `name` leads to when that is one of this process's own open files
    /// (/dev/stdout and its kin): a second handle that shares its position, so that what others
    /// wrote there stays. ENOENT when it is not.
    virtual int OpenOwnStream(const char* name, FileHandle& handle) = 0;
    /// Returns when a rename, creation or removal in `folder` is on the disk.
    virtual int SyncFolder(const char* folder) = 0;
    /// Makes a folder for this user alone, and the missing ones above it; 0 when it is there
    /// already.
    virtual int MakeFolder(const char* folder) = 0;
    /// The names in a folder, without "." and "..", in no order.
    virtual int ListFolder(const char* folder, std::vector<std::string>& names) = 0;

    // --- process and machine ---------------------------------------------------------------------
    /// Folder for temporary files with its trailing slash: TMPDIR, else /var/tmp/ (large files do
    /// not belong in a /tmp that may be memory).
    virtual std::string GetTemporaryFolder() = 0;
    virtual DWORD GetProcessId() = 0;
    /// Whether this process may act on every user's files.
    virtual bool IsPrivileged() = 0;
    /// False only when it is certain that no process of that number runs.
    virtual bool IsProcessAlive(DWORD processId) = 0;
    /// Milliseconds of a clock that never goes back; wraps after 49.7 days.
    virtual DWORD GetTickCount() = 0;
    /// Seconds since 1970-01-01 UTC; wraps in 2106.
    virtual DWORD GetTime() = 0;
    /// Memory in use in percent (0 to 100), of the machine or of the process's memory group,
    /// whichever is fuller; read from the system at most once per tick.
    virtual DWORD GetMemoryLoad() = 0;
    /// Value of an environment variable; an unset one and an empty one are both empty.
    virtual std::string GetEnvironment(const char* name) = 0;
    /// Full name of the running program's file.
    virtual std::string GetModuleFileName() = 0;
    /// Full name of the file that holds this library's code: the shared library's, or the program's
    /// where the library is linked into it. Empty when the system does not tell.
    virtual std::string GetLibraryFileName() = 0;
    /// The process's locale for text, such as "de_AT.UTF-8": LC_ALL, LC_CTYPE or LANG, else "C".
    virtual std::string GetTextLocale() = 0;
    /// The locale of the texts that programs show: LC_ALL, LC_MESSAGES or LANG, else "C".
    virtual std::string GetMessagesLocale() = 0;
    /// The version whose behaviour programs may count on: the NT family's 10.0 on POSIX machines,
    /// where all that depends on a version is there.
    virtual SystemVersion GetVersion() = 0;
    /// The family of fonts to use for the one of that name: itself (as it is spelled) when it is
    /// installed, else the nearest that is, one of fixed width rather than not. Empty when the
    /// system does not know. Names are UTF-8.
    virtual std::string MatchFontFamily(const std::string& family) = 0;
    /// Writes a line for the person at the terminal to standard error.
    virtual void WriteDiagnostic(const char* text) = 0;
    /// Writes `question` to standard error and reads the answer, a line, from standard input. False, and
    /// nothing is asked, when standard input is no terminal; false when it ends before the line does.
    virtual bool AskAtTerminal(const char* question, std::string& answer) = 0;
};

/// Makes a system current for the life of this object.
class VNBYTSTR_API ScopedSystem {
public:
    explicit ScopedSystem(System& system) noexcept : m_previous(System::Install(&system)) {}
    ~ScopedSystem() { System::Install(m_previous); }
    ScopedSystem(const ScopedSystem&) = delete;
    ScopedSystem& operator=(const ScopedSystem&) = delete;

private:
    System* m_previous;
};

} // namespace vnbytstr
