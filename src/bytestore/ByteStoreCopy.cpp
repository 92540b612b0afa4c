// CByteStore: copying in and out, slices, moving and discarding.

#include "src/bytestore/ByteStoreInternal.h"

#include "vnbytstr/ByteStream.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

using vnbytstr::detail::kChunk;
constexpr DWORD kPageSize = CBytePage::m_dwPageSize;

/// How many bytes a copy from a source of `length` bytes means: 0 asks for all from `index` on.
DWORD BytesToCopy(DWORD length, DWORD index, DWORD count) {
    if (index >= length)
        return 0;
    const DWORD available = length - index;
    return count == 0 ? available : std::min(count, available);
}

} // namespace

// --- in ------------------------------------------------------------------------------------------

void CByteStore::CopyFrom(DWORD index, const BYTE* bytes, DWORD count) {
    CheckLength(static_cast<ULONGLONG>(index) + count);
    std::vector<BYTE> copy;
    if (count > 0 && HoldsAddress(bytes)) {
        // Its page may leave memory on the way.
        vnbytstr::detail::WithMemoryException([&] { copy.assign(bytes, bytes + count); });
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
    count = BytesToCopy(source.m_dwLength, sourceIndex, count);
    if (count == 0)
        return;
    CheckLength(static_cast<ULONGLONG>(index) + count);
    if (&source == this && index > sourceIndex && index - sourceIndex < count) {
        CopyUpWithin(index, sourceIndex, count);
        return;
    }
    LengthGuard guard(*this);
    std::array<BYTE, kChunk> chunk;
    for (DWORD done = 0; done < count;) {
        const DWORD taken = std::min(count - done, kChunk);
        source.CopyTo(sourceIndex + done, chunk.data(), taken, taken);
        CopyFrom(index + done, chunk.data(), taken);
        done += taken;
    }
    guard.Keep();
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

void CByteStore::CopyFrom(DWORD index, const CByteStream& source, DWORD sourceIndex, DWORD count) {
    if (source.m_pStore) {
        CopyFrom(index, *source.m_pStore, sourceIndex, count);
        return;
    }
    count = BytesToCopy(source.GetLength(), sourceIndex, count);
    if (count > 0) {
        source.CheckRange(sourceIndex, count);
        CopyFrom(index, source.m_pBuffer + sourceIndex, count);
    }
}

// --- out -----------------------------------------------------------------------------------------

void CByteStore::CopyTo(DWORD index, BYTE* destination, DWORD count, DWORD size) {
    if (index > m_dwLength)
        throw new CCacheException(CCacheException::kOutOfRange);
    const DWORD available = m_dwLength - index;
    if (count == 0 || count > available)
        count = available;
    const DWORD copied = size != 0 ? std::min(count, size) : count;
    if (copied > 0 && index < m_dwStart)
        throw new CCacheException(CCacheException::kOutOfRange);
    DWORD done = 0;
    while (done < copied) {
        DWORD number, position;
        GetPageNumFromIndex(index + done, number, position);
        const DWORD taken = std::min(copied - done, kPageSize - position);
        std::memcpy(destination + done, GetPageFromPageNum(number)->GetData() + position, taken);
        done += taken;
    }
    if (size > copied)
        std::memset(destination + copied, 0, size - copied);
}

void CByteStore::CopyTo(DWORD index, CByteStream& destination, DWORD destinationIndex,
                        DWORD count) {
    destination.CopyFrom(destinationIndex, *this, index, count);
}

void CByteStore::CopyTo(DWORD index, CByteStore& destination, DWORD destinationIndex, DWORD count) {
    destination.CopyFrom(destinationIndex, *this, index, count);
}

// --- slices --------------------------------------------------------------------------------------

CByteStream CByteStore::Mid(DWORD first, DWORD count) {
    CByteStream slice;
    if (count > 0)
        slice.CopyFrom(0, *this, first, count);
    return slice;
}

CByteStream CByteStore::Mid(DWORD first) { return Mid(first, 0xFFFFFFFF); }

CByteStream CByteStore::Left(DWORD count) { return Mid(0, count); }

CByteStream CByteStore::Right(DWORD count) {
    count = std::min(count, m_dwLength);
    return Mid(m_dwLength - count, count);
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
