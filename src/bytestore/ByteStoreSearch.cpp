// CByteStore: search, comparison, hex text.

#include "src/bytestore/ByteStoreInternal.h"

#include "src/bytestore/ByteSearch.h"
#include "src/charset/HexText.h"
#include "vnbytstr/ByteStream.h"

#include <algorithm>
#include <array>
#include <cstring>

using vnbytstr::detail::kChunk;
using vnbytstr::detail::WithMemoryException;

namespace {
constexpr DWORD kPageSize = CBytePage::m_dwPageSize;
} // namespace

// --- search --------------------------------------------------------------------------------------

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

DWORD CByteStore::FindPrefix(std::span<const BYTE> prefix, DWORD start) {
    auto searcher = WithMemoryException([&] { return vnbytstr::detail::ByteSearcher(prefix); });
    for (DWORD index = start; index < m_dwLength;) {
        DWORD number, position;
        GetPageNumFromIndex(index, number, position);
        const DWORD taken = std::min(m_dwLength - index, kPageSize - position);
        const BYTE* data = GetPageFromPageNum(number)->GetData() + position;
        const auto offset = WithMemoryException([&] { return searcher.Feed({data, taken}); });
        if (offset)
            return static_cast<DWORD>(start + *offset);
        index += taken;
    }
    return kNotFound;
}

/// Whether `pattern` from its index `from` on equals the bytes `from` behind `index`.
bool CByteStore::EqualsAt(DWORD index, const CByteStream& pattern, DWORD from) {
    // The pattern may lie in this very store, so both sides are copied before they are compared.
    std::array<BYTE, kPageSize> ours, theirs;
    const DWORD length = pattern.GetLength();
    while (from < length) {
        const DWORD taken = std::min(length - from, kPageSize);
        CopyTo(index + from, ours.data(), taken, taken);
        pattern.CopyTo(from, theirs.data(), taken, taken);
        if (std::memcmp(ours.data(), theirs.data(), taken) != 0)
            return false;
        from += taken;
    }
    return true;
}

// --- comparison ----------------------------------------------------------------------------------

int CByteStore::MemCmp(CByteStore& other) {
    for (DWORD index = std::max(m_dwStart, other.m_dwStart); index < m_dwLength;) {
        DWORD number, position;
        GetPageNumFromIndex(index, number, position);
        const DWORD taken = std::min(m_dwLength - index, kPageSize - position);
        const BYTE* ours = GetPageFromPageNum(number)->GetData() + position;
        const BYTE* theirs = other.GetPageFromPageNum(number)->GetData() + position;
        if (const int difference = std::memcmp(ours, theirs, taken))
            return difference;
        index += taken;
    }
    return 0;
}

bool CByteStore::operator==(CByteStore& other) {
    return &other == this || (m_dwLength == other.m_dwLength && MemCmp(other) == 0);
}

bool CByteStore::operator==(const CByteStream& other) {
    if (other.m_pStore)
        return *this == *other.m_pStore;
    if (m_dwLength != other.m_dwLength)
        return false;
    for (DWORD index = std::max(m_dwStart, other.m_dwStart); index < m_dwLength;) {
        DWORD number, position;
        GetPageNumFromIndex(index, number, position);
        const DWORD taken = std::min(m_dwLength - index, kPageSize - position);
        const BYTE* ours = GetPageFromPageNum(number)->GetData() + position;
        if (std::memcmp(ours, other.m_pBuffer + index, taken) != 0)
            return false;
        index += taken;
    }
    return true;
}

bool CByteStore::operator==(const char* hex) {
    CByteStore other(hex);
    return *this == other;
}

// --- hex text ------------------------------------------------------------------------------------

void CByteStore::CopyFromHex(DWORD, const char* text) {
    LengthGuard guard(*this);
    vnbytstr::detail::ForEachHexPiece(
        text, [this](const BYTE* bytes, DWORD count) { Concat(bytes, count); });
    guard.Keep();
}

void CByteStore::CopyFromHex(DWORD index, const CString& text) {
    CopyFromHex(index, static_cast<const char*>(text));
}

void CByteStore::CheckHexRoom(ULONGLONG digits, DWORD size) {
    constexpr DWORD kTooMany =
        0x80000000; // a text of the framework has at most 2^31 - 1 characters
    if (digits >= kTooMany || size >= kTooMany || (size != 0 && size < digits))
        throw new CCacheException(CCacheException::kOutOfRange);
}

void CByteStore::CopyToHex(DWORD index, char* destination, DWORD count, DWORD size) {
    if (index > m_dwLength || (index < m_dwStart && index < m_dwLength))
        throw new CCacheException(CCacheException::kOutOfRange);
    const DWORD available = m_dwLength - index;
    if (count == 0 || count > available)
        count = available;
    const ULONGLONG digits = count * 2ull;
    CheckHexRoom(digits, size);
    if (size > digits)
        destination[digits] = '\0';
    while (count > 0) {
        DWORD number, position;
        GetPageNumFromIndex(index, number, position);
        const DWORD taken = std::min(count, kPageSize - position);
        const BYTE* data = GetPageFromPageNum(number)->GetData() + position;
        vnbytstr::detail::EncodeHex({data, taken}, destination);
        destination += taken * 2ull;
        index += taken;
        count -= taken;
    }
}

void CByteStore::CopyToHex(DWORD index, CString& destination, DWORD count) {
    if (index > m_dwLength)
        throw new CCacheException(CCacheException::kOutOfRange);
    const DWORD available = m_dwLength - index;
    if (count == 0 || count > available)
        count = available;
    CheckHexRoom(count * 2ull, 0);
    if (count == 0) {
        destination.Empty();
        return;
    }
    CString text; // the caller's stays as it is when a page cannot be read
    char* digits = text.GetBufferSetLength(static_cast<int>(count * 2));
    CopyToHex(index, digits, count, count * 2);
    text.ReleaseBuffer(static_cast<int>(count * 2));
    destination = std::move(text);
}
