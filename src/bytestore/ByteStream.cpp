// CByteStream: life, buffers, growth, typed access.
//
// Invariants, checked by CheckInvariants in debug builds after every change:
//  1. With m_pStore set, the content lies there; m_pBuffer is null, the mode internal, m_dwLength
//     and m_dwAllocated are 0, m_dwStart and m_dwCurrent not used.
//  2. Without it, m_pBuffer has room for m_dwAllocated bytes and holds m_dwLength of them. It is
//     null only when m_dwAllocated is 0.
//  3. An internal buffer comes from malloc and is the stream's to free. New memory in it is zero.
//  4. m_dwStart <= m_dwLength.
//  5. On a read-only buffer m_dwAllocated equals m_dwLength, so that there is never room to write
//     into.

#include "src/bytestore/Containers.h"

#include "vnbytstr/ByteStream.h"
#include "vnbytstr/Profile.h"

#include <atomic>
#include <cassert>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

using namespace vnbytstr::detail;

DWORD CByteStream::m_dwMaxSizeInMemory = 0;

// Constructors fill in the content through a stream that is complete already, so that an exception
// frees it.
CByteStream::CByteStream(const CByteStream& other) : CByteStream() { CopyRetained(other); }

CByteStream::CByteStream(CByteStore& store) : CByteStream() { CopyRetained(store); }

CByteStream::CByteStream(CByteStore&& store) : CByteStream() {
    if (store.GetLength() > GetMaxSizeInMemory())
        m_pStore = WithMemoryException([&] { return new CByteStore(std::move(store)); });
    else
        CopyRetained(store);
}

CByteStream::CByteStream(CByteStream&& other) noexcept : CByteStream() { Swap(other); }

CByteStream::CByteStream(const BYTE* bytes, DWORD count) : CByteStream() {
    CopyFrom(0, bytes, count);
}

CByteStream::CByteStream(const char* hex) : CByteStream() { CopyFromHex(0, hex); }

CByteStream::~CByteStream() { FreeContent(); }

void CByteStream::Init() noexcept {
    m_pBuffer = nullptr;
    m_dwLength = m_dwAllocated = m_dwCurrent = m_dwStart = 0;
    m_nBufferMode = kInternal;
    m_pStore = nullptr;
    m_bComplete = FALSE;
    m_bAutoDelete = TRUE;
}

void CByteStream::FreeContent() noexcept {
    if (m_nBufferMode == kInternal)
        std::free(m_pBuffer);
    delete m_pStore;
    m_pBuffer = nullptr;
    m_pStore = nullptr;
}

void CByteStream::Swap(CByteStream& other) noexcept {
    std::swap(m_pBuffer, other.m_pBuffer);
    std::swap(m_dwLength, other.m_dwLength);
    std::swap(m_dwAllocated, other.m_dwAllocated);
    std::swap(m_nBufferMode, other.m_nBufferMode);
    std::swap(m_dwCurrent, other.m_dwCurrent);
    std::swap(m_pStore, other.m_pStore);
    std::swap(m_bComplete, other.m_bComplete);
    std::swap(m_dwStart, other.m_dwStart);
    std::swap(m_bAutoDelete, other.m_bAutoDelete);
}

// --- assignment ----------------------------------------------------------------------------------

CByteStream& CByteStream::operator=(const CByteStream& other) {
    if (&other == this)
        return *this;
    CheckWritable();
    const bool fits = !m_pStore && !other.m_pStore && other.m_dwLength <= m_dwAllocated;
    if (m_nBufferMode == kWritable || fits) {
        PutIntoBuffer(other);
        return *this;
    }
    if (m_pStore) {
        *m_pStore = other;
        return *this;
    }
    CByteStream copy;
    copy.CopyRetained(other);
    TakeContent(copy);
    return *this;
}

CByteStream& CByteStream::operator=(const char* hex) {
    CheckWritable();
    const CByteStream bytes(hex);
    return *this = bytes;
}

