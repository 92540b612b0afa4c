#include "tests/support/TestSystem.h"

#include "vnbytstr/framework/Exception.h"

#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <string_view>
#include <utility>

#ifdef VNBYTSTR_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace vnbytstr::test {

const char* CallName(Call call) {
    constexpr std::array kNames = {
        "open",       "close",   "read",        "write",       "seek",        "length",
        "set length", "sync",    "lock",        "status",      "remove",      "rename",
        "release",    "resolve", "sync folder", "make folder", "list folder", "any"};
    return kNames[static_cast<std::size_t>(call)];
}

void TestSystem::Inject(std::optional<Fault> fault) {
    m_fault = fault;
    m_seen = m_hits = 0;
}

void TestSystem::Before(Call call, unsigned at, std::function<void()> action) {
    m_beforeCall = call;
    m_beforeLeft = at;
    m_before = std::move(action);
}

unsigned TestSystem::Count(Call call) const {
    if (call == Call::Any)
        return std::accumulate(m_counts.begin(), m_counts.end(), 0u);
    return m_counts[static_cast<std::size_t>(call)];
}

std::optional<Fault> TestSystem::Take(Call call) {
    ++m_counts[static_cast<std::size_t>(call)];
    if (m_before && call == m_beforeCall && --m_beforeLeft == 0)
        std::exchange(m_before, nullptr)();
    if (!m_fault || (m_fault->call != Call::Any && m_fault->call != call))
        return std::nullopt;
    ++m_seen;
    if (m_seen != m_fault->at && !(m_fault->fromThenOn && m_seen > m_fault->at))
        return std::nullopt;
    if (++m_hits > 10000000) {
        std::fputs("The call that fails is made for ever.\n", stderr);
        std::abort();
    }
    if (m_fault->kind == Fault::Kind::Kill) {
#ifdef VNBYTSTR_COVERAGE
        ::__gcov_dump();
#endif
        std::_Exit(Fault::kKilled);
    }
    if (m_fault->kind == Fault::Kind::Throw)
        AfxThrowMemoryException();
    return m_fault;
}

int TestSystem::Failure(Call call) {
    const std::optional<Fault> fault = Take(call);
    return fault && fault->kind == Fault::Kind::Fail ? fault->error : 0;
}

int TestSystem::OpenFile(const char* name, unsigned flags, FileHandle& handle) {
    if (const int error = Failure(Call::Open))
        return error;
    FileStatus status;
    if ((flags & kOpenCreate) && SystemWrapper::GetFileStatus(name, status) == ENOENT &&
        IsClosed(name))
        return EACCES;
    const int error = SystemWrapper::OpenFile(name, flags, handle);
    if (error == 0)
        m_open.insert(handle);
    return error;
}

int TestSystem::CloseFile(FileHandle handle) {
    const int failure = Failure(Call::Close);
    m_open.erase(handle);
    const int error = SystemWrapper::CloseFile(handle); // a close that fails closes all the same
    return failure ? failure : error;
}

int TestSystem::ReadFile(FileHandle handle, void* buffer, std::size_t size, std::size_t& done) {
    done = 0;
    if (const std::optional<Fault> fault = Take(Call::Read)) {
        if (fault->kind == Fault::Kind::Fail)
            return fault->error;
        size = fault->kind == Fault::Kind::Nothing ? 0 : size / 2;
    }
    return SystemWrapper::ReadFile(handle, buffer, size, done);
}

int TestSystem::WriteFile(FileHandle handle, const void* buffer, std::size_t size,
                          std::size_t& done) {
    done = 0;
    if (const std::optional<Fault> fault = Take(Call::Write)) {
        if (fault->kind == Fault::Kind::Fail)
            return fault->error;
        if (fault->kind == Fault::Kind::Nothing)
            return 0;
        size = (size + 1) / 2;
    }
    return SystemWrapper::WriteFile(handle, buffer, size, done);
}

int TestSystem::WriteFileGather(FileHandle handle, std::span<const std::span<const BYTE>> buffers,
                                std::size_t& done) {
    done = 0;
    if (const std::optional<Fault> fault = Take(Call::Write)) {
        if (fault->kind == Fault::Kind::Fail)
            return fault->error;
        if (fault->kind == Fault::Kind::Nothing)
            return 0;
        const std::span<const BYTE> half = buffers[0].first((buffers[0].size() + 1) / 2);
        return SystemWrapper::WriteFile(handle, half.data(), half.size(), done);
    }
    return SystemWrapper::WriteFileGather(handle, buffers, done);
}

int TestSystem::SeekFile(FileHandle handle, std::int64_t offset, SeekOrigin origin,
                         std::uint64_t& position) {
    if (const std::optional<Fault> fault = Take(Call::Seek)) {
        if (fault->kind == Fault::Kind::Fail)
            return fault->error;
        ++offset;
    }
    return SystemWrapper::SeekFile(handle, offset, origin, position);
}

int TestSystem::GetFileLength(FileHandle handle, std::uint64_t& length) {
    const int error = Failure(Call::Length);
    return error ? error : SystemWrapper::GetFileLength(handle, length);
}

int TestSystem::SetFileLength(FileHandle handle, std::uint64_t length) {
    const int error = Failure(Call::SetLength);
    return error ? error : SystemWrapper::SetFileLength(handle, length);
}

