// CByteStore: emptying, saving, and existing files as content.

#include "bytestore/ByteStoreInternal.h"

#include "bytestore/SwapSweep.h"
#include "bytestore/WriteBehind.h"
#include "platform/system/FileReplacement.h"
#include "vnbytstr/TempFileName.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>

using vnbytstr::FileReplacement;
using vnbytstr::System;

namespace {

constexpr DWORD kPageSize = CBytePage::m_dwPageSize;

void ThrowIf(int error, const char* name) {
    if (error != 0)
        CFileException::ThrowOsError(error, name);
}

/// A CFile on a handle that somebody else closes.
class BorrowedFile {
public:
    explicit BorrowedFile(vnbytstr::FileHandle handle) : m_file(handle) {}
    ~BorrowedFile() { m_file.m_hFile = CFile::hFileNull; }
    BorrowedFile(const BorrowedFile&) = delete;
    BorrowedFile& operator=(const BorrowedFile&) = delete;
    CFile& File() { return m_file; }

private:
    CFile m_file;
};

} // namespace

void CByteStore::Empty() {
    for (int i = 0; i < m_arrPages.GetSize(); ++i)
        delete static_cast<CBytePage*>(m_arrPages[i]);
    m_arrPages.RemoveAll();
    std::vector<CBytePage*>().swap(m_arrLoaded);
    CloseImage();
    m_bComplete = FALSE;
    m_dwLength = m_dwStart = m_dwCurrent = 0;
    CheckInvariants();
}

void CByteStore::CloseImage() noexcept {
    const bool wasOpen = m_file.m_hFile != CFile::hFileNull;
    if (m_bNameIsOurs && !m_strFileName.IsEmpty()) {
        if (m_bAutoDelete)
            System::Current().RemoveFile(m_strFileName); // while it is locked, so nobody else does
        else if (wasOpen)
            System::Current().ReleaseScratch(
                m_file.m_hFile); // kept on purpose: not to be swept away
    }
    if (wasOpen)
        m_file.Abort();
    m_arrOnFile.clear();
    m_pPending.reset();
    m_dwPagesOnFile = 0;
    m_ullImageEnd = 0;
    m_bNameIsOurs = m_bImageHasName = false;
}

// --- the swap file as an image of the store ------------------------------------------------------

void CByteStore::Flush(int fromCurrent) {
    if (m_file.m_hFile == CFile::hFileNull)
        CreateSwapFile();
    WritePending();
    std::vector<CBytePage*> pages;
    pages.reserve(GetResidentPageCount());
    for (int i = 0; i < m_arrPages.GetSize(); ++i)
        pages.push_back(static_cast<CBytePage*>(m_arrPages[i]));
    std::sort(pages.begin(), pages.end(), [](const CBytePage* a, const CBytePage* b) {
        return a->GetPageNum() < b->GetPageNum();
    });
    for (CBytePage* page : pages) {
        if (!page->GetMustWrite())
            continue;
        const DWORD used = m_dwLength - GetIndexFromPageNum(page->GetPageNum());
        if (used >= kPageSize && WriteRun(page))
            continue;
        const ULONGLONG end = m_ullImageEnd;
        page->SwapOut(m_file, std::min(used, kPageSize), 0);
        SetOnFile(page->GetPageNum(), true);
        // The last page is stored up to the length only, and is short when it is read back.
        m_ullImageEnd = std::max(end, ULONGLONG{m_dwLength} - used + std::min(used, kPageSize));
    }
    try {
        // A last page that left memory was written whole, and the end may never have been stored.
        if (m_file.GetLength() != m_dwLength)
            m_file.SetLength(m_dwLength);
    } catch (CFileException* error) {
        error->Delete();
        throw new CCacheException(CCacheException::kWriteFailed);
    }
    m_ullImageEnd = m_dwLength;
    if (fromCurrent && m_dwCurrent != 0)
        WriteShiftedFlush();
}

void CByteStore::ReleasePages() {
    if (m_arrPages.GetSize() == 0)
        return;
    Flush(0);
    const int pages = m_nMaxPages;
    SetMaxPages(0); // all of them are in the file
    m_nMaxPages = pages;
    m_pPending.reset();
    CheckInvariants();
}

/// Puts the shifted image under the swap file's name. The store's own image must not be written
/// over, so it goes on living in the open file, which has no name from then on.
void CByteStore::WriteShiftedFlush() {
    CString name;
    GenerateTempFileName(name, vnbytstr::detail::kShiftedPrefix, nullptr);
    FileReplacement shifted;
    ThrowIf(shifted.Open(name), name);
    BorrowedFile file(shifted.Handle());
    WriteShiftedImage(file.File(), m_dwCurrent);
    ThrowIf(shifted.Commit(), name);
    if (const int error = System::Current().RenameFile(name, m_strFileName, true)) {
        System::Current().RemoveFile(name);
        CFileException::ThrowOsError(error, m_strFileName);
    }
    m_bImageHasName = false;
}

