// CByteStore: a byte sequence of up to 4 GiB - 1 bytes, partly in memory, partly in a swap file.
// See ByteStream.h for the type that slices come as.
#pragma once

#include "vnbytstr/BytePage.h"
#include "vnbytstr/CacheException.h"
#include "vnbytstr/DES.h"
#include "vnbytstr/framework/Arrays.h"
#include "vnbytstr/framework/File.h"
#include "vnbytstr/framework/Object.h"
#include "vnbytstr/framework/String.h"

#include <memory>
#include <span>
#include <vector>

class CByteStream;
struct STranslationReport;

namespace vnbytstr {
class FileReplacement;
}
namespace vnbytstr::detail {
class PageOnFile;
class WriteBehind;
struct SwapImage;
} // namespace vnbytstr::detail

/// Byte sequence in pages of 32768 bytes. At most GetTargetMaxPages() pages stay in memory; the
/// least recently used ones go to a swap file in the temporary folder, made when the first page has
/// to leave. Indexes count bytes from 0. All multi-byte values are big-endian.
///
/// The valid range is [start, length): `start` moves up when bytes are discarded.
///
/// Threads: one at a time.
///
/// Exceptions: CCacheException (see there; 6 also when there is no memory for a page),
/// CMemoryException when other memory runs out, CFileException when the swap file or a target file
/// cannot be opened, renamed or synced. After one the store has the length it had before the call,
/// every byte it held outside the range that the call was to change, and can be used on: once the
/// disk has room again, the same call succeeds. (A failed Shift or overwriting copy may have moved
/// part of its bytes.)
///
/// Files: a store knows its files by their identity, not by their names. It removes, cuts or
/// replaces the file under GetFileName() only while that is the one that it made, opened or put
/// there; what another program has put under the name is left alone. Names are made full at once,
/// so a program may change its folder. A page that comes back from the swap file other than it was
/// written is cause 2, never data: its checksum (CRC-32C) is kept in memory. Pages of a file opened
/// with SetFileName have none until the store writes them, and SaveToFile does not read what it
/// renames.
///
/// Forked children: a child reads what its parent's store holds and may change it; its changes go
/// to another swap file, and its parent's files are left alone. A page that the parent changes
/// after the fork, and that the child does not have in memory, gives cause 2 in the child.
///
/// Reading past the end: the one- and two-byte forms give zero bytes there. The wider ones throw
/// CCacheException(0) when they start past the end; one that starts at the end gives 0, and one
/// that runs past it has zeros for the missing low-order bytes. Bytes below the start, and bytes
/// that were accounted for by Concat(DWORD) but never stored, are undefined; nothing is read out of
/// bounds.
///
/// Replacement: the page with the smallest access time leaves first, the oldest-made of equals.
/// Every access stamps its page with the clock, but for a run of accesses of one or two bytes to
/// pages in memory: after the first 16 only their order is kept, and the time between the run's
/// ends is divided among them before a page has to leave or any other operation follows. Up to 8
/// pages that have left are gathered before they are written together, in 256 KiB beside the cache.
class VNBYTSTR_API CByteStore : public CObject {
public:
    static constexpr DWORD kNotFound = 0xFFFFFFFF; ///< Find: the pattern does not occur

    /// Empty, in memory only.
    CByteStore() noexcept;
    /// A copy of the bytes that the source still holds, at their indexes; the start is copied too.
    /// The source is not const, since reading brings its pages into memory: a const store can be
    /// neither read nor copied.
    CByteStore(CByteStore& source);
    CByteStore(const CByteStream& source);
    CByteStore(const BYTE* bytes, DWORD count);
    /// From hex text, as CopyFromHex reads it.
    CByteStore(const char* hex);
    /// Takes all that the source has, its swap file, flags and cursor too, and leaves it as a new
    /// store is.
    CByteStore(CByteStore&& source) noexcept;
    /// Deletes the swap file when auto-delete is on.
    ~CByteStore() override;

