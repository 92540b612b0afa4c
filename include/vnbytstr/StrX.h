// The parser's text as a narrow string.
#pragma once

#include "vnbytstr/framework/Export.h"
#include "vnbytstr/framework/String.h"

/// Converts UTF-16 text (Xerces-C's XMLCh) into the process's ANSI code page and owns the result.
/// What the page does not hold becomes '?'.
class VNBYTSTR_API StrX {
public:
    /// `text` ends with a NUL; null is empty.
    explicit StrX(const char16_t* text);
    StrX(const StrX&) = delete;
    StrX& operator=(const StrX&) = delete;

    /// Valid as long as this object.
    const char* localForm() const noexcept { return m_text; }

private:
    CString m_text;
};
