// NativeSystem: the process and the machine. Files are in PosixFiles.cpp, names in PosixNames.cpp.
#include "src/os/NativeSystem.h"

#include "src/os/MessageWindow.h"
#include "src/os/PlatformSystem.h"
#include "src/os/posix/MemoryLoad.h"
#include "src/os/posix/Posix.h"

#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <new>
#include <sstream>

namespace vnbytstr {

namespace {

constexpr std::size_t kMaxAnswer = 4096; // bytes of a line that is typed

void WriteError(const std::string& text) {
    // A failure of this cannot be reported anywhere.
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
}

std::string LocaleOf(System& system, const char* category) {
    for (const char* variable : {"LC_ALL", category, "LANG"}) {
        std::string value = system.GetEnvironment(variable);
        if (!value.empty())
            return value;
    }
    return "C";
}

} // namespace

System& PlatformSystem() noexcept {
    // In static memory, since the heap may be exhausted.
    alignas(NativeSystem) static std::byte place[sizeof(NativeSystem)];
    static System* const system = new (place) NativeSystem;
    return *system;
}

DWORD NativeSystem::GetProcessId() { return static_cast<DWORD>(::getpid()); }

bool NativeSystem::IsPrivileged() { return ::geteuid() == 0; }

DWORD NativeSystem::GetTickCount() {
    timespec now;
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<DWORD>(static_cast<std::uint64_t>(now.tv_sec) * 1000u +
                              static_cast<std::uint64_t>(now.tv_nsec) / 1000000u);
}

DWORD NativeSystem::GetTime() { return static_cast<DWORD>(::time(nullptr)); }

DWORD NativeSystem::GetMemoryLoad() {
    alignas(MemoryLoadReader) static std::byte place[sizeof(MemoryLoadReader)]; // as above
    static MemoryLoadReader* const reader = new (place) MemoryLoadReader;
    return reader->Load(GetTickCount());
}

SystemRegistry* NativeSystem::GetRegistry() { return nullptr; }

std::string NativeSystem::GetEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

namespace {

/// The kernel marks the name of a removed file, such as that of a program that was replaced while
/// it runs. The program's other files belong to the file that has the name now.
std::string WithoutDeletedMark(std::string name) {
    constexpr std::string_view kMark = " (deleted)";
    if (name.ends_with(kMark) && ::access(name.c_str(), F_OK) != 0)
        name.resize(name.size() - kMark.size());
    return name;
}

} // namespace

std::string NativeSystem::GetModuleFileName() {
    std::array<char, PATH_MAX> name;
    const ssize_t length = ::readlink("/proc/self/exe", name.data(), name.size());
    if (length <= 0)
        return {};
    return WithoutDeletedMark(std::string(name.data(), static_cast<std::size_t>(length)));
}

/// From the list of what is mapped into the process: the dynamic linker knows the name only as it
/// was asked for, which may be a relative one.
std::string NativeSystem::GetLibraryFileName() {
    static const char here = 0; // part of this library, wherever that is
    const auto address = reinterpret_cast<std::uintptr_t>(&here);
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t begin = 0, end = 0;
        char dash = 0;
        std::istringstream(line) >> std::hex >> begin >> dash >> end;
        if (begin <= address && address < end)
            return WithoutDeletedMark(line.substr(std::min(line.find('/'), line.size())));
    }
    return {};
}

std::string NativeSystem::GetErrorText(int error) { return std::strerror(error); }

std::string NativeSystem::GetTextLocale() { return LocaleOf(*this, "LC_CTYPE"); }

std::string NativeSystem::GetMessagesLocale() { return LocaleOf(*this, "LC_MESSAGES"); }

SystemVersion NativeSystem::GetVersion() { return {SystemVersion::NtFamily, 10, 0}; }

int detail::ShowMessageWindow(const char* /*text*/, const char* /*caption*/, UINT /*type*/) {
    return 0;
}

void NativeSystem::WriteDiagnostic(const char* text) { WriteError(std::string(text) + "\n"); }

bool NativeSystem::AskAtTerminal(const char* question, std::string& answer) {
    if (::isatty(STDIN_FILENO) != 1)
        return false;
    WriteError(question);
    answer.clear();
    std::array<char, 256> piece;
    for (;;) {
        const ssize_t size =
            posix::Retry([&] { return ::read(STDIN_FILENO, piece.data(), piece.size()); });
        if (size <= 0)
            return false;
        answer.append(piece.data(), static_cast<std::size_t>(size));
        if (answer.back() == '\n' || answer.size() > kMaxAnswer)
            return true;
    }
}

} // namespace vnbytstr
