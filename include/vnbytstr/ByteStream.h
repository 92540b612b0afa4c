// CByteStream: the library's everyday byte value, in one memory block while it is small, on a
// caller's buffer, or in a CByteStore once it has grown.
#pragma once

#include "vnbytstr/ByteStore.h"
#include "vnbytstr/CacheException.h"
#include "vnbytstr/framework/Object.h"
#include "vnbytstr/framework/String.h"

/// Byte sequence of up to 4 GiB - 1 bytes. Content of up to GetMaxSizeInMemory() bytes stays in one
/// heap block that grows by doubling; beyond that the stream moves it into a CByteStore and stays
/// with that store, even when it is emptied. A stream can also be bound to a caller's buffer, which
/// it neither frees nor grows.
///
/// Indexes count bytes from 0. All multi-byte values are big-endian. Operations that CByteStore has
/// too mean the same here, wherever the content lies; ByteStore.h describes their ranges, their
/// exceptions and the state after an exception. Comments here tell only what differs.
///
/// Exceptions: CCacheException with the causes of CByteStore and also 2 (a pointer to content in a
/// store was asked for), 3 (the buffer is read-only, or external and full), 4 (ReleaseBuffer of
/// content in a store), 6 (past 4 GiB - 1); CMemoryException when memory runs out.
///
/// Threads: one at a time.
class VNBYTSTR_API CByteStream : public CObject {
public:
    static constexpr WORD m_wGrowLength = 32; ///< least growth of the block, in bytes
    static constexpr DWORD kNotFound = CByteStore::kNotFound; ///< Find: the pattern does not occur

    /// Empty. A block is allocated when it is needed.
    CByteStream() noexcept { Init(); }
    /// A copy of the bytes that the source still holds, at the same indexes; the start is copied
    /// too. It lies in a block or, if it is too long for one, in a store.
    CByteStream(const CByteStream& other);
    CByteStream(CByteStore& store);
    /// Takes the store over; bytes that fit into a block are copied instead.
    CByteStream(CByteStore&& store);
    CByteStream(const BYTE* bytes, DWORD count);
    /// From hex text, as CopyFromHex reads it.
    CByteStream(const char* hex);
    /// Takes everything from the other, including flags, cursor and the binding to a caller's
    /// buffer, and leaves it like a new stream.
    CByteStream(CByteStream&& other) noexcept;
    /// Frees the block and the store, never a caller's buffer.
    ~CByteStream() override;

    /// Replaces the content by a copy, made as by the constructors. Content in a store or on a
    /// caller's buffer stays there; the auto-delete flag stays; the cursor becomes 0. After an
    /// exception (cause 3 when a caller's buffer is too small) the old content is still there. For
    /// a moment both contents need room.
    CByteStream& operator=(const CByteStream& other);
    CByteStream& operator=(const char* hex);
    /// Drops the content and takes everything from the other, as the constructor does. One
    /// exception: when this stream is bound to a caller's writable buffer with room for the bytes
    /// of the other's block, they are copied into that buffer, as by the other assignments.
    CByteStream& operator=(CByteStream&& other) noexcept;

    // --- binding to a caller's buffer ------------------------------------------------------------
    /// The stream's content becomes the `length` bytes at `bytes`, not copied, never written. They
    /// must outlive the binding.
    void SetReadOnlyBuffer(const BYTE* bytes, DWORD length);
    /// The same for bytes that may be written; the content may grow up to `capacity` bytes.
    void SetWritableBuffer(BYTE* bytes, DWORD length, DWORD capacity);
    /// Ends a binding: the stream is empty. Does nothing when it is not bound.
    void SetInternalBuffer();
    BOOL IsReadOnlyBuffer() const { return m_nBufferMode == kReadOnly; }
    /// FALSE once the content lies in a store.
    BOOL IsAllInBuffer() const { return m_pStore == nullptr; }

