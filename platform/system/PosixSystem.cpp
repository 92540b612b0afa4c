#include "platform/system/PosixSystem.h"

#include "platform/system/CharacterTypes.h"
#include "platform/system/CodePage.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace vnbytstr {

namespace {

constexpr std::size_t kMaxTransfer = 0x7FFFF000; // what one system call moves at the most
// No meaning of its own for a regular file, and never set by accident.
constexpr mode_t kScratchMark = S_ISVTX;

int Descriptor(FileHandle handle) noexcept { return static_cast<int>(handle); }

/// Runs a system call again while a signal interrupts it.
template <typename Call>
auto Retry(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

template <typename Call>
int ErrorOf(Call call) {
    return Retry(call) < 0 ? errno : 0;
}

/// Positions of the plain files that this system opened, by descriptor, plus 1; 0 where the kernel
/// keeps the position. Reading and writing at a known position saves a system call for every seek.
std::array<std::atomic<std::uint64_t>, 65536> g_positions{};

std::atomic<std::uint64_t>* KnownPosition(FileHandle handle) noexcept {
    const auto index = static_cast<std::size_t>(handle);
    if (index >= g_positions.size() || g_positions[index].load(std::memory_order_relaxed) == 0)
        return nullptr;
    return &g_positions[index];
}

void ForgetPosition(FileHandle handle) noexcept {
    if (std::atomic<std::uint64_t>* known = KnownPosition(handle))
        known->store(0, std::memory_order_relaxed);
}

/// Does a transfer at the known position with `at`, or at the kernel's with `plain`.
template <typename At, typename Plain>
int Transfer(FileHandle handle, std::size_t& done, At at, Plain plain) {
    done = 0;
    std::atomic<std::uint64_t>* known = KnownPosition(handle);
    const std::uint64_t position = known ? known->load(std::memory_order_relaxed) - 1 : 0;
    const ssize_t moved = Retry([&] { return known ? at(static_cast<off_t>(position)) : plain(); });
    if (moved < 0)
        return errno;
    done = static_cast<std::size_t>(moved);
    if (known)
        known->store(position + done + 1, std::memory_order_relaxed);
    return 0;
}

/// Where a seek leads in a file of a known position.
int SeekKnown(FileHandle handle, std::atomic<std::uint64_t>& known, std::int64_t offset,
              SeekOrigin origin, std::uint64_t& position) {
    std::int64_t base = 0;
    if (origin == SeekOrigin::Current) {
        base = static_cast<std::int64_t>(known.load(std::memory_order_relaxed) - 1);
    } else if (origin == SeekOrigin::End) {
        struct stat info;
        if (::fstat(Descriptor(handle), &info) != 0)
            return errno;
        base = info.st_size;
    }
    std::int64_t target;
    if (__builtin_add_overflow(base, offset, &target) || target < 0)
        return EINVAL;
    position = static_cast<std::uint64_t>(target);
    known.store(position + 1, std::memory_order_relaxed);
    return 0;
}

void FillStatus(const struct stat& from, FileStatus& status) noexcept {
    status.isFolder = S_ISDIR(from.st_mode);
    status.isRegular = S_ISREG(from.st_mode);
    status.isScratch = S_ISREG(from.st_mode) && (from.st_mode & kScratchMark) != 0;
    status.isOwn = from.st_uid == ::geteuid();
    status.length = static_cast<std::uint64_t>(std::max<off_t>(from.st_size, 0));
    status.modifiedSeconds = from.st_mtim.tv_sec;
    status.modifiedNanoseconds = static_cast<std::int32_t>(from.st_mtim.tv_nsec);
    status.identity = static_cast<std::uint64_t>(from.st_dev) * 0x9E3779B97F4A7C15u +
                      static_cast<std::uint64_t>(from.st_ino);
}

/// The permissions a new file gets, without the race of setting the mask to read it.
mode_t NewFileMode() noexcept {
    unsigned mask = 022;
    if (std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen("/proc/self/status", "re"),
                                                   &std::fclose);
        file) {
        std::array<char, 256> line;
        while (std::fgets(line.data(), static_cast<int>(line.size()), file.get())) {
            if (std::string_view(line.data()).starts_with("Umask:")) {
                mask = static_cast<unsigned>(std::strtoul(line.data() + 6, nullptr, 8));
                break;
            }
        }
    }
    return static_cast<mode_t>(0666u & ~mask);
}

int OpenWithMode(const char* name, unsigned flags) noexcept {
    int mode = (flags & kOpenWrite) ? ((flags & kOpenRead) ? O_RDWR : O_WRONLY) : O_RDONLY;
    if (flags & kOpenCreate)
        mode |= O_CREAT;
    if (flags & kOpenTruncate)
        mode |= O_TRUNC;
    if (flags & kOpenExclusive)
        mode |= O_EXCL;
    if (flags & (kOpenScratch | kOpenPrivate))
        mode |= O_NOFOLLOW;
    if (!(flags & kOpenInherit))
        mode |= O_CLOEXEC;
    const mode_t permissions = (flags & (kOpenScratch | kOpenPrivate)) ? 0600 : 0666;
    return Retry([&] { return ::open(name, mode, permissions); });
}

} // namespace

