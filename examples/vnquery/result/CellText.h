// How a value looks in a column of the display.
#pragma once

#include "vnquery/result/Value.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vnquery {

/// Separates the cells of a row in a list. Control characters are made visible, so no displayed
/// value contains it.
constexpr char kCellSeparator[] = "\x1F";

struct CellFormat {
    std::string nullText = "-"; ///< stands for NULL
    DWORD textLimit = 128;      ///< characters up to which a text is shown in full
    std::string defaultText{};  ///< stands for the column's default; may be ""
    /// Instead of a placeholder, and of a text of several lines, the text's beginning is shown: of
    /// its first line so many characters as the limit has, and how long the text is.
    bool hasPreviews = false;
};

/// The value on one line:
///  - NULL as the null text; a text that equals it, or the default text, in double quotes, and so
///    is a text that equals such a quoted one;
///  - bytes as a placeholder such as <BLOB 26.3 MB>, a text past the limit as <CLOB 35 KB>;
///  - in other texts, what a terminal would act on is made visible: \n, \r, \t; \x1B or \u202E for
///    other control characters and for marks that change the direction of text; \xFF for a byte
///    that is not UTF-8.
std::string FormatCell(const Value& value, const CellFormat& format);
/// The same of a value of `length` bytes, appended to `out`. Of a text `bytes` has the first
/// BytesToShow, or all; without previews those of a longer one are not looked at.
void AppendCell(std::string& out, Value::Type type, std::string_view bytes, ULONGLONG length,
                const CellFormat& format);
/// A text that is longer than this, in bytes, is not shown in full.
ULONGLONG BytesToShow(const CellFormat& format);

/// Whether the value is shown as a placeholder.
bool IsPlaceholder(const Value& value, const CellFormat& format);
/// Whether the text is a marker within one or more pairs of double quotes.
bool IsQuotedMarker(std::string_view text, const CellFormat& format);

/// Makes control characters visible in the same way, whatever the length; for column headings.
std::string MakeVisible(std::string_view text);
void AppendVisible(std::string& out, std::string_view text);

/// The number of terminal columns that UTF-8 text without control characters takes: two for East
/// Asian wide characters and emoji, none for combining marks.
std::size_t DisplayWidth(std::string_view text);

/// Bytes in three digits: "812 B", "35.0 KB", "26.3 MB" (1 KB is 1024 bytes).
std::string FormatSize(std::uint64_t bytes);

/// 1234567 as "1,234,567".
std::string GroupDigits(std::uint64_t number);

/// Reads the character at the beginning of `text` (not empty) and gives its length in bytes; 0 when
/// the bytes are not UTF-8.
std::size_t DecodeUtf8(std::string_view text, char32_t& character);

} // namespace vnquery
