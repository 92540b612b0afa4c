// NativeSystem: removing and renaming files, open ones among them.
//
// Both ask for the POSIX semantics first. A file system that does not know them gets the old calls,
// which leave an open file's name taken until it is closed: so the file is given another name
// before. The order of these steps keeps a file from getting lost: what cannot be finished is
// taken back.
#include "src/os/NativeSystem.h"
#include "src/os/ScratchFile.h"
#include "src/os/windows/WindowsCalls.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <cwchar>
#include <new>

namespace vnbytstr {

using windows::ErrorUnless;
using windows::kShareAll;
using windows::LastErrno;
using windows::OwnHandle;
using windows::WideName;

namespace {

// What the compiler's headers need not have yet (winbase.h of Windows 10, version 1709).
constexpr auto kDispositionInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);
constexpr auto kRenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
constexpr DWORD kDelete = 0x1, kDeletePosix = 0x2, kDeleteReadOnly = 0x10;
constexpr DWORD kReplace = 0x1, kRenamePosix = 0x2, kRenameReadOnly = 0x40;

struct RenameInfo { // FILE_RENAME_INFO
    DWORD flags;    ///< of the old call: its first byte is ReplaceIfExists
    HANDLE root;
    DWORD nameBytes;
    wchar_t name[1];
};

/// Whether the file system, or the system, does not know that call.
bool IsUnknownCall(DWORD error) noexcept {
    return error == ERROR_INVALID_PARAMETER || error == ERROR_INVALID_FUNCTION ||
           error == ERROR_NOT_SUPPORTED || error == ERROR_CALL_NOT_IMPLEMENTED ||
           error == ERROR_INVALID_LEVEL;
}

HANDLE OpenToRename(const wchar_t* name) noexcept {
    return ::CreateFileW(name, DELETE | FILE_READ_ATTRIBUTES | SYNCHRONIZE, kShareAll, nullptr,
                         OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS,
                         nullptr);
}

bool IsFolder(HANDLE file) noexcept {
    FILE_STANDARD_INFO info{};
    return ::GetFileInformationByHandleEx(file, FileStandardInfo, &info, sizeof info) &&
           info.Directory && !windows::IsLink(file);
}

/// Gives an open file the name `to`; the system's error number, or 0.
DWORD Rename(HANDLE file, const wchar_t* to, FILE_INFO_BY_HANDLE_CLASS call, DWORD flags) noexcept {
    const std::size_t nameBytes = std::wcslen(to) * sizeof(wchar_t);
    const std::size_t size = sizeof(RenameInfo) + nameBytes;
    const std::unique_ptr<BYTE[]> buffer(new (std::nothrow) BYTE[size]());
    if (!buffer)
        return ERROR_NOT_ENOUGH_MEMORY;
    auto* const info = reinterpret_cast<RenameInfo*>(buffer.get());
    info->flags = flags;
    info->nameBytes = static_cast<DWORD>(nameBytes);
    std::memcpy(info->name, to, nameBytes);
    return ::SetFileInformationByHandle(file, call, info, static_cast<DWORD>(size))
               ? ERROR_SUCCESS
               : ::GetLastError();
}

constexpr wchar_t kAside[] = L".~aside";

/// Another name in the same folder, which nobody has, for a file that is to go.
std::wstring NameAside(const wchar_t* name) {
    static std::atomic<unsigned> counter{0};
    return std::wstring(name) + kAside + L"-" + std::to_wstring(::GetCurrentProcessId()) + L"-" +
           std::to_wstring(counter.fetch_add(1));
}

/// Opens a file that goes with its last handle, though this process be killed: INVALID_HANDLE_VALUE
/// when it may not go.
HANDLE OpenToRemove(const wchar_t* name) noexcept {
    const auto open = [&] {
        return ::CreateFileW(
            name, DELETE | FILE_READ_ATTRIBUTES | SYNCHRONIZE, kShareAll, nullptr, OPEN_EXISTING,
            FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_DELETE_ON_CLOSE,
            nullptr);
    };
    const HANDLE file = open();
    if (file != INVALID_HANDLE_VALUE)
        return file;
    const DWORD error = ::GetLastError(), attributes = ::GetFileAttributesW(name);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) &&
        ::SetFileAttributesW(name, attributes & ~DWORD{FILE_ATTRIBUTE_READONLY})) {
        if (const HANDLE writable = open(); writable != INVALID_HANDLE_VALUE)
            return writable;
        ::SetFileAttributesW(name, attributes);
    }
    ::SetLastError(error);
    return INVALID_HANDLE_VALUE;
}

