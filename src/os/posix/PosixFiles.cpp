// NativeSystem: open files.
#include "src/os/NativeSystem.h"
#include "src/os/posix/Posix.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace vnbytstr {

using posix::Descriptor;
using posix::ErrorOf;
using posix::kScratchMark;
using posix::Retry;

namespace {

constexpr std::size_t kMaxTransfer = 0x7FFFF000; // what one system call moves at the most

int ModeOf(unsigned flags) noexcept {
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
    return mode;
}

mode_t PermissionsOf(unsigned flags) noexcept {
    // Marked from its first moment: a process that is killed right after leaves nothing unmarked.
    if (flags & kOpenScratch)
        return 0600 | kScratchMark;
    return (flags & kOpenPrivate) ? 0600 : 0666;
}

int Done(ssize_t moved, std::size_t& done) noexcept {
    done = moved < 0 ? 0 : static_cast<std::size_t>(moved);
    return moved < 0 ? errno : 0;
}

} // namespace

void posix::FillStatus(const struct stat& from, FileStatus& status) noexcept {
    status.isFolder = S_ISDIR(from.st_mode);
    status.isRegular = S_ISREG(from.st_mode);
    status.isScratch = S_ISREG(from.st_mode) && (from.st_mode & kScratchMark) != 0;
    status.isOwn = from.st_uid == ::geteuid();
    status.length = static_cast<std::uint64_t>(std::max<off_t>(from.st_size, 0));
    status.modifiedSeconds = from.st_mtim.tv_sec;
    status.modifiedNanoseconds = static_cast<std::int32_t>(from.st_mtim.tv_nsec);
    status.identity = {from.st_dev, from.st_ino};
    status.names = from.st_nlink;
    status.mode = from.st_mode & 07777;
    status.owner = from.st_uid;
    status.group = from.st_gid;
}

int NativeSystem::OpenFile(const char* name, unsigned flags, FileHandle& handle) {
    const int descriptor = Retry([&] { return ::open(name, ModeOf(flags), PermissionsOf(flags)); });
    if (descriptor < 0)
        return errno;
    struct stat info;
    if (::fstat(descriptor, &info) == 0 && S_ISDIR(info.st_mode)) {
        ::close(descriptor);
        return EISDIR; // a folder opens for reading, but never reads
    }
    // The system may take the mark off a new file. Without it the file is merely never swept.
    if ((flags & kOpenScratch) && (flags & kOpenCreate) && (info.st_mode & kScratchMark) == 0)
        [[maybe_unused]]
        const int ignored = ::fchmod(descriptor, 0600 | kScratchMark);
    handle = descriptor;
    return 0;
}

int NativeSystem::ReopenFile(FileHandle handle, unsigned flags, FileHandle& reopened) {
    const std::string name = "/proc/self/fd/" + std::to_string(Descriptor(handle));
    const int mode = ModeOf(flags) & ~(O_CREAT | O_EXCL | O_TRUNC | O_NOFOLLOW);
    const int descriptor = Retry([&] { return ::open(name.c_str(), mode); });
    if (descriptor < 0)
        return errno;
    reopened = descriptor;
    return 0;
}

int NativeSystem::CloseFile(FileHandle handle) {
    // The descriptor is closed even when close is interrupted, so it must not be tried again.
    return ::close(Descriptor(handle)) < 0 && errno != EINTR ? errno : 0;
}

int NativeSystem::ReadFile(FileHandle handle, void* buffer, std::size_t size, std::size_t& done) {
    size = std::min(size, kMaxTransfer);
    return Done(Retry([&] { return ::read(Descriptor(handle), buffer, size); }), done);
}

int NativeSystem::WriteFile(FileHandle handle, const void* buffer, std::size_t size,
                            std::size_t& done) {
    size = std::min(size, kMaxTransfer);
    return Done(Retry([&] { return ::write(Descriptor(handle), buffer, size); }), done);
}

int NativeSystem::WriteFileGather(FileHandle handle, std::span<const std::span<const BYTE>> buffers,
                                  std::size_t& done) {
    std::array<iovec, 64> parts;
    const std::size_t count = std::min(buffers.size(), parts.size());
    for (std::size_t i = 0; i < count; ++i)
        parts[i] = {const_cast<BYTE*>(buffers[i].data()), buffers[i].size()};
    return Done(
        Retry([&] { return ::writev(Descriptor(handle), parts.data(), static_cast<int>(count)); }),
        done);
}

