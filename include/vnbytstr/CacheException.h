// CCacheException, what the byte containers throw.
#pragma once

#include "vnbytstr/framework/Exception.h"

/// Thrown, as a pointer to a heap object, by CByteStore and CByteStream. Callers test m_nCause and
/// call Delete.
///
///  0  a copy asks for bytes outside the valid range
///  1  a seek in the swap file does not land where it should
///  2  a page comes back from the swap file short; from a stream: a pointer to content that lies in
///     a store was asked for
///  3  a read-only buffer is written, or a caller's buffer must grow
///  4  a page cannot be written to the swap file (a full disk); from a stream: ReleaseBuffer on
///     content that lies in a store
///  6  the length would pass 4 GiB - 1, or a page buffer cannot be allocated
class VNBYTSTR_API CCacheException : public CException {
    DECLARE_DYNAMIC(CCacheException)
public:
    enum {
        kOutOfRange = 0,
        kBadSeek = 1,
        kShortRead = 2,
        kNotInMemory = 2,
        kReadOnly = 3,
        kWriteFailed = 4,
        kInStore = 4,
        kTooLong = 6
    };

    /// With one of the causes above.
    CCacheException(int cause = 0) : m_nCause(cause) {}

    /// Says what the cause means and what to do. The exception knows no file name.
    BOOL GetErrorMessage(char* buffer, UINT size, UINT* helpContext = nullptr) const override;

    /// The cause, as listed above.
    int m_nCause;
};
