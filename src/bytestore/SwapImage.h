// What a store knows of its swap file beyond the open file itself: whose it is, and what each page
// in it should look like.
#pragma once

#include "src/os/FileIdentity.h"

#include <span>

namespace vnbytstr::detail {

/// What the swap file holds of one page.
class PageOnFile {
public:
    /// The file has bytes of the page that the store did not write.
    void SetPresent() noexcept { m_state = kUnchecked; }
    /// The store wrote these bytes, from the page's beginning.
    void SetWritten(std::span<const BYTE> bytes) noexcept;
    void SetAbsent() noexcept { m_state = 0; }

    bool IsPresent() const noexcept { return m_state != 0; }
    /// Bytes that were written; 0 when that is not known.
    DWORD GetCount() const noexcept { return m_state == kUnchecked ? 0 : m_state; }
    /// Whether the bytes that were read, from the page's beginning, are those that were written.
    bool Matches(std::span<const BYTE> read) const noexcept;

private:
    static constexpr DWORD kUnchecked = 0xFFFFFFFF;
    DWORD m_state = 0;    ///< 0 absent, kUnchecked, else the number of bytes written
    DWORD m_checksum = 0; ///< CRC-32C of them
};

/// Whose files the swap file and the one under the store's name are.
struct SwapImage {
    /// The open swap file.
    FileIdentity image;
    /// The file that the store has put under its name, or opened there; unknown when the store must
    /// not change the name.
    FileIdentity named;
    /// The file `named` while that is not the swap file; open for its lock.
    FileHandle shifted = kNoFile;
    DWORD process = 0;        ///< the process that opened the swap file
    bool isGenerated = false; ///< made by the store, under a generated name
    bool isBorrowed = false;  ///< the parent process's file, open for reading
    bool isSuspect = false;   ///< a sync has failed: what is on the disk is unknown
};

} // namespace vnbytstr::detail