    /// Replaces the content by a copy, made as the constructors make it. The old content is dropped
    /// once the copy is complete, as Empty drops it, so that it is still there after an exception;
    /// for a moment there is need of room for both. The auto-delete flag stays: when it is off, the
    /// old file stays too, and so will a swap file that the copy needs. The complete flag and the
    /// cursor become 0. Assigning an object to itself changes nothing.
    CByteStore& operator=(CByteStore& source);
    CByteStore& operator=(const CByteStream& source);
    CByteStore& operator=(const char* hex);
    /// Empties this store and takes all that the source has, its flags too; see the constructor.
    CByteStore& operator=(CByteStore&& source) noexcept;

    // --- size, range, cursor ---------------------------------------------------------------------
    /// One past the last index.
    DWORD GetLength() const { return m_dwLength; }
    /// The valid range: first index held, and the length.
    void GetRange(DWORD& start, DWORD& end) const {
        start = m_dwStart;
        end = m_dwLength;
    }
    BOOL IsByteAvailable(DWORD index) const { return m_dwStart <= index && index < m_dwLength; }
    BOOL IsEmpty() const { return m_dwLength == 0 || m_dwStart >= m_dwLength; }
    /// Always FALSE: a store never claims to be wholly in memory.
    BOOL IsAllInBuffer() const { return FALSE; }
    /// Set by the producer when the last byte has arrived; cleared by Empty.
    BOOL GetComplete() const { return m_bComplete; }
    void SetComplete(BOOL complete) { m_bComplete = complete; }

    /// The cursor, where the ...Current... operations read and write. They do not move it, and
    /// nothing checks it against the length.
    DWORD GetCurrentOffset() const { return m_dwCurrent; }
    DWORD GetCO() const { return m_dwCurrent; }
    void SetCurrentOffset(DWORD index) { m_dwCurrent = index; }
    DWORD GetRemaining() const { return m_dwLength - m_dwCurrent; }
    void Skip(DWORD count) { m_dwCurrent += count; }
    void SkipByte() { m_dwCurrent += 1; }
    void SkipWord() { m_dwCurrent += 2; }

    // --- typed access, big-endian ----------------------------------------------------------------
    inline BYTE GetByte(DWORD index);
    WORD GetWord(DWORD index);
    DWORD GetDWord(DWORD index);
    LONGLONG GetInt48(DWORD index); ///< 6 bytes, 0 to 2^48 - 1
    LONGLONG GetInt64(DWORD index);
    BYTE operator[](DWORD index) { return GetByte(index); }
    BYTE GetCurrentByte() { return GetByte(m_dwCurrent); }
    WORD GetCurrentWord() { return GetWord(m_dwCurrent); }
    DWORD GetCurrentDWord() { return GetDWord(m_dwCurrent); }
    LONGLONG GetCurrentInt48() { return GetInt48(m_dwCurrent); }
    LONGLONG GetCurrentInt64() { return GetInt64(m_dwCurrent); }

    /// A Set at or past the end extends the store first (with zeros); cause 6 past 4 GiB - 1.
    void SetByte(DWORD index, BYTE value);
    void SetWord(DWORD index, WORD value);
    void SetDWord(DWORD index, DWORD value);
    void SetInt48(DWORD index, LONGLONG value); ///< the low 48 bits
    void SetInt64(DWORD index, LONGLONG value);
    void SetCurrentByte(BYTE value) { SetByte(m_dwCurrent, value); }
    void SetCurrentWord(WORD value) { SetWord(m_dwCurrent, value); }
    void SetCurrentDWord(DWORD value) { SetDWord(m_dwCurrent, value); }
    void SetCurrentInt48(LONGLONG value) { SetInt48(m_dwCurrent, value); }
    void SetCurrentInt64(LONGLONG value) { SetInt64(m_dwCurrent, value); }

