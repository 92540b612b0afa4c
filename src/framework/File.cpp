#include "vnbytstr/framework/File.h"

#include "src/os/FileIdentity.h"
#include "src/os/Paths.h"
#include "src/os/ScratchFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <utility>

using vnbytstr::FileHandle;
using vnbytstr::FileStatus;
using vnbytstr::SeekOrigin;
using vnbytstr::System;

IMPLEMENT_DYNAMIC(CFile, CObject)

namespace {

constexpr std::uint64_t kMaxPosition = 0xFFFFFFFF;
constexpr UINT kAccessMask = 0x0003;
constexpr UINT kShareMask = 0x0070;

// The lock that a share mode asks for.
enum class ShareLock { None, Shared, Exclusive };

ShareLock LockOf(UINT flags) {
    switch (flags & kShareMask) {
    case CFile::shareExclusive:
    case CFile::shareDenyRead:
        return ShareLock::Exclusive;
    case CFile::shareDenyWrite:
        return (flags & kAccessMask) == CFile::modeRead ? ShareLock::Shared : ShareLock::Exclusive;
    default:
        return ShareLock::None;
    }
}

unsigned SystemFlags(UINT flags) {
    static constexpr unsigned kAccess[] = {vnbytstr::kOpenRead, vnbytstr::kOpenWrite,
                                           vnbytstr::kOpenRead | vnbytstr::kOpenWrite};
    unsigned result = kAccess[flags & kAccessMask];
    if (flags & CFile::modeCreate) {
        result |= vnbytstr::kOpenCreate;
        // A file that is to be locked is cut once the lock is had.
        if (!(flags & CFile::modeNoTruncate) && LockOf(flags) == ShareLock::None)
            result |= vnbytstr::kOpenTruncate;
        if (flags & CFile::modeExclusive)
            result |= vnbytstr::kOpenExclusive;
    }
    if (flags & CFile::modeScratch)
        result |= vnbytstr::kOpenScratch;
    return result;
}

CString FullName(const char* name) { return vnbytstr::AbsoluteName(name).c_str(); }

void FillStatus(const FileStatus& from, CFileStatus& status) {
    status.m_mtime = from.modifiedSeconds;
    status.m_size = from.length;
    status.m_attribute = static_cast<BYTE>((from.isFolder ? CFile::directory : CFile::normal) |
                                           (from.isReadOnly ? CFile::readOnly : CFile::normal));
}

} // namespace

CFile::CFile(const char* name, UINT flags) {
    CFileException error;
    if (!CFile::Open(name, flags, &error))
        AfxThrowFileException(error.m_cause, error.m_lOsError, error.m_strFileName);
}

CFile::~CFile() {
    if (m_bCloseOnDelete)
        CFile::Abort();
}

void CFile::ThrowError(int osError) const { CFileException::ThrowOsError(osError, m_strFileName); }

// Takes the lock that `flags` ask for on the file just opened; an error number, or 0.
int CFile::TakeLock(const char* name, UINT flags) {
    System& system = System::Current();
    if (flags & modeScratch)
        return vnbytstr::LockScratch(name, m_hFile);
    const ShareLock lock = LockOf(flags);
    if (lock == ShareLock::None)
        return 0;
    const int error = system.LockFile(m_hFile, lock == ShareLock::Exclusive, false);
    if (error != 0 && !vnbytstr::LocksAreMissing(error))
        return error;
    if ((flags & modeCreate) && !(flags & modeNoTruncate))
        return system.SetFileLength(m_hFile, 0);
    return 0;
}

