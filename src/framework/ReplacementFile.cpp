#include "vnbytstr/ReplacementFile.h"

#include "src/os/FileReplacement.h"
#include "src/os/Paths.h"

#include <cerrno>
#include <string>

IMPLEMENT_DYNAMIC(CReplacementFile, CFile)

CReplacementFile::CReplacementFile() = default;

CReplacementFile::CReplacementFile(const char* name) {
    CFileException error;
    if (!CReplacementFile::Open(name, modeCreate | modeWrite, &error))
        AfxThrowFileException(error.m_cause, error.m_lOsError, error.m_strFileName);
}

CReplacementFile::~CReplacementFile() { CReplacementFile::Abort(); }

BOOL CReplacementFile::Open(const char* name, UINT, CFileException* error) {
    return vnbytstr::detail::WithMemoryException([&] { return Begin(name, error); });
}

BOOL CReplacementFile::Begin(const char* name, CFileException* error) {
    const std::string kept = name ? name : ""; // it may lie in this object
    CReplacementFile::Abort();
    auto replacement = std::make_unique<vnbytstr::FileReplacement>();
    if (const int osError = name ? replacement->Open(kept.c_str()) : EINVAL) {
        if (error) {
            error->m_cause = CFileException::OsErrorToException(osError);
            error->m_lOsError = osError;
            error->m_strFileName = kept.c_str();
        }
        return FALSE;
    }
    m_pReplacement = std::move(replacement);
    m_hFile = m_pReplacement->Handle();
    m_strFileName = vnbytstr::AbsoluteName(kept.c_str()).c_str();
    return TRUE;
}

void CReplacementFile::Commit() {
    if (!m_pReplacement)
        ThrowError(EBADF);
    m_hFile = hFileNull;
    const auto replacement = std::move(m_pReplacement);
    if (const int error =
            vnbytstr::detail::WithMemoryException([&] { return replacement->Commit(); }))
        ThrowError(error);
}

void CReplacementFile::Close() { Abort(); }

void CReplacementFile::Abort() noexcept {
    m_hFile = hFileNull; // the replacement closes it
    m_pReplacement.reset();
    m_strFileName.Empty();
}
