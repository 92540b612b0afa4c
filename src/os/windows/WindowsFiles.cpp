// NativeSystem: open files.
#include "src/os/NativeSystem.h"
#include "src/os/windows/WindowsCalls.h"

#include <algorithm>
#include <cerrno>

namespace vnbytstr {

using windows::ErrorUnless;
using windows::HandleOf;
using windows::kScratchMark;
using windows::kShareAll;
using windows::LastErrno;
using windows::WideName;

namespace {

/// Of a transfer: a handle that was not opened for it is the wrong one.
int TransferErrno() noexcept {
    return ::GetLastError() == ERROR_ACCESS_DENIED ? EBADF : LastErrno();
}

constexpr DWORD kMaxTransfer = 0x40000000; // what one system call moves at the most

DWORD AccessOf(unsigned flags) noexcept {
    DWORD access = 0;
    if (flags & kOpenRead)
        access |= GENERIC_READ;
    if (flags & kOpenWrite)
        access |= GENERIC_WRITE;
    // Whoever makes a private file may make it another's later. No DELETE: it would shut out the
    // programs that do not share it.
    if ((flags & kOpenCreate) && (flags & (kOpenScratch | kOpenPrivate)))
        access |= WRITE_DAC | READ_CONTROL;
    return access;
}

DWORD DispositionOf(unsigned flags) noexcept {
    if (!(flags & kOpenCreate))
        return OPEN_EXISTING;
    return (flags & kOpenExclusive) ? CREATE_NEW : OPEN_ALWAYS;
}

DWORD AttributesOf(unsigned flags) noexcept {
    DWORD attributes = FILE_ATTRIBUTE_NORMAL;
    // Marked from its first moment: a process that is killed right after leaves nothing unmarked.
    if ((flags & kOpenScratch) && (flags & kOpenCreate))
        attributes = kScratchMark | FILE_ATTRIBUTE_TEMPORARY; // which need not go to the disk soon
    if (flags & (kOpenScratch | kOpenPrivate | kOpenExclusive))
        attributes |= FILE_FLAG_OPEN_REPARSE_POINT; // the link itself
    return attributes;
}

int OpenFailure(const wchar_t* name, unsigned flags) noexcept {
    const DWORD error = ::GetLastError();
    const DWORD attributes = ::GetFileAttributesW(name);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY))
        return (flags & kOpenExclusive) ? EEXIST : EISDIR;
    return windows::ErrnoOf(error);
}

int SetLength(HANDLE file, std::uint64_t length) noexcept {
    FILE_END_OF_FILE_INFO end{};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(length);
    return ErrorUnless(::SetFileInformationByHandle(file, FileEndOfFileInfo, &end, sizeof end));
}

/// The byte that stands for the whole file in locks: locks here keep others from reading and
/// writing what is locked, and no file is so long.
OVERLAPPED LockPlace() noexcept {
    OVERLAPPED place{};
    place.Offset = 0xFFFFFFFE;
    place.OffsetHigh = 0x7FFFFFFF;
    return place;
}

} // namespace

int NativeSystem::OpenFile(const char* name, unsigned flags, FileHandle& handle) {
    const WideName wide(name);
    if (wide.Error() != 0)
        return wide.Error();
    SECURITY_ATTRIBUTES security{sizeof security, nullptr, (flags & kOpenInherit) != 0};
    if (flags & (kOpenScratch | kOpenPrivate))
        security.lpSecurityDescriptor = windows::PrivateAccess(false);
    HANDLE file = INVALID_HANDLE_VALUE;
    unsigned looks = 0;
    do
        file = ::CreateFileW(wide.Get(), AccessOf(flags), kShareAll, &security,
                             DispositionOf(flags), AttributesOf(flags), nullptr);
    while (file == INVALID_HANDLE_VALUE && windows::MayComeBack(wide.Get(), looks));
    if (file == INVALID_HANDLE_VALUE)
        return OpenFailure(wide.Get(), flags);
    // Cutting it may need room on the disk, and one that was made now would be left behind.
    const bool isNew = (flags & kOpenCreate) &&
                       ((flags & kOpenExclusive) || ::GetLastError() != ERROR_ALREADY_EXISTS);
    int error = 0;
    if ((flags & (kOpenScratch | kOpenPrivate)) && windows::IsLink(file))
        error = ELOOP;
    else if ((flags & kOpenTruncate) && !isNew && ::GetFileType(file) == FILE_TYPE_DISK)
        error = SetLength(file, 0);
    if (error != 0) {
        ::CloseHandle(file);
        return error;
    }
    handle = reinterpret_cast<FileHandle>(file);
    return 0;
}

