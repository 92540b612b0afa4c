// CByteStore: flushing, copying to files and saving.

#include "src/bytestore/ByteStoreInternal.h"

#include "src/bytestore/SwapImage.h"
#include "src/bytestore/WriteBehind.h"
#include "src/os/FileReplacement.h"
#include "src/os/Paths.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <utility>

using vnbytstr::FileHandle;
using vnbytstr::FileIdentity;
using vnbytstr::FileReplacement;
using vnbytstr::LeadsTo;
using vnbytstr::System;
using vnbytstr::detail::PageOnFile;
using vnbytstr::detail::ThrowIf;
using vnbytstr::detail::WithMemoryException;

namespace {

constexpr DWORD kPageSize = CBytePage::m_dwPageSize;

/// A CFile on a handle that its owner closes; errors name the file.
class BorrowedFile {
public:
    BorrowedFile(FileHandle handle, const char* name) : m_file(handle) { m_file.SetFilePath(name); }
    ~BorrowedFile() { m_file.m_hFile = CFile::hFileNull; }
    BorrowedFile(const BorrowedFile&) = delete;
    BorrowedFile& operator=(const BorrowedFile&) = delete;
    CFile& File() { return m_file; }

private:
    CFile m_file;
};

std::size_t PageCount(DWORD length) {
    return static_cast<std::size_t>((length + (kPageSize - 1ull)) / kPageSize);
}

} // namespace

void CByteStore::Empty() {
    for (int i = 0; i < m_arrPages.GetSize(); ++i)
        delete static_cast<CBytePage*>(m_arrPages[i]);
    m_arrPages.RemoveAll();
    m_pRunPage = nullptr;
    m_llUses = -vnbytstr::detail::kStampsBeforeRun;
    std::vector<CBytePage*>().swap(m_arrLoaded);
    CloseImage();
    m_bComplete = FALSE;
    m_dwLength = m_dwStart = m_dwCurrent = 0;
    CheckInvariants();
}

// --- the swap file as an image of the store ------------------------------------------------------

void CByteStore::Flush(int fromCurrent) {
    WithMemoryException([&] {
        FlushImage();
        if (fromCurrent && m_dwCurrent != 0)
            WriteShiftedFlush();
        else if (m_pImage->named.IsKnown() && m_pImage->named != m_pImage->image)
            PutImageUnderName();
    });
}