int PosixSystem::OpenFile(const char* name, unsigned flags, FileHandle& handle) {
    const int descriptor = OpenWithMode(name, flags);
    if (descriptor < 0)
        return errno;
    struct stat info;
    if (::fstat(descriptor, &info) != 0)
        info.st_mode = 0;
    if (S_ISDIR(info.st_mode)) {
        ::close(descriptor);
        return EISDIR; // a folder opens for reading, but never reads
    }
    if ((flags & kOpenScratch) && (flags & kOpenCreate) &&
        ::fchmod(descriptor, 0600 | kScratchMark) != 0) {
        const int error = errno;
        ::close(descriptor);
        ::unlink(name);
        return error;
    }
    handle = descriptor;
    // A child that inherits the file shares the kernel's position.
    if (S_ISREG(info.st_mode) && !(flags & kOpenInherit) &&
        static_cast<std::size_t>(descriptor) < g_positions.size())
        g_positions[static_cast<std::size_t>(descriptor)].store(1, std::memory_order_relaxed);
    return 0;
}

int PosixSystem::CloseFile(FileHandle handle) {
    ForgetPosition(handle);
    // The descriptor is gone even when close is interrupted, so it must not be tried again.
    return ::close(Descriptor(handle)) < 0 && errno != EINTR ? errno : 0;
}

int PosixSystem::ReadFile(FileHandle handle, void* buffer, std::size_t size, std::size_t& done) {
    const int descriptor = Descriptor(handle);
    size = std::min(size, kMaxTransfer);
    return Transfer(
        handle, done, [&](off_t at) { return ::pread(descriptor, buffer, size, at); },
        [&] { return ::read(descriptor, buffer, size); });
}

int PosixSystem::WriteFile(FileHandle handle, const void* buffer, std::size_t size,
                           std::size_t& done) {
    const int descriptor = Descriptor(handle);
    size = std::min(size, kMaxTransfer);
    return Transfer(
        handle, done, [&](off_t at) { return ::pwrite(descriptor, buffer, size, at); },
        [&] { return ::write(descriptor, buffer, size); });
}

int PosixSystem::WriteFileGather(FileHandle handle, std::span<const std::span<const BYTE>> buffers,
                                 std::size_t& done) {
    std::array<iovec, 64> parts;
    const std::size_t count = std::min(buffers.size(), parts.size());
    for (std::size_t i = 0; i < count; ++i)
        parts[i] = {const_cast<BYTE*>(buffers[i].data()), buffers[i].size()};
    const int descriptor = Descriptor(handle);
    const auto size = static_cast<int>(count);
    return Transfer(
        handle, done, [&](off_t at) { return ::pwritev(descriptor, parts.data(), size, at); },
        [&] { return ::writev(descriptor, parts.data(), size); });
}