    // --- appending -------------------------------------------------------------------------------
    /// Appends `count` bytes. Cause 6 when the length would pass 4 GiB - 1.
    void Concat(const BYTE* bytes, DWORD count);
    inline void ConcatByte(BYTE value);
    void ConcatWord(WORD value);
    void Concat(CByteStore& source);
    void Concat(const CByteStream& source);
    /// Appends hex text, as CopyFromHex reads it.
    void Concat(const char* hex);
    /// Stores nothing: accounts for `count` bytes that were consumed elsewhere, by adding to both
    /// the length and the start. A literal 0 is ambiguous, being a null text too: DWORD{0}.
    void Concat(DWORD count);

    // --- copying ---------------------------------------------------------------------------------
    // In the store and stream forms a count of 0, or one that reaches past the source's end, means
    // up to the source's end; a source index past its end copies nothing. Source and destination
    // may be the same object.

    /// Writes the source's bytes at `index`, extending the store where they reach past its end.
    void CopyFrom(DWORD index, CByteStore& source, DWORD sourceIndex = 0, DWORD count = 0);
    void CopyFrom(DWORD index, const CByteStream& source, DWORD sourceIndex = 0, DWORD count = 0);
    void CopyFrom(DWORD index, const BYTE* bytes, DWORD count);
    /// Copies `count` bytes from `index` on; 0, or more than there are, means up to the end. A
    /// nonzero `size`, the room at `destination`, bounds the copy, and what it leaves of the room
    /// is filled with zeros; 0 means there is room enough. Cause 0 when the bytes lie outside the
    /// valid range.
    void CopyTo(DWORD index, BYTE* destination, DWORD count, DWORD size);
    /// Copies into another container, at its `destinationIndex`.
    void CopyTo(DWORD index, CByteStream& destination, DWORD destinationIndex = 0, DWORD count = 0);
    void CopyTo(DWORD index, CByteStore& destination, DWORD destinationIndex = 0, DWORD count = 0);
    /// As CopyTo, from the cursor on.
    void CopyCurrentTo(BYTE* destination, DWORD count, DWORD size) {
        CopyTo(m_dwCurrent, destination, count, size);
    }
    void CopyCurrentTo(CByteStream& destination, DWORD destinationIndex = 0, DWORD count = 0) {
        CopyTo(m_dwCurrent, destination, destinationIndex, count);
    }
    void CopyCurrentTo(CByteStore& destination, DWORD destinationIndex = 0, DWORD count = 0) {
        CopyTo(m_dwCurrent, destination, destinationIndex, count);
    }

    /// Appends the bytes that hex text stands for; `index` is ignored. Pairs of digits, any case,
    /// with blanks allowed before a pair; the first other character ends the text, and a lone first
    /// digit is dropped.
    void CopyFromHex(DWORD index, const char* text);
    void CopyFromHex(DWORD index, const CString& text);
    /// Writes two upper-case digits for each of `count` bytes (0, or too many: up to the end), and
    /// a NUL where `size` leaves room. `size` is the room in characters, 0 when there is enough.
    /// Cause 0 when the bytes lie outside the valid range, when the digits do not fit, or when they
    /// or `size` are 0x80000000 or more.
    void CopyToHex(DWORD index, char* destination, DWORD count, DWORD size);
    /// The same into a string of just the digits.
    void CopyToHex(DWORD index, CString& destination, DWORD count);

    /// The bytes from `index` on that lie together in memory: up to the end of their page. Empty at
    /// the end and past it; cause 0 below the start. Valid until the next operation. With it the
    /// content can be read piece by piece without a copy. Extension.
    std::span<const BYTE> GetPiece(DWORD index);

    // --- slices, search, comparison --------------------------------------------------------------
    /// Copies of parts; a part that reaches past the end is cut there. Cause 0 below the start.
    CByteStream Mid(DWORD first, DWORD count);
    CByteStream Mid(DWORD first);
    CByteStream Left(DWORD count);
    CByteStream Right(DWORD count);

