// Rows as texts for other programs: with tabs, as CSV, as values of SQL.
#pragma once

#include "vnbytstr/ListMessages.h"

#include <string>
#include <string_view>

namespace vnbytstr::detail {

/// Puts rows together, value by value.
class CopyWriter {
public:
    /// `nullText`: the text that stands for null, which is NULL in SQL.
    CopyWriter(EListCopyFormat format, std::string_view nullText)
        : m_format(format), m_null(nullText) {}

    /// A column's name, before the first row.
    void AddName(std::string_view name, bool isLast);
    /// The next value of a row. `isNumber`: the column holds numbers.
    void AddValue(std::string_view value, bool isNumber, bool isLast);
    /// What has been put together; valid until the next call.
    const std::string& Text() const { return m_text; }

private:
    void AddPlain(std::string_view value, bool isLast);
    void AddQuoted(std::string_view value, char quote);

    EListCopyFormat m_format;
    std::string_view m_null;
    std::string m_text;
    bool m_inRow = false;
    bool m_hasRow = false;
};

} // namespace vnbytstr::detail
