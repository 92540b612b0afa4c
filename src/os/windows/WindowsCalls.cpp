#include "src/os/windows/WindowsCalls.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

namespace vnbytstr::windows {

int ErrnoOf(DWORD error) noexcept {
    switch (error) {
    case ERROR_SUCCESS:
        return 0;
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_DELETE_PENDING:
        return ENOENT;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return EEXIST;
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_NETWORK_ACCESS_DENIED:
        return EACCES;
    case ERROR_PRIVILEGE_NOT_HELD:
    case ERROR_INVALID_OWNER:
        return EPERM;
    case ERROR_WRITE_PROTECT:
        return EROFS;
    case ERROR_DIRECTORY:
        return ENOTDIR;
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_BUFFER_OVERFLOW:
        return ENAMETOOLONG;
    case ERROR_CANT_RESOLVE_FILENAME:
        return ELOOP;
    case ERROR_NOT_SAME_DEVICE:
        return EXDEV;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case 1295: // ERROR_DISK_QUOTA_EXCEEDED; there is no EDQUOT here
        return ENOSPC;
    case ERROR_FILE_TOO_LARGE:
        return EFBIG;
    case ERROR_TOO_MANY_OPEN_FILES:
        return EMFILE;
    case ERROR_LOCK_VIOLATION:
    case ERROR_IO_PENDING:
        return EWOULDBLOCK;
    case ERROR_INVALID_HANDLE:
        return EBADF;
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
    case ERROR_NO_SYSTEM_RESOURCES:
        return ENOMEM;
    case ERROR_NOT_SUPPORTED:
    case ERROR_CALL_NOT_IMPLEMENTED:
        return ENOSYS;
    case ERROR_INVALID_PARAMETER:
    case ERROR_INVALID_FUNCTION:
    case ERROR_NEGATIVE_SEEK:
        return EINVAL;
    case ERROR_BROKEN_PIPE:
    case ERROR_NO_DATA:
        return EPIPE;
    case ERROR_DIR_NOT_EMPTY:
        return ENOTEMPTY;
    default:
        return EIO;
    }
}

namespace {

/// Length of the text in UTF-16 with its NUL, and the code page it is in; 0 when it is in neither.
int WideLength(const char* text, int length, UINT& codePage) noexcept {
    codePage = CP_UTF8;
    if (const int size =
            ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, length, nullptr, 0))
        return size;
    codePage = CP_ACP;
    return ::MultiByteToWideChar(CP_ACP, 0, text, length, nullptr, 0);
}

} // namespace

std::wstring Widen(std::string_view text) {
    UINT codePage = 0;
    const int length = static_cast<int>(text.size());
    const int size = length > 0 ? WideLength(text.data(), length, codePage) : 0;
    std::wstring wide(static_cast<std::size_t>(size), L'\0');
    ::MultiByteToWideChar(codePage, 0, text.data(), length, wide.data(), size);
    return wide;
}

std::string Narrow(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    const int size =
        ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string narrow(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, narrow.data(), size, nullptr, nullptr);
    return narrow;
}

wchar_t* WideName::Reserve(std::array<wchar_t, kUsual>& usual, std::unique_ptr<wchar_t[]>& longer,
                           std::size_t size) noexcept {
    if (size <= usual.size())
        return usual.data();
    longer.reset(new (std::nothrow) wchar_t[size]);
    if (!longer)
        m_error = ENOMEM;
    return longer.get();
}

WideName::WideName(const char* name) noexcept {
    UINT codePage = 0;
    const int size = WideLength(name, -1, codePage);
    if (size <= 1) {
        m_error = *name == '\0' ? ENOENT : EINVAL;
        return;
    }
    std::array<wchar_t, kUsual> usual;
    std::unique_ptr<wchar_t[]> longer;
    wchar_t* const wide = Reserve(usual, longer, static_cast<std::size_t>(size));
    if (!wide)
        return;
    ::MultiByteToWideChar(codePage, 0, name, -1, wide, size);
    const DWORD needed = ::GetFullPathNameW(wide, 0, nullptr, nullptr);
    wchar_t* const buffer = Reserve(m_usual, m_longer, needed + kPrefix);
    if (!buffer)
        return;
    wchar_t* const full = buffer + kPrefix;
    const DWORD length = ::GetFullPathNameW(wide, needed, full, nullptr);
    if (needed == 0 || length == 0 || length >= needed) { // else the current folder was changed
        m_error = needed > 0x7FFF ? ENAMETOOLONG : ENOENT;
        return;
    }
    m_text = full;
    constexpr DWORD kPlain = MAX_PATH - 12; // what a folder's name may have without the prefix
    const std::wstring_view text(full, length);
    if (length < kPlain || text.starts_with(L"\\\\?\\") || text.starts_with(L"\\\\.\\"))
        return;
    const bool isShare = text.starts_with(L"\\\\");
    const std::wstring_view prefix = isShare ? L"\\\\?\\UNC" : L"\\\\?\\";
    wchar_t* const begin = full + (isShare ? 1 : 0) - prefix.size();
    std::copy(prefix.begin(), prefix.end(), begin);
    m_text = begin;
}

} // namespace vnbytstr::windows
