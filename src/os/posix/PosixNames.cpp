// NativeSystem: names and folders.
#include "src/os/NativeSystem.h"
#include "src/os/Paths.h"
#include "src/os/posix/Posix.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/magic.h>
#include <stdio.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <climits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vnbytstr {

using posix::ErrorOf;
using posix::Retry;

int NativeSystem::GetFileStatus(const char* name, FileStatus& status) {
    struct stat info;
    if (::lstat(name, &info) != 0)
        return errno;
    status = {};
    status.isLink = S_ISLNK(info.st_mode);
    if (status.isLink && ::stat(name, &info) != 0)
        return 0;
    posix::FillStatus(info, status);
    // A file without any write permission is read-only even for a privileged user.
    constexpr mode_t kAnyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    status.isReadOnly =
        (info.st_mode & kAnyWrite) == 0 || ::faccessat(AT_FDCWD, name, W_OK, AT_EACCESS) != 0;
    return 0;
}

int NativeSystem::RemoveFile(const char* name) { return ::unlink(name) != 0 ? errno : 0; }

int NativeSystem::RenameFile(const char* from, const char* to, bool replace) {
    if (replace)
        return ::rename(from, to) != 0 ? errno : 0;
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // A file system without that flag: a second name cannot replace anything either.
    if (::link(from, to) != 0)
        return errno;
    if (::unlink(from) == 0)
        return 0;
    const int error = errno;
    ::unlink(to);
    return error;
}

// --- following links -----------------------------------------------------------------------------

namespace {

constexpr int kMaxLinks = 40; // as the kernel has it

int ReadLink(const std::string& name, std::string& text) {
    std::array<char, PATH_MAX> buffer;
    const ssize_t length = ::readlink(name.c_str(), buffer.data(), buffer.size());
    if (length < 0)
        return errno;
    text.assign(buffer.data(), static_cast<std::size_t>(length));
    return static_cast<std::size_t>(length) == buffer.size() ? ENAMETOOLONG : 0;
}

/// Whether anyone may put a link into `folder` and this one is neither the folder owner's nor ours.
/// The kernel refuses to follow such a link, but not to read it.
bool IsPlanted(const std::string& folder, const struct stat& link) {
    struct stat info;
    if (::stat(folder.empty() ? "/" : folder.c_str(), &info) != 0)
        return true;
    constexpr mode_t kOpenToAll = S_ISVTX | S_IWOTH;
    return (info.st_mode & kOpenToAll) == kOpenToAll && link.st_uid != ::geteuid() &&
           link.st_uid != info.st_uid;
}

/// Whether names in `folder` stand for the open files of a process.
bool HoldsOpenFiles(const std::string& folder) {
    struct statfs info;
    return folder.ends_with("/fd") && ::statfs(folder.c_str(), &info) == 0 &&
           info.f_type == PROC_SUPER_MAGIC;
}

/// Walks a full name, one component after the other.
class NameWalk {
public:
    explicit NameWalk(std::string left) : m_left(std::move(left)) {}

    int Run(std::string& resolved) {
        while (!m_left.empty()) {
            if (const int error = Step(); error != 0)
                return error;
        }
        resolved = m_done.empty() ? "/" : m_done;
        return 0;
    }

private:
    std::string TakeComponent() {
        const std::size_t begin = m_left.find_first_not_of('/');
        if (begin == std::string::npos) {
            m_left.clear();
            return {};
        }
        const std::size_t end = std::min(m_left.find('/', begin), m_left.size());
        std::string component = m_left.substr(begin, end - begin);
        m_left.erase(0, end);
        return component;
    }

    int Step() {
        const std::string component = TakeComponent();
        if (component.empty() || component == ".")
            return 0;
        if (component == "..") {
            m_done.erase(std::min(m_done.rfind('/'), m_done.size()));
            return 0;
        }
        const std::string name = m_done + "/" + component;
        struct stat info;
        if (::lstat(name.c_str(), &info) != 0)
            return errno;
        const bool isLast = m_left.find_first_not_of('/') == std::string::npos;
        if (!S_ISLNK(info.st_mode) || (isLast && HoldsOpenFiles(m_done))) {
            if (!isLast && !S_ISDIR(info.st_mode))
                return ENOTDIR;
            m_done = name;
            return 0;
        }
        return Follow(name, info);
    }

    int Follow(const std::string& name, const struct stat& info) {
        if (++m_links > kMaxLinks)
            return ELOOP;
        if (IsPlanted(m_done, info))
            return EACCES;
        std::string text;
        if (const int error = ReadLink(name, text); error != 0)
            return error;
        if (text.starts_with('/'))
            m_done.clear();
        m_left.insert(0, text + "/");
        return 0;
    }

    std::string m_left; ///< what is still to be walked
    std::string m_done; ///< free of links; empty stands for the root
    int m_links = 0;
};

/// The descriptor that "/proc/<this process>/fd/N" stands for.
std::optional<int> OwnDescriptor(std::string_view resolved) {
    const std::string own = "/proc/" + std::to_string(::getpid()) + "/";
    const std::size_t slash = resolved.rfind('/');
    if (!resolved.starts_with(own) || !resolved.substr(0, slash).ends_with("/fd"))
        return std::nullopt;
    int descriptor = -1; // in such a folder all names are numbers
    std::from_chars(resolved.data() + slash + 1, resolved.data() + resolved.size(), descriptor);
    return descriptor;
}

} // namespace

int NativeSystem::ResolveName(const char* name, std::string& resolved) {
    if (*name == '\0')
        return ENOENT;
    std::string full = name;
    if (*name != '/') {
        std::array<char, PATH_MAX> folder;
        if (!::getcwd(folder.data(), folder.size()))
            return errno;
        full = std::string(folder.data()) + "/" + name;
    }
    return NameWalk(std::move(full)).Run(resolved);
}

int NativeSystem::OpenOwnStream(const char* name, FileHandle& handle) {
    std::string resolved;
    if (const int error = ResolveName(name, resolved); error != 0)
        return error;
    const std::optional<int> own = OwnDescriptor(resolved);
    if (!own)
        return ENOENT;
    const int flags = ::fcntl(*own, F_GETFL);
    if (flags < 0)
        return errno;
    if ((flags & O_ACCMODE) == O_RDONLY)
        return EACCES;
    const int copy = ::fcntl(*own, F_DUPFD_CLOEXEC, 3);
    if (copy < 0)
        return errno;
    handle = copy;
    return 0;
}

// --- folders -------------------------------------------------------------------------------------

int NativeSystem::SyncFolder(const char* folder) {
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

int NativeSystem::MakeFolder(const char* folder) {
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

int NativeSystem::ListFolder(const char* folder, std::vector<std::string>& names) {
    names.clear();
    const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(folder), &::closedir);
    if (!open)
        return errno;
    for (;;) {
        errno = 0; // taking memory may set it
        const dirent* const entry = ::readdir(open.get());
        if (!entry)
            return errno;
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
}

std::string NativeSystem::GetTemporaryFolder() {
    std::string folder = GetEnvironment("TMPDIR");
    struct stat info;
    if (folder.empty())
        folder = ::stat("/var/tmp", &info) == 0 ? "/var/tmp" : "/tmp";
    return AsFolderPrefix(folder);
}

} // namespace vnbytstr
