// A row of the list is one text: the values of its columns, joined by a separator. These functions
// take it apart and put it together. Positions and lengths are in bytes.
#pragma once

#include <string>
#include <string_view>

namespace vnbytstr::detail {

/// Takes a row's values off its text, one after the other. An empty separator separates nothing.
class CellReader {
public:
    CellReader(std::string_view row, std::string_view separator)
        : m_rest(row), m_separator(separator) {}

    /// The next value; false when the last one has been read. A row has one value more than it has
    /// separators.
    bool Next(std::string_view& value);
    /// What follows the values read so far; no separator stands before it.
    std::string_view Rest() const { return m_rest; }
    bool AtEnd() const { return m_ended; }

private:
    std::string_view m_rest;
    std::string_view m_separator;
    bool m_ended = false;
};

/// The value of `column` (from 0); empty when the row has fewer values, or `column` is negative.
std::string_view CellText(std::string_view row, std::string_view separator, int column);

/// The row with another value for `column`. A row with too few values gets empty ones up to
/// `column`; values beyond the columns stay as they are.
std::string ReplaceCell(std::string_view row, std::string_view separator, int column,
                        std::string_view value);

} // namespace vnbytstr::detail
