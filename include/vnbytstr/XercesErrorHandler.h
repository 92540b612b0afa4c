// Takes what the parser reports. This header needs those of Xerces-C 3.2.
#pragma once

#include "vnbytstr/XMLParseError.h"

#include "vnbytstr/framework/Export.h"

#include <xercesc/dom/DOMErrorHandler.hpp>

/// Writes each report to standard error, keeps the last one for programs, and ends the parse.
class VNBYTSTR_API CXercesErrorHandler : public xercesc::DOMErrorHandler {
public:
    CXercesErrorHandler() = default;
    CXercesErrorHandler(const CXercesErrorHandler&) = delete;
    CXercesErrorHandler& operator=(const CXercesErrorHandler&) = delete;
    ~CXercesErrorHandler() override;

    /// Writes "\nWarning at file ", "\nError at file " or "\nFatal Error at file ", the place,
    /// ", line ", the line, ", char ", the column, "\n  Message: ", the message and an end of line.
    /// Returns false: the parser stops at the first report, a warning included.
    bool handleError(const xercesc::DOMError& error) override;

    /// Whether anything was reported since resetErrors.
    bool getSawErrors() const noexcept { return m_sawErrors; }
    void resetErrors();
    /// The last report; kNone when there was none since resetErrors.
    const SXMLParseError& getLastError() const noexcept { return m_lastError; }

private:
    bool m_sawErrors = false;
    SXMLParseError m_lastError;
};
