// What was wrong with an XML document.
#pragma once

#include "vnbytstr/framework/String.h"
#include "vnbytstr/framework/Types.h"

/// The report that ended a parse.
struct SXMLParseError {
    /// How bad it is. A fatal error ends the parse.
    enum Severity : int { kNone = 0, kWarning = 1, kError = 2, kFatal = 3 };

    Severity m_severity = kNone; ///< how bad it is
    CString m_strPlace;          ///< name of the file, "prodInfo" for a text
    ULONGLONG m_lineNo = 0;      ///< from 1; 0 when there is no place to name
    ULONGLONG m_charNo = 0;      ///< column, from 1
    CString m_strMessage;        ///< the parser's words
};