BOOL CFile::Open(const char* name, UINT flags, CFileException* error) {
    const auto fail = [&](int cause, int osError) {
        if (error != nullptr) {
            error->m_cause = cause;
            error->m_lOsError = osError;
            error->m_strFileName = name;
        }
        return FALSE;
    };
    System& system = System::Current();
    if (m_hFile != hFileNull) {
        if (const int osError = system.CloseFile(std::exchange(m_hFile, hFileNull)))
            return fail(CFileException::OsErrorToException(osError), osError);
    }
    m_bCloseOnDelete = FALSE;
    const CString oldName = std::exchange(m_strFileName, CString()); // `name` may lie in it
    if (name == nullptr || (flags & kAccessMask) == kAccessMask)
        return fail(CFileException::genericException, EINVAL);
    m_strFileName = FullName(name);
    FileHandle handle = hFileNull;
    if (const int osError = system.OpenFile(name, SystemFlags(flags), handle))
        return fail(CFileException::OsErrorToException(osError), osError);
    m_hFile = handle;
    m_bCloseOnDelete = TRUE;
    if (const int osError = TakeLock(name, flags)) {
        // A file that this call has made does not stay behind, unless the sweep has it.
        if ((flags & modeCreate) && (flags & modeExclusive) && osError != EEXIST)
            system.RemoveFile(name);
        system.CloseFile(std::exchange(m_hFile, hFileNull));
        m_bCloseOnDelete = FALSE;
        return osError == EWOULDBLOCK ? fail(CFileException::sharingViolation, osError)
                                      : fail(CFileException::OsErrorToException(osError), osError);
    }
    return TRUE;
}

void CFile::Swap(CFile& other) noexcept {
    std::swap(m_hFile, other.m_hFile);
    std::swap(m_strFileName, other.m_strFileName);
    std::swap(m_bCloseOnDelete, other.m_bCloseOnDelete);
}

void CFile::Close() {
    const CString name = std::exchange(m_strFileName, CString());
    m_bCloseOnDelete = FALSE;
    if (m_hFile == hFileNull)
        return;
    if (const int error = System::Current().CloseFile(std::exchange(m_hFile, hFileNull)))
        CFileException::ThrowOsError(error, name);
}

void CFile::Abort() noexcept {
    m_strFileName.Empty();
    m_bCloseOnDelete = FALSE;
    if (m_hFile != hFileNull)
        System::Current().CloseFile(std::exchange(m_hFile, hFileNull));
}

UINT CFile::Read(void* buffer, UINT count) {
    if (buffer == nullptr && count > 0)
        AfxThrowInvalidArgException();
    auto* out = static_cast<BYTE*>(buffer);
    UINT total = 0;
    while (total < count) {
        std::size_t done = 0;
        if (const int error = System::Current().ReadFile(m_hFile, out + total, count - total, done))
            ThrowError(error);
        if (done == 0)
            break;
        total += static_cast<UINT>(done);
    }
    return total;
}

void CFile::Write(const void* buffer, UINT count) {
    if (buffer == nullptr && count > 0)
        AfxThrowInvalidArgException();
    const auto* in = static_cast<const BYTE*>(buffer);
    while (count > 0) {
        std::size_t done = 0;
        const int error = System::Current().WriteFile(m_hFile, in, count, done);
        if (error != 0 || done == 0)
            ThrowError(error != 0 ? error : ENOSPC);
        in += done;
        count -= static_cast<UINT>(done);
    }
}

void CFile::WriteGather(std::span<const std::span<const BYTE>> buffers) {
    std::array<std::span<const BYTE>, 64> parts;
    std::size_t used = 0;
    std::size_t next = 0;
    for (;;) {
        for (; next < buffers.size() && used < parts.size(); ++next) {
            if (!buffers[next].empty())
                parts[used++] = buffers[next];
        }
        if (used == 0)
            return;
        std::size_t done = 0;
        const int error =
            System::Current().WriteFileGather(m_hFile, std::span(parts).first(used), done);
        if (error != 0 || done == 0)
            ThrowError(error != 0 ? error : ENOSPC);
        std::size_t whole = 0;
        while (whole < used && done >= parts[whole].size())
            done -= parts[whole++].size();
        if (whole < used)
            parts[whole] = parts[whole].subspan(done);
        std::move(parts.begin() + static_cast<std::ptrdiff_t>(whole),
                  parts.begin() + static_cast<std::ptrdiff_t>(used), parts.begin());
        used -= whole;
    }
}

