// CByteStore: making, opening and closing the swap file.

#include "src/bytestore/ByteStoreInternal.h"

#include "src/bytestore/SwapImage.h"
#include "src/bytestore/WriteBehind.h"
#include "src/os/FileIdentity.h"
#include "src/os/LeftoverSweep.h"
#include "src/os/Paths.h"
#include "vnbytstr/TempFileName.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <utility>

using vnbytstr::FileHandle;
using vnbytstr::System;
using vnbytstr::detail::PageOnFile;
using vnbytstr::detail::SwapImage;
using vnbytstr::detail::ThrowIf;

namespace {

constexpr DWORD kPageSize = CBytePage::m_dwPageSize;

/// Makes and opens a file in the temporary folder for one store.
void OpenScratchImage(CFile& file, CString& name) {
    vnbytstr::SweepLeftoversOnce(System::Current().GetTemporaryFolder());
    CFileException error;
    for (;;) {
        GenerateTempFileName(name, "dat", nullptr);
        name = vnbytstr::AbsoluteName(name).c_str();
        if (file.Open(name,
                      CFile::modeCreate | CFile::modeReadWrite | CFile::modeExclusive |
                          CFile::modeScratch,
                      &error))
            return;
        if (error.m_lOsError != EEXIST) // taken meanwhile: the next counter value is free
            throw new CFileException(error.m_cause, error.m_lOsError, name);
    }
}

/// Closes the file of `file` and puts the open file `handle` in its place.
void Exchange(CFile& file, FileHandle handle) {
    System::Current().CloseFile(std::exchange(file.m_hFile, handle));
}

} // namespace

// --- opening -------------------------------------------------------------------------------------

void CByteStore::CreateSwapFile() {
    auto image = std::make_unique<SwapImage>();
    CFile file;
    CString name;
    OpenScratchImage(file, name);
    vnbytstr::FileStatus status;
    if (const int error = System::Current().GetFileStatus(file.m_hFile, status)) {
        System::Current().RemoveFile(name);
        ThrowIf(error, name);
    }
    image->image = image->named = status.identity;
    image->process = System::Current().GetProcessId();
    image->isGenerated = true;
    m_file.SetFilePath(name);
    m_file.m_hFile = std::exchange(file.m_hFile, CFile::hFileNull);
    m_strFileName = name;
    m_pImage = std::move(image);
    if (!m_bAutoDelete)
        System::Current().ReleaseScratch(m_file.m_hFile);
}

void CByteStore::SetFileName(const char* name) {
    vnbytstr::detail::WithMemoryException([&] { OpenImage(name); });
}

void CByteStore::OpenImage(const char* name) {
    const CString file(vnbytstr::AbsoluteName(name ? name : "").c_str()); // may be this store's own
    Empty();
    m_strFileName = file;
    auto image = std::make_unique<SwapImage>();
    CFileException error;
    if (!m_file.Open(m_strFileName, CFile::modeReadWrite, &error))
        throw new CFileException(error.m_cause, error.m_lOsError, m_strFileName);
    vnbytstr::FileStatus status;
    const int failure = System::Current().GetFileStatus(m_file.m_hFile, status);
    if (failure != 0 || status.length > 0xFFFFFFFFu) {
        m_file.Abort();
        ThrowIf(failure, m_strFileName);
        throw new CCacheException(CCacheException::kTooLong);
    }
    const auto length = static_cast<DWORD>(status.length);
    GrowPageTable(length);
    image->image = status.identity;
    if (status.isRegular) // only a plain file is ever removed
        image->named = status.identity;
    image->process = System::Current().GetProcessId();
    m_pImage = std::move(image);
    m_arrOnFile.resize(m_arrLoaded.size());
    for (PageOnFile& page : m_arrOnFile)
        page.SetPresent();
    m_dwPagesOnFile = static_cast<DWORD>(m_arrOnFile.size());
    m_ullImageEnd = m_dwLength = length;
    CheckInvariants();
}

// --- using ---------------------------------------------------------------------------------------

/// Call before reading from the swap file. In a forked child it opens the parent's file once more,
/// since parent and child share the position of the inherited one.
void CByteStore::ReadImage() {
    const DWORD process = System::Current().GetProcessId();
    if (!m_pImage || m_pImage->process == process)
        return;
    FileHandle own;
    if (System::Current().ReopenFile(m_file.m_hFile, vnbytstr::kOpenRead, own) != 0)
        throw new CCacheException(CCacheException::kShortRead);
    Exchange(m_file, own);
    if (m_pImage->shifted != vnbytstr::kNoFile)
        System::Current().CloseFile(m_pImage->shifted);
    m_pImage->shifted = vnbytstr::kNoFile;
    m_pImage->named = {};
    m_pImage->process = process;
    m_pImage->isGenerated = false;
    m_pImage->isBorrowed = true;
}

