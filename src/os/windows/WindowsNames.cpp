// NativeSystem: names and folders. Removing and renaming are in WindowsRenaming.cpp.
#include "src/os/NativeSystem.h"
#include "src/os/Paths.h"
#include "src/os/windows/WindowsCalls.h"

#include <cerrno>

namespace vnbytstr {

using windows::ErrorUnless;
using windows::LastErrno;
using windows::OwnHandle;
using windows::WideName;

HANDLE windows::OpenForStatus(const wchar_t* name, DWORD access, bool isLinkItself) noexcept {
    const DWORD flags = FILE_FLAG_BACKUP_SEMANTICS |
                        (isLinkItself ? static_cast<DWORD>(FILE_FLAG_OPEN_REPARSE_POINT) : 0u);
    HANDLE file = INVALID_HANDLE_VALUE;
    unsigned looks = 0;
    do
        file = ::CreateFileW(name, access, kShareAll, nullptr, OPEN_EXISTING, flags, nullptr);
    while (file == INVALID_HANDLE_VALUE && MayComeBack(name, looks));
    return file;
}

bool windows::IsLink(HANDLE file) noexcept {
    FILE_ATTRIBUTE_TAG_INFO info{};
    return ::GetFileInformationByHandleEx(file, FileAttributeTagInfo, &info, sizeof info) &&
           (info.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           (info.ReparseTag == IO_REPARSE_TAG_SYMLINK ||
            info.ReparseTag == IO_REPARSE_TAG_MOUNT_POINT);
}

int windows::FillStatus(HANDLE file, FileStatus& status) noexcept {
    status = {};
    const DWORD type = ::GetFileType(file);
    if (type == FILE_TYPE_UNKNOWN && ::GetLastError() != NO_ERROR)
        return LastErrno();
    if (type != FILE_TYPE_DISK) { // a device or a pipe
        status.isOwn = true;
        status.names = 1;
        status.mode = 0666;
        return 0;
    }
    BY_HANDLE_FILE_INFORMATION info;
    if (!::GetFileInformationByHandle(file, &info))
        return LastErrno();
    const DWORD attributes = info.dwFileAttributes;
    status.isFolder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    status.isRegular = !status.isFolder;
    status.isReadOnly = status.isRegular && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    status.isScratch = status.isRegular && (attributes & kScratchMark) == kScratchMark;
    status.isOwn = IsOwn(file);
    status.length = status.isFolder ? 0
                                    : (static_cast<std::uint64_t>(info.nFileSizeHigh) << 32) |
                                          info.nFileSizeLow;
    constexpr std::int64_t kTicks = 10'000'000, kSince1601 = 11'644'473'600;
    const auto ticks = static_cast<std::int64_t>(
        (static_cast<std::uint64_t>(info.ftLastWriteTime.dwHighDateTime) << 32) |
        info.ftLastWriteTime.dwLowDateTime);
    status.modifiedSeconds = ticks / kTicks - kSince1601;
    status.modifiedNanoseconds = static_cast<std::int32_t>(ticks % kTicks * 100);
    status.identity = {info.dwVolumeSerialNumber,
                       (static_cast<std::uint64_t>(info.nFileIndexHigh) << 32) |
                           info.nFileIndexLow};
    FILE_STANDARD_INFO standard{};
    ::GetFileInformationByHandleEx(file, FileStandardInfo, &standard, sizeof standard);
    status.names = standard.DeletePending ? 0 : info.nNumberOfLinks;
    status.mode = (status.isReadOnly ? 0444u : 0666u) | (status.isScratch ? 01000u : 0u);
    status.owner = status.isOwn ? 0 : 1;
    return 0;
}

int NativeSystem::GetFileStatus(const char* name, FileStatus& status) {
    const WideName wide(name);
    if (wide.Error() != 0)
        return wide.Error();
    constexpr DWORD kAccess = FILE_READ_ATTRIBUTES | READ_CONTROL;
    status = {};
    const auto open = [&](bool isLinkItself) {
        const HANDLE file = windows::OpenForStatus(wide.Get(), kAccess, isLinkItself);
        return file == INVALID_HANDLE_VALUE && ::GetLastError() == ERROR_ACCESS_DENIED
                   ? windows::OpenForStatus(wide.Get(), FILE_READ_ATTRIBUTES, isLinkItself)
                   : file;
    };
    const OwnHandle named(open(true));
    if (!named.IsOpen())
        return LastErrno();
    const bool isLink = windows::IsLink(named.Get());
    int error = 0;
    if (!isLink)
        error = windows::FillStatus(named.Get(), status);
    else if (const OwnHandle target(open(false)); target.IsOpen())
        error = windows::FillStatus(target.Get(), status);
    status.isLink = isLink;
    return error;
}

int NativeSystem::ResolveName(const char* name, std::string& resolved) {
    const WideName wide(name);
    if (wide.Error() != 0)
        return wide.Error();
    const OwnHandle file(windows::OpenForStatus(wide.Get(), FILE_READ_ATTRIBUTES, false));
    if (!file.IsOpen())
        return LastErrno();
    std::wstring full(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = ::GetFinalPathNameByHandleW(
            file.Get(), full.data(), static_cast<DWORD>(full.size()), FILE_NAME_NORMALIZED);
        if (length < full.size()) {
            full.resize(length);
            break;
        }
        full.resize(length + 1);
    }
    if (full.empty()) // a device, or a file system that does not tell: links stay
        full = wide.Get();
    std::wstring_view text = full;
    if (text.starts_with(L"\\\\?\\UNC\\")) {
        text.remove_prefix(7);
        resolved = "\\" + windows::Narrow(text);
        return 0;
    }
    if (text.starts_with(L"\\\\?\\") && text.size() > 5 && text[5] == L':')
        text.remove_prefix(4);
    resolved = windows::Narrow(text);
    return 0;
}

/// No names here stand for a process's open files.
int NativeSystem::OpenOwnStream(const char* /*name*/, FileHandle& /*handle*/) { return ENOENT; }

// --- folders -------------------------------------------------------------------------------------

int NativeSystem::SyncFolder(const char* folder) {
    const WideName wide(folder);
    if (wide.Error() != 0)
        return wide.Error();
    const OwnHandle opened(windows::OpenForStatus(wide.Get(), GENERIC_WRITE, false));
    if (!opened.IsOpen())
        return ::GetLastError() == ERROR_ACCESS_DENIED ? 0 : LastErrno();
    // Not every file system can. NTFS writes names in the order in which they changed.
    ::FlushFileBuffers(opened.Get());
    return 0;
}

namespace {

bool IsFolder(const wchar_t* name) noexcept {
    const DWORD attributes = ::GetFileAttributesW(name);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

} // namespace

int NativeSystem::MakeFolder(const char* folder) {
    const WideName wide(folder);
    if (wide.Error() != 0)
        return wide.Error();
    if (IsFolder(wide.Get()))
        return 0;
    const std::string above = FolderOf(folder);
    if (above != "." && above != folder) {
        const int error = MakeFolder(above.c_str());
        if (error != 0 && error != EEXIST && error != EROFS && error != EACCES)
            return error;
    }
    SECURITY_ATTRIBUTES security{sizeof security, windows::PrivateAccess(true), FALSE};
    if (::CreateDirectoryW(wide.Get(), &security) || IsFolder(wide.Get()))
        return 0;
    return LastErrno();
}

int NativeSystem::ListFolder(const char* folder, std::vector<std::string>& names) {
    names.clear();
    const std::string all = AsFolderPrefix(folder) + "*";
    const WideName wide(all.c_str());
    if (wide.Error() != 0)
        return wide.Error();
    WIN32_FIND_DATAW found;
    const HANDLE search = ::FindFirstFileW(wide.Get(), &found);
    if (search == INVALID_HANDLE_VALUE)
        return LastErrno();
    const std::unique_ptr<void, BOOL (*)(HANDLE)> own(
        search, [](HANDLE handle) -> BOOL { return ::FindClose(handle); });
    do {
        const std::wstring_view name = found.cFileName;
        if (name != L"." && name != L"..")
            names.push_back(windows::Narrow(name));
    } while (::FindNextFileW(search, &found));
    return ::GetLastError() == ERROR_NO_MORE_FILES ? 0 : LastErrno();
}

std::string NativeSystem::GetTemporaryFolder() {
    std::array<wchar_t, MAX_PATH + 1> folder;
    const DWORD length = ::GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    return length > 0 && length < folder.size()
               ? AsFolderPrefix(windows::Narrow({folder.data(), length}))
               : "C:\\Windows\\Temp\\";
}

} // namespace vnbytstr