    // --- the content as memory (cause 2 when it lies in a store) ---------------------------------
    /// Null when the stream never held anything. Valid until the next change.
    operator const BYTE*() const;
    /// A buffer of at least `size` bytes that begins with the content. Write up to `size` bytes,
    /// then call ReleaseBuffer with the new length.
    BYTE* GetBuffer(DWORD size);
    /// The same, and the length becomes `length`.
    BYTE* GetBufferSetLength(DWORD length);
    /// Room for `size` bytes after the content.
    BYTE* GetConcatBuffer(DWORD size);
    /// The same, and the length grows by `size`.
    BYTE* GetConcatBufferSetLength(DWORD size);
    /// Sets the length, at most the buffer's size; 0 keeps it. Cause 4 in a store.
    void ReleaseBuffer(DWORD length = 0);

    // --- size, range, cursor: as in CByteStore ---------------------------------------------------
    DWORD GetLength() const { return m_pStore ? m_pStore->GetLength() : m_dwLength; }
    void GetRange(DWORD& start, DWORD& end) const;
    BOOL IsByteAvailable(DWORD index) const { return GetStart() <= index && index < GetLength(); }
    BOOL IsEmpty() const { return GetStart() >= GetLength(); }
    BOOL GetComplete() const { return m_pStore ? m_pStore->GetComplete() : m_bComplete; }
    void SetComplete(BOOL complete);

    DWORD GetCurrentOffset() const { return m_pStore ? m_pStore->GetCurrentOffset() : m_dwCurrent; }
    DWORD GetCO() const { return GetCurrentOffset(); }
    inline void SetCurrentOffset(DWORD index);
    DWORD GetRemaining() const { return GetLength() - GetCurrentOffset(); }
    void Skip(DWORD count) { SetCurrentOffset(GetCurrentOffset() + count); }
    void SkipByte() { Skip(1); }
    void SkipWord() { Skip(2); }

    // --- typed access, big-endian: as in CByteStore ----------------------------------------------
    inline BYTE GetByte(DWORD index) const;
    WORD GetWord(DWORD index) const;
    DWORD GetDWord(DWORD index) const;
    LONGLONG GetInt48(DWORD index) const; ///< 6 bytes, 0 to 2^48 - 1
    LONGLONG GetInt64(DWORD index) const;
    BYTE operator[](DWORD index) const { return GetByte(index); }
    BYTE GetCurrentByte() const { return GetByte(GetCurrentOffset()); }
    WORD GetCurrentWord() const { return GetWord(GetCurrentOffset()); }
    DWORD GetCurrentDWord() const { return GetDWord(GetCurrentOffset()); }
    LONGLONG GetCurrentInt48() const { return GetInt48(GetCurrentOffset()); }
    LONGLONG GetCurrentInt64() const { return GetInt64(GetCurrentOffset()); }

    /// Cause 3 on a read-only buffer, whatever the index. At or past the end the content is
    /// extended first. When it then moves into a store because the new length passes the limit, the
    /// cursor becomes 0; when only the block's growth by doubling would pass it, the cursor stays.
    void SetByte(DWORD index, BYTE value);
    void SetWord(DWORD index, WORD value);
    void SetDWord(DWORD index, DWORD value);
    void SetInt48(DWORD index, LONGLONG value); ///< the low 48 bits
    void SetInt64(DWORD index, LONGLONG value);
    void SetCurrentByte(BYTE value) { SetByte(GetCurrentOffset(), value); }
    void SetCurrentWord(WORD value) { SetWord(GetCurrentOffset(), value); }
    void SetCurrentDWord(DWORD value) { SetDWord(GetCurrentOffset(), value); }
    void SetCurrentInt48(LONGLONG value) { SetInt48(GetCurrentOffset(), value); }
    void SetCurrentInt64(LONGLONG value) { SetInt64(GetCurrentOffset(), value); }

    // --- appending -------------------------------------------------------------------------------
    /// Appending keeps the cursor, also when it moves the content into a store.
    void Concat(const BYTE* bytes, DWORD count) { CopyFrom(GetLength(), bytes, count); }
    void Concat(const CByteStream& source);
    void Concat(CByteStore& source);
    void Concat(const char* hex) { CopyFromHex(GetLength(), hex); }
    inline void ConcatByte(BYTE value);
    void ConcatWord(WORD value);
    /// In memory: adds `count` real bytes, zero in new memory, otherwise what the buffer held
    /// there. In a store: accounts for `count` bytes never held, as CByteStore::Concat(DWORD) does.
    void Concat(DWORD count);
    CByteStream& operator+=(const CByteStream& source);
    CByteStream& operator+=(BYTE value);
    CByteStream& operator+=(WORD value);

