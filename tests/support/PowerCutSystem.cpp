#include "tests/support/PowerCutSystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace vnbytstr::test {

namespace {

std::string FolderPart(const std::string& name) {
    const std::size_t slash = name.rfind('/');
    return slash == std::string::npos ? std::string() : name.substr(0, slash);
}

std::string ReadAll(int descriptor) {
    std::string content;
    std::array<char, 65536> buffer;
    for (off_t at = 0;;) {
        const ssize_t done = ::pread(descriptor, buffer.data(), buffer.size(), at);
        if (done <= 0)
            return content;
        content.append(buffer.data(), static_cast<std::size_t>(done));
        at += done;
    }
}

/// The new length, the first half of what differs new, the rest old.
PowerCutSystem::Content HalfWritten(const std::string& old, const std::string& now) {
    auto half = std::make_shared<std::string>(old);
    half->resize(now.size());
    const auto differs = std::mismatch(now.begin(), now.end(), half->begin()).first;
    const auto end = differs + (now.end() - differs) / 2;
    std::copy(now.begin(), end, half->begin());
    return half;
}

} // namespace

const PowerCutSystem::File* PowerCutSystem::Moment::Find(const std::string& name) const {
    const auto found = names.find(name);
    return found != names.end() ? &files.at(found->second) : nullptr;
}

PowerCutSystem::PowerCutSystem(const std::string& folder)
    : m_root(std::filesystem::canonical(folder).string() + "/") {
    Moment start;
    start.call = "start";
    Scan("", start);
    start.synced = start.names;
    for (auto& [id, file] : start.files)
        file.synced = file.now;
    m_moments.push_back(std::move(start));
}

PowerCutSystem::~PowerCutSystem() {
    for (const auto& [id, pin] : m_pins)
        ::close(pin);
}

void PowerCutSystem::Scan(const std::string& folder, Moment& moment) {
    static const Content nothing = std::make_shared<const std::string>();
    for (const auto& entry : std::filesystem::directory_iterator(m_root + folder)) {
        const std::string name = entry.path().string().substr(m_root.size());
        struct stat info;
        if (::lstat(entry.path().c_str(), &info) != 0)
            throw std::runtime_error("a file went while it was looked at");
        if (S_ISDIR(info.st_mode)) {
            Scan(name, moment);
            continue;
        }
        const FileId id = info.st_ino;
        if (!m_pins.contains(id))
            m_pins[id] = ::open(entry.path().c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC);
        moment.names[name] = id;
        std::string content;
        if (S_ISLNK(info.st_mode)) {
            content = "-> " + std::filesystem::read_symlink(entry.path()).string();
        } else if (S_ISREG(info.st_mode)) {
            const int descriptor = ::open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
            content = ReadAll(descriptor);
            ::close(descriptor);
        }
        File& file = moment.files[id];
        file.mode = info.st_mode & 0777;
        if (!file.now || *file.now != content)
            file.now = std::make_shared<const std::string>(std::move(content));
        if (!file.synced) // a link is there with its name
            file.synced = S_ISLNK(info.st_mode) ? file.now : nothing;
    }
}

void PowerCutSystem::Look(const std::string& call) {
    const int error = errno;
    const Moment& before = m_moments.back();
    Moment after = before;
    after.call = call;
    after.names.clear();
    Scan("", after);

    std::map<std::string, NameChange> changes; // by folder
    const auto note = [&](const std::string& name, FileId id) {
        NameChange& change = changes[FolderPart(name)];
        change.folder = FolderPart(name);
        change.names[name] = id;
    };
    for (const auto& [name, id] : after.names) {
        const auto found = before.names.find(name);
        if (found == before.names.end() || found->second != id)
            note(name, id);
    }
    for (const auto& [name, id] : before.names) {
        if (!after.names.contains(name))
            note(name, 0);
    }
    const auto isSame = [](const auto& a, const auto& b) {
        return a.first == b.first && a.second.now == b.second.now && a.second.mode == b.second.mode;
    };
    if (changes.empty() && std::equal(before.files.begin(), before.files.end(), after.files.begin(),
                                      after.files.end(), isSame)) {
        errno = error;
        return;
    }
    for (auto& [folder, change] : changes)
        after.pending.push_back(std::move(change));
    m_moments.push_back(std::move(after));
    errno = error;
}

void PowerCutSystem::SyncContent(FileHandle handle) {
    struct stat info;
    if (::fstat(static_cast<int>(handle), &info) != 0)
        return;
    Moment after = m_moments.back();
    const auto found = after.files.find(info.st_ino);
    if (found == after.files.end())
        return;
    found->second.synced = found->second.now;
    after.call = "sync";
    m_moments.push_back(std::move(after));
}

