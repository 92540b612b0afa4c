// What the sources of CByteStore and CByteStream share. The templates take either of them and know
// only what is public.
#pragma once

#include "src/bytestore/BigEndian.h"
#include "src/charset/HexText.h"
#include "vnbytstr/ByteStore.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <utility>

namespace vnbytstr::detail {

/// Size of the intermediate buffer that large copies go through.
inline constexpr DWORD kChunk = 65536;

// --- guards --------------------------------------------------------------------------------------

/// Cuts a container back to the length it had when the guard was made, unless Keep was called.
template <class Container>
class LengthGuard {
public:
    explicit LengthGuard(Container& bytes) : m_bytes(bytes), m_dwLength(bytes.GetLength()) {}
    ~LengthGuard() {
        if (!m_bKept)
            m_bytes.Truncate(m_dwLength);
    }
    LengthGuard(const LengthGuard&) = delete;
    LengthGuard& operator=(const LengthGuard&) = delete;
    void Keep() { m_bKept = true; }

private:
    Container& m_bytes;
    const DWORD m_dwLength;
    bool m_bKept = false;
};

/// Empties a destination now, and again at the end unless Keep was called.
template <class Container>
class EmptyGuard {
public:
    explicit EmptyGuard(Container& bytes) : m_bytes(bytes) { m_bytes.Empty(); }
    ~EmptyGuard() {
        if (!m_bKept)
            m_bytes.Empty();
    }
    EmptyGuard(const EmptyGuard&) = delete;
    EmptyGuard& operator=(const EmptyGuard&) = delete;
    void Keep() { m_bKept = true; }

private:
    Container& m_bytes;
    bool m_bKept = false;
};

// --- ranges --------------------------------------------------------------------------------------

/// How many bytes a copy from `index` takes: a count of 0, or one past the end, means up to the
/// end. 0 when `index` is at the end or past it.
inline DWORD CountToEnd(DWORD length, DWORD index, DWORD count) {
    const DWORD available = index < length ? length - index : 0;
    return count == 0 ? available : std::min(count, available);
}

/// CountToEnd, but with cause 0 for an index past the end.
inline DWORD CheckedCount(DWORD length, DWORD index, DWORD count) {
    if (index > length)
        throw new CCacheException(CCacheException::kOutOfRange);
    return CountToEnd(length, index, count);
}

/// Cause 6 for more than 4 GiB - 1 bytes.
inline void CheckLength(ULONGLONG length) {
    if (length > 0xFFFFFFFFu)
        throw new CCacheException(CCacheException::kTooLong);
}

// --- reading and copying -------------------------------------------------------------------------

/// Calls `take` with the `count` bytes from `index` on, which must exist, piece by piece until it
/// returns false; the last result. Each piece is valid until the container is used again.
template <class Container, class Take>
bool ForEachPiece(Container& bytes, DWORD index, DWORD count, Take take) {
    while (count > 0) {
        std::span<const BYTE> piece = bytes.GetPiece(index);
        piece = piece.first(std::min<std::size_t>(piece.size(), count));
        if (!take(piece))
            return false;
        index += static_cast<DWORD>(piece.size());
        count -= static_cast<DWORD>(piece.size());
    }
    return true;
}

/// Copies through a buffer, for a source whose pieces may leave memory while they are copied.
template <class To, class From>
void CopyInChunks(To& to, DWORD index, From& from, DWORD fromIndex, DWORD count) {
    CheckLength(static_cast<ULONGLONG>(index) + count);
    LengthGuard guard(to);
    std::array<BYTE, kChunk> chunk;
    for (DWORD done = 0; done < count;) {
        const DWORD taken = std::min(count - done, kChunk);
        from.CopyTo(fromIndex + done, chunk.data(), taken, taken);
        to.CopyFrom(index + done, chunk.data(), taken);
        done += taken;
    }
    guard.Keep();
}

/// Puts what the source still holds into an empty store, at the same indexes.
template <class From>
void CopyRetained(CByteStore& to, From& from) {
    DWORD start, end;
    from.GetRange(start, end);
    to.Concat(start);
    to.CopyFrom(start, from, start, 0);
}

/// Compares what both hold of two containers of equal length; 0 when equal, else as memcmp.
template <class Left, class Right>
int Compare(Left& left, Right& right) {
    DWORD leftStart, rightStart, end;
    left.GetRange(leftStart, end);
    right.GetRange(rightStart, end);
    for (DWORD index = std::max(leftStart, rightStart); index < end;) {
        const std::span<const BYTE> ours = left.GetPiece(index), theirs = right.GetPiece(index);
        const std::size_t size = std::min(ours.size(), theirs.size());
        if (const int difference = std::memcmp(ours.data(), theirs.data(), size))
            return difference;
        index += static_cast<DWORD>(size);
    }
    return 0;
}

// --- numbers -------------------------------------------------------------------------------------

template <std::size_t Width, class Container>
ULONGLONG GetWide(Container& bytes, DWORD index) {
    std::array<BYTE, Width> value;
    bytes.CopyTo(index, value.data(), Width, Width);
    return FromBigEndian(value);
}

template <std::size_t Width, class Container>
void SetWide(Container& bytes, DWORD index, ULONGLONG value) {
    bytes.CopyFrom(index, ToBigEndian<Width>(value).data(), Width);
}

/// Two one-byte reads, either of which may lie past the end.
template <class Container>
WORD GetTwoBytes(Container& bytes, DWORD index) {
    const BYTE high = bytes.GetByte(index);
    const BYTE low = index == 0xFFFFFFFFu ? BYTE{0} : bytes.GetByte(index + 1);
    return static_cast<WORD>((high << 8) | low);
}

// --- hex text ------------------------------------------------------------------------------------

/// Appends the bytes of hex text; null is an empty text. All or nothing.
template <class Container>
void AppendHex(Container& bytes, const char* text) {
    std::size_t left = text ? std::strlen(text) : 0;
    std::array<BYTE, kChunk> piece;
    LengthGuard guard(bytes);
    for (bool ended = false; !ended;) {
        const HexDecoded decoded = DecodeHex(text, left, piece.data(), piece.size());
        bytes.Concat(piece.data(), static_cast<DWORD>(decoded.produced));
        text += decoded.consumed;
        left -= decoded.consumed;
        ended = decoded.ended || left == 0;
    }
    guard.Keep();
}

/// Cause 0 when so many digits do not fit into `size` characters (0: room enough), or when either
/// is too many for a text of the framework, which has at most 2^31 - 1 characters.
inline void CheckHexRoom(ULONGLONG digits, DWORD size) {
    constexpr DWORD kTooMany = 0x80000000;
    if (digits >= kTooMany || size >= kTooMany || (size != 0 && size < digits))
        throw new CCacheException(CCacheException::kOutOfRange);
}

template <class Container>
void WriteHex(Container& bytes, DWORD index, char* destination, DWORD count, DWORD size) {
    count = CheckedCount(bytes.GetLength(), index, count);
    if (count > 0 && !bytes.IsByteAvailable(index))
        throw new CCacheException(CCacheException::kOutOfRange);
    const ULONGLONG digits = count * 2ull;
    CheckHexRoom(digits, size);
    if (size > digits)
        destination[digits] = '\0';
    ForEachPiece(bytes, index, count, [&destination](std::span<const BYTE> piece) {
        EncodeHex(piece, destination);
        destination += piece.size() * 2;
        return true;
    });
}

template <class Container>
void WriteHex(Container& bytes, DWORD index, CString& destination, DWORD count) {
    count = CheckedCount(bytes.GetLength(), index, count);
    CheckHexRoom(count * 2ull, 0);
    if (count == 0) {
        destination.Empty();
        return;
    }
    const auto digits = static_cast<int>(count * 2);
    CString text; // the caller's stays as it is when a page cannot be read
    WriteHex(bytes, index, text.GetBufferSetLength(digits), count, count * 2);
    text.ReleaseBuffer(digits);
    destination = std::move(text);
}

} // namespace vnbytstr::detail
