// WindowsSystem: the process and the machine. Files are in WindowsFiles.cpp, names in
// WindowsNames.cpp, language and terminal in WindowsMachine.cpp.
#include "src/os/windows/WindowsSystem.h"

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
    alignas(WindowsSystem) static std::byte place[sizeof(WindowsSystem)];
    static System* const system = new (place) WindowsSystem;
    return *system;
}

DWORD WindowsSystem::GetProcessId() { return ::GetCurrentProcessId(); }

bool WindowsSystem::IsPrivileged() {
    HANDLE token = nullptr;
    if (!::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token))
        return false;
    const windows::OwnHandle own(token);
    TOKEN_ELEVATION elevation{};
    DWORD size = 0;
    return ::GetTokenInformation(token, TokenElevation, &elevation, sizeof elevation, &size) &&
           elevation.TokenIsElevated;
}

DWORD WindowsSystem::GetTickCount() { return static_cast<DWORD>(::GetTickCount64()); }

DWORD WindowsSystem::GetTime() {
    FILETIME now;
    ::GetSystemTimeAsFileTime(&now);
    const ULONGLONG ticks = (static_cast<ULONGLONG>(now.dwHighDateTime) << 32) | now.dwLowDateTime;
    return static_cast<DWORD>(ticks / 10'000'000 - 11'644'473'600); // since 1601
}

DWORD WindowsSystem::GetMemoryLoad() {
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

std::string WindowsSystem::GetEnvironment(const char* name) {
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

std::string WindowsSystem::GetModuleFileName() { return FileNameOfModule(nullptr); }

std::string WindowsSystem::GetLibraryFileName() {
    static const char here = 0; // part of this library, wherever that is
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                             GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                         reinterpret_cast<LPCWSTR>(&here), &module);
    return module ? FileNameOfModule(module) : std::string();
}

std::string WindowsSystem::GetErrorText(int error) { return std::strerror(error); }

/// GetVersionEx says what the program's manifest claims to know; this is the system's own.
SystemVersion WindowsSystem::GetVersion() {
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