/// Writes every page as CBytePage::SwapOut places it.
void CByteStore::WriteShiftedImage(CFile& file, DWORD shift) {
    for (ULONGLONG begin = 0; begin < m_dwLength; begin += kPageSize) {
        CBytePage* page = GetPageFromPageNum(static_cast<DWORD>(begin / kPageSize));
        page->GetData();
        const BOOL mustWrite = page->GetMustWrite();
        page->SetMustWrite(TRUE);
        try {
            page->SwapOut(file,
                          static_cast<DWORD>(std::min<ULONGLONG>(m_dwLength - begin, kPageSize)),
                          shift);
        } catch (CException*) {
            page->SetMustWrite(mustWrite);
            throw;
        }
        page->SetMustWrite(mustWrite);
    }
}

// --- saving --------------------------------------------------------------------------------------

void CByteStore::CopyToFile(const char* name, int fromCurrent) {
    FileReplacement target;
    ThrowIf(target.Open(name), name);
    {
        BorrowedFile file(target.Handle());
        WriteShiftedImage(file.File(), fromCurrent ? m_dwCurrent : 0);
    }
    ThrowIf(target.Commit(), name);
    if (m_strFileName == name)
        m_bImageHasName = false; // the store's own image was there; it goes on without a name
}

void CByteStore::SaveToFile(const char* name, int fromCurrent) {
    const bool isInMemory = m_file.m_hFile == CFile::hFileNull;
    if (isInMemory || (fromCurrent && m_dwCurrent != 0)) {
        CopyToFile(name, fromCurrent);
        if (m_strFileName == name)
            m_bNameIsOurs = false;
    } else {
        Flush(0);
        MoveImageTo(name);
    }
    Empty();
}

/// Gives the swap file the name `name`; false when that cannot be done by a rename: on another file
/// system, onto a link, a device or a pipe, or a file that may not be written.
bool CByteStore::RenameImageTo(const char* name) {
    System& system = System::Current();
    vnbytstr::FileStatus target;
    const int missing = system.GetFileStatus(name, target);
    if (missing != ENOENT)
        ThrowIf(missing, name); // it may be a link, which is not to be replaced
    if (missing == 0 && (target.isLink || !target.isRegular || target.isReadOnly))
        return false;
    ThrowIf(system.SyncFile(m_file.m_hFile), m_strFileName);
    ThrowIf(missing == 0 ? system.CopyPermissions(name, m_file.m_hFile)
                         : system.ReleaseScratch(m_file.m_hFile),
            m_strFileName);
    const int error = system.RenameFile(m_strFileName, name, true);
    if (error == EXDEV)
        return false;
    ThrowIf(error, name);
    system.SyncFolder(vnbytstr::FolderOf(name).c_str()); // the file is there; nothing to undo
    return true;
}

/// Makes the swap file, which is an image of the whole store, the file `name`.
void CByteStore::MoveImageTo(const char* name) {
    if (m_bImageHasName && RenameImageTo(name)) {
        m_bNameIsOurs = false;
        return;
    }
    FileReplacement target;
    ThrowIf(target.Open(name), name);
    {
        BorrowedFile file(target.Handle());
        CopyImage(file.File());
    }
    ThrowIf(target.Commit(), name);
    if (m_strFileName == name)
        m_bNameIsOurs = false;
}

void CByteStore::CopyImage(CFile& file) {
    constexpr std::size_t kBytes = 1 << 18;
    const auto buffer = std::make_unique<BYTE[]>(kBytes);
    CBytePage::SeekTo(m_file, 0);
    for (ULONGLONG left = m_dwLength; left > 0;) {
        const auto wanted = static_cast<UINT>(std::min<ULONGLONG>(left, kBytes));
        if (m_file.Read(buffer.get(), wanted) != wanted)
            throw new CCacheException(CCacheException::kShortRead);
        file.Write(buffer.get(), wanted);
        left -= wanted;
    }
}

// --- an existing file as content -----------------------------------------------------------------

void CByteStore::SetFileName(const char* name) {
    const CString file(name); // `name` may be this store's own
    Empty();
    m_strFileName = file;
    CFileException error;
    if (!m_file.Open(m_strFileName, CFile::modeReadWrite, &error))
        throw new CFileException(error.m_cause, error.m_lOsError, m_strFileName);
    ULONGLONG length = 0;
    const int failure = System::Current().GetFileLength(m_file.m_hFile, length);
    if (failure != 0 || length > 0xFFFFFFFFu) {
        m_file.Abort();
        ThrowIf(failure, m_strFileName);
        throw new CCacheException(CCacheException::kTooLong);
    }
    GrowPageTable(static_cast<DWORD>(length));
    m_dwLength = static_cast<DWORD>(length);
    for (std::size_t number = 0; number < m_arrLoaded.size(); ++number)
        SetOnFile(static_cast<DWORD>(number), true);
    m_ullImageEnd = length;
    m_bNameIsOurs = m_bImageHasName = true;
    CheckInvariants();
}
