// CByteStore: what it takes from a CByteStream and gives as one. The rest of the store does not
// know the stream, and this knows only what is public of it.

#include "src/bytestore/ByteStoreInternal.h"

#include "vnbytstr/ByteStream.h"

#include <array>
#include <vector>

using namespace vnbytstr::detail;

// --- taking --------------------------------------------------------------------------------------

CByteStore::CByteStore(const CByteStream& source) : CByteStore() { CopyRetained(*this, source); }

CByteStore& CByteStore::operator=(const CByteStream& source) {
    if (source.GetStore() != this) {
        CByteStore copy;
        copy.TakeLimits(*this);
        CopyRetained(copy, source);
        TakeContent(copy);
    }
    return *this;
}

void CByteStore::Concat(const CByteStream& source) {
    CopyFrom(m_dwLength, source, 0, source.GetLength());
}

void CByteStore::CopyFrom(DWORD index, const CByteStream& source, DWORD sourceIndex, DWORD count) {
    if (source.GetStore() == this) {
        CopyFrom(index, *this, sourceIndex, count);
        return;
    }
    count = CountToEnd(source.GetLength(), sourceIndex, count);
    if (count == 0)
        return;
    if (source.IsAllInBuffer())
        CopyFrom(index, source.GetPiece(sourceIndex).data(), count);
    else
        CopyInChunks(*this, index, source, sourceIndex, count);
}

// --- giving --------------------------------------------------------------------------------------

void CByteStore::CopyTo(DWORD index, CByteStream& destination, DWORD destinationIndex,
                        DWORD count) {
    destination.CopyFrom(destinationIndex, *this, index, count);
}

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

// --- search and comparison -----------------------------------------------------------------------

DWORD CByteStore::Find(const CByteStream& pattern, DWORD start) {
    start = std::max(start, m_dwStart);
    const DWORD length = pattern.GetLength();
    // A pattern may be as long as a store; only its beginning is held in memory.
    std::vector<BYTE> prefix =
        WithMemoryException([&] { return std::vector<BYTE>(std::min(length, kChunk)); });
    if (start <= m_dwLength && length <= m_dwLength - start && length > 0)
        pattern.CopyTo(0, prefix.data(), static_cast<DWORD>(prefix.size()),
                       static_cast<DWORD>(prefix.size()));
    for (; start <= m_dwLength && length <= m_dwLength - start; ++start) {
        if (length == 0)
            return start;
        start = FindPrefix(prefix, start);
        if (start == kNotFound || m_dwLength - start < length)
            break;
        if (length == prefix.size() || EqualsAt(start, pattern, kChunk))
            return start;
    }
    return kNotFound;
}

/// Whether the pattern occurs at `index`, when it is known to for its first `from` bytes.
bool CByteStore::EqualsAt(DWORD index, const CByteStream& pattern, DWORD from) {
    // The pattern may lie in this very store, so both sides are copied before they are compared.
    std::array<BYTE, CBytePage::m_dwPageSize> ours, theirs;
    const DWORD length = pattern.GetLength();
    while (from < length) {
        const DWORD taken = std::min(length - from, CBytePage::m_dwPageSize);
        CopyTo(index + from, ours.data(), taken, taken);
        pattern.CopyTo(from, theirs.data(), taken, taken);
        if (std::memcmp(ours.data(), theirs.data(), taken) != 0)
            return false;
        from += taken;
    }
    return true;
}

bool CByteStore::operator==(const CByteStream& other) {
    return other.GetStore() == this ||
           (m_dwLength == other.GetLength() && Compare(*this, other) == 0);
}