void CFile::Flush() {
    if (m_hFile == hFileNull)
        return;
    if (const int error = System::Current().SyncFile(m_hFile))
        ThrowError(error);
}

LONG CFile::Seek(LONG offset, UINT from) {
    static constexpr SeekOrigin kOrigins[] = {SeekOrigin::Begin, SeekOrigin::Current,
                                              SeekOrigin::End};
    if (from > end)
        AfxThrowInvalidArgException();
    System& system = System::Current();
    std::uint64_t before = 0;
    // Only the end of a file that is too long is known to lie past the limit, and only afterwards.
    if (from == end) {
        if (const int error = system.SeekFile(m_hFile, 0, SeekOrigin::Current, before))
            ThrowError(error);
    }
    std::uint64_t position = 0;
    if (const int error = system.SeekFile(m_hFile, offset, kOrigins[from], position)) {
        if (error == EINVAL)
            AfxThrowFileException(CFileException::badSeek, error, m_strFileName);
        ThrowError(error);
    }
    if (position > kMaxPosition) {
        if (from == current)
            before = position - static_cast<std::uint64_t>(LONGLONG{offset});
        system.SeekFile(m_hFile, static_cast<std::int64_t>(before), SeekOrigin::Begin, position);
        AfxThrowFileException(CFileException::badSeek, EOVERFLOW, m_strFileName);
    }
    return static_cast<LONG>(position);
}

DWORD CFile::GetPosition() const {
    std::uint64_t position = 0;
    if (const int error = System::Current().SeekFile(m_hFile, 0, SeekOrigin::Current, position))
        ThrowError(error);
    if (position > kMaxPosition)
        ThrowError(EOVERFLOW);
    return static_cast<DWORD>(position);
}

DWORD CFile::GetLength() const {
    std::uint64_t length = 0;
    if (const int error = System::Current().GetFileLength(m_hFile, length))
        ThrowError(error);
    if (length > kMaxPosition)
        AfxThrowFileException(CFileException::genericException, EOVERFLOW, m_strFileName);
    return static_cast<DWORD>(length);
}

void CFile::SetLength(DWORD length) {
    System& system = System::Current();
    if (const int error = system.SetFileLength(m_hFile, length))
        ThrowError(error);
    std::uint64_t position = 0;
    if (const int error = system.SeekFile(m_hFile, length, SeekOrigin::Begin, position))
        ThrowError(error);
}

CString CFile::GetFileName() const {
    const CString path = GetFilePath();
    const std::string_view name =
        vnbytstr::FileNameOf({path, static_cast<std::size_t>(path.GetLength())});
    return CString(name.data(), static_cast<int>(name.size()));
}

BOOL CFile::GetStatus(CFileStatus& status) const {
    FileStatus own;
    if (System::Current().GetFileStatus(m_hFile, own) != 0)
        return FALSE;
    FileStatus named; // whether it may be written is a matter of the name
    if (!m_strFileName.IsEmpty() && System::Current().GetFileStatus(m_strFileName, named) == 0)
        own.isReadOnly = named.isReadOnly;
    FillStatus(own, status);
    status.m_szFullName = m_strFileName;
    return TRUE;
}

BOOL CFile::GetStatus(const char* name, CFileStatus& status) {
    FileStatus found;
    if (name == nullptr || System::Current().GetFileStatus(name, found) != 0)
        return FALSE;
    if (found.isLink && !found.identity.IsKnown())
        return FALSE; // a link that points nowhere
    FillStatus(found, status);
    status.m_szFullName = FullName(name);
    return TRUE;
}

void CFile::Rename(const char* oldName, const char* newName) {
    if (oldName == nullptr || newName == nullptr)
        AfxThrowInvalidArgException();
    if (const int error = System::Current().RenameFile(oldName, newName, false))
        CFileException::ThrowOsError(error, error == EEXIST ? newName : oldName);
}

void CFile::Remove(const char* name) {
    if (name == nullptr)
        AfxThrowInvalidArgException();
    if (const int error = System::Current().RemoveFile(name))
        CFileException::ThrowOsError(error, name);
}
