// What NativeSystem's source files here share: names and errors as the system's calls have them.
#pragma once

#include "src/os/System.h"

#include <array>
#include <memory>
#include <string>
#include <string_view>

namespace vnbytstr::windows {

/// The errno value for a number of GetLastError.
int ErrnoOf(DWORD error) noexcept;
inline int LastErrno() noexcept { return ErrnoOf(::GetLastError()); }
/// 0, or the error number of a call that has failed.
inline int ErrorUnless(BOOL succeeded) noexcept { return succeeded ? 0 : LastErrno(); }

/// Text in the system's UTF-16. Bytes that are not UTF-8 are taken for the system's ANSI code page.
std::wstring Widen(std::string_view text);
/// UTF-16 in UTF-8.
std::string Narrow(std::wstring_view text);

/// A file name for the system: full, and in the form that may be longer than 260 characters when it
/// is. Throws nothing: names of usual length take no memory.
class WideName {
public:
    explicit WideName(const char* name) noexcept;
    /// 0, ENOENT for an empty name, ENOMEM, ENAMETOOLONG, or EINVAL for what is no text.
    int Error() const noexcept { return m_error; }
    const wchar_t* Get() const noexcept { return m_text; }

private:
    static constexpr std::size_t kUsual = 320;
    static constexpr DWORD kPrefix = 8; ///< room before the name

    wchar_t* Reserve(std::array<wchar_t, kUsual>& usual, std::unique_ptr<wchar_t[]>& longer,
                     std::size_t size) noexcept;

    std::array<wchar_t, kUsual> m_usual;
    std::unique_ptr<wchar_t[]> m_longer;
    const wchar_t* m_text = nullptr;
    int m_error = 0;
};

/// A handle that closes itself.
class OwnHandle {
public:
    explicit OwnHandle(HANDLE handle) noexcept : m_handle(handle) {}
    ~OwnHandle() {
        if (IsOpen())
            ::CloseHandle(m_handle);
    }
    OwnHandle(const OwnHandle&) = delete;
    OwnHandle& operator=(const OwnHandle&) = delete;

    bool IsOpen() const noexcept { return m_handle != INVALID_HANDLE_VALUE && m_handle != nullptr; }
    HANDLE Get() const noexcept { return m_handle; }

private:
    HANDLE m_handle;
};

/// Others may read, write, rename and remove what this process has open.
inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// The scratch mark of FileStatus: nobody sets these two attributes on a plain file by chance, and
/// they keep such files out of the user's sight.
inline constexpr DWORD kScratchMark = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

inline HANDLE HandleOf(FileHandle handle) noexcept { return reinterpret_cast<HANDLE>(handle); }

/// After the system has not found `name`: whether to look again, since somebody may be replacing that
/// file in two steps (see WindowsRenaming.cpp). `looks` is 0 at first. Waits up to some 20 ticks.
bool MayComeBack(const wchar_t* name, unsigned& looks) noexcept;

/// Opens what has that name for its status, without following a link with `isLinkItself`. Folders
/// too.
HANDLE OpenForStatus(const wchar_t* name, DWORD access, bool isLinkItself) noexcept;
/// Whether an open file or folder is a link to another name.
bool IsLink(HANDLE file) noexcept;
/// Status of an open file; isReadOnly by its attribute.
int FillStatus(HANDLE file, FileStatus& status) noexcept;

// --- access control (WindowsAccess.cpp) ----------------------------------------------------------

/// Who may use a new file or folder: this user alone. Null when the system does not tell who that
/// is; the folder's own settings hold then.
SECURITY_DESCRIPTOR* PrivateAccess(bool isFolder) noexcept;
/// Whether the file belongs to this user, or to whom this user's new files belong.
bool IsOwn(HANDLE file) noexcept;
/// Lets this user alone use an open file, or whom its folder says besides.
int SetAccess(HANDLE file, bool isPrivate) noexcept;
/// Gives an open file the list of those who may use `from`.
int CopyAccess(const wchar_t* from, HANDLE file) noexcept;

} // namespace vnbytstr::windows
