#include "src/os/LeftoverSweep.h"

#include "src/os/InPlaceWrite.h"
#include "src/os/OpenHandle.h"
#include "src/os/Paths.h"
#include "src/os/ScratchFile.h"

#include <mutex>
#include <new>
#include <vector>

namespace vnbytstr {

namespace {

constexpr std::size_t kMaxFoldersKnown = 256;

bool IsLeftOver(ScratchUse use, const FileStatus& status) {
    if (!status.isRegular || status.isLink)
        return false;
    switch (use) {
    case ScratchUse::Swap:
        return status.isOwn && status.isScratch; // without the mark it was kept on purpose
    case ScratchUse::New:
        return status.isOwn || System::Current().IsPrivileged();
    case ScratchUse::Old:
        return status.isOwn;
    }
    return false;
}

void SweepFile(ScratchUse use, const std::string& name) {
    System& system = System::Current();
    FileStatus named;
    if (system.GetFileStatus(name.c_str(), named) != 0 || !IsLeftOver(use, named))
        return;
    OpenHandle file; // closed when memory runs out, too: its lock would keep other sweeps away
    if (system.OpenFile(name.c_str(), kOpenRead | kOpenScratch, file.handle) != 0)
        return;
    FileStatus opened;
    // The owner locks its file for as long as it lives; the lock falls with the process. The number
    // in the name says nothing: it may be in use again.
    if (system.LockFile(file.handle, true, false) == 0 &&
        system.GetFileStatus(file.handle, opened) == 0 && IsLeftOver(use, opened) &&
        system.GetFileStatus(name.c_str(), named) == 0 && named.identity == opened.identity &&
        (use != ScratchUse::Old || RecoverInPlace(file.handle)))
        system.RemoveFile(name.c_str());
}

/// True the first time it is asked about a folder.
bool IsNewFolder(const std::string& folder) {
    static std::mutex mutex;
    static std::vector<FileIdentity> known;
    FileStatus status;
    if (System::Current().GetFileStatus(folder.c_str(), status) != 0)
        return false;
    const std::lock_guard lock(mutex);
    for (const FileIdentity& identity : known)
        if (identity == status.identity)
            return false;
    if (known.size() == kMaxFoldersKnown)
        known.clear();
    known.push_back(status.identity);
    return true;
}

} // namespace

void SweepLeftovers(const std::string& folder) try {
    std::vector<std::string> names;
    if (System::Current().ListFolder(folder.c_str(), names) != 0)
        return;
    const std::string before = AsFolderPrefix(folder);
    for (const std::string& name : names)
        if (const std::optional<ScratchUse> use = UseOfScratchName(name))
            SweepFile(*use, before + name);
} catch (const std::bad_alloc&) {
    // Another process will do it.
}

void SweepLeftoversOnce(const std::string& folder) {
    if (IsNewFolder(folder))
        SweepLeftovers(folder);
}

} // namespace vnbytstr