int TestSystem::SyncFile(FileHandle handle) {
    const int error = Failure(Call::Sync);
    return error || m_syncsNothing ? error : SystemWrapper::SyncFile(handle);
}

int TestSystem::LockFile(FileHandle handle, bool exclusive, bool wait) {
    const int error = Failure(Call::Lock);
    return error ? error : SystemWrapper::LockFile(handle, exclusive, wait);
}

int TestSystem::GetFileStatus(FileHandle handle, FileStatus& status) {
    const int error = Failure(Call::Status);
    return error ? error : SystemWrapper::GetFileStatus(handle, status);
}

int TestSystem::GetFileStatus(const char* name, FileStatus& status) {
    const int error = Failure(Call::Status);
    return error ? error : SystemWrapper::GetFileStatus(name, status);
}

int TestSystem::RemoveFile(const char* name) {
    if (const int error = Failure(Call::Remove))
        return error;
    return IsClosed(name) ? EACCES : SystemWrapper::RemoveFile(name);
}

int TestSystem::RenameFile(const char* from, const char* to, bool replace) {
    if (const int error = Failure(Call::Rename))
        return error;
    if (IsClosed(from) || IsClosed(to))
        return EACCES;
    if (IsIn(m_otherDevice, from) == IsIn(m_otherDevice, to))
        return SystemWrapper::RenameFile(from, to, replace);
    ++m_refused;
    return EXDEV;
}

FileIdentity TestSystem::FolderIdentity(const std::string& folder) {
    FileStatus status;
    return SystemWrapper::GetFileStatus(folder.c_str(), status) == 0 ? status.identity
                                                                     : FileIdentity();
}

int TestSystem::ReleaseScratch(FileHandle handle) {
    const int error = Failure(Call::Release);
    return error ? error : SystemWrapper::ReleaseScratch(handle);
}

int TestSystem::SetFileMode(FileHandle handle, DWORD mode) {
    const int error = Failure(Call::Release);
    return error ? error : SystemWrapper::SetFileMode(handle, mode);
}

int TestSystem::SetFileOwner(FileHandle handle, DWORD owner, DWORD group) {
    const int error = Failure(Call::Release);
    return error ? error : SystemWrapper::SetFileOwner(handle, owner, group);
}

int TestSystem::CopyFileAttributes(const char* from, FileHandle handle) {
    const int error = Failure(Call::Release);
    return error ? error : SystemWrapper::CopyFileAttributes(from, handle);
}

int TestSystem::ResolveName(const char* name, std::string& resolved) {
    const int error = Failure(Call::Resolve);
    return error ? error : SystemWrapper::ResolveName(name, resolved);
}

int TestSystem::OpenOwnStream(const char* name, FileHandle& handle) {
    const int error = SystemWrapper::OpenOwnStream(name, handle);
    if (error == 0)
        m_open.insert(handle);
    return error;
}

int TestSystem::ReopenFile(FileHandle handle, unsigned flags, FileHandle& reopened) {
    if (const int error = Failure(Call::Open))
        return error;
    const int error = SystemWrapper::ReopenFile(handle, flags, reopened);
    if (error == 0)
        m_open.insert(reopened);
    return error;
}

int TestSystem::SyncFolder(const char* folder) {
    const int error = Failure(Call::SyncFolder);
    return error || m_syncsNothing ? error : SystemWrapper::SyncFolder(folder);
}

int TestSystem::MakeFolder(const char* folder) {
    const int error = Failure(Call::MakeFolder);
    return error ? error : SystemWrapper::MakeFolder(folder);
}

int TestSystem::ListFolder(const char* folder, std::vector<std::string>& names) {
    const int error = Failure(Call::ListFolder);
    return error ? error : SystemWrapper::ListFolder(folder, names);
}

std::string TestSystem::GetTemporaryFolder() {
    return m_temporaryFolder ? *m_temporaryFolder : SystemWrapper::GetTemporaryFolder();
}

DWORD TestSystem::GetProcessId() {
    return m_processId ? *m_processId : SystemWrapper::GetProcessId();
}

DWORD TestSystem::GetTickCount() { return m_tick ? *m_tick : SystemWrapper::GetTickCount(); }

DWORD TestSystem::GetMemoryLoad() {
    return m_memoryLoad ? *m_memoryLoad : SystemWrapper::GetMemoryLoad();
}

std::string TestSystem::GetEnvironment(const char* name) {
    const auto found = m_environment.find(name);
    return found != m_environment.end() ? found->second : SystemWrapper::GetEnvironment(name);
}

std::string TestSystem::FindLocale(const char* category) const {
    for (const char* variable : {"LC_ALL", category, "LANG"}) {
        const auto found = m_environment.find(variable);
        if (found != m_environment.end() && !found->second.empty())
            return found->second;
    }
    return {};
}

std::string TestSystem::GetTextLocale() {
    const std::string locale = FindLocale("LC_CTYPE");
    return locale.empty() ? SystemWrapper::GetTextLocale() : locale;
}

std::string TestSystem::GetMessagesLocale() {
    const std::string locale = FindLocale("LC_MESSAGES");
    return locale.empty() ? SystemWrapper::GetMessagesLocale() : locale;
}

} // namespace vnbytstr::test