std::string PowerCutSystem::Relative(const std::string& name) const {
    std::error_code ignored;
    const std::string full = std::filesystem::canonical(name, ignored).string() + "/";
    return full.starts_with(m_root)
               ? full.substr(m_root.size(), full.size() - m_root.size() - (full != m_root ? 1 : 0))
               : "outside/";
}

void PowerCutSystem::ForEachCut(
    const Moment& moment,
    const std::function<void(const Disk& disk, const std::string& what)>& visit) {
    constexpr std::size_t kMaxChosen = 4; // files whose fates are chosen one by one
    std::vector<FileId> dirty;
    for (const auto& [id, file] : moment.files) {
        if (file.now != file.synced && *file.now != *file.synced && dirty.size() < kMaxChosen)
            dirty.push_back(id);
    }
    std::size_t fates = 1;
    for (std::size_t i = 0; i < dirty.size(); ++i)
        fates *= 3;
    Names names = moment.synced;
    for (std::size_t kept = 0; kept <= moment.pending.size(); ++kept) {
        if (kept > 0) {
            for (const auto& [name, id] : moment.pending[kept - 1].names) {
                if (id == 0)
                    names.erase(name);
                else
                    names[name] = id;
            }
        }
        for (std::size_t fate = 0; fate < fates; ++fate) {
            std::map<FileId, Content> chosen;
            std::size_t rest = fate;
            std::string what = "after " + moment.call + ", " + std::to_string(kept) + " of " +
                               std::to_string(moment.pending.size()) +
                               " unsynced changes of names, unsynced content ";
            for (const FileId id : dirty) {
                const File& file = moment.files.at(id);
                chosen[id] = rest % 3 == 0   ? file.synced
                             : rest % 3 == 1 ? HalfWritten(*file.synced, *file.now)
                                             : file.now;
                what += rest % 3 == 0 ? "lost " : rest % 3 == 1 ? "half there " : "there ";
                rest /= 3;
            }
            Disk disk;
            for (const auto& [name, id] : names) {
                const auto found = chosen.find(id);
                disk[name] = found != chosen.end() ? found->second : moment.files.at(id).synced;
            }
            visit(disk, what);
        }
    }
}

int PowerCutSystem::OpenFile(const char* name, unsigned flags, FileHandle& handle) {
    const int error = TestSystem::OpenFile(name, flags, handle);
    Look(std::string("opening ") + name);
    return error;
}

int PowerCutSystem::CloseFile(FileHandle handle) {
    Look("the call before closing");
    return TestSystem::CloseFile(handle);
}

int PowerCutSystem::WriteFile(FileHandle handle, const void* buffer, std::size_t size,
                              std::size_t& done) {
    const int error = TestSystem::WriteFile(handle, buffer, size, done);
    Look("writing");
    return error;
}

int PowerCutSystem::WriteFileGather(FileHandle handle,
                                    std::span<const std::span<const BYTE>> buffers,
                                    std::size_t& done) {
    const int error = TestSystem::WriteFileGather(handle, buffers, done);
    Look("writing");
    return error;
}

int PowerCutSystem::SetFileLength(FileHandle handle, std::uint64_t length) {
    const int error = TestSystem::SetFileLength(handle, length);
    Look("setting the length");
    return error;
}

int PowerCutSystem::SyncFile(FileHandle handle) {
    Look("the call before syncing");
    const int error = TestSystem::SyncFile(handle);
    if (error == 0)
        SyncContent(handle);
    return error;
}

int PowerCutSystem::RemoveFile(const char* name) {
    const int error = TestSystem::RemoveFile(name);
    Look(std::string("removing ") + name);
    return error;
}

int PowerCutSystem::RenameFile(const char* from, const char* to, bool replace) {
    Look("the call before renaming");
    const int error = TestSystem::RenameFile(from, to, replace);
    Look(std::string("renaming to ") + to);
    return error;
}

int PowerCutSystem::ReleaseScratch(FileHandle handle) {
    const int error = TestSystem::ReleaseScratch(handle);
    Look("taking the mark off");
    return error;
}

int PowerCutSystem::SyncFolder(const char* folder) {
    Look("the call before syncing a folder");
    const int error = TestSystem::SyncFolder(folder);
    if (error != 0)
        return error;
    Moment after = m_moments.back();
    const std::string synced = Relative(folder);
    for (const NameChange& change : after.pending) {
        if (change.folder != synced)
            continue;
        for (const auto& [name, id] : change.names) {
            if (id == 0)
                after.synced.erase(name);
            else
                after.synced[name] = id;
        }
    }
    std::erase_if(after.pending, [&](const NameChange& change) { return change.folder == synced; });
    after.call = "syncing a folder";
    m_moments.push_back(std::move(after));
    return 0;
}

} // namespace vnbytstr::test