    /// Index of the first occurrence of `pattern` at or after `start` (and not below the store's
    /// own start), or kNotFound. An empty pattern is found where the search starts. The time is
    /// linear for patterns of up to 65536 bytes, whatever they are.
    DWORD Find(const CByteStream& pattern, DWORD start = 0);

    /// Same length and same bytes (those that both sides still hold).
    bool operator==(CByteStore& other);
    bool operator==(const CByteStream& other);
    bool operator==(const char* hex);
    bool operator!=(CByteStore& other) { return !(*this == other); }
    bool operator!=(const CByteStream& other) { return !(*this == other); }
    bool operator!=(const char* hex) { return !(*this == hex); }

    // --- moving and discarding -------------------------------------------------------------------
    /// Moves the bytes from `from` to the end down to `to` (to <= from; anything else does nothing)
    /// and shortens the store by the difference. A cursor at or beyond `from` moves along; one
    /// between the two becomes `to`.
    void Shift(DWORD to, DWORD from);
    /// Drops the bytes between the start and the cursor; the cursor becomes the start.
    void ShiftCurrent();
    /// Raises the start to `index` (at most the length); never lowers it.
    void DiscardUpTo(DWORD index);
    /// Drops the bytes from `length` on, if there are any. The start is then at most the length;
    /// the cursor stays. Extension.
    void Truncate(DWORD length) noexcept;

    // --- the whole store -------------------------------------------------------------------------
    /// Drops the content, closes the swap file, and deletes it when auto-delete is on (a device or
    /// a pipe is not deleted). Never throws.
    void Empty();
    /// Writes what is in memory to the swap file (made if needed), which then is an image of the
    /// store: byte i at position i, nothing after the end. With `fromCurrent`, the file under
    /// GetFileName() is the shifted image of CopyToFile instead, until the next Flush without; the
    /// store keeps its own image in a file without a name. Does not wait for the disk.
    /// CCacheException(4) when a page cannot be written; CFileException (EEXIST, ENOENT) when the
    /// shifted image is to go under a name that is not the store's any more.
    void Flush(int fromCurrent = 0);
    /// As Flush, and gives the memory of all pages back; a page comes back when it is next needed.
    /// For a value that is kept but not in use: many of them would each hold their pages.
    /// Extension.
    void ReleasePages();
    /// Makes the content the file `name`, in place of any that is there, and empties the store.
    /// Returns when the content is on the disk. On failure the store has its content still and an
    /// old `name` is unchanged; if the sync to the disk failed, the next save writes everything
    /// again. The file is replaced as CReplacementFile does it; without copying where a
    /// swap file on the same file system can be renamed. A file opened with SetFileName is moved.
    /// CFileException with the target's name for what is wrong with the target (a null name, no
    /// room), CCacheException for what is wrong with the swap file.
    void SaveToFile(const char* name, int fromCurrent = 0);
    /// Writes the content to the file `name`; the store keeps it. Otherwise as SaveToFile. When
    /// `name` is the store's own file, by whatever spelling, the store stays bound to it. With
    /// `fromCurrent` every page is placed lower by the cursor's offset, by the rule of
    /// CBytePage::SwapOut: the page that straddles the cursor is cut at its end.
    void CopyToFile(const char* name, int fromCurrent = 0);
    /// Empties the store and opens an existing file as its content (and swap file: changes go to
    /// it). With auto-delete on, as it is by default, the next Empty or the destructor deletes the
    /// file. CFileException when it cannot be opened for reading and writing; cause 6 when it is
    /// too long.
    void SetFileName(const char* name);
    /// Name of the swap file, of the last one after Empty, "" before the first.
    const char* GetFileName() const { return m_strFileName; }
    BOOL GetAutoDelete() const { return m_bAutoDelete; }
    /// Off: the swap file stays when the store goes, cut at the length, and is an ordinary file
    /// from now on that no sweep of left-overs touches. Call Flush before, so that all is in it.
    void SetAutoDelete(BOOL autoDelete);
    /// The 32768 bytes of page 0, made resident. Valid until the next operation.
    BYTE* GetFirstPage();

