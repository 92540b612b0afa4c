// How a value looks in a column of the display.
#pragma once

#include "vnquery/result/Value.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vnquery {

struct CellFormat {
    std::string nullText = "-"; ///< stands for NULL
    DWORD textLimit = 128;      ///< characters up to which a text is shown in full
    std::string defaultText{};  ///< stands for what the database puts there by itself; may be ""
    std::string blobText{};     ///< begins placeholders of bytes; "": "<BLOB 26.3 MB>"
    std::string clobText{};     ///< the same for texts
};

/// The value on one line:
///  - NULL as the null text; a text that reads like it, or like the default text, in double
///    quotes, and so is one that reads like such a text in quotes, when there is a default text;
///  - bytes as a placeholder such as <BLOB 26.3 MB>, a text past the limit as <CLOB 35 KB>;
///  - in other texts, what a terminal would act on made visible: \n, \r, \t, and \x1B or \u202E for
///  other
///    control characters and for marks that turn the direction of text, \xFF for a byte that is not
///    UTF-8.
std::string FormatCell(const Value& value, const CellFormat& format);

/// Whether the value is shown as a placeholder.
bool IsPlaceholder(const Value& value, const CellFormat& format);
/// Whether the text is a marker within one or more pairs of double quotes.
bool IsQuotedMarker(std::string_view text, const CellFormat& format);

/// The same for a column's heading, which is shown whatever its length.
std::string MakeVisible(std::string_view text);

/// Columns of a terminal that UTF-8 text without control characters takes: East Asian wide
/// characters and emoji two, combining marks none.
std::size_t DisplayWidth(std::string_view text);

/// Bytes in three digits: "812 B", "35.0 KB", "26.3 MB" (1 KB is 1024 bytes).
std::string FormatSize(std::uint64_t bytes);

/// 1234567 as "1,234,567".
std::string GroupDigits(std::uint64_t number);

/// Reads the character at the beginning of `text` (not empty) and gives its length in bytes; 0 when
/// the bytes are not UTF-8.
std::size_t DecodeUtf8(std::string_view text, char32_t& character);

} // namespace vnquery