int NativeSystem::ReopenFile(FileHandle handle, unsigned flags, FileHandle& reopened) {
    const HANDLE file =
        ::ReOpenFile(HandleOf(handle), AccessOf(flags & ~kOpenCreate), kShareAll, 0);
    if (file == INVALID_HANDLE_VALUE)
        return LastErrno();
    reopened = reinterpret_cast<FileHandle>(file);
    return 0;
}

int NativeSystem::CloseFile(FileHandle handle) {
    return ErrorUnless(::CloseHandle(HandleOf(handle)));
}

int NativeSystem::ReadFile(FileHandle handle, void* buffer, std::size_t size, std::size_t& done) {
    DWORD moved = 0;
    const auto wanted = static_cast<DWORD>(std::min<std::size_t>(size, kMaxTransfer));
    const BOOL succeeded = ::ReadFile(HandleOf(handle), buffer, wanted, &moved, nullptr);
    done = moved;
    if (succeeded || ::GetLastError() == ERROR_HANDLE_EOF || ::GetLastError() == ERROR_BROKEN_PIPE)
        return 0;
    return TransferErrno();
}

int NativeSystem::WriteFile(FileHandle handle, const void* buffer, std::size_t size,
                            std::size_t& done) {
    DWORD moved = 0;
    const auto wanted = static_cast<DWORD>(std::min<std::size_t>(size, kMaxTransfer));
    const BOOL succeeded = ::WriteFile(HandleOf(handle), buffer, wanted, &moved, nullptr);
    done = moved;
    return succeeded || moved > 0 ? 0 : TransferErrno();
}

int NativeSystem::WriteFileGather(FileHandle handle, std::span<const std::span<const BYTE>> buffers,
                                  std::size_t& done) {
    done = 0;
    for (const std::span<const BYTE> buffer : buffers) {
        std::size_t moved = 0;
        const int error = WriteFile(handle, buffer.data(), buffer.size(), moved);
        done += moved;
        if (error != 0)
            return done > 0 ? 0 : error;
        if (moved < buffer.size())
            break;
    }
    return 0;
}

int NativeSystem::SeekFile(FileHandle handle, std::int64_t offset, SeekOrigin origin,
                           std::uint64_t& position) {
    const HANDLE file = HandleOf(handle);
    if (const DWORD type = ::GetFileType(file); type == FILE_TYPE_PIPE)
        return ESPIPE;
    const DWORD from = origin == SeekOrigin::Begin     ? FILE_BEGIN
                       : origin == SeekOrigin::Current ? FILE_CURRENT
                                                       : FILE_END;
    LARGE_INTEGER distance, landed;
    distance.QuadPart = offset;
    if (!::SetFilePointerEx(file, distance, &landed, from))
        return LastErrno();
    position = static_cast<std::uint64_t>(landed.QuadPart);
    return 0;
}

int NativeSystem::GetFileLength(FileHandle handle, std::uint64_t& length) {
    LARGE_INTEGER size;
    if (!::GetFileSizeEx(HandleOf(handle), &size))
        return ::GetFileType(HandleOf(handle)) == FILE_TYPE_UNKNOWN ? EBADF : (length = 0, 0);
    length = static_cast<std::uint64_t>(size.QuadPart);
    return 0;
}

int NativeSystem::SetFileLength(FileHandle handle, std::uint64_t length) {
    return SetLength(HandleOf(handle), length);
}

int NativeSystem::SyncFile(FileHandle handle) {
    if (::FlushFileBuffers(HandleOf(handle)))
        return 0;
    // Nothing was written through a handle that only reads.
    return ::GetLastError() == ERROR_ACCESS_DENIED ? 0 : LastErrno();
}

