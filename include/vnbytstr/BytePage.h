// CBytePage: one page of a CByteStore that is in memory.
#pragma once

#include "vnbytstr/CacheException.h"
#include "vnbytstr/framework/File.h"
#include "vnbytstr/framework/Object.h"

/// One resident page of a store.
class VNBYTSTR_API CBytePage : public CObject {
public:
    static constexpr DWORD m_dwPageSize = 0x8000; ///< bytes in a page

    /// Page 0, access time 0, to be read and to be written. The buffer's bytes are undefined.
    /// Throws CCacheException(6) when there is no memory for it.
    CBytePage();
    ~CBytePage() override;

    /// The page's number: its first byte has the index 32768 times it.
    DWORD GetPageNum() const { return m_dwPageNum; }
    /// Gives the page another number; a change marks it as to be read.
    void SetPageNum(DWORD number);
    /// The page's 32768 bytes. Counts as a use: the access time becomes the tick count.
    BYTE* GetData();
    /// Whether the buffer does not hold this page's bytes and must be read before use.
    BOOL GetMustRead() const { return m_bMustRead; }
    void SetMustRead(BOOL mustRead) { m_bMustRead = mustRead; }
    /// Whether the buffer holds bytes that the swap file does not have.
    BOOL GetMustWrite() const { return m_bMustWrite; }
    void SetMustWrite(BOOL mustWrite) { m_bMustWrite = mustWrite; }
    /// Tick count (milliseconds, wraps at 32 bits) of the last use.
    DWORD GetLastAccessTime() const { return m_dwLastAccess; }

    /// Writes the first `count` bytes (0: all) to the page's place in `file` when the page is to be
    /// written, then clears that mark. The place is the page's index less `shift`; a page that
    /// begins below `shift` keeps its place and is cut by `shift` bytes at its end. Throws
    /// CCacheException: 1 when the seek lands elsewhere, 4 when the write fails; the mark then
    /// stays.
    void SwapOut(CFile& file, DWORD count, DWORD shift);
    /// Makes this page `number` and, when it is to be read, reads it from its place in `file`; what
    /// lies past the end of the file is zero. Throws CCacheException: 1 when the seek lands
    /// elsewhere, 2 when fewer bytes come than the file should have; the page then stays to be
    /// read.
    void SwapIn(CFile& file, DWORD number);

private:
    friend class CByteStore;
    static void SeekTo(CFile& file, ULONGLONG position);

    DWORD m_dwPageNum = 0;
    DWORD m_dwLastAccess = 0;
    BYTE* m_pData;
    BOOL m_bMustRead = TRUE;
    BOOL m_bMustWrite = TRUE;
    DWORD m_dwRead = 0;   ///< bytes that the last SwapIn found in the file
    LONGLONG m_llUse = 0; ///< the last use's place in a run of the store's, 0 outside of one
};
