// CByteStream: appending, copying, slices, search, comparison, hex text, files.

#include "src/bytestore/Containers.h"

#include "src/bytestore/ByteSearch.h"
#include "vnbytstr/ByteStream.h"
#include "vnbytstr/ReplacementFile.h"

#include <functional>
#include <memory>
#include <vector>

using namespace vnbytstr::detail;

// --- appending -----------------------------------------------------------------------------------

void CByteStream::Concat(const CByteStream& source) {
    CopyFrom(GetLength(), source, 0, source.GetLength());
}

void CByteStream::Concat(CByteStore& source) {
    CopyFrom(GetLength(), source, 0, source.GetLength());
}

void CByteStream::ConcatWord(WORD value) {
    const auto bytes = ToBigEndian<2>(value);
    Concat(bytes.data(), 2);
}

void CByteStream::Concat(DWORD count) {
    if (m_pStore) {
        m_pStore->Concat(count);
        return;
    }
    const ULONGLONG length = static_cast<ULONGLONG>(m_dwLength) + count;
    CheckLength(length);
    ExtendTo(static_cast<DWORD>(length));
    if (m_pStore) // it has just moved, with its old length
        m_pStore->SetByte(static_cast<DWORD>(length) - 1, 0);
}

CByteStream& CByteStream::operator+=(const CByteStream& source) {
    Concat(source);
    return *this;
}

CByteStream& CByteStream::operator+=(BYTE value) {
    ConcatByte(value);
    return *this;
}

CByteStream& CByteStream::operator+=(WORD value) {
    ConcatWord(value);
    return *this;
}

// --- copying in ----------------------------------------------------------------------------------

void CByteStream::CopyFrom(DWORD index, const BYTE* bytes, DWORD count) {
    CheckWritable();
    const ULONGLONG end = static_cast<ULONGLONG>(index) + count;
    CheckLength(end);
    if (m_pStore) {
        m_pStore->CopyFrom(index, bytes, count);
        return;
    }
    const bool moves = end > m_dwAllocated;
    const bool isOwn = count > 0 && std::less_equal<>()(m_pBuffer, bytes) &&
                       std::less<>()(bytes, m_pBuffer + m_dwAllocated);
    if (moves && isOwn) {
        const auto copy = WithMemoryException( // the buffer is about to go away
            [&] { return std::vector<BYTE>(bytes, bytes + count); });
        CopyWithin(index, copy.data(), count);
    } else {
        CopyWithin(index, bytes, count);
    }
    CheckInvariants();
}

/// CopyFrom of bytes that stay where they are when the buffer grows.
void CByteStream::CopyWithin(DWORD index, const BYTE* bytes, DWORD count) {
    AllocTo(index + count);
    if (m_pStore) {
        m_pStore->CopyFrom(index, bytes, count);
        return;
    }
    ExtendTo(index);
    if (m_pStore) {
        m_pStore->CopyFrom(index, bytes, count);
        return;
    }
    if (count > 0)
        std::memmove(m_pBuffer + index, bytes, count);
    m_dwLength = std::max(m_dwLength, index + count);
}

void CByteStream::CopyFrom(DWORD index, const CByteStream& source, DWORD sourceIndex, DWORD count) {
    if (source.m_pStore) {
        CopyFrom(index, *source.m_pStore, sourceIndex, count);
        return;
    }
    CheckWritable();
    count = CountToEnd(source.m_dwLength, sourceIndex, count);
    source.CheckRange(sourceIndex, count);
    if (count > 0)
        CopyFrom(index, source.m_pBuffer + sourceIndex, count);
}

void CByteStream::CopyFrom(DWORD index, CByteStore& source, DWORD sourceIndex, DWORD count) {
    CheckWritable();
    if (m_pStore) {
        m_pStore->CopyFrom(index, source, sourceIndex, count);
        return;
    }
    count = CountToEnd(source.GetLength(), sourceIndex, count);
    if (count > 0)
        CopyInChunks(*this, index, source, sourceIndex, count);
}

// --- copying out ---------------------------------------------------------------------------------

void CByteStream::CheckRange(DWORD index, DWORD count) const {
    if (count > 0 && index < m_dwStart)
        throw new CCacheException(CCacheException::kOutOfRange);
}

void CByteStream::CopyTo(DWORD index, BYTE* destination, DWORD count, DWORD size) const {
    if (m_pStore) {
        m_pStore->CopyTo(index, destination, count, size);
        return;
    }
    count = CheckedCount(m_dwLength, index, count);
    const DWORD copied = size != 0 ? std::min(count, size) : count;
    CheckRange(index, copied);
    if (copied > 0)
        std::memmove(destination, m_pBuffer + index, copied);
    if (size > copied)
        std::memset(destination + copied, 0, size - copied);
}

void CByteStream::CopyTo(DWORD index, CByteStream& destination, DWORD destinationIndex,
                         DWORD count) const {
    destination.CopyFrom(destinationIndex, *this, index, count);
}

void CByteStream::CopyTo(DWORD index, CByteStore& destination, DWORD destinationIndex,
                         DWORD count) const {
    destination.CopyFrom(destinationIndex, *this, index, count);
}

