#include "vnquery/tasks/Failure.h"

#include "vnquery/messages/Messages.h"

#include "vnbytstr/TempFileName.h"

namespace vnquery {

std::string TakeMessage(CException* error) {
    char text[1024] = "";
    std::string message =
        error->GetErrorMessage(text, sizeof text) ? std::string(text) : Text(IDS_VQ_WAS_STOPPED);
    // The exception for a full disk has no file name; here only a swap file can be meant.
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
