// CCryptoException, what the cipher classes throw.
#pragma once

#include "vnbytstr/framework/Exception.h"

/// Thrown, as a pointer to a heap object, by CDES. The catcher calls Delete.
class VNBYTSTR_API CCryptoException : public CException {
    DECLARE_DYNAMIC(CCryptoException)
public:
    /// `code` is 0 for an output buffer that is too small; `line` and `file` name the place that
    /// threw.
    CCryptoException(int code, int line, const char* file)
        : m_nCode(code), m_nLine(line), m_strFile(file) {}

    /// The text below, and no help context.
    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr) const override;
    /// Writes "Cryptographic error %d (%s,%d)" with the code, the file's base name in upper case
    /// ("?" when the file is empty) and the line into `buffer`, at most `size` characters and
    /// always ended by a NUL. FALSE when there is no room for even that.
    virtual BOOL GetErrorMessage(char* buffer, int size);

    /// The code, and the source line and file that threw it.
    int GetCode() const { return m_nCode; }
    int GetLine() const { return m_nLine; }
    const CString& GetFile() const { return m_strFile; }

private:
    int m_nCode;
    int m_nLine;
    CString m_strFile;
};