int RemoveInTwoSteps(const wchar_t* name) {
    const std::wstring aside = NameAside(name);
    const OwnHandle file(OpenToRemove(name));
    if (!file.IsOpen())
        return LastErrno();
    // The name is to be free while others have the file open. Where it does not get another one, it
    // goes all the same.
    Rename(file.Get(), aside.c_str(), FileRenameInfo, 0);
    return 0;
}

/// What a file is called in the moment in which nobody has the name `to`, and after a kill in it: a
/// user finds the file by that; of a scratch file it is a name that the sweep knows.
std::wstring NameInBetween(const std::wstring& to) {
    static std::atomic<unsigned> counter{0x40000000}; // far from those of MakeScratch
    const std::size_t folder = to.find_last_of(L'\\') + 1;
    if (const auto use = UseOfScratchName(windows::Narrow(to.substr(folder))))
        return to.substr(0, folder) +
               windows::Widen(ScratchName(*use, ::GetCurrentProcessId(), counter.fetch_add(1)));
    return to + kAside;
}

/// Replaces a file that is open.
int ReplaceInTwoSteps(HANDLE file, const wchar_t* to) {
    const OwnHandle old(OpenToRename(to));
    if (!old.IsOpen())
        return LastErrno();
    if (IsFolder(old.Get()))
        return EISDIR;
    FILE_BASIC_INFO basic{};
    if (::GetFileInformationByHandleEx(old.Get(), FileBasicInfo, &basic, sizeof basic) &&
        (basic.FileAttributes & FILE_ATTRIBUTE_READONLY))
        return EACCES;
    // The name in between must be free again for the next such step, though the old file be open
    // still, and may be one that a killed process left.
    const std::wstring other = NameAside(to);
    std::wstring now = NameInBetween(to);
    DWORD error = Rename(old.Get(), now.c_str(), FileRenameInfo, 0);
    if (error == ERROR_ALREADY_EXISTS)
        error = Rename(old.Get(), (now = other).c_str(), FileRenameInfo, 0);
    if (error != ERROR_SUCCESS)
        return windows::ErrnoOf(error);
    error = Rename(file, to, FileRenameInfo, 1); // another process may have put a file there
    if (error != ERROR_SUCCESS) {
        Rename(old.Get(), to, FileRenameInfo, 0);
        return windows::ErrnoOf(error);
    }
    if (const OwnHandle gone(OpenToRemove(now.c_str())); gone.IsOpen())
        Rename(gone.Get(), other.c_str(), FileRenameInfo, 0);
    return 0;
}

} // namespace

bool windows::MayComeBack(const wchar_t* name, unsigned& looks) noexcept try {
    constexpr unsigned kMaxLooks = 20;
    if (::GetLastError() != ERROR_FILE_NOT_FOUND || looks == kMaxLooks)
        return false;
    const bool isBetween =
        ::GetFileAttributesW((name + std::wstring(kAside)).c_str()) != INVALID_FILE_ATTRIBUTES;
    looks = isBetween ? looks + 1 : kMaxLooks; // once more: it may have come back just now
    if (isBetween)
        ::Sleep(1);
    return true;
} catch (const std::bad_alloc&) {
    ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return false;
}

int NativeSystem::RemoveFile(const char* name) {
    const WideName wide(name);
    if (wide.Error() != 0)
        return wide.Error();
    const OwnHandle file(OpenToRename(wide.Get()));
    if (!file.IsOpen())
        return LastErrno();
    if (IsFolder(file.Get()))
        return EISDIR;
    DWORD flags = kDelete | kDeletePosix | kDeleteReadOnly;
    if (::SetFileInformationByHandle(file.Get(), kDispositionInfoEx, &flags, sizeof flags))
        return 0;
    try {
        return IsUnknownCall(::GetLastError()) ? RemoveInTwoSteps(wide.Get()) : LastErrno();
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
}

int NativeSystem::RenameFile(const char* from, const char* to, bool replace) {
    const WideName wide(from), target(to);
    if (wide.Error() != 0 || target.Error() != 0)
        return wide.Error() != 0 ? wide.Error() : target.Error();
    const OwnHandle file(OpenToRename(wide.Get()));
    if (!file.IsOpen())
        return LastErrno();
    DWORD error = Rename(file.Get(), target.Get(), kRenameInfoEx,
                         (replace ? kReplace : 0) | kRenamePosix | kRenameReadOnly);
    if (!IsUnknownCall(error))
        return windows::ErrnoOf(error);
    error = Rename(file.Get(), target.Get(), FileRenameInfo, replace ? 1 : 0);
    if (!replace || (error != ERROR_ACCESS_DENIED && error != ERROR_SHARING_VIOLATION))
        return windows::ErrnoOf(error);
    try {
        return ReplaceInTwoSteps(file.Get(), target.Get());
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
}

} // namespace vnbytstr