/// Call before writing to the swap file. Makes the file when there is none yet.
void CByteStore::WriteImage() {
    if (!m_pImage) {
        CreateSwapFile();
        return;
    }
    ReadImage();
    if (m_pImage->isBorrowed) {
        DetachImage();
        m_pImage->isBorrowed = false;
    }
}

/// Goes on in a copy of the swap file that has no name. A page that has been changed meanwhile is
/// copied unchecked; its checksum shows it when it is needed.
void CByteStore::DetachImage() {
    CFile copy;
    CString name;
    OpenScratchImage(copy, name);
    System::Current().RemoveFile(name);
    const auto buffer = std::make_unique_for_overwrite<BYTE[]>(kPageSize);
    for (DWORD number = 0; number < m_arrOnFile.size(); ++number) {
        if (!IsOnFile(number) || (m_pPending && m_pPending->Find(number)))
            continue;
        const ULONGLONG position = static_cast<ULONGLONG>(number) * kPageSize;
        const auto wanted =
            static_cast<DWORD>(std::min<ULONGLONG>(m_ullImageEnd - position, kPageSize));
        CBytePage::SeekTo(m_file, position);
        if (ReadPiece(buffer.get(), wanted) != wanted)
            throw new CCacheException(CCacheException::kShortRead);
        CBytePage::SeekTo(copy, position);
        copy.Write(buffer.get(), wanted);
    }
    Exchange(m_file, std::exchange(copy.m_hFile, CFile::hFileNull));
    m_pImage->image = vnbytstr::IdentityOf(m_file.m_hFile);
}

/// Goes on in the open file `handle`, which this store has just put under its name, with the
/// identity that is noted as the name's: an image of the whole store, whose pages have the
/// checksums `written`.
void CByteStore::BindImage(FileHandle handle, std::vector<PageOnFile>& written) {
    Exchange(m_file, handle);
    m_arrOnFile.swap(written);
    m_dwPagesOnFile = static_cast<DWORD>(m_arrOnFile.size());
    m_pPending.reset();
    m_ullImageEnd = m_dwLength;
    for (int i = 0; i < m_arrPages.GetSize(); ++i)
        static_cast<CBytePage*>(m_arrPages[i])->SetMustWrite(FALSE);
    if (m_pImage->shifted != vnbytstr::kNoFile)
        System::Current().CloseFile(std::exchange(m_pImage->shifted, vnbytstr::kNoFile));
    m_pImage->image = m_pImage->named; // not asked of the handle, whose name was another one
    m_pImage->isSuspect = false;
    CheckInvariants();
}

// --- closing -------------------------------------------------------------------------------------

void CByteStore::SetAutoDelete(BOOL autoDelete) {
    m_bAutoDelete = autoDelete;
    if (!autoDelete && m_pImage && m_pImage->process == System::Current().GetProcessId() &&
        m_pImage->named == m_pImage->image)
        System::Current().ReleaseScratch(m_file.m_hFile); // not to be swept away
}

void CByteStore::CloseImage() noexcept {
    System& system = System::Current();
    if (m_pImage && m_pImage->process == system.GetProcessId() && m_pImage->named.IsKnown()) {
        const bool isNamed = m_pImage->named == m_pImage->image;
        if (m_bAutoDelete) {
            // While it is locked, so that no sweep does it. When the name's status cannot be
            // read, it is the store's if the store chose it.
            vnbytstr::FileStatus status;
            const int error = system.GetFileStatus(m_strFileName, status);
            if (error == 0 ? status.identity == m_pImage->named : m_pImage->isGenerated)
                system.RemoveFile(m_strFileName);
        } else {
            if (isNamed || m_pImage->shifted != vnbytstr::kNoFile)
                system.ReleaseScratch(isNamed ? m_file.m_hFile : m_pImage->shifted);
            std::uint64_t length = 0;
            if (isNamed && system.GetFileLength(m_file.m_hFile, length) == 0 && length > m_dwLength)
                system.SetFileLength(m_file.m_hFile, m_dwLength);
        }
    }
    if (m_pImage && m_pImage->shifted != vnbytstr::kNoFile)
        system.CloseFile(m_pImage->shifted);
    if (m_pImage)
        m_file.Abort();
    m_pImage.reset();
    m_arrOnFile.clear();
    m_pPending.reset();
    m_dwPagesOnFile = 0;
    m_ullImageEnd = 0;
}
