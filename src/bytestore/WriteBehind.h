// Pages on their way from memory to the swap file, gathered so that neighbours go in one write.
#pragma once

#include "vnbytstr/ByteStore.h"

#include <array>
#include <span>

namespace vnbytstr::detail {

/// A short run of consecutive pages that have left a store's cache but are not in its file yet.
/// Knows nothing of files. While the clock stands still the cache drops pages one by one in the
/// order of their creation; without this, each would be written separately.
class WriteBehind {
public:
    /// 8 pages are 256 KiB; larger writes are not faster.
    static constexpr std::size_t kMaxPages = 8;

    WriteBehind() = default;
    ~WriteBehind();
    WriteBehind(const WriteBehind&) = delete;
    WriteBehind& operator=(const WriteBehind&) = delete;

    bool IsEmpty() const noexcept { return m_count == 0; }
    bool IsFull() const noexcept { return m_count == kMaxPages; }
    DWORD FirstPage() const noexcept { return m_first; }
    /// The pages' bytes, in order.
    std::span<const std::span<const BYTE>> Buffers() noexcept;
    /// The bytes of a page that waits here; null when it does not.
    const BYTE* Find(DWORD number) const noexcept;

    /// Takes the buffer of page `number` and puts another, of undefined content, in its place.
    /// REQUIRES: the run is not full, and the page follows it. False, with nothing changed, when
    /// there is no memory for the other buffer.
    bool Take(DWORD number, BYTE*& buffer) noexcept;
    /// All pages have been written, or are no longer needed.
    void Clear() noexcept { m_count = 0; }
    /// Forgets the pages from `number` on.
    void DropFrom(DWORD number) noexcept;

private:
    DWORD m_first = 0;
    std::size_t m_count = 0;
    std::array<BYTE*, kMaxPages>
        m_buffers{}; ///< the first m_count hold pages, the others wait for use
    std::array<std::span<const BYTE>, kMaxPages> m_spans;
};

} // namespace vnbytstr::detail