int PosixSystem::SeekFile(FileHandle handle, std::int64_t offset, SeekOrigin origin,
                          std::uint64_t& position) {
    if (std::atomic<std::uint64_t>* known = KnownPosition(handle))
        return SeekKnown(handle, *known, offset, origin, position);
    const int whence = origin == SeekOrigin::Begin     ? SEEK_SET
                       : origin == SeekOrigin::Current ? SEEK_CUR
                                                       : SEEK_END;
    const off_t landed = ::lseek(Descriptor(handle), offset, whence);
    if (landed < 0)
        return errno;
    position = static_cast<std::uint64_t>(landed);
    return 0;
}

int PosixSystem::GetFileLength(FileHandle handle, std::uint64_t& length) {
    struct stat info;
    if (::fstat(Descriptor(handle), &info) != 0)
        return errno;
    length = static_cast<std::uint64_t>(std::max<off_t>(info.st_size, 0));
    return 0;
}

int PosixSystem::SetFileLength(FileHandle handle, std::uint64_t length) {
    return ErrorOf([&] { return ::ftruncate(Descriptor(handle), static_cast<off_t>(length)); });
}

int PosixSystem::SyncFile(FileHandle handle) {
    return ErrorOf([&] { return ::fdatasync(Descriptor(handle)); });
}

int PosixSystem::LockFile(FileHandle handle, bool exclusive, bool wait) {
    const int operation = (exclusive ? LOCK_EX : LOCK_SH) | (wait ? 0 : LOCK_NB);
    return ErrorOf([&] { return ::flock(Descriptor(handle), operation); });
}

int PosixSystem::UnlockFile(FileHandle handle) {
    return ErrorOf([&] { return ::flock(Descriptor(handle), LOCK_UN); });
}

int PosixSystem::GetFileStatus(FileHandle handle, FileStatus& status) {
    struct stat info;
    if (::fstat(Descriptor(handle), &info) != 0)
        return errno;
    status = {};
    FillStatus(info, status);
    return 0;
}

int PosixSystem::GetFileStatus(const char* name, FileStatus& status) {
    struct stat info;
    if (::lstat(name, &info) != 0)
        return errno;
    status = {};
    status.isLink = S_ISLNK(info.st_mode);
    if (status.isLink && ::stat(name, &info) != 0)
        return 0;
    FillStatus(info, status);
    // What nobody is to write is read-only for a privileged user, too, who could.
    constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    status.isReadOnly =
        (info.st_mode & kAnyWrite) == 0 || ::faccessat(AT_FDCWD, name, W_OK, AT_EACCESS) != 0;
    return 0;
}

int PosixSystem::RemoveFile(const char* name) { return ::unlink(name) != 0 ? errno : 0; }

int PosixSystem::RenameFile(const char* from, const char* to, bool replace) {
    if (replace)
        return ::rename(from, to) != 0 ? errno : 0;
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // A file system without that flag: a second name cannot replace anything either.
    if (::link(from, to) != 0)
        return errno;
    return ::unlink(from) != 0 ? errno : 0;
}

int PosixSystem::ReleaseScratch(FileHandle handle) {
    struct stat info;
    if (::fstat(Descriptor(handle), &info) != 0)
        return errno;
    if ((info.st_mode & kScratchMark) == 0)
        return 0;
    return ErrorOf([&] { return ::fchmod(Descriptor(handle), NewFileMode()); });
}

int PosixSystem::CopyPermissions(const char* from, FileHandle handle) {
    struct stat info;
    if (::stat(from, &info) != 0)
        return errno;
    // Only root may give a file away; for anyone else the new file stays the writer's own.
    [[maybe_unused]] const int ignored = ::fchown(Descriptor(handle), info.st_uid, info.st_gid);
    return ErrorOf([&] { return ::fchmod(Descriptor(handle), info.st_mode & 0777); });
}

int PosixSystem::ResolveName(const char* name, std::string& resolved) {
    const std::unique_ptr<char, void (*)(void*)> real(::realpath(name, nullptr), &std::free);
    if (!real)
        return errno;
    resolved = real.get();
    return 0;
}

