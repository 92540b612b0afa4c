// A System for tests: passes calls to the real one, sets clock, memory load and environment, and
// makes chosen calls fail, fall short or land elsewhere.
#pragma once

#include "src/os/Paths.h"
#include "src/os/SystemWrapper.h"

#include <array>
#include <cerrno>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string_view>

namespace vnbytstr::test {

enum class Call : unsigned char {
    Open,
    Close,
    Read,
    Write,
    Seek,
    Length,
    SetLength,
    Sync,
    Lock,
    Status,
    Remove,
    Rename,
    Release, ///< permissions, owner and attributes too
    Resolve,
    SyncFolder,
    MakeFolder,
    ListFolder,
    Any ///< stands for all of them
};
const char* CallName(Call call);

struct Fault {
    enum class Kind { Fail, Shorten, Nothing, Misplace, Throw, Kill };
    static constexpr int kKilled = 77; ///< exit status of a process that Kill has ended
    Call call = Call::Any;
    unsigned at = 1;         ///< which of the matching calls, counted from 1 at Inject
    bool fromThenOn = false; ///< that one and all after it, not that one alone
    int error = EIO;
    Kind kind = Kind::Fail; ///< Shorten: a read or write moves half; Nothing: it moves none;
                            ///< Misplace: a seek lands one off; Throw: memory runs out
                            ///< (CMemoryException); Kill: the process ends at once
};

class TestSystem : public SystemWrapper {
public:
    TestSystem() : SystemWrapper(System::Current()) {}

    void SetTick(DWORD tick) { m_tick = tick; }
    void SetTime(DWORD seconds) { m_time = seconds; }
    void SetMemoryLoad(DWORD percent) { m_memoryLoad = percent; }
    void SetEnvironment(const std::string& name, const std::string& value) {
        m_environment[name] = value;
    }
    void SetTemporaryFolder(const std::string& folder) { m_temporaryFolder = folder; }
    void SetModuleFileName(const std::string& name) { m_moduleFileName = name; }
    void SetLibraryFileName(const std::string& name) { m_libraryFileName = name; }
    void SetProcessId(DWORD id) { m_processId = id; }
    /// What MatchFontFamily answers.
    void SetFontFamily(const std::string& family) { m_fontFamily = family; }
    void SetVersion(SystemVersion version) { m_version = version; }
    /// Puts that folder, which is there, on a device of its own: no file is renamed into it or out of
    /// it.
    void SetOtherDevice(const std::string& folder) { m_otherDevice = FolderIdentity(folder); }
    /// That folder, which is there, takes no new names and keeps those it has.
    void SetClosedFolder(const std::string& folder) { m_closedFolder = FolderIdentity(folder); }
    /// How many calls were refused because of those two.
    unsigned RefusedNames() const { return m_refused; }
    /// Lets syncing succeed without waiting for the disk.
    void SetSyncsNothing() { m_syncsNothing = true; }

    /// Sets the one fault, counting from now; none takes it away.
    void Inject(std::optional<Fault> fault);
    /// What another process does just before the `at`-th of the coming calls.
    void Before(Call call, unsigned at, std::function<void()> action);
    /// How many calls the fault in force has hit.
    unsigned Hits() const { return m_hits; }
    unsigned Count(Call call) const;
    void ResetCounts() { m_counts.fill(0); }
    /// Handles opened through this system and not closed yet.
    const std::set<FileHandle>& OpenHandles() const { return m_open; }
    const std::string& Diagnostics() const { return m_diagnostics; }

