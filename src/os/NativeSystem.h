// The system of this platform. posix/ and windows/ define its functions, each for its own; what holds
// for one of them alone is said in PosixSystem.cpp and WindowsSystem.cpp.
#pragma once

#include "src/os/System.h"

namespace vnbytstr {

class NativeSystem final : public System {
public:
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
    int UnlockFile(FileHandle handle) override;
    std::string GetLockHolder(FileHandle handle) override;
    int GetFileStatus(FileHandle handle, FileStatus& status) override;
    int ReopenFile(FileHandle handle, unsigned flags, FileHandle& reopened) override;
    int GetFileStatus(const char* name, FileStatus& status) override;
    int RemoveFile(const char* name) override;
    int RenameFile(const char* from, const char* to, bool replace) override;
    int ReleaseScratch(FileHandle handle) override;
    DWORD GetNewFileMode() override;
    int SetFileMode(FileHandle handle, DWORD mode) override;
    int SetFileOwner(FileHandle handle, DWORD owner, DWORD group) override;
    int CopyFileAttributes(const char* from, FileHandle handle) override;
    int ResolveName(const char* name, std::string& resolved) override;
    int OpenOwnStream(const char* name, FileHandle& handle) override;
    int SyncFolder(const char* folder) override;
    int MakeFolder(const char* folder) override;
    int ListFolder(const char* folder, std::vector<std::string>& names) override;

    std::string GetTemporaryFolder() override;
    std::string GetErrorText(int error) override;
    DWORD GetProcessId() override;
    bool IsPrivileged() override;
    DWORD GetTickCount() override;
    DWORD GetTime() override;
    DWORD GetMemoryLoad() override;
    std::string GetEnvironment(const char* name) override;
    std::string GetModuleFileName() override;
    std::string GetLibraryFileName() override;
    std::string GetTextLocale() override;
    std::string GetMessagesLocale() override;
    SystemVersion GetVersion() override;
    std::string MatchFontFamily(const std::string& family) override;
    void WriteDiagnostic(const char* text) override;
    bool AskAtTerminal(const char* question, std::string& answer) override;
    SystemRegistry* GetRegistry() override;
};

} // namespace vnbytstr
