// Rows as texts for other programs: with tabs, as CSV, as values of SQL.
#pragma once

#include "vnbytstr/ListMessages.h"

#include <string>
#include <string_view>

namespace vnbytstr::detail {

/// Puts rows together, value by value.
class CopyWriter {
public:
    explicit CopyWriter(EListCopyFormat format) : m_format(format) {}

    /// A column's name, before the first row.
    void AddName(std::string_view name, bool isLast);
    /// The next value of a row. `isNumber`: the column holds numbers. `isNull` matters in SQL only.
    void AddValue(std::string_view value, bool isNumber, bool isNull, bool isLast);
    /// A value alone, as it would be in a row; as a text with tabs: as it is.
    void AddAlone(std::string_view value, bool isNumber, bool isNull);
    /// What has been put together; valid until the next call.
    const std::string& Text() const { return m_text; }

private:
    void AddField(std::string_view value);
    void AddPlain(std::string_view value, bool isLast);
    void AddSql(std::string_view value, bool isNumber, bool isNull);
    void AddQuoted(std::string_view value, char quote);

    EListCopyFormat m_format;
    std::string m_text;
    bool m_inRow = false;
    bool m_hasRow = false;
};

} // namespace vnbytstr::detail
