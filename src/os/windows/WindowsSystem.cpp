// NativeSystem: the process and the machine. Files are in WindowsFiles.cpp, names in
// WindowsNames.cpp, language and terminal in WindowsMachine.cpp.
//
// Names are UTF-8 (see Widen for what is not). A handle is the system's own, opened so that others
// may read, write, rename and remove the file. Permission bits are made up: 0666, or 0444 for a
// file with the read-only attribute; a new file that is private has an access list with this user
// alone. The numbers of owners are 0 for this user and 1 for everybody else.
//
// Removing and renaming open files works as FileSystem wants it where the file system has the
// POSIX semantics of both (NTFS since Windows 10, version 1709). Elsewhere a removed file that is
// open is first given another name, as is the file that a rename replaces; between these two steps
// of such a rename neither has the name, and a process that is killed there, or before the call that
// marks the old file for removal, leaves it as "<name>.~aside", or with numbers after that where such
// a file is there already. What is left of a scratch file is swept.
#include "src/os/NativeSystem.h"

#include "src/os/PlatformSystem.h"
#include "src/os/windows/WindowsCalls.h"

#include <atomic>
#include <cstddef>
#include <cstring>
#include <new>

namespace vnbytstr {

namespace {

std::string FileNameOfModule(HMODULE module) {
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            ::GetModuleFileNameW(module, name.data(), static_cast<DWORD>(name.size()));
        if (length < name.size())
            return windows::Narrow({name.data(), length});
        name.resize(name.size() * 2);
    }
}

} // namespace

System& PlatformSystem() noexcept {
    // In static memory, since the heap may be exhausted.
    alignas(NativeSystem) static std::byte place[sizeof(NativeSystem)];
    static System* const system = new (place) NativeSystem;
    return *system;
}

DWORD NativeSystem::GetProcessId() { return ::GetCurrentProcessId(); }

bool NativeSystem::IsPrivileged() {
    HANDLE token = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token))
        return false;
    const windows::OwnHandle own(token);
    TOKEN_ELEVATION elevation{};
    DWORD size = 0;
    return ::GetTokenInformation(token, TokenElevation, &elevation, sizeof elevation, &size) &&
           elevation.TokenIsElevated;
}

DWORD NativeSystem::GetTickCount() { return static_cast<DWORD>(::GetTickCount64()); }

DWORD NativeSystem::GetTime() {
    FILETIME now;
    ::GetSystemTimeAsFileTime(&now);
    const ULONGLONG ticks = (static_cast<ULONGLONG>(now.dwHighDateTime) << 32) | now.dwLowDateTime;
    return static_cast<DWORD>(ticks / 10'000'000 - 11'644'473'600); // since 1601
}

DWORD NativeSystem::GetMemoryLoad() {
    static std::atomic<std::uint64_t> answer{~std::uint64_t{0}}; // tick and load
    const std::uint64_t tick = GetTickCount();
    const std::uint64_t known = answer.load(std::memory_order_relaxed);
    if (known >> 32 == tick && known != ~std::uint64_t{0})
        return static_cast<DWORD>(known);
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    const DWORD load = ::GlobalMemoryStatusEx(&status) ? status.dwMemoryLoad : 0;
    answer.store(tick << 32 | load, std::memory_order_relaxed);
    return load;
}

std::string NativeSystem::GetEnvironment(const char* name) {
    const std::wstring wide = windows::Widen(name);
    std::wstring value;
    for (DWORD size = 256;;) {
        value.resize(size);
        size = ::GetEnvironmentVariableW(wide.c_str(), value.data(), size);
        if (size < value.size()) {
            value.resize(size);
            return windows::Narrow(value);
        }
    }
}

std::string NativeSystem::GetModuleFileName() { return FileNameOfModule(nullptr); }

std::string NativeSystem::GetLibraryFileName() {
    static const char here = 0; // part of this library, wherever that is
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                             GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCWSTR>(&here), &module);
    return module ? FileNameOfModule(module) : std::string();
}

std::string NativeSystem::GetErrorText(int error) { return std::strerror(error); }

/// GetVersionEx says what the program's manifest claims to know; this is the system's own.
SystemVersion NativeSystem::GetVersion() {
    using Function = LONG(WINAPI*)(OSVERSIONINFOW*);
    OSVERSIONINFOW info{};
    info.dwOSVersionInfoSize = sizeof info;
    const auto function = reinterpret_cast<Function>(reinterpret_cast<void*>(
        ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "RtlGetVersion")));
    if (!function || function(&info) != 0)
        return {};
    return {info.dwPlatformId, info.dwMajorVersion, info.dwMinorVersion};
}

} // namespace vnbytstr
