#include "vnbytstr/CacheException.h"

#include <cstdio>

IMPLEMENT_DYNAMIC(CCacheException, CException)

BOOL CCacheException::GetErrorMessage(char* buffer, UINT size, UINT* helpContext) const {
    const char* text = "The byte store failed for a reason without a number of its own.";
    switch (m_nCause) {
    case kOutOfRange:
        text = "Bytes outside the stored range were asked for. Ask within start and length.";
        break;
    case kBadSeek:
        text = "A position in the swap file could not be reached. Check the disk that holds the "
               "temporary folder.";
        break;
    case kShortRead:
        text =
            "Bytes could not be read back from the swap file, or a pointer to bytes that are not "
            "in memory was asked for. Check that nothing cut or removed the temporary file.";
        break;
    case kReadOnly:
        text =
            "The bytes lie in a buffer that may not be written or may not grow. Copy them first.";
        break;
    case kWriteFailed:
        text = "Bytes could not be written to the swap file. Make room on the disk that holds the "
               "temporary folder, or set TMPDIR to another one, and try again.";
        break;
    case kTooLong:
        text = "The bytes would pass 4 GiB - 1, or memory ran out.";
        break;
    }
    if (helpContext)
        *helpContext = 0;
    if (size > 0)
        std::snprintf(buffer, size, "%s", text);
    return TRUE;
}
