// Shared by the source files of CByteStore.
#pragma once

#include "src/charset/HexText.h"
#include "vnbytstr/ByteStore.h"

#include <array>
#include <cstring>

/// Gives the store the length back that it had when the guard was made, unless Keep was called.
class CByteStore::LengthGuard {
public:
    explicit LengthGuard(CByteStore& store) : m_store(store), m_dwLength(store.m_dwLength) {}
    ~LengthGuard() {
        if (!m_bKept)
            m_store.Truncate(m_dwLength);
    }
    LengthGuard(const LengthGuard&) = delete;
    LengthGuard& operator=(const LengthGuard&) = delete;
    void Keep() { m_bKept = true; }

private:
    CByteStore& m_store;
    const DWORD m_dwLength;
    bool m_bKept = false;
};

/// Empties a destination, and once more unless Keep was called.
class CByteStore::EmptyGuard {
public:
    explicit EmptyGuard(CByteStore& store) : m_store(store) { m_store.Empty(); }
    ~EmptyGuard() {
        if (!m_bKept)
            m_store.Empty();
    }
    EmptyGuard(const EmptyGuard&) = delete;
    EmptyGuard& operator=(const EmptyGuard&) = delete;
    void Keep() { m_bKept = true; }

private:
    CByteStore& m_store;
    bool m_bKept = false;
};

namespace vnbytstr::detail {
/// Throws the CFileException for a system error number; nothing for 0.
inline void ThrowIf(int error, const char* name) {
    if (error != 0)
        CFileException::ThrowOsError(error, name);
}

/// Most bytes that go through an intermediate buffer at once.
inline constexpr DWORD kChunk = 65536;
/// Accesses in a row that read the clock before a run does without.
inline constexpr int kStampsBeforeRun = 16;

/// Decodes hex text (null is empty) in pieces; `take(bytes, count)` gets each.
template <class Take>
void ForEachHexPiece(const char* text, Take take) {
    std::size_t left = text ? std::strlen(text) : 0;
    std::array<BYTE, kChunk> bytes;
    for (bool ended = false; !ended;) {
        const HexDecoded piece = DecodeHex(text, left, bytes.data(), bytes.size());
        take(bytes.data(), static_cast<DWORD>(piece.produced));
        text += piece.consumed;
        left -= piece.consumed;
        ended = piece.ended || left == 0;
    }
}
} // namespace vnbytstr::detail