int NativeSystem::SeekFile(FileHandle handle, std::int64_t offset, SeekOrigin origin,
                           std::uint64_t& position) {
    const int whence = origin == SeekOrigin::Begin     ? SEEK_SET
                       : origin == SeekOrigin::Current ? SEEK_CUR
                                                       : SEEK_END;
    const off_t landed = ::lseek(Descriptor(handle), offset, whence);
    if (landed < 0)
        return errno;
    position = static_cast<std::uint64_t>(landed);
    return 0;
}

int NativeSystem::GetFileLength(FileHandle handle, std::uint64_t& length) {
    struct stat info;
    if (::fstat(Descriptor(handle), &info) != 0)
        return errno;
    length = static_cast<std::uint64_t>(std::max<off_t>(info.st_size, 0));
    return 0;
}

int NativeSystem::SetFileLength(FileHandle handle, std::uint64_t length) {
    return ErrorOf([&] { return ::ftruncate(Descriptor(handle), static_cast<off_t>(length)); });
}

int NativeSystem::SyncFile(FileHandle handle) {
    return ErrorOf([&] { return ::fsync(Descriptor(handle)); });
}

int NativeSystem::LockFile(FileHandle handle, bool exclusive, bool wait) {
    const int operation = (exclusive ? LOCK_EX : LOCK_SH) | (wait ? 0 : LOCK_NB);
    return ErrorOf([&] { return ::flock(Descriptor(handle), operation); });
}

int NativeSystem::UnlockFile(FileHandle handle) {
    return ErrorOf([&] { return ::flock(Descriptor(handle), LOCK_UN); });
}

int NativeSystem::GetFileStatus(FileHandle handle, FileStatus& status) {
    struct stat info;
    if (::fstat(Descriptor(handle), &info) != 0)
        return errno;
    status = {};
    posix::FillStatus(info, status);
    return 0;
}

// --- permissions ---------------------------------------------------------------------------------

DWORD NativeSystem::GetNewFileMode() {
    // Setting the mask to read it would race with other threads.
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
    return 0666u & ~mask;
}

int NativeSystem::ReleaseScratch(FileHandle handle) {
    struct stat info;
    if (::fstat(Descriptor(handle), &info) != 0)
        return errno;
    return (info.st_mode & kScratchMark) == 0 ? 0 : SetFileMode(handle, GetNewFileMode());
}

int NativeSystem::SetFileMode(FileHandle handle, DWORD mode) {
    return ErrorOf([&] { return ::fchmod(Descriptor(handle), mode & 07777); });
}

int NativeSystem::SetFileOwner(FileHandle handle, DWORD owner, DWORD group) {
    return ErrorOf([&] { return ::fchown(Descriptor(handle), owner, group); });
}

int NativeSystem::CopyFileAttributes(const char* from, FileHandle handle) {
    const auto isUnsupported = [](int error) { return error == ENOTSUP || error == ENOSYS; };
    ssize_t size = ::listxattr(from, nullptr, 0);
    if (size <= 0)
        return size == 0 || isUnsupported(errno) ? 0 : errno;
    std::string names(static_cast<std::size_t>(size) + 1, '\0');
    size = ::listxattr(from, names.data(), names.size() - 1);
    if (size < 0)
        return errno;
    std::string value;
    for (const char* name = names.data(); name < names.data() + size;
         name += std::string_view(name).size() + 1) {
        const ssize_t length = ::getxattr(from, name, nullptr, 0);
        if (length < 0)
            return errno;
        value.resize(static_cast<std::size_t>(length));
        const ssize_t got = ::getxattr(from, name, value.data(), value.size());
        if (got < 0)
            return errno;
        // Labels and capabilities belong to the system, which gives the new file its own.
        if (::fsetxattr(Descriptor(handle), name, value.data(), static_cast<std::size_t>(got), 0) !=
                0 &&
            !std::string_view(name).starts_with("security."))
            return errno;
    }
    return 0;
}

} // namespace vnbytstr