    int OpenFile(const char* name, unsigned flags, FileHandle& handle) override;
    int CloseFile(FileHandle handle) override;
    int ReadFile(FileHandle handle, void* buffer, std::size_t size, std::size_t& done) override;
    int WriteFile(FileHandle handle, const void* buffer, std::size_t size,
                  std::size_t& done) override;
    int WriteFileGather(FileHandle handle, std::span<const std::span<const BYTE>> buffers,
                        std::size_t& done) override;
    int SeekFile(FileHandle handle, std::int64_t offset, SeekOrigin origin,
                 std::uint64_t& position) override;
    int GetFileLength(FileHandle handle, std::uint64_t& length) override;
    int SetFileLength(FileHandle handle, std::uint64_t length) override;
    int SyncFile(FileHandle handle) override;
    int LockFile(FileHandle handle, bool exclusive, bool wait) override;
    int GetFileStatus(FileHandle handle, FileStatus& status) override;
    int ReopenFile(FileHandle handle, unsigned flags, FileHandle& reopened) override;
    int GetFileStatus(const char* name, FileStatus& status) override;
    int RemoveFile(const char* name) override;
    int RenameFile(const char* from, const char* to, bool replace) override;
    int ReleaseScratch(FileHandle handle) override;
    int SetFileMode(FileHandle handle, DWORD mode) override;
    int SetFileOwner(FileHandle handle, DWORD owner, DWORD group) override;
    int CopyFileAttributes(const char* from, FileHandle handle) override;
    int ResolveName(const char* name, std::string& resolved) override;
    int OpenOwnStream(const char* name, FileHandle& handle) override;
    int SyncFolder(const char* folder) override;
    int MakeFolder(const char* folder) override;
    int ListFolder(const char* folder, std::vector<std::string>& names) override;

    std::string GetTemporaryFolder() override;
    DWORD GetProcessId() override;
    DWORD GetTickCount() override;
    DWORD GetTime() override { return m_time ? *m_time : SystemWrapper::GetTime(); }
    DWORD GetMemoryLoad() override;
    std::string GetEnvironment(const char* name) override;
    /// None, so that what stands beside the test program is not found by chance.
    std::string GetLibraryFileName() override { return m_libraryFileName; }
    std::string GetModuleFileName() override {
        return m_moduleFileName ? *m_moduleFileName : SystemWrapper::GetModuleFileName();
    }
    std::string GetTextLocale() override;
    std::string GetMessagesLocale() override;
    SystemVersion GetVersion() override {
        return m_version ? *m_version : SystemWrapper::GetVersion();
    }
    std::string MatchFontFamily(const std::string& family) override {
        return m_fontFamily ? *m_fontFamily : SystemWrapper::MatchFontFamily(family);
    }
    void WriteDiagnostic(const char* text) override { m_diagnostics += std::string(text) + "\n"; }

private:
    /// The locale that the test's environment sets for a category, else empty.
    std::string FindLocale(const char* category) const;
    /// The fault that hits this call, if any; counts the call.
    std::optional<Fault> Take(Call call);
    /// Counts the call; the error to fail with, or 0.
    int Failure(Call call);

    std::optional<DWORD> m_tick, m_time, m_memoryLoad, m_processId;
    std::optional<std::string> m_temporaryFolder, m_moduleFileName, m_fontFamily;
    std::string m_libraryFileName;
    std::optional<SystemVersion> m_version;
    std::map<std::string, std::string> m_environment;
    /// Unknown when there is no such folder.
    FileIdentity FolderIdentity(const std::string& folder);
    /// Whether a name is in that folder, in whatever way it is spelt.
    bool IsIn(const FileIdentity& folder, const char* name) {
        return folder.IsKnown() && FolderIdentity(FolderOf(name)) == folder;
    }
    bool IsClosed(const char* name) { return IsIn(m_closedFolder, name) && ++m_refused > 0; }

    FileIdentity m_otherDevice, m_closedFolder;
    unsigned m_refused = 0;
    bool m_syncsNothing = false;
    std::optional<Fault> m_fault;
    unsigned m_seen = 0, m_hits = 0;
    std::function<void()> m_before;
    Call m_beforeCall = Call::Any;
    unsigned m_beforeLeft = 0;
    std::array<unsigned, static_cast<std::size_t>(Call::Any)> m_counts{};
    std::set<FileHandle> m_open;
    std::string m_diagnostics;
};

} // namespace vnbytstr::test
