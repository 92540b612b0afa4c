// What a format puts around rows and values, and how it writes characters.
#pragma once

#include "vnquery/files/ExportFormat.h"
#include "vnquery/result/Value.h"

#include <array>
#include <string>
#include <vector>

namespace vnquery {

/// Stands for what a format cannot hold: U+FFFD.
constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

/// All formats but Table are this: fixed text around rows and values, and a table of characters
/// that are written otherwise.
struct Notation {
    /// How texts are looked at before their characters are written one by one.
    enum class Filter {
        None,
        Utf8,   ///< what is not UTF-8 becomes U+FFFD
        Markup, ///< that too, and the two characters of UTF-8 that XML excludes
        Visible ///< what a terminal would act on is made visible
    };
    enum class Quotes {
        None,
        Csv,   ///< a text that needs it is put in double quotes
        Marker ///< a text that equals the one for NULL is
    };
    struct Around {
        std::string before;
        std::string after;
    };

    std::string begin; ///< of the file, with headings; whole lines
    std::string betweenRows;
    std::string beginRow;
    std::string endRow; ///< with its line break unless that belongs between rows
    std::string end;
    std::vector<std::string> beginCell; ///< for each column
    std::string endCell;
    std::array<Around, 4> around; ///< a value, by Value::Type; of NULL all there is
    /// Where it is not empty, the text for a byte.
    std::array<std::string, 256> escapes;
    /// A line break within a text (CR LF, CR or LF), if it is written in another way.
    std::optional<std::string> innerBreak;
    Filter filter = Filter::None;
    Quotes quotes = Quotes::None;
    bool onlyNumbers = false; ///< JSON and SQL: what is not a number there becomes a text
    bool isSql = false;       ///< texts that a literal cannot hold are cast from bytes
};

/// `format` is completed.
Notation NotationOf(const ExportFormat& format, const std::vector<std::string>& columns);

/// Passes a text (whole characters) through the filter. The result refers to `text` where nothing
/// is replaced, else to `scratch`; `replaced` counts.
std::string_view Filtered(Notation::Filter filter, std::string_view text, std::string& scratch,
                          ULONGLONG& replaced);

/// Whether JSON takes the text for a number.
bool IsJsonNumber(std::string_view text);

} // namespace vnquery
