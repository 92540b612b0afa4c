#include "Failure.h"

#include <vnbytstr/TempFileName.h>

namespace vnquery {

std::string TakeMessage(CException* error) {
    char text[1024] = "";
    if (!error->GetErrorMessage(text, sizeof text))
        std::snprintf(text, sizeof text, "it was stopped.");
    std::string message = text;
    // The exception of a full disk knows no file name; here it can only be a swap file's.
    if (const auto* cache = dynamic_cast<CCacheException*>(error);
        cache && cache->m_nCause == CCacheException::kWriteFailed) {
        CString folder;
        GetTemporaryPath(folder);
        message += " (Temporary files are in " + std::string(folder) +
                   "; the variable TMPDIR chooses another folder.)";
    }
    error->Delete();
    return message;
}

} // namespace vnquery