CByteStream& CByteStream::operator=(CByteStream&& other) noexcept {
    if (&other == this)
        return *this;
    if (m_nBufferMode == kWritable && other.m_nBufferMode == kInternal && !other.m_pStore &&
        other.m_dwLength <= m_dwAllocated) {
        PutIntoBuffer(other);
        return *this;
    }
    CByteStream old(std::move(*this));
    Swap(other);
    return *this;
}

/// Puts what the source still holds into this stream, which is empty, at the same indexes.
template <class Source>
void CByteStream::CopyRetained(Source& source) {
    DWORD start, end;
    source.GetRange(start, end);
    if (!m_pStore) {
        if (end > GetMaxSizeInMemory())
            m_pStore = WithMemoryException([] { return new CByteStore; });
        else
            AllocTo(end); // by its least size it may pass the limit
    }
    if (m_pStore) {
        vnbytstr::detail::CopyRetained(*m_pStore, source);
        return;
    }
    if (end > start)
        source.CopyTo(start, m_pBuffer + start, end - start, end - start);
    m_dwLength = end;
    m_dwStart = start;
    CheckInvariants();
}

/// Copies what the source still holds into the buffer, at the same indexes; it may lie in that
/// buffer. Cause 3 when the buffer is too small. Nothing has changed after an exception. Throws
/// nothing when the source is in memory and fits.
void CByteStream::PutIntoBuffer(const CByteStream& source) {
    const DWORD start = source.GetStart();
    const DWORD end = source.GetLength();
    if (end > m_dwAllocated)
        throw new CCacheException(CCacheException::kReadOnly);
    if (source.m_pStore && end > start) {
        // Reading a page may fail.
        auto bytes = WithMemoryException([&] { return std::vector<BYTE>(end - start); });
        source.CopyTo(start, bytes.data(), end - start, end - start);
        std::memcpy(m_pBuffer + start, bytes.data(), bytes.size());
    } else if (end > start) {
        std::memmove(m_pBuffer + start, source.m_pBuffer + start, end - start);
    }
    m_dwLength = end;
    m_dwStart = start;
    m_dwCurrent = 0;
    CheckInvariants();
}

/// The content, which lies in memory, becomes that of `result`, which is not needed any more.
void CByteStream::TakeContent(CByteStream& result) {
    if (m_nBufferMode == kWritable) {
        PutIntoBuffer(result);
        return;
    }
    const BOOL complete = m_bComplete;
    const BOOL autoDelete = m_bAutoDelete;
    Swap(result);
    SetAutoDelete(autoDelete);
    SetComplete(complete);
    CheckInvariants();
}

// --- buffers -------------------------------------------------------------------------------------

void CByteStream::SetReadOnlyBuffer(const BYTE* bytes, DWORD length) {
    FreeContent();
    m_nBufferMode = kReadOnly;
    m_pBuffer = const_cast<BYTE*>(bytes);
    m_dwLength = m_dwAllocated = bytes ? length : 0;
    m_dwStart = 0;
}

void CByteStream::SetWritableBuffer(BYTE* bytes, DWORD length, DWORD capacity) {
    FreeContent();
    m_nBufferMode = kWritable;
    m_pBuffer = bytes;
    m_dwAllocated = bytes ? capacity : 0;
    m_dwLength = std::min(length, m_dwAllocated);
    m_dwStart = 0;
}

void CByteStream::SetInternalBuffer() {
    if (m_nBufferMode == kInternal)
        return;
    m_nBufferMode = kInternal;
    m_pBuffer = nullptr;
    m_dwLength = m_dwAllocated = m_dwStart = 0;
    m_pStore = nullptr;
}

CByteStream::operator const BYTE*() const {
    if (m_pStore)
        throw new CCacheException(CCacheException::kNotInMemory);
    return m_pBuffer;
}

BYTE* CByteStream::GetBuffer(DWORD size) {
    CheckWritable();
    if (!m_pStore)
        AllocTo(size);
    if (m_pStore)
        throw new CCacheException(CCacheException::kNotInMemory);
    return m_pBuffer;
}