int PosixSystem::SyncFolder(const char* folder) {
    const int descriptor =
        Retry([&] { return ::open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    if (descriptor < 0)
        return errno;
    int error = ErrorOf([&] { return ::fsync(descriptor); });
    if (error == EINVAL) // not every file system can
        error = 0;
    ::close(descriptor);
    return error;
}

int PosixSystem::MakeFolder(const char* folder) {
    std::string path(folder);
    for (std::size_t end = path.find('/', 1); end != std::string::npos;
         end = path.find('/', end + 1)) {
        const std::string above = path.substr(0, end);
        if (::mkdir(above.c_str(), 0700) != 0 && errno != EEXIST && errno != EROFS &&
            errno != EACCES)
            return errno;
    }
    if (::mkdir(folder, 0700) == 0)
        return 0;
    const int error = errno;
    struct stat info;
    if (error == EEXIST && ::stat(folder, &info) == 0 && S_ISDIR(info.st_mode))
        return 0;
    return error;
}

int PosixSystem::ListFolder(const char* folder, std::vector<std::string>& names) {
    names.clear();
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder), &::closedir);
    if (!open)
        return errno;
    errno = 0;
    while (const dirent* entry = ::readdir(open.get())) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    return errno;
}

std::string PosixSystem::GetTemporaryFolder() {
    std::string folder = GetEnvironment("TMPDIR");
    struct stat info;
    if (folder.empty())
        folder = ::stat("/var/tmp", &info) == 0 ? "/var/tmp" : "/tmp";
    if (folder.back() != '/')
        folder += '/';
    return folder;
}

DWORD PosixSystem::GetProcessId() { return static_cast<DWORD>(::getpid()); }

bool PosixSystem::IsProcessAlive(DWORD processId) {
    if (processId == 0 || processId > INT_MAX)
        return true;
    return ::kill(static_cast<pid_t>(processId), 0) == 0 || errno != ESRCH;
}

DWORD PosixSystem::GetTickCount() {
    timespec now;
    ::clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    const auto tick = static_cast<DWORD>(static_cast<std::uint64_t>(now.tv_sec) * 1000u +
                                         static_cast<std::uint64_t>(now.tv_nsec) / 1000000u);
    SetRecentTick(tick);
    return tick;
}

DWORD PosixSystem::GetTime() { return static_cast<DWORD>(::time(nullptr)); }

DWORD PosixSystem::GetMemoryLoad() { return m_memoryLoad.Load(GetTickCount()); }

std::string PosixSystem::GetEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string PosixSystem::GetModuleFileName() {
    std::array<char, PATH_MAX> name;
    const ssize_t length = ::readlink("/proc/self/exe", name.data(), name.size());
    return length > 0 ? std::string(name.data(), static_cast<std::size_t>(length)) : std::string();
}

std::string PosixSystem::GetLocale(const char* category) {
    for (const char* variable : {"LC_ALL", category, "LANG"}) {
        std::string value = GetEnvironment(variable);
        if (!value.empty())
            return value;
    }
    return "C";
}

std::string PosixSystem::GetTextLocale() { return GetLocale("LC_CTYPE"); }

std::string PosixSystem::GetMessagesLocale() { return GetLocale("LC_MESSAGES"); }

bool PosixSystem::IsDbcsEnabled() { return !CodePage::Ansi().IsSingleByte(); }

bool PosixSystem::IsMiddleEastEnabled() {
    const UINT page = CodePage::Ansi().GetNumber();
    return page == 1255 || page == 1256 || IsLocaleRightToLeft(System::Current().GetTextLocale());
}

SystemVersion PosixSystem::GetVersion() { return {SystemVersion::NtFamily, 10, 0}; }

void PosixSystem::WriteDiagnostic(const char* text) {
    const std::string line = std::string(text) + "\n";
    // Nowhere is left to report a failure of this to.
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}

} // namespace vnbytstr
