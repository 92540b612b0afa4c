// The framework's exceptions. They are thrown by pointer to a heap object; the catcher calls
// Delete:
//
//     try { file.Write(p, n); }
//     catch (CFileException* error) { ...; error->Delete(); }
#pragma once

#include "vnbytstr/framework/Object.h"
#include "vnbytstr/framework/String.h"

#include <exception>
#include <new>
#include <stdexcept>
#include <utility>

/// Root of all exceptions.
class VNBYTSTR_API CException : public CObject {
    DECLARE_DYNAMIC(CException)
public:
    /// A heap object (autoDelete TRUE, the default) is freed by Delete; a static one is not.
    explicit CException(BOOL autoDelete = TRUE) : m_bAutoDelete(autoDelete) {}

    /// Frees the exception; the catcher calls it when it does not rethrow.
    void Delete();

    /// Writes a text to show into `buffer` (at most `size` bytes with the terminating NUL, cut
    /// between two UTF-8 characters when it is longer) and the help context, 0 for none,
    /// into `*helpContext` when that is not null. Returns FALSE, with an empty text, when there is
    /// nothing to say (the root, and CUserException: the user knows), and FALSE
    /// without a buffer.
    virtual BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr) const;

private:
    BOOL m_bAutoDelete;
};

/// Memory ran out.
class VNBYTSTR_API CMemoryException : public CException {
    DECLARE_DYNAMIC(CMemoryException)
public:
    using CException::CException;
    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr) const override;
};

/// An argument is out of its range: an index with nothing there, a null pointer. The call did
/// nothing.
class VNBYTSTR_API CInvalidArgException : public CException {
    DECLARE_DYNAMIC(CInvalidArgException)
public:
    using CException::CException;
    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr) const override;
};

/// The user, or a program on the user's behalf, cancelled the operation.
class VNBYTSTR_API CUserException : public CException {
    DECLARE_DYNAMIC(CUserException)
public:
    using CException::CException;
};

/// A file operation failed.
class VNBYTSTR_API CFileException : public CException {
    DECLARE_DYNAMIC(CFileException)
public:
    enum {
        none = 0,
        genericException,
        fileNotFound,
        badPath,
        tooManyOpenFiles,
        accessDenied,
        invalidFile,
        removeCurrentDir,
        directoryFull,
        badSeek,
        hardIO,
        sharingViolation,
        lockViolation,
        diskFull,
        endOfFile
    };

    /// `cause` is one of the values above, `osError` the system's own error number (an errno value
    /// here, -1 for none), `fileName` the file it happened to (copied; may be null).
    explicit CFileException(int cause = none, LONG osError = -1, const char* fileName = nullptr)
        : m_cause(cause), m_lOsError(osError), m_strFileName(fileName) {}

    /// Says what happened, to which file, and the system's own words.
    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr) const override;

    /// The cause that fits a system error number; genericException when none fits better.
    static int OsErrorToException(LONG osError);
    /// Throws a CFileException for a system error number.
    [[noreturn]] static void ThrowOsError(LONG osError, const char* fileName = nullptr);

    /// One of the causes above, the system's error number (-1: none) and the file's name.
    int m_cause;
    LONG m_lOsError;
    CString m_strFileName;
};

/// Reading or writing an archive failed.
class VNBYTSTR_API CArchiveException : public CException {
    DECLARE_DYNAMIC(CArchiveException)
public:
    enum {
        none = 0,
        genericException,
        readOnly,
        endOfFile,
        writeOnly,
        badIndex,
        badClass,
        badSchema
    };

    /// With one of the causes above.
    explicit CArchiveException(int cause = none, const char* fileName = nullptr)
        : m_cause(cause), m_strFileName(fileName) {}

    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr) const override;

    /// One of the causes above, and the file's name.
    int m_cause;
    CString m_strFileName;
};

/// Throw the exception of that name.
[[noreturn]] VNBYTSTR_API void AfxThrowMemoryException();
[[noreturn]] VNBYTSTR_API void AfxThrowInvalidArgException();
[[noreturn]] VNBYTSTR_API void AfxThrowUserException();
[[noreturn]] VNBYTSTR_API void AfxThrowFileException(int cause, LONG osError = -1,
                                                     const char* fileName = nullptr);
[[noreturn]] VNBYTSTR_API void AfxThrowArchiveException(int cause, const char* fileName = nullptr);

namespace vnbytstr::detail {

/// Calls `function` and returns its result; memory that the standard library could not get there is
/// a CMemoryException.
template <class Function>
decltype(auto) WithMemoryException(Function&& function) {
    try {
        return std::forward<Function>(function)();
    } catch (const std::bad_alloc&) {
        AfxThrowMemoryException();
    } catch (const std::length_error&) {
        AfxThrowMemoryException();
    }
}

/// The result of `function`, or `otherwise` when it throws. For functions that throw nothing to
/// their callers.
template <class Function, class Result>
Result WithoutExceptions(Function&& function, Result otherwise) {
    try {
        return std::forward<Function>(function)();
    } catch (CException* error) {
        error->Delete();
    } catch (const std::exception&) {
        return otherwise;
    }
    return otherwise;
}

} // namespace vnbytstr::detail
