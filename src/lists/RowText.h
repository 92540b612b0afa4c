// A row of the list is one text: the values of its columns, joined by a separator. These functions
// split and join it.
#pragma once

#include <string>
#include <string_view>

namespace vnbytstr::detail {

/// Reads a row's values from left to right. With an empty separator the row is one value.
class CellReader {
public:
    CellReader(std::string_view row, std::string_view separator)
        : m_rest(row), m_separator(separator) {}

    /// Reads the next value; false after the last. A row has one value more than separators.
    bool Next(std::string_view& value);
    /// The text after the values read so far and the separator that follows them.
    std::string_view Rest() const { return m_rest; }
    /// Whether the last value has been read.
    bool AtEnd() const { return m_ended; }

private:
    std::string_view m_rest;
    std::string_view m_separator;
    bool m_ended = false;
};

/// The value of `column` (from 0); empty when the row has fewer values, or `column` is negative.
std::string_view CellText(std::string_view row, std::string_view separator, int column);

/// The row with another value in `column`. A row with too few values gets empty ones up to
/// `column`; all other values are unchanged.
std::string ReplaceCell(std::string_view row, std::string_view separator, int column,
                        std::string_view value);

/// Makes the end of `row` from `from` on one cell: of each separator in it, and of one that its
/// last bytes would begin, a byte becomes a blank, or '_' where a separator has a blank in it.
void CleanCell(std::string& row, std::size_t from, std::string_view separator);

} // namespace vnbytstr::detail