int NativeSystem::LockFile(FileHandle handle, bool exclusive, bool wait) {
    UnlockFile(handle); // a lock is changed, not put upon another
    OVERLAPPED place = LockPlace();
    const DWORD flags =
        (exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0u) | (wait ? 0u : LOCKFILE_FAIL_IMMEDIATELY);
    return ErrorUnless(::LockFileEx(HandleOf(handle), flags, 0, 1, 0, &place));
}

int NativeSystem::UnlockFile(FileHandle handle) {
    OVERLAPPED place = LockPlace();
    if (::UnlockFileEx(HandleOf(handle), 0, 1, 0, &place))
        return 0;
    const DWORD error = ::GetLastError(); // the second one is Wine's
    return error == ERROR_NOT_LOCKED || error == ERROR_LOCK_VIOLATION ? 0 : windows::ErrnoOf(error);
}

std::string NativeSystem::GetLockHolder(FileHandle /*handle*/) { return {}; }

int NativeSystem::GetFileStatus(FileHandle handle, FileStatus& status) {
    const int error = windows::FillStatus(HandleOf(handle), status);
    status.isReadOnly = false;
    return error;
}

// --- permissions ---------------------------------------------------------------------------------

DWORD NativeSystem::GetNewFileMode() { return 0666; }

int NativeSystem::ReleaseScratch(FileHandle handle) {
    FileStatus status;
    if (const int error = GetFileStatus(handle, status))
        return error;
    return status.isScratch ? SetFileMode(handle, GetNewFileMode()) : 0;
}

int NativeSystem::SetFileMode(FileHandle handle, DWORD mode) {
    constexpr DWORD kMarkBit = 01000, kOthers = 0077, kAnyWrite = 0222;
    const HANDLE file = HandleOf(handle);
    FILE_BASIC_INFO info{}; // times of 0 stay as they are
    if (!::GetFileInformationByHandleEx(file, FileBasicInfo, &info, sizeof info))
        return LastErrno();
    const DWORD before = info.FileAttributes;
    const bool isMarked = (before & kScratchMark) == kScratchMark, marks = (mode & kMarkBit) != 0;
    // A marked file is this user's alone; one that loses the mark has what its mode says.
    if (marks != isMarked && (marks || (mode & kOthers) != 0))
        if (const int error = windows::SetAccess(file, marks))
            return error;
    DWORD attributes = before & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY);
    if ((mode & kAnyWrite) == 0)
        attributes |= FILE_ATTRIBUTE_READONLY;
    if (marks)
        attributes |= kScratchMark;
    else if (isMarked)
        attributes &= ~(kScratchMark | FILE_ATTRIBUTE_TEMPORARY);
    if (attributes == before)
        return 0;
    info = {};
    info.FileAttributes = attributes == 0 ? FILE_ATTRIBUTE_NORMAL : attributes; // 0 is "as it is"
    return ErrorUnless(::SetFileInformationByHandle(file, FileBasicInfo, &info, sizeof info));
}

int NativeSystem::SetFileOwner(FileHandle /*handle*/, DWORD owner, DWORD /*group*/) {
    return owner == 0 ? 0 : EPERM;
}

/// The attributes that users set, and the access list; named streams are not copied.
int NativeSystem::CopyFileAttributes(const char* from, FileHandle handle) {
    constexpr DWORD kUsers =
        kScratchMark | FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    const WideName wide(from);
    if (wide.Error() != 0)
        return wide.Error();
    const DWORD wanted = ::GetFileAttributesW(wide.Get());
    if (wanted == INVALID_FILE_ATTRIBUTES)
        return LastErrno();
    if (const int error = windows::CopyAccess(wide.Get(), HandleOf(handle)))
        return error;
    FILE_BASIC_INFO info{};
    info.FileAttributes = (wanted & kUsers) != 0 ? wanted & kUsers : FILE_ATTRIBUTE_NORMAL;
    return ErrorUnless(
        ::SetFileInformationByHandle(HandleOf(handle), FileBasicInfo, &info, sizeof info));
}

} // namespace vnbytstr
