// What every XML document object has: a parser platform, and a document that is open or not.
#pragma once

#include "vnbytstr/framework/Export.h"

class VNBYTSTR_API CXMLParserWrapper {
public:
    CXMLParserWrapper(const CXMLParserWrapper&) = delete;
    CXMLParserWrapper& operator=(const CXMLParserWrapper&) = delete;
    virtual ~CXMLParserWrapper() = 0;

    /// Whether the parser platform is there to be used.
    bool IsInitialized() const noexcept { return m_initialized; }

protected:
    CXMLParserWrapper() noexcept = default;

    /// Whether the platform is initialised and a document is open.
    bool CheckInstance() const noexcept { return m_initialized && m_document != nullptr; }

    void* m_document = nullptr; ///< the open document; null when none is open
    bool m_initialized = false; ///< set by the derived class
};
