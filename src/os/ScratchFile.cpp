#include "src/os/ScratchFile.h"

#include "src/os/FileIdentity.h"
#include "src/os/Paths.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>

namespace vnbytstr {

namespace {

std::atomic<unsigned> g_counter{0};

constexpr std::array<std::string_view, 3> kPrefixes = {"~dat-", ".~new-", ".~old-"};

/// Takes a number off the front of `text`; false when there is none.
bool TakeNumber(std::string_view& text) noexcept {
    DWORD value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc())
        return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool TakeText(std::string_view& text, std::string_view expected) noexcept {
    if (!text.starts_with(expected))
        return false;
    text.remove_prefix(expected.size());
    return true;
}

} // namespace

bool LocksAreMissing(int error) noexcept {
    return error == ENOLCK || error == EOPNOTSUPP || error == ENOSYS || error == EINVAL ||
           error == EBADF;
}

int LockScratch(const char* name, FileHandle handle) {
    const int error = System::Current().LockFile(handle, true, false);
    // Between the making and the locking, the sweep may have taken the file for a dead one.
    if (error == EWOULDBLOCK)
        return EEXIST;
    if (error != 0 && !LocksAreMissing(error))
        return error;
    FileStatus own, named;
    if (const int failure = System::Current().GetFileStatus(handle, own))
        return failure;
    if (const int failure = System::Current().GetFileStatus(name, named))
        return failure == ENOENT ? EEXIST : failure;
    return !named.isLink && named.identity == own.identity ? 0 : EEXIST;
}

int OpenScratch(const char* name, FileHandle& handle) {
    System& system = System::Current();
    FileHandle opened;
    if (const int error = system.OpenFile(
            name, kOpenRead | kOpenWrite | kOpenCreate | kOpenExclusive | kOpenScratch, opened))
        return error;
    if (const int error = LockScratch(name, opened)) {
        if (error != EEXIST)
            system.RemoveFile(name);
        system.CloseFile(opened);
        return error;
    }
    handle = opened;
    return 0;
}

std::string ScratchName(ScratchUse use, DWORD process, unsigned counter) {
    return std::string(kPrefixes[static_cast<std::size_t>(use)]) + std::to_string(process) + "-" +
           std::to_string(counter) + ".tmp";
}

std::optional<ScratchUse> UseOfScratchName(std::string_view name) noexcept {
    for (std::size_t use = 0; use < kPrefixes.size(); ++use) {
        std::string_view rest = name;
        if (TakeText(rest, kPrefixes[use]) && TakeNumber(rest) && TakeText(rest, "-") &&
            TakeNumber(rest) && rest == ".tmp")
            return static_cast<ScratchUse>(use);
    }
    return std::nullopt;
}

int MakeScratch(ScratchUse use, const std::string& folder, std::string& name, FileHandle& handle) {
    const DWORD process = System::Current().GetProcessId();
    const std::string before = AsFolderPrefix(folder);
    for (;;) {
        name = before + ScratchName(use, process, g_counter.fetch_add(1));
        if (const int error = OpenScratch(name.c_str(), handle); error != EEXIST)
            return error;
    }
}

} // namespace vnbytstr
