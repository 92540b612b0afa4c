// A System for tests that remembers, step by step, what a power cut would leave on the disk.
#pragma once

#include "tests/support/TestSystem.h"

#include <sys/types.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vnbytstr::test {

/// Passes all calls on to the real system and looks at a folder, with all folders in it, after
/// every call that may change something there. What a file holds is lost in a power cut until
/// SyncFile of that file; what its name leads to, until SyncFolder of the name's folder.
class PowerCutSystem final : public TestSystem {
public:
    using FileId = std::uint64_t;
    using Content = std::shared_ptr<const std::string>;
    struct File {
        Content now;    ///< what processes read; of a link "-> " and where it leads
        Content synced; ///< what a power cut leaves
        mode_t mode = 0;
    };
    using Names = std::map<std::string, FileId>; ///< relative to the watched folder
    /// What one call did to the names of one folder; 0 where a name went.
    struct NameChange {
        std::string folder;
        Names names;
    };
    /// The state after a call.
    struct Moment {
        std::string call;
        Names names;                     ///< as processes see them
        Names synced;                    ///< as a power cut leaves them at least
        std::vector<NameChange> pending; ///< what lies between the two, oldest first
        std::map<FileId, File> files;

        /// What processes read under that name, null when there is none.
        const File* Find(const std::string& name) const;
    };
    /// A disk after a power cut.
    using Disk = std::map<std::string, Content>;

    /// Watches `folder`, whose content counts as synced.
    explicit PowerCutSystem(const std::string& folder);
    ~PowerCutSystem() override;

    /// The states in their order; the first one is the one at the start.
    const std::vector<Moment>& Moments() const { return m_moments; }
    /// Visits each disk that a power cut at that moment may leave: each file with unsynced content
    /// has lost it, has kept it or has half of it; of the unsynced changes of names the first ones,
    /// none or all are there. `what` tells which.
    static void
    ForEachCut(const Moment& moment,
               const std::function<void(const Disk& disk, const std::string& what)>& visit);

    int OpenFile(const char* name, unsigned flags, FileHandle& handle) override;
    int CloseFile(FileHandle handle) override;
    int WriteFile(FileHandle handle, const void* buffer, std::size_t size,
                  std::size_t& done) override;
    int WriteFileGather(FileHandle handle, std::span<const std::span<const BYTE>> buffers,
                        std::size_t& done) override;
    int SetFileLength(FileHandle handle, std::uint64_t length) override;
    int SyncFile(FileHandle handle) override;
    int RemoveFile(const char* name) override;
    int RenameFile(const char* from, const char* to, bool replace) override;
    int ReleaseScratch(FileHandle handle) override;
    int SyncFolder(const char* folder) override;

private:
    /// Looks at the folder and adds a moment when anything is other than before.
    void Look(const std::string& call);
    void Scan(const std::string& folder, Moment& moment);
    void SyncContent(FileHandle handle);
    std::string Relative(const std::string& name) const;

    std::string m_root; // ends with a slash
    std::vector<Moment> m_moments;
    std::map<FileId, int> m_pins; // keep the numbers of removed files from being used again
};

} // namespace vnbytstr::test