    // --- copying: as in CByteStore ---------------------------------------------------------------
    void CopyFrom(DWORD index, const BYTE* bytes, DWORD count);
    void CopyFrom(DWORD index, const CByteStream& source, DWORD sourceIndex = 0, DWORD count = 0);
    void CopyFrom(DWORD index, CByteStore& source, DWORD sourceIndex = 0, DWORD count = 0);
    void CopyTo(DWORD index, BYTE* destination, DWORD count, DWORD size) const;
    void CopyTo(DWORD index, CByteStream& destination, DWORD destinationIndex = 0,
                DWORD count = 0) const;
    void CopyTo(DWORD index, CByteStore& destination, DWORD destinationIndex = 0,
                DWORD count = 0) const;
    void CopyCurrentTo(BYTE* destination, DWORD count, DWORD size) const {
        CopyTo(GetCurrentOffset(), destination, count, size);
    }
    void CopyCurrentTo(CByteStream& destination, DWORD destinationIndex = 0,
                       DWORD count = 0) const {
        CopyTo(GetCurrentOffset(), destination, destinationIndex, count);
    }
    void CopyCurrentTo(CByteStore& destination, DWORD destinationIndex = 0, DWORD count = 0) const {
        CopyTo(GetCurrentOffset(), destination, destinationIndex, count);
    }
    void CopyFromHex(DWORD index, const char* text);
    void CopyFromHex(DWORD index, const CString& text);
    void CopyToHex(DWORD index, char* destination, DWORD count, DWORD size) const;
    void CopyToHex(DWORD index, CString& destination, DWORD count) const;
    /// In memory, all bytes from `index` on; in a store see there. Extension.
    std::span<const BYTE> GetPiece(DWORD index) const;

    // --- slices, search, comparison: as in CByteStore --------------------------------------------
    CByteStream Mid(DWORD first, DWORD count) const;
    CByteStream Mid(DWORD first) const { return Mid(first, 0xFFFFFFFF); }
    CByteStream Left(DWORD count) const { return Mid(0, count); }
    CByteStream Right(DWORD count) const;
    DWORD Find(const CByteStream& pattern, DWORD start = 0) const;

    bool operator==(const CByteStream& other) const;
    bool operator==(CByteStore& store) const { return store == *this; }
    bool operator==(const char* hex) const;
    bool operator!=(const CByteStream& other) const { return !(*this == other); }
    bool operator!=(CByteStore& store) const { return !(store == *this); }
    bool operator!=(const char* hex) const { return !(*this == hex); }

    // --- moving and discarding: as in CByteStore -------------------------------------------------
    void Shift(DWORD to, DWORD from);
    void ShiftCurrent();
    void DiscardUpTo(DWORD index);
    /// Cause 3 on a read-only buffer. Extension.
    void Truncate(DWORD length);

    // --- the whole stream ------------------------------------------------------------------------
    /// Length and cursor become 0. With `freeBuffer` the stream's block is freed and the complete
    /// flag cleared. A store stays attached, empty.
    void Empty(int freeBuffer = 0);
    /// Writes what a store has in memory to its swap file; nothing to do in memory.
    void Flush();
    /// Frees the memory of a store's pages, see CByteStore; nothing to do in memory. Extension.
    void ReleasePages();
    void SaveToFile(const char* name, int fromCurrent = 0);
    void CopyToFile(const char* name, int fromCurrent = 0);
    /// The content becomes that of an existing file, through a store. See CByteStore::SetFileName
    /// for what auto-delete then means.
    void SetFileName(const char* name);
    /// The store's swap file; "" in memory.
    const char* GetFileName() const { return m_pStore ? m_pStore->GetFileName() : ""; }
    /// In memory it is remembered for a store that the content may move into.
    BOOL GetAutoDelete() const { return m_pStore ? m_pStore->GetAutoDelete() : m_bAutoDelete; }
    void SetAutoDelete(BOOL autoDelete);
    /// The first page in a store, the whole buffer in memory.
    BYTE* GetFirstPage();

