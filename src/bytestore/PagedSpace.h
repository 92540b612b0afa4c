// A sequence of bytes that does not end at 4 GiB: several stores, one after the other, under one
// 64-bit position. Several such spaces share one allowance of pages.
#pragma once

#include "vnbytstr/ByteStore.h"

#include <memory>
#include <span>
#include <vector>

namespace vnbytstr::detail {

/// One store of a space.
class Segment : public CByteStore {
public:
    Segment() { SetPageLimit(1); } // which keeps it from gathering pages beside the cache

    bool IsResident(DWORD number) const { return IsPageResident(number); }
    /// When the page that would leave next was last used. There must be a page.
    DWORD OldestUse() const { return GetPageToDiscard()->GetLastAccessTime(); }
    /// Writes that page if need be, and gives its memory back.
    void GiveUpPage() { SetMaxPages(static_cast<int>(GetResidentPageCount()) - 1); }
    bool GiveUpCleanPage() noexcept { return DropCleanPage(); }
};

/// How many pages the segments of several spaces may have in memory together. The least recently
/// used page of all leaves when another one is needed.
class PageAllowance {
public:
    explicit PageAllowance(DWORD pages) : m_pages(pages) {}

    void Add(Segment& segment) { m_segments.push_back(&segment); }
    void Remove(Segment& segment) noexcept { std::erase(m_segments, &segment); }
    /// Pages in memory, of all segments.
    DWORD GetResidentPageCount() const;
    /// Changes whenever bytes may have moved or left memory.
    ULONGLONG Generation() const { return m_generation; }
    void NoteMoved() { ++m_generation; }

    /// Before a page is appended or will be changed: lets `segment` have one page more.
    /// CCacheException(4) when none can leave.
    void MakeRoomToWrite(Segment& segment);
    /// Before a page is read: the same; but while no page can be written (a full disk) one that
    /// need not be gives way, or a few pages more than allowed are taken, so that what is there can
    /// still be read.
    void MakeRoomToRead(Segment& segment);
    /// A page that a space fills while its own is stored, which it then takes in exchange.
    BYTE* SpareTail();
    bool HasSpare() const { return m_spare != nullptr; }
    void SwapTail(std::unique_ptr<BYTE[]>& tail) noexcept { m_spare.swap(tail); }

    /// Before a page in memory is changed: goes back to the allowed number of pages.
    void Settle();

private:
    static constexpr DWORD kMoreWhenFull = 3; // one for each of a row store's spaces

    void GiveUpOldest();
    bool GiveUpClean() noexcept;
    void LetGrow(Segment& segment);

    const DWORD m_pages;
    ULONGLONG m_generation = 1;
    std::vector<Segment*> m_segments;
    std::unique_ptr<BYTE[]> m_spare;
};

/// Invariants:
///  1. Every segment but the last is m_segmentBytes long; all are multiples of a page, and their
///     lengths add up to m_stored.
///  2. The bytes from m_stored on, at most one page of them, lie in m_tail. They become a page of
///     the last segment when another byte follows a full tail.
///  3. The piece read last, [m_pieceBegin, + m_piece.size()), lies at its address as long as the
///     allowance's generation is m_pieceGeneration.
class PagedSpace {
public:
    /// `segmentBytes` is a multiple of a page.
    PagedSpace(PageAllowance& allowance, DWORD segmentBytes)
        : m_allowance(allowance), m_segmentBytes(segmentBytes) {}
    ~PagedSpace() { Empty(); }
    PagedSpace(const PagedSpace&) = delete;
    PagedSpace& operator=(const PagedSpace&) = delete;

    /// Whether there is a page that is being filled.
    bool HasTail() const { return m_tail != nullptr; }
    ULONGLONG GetLength() const { return m_stored + m_tailUsed; }
    /// Bytes that still fit into the page that is being filled.
    DWORD RoomInPage() const { return CBytePage::m_dwPageSize - m_tailUsed; }

    /// The bytes may be a piece of a space with the same allowance. After an exception, part of
    /// them may have been appended: see Rollback.
    void Append(const BYTE* bytes, std::size_t count);
    /// Leaves the rest of the page that is being filled unused.
    void SkipToNextPage();
    /// Drops what was appended since the length was `length`. When pages have been stored since
    /// then, the length becomes the next multiple of a page instead.
    void Rollback(ULONGLONG length) noexcept;
    /// The bytes from `position`, which must be below the length, to the end of their page. Valid
    /// until the generation changes.
    std::span<const BYTE> Piece(ULONGLONG position) {
        if (position >= m_stored)
            return std::span<const BYTE>(m_tail.get(), m_tailUsed)
                .subspan(static_cast<std::size_t>(position - m_stored));
        if (position - m_pieceBegin >= m_piece.size() ||
            m_pieceGeneration != m_allowance.Generation()) [[unlikely]]
            LoadPiece(position);
        return m_piece.subspan(static_cast<std::size_t>(position - m_pieceBegin));
    }
    /// Changes bytes that lie in one page. After an exception none has changed.
    void Overwrite(ULONGLONG position, const BYTE* bytes, DWORD count);
    void Empty() noexcept;
    /// Gives the memory of all pages back; those come back when they are needed.
    void ReleasePages();

private:
    void StoreTail();
    void LoadPiece(ULONGLONG position);
    void CheckInvariants() const;

    PageAllowance& m_allowance;
    const DWORD m_segmentBytes;
    std::vector<std::unique_ptr<Segment>> m_segments;
    ULONGLONG m_stored = 0;
    std::unique_ptr<BYTE[]> m_tail; ///< one page, made when first needed
    DWORD m_tailUsed = 0;
    ULONGLONG m_pieceBegin = 0;
    ULONGLONG m_pieceGeneration = 0;
    std::span<const BYTE> m_piece;
};

} // namespace vnbytstr::detail
