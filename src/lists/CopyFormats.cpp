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
void CopyWriter::AddField(std::string_view value) {
    const char* const special = m_format == kCopyCsv ? ",\r\n\"" : "\t\r\n\"";
    if (value.find_first_of(special) == std::string_view::npos)
        m_text.append(value);
    else
        AddQuoted(value, '"');
}

void CopyWriter::AddPlain(std::string_view value, bool isLast) {
    AddField(value);
    m_text.append(isLast ? "\r\n" : m_format == kCopyCsv ? "," : "\t");
}

void CopyWriter::AddSql(std::string_view value, bool isNumber, bool isNull) {
    NumberText number;
    if (isNull)
        m_text.append("NULL");
    else if (isNumber && number.Read(value))
        m_text.append(value);
    else
        AddQuoted(value, '\'');
}

void CopyWriter::AddAlone(std::string_view value, bool isNumber, bool isNull) {
    if (m_format == kCopySql)
        AddSql(value, isNumber, isNull);
    else if (m_format == kCopyCsv)
        AddField(value);
    else
        m_text.append(value);
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

void CopyWriter::AddValue(std::string_view value, bool isNumber, bool isNull, bool isLast) {
    if (m_format != kCopySql) {
        AddPlain(value, isLast);
        return;
    }
    if (!m_inRow && m_hasRow)
        m_text.append(",\r\n");
    m_text.append(m_inRow ? ", " : "(");
    AddSql(value, isNumber, isNull);
    m_inRow = !isLast;
    if (isLast)
        m_text += ')';
    m_hasRow = true;
}

} // namespace vnbytstr::detail