std::span<const BYTE> CByteStream::GetPiece(DWORD index) const {
    if (m_pStore)
        return m_pStore->GetPiece(index);
    if (index >= m_dwLength)
        return {};
    CheckRange(index, 1);
    return {m_pBuffer + index, m_dwLength - index};
}

CByteStream CByteStream::Mid(DWORD first, DWORD count) const {
    CByteStream slice;
    if (count > 0)
        slice.CopyFrom(0, *this, first, count);
    return slice;
}

CByteStream CByteStream::Right(DWORD count) const {
    count = std::min(count, GetLength());
    return Mid(GetLength() - count, count);
}

// --- hex text ------------------------------------------------------------------------------------

void CByteStream::CopyFromHex(DWORD, const char* text) {
    CheckWritable();
    AppendHex(*this, text);
}

void CByteStream::CopyFromHex(DWORD index, const CString& text) {
    CopyFromHex(index, static_cast<const char*>(text));
}

void CByteStream::CopyToHex(DWORD index, char* destination, DWORD count, DWORD size) const {
    WriteHex(*this, index, destination, count, size);
}

void CByteStream::CopyToHex(DWORD index, CString& destination, DWORD count) const {
    WriteHex(*this, index, destination, count);
}

// --- search and comparison -----------------------------------------------------------------------

DWORD CByteStream::Find(const CByteStream& pattern, DWORD start) const {
    if (m_pStore)
        return m_pStore->Find(pattern, start);
    start = std::max(start, m_dwStart);
    const DWORD length = pattern.GetLength();
    if (start > m_dwLength || length > m_dwLength - start)
        return kNotFound;
    std::vector<BYTE> copy;
    std::span<const BYTE> bytes(pattern.m_pBuffer, pattern.m_pStore ? 0 : length);
    if (pattern.m_pStore) {
        // The pattern is at most as long as this stream, which fits into memory.
        WithMemoryException([&] { copy.resize(length); });
        if (length > 0)
            pattern.CopyTo(0, copy.data(), length, length);
        bytes = copy;
    } else {
        pattern.CheckRange(0, length);
    }
    const auto found = FindBytes({m_pBuffer, m_dwLength}, bytes, start);
    return found ? static_cast<DWORD>(*found) : kNotFound;
}

bool CByteStream::operator==(const CByteStream& other) const {
    return this == &other || (GetLength() == other.GetLength() && Compare(*this, other) == 0);
}

bool CByteStream::operator==(const char* hex) const { return *this == CByteStream(hex); }

// --- moving --------------------------------------------------------------------------------------

void CByteStream::Shift(DWORD to, DWORD from) {
    CheckWritable();
    if (m_pStore) {
        m_pStore->Shift(to, from);
        return;
    }
    from = std::min(from, m_dwLength);
    if (to >= from)
        return;
    CheckRange(from, m_dwLength - from);
    std::memmove(m_pBuffer + to, m_pBuffer + from, m_dwLength - from);
    const DWORD distance = from - to;
    m_dwLength -= distance;
    if (m_dwCurrent >= from)
        m_dwCurrent -= distance;
    else if (m_dwCurrent > to)
        m_dwCurrent = to;
    m_dwStart = std::min(m_dwStart, m_dwLength);
    CheckInvariants();
}

void CByteStream::ShiftCurrent() {
    Shift(GetStart(), GetCurrentOffset());
    SetCurrentOffset(GetStart());
}

void CByteStream::Truncate(DWORD length) {
    if (length >= GetLength())
        return;
    CheckWritable();
    if (m_pStore) {
        m_pStore->Truncate(length);
        return;
    }
    m_dwLength = length;
    m_dwStart = std::min(m_dwStart, length);
    CheckInvariants();
}

// --- files ---------------------------------------------------------------------------------------

void CByteStream::Flush() {
    if (m_pStore)
        m_pStore->Flush(0);
}

void CByteStream::ReleasePages() {
    if (m_pStore)
        m_pStore->ReleasePages();
}

void CByteStream::CopyToFile(const char* name, int fromCurrent) {
    if (m_pStore) {
        m_pStore->CopyToFile(name, fromCurrent);
        return;
    }
    if (fromCurrent && m_dwCurrent != 0) {
        CByteStore store(m_pBuffer, m_dwLength); // has its own rule for a shifted image
        store.SetCurrentOffset(m_dwCurrent);
        store.CopyToFile(name, fromCurrent);
        return;
    }
    CReplacementFile target(name);
    target.Write(m_pBuffer, m_dwLength);
    target.Commit();
}

void CByteStream::SaveToFile(const char* name, int fromCurrent) {
    if (m_pStore) {
        m_pStore->SaveToFile(name, fromCurrent);
        return;
    }
    CopyToFile(name, fromCurrent);
    Empty(0);
    m_bComplete = FALSE; // as emptying a store does
}

void CByteStream::SetFileName(const char* name) {
    if (!m_pStore) {
        auto store = WithMemoryException([] { return std::make_unique<CByteStore>(); });
        store->SetAutoDelete(m_bAutoDelete);
        store->SetFileName(name); // on failure the content is unchanged
        FreeContent();
        Init();
        m_bAutoDelete = store->GetAutoDelete();
        m_pStore = store.release();
        return;
    }
    m_pStore->SetFileName(name);
}

BYTE* CByteStream::GetFirstPage() { return m_pStore ? m_pStore->GetFirstPage() : m_pBuffer; }
