// CByteStore: copying in and out, moving and discarding.

#include "src/bytestore/ByteStoreInternal.h"

#include <algorithm>
#include <array>
#include <cstring>

using namespace vnbytstr::detail;

namespace {
constexpr DWORD kPageSize = CBytePage::m_dwPageSize;
} // namespace

// --- in ------------------------------------------------------------------------------------------

void CByteStore::CopyFrom(DWORD index, const BYTE* bytes, DWORD count) {
    CheckLength(static_cast<ULONGLONG>(index) + count);
    // The source may be a page of this store that leaves memory on the way.
    std::array<BYTE, 16> few;
    std::vector<BYTE> copy;
    if (count <= few.size()) { // quicker than to find that out
        std::copy_n(bytes, count, few.data());
        bytes = few.data();
    } else if (HoldsAddress(bytes)) {
        WithMemoryException([&] { copy.assign(bytes, bytes + count); });
        bytes = copy.data();
    }
    LengthGuard guard(*this);
    ExtendTo(index);
    const DWORD inside = std::min(count, m_dwLength - index);
    // Appending comes first: when it fails, what is there already has not been touched.
    Concat(bytes + inside, count - inside);
    Overwrite(index, bytes, inside);
    guard.Keep();
}

/// Writes bytes, none of them in a page of this store, over existing ones.
void CByteStore::Overwrite(DWORD index, const BYTE* bytes, DWORD count) {
    while (count > 0) {
        DWORD number, position;
        GetPageNumFromIndex(index, number, position);
        const DWORD taken = std::min(count, kPageSize - position);
        CBytePage* page = GetPageFromPageNum(number);
        std::memcpy(page->GetData() + position, bytes, taken);
        page->SetMustWrite(TRUE);
        index += taken;
        bytes += taken;
        count -= taken;
    }
}

void CByteStore::CopyFrom(DWORD index, CByteStore& source, DWORD sourceIndex, DWORD count) {
    count = CountToEnd(source.m_dwLength, sourceIndex, count);
    if (count == 0)
        return;
    CheckLength(static_cast<ULONGLONG>(index) + count);
    if (&source == this && index > sourceIndex && index - sourceIndex < count)
        CopyUpWithin(index, sourceIndex, count);
    else
        CopyInChunks(*this, index, source, sourceIndex, count);
}

/// Copies within the store to a higher place that overlaps the source: from the end, so that no
/// byte is overwritten before it has been copied.
void CByteStore::CopyUpWithin(DWORD index, DWORD sourceIndex, DWORD count) {
    LengthGuard guard(*this);
    ExtendTo(index + count);
    std::array<BYTE, kChunk> chunk;
    while (count > 0) {
        const DWORD taken = std::min(count, kChunk);
        count -= taken;
        CopyTo(sourceIndex + count, chunk.data(), taken, taken);
        Overwrite(index + count, chunk.data(), taken);
    }
    guard.Keep();
}

// --- out -----------------------------------------------------------------------------------------

void CByteStore::CopyTo(DWORD index, BYTE* destination, DWORD count, DWORD size) {
    count = CheckedCount(m_dwLength, index, count);
    const DWORD copied = size != 0 ? std::min(count, size) : count;
    BYTE* out = destination;
    ForEachPiece(*this, index, copied, [&out](std::span<const BYTE> piece) {
        out = std::copy(piece.begin(), piece.end(), out);
        return true;
    });
    if (size > copied)
        std::memset(destination + copied, 0, size - copied);
}

void CByteStore::CopyTo(DWORD index, CByteStore& destination, DWORD destinationIndex, DWORD count) {
    destination.CopyFrom(destinationIndex, *this, index, count);
}

// --- moving and discarding -----------------------------------------------------------------------

void CByteStore::Shift(DWORD to, DWORD from) {
    from = std::min(from, m_dwLength);
    if (to >= from)
        return;
    std::array<BYTE, kChunk> chunk;
    const DWORD count = m_dwLength - from;
    for (DWORD done = 0; done < count;) {
        const DWORD taken = std::min(count - done, kChunk);
        CopyTo(from + done, chunk.data(), taken, taken);
        Overwrite(to + done, chunk.data(), taken);
        done += taken;
    }
    const DWORD distance = from - to;
    Truncate(m_dwLength - distance);
    if (m_dwCurrent >= from)
        m_dwCurrent -= distance;
    else if (m_dwCurrent > to)
        m_dwCurrent = to;
    CheckInvariants();
}

void CByteStore::ShiftCurrent() {
    Shift(m_dwStart, m_dwCurrent);
    m_dwCurrent = m_dwStart;
}

void CByteStore::DiscardUpTo(DWORD index) {
    if (index > m_dwStart)
        m_dwStart = std::min(index, m_dwLength);
}