    // --- translation: as in CByteStore, and in place ---------------------------------------------
    /// Replaces the content by its translation; the cursor becomes 0. Returns 0, with the content
    /// unchanged, when the pair cannot be translated or the options stopped the translation.
    int TranslateCCSID(WORD from, WORD to, STranslationReport* report = nullptr, UINT options = 0);
    int TranslateCCSID(WORD from, WORD to, CByteStream& destination,
                       STranslationReport* report = nullptr, UINT options = 0) const;
    int TranslateCCSID(DWORD index, DWORD count, BYTE* out, DWORD* outLength, WORD from, WORD to,
                       STranslationReport* report = nullptr, UINT options = 0) const;
    int TranslateCCSID(BYTE* out, DWORD* outLength, WORD from, WORD to,
                       STranslationReport* report = nullptr, UINT options = 0) const;
    int TranslateCCSID(WORD from, CString& text, STranslationReport* report = nullptr,
                       UINT options = 0) const;

    // --- encryption, in place --------------------------------------------------------------------
    // In pieces of 32768 bytes counted from the start, as in CByteStore, wherever the content lies;
    // see there for what that means for chained mode and for padding. The start and the cursor
    // become 0.

    /// 1, or 0 with the content unchanged.
    int Encrypt(const CByteStream& key, const CByteStream& vector, CDES::EMode mode, bool pad);
    int Decrypt(const CByteStream& key, const CByteStream& vector, CDES::EMode mode, bool pad);

    /// Most bytes that a stream keeps in its block: "MaxCacheBlock" under "Options" (262144 by
    /// default), read once per process; a configured 0 is read again on every call.
    static DWORD GetMaxSizeInMemory();
    static DWORD m_dwMaxSizeInMemory; ///< that limit, 0 until first needed

    /// The store that the content lies in, null while it is in memory. The stream owns it.
    const CByteStore* GetStore() const { return m_pStore; }

protected:
    void Init() noexcept;         ///< the state of a new stream
    void AllocTo(DWORD capacity); ///< makes the block at least as large
    void ExtendTo(DWORD length);  ///< appends bytes up to a length

private:
    enum Mode { kInternal = 0, kReadOnly = 1, kWritable = 2 };

    void Swap(CByteStream& other) noexcept;
    DWORD GetStart() const;
    void CheckWritable() const;
    void CheckRange(DWORD index, DWORD count) const;
    void MoveToStore(bool withCursor);
    void FreeContent() noexcept;
    template <class Source>
    void CopyRetained(Source& source);
    void PutIntoBuffer(const CByteStream& source);
    BYTE GetByteSlow(DWORD index) const;
    template <std::size_t Width>
    void SetNumber(DWORD index, ULONGLONG value);
    void CopyWithin(DWORD index, const BYTE* bytes, DWORD count);
    void TakeContent(CByteStream& other);
    int Encipher(bool encrypt, const CByteStream& key, const CByteStream& vector, CDES::EMode mode,
                 bool pad);
#ifndef NDEBUG
    void CheckInvariants() const;
#else
    void CheckInvariants() const {}
#endif

    BYTE* m_pBuffer;
    DWORD m_dwLength;
    DWORD m_dwAllocated;
    int m_nBufferMode;
    DWORD m_dwCurrent;
    CByteStore* m_pStore;
    BOOL m_bComplete;
    DWORD m_dwStart; ///< first byte not discarded
    BOOL m_bAutoDelete;
};

inline void CByteStream::SetCurrentOffset(DWORD index) {
    if (m_pStore)
        m_pStore->SetCurrentOffset(index);
    else
        m_dwCurrent = index;
}

inline BYTE CByteStream::GetByte(DWORD index) const {
    if (index < m_dwLength) [[likely]] // never in a store, where m_dwLength is 0
        return m_pBuffer[index];
    return GetByteSlow(index);
}

inline void CByteStream::ConcatByte(BYTE value) {
    if (m_dwLength < m_dwAllocated) [[likely]] { // never in a store or on a read-only buffer
        m_pBuffer[m_dwLength++] = value;
        return;
    }
    if (m_pStore)
        m_pStore->ConcatByte(value);
    else
        CopyFrom(m_dwLength, &value, 1);
}
