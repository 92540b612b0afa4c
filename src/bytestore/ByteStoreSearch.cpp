// CByteStore: search, comparison, hex text.

#include "src/bytestore/ByteStoreInternal.h"

#include "src/bytestore/ByteSearch.h"

#include <optional>

using namespace vnbytstr::detail;

// --- search --------------------------------------------------------------------------------------

/// Index of the first occurrence of a pattern that lies in memory, or kNotFound.
DWORD CByteStore::FindPrefix(std::span<const BYTE> prefix, DWORD start) {
    auto searcher = WithMemoryException([&] { return ByteSearcher(prefix); });
    std::optional<ULONGLONG> found;
    ForEachPiece(*this, start, m_dwLength - start, [&](std::span<const BYTE> piece) {
        found = WithMemoryException([&] { return searcher.Feed(piece); });
        return !found;
    });
    return found ? static_cast<DWORD>(start + *found) : kNotFound;
}

// --- comparison ----------------------------------------------------------------------------------

int CByteStore::MemCmp(CByteStore& other) { return Compare(*this, other); }

bool CByteStore::operator==(CByteStore& other) {
    return &other == this || (m_dwLength == other.m_dwLength && MemCmp(other) == 0);
}

bool CByteStore::operator==(const char* hex) {
    CByteStore other(hex);
    return *this == other;
}

// --- hex text ------------------------------------------------------------------------------------

void CByteStore::CopyFromHex(DWORD, const char* text) { AppendHex(*this, text); }

void CByteStore::CopyFromHex(DWORD, const CString& text) { AppendHex(*this, text); }

void CByteStore::CopyToHex(DWORD index, char* destination, DWORD count, DWORD size) {
    WriteHex(*this, index, destination, count, size);
}

void CByteStore::CopyToHex(DWORD index, CString& destination, DWORD count) {
    WriteHex(*this, index, destination, count);
}
