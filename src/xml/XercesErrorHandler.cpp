#include "vnbytstr/XercesErrorHandler.h"

#include "src/xml/XercesText.h"

#include "src/os/System.h"

#include <xercesc/dom/DOMError.hpp>
#include <xercesc/dom/DOMLocator.hpp>

#include <string>

CXercesErrorHandler::~CXercesErrorHandler() = default;

bool CXercesErrorHandler::handleError(const xercesc::DOMError& error) {
    using vnbytstr::detail::NarrowText;
    using xercesc::DOMError;
    m_sawErrors = true;
    const char* opening = nullptr;
    switch (error.getSeverity()) {
    case DOMError::DOM_SEVERITY_WARNING:
        m_lastError.m_severity = SXMLParseError::kWarning;
        opening = "\nWarning at file ";
        break;
    case DOMError::DOM_SEVERITY_ERROR:
        m_lastError.m_severity = SXMLParseError::kError;
        opening = "\nError at file ";
        break;
    default:
        m_lastError.m_severity = SXMLParseError::kFatal;
        opening = "\nFatal Error at file ";
        break;
    }
    const xercesc::DOMLocator* const place = error.getLocation();
    m_lastError.m_strPlace = NarrowText(place != nullptr ? place->getURI() : nullptr).String();
    m_lastError.m_lineNo = place != nullptr ? place->getLineNumber() : 0;
    m_lastError.m_charNo = place != nullptr ? place->getColumnNumber() : 0;
    m_lastError.m_strMessage = NarrowText(error.getMessage()).String();
    const std::string report = opening + std::string(m_lastError.m_strPlace) + ", line " +
                               std::to_string(m_lastError.m_lineNo) + ", char " +
                               std::to_string(m_lastError.m_charNo) +
                               "\n  Message: " + std::string(m_lastError.m_strMessage);
    vnbytstr::System::Current().WriteDiagnostic(report.c_str());
    return false;
}

void CXercesErrorHandler::resetErrors() {
    m_sawErrors = false;
    m_lastError = {};
}
