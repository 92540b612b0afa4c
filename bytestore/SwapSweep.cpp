#include "bytestore/SwapSweep.h"

#include "platform/system/System.h"

#include <charconv>
#include <mutex>

namespace vnbytstr::detail {

namespace {

/// Reads a number off the front of `text`.
std::optional<DWORD> TakeNumber(std::string_view& text) noexcept {
    DWORD value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || text.empty() || text.front() < '0' || text.front() > '9')
        return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return value;
}

bool TakeText(std::string_view& text, std::string_view expected) noexcept {
    if (!text.starts_with(expected))
        return false;
    text.remove_prefix(expected.size());
    return true;
}

/// Removes the file when it is certain that its owner is gone.
void SweepFile(System& system, const std::string& name) {
    const auto isLeftBehind = [](const FileStatus& status) {
        return status.isRegular && !status.isLink && status.isOwn && status.isScratch;
    };
    FileStatus named;
    if (system.GetFileStatus(name.c_str(), named) != 0 || !isLeftBehind(named))
        return;
    FileHandle handle;
    if (system.OpenFile(name.c_str(), kOpenRead | kOpenScratch, handle) != 0)
        return;
    FileStatus opened;
    // The owner locks its file for as long as it lives; the lock falls with the process.
    if (system.LockFile(handle, true, false) == 0 && system.GetFileStatus(handle, opened) == 0 &&
        isLeftBehind(opened) && system.GetFileStatus(name.c_str(), named) == 0 &&
        named.identity == opened.identity)
        system.RemoveFile(name.c_str());
    system.CloseFile(handle);
}

} // namespace

std::optional<DWORD> OwnerOfSwapFile(std::string_view name) noexcept {
    if (!TakeText(name, "~") || !TakeText(name, kSwapPrefix) || !TakeText(name, "-"))
        return std::nullopt;
    const std::optional<DWORD> owner = TakeNumber(name);
    if (!owner || !TakeText(name, "-") || !TakeNumber(name) || name != ".tmp")
        return std::nullopt;
    return owner;
}

void SweepSwapFiles() {
    System& system = System::Current();
    const std::string folder = system.GetTemporaryFolder();
    std::vector<std::string> names;
    if (system.ListFolder(folder.c_str(), names) != 0)
        return;
    for (const std::string& name : names) {
        const std::optional<DWORD> owner = OwnerOfSwapFile(name);
        if (owner && *owner != system.GetProcessId())
            SweepFile(system, folder + name);
    }
}

void SweepSwapFilesOnce() {
    static std::once_flag once;
    std::call_once(once, SweepSwapFiles);
}

} // namespace vnbytstr::detail