    // --- translation -----------------------------------------------------------------------------
    // From the start to the end. Characters that the target lacks are substituted (see
    // Ccsid.h); `report`, when not null, tells how many and where the first was. `options` as for
    // TranslateBeginEx: with translateStop such a character makes the result 0, and the report
    // tells its place. A character may lie across pages.

    /// Translates the whole content from one coded character set to another into `destination`,
    /// which is emptied first. 1, or 0 when that cannot be done; `destination` is then empty, as it
    /// is after an exception. It may be this store: its content is replaced as by an
    /// assignment when the result is complete, and else stays.
    int TranslateCCSID(WORD from, WORD to, CByteStore& destination,
                       STranslationReport* report = nullptr, UINT options = 0);
    /// Translates a range (count 0, or too long: up to the end) into `out`; `*outLength` is its
    /// room in bytes before and the bytes written after. 0 when it does not fit (`*outLength` is
    /// then the room needed) or cannot be translated (0).
    int TranslateCCSID(DWORD index, DWORD count, BYTE* out, DWORD* outLength, WORD from, WORD to,
                       STranslationReport* report = nullptr, UINT options = 0);
    int TranslateCCSID(BYTE* out, DWORD* outLength, WORD from, WORD to,
                       STranslationReport* report = nullptr, UINT options = 0);
    /// The content as text of the native coded character set.
    int TranslateCCSID(WORD from, CString& text, STranslationReport* report = nullptr,
                       UINT options = 0);

    // --- encryption ------------------------------------------------------------------------------
    // Single DES, for existing peers; it protects nothing today (see DES.h). The first 8 bytes of
    // key and initialization vector count. The bytes from the start to the end go in pieces of
    // 32768, counted from the start, through one CDES object that is not segmented. The result
    // begins at index 0. This means:
    //  - Electronic code book without padding is the cipher over the whole content. It suits
    //    contents of any size, if that is a multiple of 8; the rest of a partial last block is cut
    //    off, so that the last size % 8 bytes do not come back.
    //  - Chained mode starts again with the initialization vector at every piece. Decrypt does the
    //    same, so what Encrypt made comes back; a peer must chain in pieces of 32768 bytes too.
    //  - Padding needs 32776 bytes for a full piece, so with `pad` a content of 32768 bytes or more
    //    cannot be enciphered: the result is 0. Decrypt takes the padding off every piece.

    /// Enciphers the content into `destination`, which is emptied first. 1, or 0; `destination` is
    /// then empty, as it is after an exception. It may be this store: its content is replaced as by
    /// an assignment when the result is complete, and else stays.
    int Encrypt(const CByteStream& key, const CByteStream& vector, CDES::EMode mode, bool pad,
                CByteStore& destination);
    /// Deciphers it. Padding is not checked; where it would take more than there is, the result is
    /// 0.
    int Decrypt(const CByteStream& key, const CByteStream& vector, CDES::EMode mode, bool pad,
                CByteStore& destination);

    /// Most pages that a store should keep in memory: "MaxCachePages" under "Options" (64 by
    /// default) times the percentage of memory that is free, at least 16.
    static int GetTargetMaxPages();

    /// From now on at most `pages` pages stay in memory, whatever GetTargetMaxPages says; 0: as
    /// many as that again. Pages that are too many leave at once. While there is a limit, no pages
    /// are gathered beside the cache before they are written. For programs that share out memory
    /// among several stores. When a page cannot be written the limit stays as it was, and some
    /// pages may have left. The limit belongs to the object: a move takes it along, an assignment
    /// leaves it, a copy has none. Extension.
    void SetPageLimit(DWORD pages);
    DWORD GetPageLimit() const { return m_dwPageLimit; }

