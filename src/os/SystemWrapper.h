// A System that passes every call on to another one. Derive from it to change some calls.
#pragma once

#include "src/os/System.h"

namespace vnbytstr {

class SystemWrapper : public System {
public:
    /// `target` must outlive the wrapper.
    explicit SystemWrapper(System& target) noexcept : m_target(target) {}

    int OpenFile(const char* name, unsigned flags, FileHandle& handle) override {
        return m_target.OpenFile(name, flags, handle);
    }
    int CloseFile(FileHandle handle) override { return m_target.CloseFile(handle); }
    int ReadFile(FileHandle handle, void* buffer, std::size_t size, std::size_t& done) override {
        return m_target.ReadFile(handle, buffer, size, done);
    }
    int WriteFile(FileHandle handle, const void* buffer, std::size_t size,
                  std::size_t& done) override {
        return m_target.WriteFile(handle, buffer, size, done);
    }
    int WriteFileGather(FileHandle handle, std::span<const std::span<const BYTE>> buffers,
                        std::size_t& done) override {
        return m_target.WriteFileGather(handle, buffers, done);
    }
    int SeekFile(FileHandle handle, std::int64_t offset, SeekOrigin origin,
                 std::uint64_t& position) override {
        return m_target.SeekFile(handle, offset, origin, position);
    }
    int GetFileLength(FileHandle handle, std::uint64_t& length) override {
        return m_target.GetFileLength(handle, length);
    }
    int SetFileLength(FileHandle handle, std::uint64_t length) override {
        return m_target.SetFileLength(handle, length);
    }
    int SyncFile(FileHandle handle) override { return m_target.SyncFile(handle); }
    int LockFile(FileHandle handle, bool exclusive, bool wait) override {
        return m_target.LockFile(handle, exclusive, wait);
    }
    int UnlockFile(FileHandle handle) override { return m_target.UnlockFile(handle); }
    std::string GetLockHolder(FileHandle handle) override { return m_target.GetLockHolder(handle); }
    int GetFileStatus(FileHandle handle, FileStatus& status) override {
        return m_target.GetFileStatus(handle, status);
    }
    int ReopenFile(FileHandle handle, unsigned flags, FileHandle& reopened) override {
        return m_target.ReopenFile(handle, flags, reopened);
    }
    int GetFileStatus(const char* name, FileStatus& status) override {
        return m_target.GetFileStatus(name, status);
    }
    int RemoveFile(const char* name) override { return m_target.RemoveFile(name); }
    int RenameFile(const char* from, const char* to, bool replace) override {
        return m_target.RenameFile(from, to, replace);
    }
    int ResolveName(const char* name, std::string& resolved) override {
        return m_target.ResolveName(name, resolved);
    }
    int OpenOwnStream(const char* name, FileHandle& handle) override {
        return m_target.OpenOwnStream(name, handle);
    }
    int ReleaseScratch(FileHandle handle) override { return m_target.ReleaseScratch(handle); }
    DWORD GetNewFileMode() override { return m_target.GetNewFileMode(); }
    int SetFileMode(FileHandle handle, DWORD mode) override {
        return m_target.SetFileMode(handle, mode);
    }
    int SetFileOwner(FileHandle handle, DWORD owner, DWORD group) override {
        return m_target.SetFileOwner(handle, owner, group);
    }
    int CopyFileAttributes(const char* from, FileHandle handle) override {
        return m_target.CopyFileAttributes(from, handle);
    }
    int SyncFolder(const char* folder) override { return m_target.SyncFolder(folder); }
    int MakeFolder(const char* folder) override { return m_target.MakeFolder(folder); }
    int ListFolder(const char* folder, std::vector<std::string>& names) override {
        return m_target.ListFolder(folder, names);
    }
    std::string GetTemporaryFolder() override { return m_target.GetTemporaryFolder(); }
    std::string GetErrorText(int error) override { return m_target.GetErrorText(error); }

    DWORD GetProcessId() override { return m_target.GetProcessId(); }
    bool IsPrivileged() override { return m_target.IsPrivileged(); }
    std::string GetEnvironment(const char* name) override { return m_target.GetEnvironment(name); }
    std::string GetModuleFileName() override { return m_target.GetModuleFileName(); }
    std::string GetLibraryFileName() override { return m_target.GetLibraryFileName(); }
    SystemVersion GetVersion() override { return m_target.GetVersion(); }
    void WriteDiagnostic(const char* text) override { m_target.WriteDiagnostic(text); }
    bool AskAtTerminal(const char* question, std::string& answer) override {
        return m_target.AskAtTerminal(question, answer);
    }

    DWORD GetTickCount() override { return m_target.GetTickCount(); }
    DWORD GetTime() override { return m_target.GetTime(); }
    DWORD GetMemoryLoad() override { return m_target.GetMemoryLoad(); }

    std::string GetTextLocale() override { return m_target.GetTextLocale(); }
    std::string GetMessagesLocale() override { return m_target.GetMessagesLocale(); }
    std::string MatchFontFamily(const std::string& family) override {
        return m_target.MatchFontFamily(family);
    }
    SystemRegistry* GetRegistry() override { return m_target.GetRegistry(); }

private:
    System& m_target;
};

} // namespace vnbytstr
