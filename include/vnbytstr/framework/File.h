// CFile, the framework's unbuffered file, and CFileStatus.
#pragma once

#include "vnbytstr/framework/Exception.h"
#include "vnbytstr/framework/FileHandle.h"
#include "vnbytstr/framework/Object.h"
#include "vnbytstr/framework/String.h"

#include <span>

/// What GetStatus tells about a file.
struct VNBYTSTR_API CFileStatus {
    LONGLONG m_mtime = 0; ///< last change, seconds since 1970-01-01 UTC
    ULONGLONG m_size = 0; ///< bytes
    BYTE m_attribute = 0; ///< CFile::Attribute values
    CString m_szFullName; ///< with its folder
};

/// An open file. Names are byte strings in
/// the file system's own encoding.
///
/// Positions and lengths are those of a file of at most 4 GiB - 1; one that is longer, or a
/// position past that, is an error. Errors are thrown as CFileException with the cause, the
/// system's error number and the name, except where a function returns a BOOL. Nothing is buffered:
/// what Write took, the system has. A file that is not open gives cause invalidFile. One object,
/// one thread at a time.
///
/// The position is the system's own: reading, writing and seeking on m_hFile by other means,
/// another CFile on the same handle, and a forked child that inherits the file all share it.
class VNBYTSTR_API CFile : public CObject {
    DECLARE_DYNAMIC(CFile)
public:
    /// How to open; combine one access mode, one share mode and the rest with |.
    enum OpenFlags {
        modeRead = 0x0000,
        modeWrite = 0x0001,
        modeReadWrite = 0x0002,
        /// Others may open the file (shareCompat as well as shareDenyNone).
        shareCompat = 0x0000,
        /// The other share modes take the file's advisory lock: an exclusive one, or a shared one
        /// for reading with shareDenyWrite. A lock that this program or another one holds gives
        /// cause sharingViolation; shareCompat and shareDenyNone ignore locks. Where the file
        /// system has no locks these modes do nothing.
        shareExclusive = 0x0010,
        shareDenyWrite = 0x0020,
        shareDenyRead = 0x0030,
        shareDenyNone = 0x0040,
        /// Accepted: child processes never inherit the file.
        modeNoInherit = 0x0080,
        /// Makes the file when it is missing, else cuts it to length 0 ...
        modeCreate = 0x1000,
        /// ... unless this is given too.
        modeNoTruncate = 0x2000,
        /// Accepted without effect: bytes are never translated.
        typeText = 0x4000,
        typeBinary = 0x8000,
        /// With modeCreate: fails with EEXIST (accessDenied) when the name is taken, even by a
        /// symbolic link that points nowhere. Extension.
        modeExclusive = 0x20000,
        /// A temporary file for this user alone, that is marked and locked while it is open, so
        /// that the sweep of files left by dead processes leaves it alone. Never through a symbolic
        /// link. When a sweep takes it while it is made, the open fails with EEXIST: take another
        /// name. Extension.
        modeScratch = 0x40000,
    };
    /// Attributes of a file, as CFileStatus has them.
    enum Attribute { normal = 0x00, readOnly = 0x01, directory = 0x10 };
    /// Where Seek counts from.
    enum SeekPosition { begin = 0, current = 1, end = 2 };

    /// The handle of a file that is not open.
    static constexpr vnbytstr::FileHandle hFileNull = vnbytstr::kNoFile;

    CFile() = default;
    /// Works on a handle that the caller owns; this object closes it only when Close is called.
    explicit CFile(vnbytstr::FileHandle handle) : m_hFile(handle) {}
    /// As Open; throws when that fails.
    CFile(const char* name, UINT flags);
    /// Closes the file; an error of that is lost, so call Close after writing.
    ~CFile() override;

    /// Opens a file (closing the one that is open). FALSE when that fails; `*error`, unless null,
    /// then has the cause, the system's error number and the name.
    virtual BOOL Open(const char* name, UINT flags, CFileException* error = nullptr);
    /// Closes the file; nothing when it is not open. It is closed even when an error is thrown.
    virtual void Close();
    /// Closes the file and throws nothing.
    virtual void Abort() noexcept;

    /// Exchanges the open files of two objects. Extension.
    void Swap(CFile& other) noexcept;

    /// Reads up to `count` bytes at the position; returns how many there were: fewer only at the
    /// end of the file. After an error the position is past what was read.
    virtual UINT Read(void* buffer, UINT count);
    /// Writes `count` bytes at the position. After an error the position is past what was written.
    virtual void Write(const void* buffer, UINT count);
    /// Writes several buffers one after the other with few system calls. Extension.
    virtual void WriteGather(std::span<const std::span<const BYTE>> buffers);
    /// Returns when all that was written is on the disk; nothing when the file is not open.
    virtual void Flush();

    /// Moves the position by `offset` bytes from `from` (a SeekPosition); past the end of the file
    /// is allowed. Returns where the position landed, counted from the beginning, as the bits of an
    /// unsigned 32-bit value: cast it to DWORD. A position beyond 0x7FFFFFFF takes two steps:
    /// Seek(0x7FFFFFFF, begin), then Seek(rest, current). A target before the beginning or past
    /// 4 GiB - 1 throws cause badSeek and leaves the position as it was.
    virtual LONG Seek(LONG offset, UINT from);
    void SeekToBegin() { Seek(0, begin); }
    /// Returns the length of the file.
    DWORD SeekToEnd() { return static_cast<DWORD>(Seek(0, end)); }
    virtual DWORD GetPosition() const;
    virtual DWORD GetLength() const;
    /// Cuts the file, or lengthens it with zeros; the position is then at its end.
    virtual void SetLength(DWORD length);

    /// The name without its folder; empty when the file is not open.
    virtual CString GetFileName() const;
    /// The name with its folder. Also kept after an Open that failed.
    virtual CString GetFilePath() const { return m_strFileName; }
    /// Sets the name that messages and GetFilePath give; the file itself keeps its own.
    virtual void SetFilePath(const char* name) { m_strFileName = name; }
    /// Status of the open file. FALSE when the system does not give it.
    virtual BOOL GetStatus(CFileStatus& status) const;

    /// Status of a name (of what a symbolic link points to). FALSE when there is no such file.
    static BOOL GetStatus(const char* name, CFileStatus& status);
    /// Gives a file another name on the same file system; a name that is taken is an error
    /// (EEXIST).
    static void Rename(const char* oldName, const char* newName);
    static void Remove(const char* name);

    /// The open file; hFileNull when none is open.
    vnbytstr::FileHandle m_hFile = hFileNull;

protected:
    /// Throws the CFileException for a system error number.
    [[noreturn]] void ThrowError(int osError) const;

    /// The file's name, and whether the destructor closes it.
    CString m_strFileName;
    BOOL m_bCloseOnDelete = FALSE;

private:
    int TakeLock(const char* name, UINT flags);
};
