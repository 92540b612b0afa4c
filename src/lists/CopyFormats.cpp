#include "src/lists/CopyFormats.h"

#include "src/lists/NumberText.h"

namespace vnbytstr::detail {

void CopyWriter::AddQuoted(std::string_view value, char quote) {
    m_text += quote;
    for (const char ch : value)
        m_text.append(ch == quote ? 2 : 1, ch);
    m_text += quote;
}

/// A value among others, enclosed in quotes if it would be taken for several (RFC 4180; text with
/// tabs is treated alike, as spreadsheets do).
void CopyWriter::AddPlain(std::string_view value, bool isLast) {
    const bool isCsv = m_format == kCopyCsv;
    if (value.find_first_of(isCsv ? ",\r\n\"" : "\t\r\n\"") == std::string_view::npos)
        m_text.append(value);
    else
        AddQuoted(value, '"');
    m_text.append(isLast ? "\r\n" : isCsv ? "," : "\t");
}

void CopyWriter::AddName(std::string_view name, bool isLast) {
    if (m_format != kCopySql) {
        AddPlain(name, isLast);
        return;
    }
    m_text.append(m_inRow ? ", " : "(");
    AddQuoted(name, '"');
    m_inRow = !isLast;
    if (isLast)
        m_text.append(") VALUES\r\n");
}

void CopyWriter::AddValue(std::string_view value, bool isNumber, bool isLast) {
    if (m_format != kCopySql) {
        AddPlain(value, isLast);
        return;
    }
    if (!m_inRow && m_hasRow)
        m_text.append(",\r\n");
    m_text.append(m_inRow ? ", " : "(");
    NumberText number;
    if (!m_null.empty() && value == m_null)
        m_text.append("NULL");
    else if (isNumber && number.Read(value))
        m_text.append(value);
    else
        AddQuoted(value, '\'');
    m_inRow = !isLast;
    if (isLast)
        m_text += ')';
    m_hasRow = true;
}

} // namespace vnbytstr::detail
