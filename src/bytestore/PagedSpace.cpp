#include "src/bytestore/PagedSpace.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace vnbytstr::detail {

namespace {

constexpr DWORD kPageSize = CBytePage::m_dwPageSize;

std::unique_ptr<BYTE[]> NewPage() {
    return WithMemoryException([] { return std::make_unique_for_overwrite<BYTE[]>(kPageSize); });
}

} // namespace

// --- the allowance -------------------------------------------------------------------------------

DWORD PageAllowance::GetResidentPageCount() const {
    DWORD count = 0;
    for (const Segment* segment : m_segments)
        count += segment->GetResidentPageCount();
    return count;
}

/// Of pages used at the same time, one of the segment that has the most leaves.
void PageAllowance::GiveUpOldest() {
    const auto leavesBefore = [](const Segment* a, const Segment* b) {
        const DWORD aPages = a->GetResidentPageCount(), bPages = b->GetResidentPageCount();
        if (aPages == 0 || bPages == 0)
            return aPages > bPages;
        const DWORD aUse = a->OldestUse(), bUse = b->OldestUse();
        return aUse != bUse ? aUse < bUse : aPages > bPages;
    };
    (*std::min_element(m_segments.begin(), m_segments.end(), leavesBefore))->GiveUpPage();
}

bool PageAllowance::GiveUpClean() noexcept {
    return std::any_of(m_segments.begin(), m_segments.end(),
                       [](Segment* segment) { return segment->GiveUpCleanPage(); });
}

void PageAllowance::LetGrow(Segment& segment) {
    segment.SetPageLimit(segment.GetResidentPageCount() + 1);
}

void PageAllowance::Settle() {
    while (GetResidentPageCount() > m_pages) {
        NoteMoved();
        GiveUpOldest();
    }
}

void PageAllowance::MakeRoomToWrite(Segment& segment) {
    NoteMoved();
    while (GetResidentPageCount() >= m_pages)
        GiveUpOldest();
    LetGrow(segment);
}

void PageAllowance::MakeRoomToRead(Segment& segment) {
    NoteMoved();
    while (GetResidentPageCount() >= m_pages) {
        try {
            GiveUpOldest();
        } catch (CException* error) {
            if (!GiveUpClean() && GetResidentPageCount() >= m_pages + kMoreWhenFull)
                throw;
            error->Delete();
            break;
        }
    }
    LetGrow(segment);
}

BYTE* PageAllowance::SpareTail() {
    if (!m_spare)
        m_spare = NewPage();
    return m_spare.get();
}

// --- the space -----------------------------------------------------------------------------------

void PagedSpace::Append(const BYTE* bytes, std::size_t count) {
    while (count > 0) {
        if (m_tailUsed == kPageSize) {
            // They may lie in a page that leaves, so they are copied before that.
            BYTE* next = m_allowance.SpareTail();
            const auto taken = static_cast<DWORD>(std::min<std::size_t>(count, kPageSize));
            std::memcpy(next, bytes, taken);
            StoreTail();
            m_allowance.SwapTail(m_tail);
            m_tailUsed = taken;
            bytes += taken;
            count -= taken;
            continue;
        }
        if (!m_tail)
            m_tail = NewPage();
        const auto taken = static_cast<DWORD>(std::min<std::size_t>(count, RoomInPage()));
        std::memcpy(m_tail.get() + m_tailUsed, bytes, taken);
        m_tailUsed += taken;
        bytes += taken;
        count -= taken;
    }
}

void PagedSpace::SkipToNextPage() {
    assert(m_tailUsed > 0);
    std::memset(m_tail.get() + m_tailUsed, 0, RoomInPage());
    m_tailUsed = kPageSize;
}

void PagedSpace::StoreTail() {
    if (m_segments.empty() || m_segments.back()->GetLength() == m_segmentBytes)
        WithMemoryException([&] {
            m_segments.push_back(std::make_unique<Segment>());
            try {
                m_allowance.Add(*m_segments.back());
            } catch (...) {
                m_segments.pop_back();
                throw;
            }
        });
    Segment& last = *m_segments.back();
    m_allowance.MakeRoomToWrite(last);
    last.Concat(m_tail.get(), kPageSize);
    m_stored += kPageSize;
    m_tailUsed = 0;
    CheckInvariants();
}

void PagedSpace::Rollback(ULONGLONG length) noexcept {
    if (length >= GetLength())
        return;
    m_allowance.NoteMoved();
    if (length >= m_stored) {
        m_tailUsed = static_cast<DWORD>(length - m_stored);
        return;
    }
    m_tailUsed = 0;
    m_stored = (length + (kPageSize - 1)) / kPageSize * kPageSize;
    while (!m_segments.empty()) {
        const ULONGLONG begin = (m_segments.size() - 1) * ULONGLONG{m_segmentBytes};
        if (begin < m_stored) {
            m_segments.back()->Truncate(static_cast<DWORD>(m_stored - begin));
            break;
        }
        m_allowance.Remove(*m_segments.back());
        m_segments.pop_back();
    }
    CheckInvariants();
}

void PagedSpace::LoadPiece(ULONGLONG position) {
    Segment& segment = *m_segments[static_cast<std::size_t>(position / m_segmentBytes)];
    const auto number = static_cast<DWORD>(position % m_segmentBytes / kPageSize);
    if (!segment.IsResident(number))
        m_allowance.MakeRoomToRead(segment);
    m_piece = {};
    m_piece = segment.GetPiece(number * kPageSize).first(kPageSize);
    m_pieceBegin = position / kPageSize * kPageSize;
    m_pieceGeneration = m_allowance.Generation();
}

void PagedSpace::Overwrite(ULONGLONG position, const BYTE* bytes, DWORD count) {
    if (position >= m_stored) {
        std::memcpy(m_tail.get() + (position - m_stored), bytes, count);
        return;
    }
    Segment& segment = *m_segments[static_cast<std::size_t>(position / m_segmentBytes)];
    const auto index = static_cast<DWORD>(position % m_segmentBytes);
    m_allowance.Settle();
    if (!segment.IsResident(index / kPageSize))
        m_allowance.MakeRoomToWrite(segment);
    segment.CopyFrom(index, bytes, count);
}

void PagedSpace::Empty() noexcept {
    m_allowance.NoteMoved();
    for (const auto& segment : m_segments)
        m_allowance.Remove(*segment);
    m_segments.clear();
    m_tail.reset();
    m_stored = m_tailUsed = 0;
}

void PagedSpace::ReleasePages() {
    m_allowance.NoteMoved();
    for (const auto& segment : m_segments)
        segment->ReleasePages();
}

void PagedSpace::CheckInvariants() const {
#ifndef NDEBUG
    ULONGLONG stored = 0;
    for (std::size_t i = 0; i < m_segments.size(); ++i) {
        const DWORD length = m_segments[i]->GetLength();
        assert(length % kPageSize == 0 &&
               (length == m_segmentBytes || i + 1 == m_segments.size())); // 1
        stored += length;
    }
    assert(stored == m_stored);
    assert(m_tailUsed <= kPageSize && (m_tailUsed == 0 || m_tail)); // 2
#endif
}

} // namespace vnbytstr::detail