BYTE* CByteStream::GetBufferSetLength(DWORD length) {
    BYTE* buffer = GetBuffer(length);
    m_dwLength = length;
    m_dwStart = std::min(m_dwStart, length);
    return buffer;
}

BYTE* CByteStream::GetConcatBuffer(DWORD size) {
    const ULONGLONG end = static_cast<ULONGLONG>(GetLength()) + size;
    CheckLength(end);
    BYTE* buffer = GetBuffer(static_cast<DWORD>(end));
    return buffer ? buffer + m_dwLength : nullptr;
}

BYTE* CByteStream::GetConcatBufferSetLength(DWORD size) {
    BYTE* buffer = GetConcatBuffer(size);
    m_dwLength += size;
    return buffer;
}

void CByteStream::ReleaseBuffer(DWORD length) {
    CheckWritable();
    if (m_pStore)
        throw new CCacheException(CCacheException::kInStore);
    if (length != 0)
        m_dwLength = std::min(length, m_dwAllocated);
    m_dwStart = std::min(m_dwStart, m_dwLength);
}

void CByteStream::CheckWritable() const {
    if (m_nBufferMode == kReadOnly)
        throw new CCacheException(CCacheException::kReadOnly);
}

void CByteStream::Empty(int freeBuffer) {
    if (m_pStore)
        m_pStore->Empty();
    m_dwLength = m_dwCurrent = m_dwStart = 0;
    if (m_nBufferMode == kReadOnly)
        m_dwAllocated = 0;
    if (freeBuffer && m_nBufferMode == kInternal) {
        std::free(m_pBuffer);
        m_pBuffer = nullptr;
        m_dwAllocated = 0;
        m_bComplete = FALSE;
    }
}

// --- growth --------------------------------------------------------------------------------------

DWORD CByteStream::GetMaxSizeInMemory() {
    // Several threads may be the first to ask; they all read the same setting.
    const std::atomic_ref<DWORD> limit(m_dwMaxSizeInMemory);
    DWORD size = limit.load(std::memory_order_relaxed);
    if (size == 0) {
        size = WithMemoryException(
            [] { return VNGetProfileDWORD(3, "Options", "MaxCacheBlock", 0x40000, 0); });
        if (VNGetProfileStatus() != ProfileUnreadable) // the setting may be readable next time
            limit.store(size, std::memory_order_relaxed);
    }
    return size;
}

void CByteStream::AllocTo(DWORD size) {
    if (m_dwAllocated >= size && (m_pBuffer || size == 0))
        return;
    if (m_nBufferMode != kInternal)
        throw new CCacheException(CCacheException::kReadOnly);
    ULONGLONG wanted = size;
    if (wanted < static_cast<ULONGLONG>(m_dwAllocated) + m_wGrowLength)
        wanted = m_dwAllocated * 2ull + m_wGrowLength;
    if (wanted > GetMaxSizeInMemory()) {
        MoveToStore(true);
        return;
    }
    const auto capacity = static_cast<std::size_t>(wanted);
    // realloc, since the system moves large blocks without copying them.
    auto* buffer = static_cast<BYTE*>(std::realloc(m_pBuffer, capacity));
    if (!buffer)
        AfxThrowMemoryException();
    std::memset(buffer + m_dwLength, 0, capacity - m_dwLength);
    m_pBuffer = buffer;
    m_dwAllocated = static_cast<DWORD>(capacity);
}

void CByteStream::ExtendTo(DWORD length) {
    if (m_dwLength >= length)
        return;
    CheckWritable();
    if (m_nBufferMode == kInternal && length > GetMaxSizeInMemory()) {
        MoveToStore(false); // deliberately without the cursor
        return;
    }
    AllocTo(length);
    // Growth by doubling may have passed the limit although the length asked for does not.
    if (!m_pStore)
        m_dwLength = length;
}