    /// Pages in memory now, and pages whose bytes the swap file has.
    DWORD GetResidentPageCount() const { return static_cast<DWORD>(m_arrPages.GetSize()); }
    DWORD GetSwappedPageCount() const { return m_dwPagesOnFile; }

protected:
    void Init() noexcept;                           ///< the state of a new store
    int GetMaxPages() const { return m_nMaxPages; } ///< see SetMaxPages
    /// Gives pages back until at most `count` are resident.
    void SetMaxPages(int count);
    /// The page, made resident: from memory, from the swap file, or blank when it was never stored.
    CBytePage* GetPageFromPageNum(DWORD number);
    /// The least recently used page; the first in m_arrPages of equals. Null when none is resident.
    CBytePage* GetPageToDiscard() const;
    /// That page, written out when it holds retained bytes, for another use. It stays in
    /// m_arrPages.
    CBytePage* SwapOutAPage();
    void CreateSwapFile();
    /// Whether the page is in memory with its bytes.
    bool IsPageResident(DWORD number) const { return LoadedPage(number) != nullptr; }
    /// Removes the least recently used page that need not be written; false when there is none.
    bool DropCleanPage() noexcept;
    /// Appends zeros until the length is at least `length`.
    void ExtendTo(DWORD length);
    /// Compares what both hold of two stores of equal length; 0 when equal.
    int MemCmp(CByteStore& other);
    static void GetPageNumFromIndex(DWORD index, DWORD& page, DWORD& position) {
        page = index / CBytePage::m_dwPageSize;
        position = index % CBytePage::m_dwPageSize;
    }
    static DWORD GetIndexFromPageNum(DWORD number) { return number * CBytePage::m_dwPageSize; }

private:
    void Swap(CByteStore& other) noexcept;
    void TakeContent(CByteStore& result) noexcept;
    /// What a temporary store that TakeContent will be given needs to be like this one.
    void TakeLimits(const CByteStore& other) noexcept {
        m_nMaxPages = other.m_nMaxPages;
        m_dwPageLimit = other.m_dwPageLimit;
    }
    CBytePage* LoadedPage(DWORD number) const {
        return number < m_arrLoaded.size() ? m_arrLoaded[number] : nullptr;
    }
    bool IsOnFile(DWORD number) const;
    void NoteOnFile(DWORD number, std::span<const BYTE> written);
    void NoteNotOnFile(DWORD number) noexcept;
    void GrowPageTable(DWORD length);
    inline BYTE* Touch(CBytePage* page);
    void StampNow(CBytePage* page);
    void EndRun() const noexcept;
    BYTE GetByteSlow(DWORD index);
    int TargetPages() const;
    bool RoomForPage() const { return m_arrPages.GetSize() < (m_nMaxPages > 1 ? m_nMaxPages : 1); }
    CBytePage* AddPage();
    void RemovePage(CBytePage* page);
    void DropPagesFrom(DWORD number) noexcept;
    CBytePage* PageForAppend(DWORD number);
    void LoadPage(CBytePage* page, DWORD number);
    void WriteVictim(CBytePage* page);
    bool WriteRun(CBytePage* first);
    void WritePending();
    void AppendToLastPage(const BYTE*& bytes, DWORD& count);
    void AppendToNewPages(const BYTE* bytes, DWORD count);
    bool AppendEvicts(DWORD count) const;
    bool HoldsAddress(const BYTE* address) const;
    void Overwrite(DWORD index, const BYTE* bytes, DWORD count);
    void CopyUpWithin(DWORD index, DWORD sourceIndex, DWORD count);
    bool EqualsAt(DWORD index, const CByteStream& pattern, DWORD from);
    DWORD FindPrefix(std::span<const BYTE> prefix, DWORD start);
    int Encipher(bool encrypt, CDES& cipher, CByteStore& destination);
    void WritePages(CFile& file, DWORD shift, std::vector<vnbytstr::detail::PageOnFile>* written);
    void CopyImage(vnbytstr::FileReplacement& target, const char* name,
                   std::vector<vnbytstr::detail::PageOnFile>* written);
    DWORD ReadPiece(BYTE* bytes, DWORD count);
    void SyncImage(const char* name);
    vnbytstr::FileIdentity MoveImage(vnbytstr::FileReplacement& target, const char* name);
    bool RenameImage(vnbytstr::FileReplacement& target, const char* name);
    void PutCopy(const char* name, int fromCurrent);
    void PutContent(const char* name, int fromCurrent);
    void OpenImage(const char* name);
    void FlushImage();
    void MarkCutPage();
    void WriteShiftedFlush();
    void PutShifted(vnbytstr::FileReplacement& target, const char* name, DWORD shift);
    void PutImageUnderName();
    void BindImage(vnbytstr::FileHandle handle, std::vector<vnbytstr::detail::PageOnFile>& written);
    void ReadImage();
    void WriteImage();
    void DetachImage();
    void CloseImage() noexcept;
#ifndef NDEBUG
    void CheckInvariants() const;
    void CheckPages() const;
    void CheckPagesOnFile() const;
#else
    void CheckInvariants() const {}
#endif