/// Brings all pages to the open swap file, and cuts it at the length.
void CByteStore::FlushImage() {
    WriteImage();
    WritePending();
    MarkCutPage();
    std::vector<CBytePage*> pages;
    pages.reserve(GetResidentPageCount());
    for (int i = 0; i < m_arrPages.GetSize(); ++i)
        pages.push_back(static_cast<CBytePage*>(m_arrPages[i]));
    std::sort(pages.begin(), pages.end(), [](const CBytePage* a, const CBytePage* b) {
        return a->GetPageNum() < b->GetPageNum();
    });
    for (CBytePage* page : pages) {
        const DWORD begin = GetIndexFromPageNum(page->GetPageNum());
        if (!page->GetMustWrite() || begin >= m_dwLength)
            continue;
        const DWORD used = std::min(m_dwLength - begin, kPageSize);
        if (used == kPageSize && WriteRun(page))
            continue;
        page->SwapOut(m_file, used, 0);
        NoteOnFile(page->GetPageNum(), {page->m_pData, used});
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
}

/// When the last page was written longer than it is now, marks it to be written again, with a new
/// checksum, before the file is cut.
void CByteStore::MarkCutPage() {
    if (m_dwLength == 0)
        return;
    const DWORD last = (m_dwLength - 1) / kPageSize;
    if (IsOnFile(last) && m_arrOnFile[last].GetCount() > m_dwLength - GetIndexFromPageNum(last))
        GetPageFromPageNum(last)->SetMustWrite(TRUE);
}

void CByteStore::ReleasePages() {
    if (m_arrPages.GetSize() == 0)
        return;
    Flush(0);
    DropPagesFrom(static_cast<DWORD>(PageCount(m_dwLength))); // GetFirstPage of an empty store
    const int pages = m_nMaxPages;
    SetMaxPages(0); // all of them are in the file
    m_nMaxPages = pages;
    m_pPending.reset();
    CheckInvariants();
}

/// Puts the shifted image under the swap file's name. The store's own image must not be
/// overwritten; it stays in the open file, which has no name from then on.
void CByteStore::WriteShiftedFlush() {
    vnbytstr::FileStatus status;
    if (!LeadsTo(m_strFileName, m_pImage->named)) {
        const int missing = System::Current().GetFileStatus(m_strFileName, status);
        ThrowIf(missing != 0 ? missing : EEXIST, m_strFileName); // another program's, or gone
    }
    FileReplacement target;
    ThrowIf(target.Open(m_strFileName), m_strFileName);
    PutShifted(target, m_strFileName, m_dwCurrent);
}

/// Makes the shifted image the file under the store's name.
void CByteStore::PutShifted(FileReplacement& target, const char* name, DWORD shift) {
    // A file that the store did not make may have to be overwritten in place.
    if (!m_pImage->isGenerated && m_pImage->named == m_pImage->image)
        DetachImage();
    {
        BorrowedFile file(target.Handle(), name);
        WritePages(file.File(), shift, nullptr);
    }
    FileHandle kept = vnbytstr::kNoFile; // the lock keeps the sweep away from a scratch file
    ThrowIf(target.Commit(m_pImage->isGenerated ? &kept : nullptr), name);
    if (m_pImage->shifted != vnbytstr::kNoFile)
        System::Current().CloseFile(m_pImage->shifted);
    m_pImage->shifted = kept;
    m_pImage->named = target.Committed();
}

/// Puts the whole image back under the store's name, where a shifted one has been.
void CByteStore::PutImageUnderName() {
    if (!LeadsTo(m_strFileName, m_pImage->named))
        return; // not the store's any more
    FileReplacement target;
    ThrowIf(target.Open(m_strFileName), m_strFileName);
    std::vector<PageOnFile> written;
    CopyImage(target, m_strFileName, &written);
    FileHandle kept;
    ThrowIf(target.Commit(&kept), m_strFileName);
    if (kept != vnbytstr::kNoFile) {
        m_pImage->named = target.Committed();
        BindImage(kept, written);
    }
}

/// Writes every page as CBytePage::SwapOut places it, from the beginning of the file to its end:
/// the file may be a pipe. `written`, when not null, gets the pages' checksums.
void CByteStore::WritePages(CFile& file, DWORD shift, std::vector<PageOnFile>* written) {
    static constexpr std::array<BYTE, 4096> kZeros{};
    if (written)
        written->resize(PageCount(m_dwLength));
    ULONGLONG position = 0;
    for (ULONGLONG begin = 0; begin < m_dwLength; begin += kPageSize) {
        const auto number = static_cast<DWORD>(begin / kPageSize);
        const BYTE* data = GetPageFromPageNum(number)->GetData();
        auto count = static_cast<DWORD>(std::min<ULONGLONG>(m_dwLength - begin, kPageSize));
        if (begin < shift)
            count -= std::min(count, shift);
        for (const ULONGLONG place = begin < shift ? begin : begin - shift;
             count > 0 && position < place;) {
            const auto gap =
                static_cast<UINT>(std::min<ULONGLONG>(place - position, kZeros.size()));
            file.Write(kZeros.data(), gap);
            position += gap;
        }
        if (count > 0)
            file.Write(data, count);
        position += count;
        if (written)
            (*written)[number].SetWritten({data, count});
    }
}

// --- copying and saving --------------------------------------------------------------------------

void CByteStore::CopyToFile(const char* name, int fromCurrent) {
    WithMemoryException([&] { PutCopy(name, fromCurrent); });
}

void CByteStore::PutCopy(const char* name, int fromCurrent) {
    const DWORD shift = fromCurrent ? m_dwCurrent : 0;
    ReadImage();
    FileReplacement target;
    ThrowIf(target.Open(name), name);
    const bool isOwn = m_pImage && target.Replaces(m_pImage->named);
    if (isOwn && shift != 0) {
        PutShifted(target, name, shift);
        return;
    }
    std::vector<PageOnFile> written;
    {
        BorrowedFile file(target.Handle(), name);
        WritePages(file.File(), shift, isOwn ? &written : nullptr);
    }
    FileHandle kept = vnbytstr::kNoFile;
    ThrowIf(target.Commit(isOwn ? &kept : nullptr), name);
    if (kept != vnbytstr::kNoFile) {
        m_pImage->named = target.Committed(); // the store stays bound to what its name leads to
        BindImage(kept, written);
    }
}

void CByteStore::SaveToFile(const char* name, int fromCurrent) {
    WithMemoryException([&] { PutContent(name, fromCurrent); });
    Empty();
}

void CByteStore::PutContent(const char* name, int fromCurrent) {
    const DWORD shift = fromCurrent ? m_dwCurrent : 0;
    ReadImage();
    FileReplacement target;
    ThrowIf(target.Open(name), name);
    FileIdentity saved;
    if (!m_pImage || shift != 0) {
        {
            BorrowedFile file(target.Handle(), name);
            WritePages(file.File(), shift, nullptr);
        }
        ThrowIf(target.Commit(), name);
        saved = target.Committed();
    } else {
        FlushImage();
        saved = MoveImage(target, name);
    }
    if (m_pImage && LeadsTo(m_strFileName, saved))
        m_pImage->named = {}; // the saved file is not the store's to delete
}

/// Makes the swap file, an image of the whole store, the file that `target` leads to. Returns that
/// file's identity.
FileIdentity CByteStore::MoveImage(FileReplacement& target, const char* name) {
    if (target.Replaces(m_pImage->image) && !m_pImage->isSuspect) {
        SyncImage(name); // it is there already
        if (m_pImage->isGenerated)
            System::Current().ReleaseScratch(m_file.m_hFile);
        return m_pImage->image;
    }
    if (RenameImage(target, name))
        return target.Committed().IsKnown() ? target.Committed() : m_pImage->image;
    CopyImage(target, name, nullptr);
    ThrowIf(target.Commit(), name);
    // As the rename would have done. A file overwritten in place is the saved file itself.
    if (m_pImage->named.IsKnown() && m_pImage->named != target.Committed() &&
        LeadsTo(m_strFileName, m_pImage->named))
        System::Current().RemoveFile(m_strFileName);
    return target.Committed();
}

void CByteStore::SyncImage(const char* name) {
    if (const int error = System::Current().SyncFile(m_file.m_hFile)) {
        m_pImage->isSuspect = true; // the next save writes everything again
        ThrowIf(error, name);
    }
}

/// Renames the swap file; false, with nothing changed, when a rename is not enough.
bool CByteStore::RenameImage(FileReplacement& target, const char* name) {
    if (m_pImage->isSuspect || m_pImage->named != m_pImage->image || target.IsDirect())
        return false;
    if (m_pImage->isGenerated) {
        if (target.Adopt(m_file.m_hFile, m_strFileName) != 0)
            return false;
        if (const int error = target.Commit()) {
            m_pImage->isSuspect = true;
            ThrowIf(error, name);
        }
        // The target may have been overwritten in place; the swap file then has its name back.
        if (target.Committed() == m_pImage->image)
            m_pImage->named = {};
        return true;
    }
    // A file of the user's must never be without a name: either one rename, or a copy.
    System& system = System::Current();
    vnbytstr::FileStatus named;
    if (!target.IsNew() || system.GetFileStatus(m_strFileName, named) != 0 || named.isLink ||
        named.identity != m_pImage->image)
        return false;
    const std::string folder = vnbytstr::FolderOf(target.Target());
    SyncImage(name);
    if (system.RenameFile(m_strFileName, target.Target().c_str(), false) != 0)
        return false;
    m_pImage->named = {};
    system.SyncFolder(folder.c_str());
    return true;
}

/// Writes the swap file, an image of the whole store, to `target`, and checks every page's checksum
/// on the way. `written`, when not null, gets the checksums.
void CByteStore::CopyImage(FileReplacement& target, const char* name,
                           std::vector<PageOnFile>* written) {
    BorrowedFile file(target.Handle(), name);
    const auto buffer = std::make_unique_for_overwrite<BYTE[]>(kPageSize);
    if (written)
        written->resize(PageCount(m_dwLength));
    CBytePage::SeekTo(m_file, 0);
    for (DWORD number = 0, left = m_dwLength; left > 0; ++number) {
        const DWORD wanted = std::min(left, kPageSize);
        if (ReadPiece(buffer.get(), wanted) != wanted ||
            !m_arrOnFile[number].Matches({buffer.get(), wanted}))
            throw new CCacheException(CCacheException::kShortRead);
        file.File().Write(buffer.get(), wanted);
        if (written)
            (*written)[number].SetWritten({buffer.get(), wanted});
        left -= wanted;
    }
}

DWORD CByteStore::ReadPiece(BYTE* bytes, DWORD count) {
    try {
        return m_file.Read(bytes, count);
    } catch (CFileException* error) {
        error->Delete();
        throw new CCacheException(CCacheException::kShortRead);
    }
}
