#include "vnquery/work/Failure.h"

#include "vnquery/messages/Messages.h"

#include "vnbytstr/TempFileName.h"

namespace vnquery {

std::string TakeMessage(CException* error) {
    char text[1024] = "";
    std::string message =
        error->GetErrorMessage(text, sizeof text) ? std::string(text) : Text(IDS_VQ_WAS_STOPPED);
    // The exception of a full disk knows no file name; here it can only be a swap file's.
    if (const auto* cache = dynamic_cast<CCacheException*>(error);
        cache && cache->m_nCause == CCacheException::kWriteFailed) {
        CString folder;
        GetTemporaryPath(folder);
        message += " " + Text(IDS_VQ_TEMPORARY_FILES, {std::string(folder)});
    }
    error->Delete();
    return message;
}

} // namespace vnquery