    // Swap exchanges every one of these.
    BOOL m_bComplete;
    DWORD m_dwLength;
    DWORD m_dwStart;
    DWORD m_dwCurrent;
    int m_nMaxPages;
    DWORD m_dwPageLimit; ///< SetPageLimit's, 0 for none
    CObArray m_arrPages;
    CString m_strFileName;
    CFile m_file;
    BOOL m_bAutoDelete;

    /// By page number: the resident page with valid bytes, or null.
    std::vector<CBytePage*> m_arrLoaded;
    /// By page number: what the swap file has of it.
    std::vector<vnbytstr::detail::PageOnFile> m_arrOnFile;
    DWORD m_dwPagesOnFile; ///< entries of m_arrOnFile that the file has
    std::unique_ptr<vnbytstr::detail::SwapImage> m_pImage;     ///< made with the swap file
    std::unique_ptr<vnbytstr::detail::WriteBehind> m_pPending; ///< made when a first page leaves
    ULONGLONG m_ullImageEnd;       ///< end of what was written to the swap file, in bytes
    mutable CBytePage* m_pRunPage; ///< the page used last in a run, null outside of one
    mutable LONGLONG m_llUses;     ///< changes of the page in a run, negative before it begins
    DWORD m_dwRunTick;             ///< the last clock reading before a run
    bool m_bReadFailed;            ///< a page in m_arrPages may be one whose reading failed
};

inline BYTE* CByteStore::Touch(CBytePage* page) {
    if (page != m_pRunPage) {
        if (++m_llUses <= 0) [[unlikely]] {
            StampNow(page);
        } else {
            page->m_llUse = m_llUses;
            m_pRunPage = page;
        }
    }
    return page->m_pData;
}

inline BYTE CByteStore::GetByte(DWORD index) {
    if (index < m_dwLength) [[likely]] {
        if (CBytePage* page = m_arrLoaded[index / CBytePage::m_dwPageSize]) [[likely]]
            return Touch(page)[index % CBytePage::m_dwPageSize];
    }
    return GetByteSlow(index);
}

inline void CByteStore::ConcatByte(BYTE value) {
    const DWORD position = m_dwLength % CBytePage::m_dwPageSize;
    if (position != 0) [[likely]] {
        if (CBytePage* page = m_arrLoaded[m_dwLength / CBytePage::m_dwPageSize]) [[likely]] {
            Touch(page)[position] = value;
            page->m_bMustWrite = TRUE;
            if (++m_dwLength != 0) [[likely]]
                return;
            --m_dwLength; // 4 GiB: the ordinary path says so
        }
    }
    Concat(&value, 1);
}