void CByteStream::MoveToStore(bool withCursor) {
    auto store =
        WithMemoryException([&] { return std::make_unique<CByteStore>(m_pBuffer, m_dwLength); });
    store->SetComplete(m_bComplete);
    store->SetAutoDelete(m_bAutoDelete);
    store->DiscardUpTo(m_dwStart);
    if (withCursor)
        store->SetCurrentOffset(m_dwCurrent);
    std::free(m_pBuffer);
    m_pBuffer = nullptr;
    m_dwLength = m_dwAllocated = 0;
    m_pStore = store.release();
    CheckInvariants();
}

// --- flags and range -----------------------------------------------------------------------------

DWORD CByteStream::GetStart() const {
    DWORD start, end;
    GetRange(start, end);
    return start;
}

void CByteStream::GetRange(DWORD& start, DWORD& end) const {
    if (m_pStore) {
        m_pStore->GetRange(start, end);
        return;
    }
    start = m_dwStart;
    end = m_dwLength;
}

void CByteStream::SetComplete(BOOL complete) {
    m_bComplete = complete;
    if (m_pStore)
        m_pStore->SetComplete(complete);
}

void CByteStream::SetAutoDelete(BOOL autoDelete) {
    m_bAutoDelete = autoDelete;
    if (m_pStore)
        m_pStore->SetAutoDelete(autoDelete);
}

void CByteStream::DiscardUpTo(DWORD index) {
    if (m_pStore)
        m_pStore->DiscardUpTo(index);
    else if (index > m_dwStart)
        m_dwStart = std::min(index, m_dwLength);
}

// --- typed access --------------------------------------------------------------------------------

BYTE CByteStream::GetByteSlow(DWORD index) const { return m_pStore ? m_pStore->GetByte(index) : 0; }

WORD CByteStream::GetWord(DWORD index) const { return GetTwoBytes(*this, index); }
DWORD CByteStream::GetDWord(DWORD index) const {
    return static_cast<DWORD>(GetWide<4>(*this, index));
}
LONGLONG CByteStream::GetInt48(DWORD index) const {
    return static_cast<LONGLONG>(GetWide<6>(*this, index));
}
LONGLONG CByteStream::GetInt64(DWORD index) const {
    return static_cast<LONGLONG>(GetWide<8>(*this, index));
}

/// Sets a number, after the extension that a Set makes: unlike appending it may lose the cursor.
template <std::size_t Width>
void CByteStream::SetNumber(DWORD index, ULONGLONG value) {
    CheckWritable();
    const ULONGLONG end = static_cast<ULONGLONG>(index) + Width;
    CheckLength(end);
    if (!m_pStore)
        ExtendTo(static_cast<DWORD>(end));
    if (m_pStore) {
        SetWide<Width>(*m_pStore, index, value);
        return;
    }
    const auto bytes = ToBigEndian<Width>(value);
    std::memcpy(m_pBuffer + index, bytes.data(), Width);
}

void CByteStream::SetByte(DWORD index, BYTE value) {
    if (m_pStore)
        m_pStore->SetByte(index, value);
    else
        SetNumber<1>(index, value);
}

void CByteStream::SetWord(DWORD index, WORD value) { SetNumber<2>(index, value); }
void CByteStream::SetDWord(DWORD index, DWORD value) { SetNumber<4>(index, value); }
void CByteStream::SetInt48(DWORD index, LONGLONG value) {
    SetNumber<6>(index, static_cast<ULONGLONG>(value));
}
void CByteStream::SetInt64(DWORD index, LONGLONG value) {
    SetNumber<8>(index, static_cast<ULONGLONG>(value));
}

// --- invariants ----------------------------------------------------------------------------------

#ifndef NDEBUG
void CByteStream::CheckInvariants() const {
    if (m_pStore) {
        assert(m_pBuffer == nullptr && m_nBufferMode == kInternal);
        assert(m_dwLength == 0 && m_dwAllocated == 0);
        return;
    }
    assert(m_dwLength <= m_dwAllocated);
    assert(m_pBuffer || m_dwAllocated == 0);
    assert(m_dwStart <= m_dwLength);
    assert(m_nBufferMode != kReadOnly || m_dwAllocated == m_dwLength);
}
#endif
